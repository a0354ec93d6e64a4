// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/NodeIds.h"

#include <algorithm>

namespace ScEng {
namespace {

/// With a number behind it, such a name is no longer than an id may be.
constexpr std::size_t kLongestName = 180;

std::string KeepStart(const std::string& name) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < name.size(); ++i) {
    // All but the bytes that continue a character of UTF-8.
    const bool starts_character = (static_cast<unsigned char>(name[i]) & 0xC0U) != 0x80U;
    if (starts_character && ++count > kLongestName) return name.substr(0, i);
  }
  return name;
}

}  // namespace

std::string MakeIdFromName(const std::string& name) {
  constexpr std::size_t kLongestId = 40;
  std::string id;
  for (const char letter : name.substr(0, kLongestId)) {
    const bool is_upper = letter >= 'A' && letter <= 'Z';
    const bool is_kept = (letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9');
    if (is_upper) id += static_cast<char>(letter - 'A' + 'a');
    if (is_kept) id += letter;
    if (!is_upper && !is_kept && !id.empty() && id.back() != '_') id += '_';
  }
  while (!id.empty() && id.back() == '_') id.pop_back();
  return id.empty() ? "node" : id;
}

std::string UniqueIds::Make(const std::string& wanted) {
  if (!document_.HasId(wanted)) return wanted;
  const std::size_t end = wanted.find_last_not_of("0123456789");
  const std::string name = KeepStart(end == std::string::npos ? "node" : wanted.substr(0, end + 1));
  std::size_t& next = next_.try_emplace(name, 2).first->second;
  std::string id;
  do {
    id = name + std::to_string(next++);
  } while (document_.HasId(id));
  return id;
}

}  // namespace ScEng
