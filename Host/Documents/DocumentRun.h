// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <map>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "Host/Documents/DocumentContent.h"
#include "Host/Documents/GraphDocument.h"

namespace ScEng {

/// One evaluation of a document: what is asked of the engine, what is written, and what there is to say.
class DocumentRun {
 public:
  explicit DocumentRun(GraphDocument& document) : content_(*document.content_) {}

  /// Evaluates and writes every output and every enabled writer.
  RunReport WriteAll(const GraphDocument::Progress& progress, Engine::Options options);
  /// Evaluates one output and writes nothing.
  RunReport Evaluate(Node& node, unsigned outplug, Engine::Options options, ImagePtr* image);

 private:
  /// A file and who writes it.
  struct Claim {
    std::filesystem::path file;
    std::string writer;
  };

  /// Whether no placeholder stands in the way; else reports those that do.
  bool HasAllTypes();
  /// The same of what one node depends on.
  bool HasAllTypes(const Node& node);
  /// Reserves a file for one writer; reports one that is taken.
  bool ClaimFile(const std::filesystem::path& file, const std::string& writer);
  /// Evaluates what feeds the paths of the writers, so that no file is written before all names are known.
  void EvaluateWriterPaths(const std::vector<const DocumentEntry*>& writers, const Engine::Options& options);
  void Evaluate(const std::vector<Engine::Request>& requests, const Engine::Options& options);
  /// The file that a writer is going to write; empty where it has none.
  [[nodiscard]] std::filesystem::path FindWriterFile(const DocumentEntry& writer) const;
  [[nodiscard]] const ConnectionEntry* FindPathSource(const DocumentEntry& writer) const;
  void WriteOutput(std::size_t output, const Image* image);
  /// Adds the state of a node that was evaluated to what the run has to say.
  void ReportState(const Node& node);

  GraphDocument::Content& content_;
  RunReport report_;
  std::map<std::filesystem::path, std::string> claims_;
  /// The connections that feed the path of a writer.
  std::unordered_map<const DocumentEntry*, const ConnectionEntry*> path_sources_;
  std::unordered_set<const Node*> reported_;
};

}  // namespace ScEng
