// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <initializer_list>
#include <nlohmann/json_fwd.hpp>
#include <set>
#include <string>

#include "Host/Documents/GraphDocument.h"

namespace ScEng {

/// Reads a JSON document into a graph and reports everything that is wrong with it.
///
/// Reading goes on after an error, so that all are found in one go; what depends on something wrong (a connection of a
/// node that could not be made) is not reported again.
class DocumentReader {
 public:
  DocumentReader(GraphDocument& document, std::filesystem::path file, Findings& findings);

  /// False when the file could not be read at all.
  bool Read();

 private:
  void ReadText(const std::string& text);
  void ReadDocument(const nlohmann::json& document);
  void ReadNode(const nlohmann::json& node, std::size_t index);
  void ReadAttributes(const nlohmann::json& attributes, const std::string& id);
  void ReadAttribute(const std::string& id, const std::string& written, const nlohmann::json& value);
  void ReadConnection(const nlohmann::json& connection, std::size_t index);
  void ReadOutput(const nlohmann::json& output, std::size_t index);

  void AddError(const std::string& text);
  void AddNote(const std::string& text);
  /// Whether `json` is an object; reports that and every key that is not in `keys`.
  bool CheckObject(const nlohmann::json& json, const std::string& what, std::initializer_list<const char*> keys);
  /// The string under a key; reports one that is missing, empty or no string.
  bool ReadString(const nlohmann::json& json, const std::string& what, const char* key, std::string& value);
  /// Whether "node.plug" names a node whose own error has been reported.
  [[nodiscard]] bool IsOfBrokenNode(const std::string& plug) const;

  GraphDocument& document_;
  std::filesystem::path file_;
  Findings& findings_;
  std::set<std::string> broken_ids_;
};

}  // namespace ScEng
