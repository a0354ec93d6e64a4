// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Host/Documents/PlugName.h"
#include "Host/Editing/Edit.h"

namespace ScEng {

using Edits = std::vector<std::unique_ptr<Edit>>;

/// Undoes edits from the last to the first, or does them in order. Where one fails, those before it are taken back, so
/// that nothing has changed.
Status UndoEdits(GraphDocument& document, const Edits& edits);
Status RedoEdits(GraphDocument& document, const Edits& edits);

/// A command while it is made: the edits that were done so far, in order. An operation that fails has changed nothing
/// itself; whoever gives the command up rolls back what was done before it.
class Transaction {
 public:
  explicit Transaction(GraphDocument& document) : document_(document), exact_(document) {}

  [[nodiscard]] GraphDocument& GetDocument() const { return document_; }
  [[nodiscard]] const DocumentEdits& GetExact() const { return exact_; }
  [[nodiscard]] std::size_t GetNumEdits() const { return edits_.size(); }
  /// Takes back all but the first `count` edits. An error where that fails, and nothing is taken back then.
  Status RollBackTo(std::size_t count);
  /// Takes edits that have been done already.
  void Record(Edits edits);
  /// Whether the document is as it was before.
  [[nodiscard]] bool ChangesNothing() const;
  [[nodiscard]] Edits Take() { return std::move(edits_); }

  Status AddNode(const std::string& id, const NodeType& type);
  /// Adds a copy of a node at the end.
  Status InsertNode(const std::string& id, const std::shared_ptr<const NodeState>& state);
  /// Removes nodes with their connections and outputs, from the end of the document to its beginning.
  Status RemoveNodes(const std::unordered_set<std::string>& ids);
  Status RenameNode(const std::string& id, const std::string& now);
  Status MoveNode(const std::string& id, std::size_t place);
  Status SetEnabled(const std::string& id, bool enabled);
  Status SetPosition(const std::string& id, const std::optional<Point>& position);
  Status SetNote(const std::string& id, const std::string& note);

  /// At the end, or at a place.
  Status Connect(const ConnectionState& connection, std::optional<std::size_t> place = std::nullopt);
  Status RemoveConnection(std::size_t place);

  /// Does something to the value of an attribute by `set`, which may have notes to add.
  template <class Function>
  Status ChangeAttribute(const std::string& id, std::size_t attribute, const Function& set) {
    const auto before = exact_.GetAttribute(id, attribute);
    const Status status = set();
    const auto after = exact_.GetAttribute(id, attribute);
    if (status.IsError() || !before || !after) return status;
    edits_.push_back(std::make_unique<AttributeEdit>(AttributeKey{id, attribute}, *before, *after));
    return {};
  }

  Status AddOutput(const DocumentOutput& output);
  Status SetOutput(std::size_t place, const DocumentOutput& output);
  Status RemoveOutput(std::size_t place);
  Status AddFrame(const DocumentFrame& frame);
  Status SetFrame(std::size_t place, const DocumentFrame& frame);
  Status RemoveFrame(std::size_t place);
  Status SetShown(const std::string& plug);

 private:
  Status Perform(std::unique_ptr<Edit> edit);
  Status CheckNode(const std::string& id) const;

  GraphDocument& document_;
  DocumentEdits exact_;
  Edits edits_;
};

}  // namespace ScEng
