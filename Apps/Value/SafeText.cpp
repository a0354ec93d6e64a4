// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/SafeText.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace {

constexpr std::string_view kCut = "...";

/// A character as it is shown: itself, or its escape.
struct Piece {
  std::string text;
  /// In characters.
  std::size_t width = 1;
};

/// "\x" or "\u" with two or four hexadecimal digits.
std::string FormatEscape(char letter, unsigned digits, std::uint32_t number) {
  std::string text = {'\\', letter};
  while (digits-- > 0) text += "0123456789abcdef"[number >> 4 * digits & 0xFU];
  return text;
}

unsigned ByteAt(std::string_view text, std::size_t at) { return static_cast<unsigned char>(text[at]); }

/// Reads the character at the start of the text, in the shortest form that UTF-8 has for it; how many bytes it takes,
/// 0 when there is no such form.
std::size_t DecodeFirst(std::string_view text, std::uint32_t& character) {
  const unsigned first = ByteAt(text, 0);
  if (first < 0x80) {
    character = first;
    return 1;
  }
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < length) return 0;
  character = first & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((ByteAt(text, i) & 0xC0U) != 0x80U) return 0;
    character = character << 6 | (ByteAt(text, i) & 0x3FU);
  }
  const bool is_overlong = (length == 3 && character < 0x800) || (length == 4 && character < 0x10000);
  const bool is_surrogate = character >= 0xD800 && character <= 0xDFFF;
  return is_overlong || is_surrogate || character > 0x10FFFF ? 0 : length;
}

/// Whether a character moves the cursor, ends a line or turns the direction of what follows.
bool IsUnsafe(std::uint32_t character) {
  return character < 0x20 || (character >= 0x7F && character <= 0x9F) || character == 0x61C || character == 0x200E ||
         character == 0x200F || (character >= 0x2028 && character <= 0x202E) ||
         (character >= 0x2066 && character <= 0x2069);
}

/// Takes the first character off the text.
Piece TakeFirst(std::string_view& text) {
  std::uint32_t character = 0;
  const std::size_t length = DecodeFirst(text, character);
  Piece piece;
  if (length == 0) {
    piece.text = FormatEscape('x', 2, ByteAt(text, 0));
  } else if (!IsUnsafe(character)) {
    piece.text = text.substr(0, length);
  } else if (character == '\n' || character == '\t') {
    piece.text = character == '\n' ? "\\n" : "\\t";
  } else {
    piece.text = FormatEscape('u', 4, character);
  }
  const bool is_escape = length == 0 || IsUnsafe(character);
  piece.width = is_escape ? piece.text.size() : 1;
  text.remove_prefix(std::max<std::size_t>(length, 1));
  return piece;
}

using Pieces = std::vector<Piece>;

std::size_t GetWidth(const Pieces& pieces, std::size_t first, std::size_t end) {
  std::size_t width = 0;
  for (std::size_t i = first; i < end; ++i) width += pieces[i].width;
  return width;
}

/// Replaces the middle of the pieces from `first` to `end`, which are too wide, so that `width` characters are left.
/// The last `tail` of them are the end.
void CutMiddle(Pieces& pieces, std::size_t first, std::size_t end, std::size_t width, std::size_t tail) {
  const std::size_t kept = width - kCut.size();
  const std::size_t head = kept - tail;
  std::size_t from = first;
  for (std::size_t taken = 0; taken + pieces[from].width <= head; ++from) taken += pieces[from].width;
  std::size_t to = end;
  for (std::size_t taken = 0; taken + pieces[to - 1].width <= tail; --to) taken += pieces[to - 1].width;
  pieces[from] = {std::string(kCut), kCut.size()};
  pieces.erase(pieces.begin() + static_cast<std::ptrdiff_t>(from) + 1,
               pieces.begin() + static_cast<std::ptrdiff_t>(to));
}

/// How much of the end of a word stays when `width` characters of it do: a third, or the name of the file that the word
/// is the path of, while there is room for it.
std::size_t ChooseTail(const Pieces& pieces, std::size_t first, std::size_t end, std::size_t width) {
  const std::size_t kept = width - kCut.size();
  constexpr std::size_t kLeastHead = 8;
  std::size_t name = end;
  while (name > first && pieces[name - 1].text != "/") --name;
  const std::size_t length = name > first ? GetWidth(pieces, name - 1, end) : 0;
  return length + kLeastHead <= kept ? std::max(length, kept / 3) : kept / 3;
}

/// The widest run of pieces without a space: its first piece and the one after its last.
std::pair<std::size_t, std::size_t> FindWidestWord(const Pieces& pieces) {
  std::pair<std::size_t, std::size_t> widest(0, 0);
  std::size_t most = 0;
  for (std::size_t first = 0; first < pieces.size(); ++first) {
    std::size_t end = first;
    while (end < pieces.size() && pieces[end].text != " ") ++end;
    if (const std::size_t width = GetWidth(pieces, first, end); width > most) {
      most = width;
      widest = {first, end};
    }
    first = end;
  }
  return widest;
}

/// Without the middle of a text of which no more than `most` characters are shown; cut between characters.
std::string DropMiddle(std::string_view text, std::size_t most) {
  // No character has more bytes than four.
  const std::size_t kept = 4 * most;
  if (text.size() <= 2 * kept) return std::string(text);
  const auto is_inside = [&](std::size_t at) { return (ByteAt(text, at) & 0xC0U) == 0x80U; };
  std::size_t head = kept;
  while (head > kept - 3 && is_inside(head)) --head;
  std::size_t tail = text.size() - kept;
  while (tail < text.size() - kept + 3 && is_inside(tail)) ++tail;
  return std::string(text.substr(0, head)) + std::string(kCut) + std::string(text.substr(tail));
}

/// Without what is far too long to show, first of each word and then of the whole, before every character is looked at.
std::string Shorten(std::string_view text, std::size_t most) {
  if (text.size() <= most) return std::string(text);
  std::string shortened;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(' '), text.size());
    shortened += DropMiddle(text.substr(0, end), most);
    if (end < text.size()) shortened += ' ';
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return DropMiddle(shortened, 8 * most);
}

}  // namespace

std::string EscapeText(std::string_view text) {
  std::string escaped;
  escaped.reserve(text.size());
  while (!text.empty()) {
    if (text.front() == '\n') {
      escaped += '\n';
      text.remove_prefix(1);
    } else {
      escaped += TakeFirst(text).text;
    }
  }
  return escaped;
}

std::string EscapeLine(std::string_view text, std::size_t most) {
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.remove_suffix(1);
  const std::string shortened = Shorten(text, most);
  Pieces pieces;
  for (std::string_view rest = shortened; !rest.empty();) pieces.push_back(TakeFirst(rest));

  // A word that is cut says enough with this many characters.
  constexpr std::size_t kLeastWord = 48;
  for (std::size_t width = GetWidth(pieces, 0, pieces.size()); width > most;) {
    const auto [first, end] = FindWidestWord(pieces);
    const std::size_t word = GetWidth(pieces, first, end);
    if (word <= kLeastWord) {
      CutMiddle(pieces, 0, pieces.size(), most, (most - kCut.size()) / 3);
      break;
    }
    const std::size_t excess = width - most;
    const std::size_t kept = std::max(kLeastWord, word > excess ? word - excess : 0);
    CutMiddle(pieces, first, end, kept, ChooseTail(pieces, first, end, kept));
    width = GetWidth(pieces, 0, pieces.size());
  }
  std::string line;
  for (const Piece& piece : pieces) line += piece.text;
  return line;
}
