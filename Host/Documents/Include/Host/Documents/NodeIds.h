// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>

#include "Host/Documents/Api.h"
#include "Host/Documents/GraphDocument.h"

namespace ScEng {

/// An id made of a display name: "value_clamp" of "Value Clamp".
HOST_DOCUMENTS_API std::string MakeIdFromName(const std::string& name);

/// Makes ids that a document does not have yet. Many of one name take time in proportion to their number.
class HOST_DOCUMENTS_API UniqueIds {
 public:
  explicit UniqueIds(const GraphDocument& document) : document_(document) {}

  /// The id itself, or "blur2", "blur3" and so on for "blur". The caller takes it before it asks for the next one.
  std::string Make(const std::string& wanted);

 private:
  const GraphDocument& document_;
  /// The number to try next, by name.
  std::unordered_map<std::string, std::size_t> next_;
};

}  // namespace ScEng
