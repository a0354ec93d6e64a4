// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Host/Editing/AttributeWatch.h"
#include "Host/Editing/EditSession.h"
#include "Host/Editing/History.h"
#include "Host/Editing/JournalWriter.h"
#include "Host/Editing/Transaction.h"

namespace ScEng {

/// Everything that a session holds.
class EditSession::Implementation {
 public:
  Implementation(std::shared_ptr<const NodeCatalog> catalog_of_nodes, std::filesystem::path state_folder)
      : catalog(std::move(catalog_of_nodes)),
        document(std::make_unique<GraphDocument>(catalog)),
        journal(std::move(state_folder)) {}

  std::shared_ptr<const NodeCatalog> catalog;
  std::unique_ptr<GraphDocument> document;
  std::filesystem::path file;
  History history;
  JournalWriter journal;
  std::vector<EditObserver*> observers;
  /// They look at nodes of the document.
  std::vector<std::unique_ptr<AttributeWatch>> watches;

  /// Makes one command, or a part of the one that is open. What `commands` did before an error is taken back.
  Status Run(const std::string& name, const std::function<Status(Transaction&)>& commands);
  /// Makes one command of several.
  Status Group(const std::string& name, const std::function<Status()>& commands);
  Status GoTo(std::size_t place);
  /// Whether a command is being made, undone or redone.
  [[nodiscard]] bool IsBusy() const { return is_busy_; }
  /// Makes a command of changes that somebody else has made.
  void TakeChanges(const std::string& name, Edits edits);
  void TellHistoryChanged();

  /// An error that names the first id of which there is no node, or says that none is given.
  [[nodiscard]] Status CheckNodes(const std::vector<std::string>& ids) const;
  /// Adds a node with an id of its own where it is given none.
  Status AddNode(Transaction& transaction, const NewNode& node, std::string& id) const;
  /// "Value Clamp"; the numbers where there is no such type.
  [[nodiscard]] std::string GetTypeName(const NodeType& type) const;
  /// The place of a connection, or an error.
  Status FindConnection(const DocumentConnection& connection, std::size_t& place) const;
  /// Puts a node that is there into a connection.
  Status InsertOnConnection(Transaction& transaction, const std::string& id,
                            const DocumentConnection& connection) const;
  /// Copies nodes and the connections among them into an empty document. Those from outside go to `incoming`.
  Status CopyTo(GraphDocument& copy, const std::vector<std::string>& ids,
                std::vector<DocumentConnection>& incoming) const;
  /// Adds what is in another document, which is used up.
  Status Paste(Transaction& transaction, GraphDocument& source, const PasteOptions& options,
               std::vector<std::string>& ids) const;

 private:
  Status Finish(const std::string& name, Transaction& transaction, const Status& status);

  /// The command that is being made.
  Transaction* open_ = nullptr;
  /// Within a command or while observers are told, when no other command may start.
  bool is_busy_ = false;
};

}  // namespace ScEng
