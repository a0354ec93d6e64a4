// SPDX-License-Identifier: Apache-2.0
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Host/Documents/NodeIds.h"
#include "Host/Editing/Names.h"
#include "Host/Editing/SessionState.h"
#include "Host/Tools/Guard.h"

namespace ScEng {

Status EditSession::Implementation::CopyTo(GraphDocument& copy, const std::vector<std::string>& ids,
                                           std::vector<DocumentConnection>& incoming) const {
  Status status = CheckNodes(ids);
  if (status.IsError()) return status;
  const std::unordered_set<std::string> wanted(ids.begin(), ids.end());
  const DocumentEdits exact(*document);
  DocumentEdits copied(copy);
  for (const std::string& id : document->GetIds()) {
    if (!wanted.contains(id)) continue;
    status = copied.InsertNode(id, *exact.CopyNode(id), copy.GetIds().size());
    if (status.IsError()) return status;
  }
  for (const std::size_t place : exact.FindConnections(wanted)) {
    const ConnectionState state = exact.GetConnection(place);
    if (!wanted.contains(GetNodeOfPlug(state.connection.to))) continue;
    if (!wanted.contains(GetNodeOfPlug(state.connection.from))) {
      incoming.push_back(state.connection);
      continue;
    }
    status = copied.InsertConnection(copied.GetNumConnections(), state);
    if (status.IsError()) return status;
  }
  return {};
}

Status EditSession::Implementation::Paste(Transaction& transaction, GraphDocument& source, const PasteOptions& options,
                                          std::vector<std::string>& ids) const {
  const DocumentEdits exact(source);
  UniqueIds unique(*document);
  std::unordered_map<std::string, std::string> new_ids;
  for (const std::string& id : source.GetIds()) {
    Status status;
    if (auto position = source.GetPosition(id)) {
      position = Point{position->x + options.offset.x, position->y + options.offset.y};
      status = source.SetPosition(id, position);
    }
    const std::string made = unique.Make(id);
    if (!status.IsError()) status = transaction.InsertNode(made, exact.CopyNode(id));
    if (status.IsError()) return status;
    new_ids.emplace(id, made);
    ids.push_back(made);
  }
  const auto rename = [&](const std::string& plug) {
    return new_ids.at(GetNodeOfPlug(plug)) + "." + GetNameOfPlug(plug);
  };
  for (std::size_t i = 0; i < exact.GetNumConnections(); ++i) {
    ConnectionState state = exact.GetConnection(i);
    state.connection.from = rename(state.connection.from);
    state.connection.to = rename(state.connection.to);
    const Status status = transaction.Connect(state);
    if (status.IsError()) return status;
  }
  for (const DocumentConnection& connection : options.incoming) {
    const auto to = new_ids.find(GetNodeOfPlug(connection.to));
    if (to == new_ids.end()) continue;
    static_cast<void>(transaction.Connect({{connection.from, rename(connection.to), connection.index}, false}));
  }
  for (DocumentFrame frame : source.GetFrames()) {
    frame.box.x += options.offset.x;
    frame.box.y += options.offset.y;
    const Status status = transaction.AddFrame(frame);
    if (status.IsError()) return status;
  }
  return {};
}

Status EditSession::Copy(const std::vector<std::string>& ids, CopiedNodes& copied) const {
  GraphDocument copy(implementation_->catalog);
  CopiedNodes made;
  Status status;
  const Status guarded =
      CallGuarded("a node type", [&] { status = implementation_->CopyTo(copy, ids, made.incoming); });
  if (guarded.IsError()) status = guarded;
  if (!status.IsError()) status = copy.SaveText(made.text);
  if (!status.IsError()) copied = std::move(made);
  return status;
}

Status EditSession::Paste(std::string_view text, const PasteOptions& options, std::vector<std::string>* ids) {
  GraphDocument source(implementation_->catalog);
  Findings findings;
  source.LoadText(text, implementation_->document->GetFolder(), "the clipboard", findings, {UnknownTypes::kKeep});
  if (const std::size_t errors = findings.GetNumErrors(); errors > 0) {
    const std::string others = errors > 1 ? " (and " + std::to_string(errors - 1) + " more)" : std::string();
    return Status::Error(MakeLine("cannot paste: " + findings.errors.front(), kLongestFinding - others.size()) +
                         others);
  }
  if (source.GetIds().empty()) return Status::Error("cannot paste: the clipboard holds a document without nodes");
  std::vector<std::string> made;
  const Status status = implementation_->Run("Paste " + NameNodes(source.GetIds()), [&](Transaction& transaction) {
    return implementation_->Paste(transaction, source, options, made);
  });
  if (ids != nullptr && !status.IsError()) *ids = std::move(made);
  return status;
}

Status EditSession::Duplicate(const std::vector<std::string>& ids, const Point& offset, bool keep_incoming,
                              std::vector<std::string>* duplicates) {
  std::vector<std::string> made;
  const Status status = implementation_->Run("Duplicate " + NameNodes(ids), [&](Transaction& transaction) {
    GraphDocument source(implementation_->catalog);
    PasteOptions options;
    options.offset = offset;
    const Status copied = implementation_->CopyTo(source, ids, options.incoming);
    if (copied.IsError()) return copied;
    if (!keep_incoming) options.incoming.clear();
    return implementation_->Paste(transaction, source, options, made);
  });
  if (duplicates != nullptr && !status.IsError()) *duplicates = std::move(made);
  return status;
}

}  // namespace ScEng
