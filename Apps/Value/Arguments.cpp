// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/Arguments.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <sstream>
#include <string_view>

#include "Apps/Value/DeclaredOptions.h"

namespace {

bool IsDigit(char letter) { return std::isdigit(static_cast<unsigned char>(letter)) != 0; }

/// Negative numbers are values, and a single "-" is a file.
bool IsOptionLike(const std::string& word) { return word.size() > 1 && word[0] == '-' && !IsDigit(word[1]); }

bool TakesSeveral(const CLI::Option& option) { return option.get_allow_extra_args(); }

/// Reads the pieces of one command one after the other.
class Reader {
 public:
  Reader(const CLI::App& app, const std::vector<std::string>& words, std::size_t from)
      : app_(app), words_(words), at_(from) {}

  [[nodiscard]] bool IsAtEnd() const { return at_ >= words_.size(); }
  [[nodiscard]] std::size_t GetPlace() const { return at_; }
  [[nodiscard]] const std::string& Peek() const { return words_[at_]; }
  [[nodiscard]] bool IsAtOption() const { return !only_words_ && IsOptionLike(Peek()); }

  Argument Next() {
    Argument argument;
    argument.text = words_[at_++];
    if (only_words_ || !IsOptionLike(argument.text)) return argument;
    Split(argument);
    argument.option = FindOption(app_, argument.name);
    argument.kind = argument.option != nullptr ? Argument::Kind::kOption : Argument::Kind::kUnknownOption;
    if (argument.option != nullptr) TakeValues(argument);
    return argument;
  }

  /// Whether "--" comes next, which makes words of all that follows; it is read then.
  bool TakeMark() {
    if (only_words_ || Peek() != "--") return false;
    only_words_ = true;
    ++at_;
    return true;
  }

 private:
  /// "--type=float" and "-ofile" hold the option's first value.
  void Split(Argument& argument) const {
    const std::string& text = argument.text;
    const std::size_t equals = text.find('=');
    argument.name = text.substr(0, equals);
    std::string value = equals != std::string::npos ? text.substr(equals + 1) : "";
    if (text[1] != '-' && text.size() > 2 && FindOption(app_, text.substr(0, 2)) != nullptr) {
      argument.name = text.substr(0, 2);
      value = text.substr(2);
    }
    argument.is_joined = !value.empty();
    if (argument.is_joined) argument.values.push_back(value);
  }

  void TakeValues(Argument& argument) {
    if (IsFlag(*argument.option)) return;
    const bool may_be_left_out = argument.option->get_items_expected_min() == 0;
    if (argument.values.empty() && !IsAtEnd() && !(may_be_left_out && IsOptionLike(Peek()))) {
      argument.values.push_back(words_[at_++]);
    }
    while (TakesSeveral(*argument.option) && !IsAtEnd() && !IsOptionLike(Peek())) {
      argument.values.push_back(words_[at_++]);
    }
  }

  const CLI::App& app_;
  const std::vector<std::string>& words_;
  std::size_t at_;
  bool only_words_ = false;
};

}  // namespace

Arguments ReadArguments(const CLI::App& app, const std::vector<std::string>& words) {
  Arguments arguments;
  Reader reader(app, words, 0);
  while (!reader.IsAtEnd()) {
    if (!reader.IsAtOption() && (arguments.command = FindCommand(app, reader.Peek())) != nullptr) break;
    if (!reader.TakeMark()) arguments.before.push_back(reader.Next());
  }
  if (arguments.command == nullptr) return arguments;
  Reader own(*arguments.command, words, reader.GetPlace() + 1);
  while (!own.IsAtEnd()) {
    if (!own.TakeMark()) arguments.behind.push_back(own.Next());
  }
  return arguments;
}

const CLI::App* FindCommand(const CLI::App& app, const std::string& name) {
  const auto found = app.get_subcommands([&](const CLI::App* command) { return command->get_name() == name; });
  return found.empty() ? nullptr : found.front();
}

const CLI::Option* FindOption(const CLI::App& app, const std::string& name) {
  const auto found = app.get_options([&](const CLI::Option* option) {
    if (option->get_positional()) return false;
    return name.starts_with("--") ? option->check_lname(name.substr(2)) : option->check_sname(name.substr(1));
  });
  return found.empty() ? nullptr : found.front();
}

std::string GetTypeName(const CLI::Option& option) {
  return option.get_positional() ? option.get_name(true) : GetValueName(option);
}
