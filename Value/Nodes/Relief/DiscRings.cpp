// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Relief/DiscRings.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "Host/Util/Cancellation.h"

namespace ReliefBevel {
namespace {

struct Offset {
  std::int32_t x;
  std::int32_t y;
};

/// By as many quarters of a turn.
Offset Rotate(Offset offset, int quarters) {
  for (; quarters > 0; --quarters) offset = {-offset.y, offset.x};
  return offset;
}

std::int64_t GetSquare(Offset offset) { return std::int64_t{offset.x} * offset.x + std::int64_t{offset.y} * offset.y; }

/// The offsets of each ring in the wedge around (1, 0). Rotated, they are those of the other wedges.
std::vector<std::vector<Offset>> FindOffsetsOfWedge(int radius) {
  std::vector<std::vector<Offset>> rings(static_cast<std::size_t>(radius) + 1);
  const std::int64_t most = std::int64_t{radius} * radius;
  for (int x = 1; x <= radius; ++x) {
    ScEng::PollCancellation();
    for (int y = 1 - x; y <= x; ++y) {
      const std::int64_t square = GetSquare({x, y});
      if (square > most) continue;
      auto ring = static_cast<std::int64_t>(std::sqrt(static_cast<double>(square)));
      while (ring * ring < square) ++ring;
      rings[static_cast<std::size_t>(ring)].push_back({x, y});
    }
  }
  return rings;
}

/// What offsets span.
struct Box {
  int left = std::numeric_limits<int>::max();
  int top = std::numeric_limits<int>::max();
  int right = std::numeric_limits<int>::min();
  int bottom = std::numeric_limits<int>::min();

  void Include(const Offset& offset) {
    left = std::min(left, offset.x);
    top = std::min(top, offset.y);
    right = std::max(right, offset.x);
    bottom = std::max(bottom, offset.y);
  }
  [[nodiscard]] bool IsEmpty() const { return left > right; }
  [[nodiscard]] bool Fits() const {
    return IsEmpty() || (right - left < DiscRings::kWindow && bottom - top < DiscRings::kWindow);
  }
};

/// Where a window begins that covers [from, to] and reaches beyond it towards 0.
int PlaceWindow(int from, int to) { return from + to > 0 ? to - (DiscRings::kWindow - 1) : from; }

/// Where the window of a rotated box begins.
Offset PlaceWindow(const Box& box, int quarters) {
  if (box.IsEmpty()) return {0, 0};
  const Offset one = Rotate({box.left, box.top}, quarters);
  const Offset other = Rotate({box.right, box.bottom}, quarters);
  return {PlaceWindow(std::min(one.x, other.x), std::max(one.x, other.x)),
          PlaceWindow(std::min(one.y, other.y), std::max(one.y, other.y))};
}

/// To the cell of a coordinate.
int RoundDown(int coordinate) {
  return (coordinate < 0 ? coordinate - (DiscRings::kCell - 1) : coordinate) / DiscRings::kCell;
}

/// The sector of an offset in its wedge, by the sine of its angle.
std::size_t FindSector(const Offset& offset, std::size_t sectors) {
  constexpr float kHalfRoot = 0.70710678F;
  const auto sine = static_cast<float>(offset.y) / std::sqrt(static_cast<float>(GetSquare(offset)));
  const float place = (sine * kHalfRoot + 0.5F) * static_cast<float>(sectors);
  return std::min(static_cast<std::size_t>(std::max(place, 0.0F)), sectors - 1);
}

}  // namespace

DiscRings::DiscRings(int radius, std::ptrdiff_t stride) {
  const auto wedge = FindOffsetsOfWedge(radius);
  rings.assign(static_cast<std::size_t>(radius) + 1, 0);
  const auto append = [stride](Offsets& kind, const std::vector<std::vector<Offset>>& sectors, int quarters) {
    for (const auto& sector : sectors) {
      kind.begins.push_back(static_cast<std::uint32_t>(kind.offsets.size()));
      for (const Offset& offset : sector) {
        const Offset rotated = Rotate(offset, quarters);
        kind.offsets.push_back(static_cast<std::int32_t>(rotated.y * stride + rotated.x));
      }
    }
  };
  for (int first = 1; first <= radius; first += kBelt) {
    ScEng::PollCancellation();
    const int last = std::min(first + kBelt - 1, radius);
    // Sectors are longest at the ends of a wedge, by the root of 2.
    constexpr double kLength = 14.0;
    auto number = static_cast<std::size_t>(std::ceil(std::sqrt(2.0) * last / kLength));
    std::vector<Box> boxes;
    do {
      boxes.assign(++number, Box());
      for (int ring = first; ring <= last; ++ring) {
        for (const Offset& offset : wedge[static_cast<std::size_t>(ring)]) {
          boxes[FindSector(offset, number)].Include(offset);
        }
      }
    } while (!std::all_of(boxes.begin(), boxes.end(), [](const Box& box) { return box.Fits(); }));
    belts.push_back({windows.size(), number});
    for (int quarters = 0; quarters < kWedges; ++quarters) {
      for (const Box& box : boxes) {
        const Offset corner = PlaceWindow(box, quarters);
        windows.push_back(static_cast<std::int32_t>(corner.y * stride + corner.x));
        cells.push_back(static_cast<std::int32_t>(RoundDown(corner.y) * (stride / kCell) + RoundDown(corner.x)));
      }
    }
    std::vector<std::vector<Offset>> of_apart(number);
    std::vector<std::vector<Offset>> of_shared(number);
    for (int ring = first; ring <= last; ++ring) {
      rings[static_cast<std::size_t>(ring)] = apart.begins.size();
      for (auto& sector : of_apart) sector.clear();
      for (auto& sector : of_shared) sector.clear();
      const std::int64_t within = std::int64_t{ring - 1} * (ring - 1);
      for (const Offset& offset : wedge[static_cast<std::size_t>(ring)]) {
        const bool is_shared = GetSquare({offset.x - 1, offset.y}) <= within;
        (is_shared ? of_shared : of_apart)[FindSector(offset, number)].push_back(offset);
      }
      for (int quarters = 0; quarters < kWedges; ++quarters) {
        append(apart, of_apart, quarters);
        append(shared, of_shared, quarters);
      }
    }
  }
  apart.begins.push_back(static_cast<std::uint32_t>(apart.offsets.size()));
  shared.begins.push_back(static_cast<std::uint32_t>(shared.offsets.size()));
}

}  // namespace ReliefBevel
