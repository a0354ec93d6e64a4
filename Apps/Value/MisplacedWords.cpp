// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/MisplacedWords.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

#include "Apps/Value/DeclaredOptions.h"
#include "Apps/Value/UsageText.h"
#include "Host/Files/ImageFormats.h"
#include "Host/Util/ClosestName.h"

namespace {

using Error = std::optional<std::string>;

bool Exists(const std::string& file) {
  std::error_code error;
  return std::filesystem::exists(file, error);
}

/// Whether a file begins as libraries do, whatever its ending.
bool IsLibrary(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  std::array<char, 4> start{};
  return stream.read(start.data(), start.size()) && std::string_view(start.data(), start.size()) ==
                                                        "\x7f"
                                                        "ELF";
}

/// The positional that takes the word behind `taken` others; null where none does.
const CLI::Option* FindTaker(const CLI::App& command, std::size_t taken) {
  for (const CLI::Option* positional : GetPositionals(command)) {
    const auto most = static_cast<std::size_t>(positional->get_items_expected_max());
    if (taken < most) return positional;
    taken -= most;
  }
  return nullptr;
}

bool IsGiven(const std::vector<Argument>& arguments, const CLI::Option* option) {
  return std::any_of(arguments.begin(), arguments.end(), [&](const Argument& a) { return a.option == option; });
}

bool TakesAssignment(const CLI::Option& option) { return GetTypeName(option).find('=') != std::string::npos; }

/// The dash that text programs make of "-" or "--", at the start of an option.
Error CheckDash(const CLI::App& command, const std::string& word) {
  constexpr std::string_view kDashes[] = {"\u2010", "\u2011", "\u2012", "\u2013", "\u2014", "\u2015", "\u2212"};
  std::string_view rest = word;
  const auto strip = [&] {
    for (const std::string_view dash : kDashes) {
      if (!rest.starts_with(dash)) continue;
      rest.remove_prefix(dash.size());
      return true;
    }
    return false;
  };
  if (!strip()) return std::nullopt;
  while (strip() || rest.starts_with("-")) {
    if (rest.starts_with("-")) rest.remove_prefix(1);
  }
  const std::string name(rest.substr(0, rest.find('=')));
  const std::string written = (name.size() == 1 ? "-" : "--") + name;
  const auto* const option = name.empty() ? nullptr : FindOption(command, written);
  return ShowWord(word) + " starts with another dash than \"-\"" +
         (option != nullptr ? "; write " + written : std::string("; options start with \"-\" or \"--\""));
}

/// How a file is given to a command whose words are something else; nothing where it takes no files.
Error OfferFileOption(const CLI::App& command, const std::vector<Argument>& arguments, const std::string& word) {
  const CLI::Option* const input = FindOption(command, "--input");
  if (input == nullptr) return std::nullopt;
  const CLI::Option* const output = FindOption(command, "--output");
  const bool is_output = !Exists(word) && output != nullptr && !IsGiven(arguments, output);
  const CLI::Option& option = is_output ? *output : *input;
  if (!TakesAssignment(option)) return GetNames(option).front() + " " + QuoteForShell(word);
  const std::string type = GetTypeName(option);
  return GetNames(option).front() + " " + type.substr(0, type.find('=') + 1) + QuoteForShell(word);
}

/// "constant=0.5" and "mask=mask.png" without their option.
Error CheckAssignment(const CLI::App& command, const std::string& word) {
  const std::size_t equals = word.find('=');
  if (equals == std::string::npos || equals == 0 || Exists(word)) return std::nullopt;
  const std::string right = word.substr(equals + 1);
  const bool is_file = FindFileKind(right) == FileKind::kImage;
  const bool is_output = is_file && !Exists(right) && word.substr(0, equals).find('.') != std::string::npos;
  const CLI::Option* const option = FindOption(command, !is_file ? "--set" : is_output ? "--output" : "--input");
  if (option == nullptr) return std::nullopt;
  return ShowWord(word) + " stands alone; write " + GetNames(*option).front() + " " + QuoteForShell(word);
}

std::string DescribeCapacity(const CLI::App& command) {
  const std::string start = "\"value " + command.get_name() + "\" takes ";
  const auto positionals = GetPositionals(command);
  if (positionals.empty()) return start + "no words";
  const int most = positionals.front()->get_items_expected_max();
  return start + (most == 1 ? "one " : "up to " + std::to_string(most) + " words for ") +
         GetTypeName(*positionals.front());
}

std::string DescribeExtra(const CLI::App& command, const std::vector<Argument>& arguments, std::size_t place) {
  const std::string& word = arguments[place].text;
  const Argument* const before = place > 0 ? &arguments[place - 1] : nullptr;
  if (before != nullptr && before->option != nullptr && IsFlag(*before->option)) {
    return before->name + " takes no value; " + ShowWord(word) + " is one word too many";
  }
  if (FindOption(command, "--" + word) != nullptr) return ShowWord(word) + " lacks its dashes; write --" + word;
  const auto kind = FindFileKind(word);
  const Error option = kind == FileKind::kImage ? OfferFileOption(command, arguments, word) : std::nullopt;
  if (option) return ShowWord(word) + " is an image; write " + *option;
  if (kind && GetPositionals(command).empty()) {
    return DescribeCapacity(command) + "; " + ShowWord(word) + " is " + DescribeFile(*kind, word);
  }
  return ShowWord(word) + " is one word too many; " + DescribeCapacity(command);
}

/// A file where a node is to be named.
Error CheckNodeWord(const CLI::App& command, const std::vector<Argument>& arguments, const std::string& word) {
  const auto kind = FindFileKind(word);
  if (!kind) return std::nullopt;
  if (*kind != FileKind::kImage) return ShowWord(word) + " is " + DescribeFile(*kind, word);
  const Error option = OfferFileOption(command, arguments, word);
  if (option) return ShowWord(word) + " is a file; write " + *option;
  return ShowWord(word) + " is " + DescribeFile(*kind, word);
}

/// A file behind --each that the shell has made of a pattern without quotes.
Error CheckPattern(const std::vector<Argument>& arguments, std::size_t place) {
  const std::string& word = arguments[place].text;
  if (FindFileKind(word) != FileKind::kImage || !Exists(word)) return std::nullopt;
  std::size_t before = place;
  while (before > 0 && arguments[before - 1].kind == Argument::Kind::kWord) --before;
  const CLI::Option* const option = before > 0 ? arguments[before - 1].option : nullptr;
  if (option == nullptr || !option->check_lname("each") || arguments[before - 1].values.empty()) return std::nullopt;
  const std::string& value = arguments[before - 1].values.front();
  const std::size_t equals = value.find('=');
  const std::string reader = equals == std::string::npos ? "" : value.substr(0, equals + 1);
  const std::filesystem::path file = word;
  const std::filesystem::path pattern = file.parent_path() / ("*" + file.extension().string());
  return ShowWord(word) + " is one file too many; --each takes a pattern in quotes, such as --each \"" + reader +
         pattern.string() + "\"";
}

/// A file of the wrong kind. One that is not there is for the command to tell.
Error CheckFileWord(const std::string& word, FileKind wanted) {
  const auto kind = FindFileKind(word);
  if (!kind || *kind == wanted || !Exists(word)) return std::nullopt;
  return ShowWord(word) + " is " + DescribeFile(*kind, word);
}

}  // namespace

std::optional<FileKind> FindFileKind(const std::string& word) {
  std::string ending = std::filesystem::path(word).extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(), [](unsigned char c) { return std::tolower(c); });
  if (ending == ".json") return FileKind::kDocument;
  if (ending == ".so") return FileKind::kLibrary;
  return ScEng::HasImageEnding(word) ? std::optional(FileKind::kImage) : std::nullopt;
}

std::string DescribeFile(FileKind kind, const std::string& word) {
  const std::string file = QuoteForShell(word);
  switch (kind) {
    case FileKind::kDocument: return "a graph document; \"value run " + file + "\" evaluates it";
    case FileKind::kLibrary: return "a node library; \"value validate " + file + "\" checks it";
    case FileKind::kImage: break;
  }
  return "an image; \"value stats " + file + "\" shows its figures, \"value apply NODE -i " + file +
         " -o FILE\" puts a node on it";
}

bool TakesAnyWords(const CLI::App& command) {
  const auto positionals = GetPositionals(command);
  return !positionals.empty() && GetTypeName(*positionals.front()) == "WORDS";
}

std::optional<std::string> CheckWord(const CLI::App& command, const std::vector<Argument>& arguments, std::size_t place,
                                     std::size_t taken) {
  const std::string& word = arguments[place].text;
  const CLI::Option* const taker = FindTaker(command, taken);
  const std::string type = taker != nullptr ? GetTypeName(*taker) : "";
  Error error = type == "WORDS" ? std::nullopt : CheckDash(command, word);
  if (!error && (taker == nullptr || type == "NODE")) error = CheckAssignment(command, word);
  if (!error) error = CheckPattern(arguments, place);
  if (error) return error;
  if (taker == nullptr) return DescribeExtra(command, arguments, place);
  if (type == "GRAPH") return CheckFileWord(word, FileKind::kDocument);
  if (type == "FILE") return CheckFileWord(word, FileKind::kImage);
  if (type == "LIBRARY") return IsLibrary(word) ? std::nullopt : CheckFileWord(word, FileKind::kLibrary);
  return CheckNodeWord(command, arguments, word);
}

std::optional<std::string> CheckFileOfOption(const CLI::App& command, const Argument& argument,
                                             const std::string& file) {
  if (!argument.option->check_lname("input")) return std::nullopt;
  if (Error error = CheckDash(command, file)) return error;
  if (FindFileKind(file) == FileKind::kDocument && Exists(file)) {
    return ShowWord(file) + " is " + DescribeFile(FileKind::kDocument, file);
  }
  // "constant=0.5" behind "-i FILE...".
  const std::size_t equals = file.find('=');
  const bool is_first = file == argument.values.front();
  const bool is_setting = equals != std::string::npos && equals > 0 && !HasKindOfFile(file) && !Exists(file) &&
                          file.find_first_of("/\\-") == std::string::npos;
  return is_setting && !is_first ? CheckAssignment(command, file) : std::nullopt;
}

std::string FindUnmarkedOutput(const std::vector<Argument>& arguments) {
  for (const Argument& argument : arguments) {
    if (argument.option == nullptr || !argument.option->check_lname("input") || argument.values.size() < 2) continue;
    const std::string& last = argument.values.back();
    if (FindFileKind(last) == FileKind::kImage && !Exists(last)) return last;
  }
  return {};
}
