// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Host/Tools/Api.h"
#include "Host/Tools/Attribute.h"
#include "Host/Tools/NodeType.h"
#include "Host/Tools/PlugValue.h"
#include "Host/Tools/Reach.h"
#include "Host/Util/RefCounter.h"

class Image;
struct NodeRecord;

/// Something that the host tells its nodes. The kind is the third number.
struct NodeEvent {
  std::uint32_t sender = 0;
  std::uint32_t serial = 0;
  std::uint32_t kind = 0;

  /// Cached results are stale or their memory is wanted: release every cached output image.
  static constexpr std::uint32_t kDropCachedResults = 11;
};

/// What a node says of one of its inputs or outputs.
struct PlugRecord {
  std::uint32_t first_number = 0;
  /// The data-type code, see `PlugType`.
  std::uint32_t type = PlugType::kNone;
  std::string name;
  std::uint64_t second_number = 0;
  /// Of an input: how many connections it takes, 1 or `kAnyNumber`. Of an output: 0.
  std::uint32_t connections = 0;

  static constexpr std::uint32_t kAnyNumber = 0xFFFFFFFF;

  /// An input that takes one connection.
  static PlugRecord Input(unsigned type, std::string name) { return {0, type, std::move(name), 0, 1}; }
  /// An input that takes any number of connections, each at an index of its own.
  static PlugRecord MultipleInput(unsigned type, std::string name) { return {0, type, std::move(name), 0, kAnyNumber}; }
  static PlugRecord Output(unsigned type, std::string name) { return {0, type, std::move(name), 0, 0}; }
};

class Node;

/// Who wants to know what happens to a node: a panel that shows it, for example. Observers are told on the thread that
/// makes the change, and may add and remove observers then.
class HOST_TOOLS_API NodeObserver {
 public:
  NodeObserver() = default;
  NodeObserver(const NodeObserver&) = delete;
  NodeObserver& operator=(const NodeObserver&) = delete;
  virtual ~NodeObserver();

  /// An attribute or the enabled flag has changed.
  virtual void OnNodeChanged(Node& node);
  /// The plug of an attribute was connected or is free again.
  virtual void OnAttributeSourcesChanged(Node& node);
  /// The node is about to go. It tells this observer nothing any more.
  virtual void OnNodeDestroyed(Node& node);
};

/// The base of every node: attributes, plugs, state, and the operations that the host's engine calls.
///
/// A node class declares its attributes and plugs in its constructor: with `Declare` from its record, or by filling
/// `attributes_`, `inplugs_` and `outplugs_` and calling `UpdateInplugsAndOutplugs` last. The order of the virtual
/// operations is the interface between host and node libraries: each keeps its slot (the destructor counts as one), and
/// new ones take the place of reserved ones. All work on one node happens on one thread at a time.
class HOST_TOOLS_API Node : public RefCounter<Node> {
 public:
  enum class State : unsigned {
    kIdle = 0,
    kReady = 1,
    kWarning = 2,
    /// Evaluation failed; the message says why.
    kError = 3,
    /// A file that the node reads or writes is the cause.
    kFileError = 4,
  };

  Node();
  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;

  // ---- Virtual operations, in slot order ----

  /// Slot 0. Called once by the engine after the node has joined it.
  virtual void OnAdded();
  /// Slot 1. Called once by the engine before the node leaves it.
  virtual void OnRemoved();
  /// Slot 2.
  virtual ~Node();
  /// Slot 3. Whether the node acts on something outside the graph, a file for example, and so is evaluated although
  /// nothing asks for its output.
  [[nodiscard]] virtual bool IsSink() const;
  /// Slot 4. The same value as the descriptor's.
  [[nodiscard]] virtual NodeType GetNodeType() const = 0;
  /// Slot 5. The display name.
  [[nodiscard]] virtual std::string GetName() const = 0;
  /// Slot 6. The version that the node's attributes are stored under now.
  [[nodiscard]] virtual unsigned GetAttributeVersion() const;
  /// Slot 7. The current name of an attribute that was stored under `name` with attribute version `version`.
  [[nodiscard]] virtual std::string TranslateAttributeName(unsigned version, const std::string& name) const;
  virtual void Reserved8();
  virtual void Reserved9();
  virtual void Reserved10();
  /// Slots 11 to 14. What an editor shows for a plug (its name unless the node knows better), and whether it shows it.
  [[nodiscard]] virtual std::string GetInplugAlias(unsigned inplug) const;
  [[nodiscard]] virtual bool GetInplugVisibility(unsigned inplug) const;
  [[nodiscard]] virtual std::string GetOutplugAlias(unsigned outplug) const;
  [[nodiscard]] virtual bool GetOutplugVisibility(unsigned outplug) const;
  /// Slot 15. Whether a change at the input changes the output.
  [[nodiscard]] virtual bool InplugAffectsOutplug(unsigned inplug, unsigned outplug) const;
  /// Slot 16. Whether documents may carry this attribute although the node no longer has it. `version` is the
  /// attribute version that the document stored.
  [[nodiscard]] virtual bool IsObsoleteAttribute(unsigned version, const char* name) const;
  virtual void Reserved17();
  /// Slots 18 to 21. Plug names and indices under the names of document version 0, which are the current ones.
  [[nodiscard]] virtual std::string V0GetOutplugName(unsigned outplug) const;
  [[nodiscard]] virtual int V0GetOutplugIndex(const std::string& name) const;
  [[nodiscard]] virtual std::string V0GetInplugName(unsigned inplug) const;
  [[nodiscard]] virtual int V0GetInplugIndex(const std::string& name) const;
  virtual void Reserved22();
  /// Slot 23. Answers whether the event was understood.
  virtual bool OnProcessEvent(NodeEvent event);
  virtual void Reserved24();
  virtual void Reserved25();
  virtual void Reserved26();
  virtual void Reserved27();
  virtual void Reserved28();
  virtual void Reserved29();
  virtual void Reserved30();
  virtual void Reserved31();
  virtual void Reserved32();
  virtual void Reserved33();
  /// Slot 34. Computes the node's output. `evaluation` is the number of the evaluation: the index of the output that
  /// is asked for (a node that makes all its outputs at once need not look at it), and what `SetState` is given.
  /// `inputs` holds what the plugs carry: the regular inputs in plug order, one that takes many connections as one
  /// entry per connection (one empty entry when it has none), then the attributes in id order.
  virtual void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) = 0;
  virtual void Reserved35();
  virtual void Reserved36();
  virtual void Reserved37();
  virtual void Reserved38();
  virtual void Reserved39();
  /// Slot 40. The cached image of an output, without a reference for the caller; null where there is none.
  [[nodiscard]] virtual Image* GetOutputImage(unsigned outplug) const;
  /// Slot 41. What an output of another kind than image delivers; nothing by default.
  [[nodiscard]] virtual PlugValue GetOutputValue(unsigned outplug) const;
  virtual void Reserved42();
  virtual void Reserved43();
  virtual void Reserved44();
  virtual void Reserved45();
  virtual void Reserved46();
  virtual void Reserved47();
  virtual void Reserved48();
  virtual void Reserved49();
  virtual void Reserved50();
  virtual void Reserved51();
  virtual void Reserved52();
  virtual void Reserved53();
  virtual void Reserved54();
  virtual void Reserved55();
  virtual void Reserved56();
  virtual void Reserved57();
  virtual void Reserved58();
  virtual void Reserved59();
  virtual void Reserved60();
  virtual void Reserved61();

  // ---- What never changes ----

  /// The record that the node was declared from; null for a node that was declared by hand.
  [[nodiscard]] const NodeRecord* GetRecord() const { return record_; }
  /// Which part of its inputs the node reads, with what its plugs carry (in the form that `Evaluate` receives); of kind
  /// `kUnknown` for a node that does not say.
  [[nodiscard]] Reach GetReach(const std::vector<PlugValue>& inputs) const;
  /// Whether an output can have an image with images at these regular inputs, one entry for each; nothing for a node
  /// that does not say. See `NodeRecord::has_image`.
  [[nodiscard]] std::optional<bool> HasImage(unsigned outplug, const std::vector<bool>& inputs) const;

  // ---- Attributes and plugs ----

  [[nodiscard]] std::size_t GetNumAttributes() const { return attributes_.size(); }
  [[nodiscard]] Attribute* GetAttribute(std::size_t id) const;
  /// The attribute of that name, after the node has translated it from attribute version 0; null where there is none.
  [[nodiscard]] Attribute* GetAttribute(const std::string& name) const;

  /// All input plugs: the regular ones, then one per attribute.
  [[nodiscard]] const std::vector<PlugRecord>& GetInplugs() const { return all_inplugs_; }
  [[nodiscard]] const std::vector<PlugRecord>& GetOutplugs() const { return outplugs_; }
  [[nodiscard]] std::size_t GetNumRegularInputs() const { return inplugs_.size(); }
  /// The plug's own name; the empty string for an index that the node does not have.
  [[nodiscard]] std::string GetInplugName(unsigned inplug) const;
  [[nodiscard]] std::string GetOutplugName(unsigned outplug) const;
  /// The index of a plug by its name (of an attribute plug also by an old name); -1 where there is none.
  [[nodiscard]] int GetInplugIndex(const std::string& name) const;
  [[nodiscard]] int GetOutplugIndex(const std::string& name) const;

  /// Where the n-th regular input, or the attribute with this id, starts in the inputs that `Evaluate` receives.
  [[nodiscard]] unsigned GetInplugIdFromRegularInputId(unsigned input) const;
  [[nodiscard]] unsigned GetInplugIdFromAttributeId(unsigned attribute) const;
  /// Tells the node how many entries a regular input takes in the next evaluation. For the engine, and for whoever
  /// evaluates a node without one.
  void SetRegularInputEntries(unsigned input, unsigned entries);

  // ---- State ----

  [[nodiscard]] bool IsEnabled() const { return enabled_; }
  void SetEnabled(bool enabled);
  void SetState(unsigned evaluation, State state, const std::string& message);
  [[nodiscard]] State GetState() const { return state_; }
  [[nodiscard]] bool IsInError() const { return state_ == State::kError || state_ == State::kFileError; }
  [[nodiscard]] const std::string& GetStateMessage() const { return state_message_; }
  /// Called by the node's attributes and setters when something changed that the result depends on.
  void NotifyChanged();
  /// Who is told of such changes: the engine.
  void SetChangeListener(std::function<void(Node&)> listener) { change_listener_ = std::move(listener); }
  /// Everybody else who is told, after the engine. Not counted; an observer is removed before it goes.
  void AddObserver(NodeObserver* observer);
  void RemoveObserver(NodeObserver* observer);

  // ---- The node's place in its graph, for those who show it ----

  /// The name that the graph gave to this node, a document's id for example; the display name where it gave none.
  [[nodiscard]] std::string GetLabel() const;
  void SetLabel(std::string label) { label_ = std::move(label); }
  /// What feeds the plug of an attribute, as "label.plug"; empty where it carries the attribute's own value.
  [[nodiscard]] std::string GetAttributeSource(unsigned attribute) const;
  /// For the engine: `from`, which outlives the connection, feeds the plug of an attribute; null when nothing does.
  void SetAttributeSource(unsigned attribute, const Node* from, unsigned outplug);

 protected:
  /// Makes the attributes and plugs of the record in place of those that are there, and derives the list of input
  /// plugs. The record outlives the node.
  void Declare(const NodeRecord& record);
  /// Derives the list of input plugs from `inplugs_` and `attributes_`. The last call of every node's constructor.
  void UpdateInplugsAndOutplugs();

  std::vector<ScEng::RefPtr<Attribute>> attributes_;
  std::vector<PlugRecord> inplugs_;
  std::vector<PlugRecord> outplugs_;
  bool enabled_ = true;

 private:
  const NodeRecord* record_ = nullptr;
  std::vector<PlugRecord> all_inplugs_;
  std::vector<unsigned> entries_;
  State state_ = State::kIdle;
  std::string state_message_;
  std::function<void(Node&)> change_listener_;
  struct AttributeSource {
    const Node* node = nullptr;
    unsigned outplug = 0;
  };
  void Tell(void (NodeObserver::*what)(Node&));

  std::vector<NodeObserver*> observers_;
  // One entry per attribute that was ever connected, in id order.
  std::vector<AttributeSource> attribute_sources_;
  std::string label_;
};
