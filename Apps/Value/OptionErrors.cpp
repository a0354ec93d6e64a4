// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/OptionErrors.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "Apps/Value/DeclaredOptions.h"
#include "Apps/Value/MisplacedWords.h"
#include "Apps/Value/UsageText.h"
#include "Host/Util/ClosestName.h"

namespace {

using Error = std::optional<std::string>;

std::string NameCommand(const CLI::App& command) {
  return command.get_parent() == nullptr ? "\"value\"" : "\"value " + command.get_name() + "\"";
}

std::vector<std::string> ListNames(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* option : GetShownOptions(command)) {
    for (const std::string& name : GetNames(*option)) names.push_back(name);
  }
  return names;
}

std::vector<const CLI::App*> FindOwners(const CLI::App& app, const std::string& name) {
  std::vector<const CLI::App*> owners;
  for (const CLI::App* command : GetShownCommands(app)) {
    if (FindOption(*command, name) != nullptr) owners.push_back(command);
  }
  return owners;
}

/// The name that an option of another command has here: "--input" for "-i".
Error FindOtherName(const CLI::App& command, const CLI::App& owner, const std::string& name) {
  for (const std::string& other : GetNames(*FindOption(owner, name))) {
    if (FindOption(command, other) != nullptr) return other;
  }
  return std::nullopt;
}

/// "--ouput": what a person may have meant who typed one dash, or a part of a name.
std::vector<std::string> FindClosestOptions(const CLI::App& command, const std::string& name) {
  const bool is_long = name.starts_with("--");
  std::vector<std::string> closest = ScEng::FindClosestNames(is_long ? name : "-" + name, ListNames(command));
  // A short option that is not there may be the first letter of a long one.
  if (closest.empty() && name.size() == 2 && !is_long) {
    for (const std::string& other : ListNames(command)) {
      if (other.starts_with("-" + name)) closest.push_back(other);
    }
  }
  return closest;
}

/// The option of another command that is closest, with its command.
Error FindAmongOthers(const CLI::App& app, const CLI::App& command, const std::string& name) {
  for (const CLI::App* other : GetShownCommands(app)) {
    const auto closest = other == &command ? std::vector<std::string>() : FindClosestOptions(*other, name);
    if (!closest.empty()) return "the closest is " + closest.front() + ", which belongs to " + NameCommand(*other);
  }
  return std::nullopt;
}

/// "--constant 0.5" for "--set constant=0.5".
Error OfferSetting(const CLI::App& command, const Argument& argument, std::span<const Argument> following) {
  if (FindOption(command, "--set") == nullptr || !argument.name.starts_with("--")) return std::nullopt;
  const bool has_word = !following.empty() && following.front().kind == Argument::Kind::kWord;
  if (!argument.is_joined && !has_word) return std::nullopt;
  const std::string value = argument.is_joined ? argument.values.front() : following.front().text;
  return "an attribute is set with --set " + QuoteForShell(argument.name.substr(2) + "=" + value);
}

/// "an attribute is set with --set seamless=true".
std::string OfferSettings(const std::vector<LineAdvice::Setting>& settings) {
  std::vector<std::string> lines;
  for (const LineAdvice::Setting& setting : settings) lines.push_back("--set " + QuoteForShell(setting.text));
  return "an attribute is set with " + JoinWithLast(lines, " or ");
}

std::string DescribeUnknown(const CLI::App& app, const CLI::App& command, const Argument& argument,
                            std::span<const Argument> following, LineAdvice* advice) {
  const std::string& name = argument.name;
  if (name.size() > 2 && name[1] != '-' && FindOption(command, "-" + name) != nullptr) {
    return name + " lacks a dash; write -" + name;
  }
  const std::string start = NameCommand(command) + " has no option " + ShowWord(name);
  const auto settings =
      advice != nullptr ? advice->FindSettings(argument, following) : std::vector<LineAdvice::Setting>();
  if (!settings.empty() && settings.front().is_accepted) return start + "; " + OfferSettings(settings);
  std::vector<std::string> owners;
  for (const CLI::App* owner : FindOwners(app, name)) {
    if (const Error other = FindOtherName(command, *owner, name)) return start + "; write " + *other;
    owners.push_back(NameCommand(*owner));
  }
  if (!owners.empty()) return name + " belongs to " + JoinWithLast(owners, " and ");
  if (!settings.empty()) return start + "; " + OfferSettings(settings);
  const std::vector<std::string> closest = FindClosestOptions(command, name);
  if (!closest.empty()) return start + "; the closest is " + JoinWithLast(closest, " or ");
  if (const Error other = FindAmongOthers(app, command, name)) return start + "; " + *other;
  if (const Error setting = OfferSetting(command, argument, following)) return start + "; " + *setting;
  const std::string help = command.get_parent() == nullptr ? "value --help" : "value " + command.get_name() + " --help";
  return start + "; \"" + help + "\" lists its options";
}

/// "-output" is read as "-o utput", and "-o=file" as a file with "=" in its name.
Error CheckShort(const CLI::App& command, const Argument& argument) {
  const std::string& text = argument.text;
  if (!argument.is_joined || text[1] == '-') return std::nullopt;
  const std::string& value = argument.values.front();
  const std::string written = "-" + text.substr(0, text.find('='));
  if (FindOption(command, written) != nullptr) return written.substr(1) + " lacks a dash; write " + written;
  if (value.starts_with("=")) {
    return argument.name + " takes no \"=\"; write " + argument.name + " " + QuoteForShell(value.substr(1));
  }
  if (value.find_first_of("./\\-=") != std::string::npos || IsFlag(*argument.option)) return std::nullopt;
  const std::vector<std::string> closest = FindClosestOptions(command, written);
  if (closest.empty()) return std::nullopt;
  return ShowWord(text) + " lacks a dash; the closest is " + JoinWithLast(closest, " or ");
}

Error CheckFlag(const Argument& argument) {
  constexpr std::string_view kFlagWords[] = {"true", "false", "1", "0", "on", "off", "yes", "no"};
  if (!argument.is_joined || !argument.name.starts_with("--")) return std::nullopt;
  const std::string& value = argument.values.front();
  if (std::find(std::begin(kFlagWords), std::end(kFlagWords), value) != std::end(kFlagWords)) return std::nullopt;
  return argument.name + " takes no value; write " + argument.name + " alone";
}

bool IsWhole(double number) { return number == std::floor(number); }

/// "a whole number from 1 to 1024".
std::string DescribeBounds(const CLI::Option& option, const std::pair<double, double>& bounds) {
  const bool is_whole = option.get_type_name().find("FLOAT") == std::string::npos && IsWhole(bounds.first);
  const auto show = [](double number) {
    std::string text = std::to_string(number);
    while (text.ends_with('0')) text.pop_back();
    if (text.ends_with('.')) text.pop_back();
    return text;
  };
  return std::string(is_whole ? "a whole number" : "a number") + " from " + show(bounds.first) + " to " +
         show(bounds.second);
}

Error CheckNumber(const Argument& argument, const std::string& value) {
  const auto bounds = GetBounds(*argument.option);
  if (!bounds) return std::nullopt;
  char* end = nullptr;
  const double number = std::strtod(value.c_str(), &end);
  const bool is_number = !value.empty() && *end == '\0';
  const std::string wanted = DescribeBounds(*argument.option, *bounds);
  const bool is_kind = wanted.find("whole") == std::string::npos || IsWhole(number);
  if (is_number && is_kind && number >= bounds->first && number <= bounds->second) return std::nullopt;
  return argument.name + " takes " + wanted + ", not " + ShowWord(value);
}

Error CheckChoice(const Argument& argument, const std::string& value) {
  const std::vector<std::string> choices = GetWords(*argument.option);
  if (choices.empty() || std::find(choices.begin(), choices.end(), value) != choices.end()) return std::nullopt;
  return argument.name + " takes " + JoinWithLast(choices, " or ") + ", not " + ShowWord(value) +
         ScEng::SuggestClosestNames(value, choices);
}

/// What follows "constant" of "--set constant 0.5", "--set constant = 0.5" or "--set constant =0.5".
std::string FindRightSide(std::span<const Argument> following) {
  std::string text;
  for (const Argument& argument : following.first(std::min<std::size_t>(following.size(), 2))) {
    if (argument.kind != Argument::Kind::kWord) break;
    text = argument.text;
    if (text != "=") break;
  }
  if (text.starts_with("=") || text.starts_with(":")) text.erase(0, 1);
  return text;
}

bool IsNumber(const std::string& text) {
  char* end = nullptr;
  std::strtod(text.c_str(), &end);
  return !text.empty() && *end == '\0';
}

/// A file, or a pattern of files, without what stands before its "=".
Error OfferLeftSide(const Argument& argument, const std::string& value, LineAdvice* advice) {
  const bool takes_file = !GetTypeName(*argument.option).ends_with("=VALUE");
  if (advice == nullptr || !takes_file || !HasKindOfFile(value)) return std::nullopt;
  std::vector<std::string> lines;
  for (const std::string& side : advice->FindLeftSides(*argument.option, "")) {
    lines.push_back(argument.name + " " + QuoteForShell(side + "=" + value));
  }
  return lines.empty() ? std::nullopt : Error("write " + JoinWithLast(lines, " or "));
}

/// Options of the form NAME=VALUE.
Error CheckAssignment(const Argument& argument, const std::string& value, std::span<const Argument> following,
                      LineAdvice* advice) {
  const std::string type = GetTypeName(*argument.option);
  if (type.find('=') == std::string::npos) return std::nullopt;
  const std::string start = argument.name + " takes " + type;
  const std::size_t equals = value.find('=');
  const std::string right = FindRightSide(following);
  const bool is_torn = equals + 1 == value.size() && (IsNumber(right) || HasKindOfFile(right));
  if (equals != std::string::npos && equals > 0 && !is_torn) return std::nullopt;
  const auto write = [&](const std::string& left, const std::string& taken) {
    // A node alone stands for its first output.
    const bool is_bare = advice != nullptr && type.starts_with("NODE.PLUG=") && left.find('.') == std::string::npos;
    const auto sides = is_bare ? advice->FindLeftSides(*argument.option, left) : std::vector<std::string>();
    const bool is_node = !sides.empty() && sides.front().starts_with(left + ".");
    return start + " in one word; write " + argument.name + " " +
           QuoteForShell((is_node ? sides.front() : left) + "=" + taken);
  };
  const bool may_be_right = type.ends_with("=VALUE") ? !HasKindOfFile(right) : HasKindOfFile(right);
  if (equals == std::string::npos && may_be_right && !right.empty() && !HasKindOfFile(value)) {
    return write(value, right);
  }
  if (is_torn) return write(value.substr(0, equals), right);
  const std::size_t colon = value.find(':');
  if (equals == std::string::npos && colon != std::string::npos && colon > 0 && colon + 1 < value.size()) {
    return start + "; write " + argument.name + " " +
           QuoteForShell(value.substr(0, colon) + "=" + value.substr(colon + 1));
  }
  if (equals == std::string::npos) {
    if (const Error offer = OfferLeftSide(argument, value, advice)) return start + "; " + *offer;
  }
  return start + "; " + ShowWord(value) + (equals == 0 ? " has nothing before its \"=\"" : " has no \"=\"");
}

/// Options of the form LOW,HIGH.
Error CheckPair(const Argument& argument, const std::string& value, std::span<const Argument> following) {
  const std::string type = GetTypeName(*argument.option);
  const std::size_t comma = value.find(',');
  if (type.find(',') == std::string::npos || (comma != std::string::npos && comma + 1 < value.size())) {
    return std::nullopt;
  }
  std::string right = FindRightSide(following);
  std::string left = value.substr(0, comma);
  if (!IsNumber(left)) {
    // "0:1", "0..1" and "0-1".
    const std::size_t end = value.find_first_not_of("0123456789.", value.starts_with("-") ? 1 : 0);
    const std::size_t dots = value.find("..");
    const std::size_t mark = std::min(end, dots);
    if (mark != std::string::npos) {
      left = value.substr(0, mark);
      right = value.substr(mark == dots ? mark + 2 : mark + 1);
    }
  }
  const bool can_be_told = IsNumber(left) && IsNumber(right);
  return argument.name + " takes " + type + " in one word" +
         (can_be_told ? "; write " + argument.name + " " + left + "," + right : ", not " + ShowWord(value));
}

/// "--json" behind an option is hardly a file of that name.
Error CheckPresent(const CLI::App& command, const Argument& argument) {
  if (argument.values.empty()) {
    const bool may_be_left_out = argument.option->get_items_expected_min() == 0;
    return may_be_left_out ? std::nullopt
                           : Error(argument.name + " has no value; write " + ShowOption(*argument.option));
  }
  const std::string& value = argument.values.front();
  if (argument.is_joined || value.size() < 2 || value[0] != '-') return std::nullopt;
  if (FindOption(command, value.substr(0, value.find('='))) == nullptr) return std::nullopt;
  return argument.name + " has no value, since the option " + value.substr(0, value.find('=')) + " follows; write " +
         ShowOption(*argument.option);
}

Error CheckValue(const CLI::App& command, const Argument& argument, const std::string& value,
                 std::span<const Argument> following, LineAdvice* advice) {
  const bool is_assignment = GetTypeName(*argument.option).find('=') != std::string::npos;
  if (!is_assignment && value.starts_with("=")) {
    const std::string right = value == "=" ? FindRightSide(following) : value.substr(1);
    return argument.name + " takes its value without \"=\" between blanks; write " + argument.name + " " +
           (right.empty() ? GetTypeName(*argument.option) : QuoteForShell(right));
  }
  Error error = CheckChoice(argument, value);
  if (!error) error = CheckNumber(argument, value);
  if (!error) error = CheckAssignment(argument, value, following, advice);
  if (!error) error = CheckPair(argument, value, following);
  if (!error && GetTypeName(*argument.option) == "FILE") error = CheckFileOfOption(command, argument, value);
  return error;
}

}  // namespace

std::optional<std::string> CheckOption(const CLI::App& app, const CLI::App& command, const Argument& argument,
                                       std::span<const Argument> following, LineAdvice* advice) {
  if (argument.kind == Argument::Kind::kUnknownOption) {
    return DescribeUnknown(app, command, argument, following, advice);
  }
  Error error = CheckShort(command, argument);
  if (error) return error;
  if (IsFlag(*argument.option)) return CheckFlag(argument);
  error = CheckPresent(command, argument);
  for (const std::string& value : argument.values) {
    if (error) break;
    error = CheckValue(command, argument, value, following, advice);
  }
  return error;
}
