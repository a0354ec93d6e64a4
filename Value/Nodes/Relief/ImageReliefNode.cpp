// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Relief/ImageReliefNode.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "Host/Image/Filter.h"
#include "Host/Image/ImageRegion.h"
#include "Host/Image/Paste.h"
#include "Host/Image/Placement.h"
#include "Host/Math/Geometry.h"
#include "Host/Util/EvaluationScope.h"
#include "Host/Util/Log.h"
#include "Host/Util/ParallelRows.h"
#include "Host/Util/ThreadPool.h"
#include "Value/Core/ValueLibrary.h"
#include "Value/Nodes/Relief/ReliefBevel.h"
#include "Value/Nodes/Relief/ReliefChoices.h"
#include "Value/Nodes/Relief/ReliefLevels.h"
#include "Value/SelfTests/SelfTests.h"

namespace {

/// Enough samples in one piece that handing it to a thread pays.
constexpr std::size_t kGrain = std::size_t{1} << 16;

/// The largest radii that count as none and as one pixel, since halves go down. A slope of one pixel is one step,
/// whatever its profile.
constexpr double kRoundsToNoPixel = 0.5;
constexpr double kRoundsToOnePixel = 1.5;

constexpr AttributeRow kRadius =
    NumberRow("radius", 1.0, 0.0, 250.0, 1.0, 0, "How far the slope reaches.").WithUnit("px");
constexpr AttributeRow kMultiplier =
    NumberRow("multiplier", 1.0, -1000.0, 1000.0, 1.0, 2,
              "The factor of the finished relief: negative values turn hills into hollows.");
constexpr AttributeRow kStyle =
    ChoiceRow("style", 0, "levels,inner_bevel,outer_bevel,emboss,pillow_emboss",
              "Which relief is made: levels raises a cone or dome on every pixel, as wide as the pixel is high; the "
              "others cut a slope inside the edges of a mask, outside of them, or on both sides.");
constexpr AttributeRow kProfile =
    ChoiceRow("profile", 0, "linear,smooth,arc_out,arc_in", "The cross-section of the slope.")
        .OnlyAbove(kRadius.name, kRoundsToOnePixel);
constexpr AttributeRow kSoften = NumberRow("soften", 0.0, 0.0, 16.0, 1.0, 0,
                                           "Blurs the mask before the relief is made, by a Gaussian of this sigma.")
                                     .WithUnit("px");
constexpr AttributeRow kGrow =
    FlagRow("grow", false,
            "Enlarges the result by the radius on every side, so that what spreads outward is not cut off.")
        .OnlyAbove(kRadius.name, kRoundsToNoPixel);
constexpr AttributeRow kSeamless =
    FlagRow("seamless", true, "Treats the image as a tile: what leaves it on one side enters on the other.");
constexpr AttributeRow kAttributes[] = {kRadius, kMultiplier, kStyle, kProfile, kSoften, kGrow, kSeamless};

/// What the attributes ask for, as far as the styles need it.
struct Settings {
  int radius_px = 0;
  ReliefStyle style = ReliefStyle::kLevels;
  ReliefProfile profile = ReliefProfile::kLinear;
  bool seamless = false;
};

/// Whether a radius that a connection delivers is one that pixels can be counted with. NaN counts as 0.
bool IsCountable(double radius) { return !(radius > std::numeric_limits<int>::max()); }

std::string DescribeTooLarge(double radius) {
  std::array<char, 128> text{};
  static_cast<void>(std::snprintf(text.data(), text.size(),
                                  "Relief: a radius of %g pixels is too large; the largest is %d.", radius,
                                  std::numeric_limits<int>::max()));
  return text.data();
}

ScEng::Box2I GetGrownBox(const Image& image, std::int64_t by) {
  const ScEng::Box2I box = image.GetBox();
  return {box.left - by, box.top - by, box.right + by, box.bottom + by};
}

/// Whether each pixel has one above 0 within the radius: 1 or 0. What the grown mask itself would be does not matter,
/// and a mask of two values grows much faster.
ImagePtr FindSurroundings(const Image& mask, float radius, bool wrap) {
  auto set = ScEng::MakeRef<Image>(mask.GetImageHeader(), nullptr);
  const float* samples = mask.GetConstArray();
  float* to = set->GetArray();
  ScEng::ParallelRows(mask.GetNumSamples(), kGrain, [&](std::size_t from, std::size_t end) {
    std::transform(samples + from, samples + end, to + from, [](float sample) { return sample > 0.0F ? 1.0F : 0.0F; });
  });
  ImageRegion region;
  region.Init(set.Get(), 0, 0, set->GetSizeX(), set->GetSizeY(), -1);
  region.Grow(radius, radius, wrap);
  return set;
}

void DrawLevels(const Image& mask, const Settings& settings, Image& output) {
  if (settings.radius_px == 0) {
    Filter::Copy(&mask, &output);
    return;
  }
  std::optional<ScEng::ProgressPart> analysis_part(std::in_place, 0.15, 4);
  const auto surroundings = FindSurroundings(mask, static_cast<float>(settings.radius_px) + 1.0F, settings.seamless);
  const ReliefLevels::Analysis analysis({
      .mask = mask.GetConstArray(),
      .grown = surroundings->GetConstArray(),
      .width = mask.GetSizeX(),
      .height = mask.GetSizeY(),
      .wrap = settings.seamless,
      .radius_px = settings.radius_px,
      .profile = settings.profile,
      .low = mask.GetValueLow(),
      .high = mask.GetValueHigh(),
  });
  float* samples = output.GetArray();
  const int rows = mask.GetSizeY();

  analysis_part.reset();
  const ScEng::ProgressPart levels_part(0.98);
  constexpr int kRowsOfTask = 10;
  Log::Info("ThreadPool Work DoLevelsBumpWorker - start");
  ThreadPool pool(std::thread::hardware_concurrency());
  for (int from = 0; from < rows; from += kRowsOfTask) {
    const int to = std::min(from + kRowsOfTask, rows);
    pool.AddTask([&analysis, samples, from, to] { analysis.ComputeRows(from, to, samples); });
  }
  Log::Info("ThreadPool Work DoLevelsBumpWorker - finish");
  pool.Wait();
}

void DrawPillowEmboss(ReliefBevel::Analysis& analysis, const Settings& settings, Image& output) {
  const float full = 1.0F;
  Filter::Fill(output, nullptr, &full, 0);
  const int inner = settings.radius_px / 2;
  const int outer = settings.radius_px - inner;
  analysis.Draw({.steps = outer, .start = outer, .is_inverted = true, .profile = settings.profile}, output);
  analysis.Draw({.steps = inner, .start = 0, .is_inverted = false, .profile = settings.profile}, output);
}

void DrawBevel(const Image& mask, const Settings& settings, Image& output) {
  ReliefBevel::Analysis analysis(mask, settings.seamless);
  if (settings.style == ReliefStyle::kPillowEmboss) return DrawPillowEmboss(analysis, settings, output);
  ReliefBevel::Rings rings{.steps = settings.radius_px, .profile = settings.profile};
  if (settings.style == ReliefStyle::kOuterBevel) rings.start = settings.radius_px;
  if (settings.style == ReliefStyle::kEmboss) rings.start = settings.radius_px / 2 + settings.radius_px % 2;
  analysis.Draw(rings, output);
}

void Multiply(Image& image, float factor) {
  float* samples = image.GetArray();
  ScEng::ParallelRows(image.GetNumSamples(), kGrain, [&](std::size_t from, std::size_t to) {
    for (std::size_t i = from; i < to; ++i) samples[i] *= factor;
  });
  image.SetValueLowHigh(std::min(0.0F, factor), std::max(0.0F, factor));
}

/// The blur reads four sigmas of rows, the styles a radius, levels one more for the pixels that it leaves out.
Reach FindReach(const Node& node, const std::vector<PlugValue>& inputs) {
  const EvaluatedInputs evaluated(node, inputs);
  const std::int64_t radius_px = std::max(evaluated.GetWholePixels(kRadius), 0);
  const std::int64_t soften_px = std::max(evaluated.GetWholePixels(kSoften), 0);
  const bool is_levels = GetReliefStyle(evaluated.GetChoiceIndex(kStyle)) == ReliefStyle::kLevels;
  return Reach::Rows(4 * soften_px + radius_px + 1, evaluated.GetFlag(kSeamless),
                     is_levels ? Reach::Range::kDeclared : Reach::Range::kNone);
}

/// Bevels go from pixel to pixel over the slopes of a soft mask.
Scaling FindScaling(const Node& node) {
  const Attribute* style = node.GetAttribute(std::string(kStyle.name));
  const bool is_levels = style != nullptr && style->GetValue().GetText() == "levels";
  return is_levels || !node.IsEnabled() ? Scaling::kSame : Scaling::kSameOfMasks;
}

}  // namespace

constinit const NodeRecord ImageReliefNode::kRecord{
    .library = &kValueLibrary,
    .type_name = "ImageReliefNode",
    .display_name = "Relief",
    .type = NodeType(10, 288, 26),
    .icon = "Relief",
    .group = "Shape",
    .sentence = "Turns a mask or height field into a relief whose edges rise by a chosen profile over a chosen radius.",
    .keywords =
        "bevel,emboss,pillow,chisel,engrave,extrude,dilate,grow,expand,cone,dome,mound,slope,edge,blur,gaussian,smooth,"
        "soften",
    .attributes = kAttributes,
    .inputs = kImagePlugs,
    .outputs = kImagePlugs,
    .reach = FindReach,
    .has_image = HasImageOfAnyInput,
    .scaling = FindScaling,
    .run_test = SelfTests::RunRelief,
};

std::string ImageReliefNode::TranslateAttributeName(unsigned version, const std::string& name) const {
  return version == 0 && name == "height" ? "multiplier" : name;
}

void ImageReliefNode::Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) {
  const EvaluatedInputs evaluated(*this, inputs);
  const Image* image = BeginEvaluation(*this, evaluated, output_);
  if (image == nullptr) return;

  const double radius = evaluated.GetDouble(kRadius);
  const int radius_px = evaluated.GetWholePixels(kRadius);
  const auto soften_px = static_cast<float>(evaluated.GetWholePixels(kSoften));
  const float multiplier = evaluated.GetNumber(kMultiplier);
  const Settings settings{.radius_px = radius_px,
                          .style = GetReliefStyle(evaluated.GetChoiceIndex(kStyle)),
                          .profile = GetReliefProfile(evaluated.GetChoiceIndex(kProfile)),
                          .seamless = evaluated.GetFlag(kSeamless)};

  std::optional<ScEng::ProgressPart> preparation(std::in_place, 0.1, 2);
  const ScEng::Box2I box = GetGrownBox(*image, evaluated.GetFlag(kGrow) ? radius_px : 0);
  if (box.Width() > Image::GetMaxSizeX() || box.Height() > Image::GetMaxSizeY()) {
    SetState(evaluation, Node::State::kError, ScEng::kOversizeMessage);
    return;
  }
  if (!IsCountable(radius)) {
    SetState(evaluation, Node::State::kError, DescribeTooLarge(radius));
    return;
  }
  const ImagePtr cutout(image->GetColorMode() == ColorMode::kValue ? Paste(image, box, ColorMode::kValue)
                                                                   : PasteMask(image, box, 0.0F));
  if (!cutout) {
    SetState(evaluation, Node::State::kError, ScEng::kOversizeMessage);
    return;
  }
  Image mask(ScEng::PlaceOver(box, *image, ColorMode::kValue), nullptr);
  Filter::ApplyGaussianBlur(*cutout, mask, soften_px, soften_px, settings.seamless ? 'p' : 'b');

  preparation.reset();
  const float zero = 0.0F;
  auto output = ScEng::MakeRef<Image>(mask.GetImageHeader(), &zero);
  switch (settings.style) {
    case ReliefStyle::kLevels: DrawLevels(mask, settings, *output); break;
    case ReliefStyle::kInnerBevel:
    case ReliefStyle::kOuterBevel:
    case ReliefStyle::kEmboss:
    case ReliefStyle::kPillowEmboss: DrawBevel(mask, settings, *output); break;
    case ReliefStyle::kNone: break;
  }
  if (multiplier != 1.0F) Multiply(*output, multiplier);
  output_.Set(output.Get());
}
