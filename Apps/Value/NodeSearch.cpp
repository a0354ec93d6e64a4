// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/NodeSearch.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>

#include "Host/Tools/NodeRecord.h"
#include "Host/Tools/TypeGuard.h"
#include "Host/Util/RefCounter.h"

namespace {

/// How a word was found, the better first.
enum class Match : unsigned { kWord, kBeginning, kInside, kNone };

/// Small letters, and one spelling for words that have two.
std::string Fold(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  constexpr std::pair<std::string_view, std::string_view> kSpellings[] = {
      {"colour", "color"}, {"centre", "center"}, {"grey", "gray"}, {"neighbour", "neighbor"},
      {"alise", "alize"},  {"erise", "erize"},   {"tise", "tize"}};
  for (const auto& [british, american] : kSpellings) {
    for (std::size_t at = text.find(british); at != std::string::npos; at = text.find(british, at)) {
      text.replace(at, british.size(), american);
    }
  }
  return text;
}

bool IsPartOfWord(char letter) { return std::isalnum(static_cast<unsigned char>(letter)) != 0 || (letter & 0x80) != 0; }

/// The words of a text: "Value Add", "color_mode" and "ImageValueAddNode" have two and more.
std::vector<std::string> SplitWords(const std::string& text) {
  std::vector<std::string> words;
  bool starts = true;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool is_hump = i > 0 && std::isupper(static_cast<unsigned char>(text[i])) != 0 &&
                         std::islower(static_cast<unsigned char>(text[i - 1])) != 0;
    if (!IsPartOfWord(text[i])) {
      starts = true;
      continue;
    }
    if (starts || is_hump) words.emplace_back();
    words.back() += text[i];
    starts = false;
  }
  for (std::string& word : words) word = Fold(std::move(word));
  return words;
}

Match MatchWord(const std::string& wanted, const std::string& word) {
  if (word == wanted) return Match::kWord;
  if (word.starts_with(wanted)) return Match::kBeginning;
  // "labels" is looked for where "label" stands.
  if (wanted.size() > 3 && (wanted == word + "s" || wanted == word + "es")) return Match::kBeginning;
  if (word.find(wanted) != std::string::npos) return Match::kInside;
  constexpr std::size_t kLongestEnding = 3;
  const bool is_stem = word.size() > 3 && wanted.starts_with(word) && wanted.size() <= word.size() + kLongestEnding;
  return is_stem ? Match::kInside : Match::kNone;
}

/// How well words are found: where and how, then at which place among the keywords.
using Rating = std::pair<std::size_t, std::size_t>;

/// The texts of a node type as words.
class Index {
 public:
  explicit Index(const SearchTexts& texts)
      : fields_{SplitWords(texts.name), SplitWords(texts.keywords), SplitWords(texts.sentence),
                SplitWords(texts.attributes)} {}

  /// The lower the better; nothing where a word is not there, or only worse than `worst` allows.
  [[nodiscard]] std::optional<Rating> Rate(const std::vector<std::string>& wanted, Match worst) const {
    Rating sum;
    for (const std::string& word : wanted) {
      const auto rating = RateWord(word, worst);
      if (!rating) return std::nullopt;
      sum.first += rating->first;
      sum.second += rating->second;
    }
    return sum;
  }

 private:
  [[nodiscard]] std::optional<Rating> RateWord(const std::string& wanted, Match worst) const {
    for (std::size_t field = 0; field < fields_.size(); ++field) {
      Match best = Match::kNone;
      std::size_t place = 0;
      for (std::size_t i = 0; i < fields_[field].size(); ++i) {
        const Match match = MatchWord(wanted, fields_[field][i]);
        if (match < best) place = i;
        best = std::min(best, match);
      }
      if (best > worst) continue;
      return Rating(field * 4 + static_cast<std::size_t>(best), field == kKeywords ? place : 0);
    }
    return std::nullopt;
  }

  /// The field whose words stand in the order of how well they fit.
  static constexpr std::size_t kKeywords = 1;
  std::array<std::vector<std::string>, 4> fields_;
};

std::vector<std::string> SplitQuery(const std::vector<std::string>& words) {
  std::vector<std::string> query;
  for (const std::string& word : words) {
    for (std::string& part : SplitWords(Fold(word))) query.push_back(std::move(part));
  }
  std::sort(query.begin(), query.end());
  query.erase(std::unique(query.begin(), query.end()), query.end());
  return query;
}

/// A task that no single node is named after.
struct Topic {
  /// What people call it, with blanks between.
  const char* words;
  const char* hint;
};

constexpr Topic kTopics[] = {
    {"blur soften smooth gaussian",
     "Blur: no node does nothing but blur; Relief with radius=0 does, by \"soften\". Docs/Cookbook.md has the recipe."},
    {"sharpen sharp unsharp clarity",
     "Sharpen: Value Subtract a blurred copy from the image (Relief with radius=0 blurs, by \"soften\"), Value "
     "Multiply "
     "the rest by how much, and Value Add it to the image."},
    {"ridge ridges curvature crest convex concave",
     "Ridges and hollows: Value Subtract a blurred copy from the heights (Relief with radius=0 blurs, by \"soften\"): "
     "ridges are above 0, hollows below. Docs/Cookbook.md has the recipe."},
    {"invert negative reverse flip",
     "Negative: value apply \"To Value\" -i FILE --set low=1 --set high=0 -o FILE swaps black and white."},
    {"slope steepness steep incline",
     "Slope: Value Gradient gives it along x and along y; the square root of the sum of their squares is how steep it "
     "is. Docs/Cookbook.md has the recipe."},
    {"hillshade hillshading shading sunlight",
     "Hillshade: Value Gradient, then Value Multiply each of its outputs by how far the light is in that direction, "
     "and "
     "Value Add both. Ambient Occlusion shades without a light."},
    {"edge outline stroke",
     "Edges: Component Edges draws lines between regions; Value Gradient is strong where values change."},
    {"contour isoline", "Contour lines: Value Steps, then Component Edges."},
    {"dilate dilation grow expand thicken",
     "Grow a mask: Distance, then Value Condition with condition=v_lte_a and a= the pixels to grow by."},
    {"erode erosion shrink contract thin",
     "Shrink a mask: the negative of the mask, Distance, then Value Condition with condition=v_gt_a and a= the pixels "
     "to shrink by."},
    {"erode erosion hydraulic",
     "Erosion of a terrain: no node lets water flow; Docs/Cookbook.md finds the ridges and hollows of one as it is."},
    {"glow feather halo falloff", "Glow: Distance, then Value Range with falloff= the pixels over which it fades."},
    {"blend mix lerp crossfade merge overlay",
     "Blend by a mask: Value Multiply one image with the mask and the other with its negative, then Value Add. "
     "Docs/Cookbook.md has the recipe."},
    {"screen", "Screen: the negatives of both images, Value Multiply, and the negative of that."},
    {"alpha opacity transparency",
     "Opacity: Image Reader with channels=A reads it as values (channels=3 of a PNG file in colour); \"opacity\" of "
     "Image "
     "Writer and the option --opacity say whether it is written."},
    {"tile tileable tiling seamless",
     "Tiles: \"seamless\" has a node work across the borders of an image that tiles; no node makes one tile that does "
     "not. Docs/Cookbook.md shows whether one does."},
};

/// Tasks that no node does, alone or with others.
constexpr Topic kMissing[] = {
    {"histogram", "no node makes a histogram; \"value stats FILE\" prints one, as fine as --bins says"},
    {"voronoi worley cellular",
     "no node makes Voronoi cells; Image Terrain makes fractal noise, and Distance gives the distance to the nearest "
     "of "
     "the points of an image"},
    {"crop resize resizing resample rotate rotation mirror", "no node crops, resizes or turns an image"},
};

/// Whether a search is for a topic.
bool IsAbout(const std::vector<std::string>& query, const Topic& topic) {
  const std::vector<std::string> names = SplitWords(topic.words);
  return std::any_of(query.begin(), query.end(), [&](const std::string& wanted) {
    return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
      // "blurring" and "edges" speak of it, too.
      return name.size() > 3 ? wanted.starts_with(name) : wanted == name;
    });
  });
}

/// Display name and class name.
std::string MakeNames(const NodeInterface& descriptor) {
  return descriptor.GetName() + " " + descriptor.GetNodeFactory()->GetTypeName();
}

}  // namespace

SearchTexts MakeSearchTexts(const NodeInterface& descriptor, const Node& node) {
  SearchTexts texts;
  texts.name = MakeNames(descriptor);
  if (const NodeRecord* record = node.GetRecord()) {
    texts.keywords = std::string(record->keywords) + "," + record->group;
    texts.sentence = record->sentence;
  }
  for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
    const Attribute& attribute = *node.GetAttribute(i);
    texts.attributes += attribute.GetName() + " ";
    for (const std::string& word : attribute.GetChoices()) texts.attributes += word + " ";
    if (const AttributeRow* row = attribute.GetRow()) texts.attributes += std::string(row->text) + " ";
  }
  return texts;
}

std::vector<SearchTexts> MakeSearchTexts(const ScEng::NodeCatalog& catalog) {
  std::vector<SearchTexts> texts;
  for (const NodeInterface* descriptor : catalog.GetDescriptors()) {
    SearchTexts& own = texts.emplace_back();
    ScEng::Status status;
    const ScEng::RefPtr<Node> node = ScEng::CreateNode(*descriptor, status);
    // What is wrong with a node is told where it is shown; until then its names are all there is of it.
    static_cast<void>(ScEng::CallTypeGuarded(*descriptor, "its description", [&] {
      own.name = MakeNames(*descriptor);
      if (node) own = MakeSearchTexts(*descriptor, *node);
    }));
  }
  return texts;
}

std::vector<std::size_t> Search(const std::vector<SearchTexts>& texts, const std::vector<std::string>& words) {
  const std::vector<std::string> query = SplitQuery(words);
  if (query.empty()) return {};
  const std::vector<Index> indices(texts.begin(), texts.end());
  std::vector<std::pair<Rating, std::size_t>> found;
  for (const Match worst : {Match::kBeginning, Match::kInside}) {
    for (std::size_t i = 0; i < indices.size(); ++i) {
      if (const auto rating = indices[i].Rate(query, worst)) found.emplace_back(*rating, i);
    }
    if (!found.empty()) break;
  }
  std::sort(found.begin(), found.end());
  std::vector<std::size_t> places;
  places.reserve(found.size());
  for (const auto& [rating, place] : found) places.push_back(place);
  return places;
}

std::vector<std::string> ListSearchWords(const ScEng::NodeCatalog& catalog, const std::vector<SearchTexts>& texts) {
  std::vector<std::string> words;
  for (const NodeInterface* descriptor : catalog.GetDescriptors()) words.push_back(descriptor->GetName());
  for (const SearchTexts& text : texts) {
    std::istringstream stream(text.keywords);
    for (std::string word; std::getline(stream, word, ',');) words.push_back(word);
  }
  return words;
}

std::vector<std::string> FindHints(const std::vector<std::string>& words) {
  std::vector<std::string> hints;
  const std::vector<std::string> query = SplitQuery(words);
  for (const Topic& topic : kTopics) {
    if (IsAbout(query, topic)) hints.emplace_back(topic.hint);
  }
  if (std::string missing = DescribeMissing(words); !missing.empty()) {
    missing[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(missing[0])));
    hints.push_back(missing + ".");
  }
  return hints;
}

std::string DescribeMissing(const std::vector<std::string>& words) {
  const std::vector<std::string> query = SplitQuery(words);
  for (const Topic& topic : kMissing) {
    if (IsAbout(query, topic)) return topic.hint;
  }
  return {};
}
