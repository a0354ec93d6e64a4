// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Host/Documents/DocumentContent.h"
#include "Host/Documents/GraphDocument.h"
#include "Host/Documents/ImageFlow.h"
#include "Host/Files/PendingWrites.h"

namespace ScEng {

/// One evaluation of a document: what is asked of the engine, what is written, and what there is to say.
class DocumentRun {
 public:
  explicit DocumentRun(GraphDocument& document) : content_(*document.content_) {}

  /// Evaluates and writes every output and every enabled writer.
  RunReport WriteAll(const GraphDocument::Progress& progress, Engine::Options options);
  /// Evaluates one output and writes nothing.
  RunReport Evaluate(Node& node, unsigned outplug, Engine::Options options, ImagePtr* image);
  /// ": nothing is connected to "image" of node "a"": why an output has no image, where its connections say so.
  [[nodiscard]] std::string DescribeLack(const DocumentEntry& entry, unsigned outplug);

 private:
  /// What is written into one file.
  struct FileClaim {
    /// Who writes each layer.
    std::map<std::string, std::string> writers;
    /// The layers whose images are there. Those of a file are written together.
    std::vector<PendingWrites::Write> images;
  };

  /// Whether no placeholder stands in the way; else reports those that do.
  bool HasAllTypes();
  /// The same of what one node depends on.
  bool HasAllTypes(const Node& node);
  /// Some nodes and all that they depend on, the former first.
  [[nodiscard]] std::vector<const DocumentEntry*> ListSources(std::vector<const DocumentEntry*> found) const;
  /// Reserves a layer of a file for one writer; reports one that is taken.
  bool ClaimFile(const LayerFile& file, const std::string& writer);
  /// Finds what the run reads. Files of that name are written when everything has been read.
  void FindFilesRead();
  /// Whether an image may not be written as soon as it is there.
  [[nodiscard]] bool HasToWait(const std::filesystem::path& file, const std::string& layer) const;
  /// Writes what had to wait.
  void WritePending();
  /// Evaluates what feeds the paths of the writers, so that no file is written before all names are known.
  void EvaluateWriterPaths(const std::vector<const DocumentEntry*>& writers, const Engine::Options& options);
  void Evaluate(const std::vector<Engine::Request>& requests, const Engine::Options& options);
  /// The file that a writer is going to write; empty where it has none.
  [[nodiscard]] std::filesystem::path FindWriterFile(const DocumentEntry& writer) const;
  [[nodiscard]] const ConnectionEntry* FindPathSource(const DocumentEntry& writer) const;
  void WriteOutput(std::size_t output, const Image* image);
  void ReportWrite(const void* writer, const ImageHeader& header, const Status& status,
                   const std::vector<std::string>& notes);
  /// Adds the state of a node that was evaluated to what the run has to say.
  void ReportState(const Node& node);

  GraphDocument::Content& content_;
  RunReport report_;
  std::map<std::filesystem::path, FileClaim> claims_;
  std::set<std::filesystem::path> files_read_;
  /// The same by device and number of the file, since one file may have several names.
  std::set<std::pair<dev_t, ino_t>> identities_read_;
  /// Whether the path of a reader comes from a connection, so that any file may be read.
  bool reads_any_file_ = false;
  PendingWrites pending_{content_.compression,
                         [this](const auto& file, const auto& layer) { return HasToWait(file, layer); }};
  /// The connections that feed the path of a writer.
  std::unordered_map<const DocumentEntry*, const ConnectionEntry*> path_sources_;
  std::unordered_set<const Node*> reported_;
  /// Made when an output lacks its image.
  std::unique_ptr<const ImageFlow> flow_;
};

}  // namespace ScEng
