// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/MessageText.h"

#include <array>
#include <deque>

#include "Host/Documents/Findings.h"

namespace ScEng {
namespace {

constexpr std::size_t kLongestQuote = 80;
constexpr std::size_t kLongestPath = 120;

bool IsControl(char32_t code) { return code < 0x20 || (code >= 0x7F && code < 0xA0); }

/// Line separators and marks that reorder what stands around them.
bool ReordersText(char32_t code) {
  return (code >= 0x2028 && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069) || code == 0x200E || code == 0x200F ||
         code == 0x061C;
}

std::string Hexadecimal(const char* form, unsigned number, int digits) {
  constexpr const char* kDigits = "0123456789abcdef";
  std::string text = form;
  for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) text += kDigits[(number >> shift) & 0xF];
  return text;
}

/// The next piece of a text as it may be shown: one code point, or an escape in its place.
std::string TakeShown(std::string_view text, std::size_t& at) {
  const std::size_t from = at;
  const auto code = TakeCodePoint(text, at);
  if (!code) return Hexadecimal("\\x", static_cast<unsigned char>(text[from]), 2);
  if (*code == '\n') return "\\n";
  if (*code == '\t') return "\\t";
  if (IsControl(*code) || ReordersText(*code)) return Hexadecimal("\\u", static_cast<unsigned>(*code), 4);
  return std::string(text.substr(from, at - from));
}

/// A shown piece is one character, or an escape of nothing but ASCII.
std::size_t CountShown(const std::string& piece) { return piece.front() == '\\' ? piece.size() : 1; }

std::string Shorten(std::string_view text, std::size_t most) {
  std::string shown;
  std::size_t count = 0;
  // The place to cut at, should the text go on beyond `most`.
  std::size_t cut = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::string piece = TakeShown(text, at);
    count += CountShown(piece);
    if (count > most) return shown.substr(0, cut) + "...";
    shown += piece;
    if (count + 3 <= most) cut = shown.size();
  }
  return shown;
}

}  // namespace

std::optional<char32_t> TakeCodePoint(std::string_view text, std::size_t& at) {
  const auto byte = [&](std::size_t i) -> unsigned { return static_cast<unsigned char>(text[i]); };
  const unsigned first = byte(at);
  if (first < 0x80) {
    ++at;
    return static_cast<char32_t>(first);
  }
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  constexpr std::array<char32_t, 5> kLowest{0, 0, 0x80, 0x800, 0x10000};
  char32_t code = first & (0xFFU >> (length + 1));
  bool is_valid = first >= 0xC2 && first <= 0xF4 && at + length <= text.size();
  for (std::size_t i = 1; is_valid && i < length; ++i) {
    is_valid = (byte(at + i) & 0xC0) == 0x80;
    code = (code << 6) | (byte(at + i) & 0x3F);
  }
  is_valid = is_valid && code >= kLowest[length] && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
  at += is_valid ? length : 1;
  return is_valid ? std::optional(code) : std::nullopt;
}

bool IsUtf8(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    if (!TakeCodePoint(text, at)) return false;
  }
  return true;
}

std::size_t CountCodePoints(std::string_view text) {
  std::size_t count = 0;
  for (std::size_t at = 0; at < text.size(); ++count) TakeCodePoint(text, at);
  return count;
}

bool HasControlCharacter(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const auto code = TakeCodePoint(text, at);
    if (code && IsControl(*code)) return true;
  }
  return false;
}

std::string Quote(std::string_view text) { return "\"" + Shorten(text, kLongestQuote) + "\""; }

std::string QuotePath(const std::filesystem::path& path) { return "\"" + KeepEnd(path.native(), kLongestPath) + "\""; }

std::string KeepEnd(std::string_view text, std::size_t most) {
  // A character has at most four bytes, so what is further from the end is never shown.
  std::size_t at = text.size() > 4 * most ? text.size() - 4 * most : 0;
  const bool is_long = at > 0;
  while (is_long && at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80) ++at;
  std::deque<std::string> pieces;
  std::size_t count = 0;
  while (at < text.size()) {
    pieces.push_back(TakeShown(text, at));
    count += CountShown(pieces.back());
  }
  const bool is_cut = is_long || count > most;
  for (; is_cut && !pieces.empty() && count + 3 > most; pieces.pop_front()) count -= CountShown(pieces.front());
  std::string shown = is_cut ? "..." : "";
  for (const std::string& piece : pieces) shown += piece;
  return shown;
}

std::string JoinNames(const std::vector<std::string>& names) {
  std::string joined;
  for (const std::string& name : names) joined += (joined.empty() ? "" : ", ") + name;
  return joined;
}

std::string MakeLine(const std::string& text, std::size_t most) { return Shorten(text, most); }

void Findings::AddError(const std::string& text) {
  if (errors.size() < kMostKept) {
    errors.push_back(MakeLine(text));
  } else {
    ++further_errors;
  }
}

void Findings::AddNote(const std::string& text) {
  if (notes.size() < kMostKept) {
    notes.push_back(MakeLine(text));
  } else {
    ++further_notes;
  }
}

}  // namespace ScEng
