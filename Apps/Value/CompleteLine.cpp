// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/CompleteLine.h"

#include <algorithm>
#include <cstddef>
#include <sstream>

#include "Apps/Value/DeclaredOptions.h"

namespace {

/// What of a word names an option, and the value that follows in the same word.
struct OptionWord {
  const CLI::Option* option = nullptr;
  std::string prefix;
  std::string value;
  bool has_value = false;
};

bool HasName(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

const CLI::Option* FindOption(const CLI::App& command, const std::string& name, bool is_long) {
  for (const CLI::Option* option : command.get_options()) {
    if (HasName(is_long ? option->get_lnames() : option->get_snames(), name)) return option;
  }
  return nullptr;
}

OptionWord ReadOptionWord(const CLI::App& command, const std::string& word) {
  OptionWord result;
  if (word.size() < 2 || word[0] != '-') return result;
  if (word[1] == '-') {
    const std::size_t equals = word.find('=');
    result.option = FindOption(command, word.substr(2, equals == std::string::npos ? equals : equals - 2), true);
    result.has_value = equals != std::string::npos;
    if (result.has_value) result.prefix = word.substr(0, equals + 1);
  } else {
    result.option = FindOption(command, word.substr(1, 1), false);
    result.has_value = word.size() > 2;
    if (result.has_value) result.prefix = word.substr(0, 2);
  }
  result.value = word.substr(result.prefix.size());
  return result;
}

/// The most values that one use of an option takes.
std::size_t CountValues(const CLI::Option& option) {
  const bool takes_more = MayRepeat(option) && option.get_allow_extra_args();
  const int most = takes_more ? option.get_items_expected_max() : option.get_type_size_max();
  return static_cast<std::size_t>(std::max(most, 0));
}

/// Reads the words before the one that is being typed.
class LineReader {
 public:
  explicit LineReader(const CLI::App& app) { line_.command = &app; }

  void Take(const std::string& word) {
    if (options_end_) return TakePositional(word);
    if (word == "--") return EndOptions();
    const bool must_be_value = num_open_ > 0 && num_taken_ == 0;
    if (!must_be_value && LooksLikeOption(word)) {
      TakeOption(ReadOptionWord(*line_.command, word));
    } else if (num_open_ > 0) {
      TakeValue(word);
    } else if (const CLI::App* command = FindCommand(word)) {
      line_.command = command;
    } else {
      TakePositional(word);
    }
  }

  TypedLine Finish(const std::string& word) {
    line_.word = word;
    const OptionWord found = options_end_ ? OptionWord() : ReadOptionWord(*line_.command, word);
    if (num_open_ > 0) {
      line_.option = open_;
      line_.takes_option = num_taken_ > 0;
    } else {
      line_.takes_option = !options_end_;
    }
    if (line_.takes_option && found.option != nullptr && found.has_value && !IsFlag(*found.option)) {
      line_.option = found.option;
      line_.prefix = found.prefix;
      line_.word = found.value;
      line_.takes_option = false;
    }
    line_.positional = FindPositional();
    return line_;
  }

 private:
  /// "-" alone is a value, and so is a negative number.
  static bool LooksLikeOption(const std::string& word) {
    return word.size() > 1 && word[0] == '-' && word.find_first_of("0123456789.") != 1;
  }

  void EndOptions() {
    options_end_ = true;
    num_open_ = 0;
  }

  void TakeOption(const OptionWord& found) {
    num_open_ = 0;
    if (found.option == nullptr) return;
    line_.options.emplace_back(found.option, found.has_value ? found.value : "");
    if (IsFlag(*found.option)) return;
    open_ = found.option;
    num_taken_ = found.has_value ? 1 : 0;
    num_open_ = CountValues(*found.option);
    if (found.has_value && num_open_ > 0) --num_open_;
  }

  void TakeValue(const std::string& word) {
    if (num_taken_ == 0) {
      line_.options.back().second = word;
    } else {
      line_.options.emplace_back(open_, word);
    }
    ++num_taken_;
    --num_open_;
  }

  const CLI::App* FindCommand(const std::string& word) const {
    if (!line_.positionals.empty()) return nullptr;
    for (const CLI::App* command : GetShownCommands(*line_.command)) {
      if (command->get_name() == word) return command;
    }
    return nullptr;
  }

  void TakePositional(const std::string& word) { line_.positionals.push_back(word); }

  [[nodiscard]] const CLI::Option* FindPositional() const {
    std::size_t taken = line_.positionals.size();
    for (const CLI::Option* positional : GetPositionals(*line_.command)) {
      const auto most = static_cast<std::size_t>(std::max(positional->get_items_expected_max(), 1));
      if (taken < most) return positional;
      taken -= most;
    }
    return nullptr;
  }

  TypedLine line_;
  const CLI::Option* open_ = nullptr;
  // How many values the open option still takes, and how many it has taken.
  std::size_t num_open_ = 0;
  std::size_t num_taken_ = 0;
  bool options_end_ = false;
};

}  // namespace

bool TypedLine::IsGiven(const CLI::Option* given) const {
  return std::any_of(options.begin(), options.end(), [&](const auto& entry) { return entry.first == given; });
}

TypedLine ReadTypedLine(const CLI::App& app, const std::vector<std::string>& words) {
  LineReader reader(app);
  if (words.empty()) return reader.Finish({});
  for (std::size_t i = 0; i + 1 < words.size(); ++i) reader.Take(words[i]);
  return reader.Finish(words.back());
}
