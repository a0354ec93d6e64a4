// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Host/Documents/DocumentParts.h"
#include "Host/Documents/Findings.h"
#include "Host/Documents/GraphDocument.h"
#include "Host/Editing/Api.h"
#include "Host/Editing/Journals.h"
#include "Host/Tools/NodeType.h"
#include "Host/Tools/PlugValue.h"
#include "Host/Util/Status.h"

namespace ScEng {

/// Who wants to know how a document changes while it is edited: also while commands are undone and redone. Told as
/// document observers are.
class HOST_EDITING_API EditObserver : public DocumentObserver {
 public:
  /// A command was made, undone or redone, or the document was saved: all of its changes have been told.
  virtual void OnHistoryChanged();
};

/// A node that is to be added.
struct NewNode {
  NodeType type;
  /// Empty for one that is made from the display name: "value_clamp", "value_clamp2" and so on.
  std::string id;
  std::optional<Point> position;
};

/// A value for "node.attribute". A path is as it is to stand in the document.
struct AttributeValue {
  std::string attribute;
  PlugValue value;
};

/// Nodes that were copied.
struct CopiedNodes {
  /// A document of its own: the nodes, and the connections among them.
  std::string text;
  /// The connections that lead to the nodes from outside, which no document of its own can have.
  std::vector<DocumentConnection> incoming;
};

struct PasteOptions {
  /// Is added to the positions of nodes and frames.
  Point offset;
  /// Connections to make from nodes of this document, by name, to the pasted ones, which go by the ids in the text. One
  /// that cannot be made is left out.
  std::vector<DocumentConnection> incoming;
};

/// A document as something that is edited: every change is one command of a history, and can be undone.
///
/// A command that cannot be done says why in one line and changes nothing. One that would change nothing is done and
/// makes no step of the history. Undone to the start and redone to the end, the document is the same to the byte of
/// what is saved, with the order of nodes, connections, outputs and frames, and placeholders of unknown types. Commands
/// know nodes by their ids. A command costs time and memory in proportion to what it changes; one that removes,
/// renames, reorders or copies also looks through the lists of the document.
///
/// While a document is edited, a journal keeps its state for the case that the program ends early; see `Tick`.
///
/// Used on one thread at a time, that of its document.
class HOST_EDITING_API EditSession {
 public:
  /// A new document without a file. Journals of such documents go to `state_folder`; `GetStateFolder()` is the user's.
  EditSession(std::shared_ptr<const NodeCatalog> catalog, std::filesystem::path state_folder);
  /// The journal stays; see `Close`.
  ~EditSession();
  EditSession(const EditSession&) = delete;
  EditSession& operator=(const EditSession&) = delete;

  /// Opens a file. Nodes of unknown type become placeholders. Null where the document has errors, which go to
  /// `findings`: what could not be read would be lost when it is saved.
  static std::unique_ptr<EditSession> Open(const std::shared_ptr<const NodeCatalog>& catalog,
                                           const std::filesystem::path& file, const std::filesystem::path& state_folder,
                                           Findings& findings);
  /// Goes on where a program ended early, and takes the journal over. The document counts as modified. Null, with the
  /// reasons in `findings`, where the journal cannot be read.
  static std::unique_ptr<EditSession> Recover(const std::shared_ptr<const NodeCatalog>& catalog,
                                              const FoundJournal& journal, const std::filesystem::path& state_folder,
                                              Findings& findings);

  /// For reading, evaluating and showing. What changes the document goes through the commands below.
  [[nodiscard]] GraphDocument& GetDocument();
  [[nodiscard]] const GraphDocument& GetDocument() const;
  [[nodiscard]] const std::shared_ptr<const NodeCatalog>& GetCatalog() const;
  /// Empty for a document that has no file yet.
  [[nodiscard]] const std::filesystem::path& GetFile() const;

  /// Not counted; an observer is removed before it goes. It may not give commands while it is told.
  void AddObserver(EditObserver* observer);
  void RemoveObserver(EditObserver* observer);

  // ---- Nodes ----

  /// `id` receives the id of the node, where it is not null.
  Status AddNode(const NewNode& node, std::string* id = nullptr);
  /// Removes nodes with their connections and outputs.
  Status RemoveNodes(const std::vector<std::string>& ids);
  /// The same, and what the main output of a node fed (its first, with inputs, outputs of the document and the view) is
  /// then fed by what its main input had (the first one), where both are of one kind.
  Status RemoveAndHeal(const std::vector<std::string>& ids);
  Status RenameNode(const std::string& id, const std::string& now);
  Status SetEnabled(const std::vector<std::string>& ids, bool enabled);
  Status SetNote(const std::string& id, const std::string& note);
  /// Moves a node in the order of the document; the last place when `place` is beyond the end.
  Status MoveNode(const std::string& id, std::size_t place);

  struct Placement {
    std::string id;
    std::optional<Point> position;
  };
  Status SetPositions(const std::vector<Placement>& positions);

  // ---- Connections ----

  Status Connect(const DocumentConnection& connection);
  /// The same in place of what is connected there, if anything is.
  Status Reconnect(const DocumentConnection& connection);
  Status Disconnect(const DocumentConnection& connection);
  /// Puts a node into a connection: its main input, which must be free, and its main output.
  Status InsertOnConnection(const std::string& id, const DocumentConnection& connection);
  /// The same with a new node.
  Status AddOnConnection(const NewNode& node, const DocumentConnection& connection, std::string* id = nullptr);

  // ---- Attributes ----

  /// Sets "node.attribute" from text as on the command line, but that a path stands in the document as it is given.
  /// `notes` may be null.
  Status SetAttribute(const std::string& attribute, const std::string& text, std::vector<std::string>* notes = nullptr);
  Status SetAttributes(const std::vector<AttributeValue>& values, std::vector<std::string>* notes = nullptr);

  /// What somebody else, a panel for example, sets at these nodes becomes a command as well: each change of a value or
  /// of the enabled flag. Until the next call, or until a node goes; one that is brought back is another one. Takes the
  /// place of the nodes before.
  Status Watch(const std::vector<std::string>& ids);

  // ---- Outputs, frames and the view ----

  Status AddOutput(const DocumentOutput& output);
  Status SetOutput(std::size_t index, const DocumentOutput& output);
  Status RemoveOutput(std::size_t index);
  Status AddFrame(const DocumentFrame& frame);
  Status SetFrame(std::size_t index, const DocumentFrame& frame);
  Status RemoveFrame(std::size_t index);
  /// How the document is shown is no part of the history, nor does it make the document modified.
  Status SetView(const std::optional<DocumentView>& view);

  // ---- Clipboard ----

  Status Copy(const std::vector<std::string>& ids, CopiedNodes& copied) const;
  /// Adds the nodes of a document, with their connections and the frames of the document, under ids that are not taken.
  /// Its outputs are left out, since two may not write one file. An error where the text is no document without errors.
  /// `ids` receives the new ids in the order of the text, where it is not null.
  Status Paste(std::string_view text, const PasteOptions& options, std::vector<std::string>* ids = nullptr);
  /// Copies and pastes. With `keep_incoming`, what fed a node from outside feeds its copy too.
  Status Duplicate(const std::vector<std::string>& ids, const Point& offset, bool keep_incoming,
                   std::vector<std::string>* duplicates = nullptr);

  // ---- History ----

  /// Makes one command of all that are given in `commands`. Where it answers an error, they are taken back.
  Status Group(const std::string& name, const std::function<Status()>& commands);

  /// Between these two, a command that changes the same things as the command before it (values, positions, notes,
  /// frames, outputs) makes no step of its own: so a drag is undone in one go. They do not nest.
  void BeginGesture();
  void EndGesture();

  /// An error where there is nothing to undo or redo, or a node library fails; nothing has changed then.
  Status Undo();
  Status Redo();
  /// Goes to any place of the history: 0 is the start, n is after the n-th command.
  Status GoTo(std::size_t place);
  [[nodiscard]] std::size_t GetPlace() const;
  /// What people read of each command: "Add Value Clamp", "Connect blur.image to raised.image".
  [[nodiscard]] const std::vector<std::string>& GetHistory() const;
  /// Whether the document is another one than was opened or last saved.
  [[nodiscard]] bool IsModified() const;

  // ---- Files and the journal ----

  /// To the file that the document has, or has from now on. Paths are written as they stand: relative ones start from
  /// the folder of the new file. The journal goes.
  Status Save();
  Status SaveAs(const std::filesystem::path& file);

  using Time = std::chrono::system_clock::time_point;
  /// Writes the journal where the document has changed since: at once, but for the changes of the first second after
  /// the one before. Called twice a second or more often, it keeps every change in the journal within two seconds. An
  /// error, once a second, as long as the journal cannot be written.
  Status Tick(Time now);
  /// Ends editing: the journal goes, and changes that were not saved with it. A session that goes without this leaves
  /// its journal behind, like a program that ends early.
  void Close();

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace ScEng
