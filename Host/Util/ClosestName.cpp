// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/ClosestName.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

namespace ScEng {
namespace {

// No name that people choose from is longer, so a longer word is not a misspelling of one.
constexpr std::size_t kLongestWord = 100;
// Beyond so many names, words in another order are not looked for: it takes several times as long.
constexpr std::size_t kMostTakenApart = 1000;

// What a difference costs. One letter weighs as much as two things that are right but for their place.
constexpr unsigned kLetterCost = 4;
constexpr unsigned kOrderCost = 2;
constexpr unsigned kBeginningCost = 3;
constexpr unsigned kEndingCost = 4;
constexpr unsigned kMissingWordCost = 3;
constexpr unsigned kAbbreviationCost = 7;
// Two names that differ by less than a letter are both worth showing.
constexpr unsigned kAlikeCost = 1;

char ToLower(char letter) { return static_cast<char>(std::tolower(static_cast<unsigned char>(letter))); }

bool IsSeparator(char letter) { return letter == ' ' || letter == '-' || letter == '_' || letter == '.'; }

/// Small letters, and one separator for all.
std::string Fold(std::string_view text) {
  std::string folded;
  for (const char letter : text) folded += IsSeparator(letter) ? ' ' : ToLower(letter);
  return folded;
}

std::string RemoveSeparators(std::string text) {
  std::erase(text, ' ');
  return text;
}

/// The words of "Value Add", "color_mode" and "ImageValueAddNode" in small letters.
std::vector<std::string> TakeApart(std::string_view text) {
  std::vector<std::string> parts;
  bool starts = true;
  bool after_small = false;
  for (const char letter : text) {
    const bool is_capital = std::isupper(static_cast<unsigned char>(letter)) != 0;
    if (IsSeparator(letter)) {
      starts = true;
    } else {
      if (starts || (is_capital && after_small)) parts.emplace_back();
      parts.back() += ToLower(letter);
      starts = false;
    }
    after_small = std::islower(static_cast<unsigned char>(letter)) != 0;
  }
  return parts;
}

/// How many letters may be wrong: a third of them, and none in a word of one letter.
std::size_t GetMostWrong(std::size_t length) { return length < 2 ? 0 : std::max<std::size_t>(1, length / 3); }

/// How many letters are to be inserted, removed, replaced or swapped with their neighbour; nothing where that is more
/// than `most`.
std::optional<std::size_t> CountWrongLetters(std::string_view a, std::string_view b, std::size_t most) {
  const std::size_t longer = std::max(a.size(), b.size());
  if (longer - std::min(a.size(), b.size()) > most) return std::nullopt;
  std::vector<std::size_t> before_last(b.size() + 1);
  std::vector<std::size_t> last(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) last[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        row[j] = std::min(row[j], before_last[j - 2] + 1);
      }
    }
    if (*std::min_element(row.begin(), row.end()) > most) return std::nullopt;
    std::swap(before_last, last);
    std::swap(last, row);
  }
  if (last.back() > most) return std::nullopt;
  return last.back();
}

/// "chk" for "check": at least half of the letters, with the first, in their order.
bool IsAbbreviation(std::string_view word, std::string_view name) {
  if (word.size() < 3 || 2 * word.size() < name.size() || word.front() != name.front()) return false;
  std::size_t found = 0;
  for (const char letter : name) {
    if (found < word.size() && word[found] == letter) ++found;
  }
  return found == word.size();
}

/// What one part of a word costs as a part of a name.
std::optional<unsigned> MatchPart(const std::string& part, const std::string& name) {
  if (part == name) return 0;
  if (part.size() >= 3 && name.starts_with(part)) return kBeginningCost;
  if (name.size() >= 3 && part.starts_with(name)) return kEndingCost;
  const auto wrong = CountWrongLetters(part, name, GetMostWrong(part.size()));
  if (!wrong || part.size() < 3) return std::nullopt;
  return kLetterCost * static_cast<unsigned>(*wrong);
}

/// Finds every part of a word among those of a name, in whatever order.
std::optional<unsigned> MatchParts(const std::vector<std::string>& parts, const std::vector<std::string>& names) {
  if (parts.empty() || parts.size() > names.size()) return std::nullopt;
  std::set<std::size_t> taken;
  unsigned cost = static_cast<unsigned>(names.size() - parts.size()) * kMissingWordCost;
  std::size_t last = 0;
  bool in_order = true;
  for (const std::string& part : parts) {
    std::optional<unsigned> least;
    std::size_t place = 0;
    for (std::size_t i = 0; i < names.size(); ++i) {
      const auto found = taken.contains(i) ? std::nullopt : MatchPart(part, names[i]);
      if (!found || (least && *least <= *found)) continue;
      least = found;
      place = i;
    }
    if (!least) return std::nullopt;
    taken.insert(place);
    in_order = in_order && place >= last;
    last = place;
    cost += *least;
  }
  return cost + (in_order ? 0 : kOrderCost);
}

/// A misspelt word, prepared for being compared with many names.
class Misspelling {
 public:
  Misspelling(const std::string& word, bool takes_apart)
      : folded_(Fold(word)), joined_(RemoveSeparators(folded_)), most_wrong_(GetMostWrong(word.size())) {
    if (takes_apart) parts_ = TakeApart(word);
  }

  /// What lies between the word and a name; nothing where they are not alike.
  [[nodiscard]] std::optional<unsigned> Compare(const std::string& name) const {
    if (name.size() > 2 * kLongestWord) return std::nullopt;
    const std::string folded = Fold(name);
    if (folded == folded_) return 0;
    if (!joined_.empty() && RemoveSeparators(folded) == joined_) return 1;
    std::optional<unsigned> least;
    const auto take = [&](std::optional<unsigned> cost) {
      if (cost && (!least || *cost < *least)) least = cost;
    };
    if (const auto wrong = CountWrongLetters(folded_, folded, most_wrong_)) {
      take(kLetterCost * static_cast<unsigned>(*wrong));
    }
    const bool is_beginning = joined_.size() >= 2 && folded.starts_with(folded_);
    // What continues at the end of a word is likelier than what goes on within it.
    if (is_beginning) take(folded[folded_.size()] == ' ' ? kBeginningCost - 1 : kBeginningCost);
    if (IsAbbreviation(folded_, folded)) take(kAbbreviationCost);
    if (!parts_.empty()) take(MatchParts(parts_, TakeApart(name)));
    return least;
  }

 private:
  std::string folded_;
  std::string joined_;
  std::size_t most_wrong_;
  std::vector<std::string> parts_;
};

}  // namespace

std::vector<std::string> FindClosestNames(const std::string& word, const std::vector<std::string>& names,
                                          std::size_t most) {
  if (word.empty() || word.size() > kLongestWord) return {};
  const Misspelling misspelling(word, names.size() <= kMostTakenApart);
  std::vector<std::pair<unsigned, const std::string*>> found;
  unsigned least = std::numeric_limits<unsigned>::max() - kAlikeCost;
  for (const std::string& name : names) {
    const auto cost = misspelling.Compare(name);
    if (!cost || *cost > least + kAlikeCost) continue;
    least = std::min(least, *cost);
    found.emplace_back(*cost, &name);
  }
  std::stable_sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<std::string> closest;
  for (const auto& [cost, name] : found) {
    const bool is_new = std::find(closest.begin(), closest.end(), *name) == closest.end();
    if (cost <= least + kAlikeCost && closest.size() < most && is_new) closest.push_back(*name);
  }
  return closest;
}

std::string SuggestClosestNames(const std::string& word, const std::vector<std::string>& names, std::size_t most) {
  const std::vector<std::string> closest = FindClosestNames(word, names, most);
  if (closest.empty()) return {};
  std::string text = closest.size() == 1 ? "; the closest is " : "; the closest are ";
  for (std::size_t i = 0; i < closest.size(); ++i) {
    if (i > 0) text += i + 1 == closest.size() ? " and " : ", ";
    text += "\"" + closest[i] + "\"";
  }
  return text;
}

}  // namespace ScEng
