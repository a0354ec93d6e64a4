// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/ManualPages.h"

#include <algorithm>
#include <cctype>
#include <sstream>
#include <string_view>

#include "Apps/Value/CompleteLine.h"
#include "Apps/Value/DeclaredOptions.h"
#include "Apps/Value/OptionText.h"
#include "Apps/Value/RoffPage.h"

namespace {

/// What a command's help says at its end: the commands of its examples, and paragraphs of text.
struct Footer {
  std::vector<std::string> examples;
  std::vector<std::string> paragraphs;
};

Footer ReadFooter(const std::string& text) {
  Footer footer;
  std::istringstream lines(text);
  bool starts_paragraph = true;
  for (std::string line; std::getline(lines, line);) {
    const bool is_heading = line == "Example:" || line == "Examples:";
    if (is_heading || line.find_first_not_of(' ') == std::string::npos) {
      starts_paragraph = true;
    } else if (line.starts_with("  ")) {
      footer.examples.push_back(line.substr(2));
      starts_paragraph = true;
    } else if (starts_paragraph) {
      footer.paragraphs.push_back(line);
      starts_paragraph = false;
    } else {
      footer.paragraphs.back() += " " + line;
    }
  }
  return footer;
}

std::string MakeTag(const CLI::Option& option) {
  if (!option.nonpositional()) return RoffPage::Italic(option.get_single_name());
  std::string tag;
  for (const std::string& name : GetNames(option)) tag += (tag.empty() ? "" : ", ") + RoffPage::Bold(name);
  if (!IsFlag(option)) tag += " " + RoffPage::Italic(GetValueName(option));
  if (MayRepeat(option) && option.get_allow_extra_args()) tag += "...";
  return tag;
}

void AddName(RoffPage& page, const std::string& name, std::string about) {
  while (about.ends_with('.')) about.pop_back();
  if (about.size() > 1 && std::islower(static_cast<unsigned char>(about[1])) != 0) {
    about[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(about[0])));
  }
  page.AddSection("NAME");
  // The form that the index of all pages is made from: name, dash, sentence.
  page.AddLine(RoffPage::Escape(name) + " \\- " + RoffPage::Escape(about));
}

void AddOptions(RoffPage& page, const CLI::App& command) {
  std::vector<std::string> groups;
  const std::vector<const CLI::Option*> options = GetShownOptions(command);
  for (const CLI::Option* option : options) {
    if (std::find(groups.begin(), groups.end(), option->get_group()) == groups.end()) {
      groups.push_back(option->get_group());
    }
  }
  page.AddSection("OPTIONS");
  for (const std::string& group : groups) {
    if (group != groups.front()) page.AddSubsection(group);
    for (const CLI::Option* option : options) {
      if (option->get_group() == group) page.AddEntry(MakeTag(*option), DescribeOption(*option));
    }
  }
}

void AddEntries(RoffPage& page, std::string_view heading, std::span<const ManualEntry> entries) {
  page.AddSection(heading);
  for (const ManualEntry& entry : entries) page.AddEntry(RoffPage::Bold(entry.name), entry.text);
}

void AddExamples(RoffPage& page, const Footer& footer) {
  if (footer.examples.empty()) return;
  page.AddSection("EXAMPLES");
  page.AddExample(footer.examples);
}

/// Other pages, in the order of their names.
void AddSeeAlso(RoffPage& page, std::vector<std::string> names) {
  std::sort(names.begin(), names.end());
  std::string line;
  for (const std::string& name : names) line += (line.empty() ? "" : ", ") + RoffPage::Bold(name) + "(1)";
  page.AddSection("SEE ALSO");
  page.AddLine(line);
}

/// How a command is called, in roff.
std::string MakeSynopsis(const CLI::App& command) {
  const std::string& name = command.get_name();
  std::string line = RoffPage::Bold("value " + name);
  if (const std::string_view written = GetSynopsis(name); !written.empty()) {
    return line + " " + RoffPage::Italic(written);
  }
  line += " [" + RoffPage::Italic("OPTION") + "]...";
  for (const CLI::Option* option : GetShownOptions(command)) {
    if (option->get_required()) line += " " + MakeTag(*option);
  }
  for (const CLI::Option* positional : GetPositionals(command)) {
    std::string shown = RoffPage::Italic(positional->get_single_name());
    if (positional->get_required() && MayRepeat(*positional)) shown += "...";
    if (!positional->get_required()) shown = "[" + shown + "]";
    line += " " + shown;
  }
  return line;
}

void AddArguments(RoffPage& page, const CLI::App& command) {
  const std::vector<const CLI::Option*> positionals = GetPositionals(command);
  if (positionals.empty()) return;
  page.AddSection("ARGUMENTS");
  for (const CLI::Option* positional : positionals) page.AddEntry(MakeTag(*positional), DescribeOption(*positional));
}

void AddNodes(RoffPage& page, const std::vector<ManualNode>& nodes) {
  if (nodes.empty()) return;
  page.AddSection("NODES");
  page.AddParagraph("Those of the program and of its own node library; value nodes NAME tells all of one.");
  for (const ManualNode& node : nodes) {
    const std::string class_name = node.class_name.empty() ? "" : " (" + RoffPage::Escape(node.class_name) + ")";
    page.AddEntry(RoffPage::Bold(node.name) + class_name, EndSentence(node.sentence));
  }
}

}  // namespace

std::string MakeProgramPage(const CLI::App& app, const std::string& date) {
  RoffPage page("value", date, VALUE_VERSION);
  AddName(page, "value", app.get_description());
  page.AddSection("SYNOPSIS");
  page.AddLine(RoffPage::Bold("value") + " " + RoffPage::Italic(GetSynopsis("")));
  page.AddSection("DESCRIPTION");
  for (const char* paragraph : GetManualText("")) page.AddParagraph(paragraph);
  page.AddSection("COMMANDS");
  std::vector<std::string> pages;
  for (const CLI::App* command : GetShownCommands(app)) {
    pages.push_back("value-" + command->get_name());
    page.AddEntry(RoffPage::Bold(pages.back()) + "(1)", EndSentence(command->get_description()));
  }
  AddOptions(page, app);
  AddEntries(page, "EXIT STATUS", GetExitCodes());
  AddEntries(page, "ENVIRONMENT", GetEnvironment());
  AddEntries(page, "FILES", GetFiles());
  AddExamples(page, ReadFooter(app.get_footer()));
  AddSeeAlso(page, pages);
  return page.GetText();
}

std::string MakeCommandPage(const CLI::App& app, const CLI::App& command, const std::string& date,
                            const std::vector<ManualNode>& nodes) {
  const std::string& name = command.get_name();
  const Footer footer = ReadFooter(command.get_footer());
  RoffPage page("value-" + name, date, VALUE_VERSION);
  AddName(page, "value-" + name, command.get_description());
  page.AddSection("SYNOPSIS");
  page.AddLine(MakeSynopsis(command));
  page.AddSection("DESCRIPTION");
  if (GetManualText(name).empty()) page.AddParagraph(EndSentence(command.get_description()));
  for (const char* paragraph : GetManualText(name)) page.AddParagraph(paragraph);
  for (const std::string& paragraph : footer.paragraphs) page.AddParagraph(EndSentence(paragraph));
  AddArguments(page, command);
  AddOptions(page, command);
  AddNodes(page, nodes);
  AddEntries(page, "EXIT STATUS", GetExitCodes());
  AddEntries(page, "ENVIRONMENT", GetEnvironment());
  AddExamples(page, footer);
  std::vector<std::string> others = {"value"};
  for (const CLI::App* other : GetShownCommands(app)) {
    if (other != &command) others.push_back("value-" + other->get_name());
  }
  AddSeeAlso(page, others);
  return page.GetText();
}
