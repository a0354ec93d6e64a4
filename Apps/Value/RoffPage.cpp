// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/RoffPage.h"

#include <cstdint>
#include <cstdio>
#include <utility>

namespace {

struct Decoded {
  std::uint32_t code = 0;
  std::size_t size = 1;
};

/// The character at the start of UTF-8 text; one byte where it is none.
Decoded Decode(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<std::uint32_t>(static_cast<unsigned char>(text[i])); };
  const std::uint32_t first = byte(0);
  const std::size_t size = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 1;
  if (size == 1 || size > text.size()) return {first, 1};
  std::uint32_t code = first & (0xFFU >> (size + 1));
  for (std::size_t i = 1; i < size; ++i) code = code << 6U | (byte(i) & 0x3FU);
  return {code, size};
}

std::string EscapeCharacter(std::uint32_t code) {
  switch (code) {
    case '\\': return "\\e";
    case '-': return "\\-";
    case '~': return "\\(ti";
    case '^': return "\\(ha";
    case '`': return "\\(ga";
    case '\'': return "\\(aq";
    case '"': return "\\(dq";
    default: break;
  }
  if (code < 0x80) return {static_cast<char>(code)};
  char text[16];
  static_cast<void>(std::snprintf(text, sizeof(text), "\\[u%04X]", code));
  return text;
}

/// Text with what stands between backquotes in bold.
std::string SetText(std::string_view text) {
  std::string set;
  bool is_bold = false;
  while (!text.empty()) {
    const std::size_t mark = text.find('`');
    const std::string_view part = text.substr(0, mark);
    set += is_bold ? RoffPage::Bold(part) : RoffPage::Escape(part);
    if (mark == std::string_view::npos) break;
    is_bold = !is_bold;
    text.remove_prefix(mark + 1);
  }
  return set;
}

/// A line of text that the formatter does not take for a macro.
std::string GuardStart(const std::string& line) {
  const bool is_macro = !line.empty() && line.front() == '.';
  return (is_macro ? "\\&" : "") + line;
}

/// A command in lines that fit into 80 columns, broken before options.
std::vector<std::string> BreakCommand(std::string command) {
  constexpr std::size_t kLongest = 70;
  std::vector<std::string> lines;
  while (command.size() > kLongest) {
    const std::size_t blank = command.rfind(" -", kLongest);
    if (blank == std::string::npos || command.find_first_not_of(' ') >= blank) break;
    lines.push_back(command.substr(0, blank) + " \\");
    command = "    " + command.substr(blank + 1);
  }
  lines.push_back(std::move(command));
  return lines;
}

}  // namespace

RoffPage::RoffPage(std::string_view name, std::string_view date, std::string_view version) {
  std::string title;
  for (const char letter : name)
    title += letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
  text_ = ".\\\" Written by \"value manual\" from what the program declares.\n";
  text_ += ".TH \"" + Escape(title) + "\" \"1\" \"" + std::string(date) + "\" \"value " + std::string(version) +
           "\" \"Value Manual\"\n";
  // Left-aligned, and words are not broken: names of options and files stay whole.
  text_ += ".nh\n.ad l\n";
}

void RoffPage::AddSection(std::string_view heading) {
  text_ += ".SH " + Escape(heading) + "\n";
  follows_heading_ = true;
}

void RoffPage::AddSubsection(std::string_view heading) {
  text_ += ".SS " + Escape(heading) + "\n";
  follows_heading_ = true;
}

void RoffPage::AddParagraph(std::string_view text) {
  StartParagraph();
  text_ += GuardStart(SetText(text)) + "\n";
}

void RoffPage::AddEntry(const std::string& tag, std::string_view text) {
  text_ += ".TP\n" + tag + "\n" + GuardStart(SetText(text)) + "\n";
  follows_heading_ = false;
}

void RoffPage::AddLine(const std::string& roff) {
  text_ += roff + "\n";
  follows_heading_ = false;
}

void RoffPage::AddExample(const std::vector<std::string>& lines) {
  StartParagraph();
  text_ += ".EX\n";
  for (const std::string& line : lines) {
    for (const std::string& part : BreakCommand(line)) text_ += GuardStart(Escape(part)) + "\n";
  }
  text_ += ".EE\n";
}

void RoffPage::StartParagraph() {
  if (!follows_heading_) text_ += ".PP\n";
  follows_heading_ = false;
}

std::string RoffPage::Escape(std::string_view text) {
  std::string escaped;
  while (!text.empty()) {
    const Decoded next = Decode(text);
    escaped += next.code == '\n' ? std::string(" ") : EscapeCharacter(next.code);
    text.remove_prefix(next.size);
  }
  return escaped;
}

std::string RoffPage::Bold(std::string_view text) { return "\\fB" + Escape(text) + "\\fR"; }

std::string RoffPage::Italic(std::string_view text) { return "\\fI" + Escape(text) + "\\fR"; }
