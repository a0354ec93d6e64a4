// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Relief/DiscRings.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <numbers>

#include "Host/Util/Cancellation.h"

namespace ReliefBevel {
namespace {

struct Offset {
  /// Grows with the angle, from 0 to 4.
  float turn;
  std::int32_t x;
  std::int32_t y;
};

float GetTurn(int x, int y) {
  const float part = static_cast<float>(y) / static_cast<float>(std::abs(x) + std::abs(y));
  if (x < 0) return 2.0F - part;
  return y < 0 ? 4.0F + part : part;
}

/// The offsets of each ring, in the order of their angles.
std::vector<std::vector<Offset>> SortOffsets(int radius) {
  std::vector<std::vector<Offset>> rings(static_cast<std::size_t>(radius) + 1);
  const std::int64_t most = std::int64_t{radius} * radius;
  for (int y = -radius; y <= radius; ++y) {
    ScEng::PollCancellation();
    for (int x = -radius; x <= radius; ++x) {
      const std::int64_t square = std::int64_t{x} * x + std::int64_t{y} * y;
      if (square > most || square == 0) continue;
      auto ring = static_cast<std::int64_t>(std::sqrt(static_cast<double>(square)));
      while (ring * ring < square) ++ring;
      rings[static_cast<std::size_t>(ring)].push_back({GetTurn(x, y), x, y});
    }
  }
  for (auto& ring : rings) {
    ScEng::PollCancellation();
    std::sort(ring.begin(), ring.end(), [](const Offset& a, const Offset& b) { return a.turn < b.turn; });
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
  [[nodiscard]] bool FitsInto(int side) const { return right - left < side && bottom - top < side; }
};

/// Where a window begins that covers [from, to] and reaches beyond it towards 0.
int PlaceWindow(int from, int to) { return from + to > 0 ? to - (DiscRings::kWindow - 1) : from; }

}  // namespace

DiscRings::DiscRings(int radius, std::ptrdiff_t stride) {
  const auto sorted = SortOffsets(radius);
  const auto count = [](const auto& entries) { return static_cast<std::uint32_t>(entries.size()); };
  rings.assign(static_cast<std::size_t>(radius) + 2, 0);
  for (int first = 1; first <= radius; first += kBelt) {
    const int last = std::min(first + kBelt - 1, radius);
    // Turns go up to 1.28 times as fast as on average: no sector is longer than 31 pixels and wider than the belt.
    constexpr double kLength = 24.0;
    const auto number = static_cast<int>(std::ceil(2.0 * std::numbers::pi * last / kLength));
    const auto sector_of = [number](const Offset& offset) {
      return std::min(static_cast<int>(offset.turn * 0.25F * static_cast<float>(number)), number - 1);
    };
    std::vector<Box> boxes(static_cast<std::size_t>(number));
    for (int ring = first; ring <= last; ++ring) {
      ScEng::PollCancellation();
      rings[static_cast<std::size_t>(ring)] = count(parts);
      const auto& line = sorted[static_cast<std::size_t>(ring)];
      std::size_t at = 0;
      for (int sector = 0; sector < number; ++sector) {
        parts.push_back(count(arcs));
        Box box;
        std::size_t begin = at;
        const auto close = [&] {
          if (begin == at) return;
          const int x = PlaceWindow(box.left, box.right);
          const int y = PlaceWindow(box.top, box.bottom);
          arcs.push_back({static_cast<std::int32_t>(y * stride + x), count(offsets)});
          for (; begin < at; ++begin)
            offsets.push_back(static_cast<std::int32_t>(line[begin].y * stride + line[begin].x));
        };
        for (; at < line.size() && sector_of(line[at]) == sector; ++at) {
          boxes[static_cast<std::size_t>(sector)].Include(line[at]);
          Box wider = box;
          wider.Include(line[at]);
          if (!wider.FitsInto(kWindow)) {
            close();
            wider = Box();
            wider.Include(line[at]);
          }
          box = wider;
        }
        close();
      }
    }
    belts.push_back(count(sectors));
    for (const Box& box : boxes) sectors.push_back(box.left <= box.right ? Sector{box.left, box.top} : Sector{0, 0});
  }
  rings[static_cast<std::size_t>(radius) + 1] = count(parts);
  belts.push_back(count(sectors));
  parts.push_back(count(arcs));
  arcs.push_back({0, count(offsets)});
}

}  // namespace ReliefBevel
