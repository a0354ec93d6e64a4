// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/NodeSearch.h"

#include <algorithm>
#include <cctype>
#include <sstream>

namespace {

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
  const std::vector<std::string> names = ScEng::SplitSearchWords(topic.words);
  return std::any_of(query.begin(), query.end(), [&](const std::string& wanted) {
    return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
      // "blurring" and "edges" speak of it, too.
      return name.size() > 3 ? wanted.starts_with(name) : wanted == name;
    });
  });
}

}  // namespace

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
  const std::vector<std::string> query = ScEng::SplitSearchQuery(words);
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
  const std::vector<std::string> query = ScEng::SplitSearchQuery(words);
  for (const Topic& topic : kMissing) {
    if (IsAbout(query, topic)) return topic.hint;
  }
  return {};
}
