// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

/// A page of the manual, written in the macros of man(7) that groff and mandoc share.
///
/// In texts, what stands between two backquotes is set in bold, as names of options are.
class RoffPage {
 public:
  /// `name` is the page's name, "value-run", `date` "2026-11-21".
  RoffPage(std::string_view name, std::string_view date, std::string_view version);

  void AddSection(std::string_view heading);
  void AddSubsection(std::string_view heading);
  void AddParagraph(std::string_view text);
  /// Something and what is to be said of it. `tag` is roff already: see `Bold` and `Italic`.
  void AddEntry(const std::string& tag, std::string_view text);
  /// One line in roff.
  void AddLine(const std::string& roff);
  /// Commands that are shown as they are; one that is too long for a terminal goes on in the next line.
  void AddExample(const std::vector<std::string>& lines);

  [[nodiscard]] const std::string& GetText() const { return text_; }

  static std::string Escape(std::string_view text);
  static std::string Bold(std::string_view text);
  static std::string Italic(std::string_view text);

 private:
  void StartParagraph();

  std::string text_;
  // The first paragraph of a section has its space already.
  bool follows_heading_ = false;
};
