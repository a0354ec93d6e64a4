// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Host/Documents/GraphDocument.h"
#include "Host/Documents/JsonValue.h"

namespace ScEng {

/// What a document says of a node whose type is unknown.
struct Placeholder {
  /// Its type has been reported as an error.
  bool is_reported = false;
  JsonValue type;
  bool enabled = true;
  std::optional<double> attribute_version;
  std::optional<JsonValue> attributes;
};

/// What a document says of an attribute that its node does not have, or that cannot take it.
struct KeptAttribute {
  std::string name;
  JsonValue value;
  std::string problem;
};

/// A node of a document, or a placeholder, and what the document keeps about it.
struct DocumentEntry {
  std::string id;
  /// Null for a placeholder.
  Node* node = nullptr;
  std::unique_ptr<Placeholder> placeholder;
  /// How many ends of connections are at this node.
  std::size_t num_connections = 0;
  /// A connection to one of its inputs is in the document and could not be made.
  bool has_lost_connection = false;
  /// The attribute version that names in connections are translated from.
  unsigned attribute_version = 0;
  std::optional<Point> position;
  std::string note;

  // What the document gave although it need not, and so is saved again. Attributes by their ids.
  bool gave_numbers = false;
  bool gave_enabled = false;
  bool gave_version = false;
  std::vector<bool> gave_attributes;
  /// The attributes that were set since, by their ids; empty where none was.
  std::vector<bool> set_attributes;
  /// Is saved again as it was written.
  std::vector<KeptAttribute> kept_attributes;

  /// Whether what is kept still stands for its attribute: until that has another value.
  [[nodiscard]] bool IsInForce(const KeptAttribute& kept) const;
};

/// A connection by what cannot change under it: renaming a node leaves its entry in place.
struct ConnectionEntry {
  const DocumentEntry* from = nullptr;
  std::string outplug;
  const DocumentEntry* to = nullptr;
  std::string inplug;
  unsigned index = 0;
  bool gave_index = false;
};

/// An output and the plug that it names.
struct OutputEntry {
  const DocumentEntry* entry = nullptr;
  std::string plug;
  /// 0 for a placeholder.
  unsigned outplug = 0;
};

/// A file that is written, and the layer of it.
struct LayerFile {
  std::filesystem::path file;
  std::string layer;

  auto operator<=>(const LayerFile&) const = default;
};

/// What a name behind the id of a node is to stand for.
enum class NameUse { kAny, kAttribute, kOutput };

/// Everything that a document holds.
struct GraphDocument::Content {
  explicit Content(std::shared_ptr<const NodeCatalog> catalog) : engine(std::move(catalog)) {}

  Engine engine;
  std::vector<std::string> ids;
  std::unordered_map<std::string, DocumentEntry> entries;
  std::unordered_map<const Node*, const DocumentEntry*> entries_by_node;
  std::vector<ConnectionEntry> connections;
  /// The inputs that connections from or to placeholders take, which the engine does not know of.
  std::unordered_set<std::string> taken_inputs;
  /// Both have one entry per output.
  std::vector<DocumentOutput> outputs;
  std::vector<OutputEntry> output_entries;
  std::vector<DocumentFrame> frames;
  std::optional<DocumentView> view;
  std::string schema;
  std::filesystem::path folder;
  /// Nodes, connections or outputs of the document could not be read, so that what seems to be missing may be there.
  bool lacks_parts = false;
  std::map<std::pair<const Node*, unsigned>, ImagePtr> sources;
  std::vector<DocumentObserver*> observers;
  std::string compression;
  /// How many more ids a misspelt one is compared with. Searching costs time where there are many of both.
  mutable std::size_t comparisons_left = 0;

  [[nodiscard]] DocumentEntry* Find(const std::string& id);
  /// The same, with an error that names the closest id.
  DocumentEntry* Find(const std::string& id, Status& status);
  /// The node before, and the name after, the last dot; null and an error when there is no such node.
  DocumentEntry* FindPlugNode(const std::string& plug, std::string& name, Status& status, NameUse use = NameUse::kAny);
  /// Whether "id.plug" is an image output, or any output of a placeholder, and which.
  Status FindImageOutput(const std::string& plug, OutputEntry& found);
  /// Finds the ends of a connection. The names of plugs become the current ones.
  Status FindEnds(const std::string& from, const std::string& to, ConnectionEntry& connection);
  Status FindSource(const std::string& from, ConnectionEntry& connection);
  /// `connection.to` is the node also where only the plug is wrong.
  Status FindTarget(const std::string& to, ConnectionEntry& connection);
  /// Makes a connection whose ends were found.
  Status Connect(const ConnectionEntry& connection);
  /// The same at a place in the order of the connections.
  Status InsertConnection(const ConnectionEntry& connection, std::size_t place);
  Status Connect(const std::string& from, const std::string& to, unsigned index, bool gave_index);
  /// Checks an output and finds its plug.
  Status FindOutput(const DocumentOutput& output, OutputEntry& found);
  /// The part of it that needs no nodes: words and path.
  [[nodiscard]] Status CheckOutput(const DocumentOutput& output) const;
  /// "; the closest is "constant"": what a misspelt name most likely means, empty where nothing is close or too much
  /// has been looked for in this document.
  [[nodiscard]] std::string SuggestName(const std::string& word, const std::vector<std::string>& names) const;
  /// The same of an id, where a type's name stands for its nodes. Of few ids that are not close it lists all.
  [[nodiscard]] std::string SuggestNode(const std::string& id) const;
  /// The same of a word that should be "id.name": an id or a name alone.
  [[nodiscard]] std::string SuggestPlug(const std::string& word, NameUse use) const;
  /// "; the readers are "height", "mask"".
  [[nodiscard]] std::string SuggestReader() const;
  /// "Value Add has no output "x"; it has image".
  [[nodiscard]] std::string DescribeMissingPlug(const Node& node, const char* what, const std::string& name,
                                                const std::vector<std::string>& names) const;
  [[nodiscard]] std::string DescribeMissingAttribute(const Node& node, const std::string& name) const;
  /// "there is no node type ..." of what stands as a node's type, with the closest one there is.
  [[nodiscard]] std::string DescribeUnknownType(const JsonValue& type) const;
  /// An entry without a node; null and an error when the id is taken or not one.
  DocumentEntry* AddEntry(const std::string& id, Status& status);
  /// Frees the plugs of a connection that is about to go.
  void Release(const ConnectionEntry& connection);
  /// Removes everything about the connections for which `is_gone` holds, and tells of each.
  void RemoveConnections(const std::function<bool(const ConnectionEntry&)>& is_gone);
  void RenameTakenInputs(const std::string& before, const std::string& now);
  [[nodiscard]] std::filesystem::path GetFile(const DocumentOutput& output) const;
  /// What outputs and enabled writers write, as far as it does not come from a connection; paths are normalized.
  [[nodiscard]] std::vector<LayerFile> ListLayerFiles();
  /// Whether an attribute has its value from a connection, a placeholder's included.
  [[nodiscard]] bool IsFed(const DocumentEntry& entry, const std::string& attribute) const;

  template <class... Parameters, class... Arguments>
  void Tell(void (DocumentObserver::*what)(Parameters...), const Arguments&... arguments) {
    if (observers.empty()) return;
    // An observer may remove itself and others while it is told.
    const std::vector<DocumentObserver*> told = observers;
    for (DocumentObserver* observer : told) {
      if (std::find(observers.begin(), observers.end(), observer) != observers.end()) (observer->*what)(arguments...);
    }
  }

  static DocumentConnection Describe(const ConnectionEntry& connection);
  static Status CheckId(std::string_view id);
  static Status CheckFrame(const DocumentFrame& frame);
  static Status CheckView(const DocumentView& view);
};

/// The words that the keys of outputs take.
struct OutputWords {
  const char* key;
  std::string DocumentOutput::*word;
  std::vector<std::string> words;
};
const std::vector<OutputWords>& GetOutputWords();

/// The attribute that holds the file which a node reads or writes; null where it does neither.
Attribute* FindPathAttribute(const Node& node, Attribute::StringUse use);
/// The file that a path attribute names by its own value; empty where it names none.
std::filesystem::path GetFile(const Attribute& attribute);
/// The layer that a writer has as its attribute; empty where it has no such attribute.
std::string GetLayer(const Node& node);
void SetFile(Attribute& attribute, const std::filesystem::path& file);
/// One spelling of a path for comparing.
std::filesystem::path NormalizePath(const std::filesystem::path& file);

}  // namespace ScEng
