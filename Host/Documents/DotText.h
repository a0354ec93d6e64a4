// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

namespace ScEng {

// Pieces of text for Graphviz. What is given as text may hold anything that UTF-8 can; it stands in the picture as it
// is.

/// The font, which programs for SVG have, or something as wide.
inline constexpr const char* kDotFont = "fontname=\"DejaVu Sans,Verdana,sans-serif\"";

/// A string in quotes.
std::string DotQuote(std::string_view text);
/// Text within a label.
std::string DotEscape(std::string_view text);

std::string DotBold(const std::string& text, const char* color);
std::string DotSmall(const std::string& text, const char* color);
std::string DotItalic(const std::string& text, const char* color);
/// A longer text in lines of some words each, of which the first few are shown.
std::string DotLines(const std::string& text, const char* color);

/// A cell of a table; `content` is made by the functions above.
class DotCell {
 public:
  explicit DotCell(std::string content) : content_(std::move(content)) {}

  DotCell& Span(std::size_t columns) { return Add(" COLSPAN=\"" + std::to_string(columns) + "\""); }
  DotCell& Port(const std::string& name) { return Add(" PORT=\"" + name + "\""); }
  DotCell& Background(const char* color) { return Add(std::string(" BGCOLOR=\"") + color + "\""); }
  DotCell& Left() { return Add(" ALIGN=\"LEFT\" BALIGN=\"LEFT\""); }
  DotCell& Right() { return Add(" ALIGN=\"RIGHT\""); }
  [[nodiscard]] std::string Write() const { return "<TD" + attributes_ + ">" + content_ + "</TD>"; }

 private:
  DotCell& Add(const std::string& attribute) {
    attributes_ += attribute;
    return *this;
  }

  std::string content_;
  std::string attributes_;
};

std::string DotRow(std::initializer_list<DotCell> cells);
/// `style` may be empty.
std::string DotTable(const std::string& rows, const char* background, const char* border, int width,
                     const std::string& style);

}  // namespace ScEng
