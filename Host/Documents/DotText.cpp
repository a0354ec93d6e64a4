// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/DotText.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "Host/Documents/Findings.h"
#include "Host/Documents/MessageText.h"

namespace ScEng {
namespace {

constexpr std::size_t kLineLength = 40;
constexpr std::size_t kMostLines = 5;

/// What XML cannot hold even in UTF-8: control characters and the two that are none.
bool IsForXml(char32_t code) { return code >= 0x20 && code != 0x7F && code != 0xFFFE && code != 0xFFFF; }

std::string Font(const std::string& text, const char* color, int size) {
  return "<FONT COLOR=\"" + std::string(color) + "\" POINT-SIZE=\"" + std::to_string(size) + "\">" + text + "</FONT>";
}

/// A text in lines of at most `kLineLength` characters, broken at blanks where there are some.
std::vector<std::string> Wrap(const std::string& text) {
  std::vector<std::string> lines(1);
  std::size_t length = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t from = at;
    std::size_t count = 0;
    while (at < text.size() && text[at] != ' ' && count < kLineLength) {
      TakeCodePoint(text, at);
      ++count;
    }
    if (length > 0 && length + 1 + count > kLineLength) {
      lines.emplace_back();
      length = 0;
    }
    if (length > 0) lines.back() += ' ';
    lines.back() += text.substr(from, at - from);
    length += count + 1;
    while (at < text.size() && text[at] == ' ') ++at;
  }
  return lines;
}

}  // namespace

// Entities are read in strings as well, and backslashes twice.
std::string DotQuote(std::string_view text) {
  std::string quoted = "\"";
  for (const char letter : DotEscape(text)) quoted += letter == '\\' ? std::string("\\\\") : std::string(1, letter);
  return quoted + "\"";
}

std::string DotEscape(std::string_view text) {
  std::string escaped;
  // One backslash before some letters stands for a name, in every kind of text.
  // Text of nothing but blanks is no text to dot, which then refuses the label.
  const bool is_blank = text.find_first_not_of(' ') == std::string_view::npos;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t from = at;
    const std::optional<char32_t> code = TakeCodePoint(text, at);
    if (!code || !IsForXml(*code)) {
      escaped += "\xEF\xBF\xBD";
    } else if (*code == '&' || *code == '<' || *code == '>' || *code == '"' || *code == '\'' ||
               (*code == ' ' && is_blank)) {
      escaped += "&#" + std::to_string(*code == ' ' ? 160 : static_cast<unsigned>(*code)) + ";";
    } else if (*code == '\\') {
      escaped += "\\\\";
    } else {
      escaped += text.substr(from, at - from);
    }
  }
  return escaped.empty() ? "&#160;" : escaped;
}

std::string DotBold(const std::string& text, const char* color) {
  return Font("<B>" + DotEscape(text) + "</B>", color, 13);
}

std::string DotSmall(const std::string& text, const char* color) { return Font(DotEscape(text), color, 11); }

std::string DotItalic(const std::string& text, const char* color) {
  return Font("<I>" + DotEscape(text) + "</I>", color, 11);
}

std::string DotLines(const std::string& text, const char* color) {
  constexpr std::size_t kMost = kLineLength * kMostLines;
  std::string joined;
  for (const std::string& line : Wrap(MakeLine(text, kMost)))
    joined += (joined.empty() ? "" : "<BR/>") + DotEscape(line);
  return Font(joined, color, 11);
}

std::string DotRow(std::initializer_list<DotCell> cells) {
  std::string row = "<TR>";
  for (const DotCell& cell : cells) row += cell.Write();
  return row + "</TR>";
}

std::string DotTable(const std::string& rows, const char* background, const char* border, int width,
                     const std::string& style) {
  return "<TABLE CELLBORDER=\"0\" CELLSPACING=\"0\" CELLPADDING=\"4\" BGCOLOR=\"" + std::string(background) +
         "\" COLOR=\"" + border + "\" BORDER=\"" + std::to_string(width) + "\"" +
         (style.empty() ? "" : " STYLE=\"" + style + "\"") + ">" + rows + "</TABLE>";
}

}  // namespace ScEng
