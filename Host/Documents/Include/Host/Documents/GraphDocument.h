// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "Host/Documents/Api.h"
#include "Host/Files/ImageFile.h"
#include "Host/Tools/Engine.h"
#include "Host/Util/Status.h"

namespace ScEng {

/// What reading or running a document has to say, one line each, in the order of the document.
struct Findings {
  std::vector<std::string> errors;
  /// Remarks that do not stand in the way.
  std::vector<std::string> notes;
};

/// How a run failed; the larger outranks the smaller.
enum class RunFailure { kNone = 0, kNode = 1, kFile = 2 };

/// What became of one output of a run.
struct OutputReport {
  /// "node.plug"
  std::string source;
  std::filesystem::path file;
  bool written = false;
  ImageHeader header;
};

struct RunReport {
  Findings findings;
  RunFailure failure = RunFailure::kNone;
  std::vector<OutputReport> outputs;
};

/// A graph that is read from a JSON document, or built node by node, and run.
///
/// Nodes are addressed by their ids, plugs and attributes as "id.name" (split at the last dot). Every message names
/// what it is about. Used on one thread at a time; separate documents are independent.
class HOST_DOCUMENTS_API GraphDocument {
 public:
  explicit GraphDocument(std::shared_ptr<const NodeCatalog> catalog);
  ~GraphDocument();
  GraphDocument(const GraphDocument&) = delete;
  GraphDocument& operator=(const GraphDocument&) = delete;

  /// Reads a document into this (empty) graph. All its errors and notes go to `findings`. False when the file itself
  /// could not be read; the one error says why.
  bool Load(const std::filesystem::path& file, Findings& findings);

  /// Adds a node; null, and an error, when the id is taken or empty or the catalogue has no such type.
  Node* AddNode(const std::string& id, const NodeType& type, Status& status);
  [[nodiscard]] Node* FindNode(const std::string& id) const;
  [[nodiscard]] std::string GetId(const Node& node) const;
  /// All ids, in the order in which the nodes were added.
  [[nodiscard]] const std::vector<std::string>& GetIds() const { return ids_; }

  /// Connects "from.plug" to "to.plug" at a connection index.
  Status Connect(const std::string& from, const std::string& to, unsigned index);
  /// Sets "node.attribute" from text: a number, true or false, a choice word, a string, or numbers separated by commas.
  /// Old names and the clamping of numbers are as in documents; relative paths start from the working directory.
  Status SetAttribute(const std::string& attribute, const std::string& text, std::vector<std::string>& notes);
  /// Sets the path of a reader.
  Status SetInput(const std::string& id, const std::filesystem::path& file);
  /// Asks for the image of an output plug as a file.
  Status AddOutput(const std::string& plug, const std::filesystem::path& file, SampleType type);
  /// Removes the requests for an output plug, to make room for `file` where given; answers the sample type of one whose
  /// file has the same ending, if there was any.
  std::optional<SampleType> RemoveOutputs(const std::string& plug, const std::filesystem::path& file = {});

  /// Renames every file that a run would write, outputs and writers alike, by `rename(file)`. Writers whose path is fed
  /// by a connection are refused.
  Status RenameOutputs(const std::function<std::filesystem::path(const std::filesystem::path&)>& rename);
  /// Every file that a run would write, as far as that is known before it.
  [[nodiscard]] std::vector<std::filesystem::path> GetOutputFiles() const;

  /// What is missing or in the way once everything is set: readers and writers without a path, two outputs with one
  /// path.
  void CheckComplete(Findings& findings) const;

  /// Called while a run goes on: `done` of `total` nodes are evaluated, the last one with this id.
  using Progress = std::function<void(const std::string& id, std::size_t done, std::size_t total)>;

  /// Evaluates what the outputs and the enabled writers need and writes each file as soon as its image is there.
  RunReport Run(const Progress& progress);

  /// Evaluates what one output needs and keeps every result, so that the next call computes only what has changed
  /// since. Writes nothing. The image, where there is one, is then at `node.GetOutputImage(outplug)`.
  RunReport Evaluate(Node& node, unsigned outplug);

  /// The engine that owns the nodes.
  [[nodiscard]] Engine& GetEngine() { return engine_; }

 private:
  friend class DocumentReader;

  struct Entry {
    Node* node = nullptr;
    /// The attribute version that names in connections are translated from.
    unsigned attribute_version = 0;
  };

  struct Output {
    Node* node = nullptr;
    unsigned outplug = 0;
    std::string source;
    std::filesystem::path file;
    SampleType type = SampleType::kFloat;
  };

  /// The node before, and the name after, the last dot; null and an error when there is no such node.
  Entry* FindPlugNode(const std::string& plug, std::string& name, Status& status);
  void WriteOutputs(const Node& node, RunReport& report);
  /// Adds the state of a node that was evaluated to what a run has to say.
  void ReportState(const Node& node, RunReport& report) const;

  Engine engine_;
  std::vector<std::string> ids_;
  std::map<std::string, Entry> entries_;
  std::unordered_map<const Node*, std::string> ids_by_node_;
  std::vector<Output> outputs_;
};

}  // namespace ScEng
