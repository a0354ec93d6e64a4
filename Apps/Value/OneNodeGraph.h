// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Host/Documents/GraphDocument.h"
#include "Host/Tools/Node.h"
#include "Host/Tools/NodeLibrary.h"
#include "Host/Util/Status.h"

/// A file and the plug that it belongs to, as a person wrote them: FILE or PLUG=FILE.
struct PlugFile {
  std::string plug;
  std::string file;
};

/// The part of a command line that puts one node on image files, and the graph that follows from it: the node and a
/// reader for each of its inputs.
class OneNodeGraph {
 public:
  /// Declares NODE, -i and --set.
  void DeclareNode(CLI::App& sub);
  /// Declares --range.
  void DeclareRange(CLI::App& sub);

  /// The node as it was written; empty where it is missing. Where it stands behind "-i FILE...", it was taken for one
  /// more file.
  [[nodiscard]] std::string FindNodeName(const ScEng::NodeCatalog& catalog);
  [[nodiscard]] bool HasInputs() const { return !inputs_.empty(); }
  [[nodiscard]] bool HasRange() const { return range_.has_value(); }
  /// The range as it was written; empty for none.
  [[nodiscard]] std::string GetRange() const { return range_.value_or(""); }
  /// The input files as they were written. Where none are given, a file to be filled in for each input.
  [[nodiscard]] std::vector<std::string> NameInputs() const;

  /// Settings, "name=value", that --set may replace. Before `AddNode`.
  void SetDefaults(std::vector<std::string> defaults) { defaults_ = std::move(defaults); }
  /// Adds the node and sets its attributes. Messages name it by its display name.
  ScEng::Status AddNode(ScEng::GraphDocument& document, const NodeInterface& descriptor,
                        std::vector<std::string>& notes);
  /// Adds and connects the readers. A node with inputs needs a file.
  ScEng::Status ConnectInputs(ScEng::GraphDocument& document, std::vector<std::string>& notes) const;
  /// A further input, before all that -i names: GLOB or PLUG=GLOB, and the reader that each file is given to in turn.
  /// Before `ConnectInputs`.
  std::string AddEach(const std::string& each);
  /// The pattern of such an input.
  static ScEng::Status FindPattern(const NodeInterface& descriptor, const std::string& each, std::string& pattern);
  /// Takes standard input where -i names it. Before `ConnectInputs`.
  ScEng::Status TakeStandardInput();

  /// Whether `AddNode` could make the node; what is wrong is its library's doing where it could not.
  [[nodiscard]] bool HasNode() const { return node_ != nullptr; }
  /// The node and its id, from `AddNode` on.
  [[nodiscard]] Node& GetNode() const { return *node_; }
  [[nodiscard]] const std::string& GetId() const { return id_; }

  /// Splits PLUG=FILE; a text that does not start with a plug but names an existing file is a
  /// file with "=" in its name.
  static ScEng::Status SplitPlug(const std::string& text, const std::vector<PlugRecord>& plugs, bool is_input,
                                 PlugFile& result);
  /// The image plugs among the first `count`.
  static std::vector<PlugRecord> GetImagePlugs(const std::vector<PlugRecord>& plugs, std::size_t count);

 private:
  using Range = std::optional<std::pair<std::string, std::string>>;

  ScEng::Status SetAttributes(ScEng::GraphDocument& document, std::vector<std::string>& notes) const;
  ScEng::Status AddReader(ScEng::GraphDocument& document, const std::string& file, unsigned index, const Range& range,
                          std::vector<std::string>& notes) const;
  ScEng::Status ReadRange(Range& range) const;
  /// What is wrong with a range as its reader took it, and a note on one without extent.
  static ScEng::Status CheckRange(const Node& reader, const std::pair<std::string, std::string>& range,
                                  std::vector<std::string>& notes);

  Node* node_ = nullptr;
  std::string id_;
  std::vector<std::string> words_;
  std::vector<std::string> inputs_;
  std::vector<std::string> each_;
  std::vector<std::string> defaults_;
  std::vector<std::string> settings_;
  std::optional<std::string> range_;
};
