// SPDX-License-Identifier: Apache-2.0
#include "Host/Nodes/GeneratorNodes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "Host/Nodes/HostLibrary.h"
#include "Host/Nodes/HostNodes.h"
#include "Host/Nodes/Terrain.h"
#include "Host/Util/ParallelRows.h"

namespace {

constexpr std::size_t kRowGrain = 8;

constexpr double kMost = 1e9;
constexpr double kBlack[] = {0.0, 0.0, 0.0, 1.0};
constexpr double kWhite[] = {1.0, 1.0, 1.0, 1.0};

constexpr AttributeRow kFrame = FrameRow(
    "frame", {0.0, 0.0, 64.0, 64.0}, "Where the image lies and how large it is, in whole pixels: x, y, width, height.");

constexpr AttributeRow kColor = ColorRow("color", kWhite, "The colour of every pixel.");
constexpr AttributeRow kRectangleAttributes[] = {kFrame, kColor};

constexpr AttributeRow kCellWidth =
    PointRow("rect_x_size", 8.0, 8.0, "The width of a cell in pixels is the first number; the second has no effect.");
constexpr AttributeRow kCellHeight =
    PointRow("rect_y_size", 8.0, 8.0, "The height of a cell in pixels is the first number; the second has no effect.");
constexpr AttributeRow kColor00 = ColorRow("color_00", kBlack, "The cells in even columns of even rows.");
constexpr AttributeRow kColor10 = ColorRow("color_10", kWhite, "The cells in odd columns of even rows.");
constexpr AttributeRow kColor01 = ColorRow("color_01", kWhite, "The cells in even columns of odd rows.");
constexpr AttributeRow kColor11 = ColorRow("color_11", kBlack, "The cells in odd columns of odd rows.");
constexpr AttributeRow kCheckerAttributes[] = {kFrame, kCellWidth, kCellHeight, kColor00, kColor10, kColor01, kColor11};

constexpr AttributeRow kHeight =
    NumberRow("height", 1.0, -kMost, kMost, 0.01, 3, "How high the waves rise above 0, and how deep they fall below.");
constexpr AttributeRow kWavelength =
    NumberRow("wavelength", 16.0, 0.001, kMost, 1.0, 3, "The distance from one ring to the next.").WithUnit("px");
constexpr AttributeRow kWavesAttributes[] = {kFrame, kHeight, kWavelength};

constexpr double kLargestSeed = 4294967295.0;
constexpr AttributeRow kSeed =
    NumberRow("seed", 1.0, 0.0, kLargestSeed, 1.0, 0, "Each whole number makes another terrain.");
constexpr AttributeRow kOctaves = NumberRow("octaves", 8.0, 1.0, 16.0, 1.0, 0,
                                            "How many layers of detail there are, each half as large as the last.");
constexpr AttributeRow kLargestFeature =
    NumberRow("wavelength", 64.0, 1.0, 32768.0, 1.0, 1, "The size of the largest hills and valleys.").WithUnit("px");
constexpr AttributeRow kTerrainAttributes[] = {kFrame, kSeed, kOctaves, kLargestFeature};

/// The part of a record in which the generators are alike.
constexpr NodeRecord MakeRecord(const char* type_name, const char* display_name, NodeType type,
                                std::span<const AttributeRow> attributes, const char* sentence, const char* keywords) {
  return {.library = &ScEng::kHostLibrary,
          .type_name = type_name,
          .display_name = display_name,
          .type = type,
          .group = "Generators",
          .sentence = sentence,
          .keywords = keywords,
          .attributes = attributes,
          .outputs = kImagePlugs,
          .reach = ReachesImage,
          .has_image = HasImageWhileEnabled};
}

std::array<float, 4> ToPixel(const ScEng::Rgbo& color) {
  return {static_cast<float>(color.red), static_cast<float>(color.green), static_cast<float>(color.blue),
          static_cast<float>(color.opacity)};
}

/// Calls `fill(y, row)` for every row of the image.
template <class Fill>
void ForEachRow(Image& image, Fill fill) {
  float* samples = image.GetArray();
  const auto rows = static_cast<std::size_t>(image.GetSizeY());
  const std::size_t row_samples = rows == 0 ? 0 : image.GetNumSamples() / rows;
  ScEng::ParallelRows(rows, kRowGrain, [&](std::size_t from, std::size_t to) {
    for (std::size_t y = from; y < to; ++y) fill(y, samples + y * row_samples);
  });
}

/// A cell side in whole pixels, at least one.
std::size_t CellSize(double size) { return static_cast<std::size_t>(std::max(ScEng::RoundHalfDown(size), 1)); }

}  // namespace

constinit const NodeRecord ImageRectangleNode::kRecord =
    MakeRecord("ImageRectangleNode", "Image Rectangle", ScEng::kImageRectangleType, kRectangleAttributes,
               "Makes an image of one colour.", "constant,solid,fill,flat,blank,background,uniform,color");
constinit const NodeRecord ImageCheckerNode::kRecord =
    MakeRecord("ImageCheckerNode", "Image Checker", ScEng::kImageCheckerType, kCheckerAttributes,
               "Makes a checkerboard of up to four colours.", "checkerboard,grid,pattern,test image,tiles");
constinit const NodeRecord ImageWavesNode::kRecord = MakeRecord(
    "ImageWavesNode", "Image Waves", ScEng::kImageWavesType, kWavesAttributes,
    "Makes sine rings around the centre of the frame, as values.", "rings,ripple,sine,wave,concentric,circles,water");
constinit const NodeRecord ImageTerrainNode::kRecord =
    MakeRecord("ImageTerrainNode", "Image Terrain", ScEng::kImageTerrainType, kTerrainAttributes,
               "Makes a fractal height field that tiles, as values from 0 to 1.",
               "noise,fractal,tileable,seamless,random,height,heightmap,landscape,mountain,hills,perlin,clouds");

void ImageGeneratorNode::Evaluate(unsigned, const std::vector<PlugValue>& inputs) {
  output_.ReleaseAll();
  if (!IsEnabled()) return;
  const EvaluatedInputs evaluated(*this, inputs);
  const ScEng::Frame frame = evaluated.GetFrame(kFrame);
  const int size_x = std::max(ScEng::RoundHalfDown(frame.width), 0);
  const int size_y = std::max(ScEng::RoundHalfDown(frame.height), 0);
  const ScEng::RefPtr<Image> image(new Image(size_x, size_y, GetColorMode(), nullptr));
  image->SetPin(ScEng::RoundHalfDown(frame.x), ScEng::RoundHalfDown(frame.y));
  Generate(evaluated, *image);
  output_.Set(image.Get());
}

void ImageRectangleNode::Generate(const EvaluatedInputs& inputs, Image& image) const {
  const std::array<float, 4> pixel = ToPixel(inputs.GetColor(kColor));
  const auto width = static_cast<std::size_t>(image.GetSizeX());
  ForEachRow(image, [&](std::size_t, float* row) {
    for (std::size_t x = 0; x < width; ++x) std::copy(pixel.begin(), pixel.end(), row + x * 4);
  });
}

void ImageCheckerNode::Generate(const EvaluatedInputs& inputs, Image& image) const {
  const std::size_t cell_width = CellSize(inputs.GetPoint(kCellWidth).x);
  const std::size_t cell_height = CellSize(inputs.GetPoint(kCellHeight).y);
  // By row parity, then by column parity.
  const std::array<float, 4> pixels[2][2] = {{ToPixel(inputs.GetColor(kColor00)), ToPixel(inputs.GetColor(kColor10))},
                                             {ToPixel(inputs.GetColor(kColor01)), ToPixel(inputs.GetColor(kColor11))}};
  const auto width = static_cast<std::size_t>(image.GetSizeX());
  ForEachRow(image, [&](std::size_t y, float* row) {
    const auto& row_pixels = pixels[y / cell_height % 2];
    for (std::size_t x = 0; x < width; ++x) {
      const auto& pixel = row_pixels[x / cell_width % 2];
      std::copy(pixel.begin(), pixel.end(), row + x * 4);
    }
  });
}

void ImageWavesNode::Generate(const EvaluatedInputs& inputs, Image& image) const {
  const double height = inputs.GetDouble(kHeight);
  const double wavelength = inputs.GetDouble(kWavelength);
  const double center_x = image.GetSizeX() / 2.0;
  const double center_y = image.GetSizeY() / 2.0;
  const auto width = static_cast<std::size_t>(image.GetSizeX());
  ForEachRow(image, [&](std::size_t y, float* row) {
    const double dy = static_cast<double>(y) + 0.5 - center_y;
    for (std::size_t x = 0; x < width; ++x) {
      const double dx = static_cast<double>(x) + 0.5 - center_x;
      const double distance = std::sqrt(dx * dx + dy * dy);
      row[x] = static_cast<float>(height * std::sin(2.0 * std::numbers::pi * distance / wavelength));
    }
  });
  image.SetValueLowHigh(static_cast<float>(-height), static_cast<float>(height));
}

void ImageTerrainNode::Generate(const EvaluatedInputs& inputs, Image& image) const {
  const double octaves = inputs.GetDouble(kOctaves);
  const double seed = std::clamp(inputs.GetDouble(kSeed), 0.0, kLargestSeed);
  Terrain::Generate(image, static_cast<std::uint32_t>(seed), std::clamp(ScEng::RoundHalfDown(octaves), 1, 16),
                    inputs.GetDouble(kLargestFeature));
}
