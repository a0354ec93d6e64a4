// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/HelpFormatter.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "Apps/Value/DeclaredOptions.h"
#include "Apps/Value/ManualText.h"
#include "Apps/Value/OptionText.h"
#include "Apps/Value/WrapText.h"

namespace {

/// Where the sentences begin.
constexpr std::size_t kColumn = 28;

/// How a command is called, behind its name.
std::string MakeSynopsis(const CLI::App& app) {
  const std::string_view written = GetSynopsis(app.get_parent() == nullptr ? "" : app.get_name());
  if (!written.empty()) return std::string(written);
  std::string text = "[OPTION]...";
  for (const CLI::Option* positional : GetPositionals(app)) {
    const std::string name = positional->get_single_name();
    if (!positional->get_required()) {
      text += " [" + name + "]";
    } else {
      text += " " + name + (MayRepeat(*positional) ? "..." : "");
    }
  }
  return text;
}

std::string MakeTag(const CLI::Option& option) {
  std::string tag;
  for (const std::string& name : GetNames(option)) tag += (tag.empty() ? "" : ",") + name;
  if (!IsFlag(option)) tag += " " + GetValueName(option);
  return MayRepeat(option) && option.get_allow_extra_args() ? tag + "..." : tag;
}

/// A line with what is explained on its left, and more lines where the explanation is long.
std::string MakeEntry(const std::string& tag, std::string text) {
  std::string start = "  " + tag;
  if (start.size() + 2 > kColumn) {
    start += "\n" + std::string(kColumn, ' ');
  } else {
    start.resize(kColumn, ' ');
  }
  std::replace(text.begin(), text.end(), '\n', ' ');
  return start + Wrap(text, kColumn) + "\n";
}

}  // namespace

std::string HelpFormatter::make_usage(const CLI::App* app, std::string name) const {
  const std::string start = "Usage: ";
  return start + Wrap(name + " " + MakeSynopsis(*app), start.size()) + "\n";
}

std::string HelpFormatter::make_option(const CLI::Option* option, bool is_positional) const {
  return MakeEntry(is_positional ? option->get_single_name() : MakeTag(*option), DescribeOption(*option));
}

std::string HelpFormatter::make_subcommand(const CLI::App* command) const {
  return MakeEntry(command->get_name(), EndSentence(command->get_description()));
}
