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
  struct PendingConnection {
    std::string from;
    std::string to;
    std::uint32_t index = 0;
    bool gave_index = false;
    std::size_t place = 0;
  };
  struct PendingOutput {
    DocumentOutput output;
    std::size_t place = 0;
  };

  void OnValue(const std::string& key, const JsonValue& value) override;
  void OnObject() override;
  void OnList(DocumentList list) override;
  void OnEntry(DocumentList list, std::size_t index, JsonValue entry) override;
  void OnFault(const std::string& text) override;

  void ReadNode(const JsonValue& node, const std::string& place);
  void ReadNodeKeys(const JsonValue& node, const std::string& what, DocumentEntry& entry);
  void KeepPlaceholder(const JsonValue& node, const std::string& what, const std::string& id, const std::string& place);
  void ReadAttributes(const JsonValue& attributes, DocumentEntry& entry);
  void ReadAttribute(const std::string& written, const JsonValue& value, DocumentEntry& entry);
  void ReadConnection(const JsonValue& connection, std::size_t index, const std::string& place);
  void ReadOutput(const JsonValue& output, std::size_t index, const std::string& place);
  void ReadFrame(const JsonValue& frame, const std::string& place);
  void ReadView(const JsonValue& view);
  /// What can be read only when all nodes are there.
  void ReadRest();
  /// Puts what is wrong with format, version and nodes before the errors that were found after the first `before`.
  void AddHeadErrors(std::size_t before);

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
  /// Whether "node.plug" names a node whose own error has been reported.
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
