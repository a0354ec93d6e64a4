// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Relief/ImageReliefNode.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <thread>
#include <utility>

#include "Host/Image/Filter.h"
#include "Host/Image/ImageRegion.h"
#include "Host/Image/Paste.h"
#include "Host/Math/Geometry.h"
#include "Host/Util/EvaluationScope.h"
#include "Host/Util/Log.h"
#include "Host/Util/ParallelRows.h"
#include "Host/Util/ThreadPool.h"
#include "Value/Core/AttributeTable.h"
#include "Value/Core/EvaluatedInputs.h"
#include "Value/Core/EvaluationFrame.h"
#include "Value/Nodes/Relief/ReliefBevel.h"
#include "Value/Nodes/Relief/ReliefLevels.h"
#include "Value/Nodes/Relief/ReliefProfile.h"

namespace {

/// Enough samples in one piece that handing it to a thread pays.
constexpr std::size_t kGrain = std::size_t{1} << 16;

enum : unsigned { kRadius, kMultiplier, kStyle, kProfile, kSoften, kGrow, kSeamless };
enum : int { kLevels, kInnerBevel, kOuterBevel, kEmboss, kPillowEmboss };

constexpr AttributeRow kAttributes[] = {
    NumberRow("radius", 1.0, 0.0, 250.0, 1.0, 0),
    NumberRow("multiplier", 1.0, -1000.0, 1000.0, 1.0, 2),
    ChoiceRow("style", 0, "levels,inner_bevel,outer_bevel,emboss,pillow_emboss"),
    ChoiceRow("profile", 0, "linear,smooth,arc_out,arc_in"),
    NumberRow("soften", 0.0, 0.0, 16.0, 1.0, 0),
    FlagRow("grow", false),
    FlagRow("seamless", true),
};

/// What the attributes ask for, as far as the styles need it.
struct Settings {
  int radius_px = 0;
  int style = kLevels;
  ReliefProfile profile = ReliefProfile::kLinear;
  bool seamless = false;
};

/// A word that is not in the list counts as the first.
ReliefProfile GetProfile(int index) { return index < 0 ? ReliefProfile::kLinear : static_cast<ReliefProfile>(index); }

ScEng::Box2I GetGrownBox(const Image& image, std::int64_t by) {
  const ScEng::Box2I box = image.GetBox();
  return {box.left - by, box.top - by, box.right + by, box.bottom + by};
}

/// A header in the value mode for an image that covers `box` and keeps the pin of the input.
ImageHeader MakeHeader(const Image& input, const ScEng::Box2I& box) {
  ImageHeader header =
      ImageHeader::Fresh(static_cast<int>(box.Width()), static_cast<int>(box.Height()), ColorMode::kValue);
  header.pin_x = input.GetPinX();
  header.pin_y = input.GetPinY();
  header.pivot_x = static_cast<float>(header.pin_x - box.left) / static_cast<float>(box.Width());
  header.pivot_y = static_cast<float>(header.pin_y - box.top) / static_cast<float>(box.Height());
  return header;
}

/// Whether each pixel has one above 0 within the radius: 1 or 0. What the grown mask itself would be does not matter,
/// and a mask of two values grows much faster.
std::unique_ptr<Image> FindSurroundings(const Image& mask, float radius, bool wrap) {
  auto set = std::make_unique<Image>(mask.GetImageHeader(), nullptr);
  const float* samples = mask.GetConstArray();
  float* to = set->GetArray();
  ScEng::ParallelRows(mask.GetNumSamples(), kGrain, [&](std::size_t from, std::size_t end) {
    std::transform(samples + from, samples + end, to + from, [](float sample) { return sample > 0.0F ? 1.0F : 0.0F; });
  });
  ImageRegion region;
  region.Init(set.get(), 0, 0, set->GetSizeX(), set->GetSizeY(), -1);
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
  const int inner = static_cast<int>(std::floor(static_cast<float>(settings.radius_px) * 0.5F));
  const int outer = settings.radius_px - inner;
  analysis.Draw({.steps = outer, .start = outer, .is_inverted = true, .profile = settings.profile}, output);
  analysis.Draw({.steps = inner, .start = 0, .is_inverted = false, .profile = settings.profile}, output);
}

void DrawBevel(const Image& mask, const Settings& settings, Image& output) {
  ReliefBevel::Analysis analysis(mask, settings.seamless);
  if (settings.style == kPillowEmboss) return DrawPillowEmboss(analysis, settings, output);
  ReliefBevel::Rings rings{.steps = settings.radius_px, .profile = settings.profile};
  if (settings.style == kOuterBevel) rings.start = settings.radius_px;
  if (settings.style == kEmboss) {
    rings.start = static_cast<int>(std::ceil(static_cast<float>(settings.radius_px) * 0.5F));
  }
  analysis.Draw(rings, output);
}

void Multiply(Image& image, float factor) {
  float* samples = image.GetArray();
  ScEng::ParallelRows(image.GetNumSamples(), kGrain, [&](std::size_t from, std::size_t to) {
    for (std::size_t i = from; i < to; ++i) samples[i] *= factor;
  });
  image.SetValueLowHigh(std::min(0.0F, factor), std::max(0.0F, factor));
}

}  // namespace

ImageReliefNode::ImageReliefNode() {
  DeclareAttributes(*this, attributes_, kAttributes);
  inplugs_ = {PlugRecord::Input(PlugType::kImage, "image")};
  outplugs_ = {PlugRecord::Output(PlugType::kImage, "image")};
  UpdateInplugsAndOutplugs();
}

NodeType ImageReliefNode::GetNodeType() const { return kNodeType<ImageReliefNode>; }
std::string ImageReliefNode::GetName() const { return kDisplayName<ImageReliefNode>; }

std::string ImageReliefNode::TranslateAttributeName(unsigned version, const std::string& name) const {
  return version == 0 && name == "height" ? "multiplier" : name;
}

void ImageReliefNode::Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) {
  const EvaluatedInputs evaluated(*this, inputs);
  const Image* image = BeginEvaluation(*this, evaluated, output_);
  if (image == nullptr) return;

  const int radius_px = ScEng::RoundHalfDown(evaluated.GetNumber(kRadius));
  const auto soften_px = static_cast<float>(ScEng::RoundHalfDown(evaluated.GetNumber(kSoften)));
  const float multiplier = evaluated.GetNumber(kMultiplier);
  // A connection may deliver a radius that the attribute would not take. One beyond this counts as this.
  constexpr int kLargestRadius = 2048;
  const Settings settings{.radius_px = std::clamp(radius_px, -1, kLargestRadius),
                          .style = evaluated.GetChoiceIndex(kStyle),
                          .profile = GetProfile(evaluated.GetChoiceIndex(kProfile)),
                          .seamless = evaluated.GetFlag(kSeamless)};

  std::optional<ScEng::ProgressPart> preparation(std::in_place, 0.1, 2);
  const ScEng::Box2I box = GetGrownBox(*image, evaluated.GetFlag(kGrow) ? radius_px : 0);
  if (box.Width() > Image::GetMaxSizeX() || box.Height() > Image::GetMaxSizeY()) {
    SetState(evaluation, Node::State::kError, kOversizeMessage);
    return;
  }
  const std::unique_ptr<const Image> cutout(
      image->GetColorMode() == ColorMode::kValue ? Paste(image, box, ColorMode::kValue) : PasteMask(image, box, 0.0F));
  if (!cutout) {
    SetState(evaluation, Node::State::kError, kOversizeMessage);
    return;
  }
  Image mask(MakeHeader(*image, box), nullptr);
  Filter::ApplyGaussianBlur(*cutout, mask, soften_px, soften_px, settings.seamless ? 'p' : 'b');

  preparation.reset();
  const float zero = 0.0F;
  auto output = std::make_unique<Image>(mask.GetImageHeader(), &zero);
  switch (settings.style) {
    case kLevels: DrawLevels(mask, settings, *output); break;
    case kInnerBevel:
    case kOuterBevel:
    case kEmboss:
    case kPillowEmboss: DrawBevel(mask, settings, *output); break;
    default: break;
  }
  if (multiplier != 1.0F) Multiply(*output, multiplier);
  output_.Set(output.release());
}
