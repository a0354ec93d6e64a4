// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <map>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "Host/Editing/Names.h"
#include "Host/Editing/SessionState.h"

namespace ScEng {
namespace {

/// The main input and output of a node; nothing where it lacks one, or they are of different kinds.
struct MainPlugs {
  std::string input;
  std::string output;
  unsigned type = PlugType::kNone;
};

std::optional<MainPlugs> FindMainPlugs(const GraphDocument& document, const std::string& id) {
  const Node* node = document.FindNode(id);
  if (node == nullptr || node->GetNumRegularInputs() == 0 || node->GetOutplugs().empty()) return std::nullopt;
  const PlugRecord& input = node->GetInplugs().front();
  const PlugRecord& output = node->GetOutplugs().front();
  if (input.type != output.type) return std::nullopt;
  return MainPlugs{id + "." + input.name, id + "." + output.name, input.type};
}

/// Whether a plug delivers values of a kind; a placeholder may.
bool MayDeliver(const GraphDocument& document, const std::string& plug, unsigned type) {
  const Node* node = document.FindNode(GetNodeOfPlug(plug));
  if (node == nullptr) return true;
  const int outplug = node->GetOutplugIndex(GetNameOfPlug(plug));
  return outplug >= 0 && node->GetOutplugs()[static_cast<std::size_t>(outplug)].type == type;
}

/// What stands for the main outputs of nodes that go: what fed their main inputs, through any number of them.
class Healing {
 public:
  Healing(const GraphDocument& document, const DocumentEdits& exact, const std::unordered_set<std::string>& ids)
      : document_(document), ids_(ids) {
    std::unordered_map<std::string, std::string> outputs_by_input;
    for (const std::string& id : ids) {
      if (const auto plugs = FindMainPlugs(document, id)) {
        outputs_by_input.emplace(plugs->input, plugs->output);
        types_.emplace(plugs->output, plugs->type);
      }
    }
    std::unordered_map<std::string, unsigned> indices;
    for (const std::size_t place : exact.FindConnections(ids)) {
      const DocumentConnection connection = exact.GetConnection(place).connection;
      const auto found = outputs_by_input.find(connection.to);
      if (found == outputs_by_input.end()) continue;
      const auto [index, is_new] = indices.try_emplace(found->second, connection.index);
      if (!is_new && index->second <= connection.index) continue;
      index->second = connection.index;
      sources_[found->second] = connection.from;
    }
  }

  /// The plug of a node that stays; empty where there is none.
  std::string Find(const std::string& plug) {
    std::vector<std::string> path;
    std::string source = plug;
    while (!source.empty() && ids_.contains(GetNodeOfPlug(source))) {
      path.push_back(source);
      const auto known = sources_.find(source);
      const bool goes_on = known != sources_.end() && MayDeliver(document_, known->second, types_[source]);
      source = goes_on ? known->second : std::string();
    }
    // The next that comes along any of these is there at once.
    for (const std::string& passed : path) sources_[passed] = source;
    return source;
  }

 private:
  const GraphDocument& document_;
  const std::unordered_set<std::string>& ids_;
  std::unordered_map<std::string, unsigned> types_;
  /// What feeds the main input of the node whose main output is the key.
  std::unordered_map<std::string, std::string> sources_;
};

}  // namespace

Status EditSession::RemoveAndHeal(const std::vector<std::string>& ids) {
  return implementation_->Run("Remove " + NameNodes(ids) + " and heal", [&](Transaction& transaction) {
    Status status = implementation_->CheckNodes(ids);
    if (status.IsError()) return status;
    GraphDocument& document = *implementation_->document;
    const std::unordered_set<std::string> gone(ids.begin(), ids.end());
    Healing healing(document, transaction.GetExact(), gone);
    std::vector<ConnectionState> joined;
    for (const std::size_t place : transaction.GetExact().FindConnections(gone)) {
      ConnectionState state = transaction.GetExact().GetConnection(place);
      if (gone.contains(GetNodeOfPlug(state.connection.to))) continue;
      state.connection.from = healing.Find(state.connection.from);
      if (!state.connection.from.empty()) joined.push_back(state);
    }
    for (std::size_t i = 0; i < document.GetOutputs().size(); ++i) {
      DocumentOutput output = document.GetOutputs()[i];
      if (!gone.contains(GetNodeOfPlug(output.from))) continue;
      output.from = healing.Find(output.from);
      // What is no image is written to no file; the output goes with its node then.
      if (!output.from.empty()) static_cast<void>(transaction.SetOutput(i, output));
    }
    const std::string shown = document.GetView() ? document.GetView()->shown : std::string();
    if (gone.contains(GetNodeOfPlug(shown))) static_cast<void>(transaction.SetShown(healing.Find(shown)));
    status = transaction.RemoveNodes(gone);
    // An input that a node would come to twice, or that does not fit, stays free.
    for (const ConnectionState& state : joined) {
      if (!status.IsError()) static_cast<void>(transaction.Connect(state));
    }
    return status;
  });
}

Status EditSession::Reconnect(const DocumentConnection& connection) {
  return implementation_->Run("Connect " + connection.from + " to " + connection.to, [&](Transaction& transaction) {
    const DocumentEdits& exact = transaction.GetExact();
    // Under its current name, which the document knows when the connection is there.
    const Node* node = implementation_->document->FindNode(GetNodeOfPlug(connection.to));
    const int plug = node == nullptr ? -1 : node->GetInplugIndex(GetNameOfPlug(connection.to));
    const std::string to = plug < 0
                               ? connection.to
                               : GetNodeOfPlug(connection.to) + "." + node->GetInplugName(static_cast<unsigned>(plug));
    for (const std::size_t place : exact.FindConnections({GetNodeOfPlug(connection.to)})) {
      const DocumentConnection other = exact.GetConnection(place).connection;
      if (other.to != to || other.index != connection.index) continue;
      const Status status = transaction.RemoveConnection(place);
      if (status.IsError()) return status;
      break;
    }
    return transaction.Connect(ConnectionState{connection, false});
  });
}

Status EditSession::Implementation::InsertOnConnection(Transaction& transaction, const std::string& id,
                                                       const DocumentConnection& connection) const {
  const Status known = CheckNodes({id});
  if (known.IsError()) return known;
  std::size_t place = 0;
  Status status = FindConnection(connection, place);
  if (status.IsError()) return status;
  const auto plugs = FindMainPlugs(*document, id);
  if (!plugs) {
    return Status::Error("node \"" + id + "\" has no main input and output of one kind, so it cannot be inserted");
  }
  const ConnectionState replaced = transaction.GetExact().GetConnection(place);
  status = transaction.RemoveConnection(place);
  if (!status.IsError()) {
    status = transaction.Connect(ConnectionState{{replaced.connection.from, plugs->input, 0}, false}, place);
  }
  if (!status.IsError()) {
    const DocumentConnection onward{plugs->output, replaced.connection.to, replaced.connection.index};
    status = transaction.Connect(ConnectionState{onward, replaced.gave_index}, place + 1);
  }
  return status;
}

Status EditSession::InsertOnConnection(const std::string& id, const DocumentConnection& connection) {
  return implementation_->Run(
      "Insert " + id + " between " + connection.from + " and " + connection.to,
      [&](Transaction& transaction) { return implementation_->InsertOnConnection(transaction, id, connection); });
}

Status EditSession::AddOnConnection(const NewNode& node, const DocumentConnection& connection, std::string* id) {
  std::string made;
  const std::string name =
      "Insert " + implementation_->GetTypeName(node.type) + " between " + connection.from + " and " + connection.to;
  const Status status = implementation_->Run(name, [&](Transaction& transaction) {
    const Status added = implementation_->AddNode(transaction, node, made);
    return added.IsError() ? added : implementation_->InsertOnConnection(transaction, made, connection);
  });
  if (id != nullptr && !status.IsError()) *id = made;
  return status;
}

}  // namespace ScEng
