// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "Host/Documents/JsonValue.h"

namespace ScEng {

/// Limits of a document.
inline constexpr std::size_t kMostBytes = std::size_t{256} << 20;
inline constexpr std::size_t kMostLevels = 64;
inline constexpr std::size_t kMostNodes = 1'000'000;
/// Of values in one node, connection, output or frame, nested ones included.
inline constexpr std::size_t kMostValues = 1'000'000;

/// The lists of a document.
enum class DocumentList { kNodes, kConnections, kOutputs, kFrames };

/// Who receives the parts of a document while it is parsed.
class DocumentEvents {
 public:
  virtual ~DocumentEvents() = default;
  /// The document is an object, and begins.
  virtual void OnObject() = 0;
  /// One of the document's own keys with its whole value. Not called for lists.
  virtual void OnValue(const std::string& key, const JsonValue& value) = 0;
  /// A list begins.
  virtual void OnList(DocumentList list) = 0;
  /// Something else stands in place of a list, or it is there twice: its entries are not handed over.
  virtual void OnLostList(DocumentList list) = 0;
  /// An entry of a list.
  virtual void OnEntry(DocumentList list, std::size_t index, JsonValue entry) = 0;
  /// Something is wrong, and parsing goes on.
  virtual void OnFault(const std::string& text) = 0;
};

/// "nodes[3]", for messages.
std::string DescribePlace(DocumentList list, std::size_t index);

/// What ended parsing before the end of the text.
struct ParseProblem {
  /// Empty where there is none.
  std::string text;
  /// The text stops being JSON, so that what comes before it is as good as it looks; else a limit is exceeded.
  bool is_syntax = false;
};

/// Parses the text of a document and hands it over entry by entry, so that memory does not grow with what is nested in
/// it and no more than one entry is held.
ParseProblem ParseDocument(std::string_view text, DocumentEvents& events);

}  // namespace ScEng
