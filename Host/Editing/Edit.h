// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "Host/Documents/DocumentEdits.h"
#include "Host/Documents/GraphDocument.h"
#include "Host/Util/Status.h"

namespace ScEng {

/// One change of one part of a document, which can be done and undone any number of times. It knows nodes by their ids
/// alone, since undoing makes new nodes.
class Edit {
 public:
  Edit() = default;
  Edit(const Edit&) = delete;
  Edit& operator=(const Edit&) = delete;
  virtual ~Edit() = default;

  /// Either does all of it or changes nothing and says why.
  virtual Status Do(GraphDocument& document) = 0;
  virtual Status Undo(GraphDocument& document) = 0;
  [[nodiscard]] virtual bool ChangesNothing() const;
  /// Whether `later`, done right after this one, changes the same part.
  [[nodiscard]] virtual bool CanTakeIn(const Edit& later) const;
  /// Makes one change of both. Only where `CanTakeIn` holds.
  virtual void TakeIn(const Edit& later);
};

/// Something that has one value before and another one after. `Set(document, key, value)` gives it a value.
template <class Key, class Value, Status (*Set)(GraphDocument&, const Key&, const Value&)>
class ValueEdit : public Edit {
 public:
  ValueEdit(Key key, Value before, Value after)
      : key_(std::move(key)), before_(std::move(before)), after_(std::move(after)) {}

  Status Do(GraphDocument& document) override { return Set(document, key_, after_); }
  Status Undo(GraphDocument& document) override { return Set(document, key_, before_); }
  [[nodiscard]] bool ChangesNothing() const override { return before_ == after_; }
  [[nodiscard]] bool CanTakeIn(const Edit& later) const override {
    const auto* same = dynamic_cast<const ValueEdit*>(&later);
    return same != nullptr && same->key_ == key_;
  }
  void TakeIn(const Edit& later) override { after_ = dynamic_cast<const ValueEdit&>(later).after_; }

 private:
  Key key_;
  Value before_;
  Value after_;
};

enum class Presence { kAdded, kRemoved };

/// Something that stands at a place of a list and comes or goes.
template <class Thing, Status (*Insert)(GraphDocument&, std::size_t, const Thing&),
          Status (*Remove)(GraphDocument&, std::size_t, const Thing&)>
class PresenceEdit : public Edit {
 public:
  PresenceEdit(Presence presence, std::size_t place, Thing thing)
      : presence_(presence), place_(place), thing_(std::move(thing)) {}

  Status Do(GraphDocument& document) override { return Apply(document, presence_ == Presence::kAdded); }
  Status Undo(GraphDocument& document) override { return Apply(document, presence_ == Presence::kRemoved); }

 private:
  Status Apply(GraphDocument& document, bool is_there) const {
    return is_there ? Insert(document, place_, thing_) : Remove(document, place_, thing_);
  }

  Presence presence_;
  std::size_t place_;
  Thing thing_;
};

/// A node with its id.
struct NamedNode {
  std::string id;
  std::shared_ptr<const NodeState> state;
};

/// An attribute by the id of its node and its own within the node.
struct AttributeKey {
  std::string node;
  std::size_t attribute = 0;

  friend bool operator==(const AttributeKey&, const AttributeKey&) = default;
};

/// For what there is once in a document.
struct NoKey {
  friend bool operator==(const NoKey&, const NoKey&) = default;
};

// The functions that the kinds of edits are made of.
namespace Apply {
Status InsertNode(GraphDocument& document, std::size_t place, const NamedNode& node);
Status RemoveNode(GraphDocument& document, std::size_t place, const NamedNode& node);
Status InsertConnection(GraphDocument& document, std::size_t place, const ConnectionState& connection);
Status RemoveConnection(GraphDocument& document, std::size_t place, const ConnectionState& connection);
Status InsertOutput(GraphDocument& document, std::size_t place, const DocumentOutput& output);
Status RemoveOutput(GraphDocument& document, std::size_t place, const DocumentOutput& output);
Status InsertFrame(GraphDocument& document, std::size_t place, const DocumentFrame& frame);
Status RemoveFrame(GraphDocument& document, std::size_t place, const DocumentFrame& frame);
Status SetAttribute(GraphDocument& document, const AttributeKey& key, const AttributeState& state);
Status SetEnabled(GraphDocument& document, const std::string& id, const bool& enabled);
Status SetPosition(GraphDocument& document, const std::string& id, const std::optional<Point>& position);
Status SetNote(GraphDocument& document, const std::string& id, const std::string& note);
Status SetNodePlace(GraphDocument& document, const std::string& id, const std::size_t& place);
Status SetOutput(GraphDocument& document, const std::size_t& place, const DocumentOutput& output);
Status SetFrame(GraphDocument& document, const std::size_t& place, const DocumentFrame& frame);
Status SetShown(GraphDocument& document, const NoKey& key, const std::string& plug);
}  // namespace Apply

using NodePresence = PresenceEdit<NamedNode, Apply::InsertNode, Apply::RemoveNode>;
using ConnectionPresence = PresenceEdit<ConnectionState, Apply::InsertConnection, Apply::RemoveConnection>;
using OutputPresence = PresenceEdit<DocumentOutput, Apply::InsertOutput, Apply::RemoveOutput>;
using FramePresence = PresenceEdit<DocumentFrame, Apply::InsertFrame, Apply::RemoveFrame>;
using AttributeEdit = ValueEdit<AttributeKey, AttributeState, Apply::SetAttribute>;
using EnabledEdit = ValueEdit<std::string, bool, Apply::SetEnabled>;
using PositionEdit = ValueEdit<std::string, std::optional<Point>, Apply::SetPosition>;
using NoteEdit = ValueEdit<std::string, std::string, Apply::SetNote>;
using NodePlaceEdit = ValueEdit<std::string, std::size_t, Apply::SetNodePlace>;
using OutputEdit = ValueEdit<std::size_t, DocumentOutput, Apply::SetOutput>;
using FrameEdit = ValueEdit<std::size_t, DocumentFrame, Apply::SetFrame>;
using ShownEdit = ValueEdit<NoKey, std::string, Apply::SetShown>;

/// A node gets another id.
class RenameEdit : public Edit {
 public:
  RenameEdit(std::string before, std::string now) : before_(std::move(before)), now_(std::move(now)) {}

  Status Do(GraphDocument& document) override { return document.RenameNode(before_, now_); }
  Status Undo(GraphDocument& document) override { return document.RenameNode(now_, before_); }

 private:
  std::string before_;
  std::string now_;
};

}  // namespace ScEng
