// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Utf8.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace ScEng {
namespace {

/// The character at the beginning of a text and its length in bytes; a length of 0 where it is not UTF-8.
struct Character {
  std::uint32_t code = 0;
  std::size_t size = 0;
};

Character FirstCharacter(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  if (lead < 0x80) return {lead, 1};
  const std::size_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < size) return {};
  std::uint32_t code = lead & (0x7FU >> size);
  for (std::size_t i = 1; i < size; ++i) {
    const auto next = static_cast<unsigned char>(text[i]);
    if ((next & 0xC0U) != 0x80) return {};
    code = (code << 6) | (next & 0x3FU);
  }
  constexpr std::array<std::uint32_t, 5> kSmallest{0, 0, 0x80, 0x800, 0x10000};
  const bool is_surrogate = code >= 0xD800 && code <= 0xDFFF;
  if (code < kSmallest[size] || code > 0x10FFFF || is_surrogate) return {};
  return {code, size};
}

}  // namespace

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const Character character = FirstCharacter(text);
    if (character.size == 0) return false;
    text.remove_prefix(character.size);
  }
  return true;
}

std::string FromLatin1(std::string_view text) {
  std::string utf8;
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    if (code < 0x80) {
      utf8 += c;
    } else {
      utf8 += static_cast<char>(0xC0 | (code >> 6));
      utf8 += static_cast<char>(0x80 | (code & 0x3F));
    }
  }
  return utf8;
}

std::optional<std::string> ToLatin1(std::string_view utf8) {
  std::string text;
  while (!utf8.empty()) {
    const Character character = FirstCharacter(utf8);
    if (character.size == 0 || character.code > 0xFF) return std::nullopt;
    text += static_cast<char>(character.code);
    utf8.remove_prefix(character.size);
  }
  return text;
}

}  // namespace ScEng
