// SPDX-License-Identifier: Apache-2.0
#include "Host/Nodes/GeneratorNodes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "Host/Nodes/Terrain.h"
#include "Host/Util/ParallelRows.h"

namespace {

constexpr std::size_t kRowGrain = 8;

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

ImageGeneratorNode::ImageGeneratorNode() { AddAttribute("frame", ScEng::Frame{0.0, 0.0, 64.0, 64.0}); }

void ImageGeneratorNode::Evaluate(unsigned, const std::vector<PlugValue>& inputs) {
  output_.Reset();
  if (!IsEnabled()) return;
  const ScEng::Frame frame = Read(inputs, "frame").GetFrame();
  const int size_x = std::max(ScEng::RoundHalfDown(frame.width), 0);
  const int size_y = std::max(ScEng::RoundHalfDown(frame.height), 0);
  output_.Reset(new Image(size_x, size_y, GetColorMode(), nullptr));
  output_->SetPin(ScEng::RoundHalfDown(frame.x), ScEng::RoundHalfDown(frame.y));
  Generate(inputs, *output_);
}

ImageRectangleNode::ImageRectangleNode() {
  AddAttribute("color", ScEng::Rgbo{1.0, 1.0, 1.0, 1.0});
  UpdateInplugsAndOutplugs();
}

void ImageRectangleNode::Generate(const std::vector<PlugValue>& inputs, Image& image) const {
  const std::array<float, 4> pixel = ToPixel(Read(inputs, "color").GetColor());
  const auto width = static_cast<std::size_t>(image.GetSizeX());
  ForEachRow(image, [&](std::size_t, float* row) {
    for (std::size_t x = 0; x < width; ++x) std::copy(pixel.begin(), pixel.end(), row + x * 4);
  });
}

ImageCheckerNode::ImageCheckerNode() {
  constexpr ScEng::Rgbo kBlack{0.0, 0.0, 0.0, 1.0};
  constexpr ScEng::Rgbo kWhite{1.0, 1.0, 1.0, 1.0};
  AddAttribute("rect_x_size", ScEng::Point{8.0, 8.0});
  AddAttribute("rect_y_size", ScEng::Point{8.0, 8.0});
  AddAttribute("color_00", kBlack);
  AddAttribute("color_10", kWhite);
  AddAttribute("color_01", kWhite);
  AddAttribute("color_11", kBlack);
  UpdateInplugsAndOutplugs();
}

void ImageCheckerNode::Generate(const std::vector<PlugValue>& inputs, Image& image) const {
  const std::size_t cell_width = CellSize(Read(inputs, "rect_x_size").GetPoint().x);
  const std::size_t cell_height = CellSize(Read(inputs, "rect_y_size").GetPoint().y);
  // By row parity, then by column parity.
  const std::array<float, 4> pixels[2][2] = {
      {ToPixel(Read(inputs, "color_00").GetColor()), ToPixel(Read(inputs, "color_10").GetColor())},
      {ToPixel(Read(inputs, "color_01").GetColor()), ToPixel(Read(inputs, "color_11").GetColor())}};
  const auto width = static_cast<std::size_t>(image.GetSizeX());
  ForEachRow(image, [&](std::size_t y, float* row) {
    const auto& row_pixels = pixels[y / cell_height % 2];
    for (std::size_t x = 0; x < width; ++x) {
      const auto& pixel = row_pixels[x / cell_width % 2];
      std::copy(pixel.begin(), pixel.end(), row + x * 4);
    }
  });
}

ImageWavesNode::ImageWavesNode() {
  AddAttribute("height", 1.0, -1e9, 1e9, 0.01, 3);
  AddAttribute("wavelength", 16.0, 0.001, 1e9, 1.0, 3);
  UpdateInplugsAndOutplugs();
}

void ImageWavesNode::Generate(const std::vector<PlugValue>& inputs, Image& image) const {
  const double height = Read(inputs, "height").GetNumber();
  const double wavelength = Read(inputs, "wavelength").GetNumber();
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

ImageTerrainNode::ImageTerrainNode() {
  AddAttribute("seed", 1.0, 0.0, 4294967295.0, 1.0, 0);
  AddAttribute("octaves", 8.0, 1.0, 16.0, 1.0, 0);
  AddAttribute("wavelength", 64.0, 1.0, 32768.0, 1.0, 1);
  UpdateInplugsAndOutplugs();
}

void ImageTerrainNode::Generate(const std::vector<PlugValue>& inputs, Image& image) const {
  const double octaves = Read(inputs, "octaves").GetNumber();
  const double seed = std::clamp(Read(inputs, "seed").GetNumber(), 0.0, 4294967295.0);
  Terrain::Generate(image, static_cast<std::uint32_t>(seed), std::clamp(ScEng::RoundHalfDown(octaves), 1, 16),
                    Read(inputs, "wavelength").GetNumber());
}
