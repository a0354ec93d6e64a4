// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>

#include "Host/Documents/DocumentContent.h"
#include "Host/Documents/GraphDocument.h"

namespace ScEng {

/// Writes a document as JSON.
class DocumentWriter {
 public:
  explicit DocumentWriter(const GraphDocument& document) : content_(*document.content_) {}

  Status Write(std::string& text) const;

 private:
  Status WriteNodes(std::string& text) const;
  void WriteConnections(std::string& text) const;
  void WriteFrames(std::string& text) const;
  [[nodiscard]] JsonValue MakeOutput(const DocumentOutput& output) const;
  [[nodiscard]] JsonValue MakeView() const;
  Status MakeNode(const DocumentEntry& entry, JsonValue& node) const;
  [[nodiscard]] const std::string& FindTypeName(const NodeType& type) const;
  static Status MakeAttributes(const DocumentEntry& entry, JsonValue& attributes);

  const GraphDocument::Content& content_;
  mutable std::map<NodeType, std::string> type_names_;
};

}  // namespace ScEng
