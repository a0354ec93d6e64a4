// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "Host/Documents/Api.h"
#include "Host/Documents/DocumentParts.h"
#include "Host/Documents/GraphDocument.h"
#include "Host/Tools/PlugValue.h"
#include "Host/Util/Status.h"

namespace ScEng {

/// All that a document says of one node, or placeholder, but its id, its place and its connections.
struct NodeState;

/// Whether two values are saved as the same text: zeros of different sign are not the same.
HOST_DOCUMENTS_API bool IsSameValue(const PlugValue& one, const PlugValue& other);

/// The value of an attribute, and how the document came by it.
struct AttributeState {
  PlugValue value;
  /// The document gave it, so that it is saved also where it is the default.
  bool was_given = false;
  /// It was set since.
  bool was_set = false;

  friend bool operator==(const AttributeState& one, const AttributeState& other) {
    return IsSameValue(one.value, other.value) && one.was_given == other.was_given && one.was_set == other.was_set;
  }
};

/// A connection, and whether the document wrote its index.
struct ConnectionState {
  DocumentConnection connection;
  bool gave_index = false;
};

/// Changes of single parts of a document that can be taken back exactly: a part that was looked up here, removed and
/// put back leaves the document as it was, in its order and to the byte of what is saved. Undoing is made of this.
///
/// Places count from 0 in the order of the document; a place that does not exist is an error and changes nothing.
/// Observers of the document are told as usual. Looks at the document, which outlives it.
class HOST_DOCUMENTS_API DocumentEdits {
 public:
  explicit DocumentEdits(GraphDocument& document);

  // ---- Nodes ----

  /// A copy that stands on its own; null where there is no such node.
  [[nodiscard]] std::shared_ptr<const NodeState> CopyNode(const std::string& id) const;
  /// Adds a node as it was copied, from this document or another one with the same catalogue. An error as `AddNode`
  /// of the document has it. Relative paths start from the folder of this document from now on.
  Status InsertNode(const std::string& id, const NodeState& state, std::size_t place);
  /// Searches from the end.
  [[nodiscard]] std::optional<std::size_t> FindPlace(const std::string& id) const;

  // ---- Attributes, by their ids within the node ----

  /// Nothing where there is no such node or attribute, and for a placeholder.
  [[nodiscard]] std::optional<AttributeState> GetAttribute(const std::string& id, std::size_t attribute) const;
  /// Gives back a state that the same attribute has had.
  Status SetAttribute(const std::string& id, std::size_t attribute, const AttributeState& state);
  /// Tells the document's observers of what somebody has set at the node itself: a value, or the enabled flag.
  void TellAttributeChanged(const std::string& id, const std::string& attribute);
  void TellNodeChanged(const std::string& id);

  // ---- Connections ----

  [[nodiscard]] std::size_t GetNumConnections() const;
  /// `place` is one that exists.
  [[nodiscard]] ConnectionState GetConnection(std::size_t place) const;
  /// The places of all connections from or to nodes of a set, in ascending order.
  [[nodiscard]] std::vector<std::size_t> FindConnections(const std::unordered_set<std::string>& ids) const;
  /// The place of a connection, whose attribute may have an old name.
  [[nodiscard]] std::optional<std::size_t> FindConnection(const DocumentConnection& connection) const;
  /// `place` may be the number of connections. Checked like any new connection.
  Status InsertConnection(std::size_t place, const ConnectionState& state);
  Status RemoveConnection(std::size_t place);

  // ---- Outputs, frames and the view ----

  /// `place` may be the number of outputs.
  Status InsertOutput(std::size_t place, const DocumentOutput& output);
  /// `place` may be the number of frames.
  Status InsertFrame(std::size_t place, const DocumentFrame& frame);
  Status SetFrame(std::size_t place, const DocumentFrame& frame);
  Status RemoveFrame(std::size_t place);
  /// Sets which output the view shows; "id.plug" or nothing.
  Status SetShown(const std::string& plug);
  /// Sets the folder that relative paths start from. The paths stay as they are written.
  void SetFolder(const std::filesystem::path& folder);

 private:
  GraphDocument& document_;
};

}  // namespace ScEng
