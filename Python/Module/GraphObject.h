// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Host/Documents/GraphDocument.h"
#include "Python/Module/SharedImage.h"

namespace ValuePython {

class Interruption;

/// A document as an object of Python. Used with the interpreter's lock, which is released while it reads, evaluates and
/// writes.
///
/// Documents are used by one thread at a time: whoever comes while another call is under way, be it on another thread
/// or from code that this call runs, gets a RuntimeError.
class GraphObject {
 public:
  using SharedImagePtr = std::shared_ptr<SharedImage>;
  /// Images by what they stand in for: an output "id.plug", or the id of a node with one image output.
  using Inputs = std::vector<std::pair<std::string, SharedImagePtr>>;

  GraphObject();
  static std::unique_ptr<GraphObject> Load(const std::string& path, bool keeps_unknown);
  static std::unique_ptr<GraphObject> FromText(const std::string& text, const std::string& folder,
                                               const std::string& name, bool keeps_unknown);

  void Save(const std::string& path);
  std::string Write();
  std::string GetFolder();

  std::string Add(const std::string& type, const std::optional<std::string>& id, const pybind11::dict& attributes);
  void Remove(const std::string& id);
  void Rename(const std::string& id, const std::string& now);
  void SetEnabled(const std::string& id, bool enabled);
  bool IsEnabled(const std::string& id);
  /// The type of each node by its id, in the order of the document; None for one that is unknown.
  pybind11::list ListNodes();

  void Connect(const std::string& from, const std::string& to, unsigned index);
  void Disconnect(const std::string& from, const std::string& to, unsigned index);
  std::vector<ScEng::DocumentConnection> ListConnections();

  void Set(const std::string& attribute, pybind11::handle value);
  /// Of "id.attribute" its value, of "id" all values by name.
  pybind11::object Get(const std::string& attribute);

  void AddOutput(ScEng::DocumentOutput output);
  void RemoveOutputs(const std::string& written);
  std::vector<ScEng::DocumentOutput> ListOutputs();

  ScEng::Findings Check();
  SharedImagePtr Evaluate(const std::string& plug, const Inputs& inputs, const pybind11::object& progress, bool keep);
  /// What was written: path, size and type of each file.
  pybind11::list Run(const pybind11::object& progress);
  /// The graph as SVG, with its problems.
  std::string DrawSvg();
  std::string Describe() const;

 private:
  class Use;
  class Sources;

  explicit GraphObject(std::unique_ptr<ScEng::GraphDocument> document);
  /// Moves the document to the node types that there are now, which makes nodes of placeholders whose types have come.
  void FollowCatalog();
  /// What a plug that a caller names is to be.
  enum class PlugUse { kInput, kOutput, kImageOutput };
  /// Whether it is "id.plug" with the id of a node.
  [[nodiscard]] bool NamesPlug(const std::string& written) const;
  [[nodiscard]] std::vector<std::string> ListPlugs(const std::string& id, PlugUse use) const;
  /// "id.plug" of that, or of an id alone where the node has one such plug. ValueError, which begins with `lead`, where
  /// there is no such node or it has none or several.
  [[nodiscard]] std::string FindPlug(const std::string& written, PlugUse use, const std::string& lead) const;
  [[nodiscard]] std::string DescribeMissingNode(const std::string& written, PlugUse use) const;
  /// Why two plugs are not connected, and what would help; `message` is what the document says.
  [[nodiscard]] std::string DescribeRefusal(const std::string& from, const std::string& to, unsigned index,
                                            const std::string& message) const;
  [[nodiscard]] std::string DescribeTaken(const std::string& from, const std::string& to, unsigned index,
                                          bool takes_many) const;
  [[nodiscard]] std::string DescribeCycle(const std::string& from, const std::string& to,
                                          const std::string& message) const;
  void SetAttribute(Node& node, Attribute& attribute, pybind11::handle value);
  /// Node and attribute of "id.attribute".
  std::pair<Node*, Attribute*> FindAttribute(const std::string& written) const;
  Node& FindNode(const std::string& id) const;
  /// The nodes that a node depends on, itself included, in the order of the document.
  [[nodiscard]] std::vector<const Node*> FindSources(const std::string& id) const;
  [[noreturn]] void ThrowFailure(const ScEng::RunReport& report, const Interruption& interruption,
                                 const pybind11::object& written) const;

  std::unique_ptr<ScEng::GraphDocument> document_;
  std::uint64_t generation_ = 0;
  bool is_used_ = false;
};

}  // namespace ValuePython
