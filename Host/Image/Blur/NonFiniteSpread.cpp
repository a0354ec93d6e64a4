// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/Blur/NonFiniteSpread.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "Host/Image/Blur/GaussianKernel.h"
#include "Host/Util/ParallelRows.h"

namespace ScEng {
namespace {

/// What a sample is, or what lies in reach of it.
using Mark = std::uint8_t;
constexpr Mark kNan = 1;
constexpr Mark kPlus = 2;
constexpr Mark kMinus = 4;
constexpr std::array<Mark, 3> kMarks = {kNan, kPlus, kMinus};

constexpr std::size_t kGrainSamples = std::size_t{1} << 15;
constexpr std::size_t kLanes = 64;

Mark MarkOf(float sample) {
  if (std::isnan(sample)) return kNan;
  if (std::isinf(sample)) return sample > 0.0F ? kPlus : kMinus;
  return 0;
}

/// The mark of a sum of what is in reach.
Mark Sum(Mark marks) {
  const bool nan = (marks & kNan) != 0 || (marks & (kPlus | kMinus)) == (kPlus | kMinus);
  return nan ? kNan : marks;
}

/// Lines of marks side by side: `lanes` of them, whose positions are `stride` marks apart.
struct Lines {
  const Mark* from;
  Mark* to;
  std::size_t stride;
  std::size_t lanes;
};

/// Counts the marks of each kind under a window that slides down the lines.
class Window {
 public:
  explicit Window(const Lines& lines) : lines_(lines) {}

  void Add(int position) { Change(position, 1); }
  void Remove(int position) { Change(position, -1); }

  void Store(int position) const {
    Mark* to = lines_.to + static_cast<std::size_t>(position) * lines_.stride;
    for (std::size_t lane = 0; lane < lines_.lanes; ++lane) {
      Mark marks = 0;
      for (std::size_t kind = 0; kind < kMarks.size(); ++kind) {
        if (counts_[kind][lane] != 0) marks = static_cast<Mark>(marks | kMarks[kind]);
      }
      to[lane] = Sum(marks);
    }
  }

 private:
  void Change(int position, int by) {
    const Mark* from = lines_.from + static_cast<std::size_t>(position) * lines_.stride;
    for (std::size_t kind = 0; kind < kMarks.size(); ++kind) {
      for (std::size_t lane = 0; lane < lines_.lanes; ++lane) {
        if ((from[lane] & kMarks[kind]) != 0) counts_[kind][lane] += by;
      }
    }
  }

  const Lines& lines_;
  std::array<std::array<int, kLanes>, kMarks.size()> counts_{};
};

/// Positions beyond the ends repeat what is nearer, unless the lines wrap.
void SpreadLines(const Lines& lines, int size, int radius, Border border) {
  Window window(lines);
  const bool wrap = border == Border::kWrap;
  const bool all_in_reach = wrap ? radius >= size / 2 : radius >= size - 1;
  if (all_in_reach) {
    for (int position = 0; position < size; ++position) window.Add(position);
    for (int position = 0; position < size; ++position) window.Store(position);
    return;
  }
  for (int position = -radius; position <= radius; ++position) {
    if (wrap || (position >= 0 && position < size)) window.Add(WrapIndex(position, size));
  }
  for (int position = 0; position < size; ++position) {
    window.Store(position);
    const int entering = position + radius + 1;
    const int leaving = position - radius;
    if (wrap || entering < size) window.Add(WrapIndex(entering, size));
    if (wrap || leaving >= 0) window.Remove(WrapIndex(leaving, size));
  }
}

/// Whether the weight of a pixel's only neighbours is zero, as that of a tiny sigma is.
bool NeighborsWeighNothing(float sigma) {
  const auto width = static_cast<double>(sigma);
  return GetGaussianRadius(sigma) == 1 && std::exp(-1.0 / (2.0 * width * width)) == 0.0;
}

/// Zero times an infinity is NaN.
void SpreadToWeightlessNeighbors(const Lines& lines, int size, Border border) {
  const auto at = [&](int position) {
    return lines.from + static_cast<std::size_t>(BorderIndex(position, size, border)) * lines.stride;
  };
  for (int position = 0; position < size; ++position) {
    const Mark* const here = at(position);
    const Mark* const left = at(position - 1);
    const Mark* const right = at(position + 1);
    Mark* to = lines.to + static_cast<std::size_t>(position) * lines.stride;
    for (std::size_t lane = 0; lane < lines.lanes; ++lane) {
      const bool beside = (left[lane] | right[lane]) != 0;
      to[lane] = beside ? kNan : here[lane];
    }
  }
}

void SpreadOneWay(const Lines& lines, int size, float sigma, Border border) {
  if (NeighborsWeighNothing(sigma)) {
    SpreadToWeightlessNeighbors(lines, size, border);
  } else {
    // Beyond its size a line has nothing new.
    SpreadLines(lines, size, static_cast<int>(std::min<std::int64_t>(GetGaussianRadius(sigma), size)), border);
  }
}

class Spread {
 public:
  explicit Spread(const Image& image)
      : size_x_(image.GetSizeX()),
        size_y_(image.GetSizeY()),
        channels_(static_cast<std::size_t>(image.GetNumChannels())),
        row_(static_cast<std::size_t>(size_x_) * channels_),
        rows_(static_cast<std::size_t>(size_y_)),
        marks_(image.GetNumSamples()),
        other_(image.GetNumSamples()) {
    ParallelRows(marks_.size(), kGrainSamples, [&](std::size_t from, std::size_t to) {
      std::transform(image.GetConstArray() + from, image.GetConstArray() + to, marks_.data() + from, MarkOf);
    });
  }

  void Along(float sigma, Border border) {
    if (GetGaussianRadius(sigma) == 0) return;
    ParallelRows(rows_, std::max<std::size_t>(1, kGrainSamples / row_), [&](std::size_t from, std::size_t to) {
      for (std::size_t y = from; y < to; ++y) {
        const Lines lines{marks_.data() + y * row_, other_.data() + y * row_, channels_, channels_};
        SpreadOneWay(lines, size_x_, sigma, border);
      }
    });
    marks_.swap(other_);
  }

  void Down(float sigma, Border border) {
    if (GetGaussianRadius(sigma) == 0) return;
    const std::size_t strips = (row_ + kLanes - 1) / kLanes;
    const std::size_t grain = std::max<std::size_t>(1, kGrainSamples / (kLanes * rows_));
    ParallelRows(strips, grain, [&](std::size_t from, std::size_t to) {
      for (std::size_t strip = from; strip < to; ++strip) {
        const std::size_t x = strip * kLanes;
        const Lines lines{marks_.data() + x, other_.data() + x, row_, std::min(kLanes, row_ - x)};
        SpreadOneWay(lines, size_y_, sigma, border);
      }
    });
    marks_.swap(other_);
  }

  void Enter(float* samples) const {
    ParallelRows(marks_.size(), kGrainSamples, [&](std::size_t from, std::size_t to) {
      constexpr float kInfinity = std::numeric_limits<float>::infinity();
      for (std::size_t i = from; i < to; ++i) {
        if (marks_[i] == 0) continue;
        samples[i] = marks_[i] == kNan    ? std::numeric_limits<float>::quiet_NaN()
                     : marks_[i] == kPlus ? kInfinity
                                          : -kInfinity;
      }
    });
  }

 private:
  int size_x_;
  int size_y_;
  std::size_t channels_;
  std::size_t row_;
  std::size_t rows_;
  std::vector<Mark> marks_;
  std::vector<Mark> other_;
};

}  // namespace

void SpreadNonFinite(const Image& in, Image& out, float sigma_x, float sigma_y, Border border) {
  Spread spread(in);
  spread.Along(sigma_x, border);
  spread.Down(sigma_y, border);
  spread.Enter(out.GetArray());
}

}  // namespace ScEng
