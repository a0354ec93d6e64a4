// SPDX-License-Identifier: Apache-2.0
#include "Host/Nodes/Terrain.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "Host/Util/ParallelRows.h"

namespace Terrain {
namespace {

/// A well mixed 32-bit hash of a lattice point ("lowbias32", found by C. Wellons' search for integer hashes).
std::uint32_t Mix(std::uint32_t x) {
  x ^= x >> 16;
  x *= 0x7feb352dU;
  x ^= x >> 15;
  x *= 0x846ca68bU;
  x ^= x >> 16;
  return x;
}

/// The product of a direction that belongs to a lattice point and an offset from it. Eight directions are enough for
/// the eye, and keep every step in plain additions.
float DotWithDirection(std::uint32_t hash, float x, float y) {
  constexpr float kDiagonal = 0.70710678F;
  switch (hash & 7U) {
    case 0: return x;
    case 1: return -x;
    case 2: return y;
    case 3: return -y;
    case 4: return kDiagonal * (x + y);
    case 5: return kDiagonal * (x - y);
    case 6: return kDiagonal * (y - x);
    default: return -kDiagonal * (x + y);
  }
}

float Fade(float t) { return t * t * t * (t * (t * 6.0F - 15.0F) + 10.0F); }

/// Where a pixel lies between two lattice lines of one layer.
struct Place {
  std::uint32_t cell = 0;
  std::uint32_t next = 0;
  float offset = 0.0F;
  float fade = 0.0F;
};

/// The places of every pixel along a side that holds `cells` cells.
std::vector<Place> MakePlaces(int size, std::uint32_t cells) {
  std::vector<Place> places(static_cast<std::size_t>(size));
  for (std::size_t i = 0; i < places.size(); ++i) {
    const double position = static_cast<double>(i) * cells / size;
    const double cell = std::floor(position);
    places[i].cell = static_cast<std::uint32_t>(cell);
    places[i].next = (places[i].cell + 1) % cells;
    places[i].offset = static_cast<float>(position - cell);
    places[i].fade = Fade(places[i].offset);
  }
  return places;
}

struct Layer {
  std::uint32_t key = 0;
  float height = 1.0F;
  std::vector<Place> columns;
  std::vector<Place> rows;
};

std::uint32_t CountCells(int size, double wavelength) {
  return static_cast<std::uint32_t>(std::clamp(std::round(size / wavelength), 1.0, 65536.0));
}

float Sample(const Layer& layer, const Place& column, const Place& row) {
  const auto direction = [&](std::uint32_t x, std::uint32_t y) { return Mix(Mix(x ^ layer.key) + y); };
  const float top_left = DotWithDirection(direction(column.cell, row.cell), column.offset, row.offset);
  const float top_right = DotWithDirection(direction(column.next, row.cell), column.offset - 1.0F, row.offset);
  const float bottom_left = DotWithDirection(direction(column.cell, row.next), column.offset, row.offset - 1.0F);
  const float bottom_right =
      DotWithDirection(direction(column.next, row.next), column.offset - 1.0F, row.offset - 1.0F);
  const float top = top_left + column.fade * (top_right - top_left);
  const float bottom = bottom_left + column.fade * (bottom_right - bottom_left);
  return layer.height * (top + row.fade * (bottom - top));
}

}  // namespace

void Generate(Image& image, std::uint32_t seed, int octaves, double wavelength) {
  const auto width = static_cast<std::size_t>(image.GetSizeX());
  const auto height = static_cast<std::size_t>(image.GetSizeY());
  float* samples = image.GetArray();
  std::fill(samples, samples + image.GetNumSamples(), 0.0F);
  if (image.GetNumSamples() == 0) return;

  for (int octave = 0; octave < octaves; ++octave) {
    const double scale = std::ldexp(1.0, -octave);
    Layer layer;
    layer.key = Mix(seed * 16 + static_cast<std::uint32_t>(octave) + 1);
    layer.height = static_cast<float>(scale);
    layer.columns = MakePlaces(image.GetSizeX(), CountCells(image.GetSizeX(), wavelength * scale));
    layer.rows = MakePlaces(image.GetSizeY(), CountCells(image.GetSizeY(), wavelength * scale));
    ScEng::ParallelRows(height, 4, [&](std::size_t from, std::size_t to) {
      for (std::size_t y = from; y < to; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
          samples[y * width + x] += Sample(layer, layer.columns[x], layer.rows[y]);
        }
      }
    });
  }

  const ScEng::SampleRange range = image.GetSampleRange();
  const float span = range.high - range.low;
  samples = image.GetArray();
  ScEng::ParallelRows(height, 16, [&](std::size_t from, std::size_t to) {
    for (std::size_t i = from * width; i < to * width; ++i) {
      samples[i] = span > 0.0F ? (samples[i] - range.low) / span : 0.0F;
    }
  });
  image.SetValueLowHigh(0.0F, 1.0F);
}

}  // namespace Terrain
