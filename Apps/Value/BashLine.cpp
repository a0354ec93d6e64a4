// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/BashLine.h"

#include <utility>

namespace {

constexpr std::string_view kBlanks = " \t\n";
constexpr std::string_view kEscapedInDoubleQuotes = "\\\"$`";
constexpr std::string_view kEscapedWithoutQuotes = " \t\n\\'\"`$&|;<>()[]{}*?!#~";

bool IsOneOf(char letter, std::string_view letters) { return letters.find(letter) != std::string_view::npos; }

class BashReader {
 public:
  BashReader(std::string_view line, std::string_view breaks) : line_(line), breaks_(breaks) {}

  BashLine Read() {
    while (place_ < line_.size()) {
      const char letter = line_[place_++];
      if (result_.quote != 0) {
        TakeQuoted(letter);
      } else {
        TakePlain(letter);
      }
    }
    EndWord(true);
    return std::move(result_);
  }

 private:
  void TakeQuoted(char letter) {
    if (letter == result_.quote) {
      result_.quote = 0;
      num_kept_ = num_kept_before_quote_;
    } else if (result_.quote == '"' && letter == '\\' && place_ < line_.size() &&
               IsOneOf(line_[place_], kEscapedInDoubleQuotes)) {
      word_ += line_[place_++];
    } else {
      word_ += letter;
    }
  }

  void TakePlain(char letter) {
    if (IsOneOf(letter, kBlanks)) {
      if (has_word_) EndWord(false);
    } else if (IsOneOf(letter, "<>")) {
      StartRedirection();
    } else {
      has_word_ = true;
      TakeLetter(letter);
    }
  }

  void TakeLetter(char letter) {
    if (letter == '\\') {
      if (place_ < line_.size()) word_ += line_[place_++];
    } else if (letter == '"' || letter == '\'') {
      result_.quote = letter;
      num_kept_before_quote_ = std::exchange(num_kept_, word_.size());
    } else {
      word_ += letter;
      if (IsOneOf(letter, breaks_)) num_kept_ = word_.size();
    }
  }

  /// Leaves out the number of a stream that stands before the mark, and the marks themselves.
  void StartRedirection() {
    if (has_word_ && word_.find_first_not_of("0123456789&") != std::string::npos) EndWord(false);
    word_.clear();
    has_word_ = false;
    while (place_ < line_.size() && IsOneOf(line_[place_], "<>&|")) ++place_;
    result_.is_redirection = true;
  }

  void EndWord(bool is_last) {
    if (is_last) {
      result_.num_kept = num_kept_;
      result_.words.push_back(std::move(word_));
      return;
    }
    if (!result_.is_redirection) result_.words.push_back(std::move(word_));
    result_.is_redirection = false;
    word_.clear();
    num_kept_ = 0;
    has_word_ = false;
  }

  std::string_view line_;
  std::string_view breaks_;
  std::size_t place_ = 0;
  std::string word_;
  std::size_t num_kept_ = 0;
  // What it was before the last quotation mark: one that is closed again starts no part of its own.
  std::size_t num_kept_before_quote_ = 0;
  bool has_word_ = false;
  BashLine result_;
};

}  // namespace

BashLine ReadBashLine(std::string_view line, std::string_view breaks) { return BashReader(line, breaks).Read(); }

std::string QuoteForBash(std::string_view text, char quote) {
  std::string quoted;
  for (const char letter : text) {
    if (quote == '\'' && letter == '\'') {
      quoted += "'\\''";
      continue;
    }
    const bool is_escaped =
        quote == '"' ? IsOneOf(letter, kEscapedInDoubleQuotes) : quote == 0 && IsOneOf(letter, kEscapedWithoutQuotes);
    if (is_escaped) quoted += '\\';
    quoted += letter;
  }
  return quoted;
}
