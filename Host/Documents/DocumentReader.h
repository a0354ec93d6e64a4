// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "Host/Documents/DocumentContent.h"
#include "Host/Documents/DocumentParser.h"
#include "Host/Documents/GraphDocument.h"

namespace ScEng {

/// Reads a JSON document into a graph and reports everything that is wrong with it.
///
/// Reading goes on after an error, so that all are found in one go; what depends on something wrong (a connection of a
/// node that could not be made) is not reported again. Nodes are made as they come; connections and outputs, which may
/// stand before them, at the end.
class DocumentReader : private DocumentEvents {
 public:
  /// `name` stands for the document in messages.
  DocumentReader(GraphDocument& document, const std::string& name, std::filesystem::path folder, Findings& findings,
                 const LoadOptions& options);

  /// False when the file could not be read at all.
  bool ReadFile(const std::filesystem::path& file);
  void ReadText(std::string_view text);

 private:
  /// What is wrong has been reported, but the plugs that it names are looked at all the same.
  struct PendingConnection {
    std::string from;
    std::string to;
    std::uint32_t index = 0;
    bool gave_index = false;
    bool is_good = true;
    std::size_t place = 0;
  };
  struct PendingOutput {
    DocumentOutput output;
    bool is_good = true;
    std::size_t place = 0;
  };

  void OnValue(const std::string& key, const JsonValue& value) override;
  void OnObject() override;
  void OnList(DocumentList list) override;
  void OnLostList(DocumentList list) override;
  void OnEntry(DocumentList list, std::size_t index, JsonValue entry) override;
  void OnFault(const std::string& text) override;

  void ReadNode(const JsonValue& node, const std::string& place);
  /// The node type that a node names; null, and an error unless it is only unknown.
  const NodeInterface* ReadType(const JsonValue& node, const std::string& what, bool& is_unknown);
  /// Adds a node, or a placeholder where `descriptor` is null; null after an error.
  DocumentEntry* AddNode(const std::string& id, const std::string& place, const NodeInterface* descriptor);
  void ReadNodeKeys(const JsonValue& node, const std::string& what, DocumentEntry& entry);
  /// Reports what is wrong with the keys of a node that cannot be added. `id` stands for it in messages.
  void CheckNodeKeys(const JsonValue& node, const std::string& what, const std::string& id,
                     const NodeInterface* descriptor);
  void ReadAttributes(const JsonValue& attributes, DocumentEntry& entry);
  void ReadAttribute(const std::string& written, const JsonValue& value, DocumentEntry& entry);
  /// Reports what is said of an attribute and cannot be taken, or keeps it.
  void Refuse(KeptAttribute attribute, const std::string& written, DocumentEntry& entry);
  void ReadConnection(const JsonValue& connection, std::size_t index, const std::string& place);
  void ReadOutput(const JsonValue& output, std::size_t index, const std::string& place);
  void ReadFrame(const JsonValue& frame, const std::string& place);
  void ReadView(const JsonValue& view);
  /// What can be read only when all nodes are there.
  void ReadRest();
  void MakeConnection(const PendingConnection& pending);
  void MakeOutput(const PendingOutput& pending);
  /// What is wrong with format, version and nodes.
  [[nodiscard]] std::vector<std::string> FindHeadErrors() const;
  /// Puts errors before those that were found after the first `before`.
  void AddErrorsBefore(std::size_t before, const std::vector<std::string>& texts);

  void AddError(const std::string& text);
  void AddNote(const std::string& text);
  /// Whether `value` is an object; reports that and every key that is not in `keys`.
  bool CheckObject(const JsonValue& value, const std::string& what, std::initializer_list<std::string_view> keys);
  /// The string under a key; reports one that is missing, empty or no string.
  bool ReadString(const JsonValue& object, const std::string& what, const char* key, std::string& value);
  /// The string under a key that may be missing; reports anything but a string.
  bool ReadOptionalString(const JsonValue& object, const std::string& what, const char* key, std::string& value);
  /// As many finite numbers under a key that may be missing; reports anything else.
  std::optional<std::vector<double>> ReadOptionalNumbers(const JsonValue& object, const std::string& what,
                                                         const char* key, std::size_t count, const char* names);
  [[nodiscard]] const NodeInterface* FindType(const JsonValue& type);
  /// Whether "node.plug" names a node whose own error has been reported, or one that may be in a part which could not
  /// be read.
  [[nodiscard]] bool IsOfFaultyNode(const std::string& plug) const;

  GraphDocument& document_;
  GraphDocument::Content& content_;
  /// Stands before every finding.
  std::string lead_;
  std::filesystem::path folder_;
  Findings& findings_;
  LoadOptions options_;

  std::unordered_map<std::string, const NodeInterface*> types_;
  std::unordered_set<std::string> faulty_ids_;
  std::set<DocumentList> lists_;
  bool is_object_ = false;
  std::optional<JsonValue> format_;
  std::optional<JsonValue> version_;
  std::vector<PendingConnection> connections_;
  std::vector<PendingOutput> outputs_;
  std::optional<DocumentView> view_;
};

}  // namespace ScEng
