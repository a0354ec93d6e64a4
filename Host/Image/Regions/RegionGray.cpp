// SPDX-License-Identifier: Apache-2.0
//
// The extreme of all samples within a shape, for any samples. The shape is taken as one chord per row, after E. Urbach,
// M. Wilkinson: Efficient 2-D grayscale morphological transformations with arbitrary flat structuring elements, 2008.
//
// An input row is reduced to the extremes over each of the different chords, of which a shape has fewer than rows; each
// of these takes two loads from a table over runs of a power of two. Then every output row within reach takes in the
// one that belongs to its distance. The work goes by strips of columns, narrow enough for all that a strip needs to
// stay in the second cache level, and by a few input rows at once, so that an output row is fetched less often.

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

#include "Host/Image/Regions/RegionKeys.h"
#include "Host/Image/Regions/RegionPlane.h"
#include "Host/Image/Scratch.h"
#include "Host/Math/Border.h"
#include "Host/Util/Cancellation.h"
#include "Host/Util/ParallelRows.h"

namespace ScEng {
namespace {

/// What the rows of a strip may fill of the second cache level, and the bounds of its width: below, the margins and the
/// calls cost more than the cache saves; above, there is nothing more to gain.
constexpr std::size_t kCacheBytes = std::size_t{768} << 10;
constexpr int kNarrowest = 2 * kKeyUnit;
constexpr int kWidest = 32 * kKeyUnit;

std::size_t Index(int i) { return static_cast<std::size_t>(i); }

int RoundUp(int count) { return (count + kKeyUnit - 1) / kKeyUnit * kKeyUnit; }

void CopyStrided(const float* from, std::ptrdiff_t from_stride, float* to, std::ptrdiff_t to_stride, int count) {
  if (from_stride == 1 && to_stride == 1) {
    std::copy_n(from, count, to);
    return;
  }
  for (int i = 0; i < count; ++i) to[i * to_stride] = from[i * from_stride];
}

/// The chords of a step by their different lengths.
struct Shape {
  explicit Shape(const std::vector<int>& chords)
      : reach_x(chords.front()), reach_y(static_cast<int>(chords.size()) - 1), widths(chords) {
    std::reverse(widths.begin(), widths.end());
    widths.erase(std::unique(widths.begin(), widths.end()), widths.end());
    for (const int chord : chords) {
      width_of_row.push_back(std::lower_bound(widths.begin(), widths.end(), chord) - widths.begin());
    }
  }

  int reach_x;
  int reach_y;
  /// The different half widths, ascending.
  std::vector<int> widths;
  /// For rows j and -j of the shape, the place of their half width in `widths`.
  std::vector<std::ptrdiff_t> width_of_row;
};

/// A copy of the plane as keys.
struct KeyPlane {
  KeyPlane(const RegionPlane& plane, bool negate, const RegionKeyLoops& loops)
      : stride(Index(RoundUp(plane.width))), keys(stride * Index(plane.height)) {
    constexpr std::size_t kGrainRows = 16;
    ParallelRows(Index(plane.height), kGrainRows, [&](std::size_t from, std::size_t to) {
      std::vector<float> padded(stride);
      for (std::size_t y = from; y < to; ++y) {
        const float* row = plane.Row(static_cast<int>(y));
        CopyStrided(row, plane.pixel_stride, padded.data(), 1, plane.width);
        loops.to_keys(padded.data(), stride, negate, keys.Get() + y * stride);
      }
    });
  }

  [[nodiscard]] const RegionKey* Row(int y) const { return keys.Get() + Index(y) * stride; }

  std::size_t stride;
  Scratch<RegionKey> keys;
};

/// A part of the plane that one task makes.
struct Tile {
  int left = 0;
  int right = 0;
  int top = 0;
  int bottom = 0;
};

/// How the plane is divided. A strip is as wide as the cache allows, since its margins cost extra; a band takes in the
/// rows around it once more, so there are no more of them than keep the threads busy.
class Tiling {
 public:
  Tiling(const RegionPlane& plane, const Shape& shape) : width_(plane.width), height_(plane.height) {
    const std::size_t keys_per_column = kRowsAtOnce * shape.widths.size() + Index(2 * shape.reach_y + kRowsAtOnce);
    const int fitting = static_cast<int>(kCacheBytes / sizeof(RegionKey) / keys_per_column);
    strip_ = std::min(RoundUp(plane.width), std::clamp(fitting / kKeyUnit * kKeyUnit, kNarrowest, kWidest));
    strips_ = (width_ - 1) / strip_ + 1;
    const int wanted = static_cast<int>(4 * std::min<std::size_t>(GetNumThreads(), 256)) / strips_;
    const int most = height_ / (4 * shape.reach_y + 16);
    const int bands = GetNumThreads() == 1 ? 1 : std::clamp(wanted, 1, std::max(most, 1));
    band_ = (height_ - 1) / bands + 1;
    bands_ = (height_ - 1) / band_ + 1;
  }

  [[nodiscard]] int GetStripWidth() const { return strip_; }
  [[nodiscard]] std::size_t GetCount() const { return Index(strips_) * Index(bands_); }
  [[nodiscard]] Tile Get(std::size_t index) const {
    const int left = static_cast<int>(index / Index(bands_)) * strip_;
    const int top = static_cast<int>(index % Index(bands_)) * band_;
    return {left, std::min(left + strip_, width_), top, std::min(top + band_, height_)};
  }

 private:
  int width_;
  int height_;
  int strip_ = 0;
  int strips_ = 0;
  int band_ = 0;
  int bands_ = 0;
};

/// Makes one tile after another. Each thread has one of its own.
class TileWorker {
 public:
  TileWorker(const KeyPlane& keys, const RegionPlane& plane, const RegionStep& step, const Shape& shape, int strip,
             const RegionKeyLoops& loops)
      : keys_(keys),
        plane_(plane),
        step_(step),
        shape_(shape),
        loops_(loops),
        strip_(Index(strip)),
        ring_(std::min(2 * shape.reach_y + kRowsAtOnce, plane.height)),
        runs_(strip_ + Index(2 * RoundUp(shape.reach_x) + 2 * kKeyUnit)),
        chords_(strip_ * shape.widths.size() * kRowsAtOnce),
        results_(strip_ * Index(ring_)),
        samples_(strip_),
        sources_(MakeSources(kRowsAtOnce)) {}

  void Make(const Tile& tile) {
    tile_ = tile;
    int first = tile.top - shape_.reach_y;
    int end = tile.bottom + shape_.reach_y;
    if (!step_.wrap) {
      first = std::max(first, 0);
      end = std::min(end, plane_.height);
    }
    begun_ = tile.top;
    int finished = tile.top;
    for (int y = first; y < end; y += kRowsAtOnce) {
      // A tile of a large shape takes far longer than a request to stop may wait.
      PollCancellation();
      const int rows = std::min(kRowsAtOnce, end - y);
      for (int row = 0; row < rows; ++row) MakeChords(y + row, row);
      TakeInRows(y, rows);
      const int complete = y + rows == end ? tile.bottom : std::min(y + rows - shape_.reach_y, tile.bottom);
      for (; finished < complete; ++finished) Finish(finished);
    }
  }

 private:
  [[nodiscard]] RegionKey* Chord(std::ptrdiff_t width, int row) const {
    return chords_.Get() + (Index(row) * shape_.widths.size() + static_cast<std::size_t>(width)) * strip_;
  }
  [[nodiscard]] RegionKey* Result(int y) const { return results_.Get() + Index(y % ring_) * strip_; }

  /// Fills `runs_` with input row `y`, from the tile's left edge less the shape's reach on.
  void FetchRow(int y) {
    const int height = plane_.height;
    const RegionKey* row = keys_.Row(WrapIndex(y, height));
    const int width = plane_.width;
    const int from = tile_.left - shape_.reach_x;
    const int count = static_cast<int>(strip_) + 2 * shape_.reach_x;
    RegionKey* to = runs_.Get();
    if (step_.wrap) {
      int x = WrapIndex(from, width);
      for (int done = 0; done < count; x = 0) {
        const int piece = std::min(width - x, count - done);
        std::copy_n(row + x, piece, to + done);
        done += piece;
      }
    } else {
      const int begin = std::clamp(-from, 0, count);
      const int end = std::clamp(width - from, begin, count);
      std::fill(to, to + begin, kNothing);
      std::copy(row + from + begin, row + from + end, to + begin);
      std::fill(to + end, to + count, kNothing);
    }
  }

  /// The chords of input row `y`, as the `place`th of the rows that are taken in together.
  void MakeChords(int y, int place) {
    FetchRow(y);
    RegionKey* runs = runs_.Get();
    int length = 1;
    for (std::size_t i = 0; i < shape_.widths.size(); ++i) {
      const int width = shape_.widths[i];
      const int chord = 2 * width + 1;
      while (2 * length <= chord) {
        loops_.double_runs(runs, strip_ + Index(2 * shape_.reach_x - 2 * length + 1), Index(length));
        length *= 2;
      }
      loops_.join_runs(runs + shape_.reach_x - width, runs + shape_.reach_x + width + 1 - length, strip_,
                       Chord(static_cast<std::ptrdiff_t>(i), place));
    }
  }

  /// The chords that a result takes in.
  using Sources = std::array<const RegionKey*, kRowsAtOnce>;

  /// The sources of every result that `rows` input rows reach, from the uppermost on.
  [[nodiscard]] std::vector<Sources> MakeSources(int rows) const {
    std::vector<Sources> all(Index(2 * shape_.reach_y + rows));
    for (std::size_t i = 0; i < all.size(); ++i) {
      const RegionKey* any = nullptr;
      for (int row = 0; row < rows; ++row) {
        const int distance = std::abs(row + shape_.reach_y - static_cast<int>(i));
        if (distance <= shape_.reach_y) any = all[i][Index(row)] = Chord(shape_.width_of_row[Index(distance)], row);
      }
      // A row that is missing or out of reach is replaced by one that is not: it makes no difference to be taken in
      // twice.
      std::replace(all[i].begin(), all[i].end(), static_cast<const RegionKey*>(nullptr), any);
    }
    return all;
  }

  /// Takes input rows y to y + rows into every result within reach.
  void TakeInRows(int y, int rows) {
    const int uppermost = y - shape_.reach_y;
    const int from = std::max(uppermost, tile_.top);
    const int to = std::min(y + rows + shape_.reach_y, tile_.bottom);
    for (; begun_ < to; ++begun_) std::fill_n(Result(begun_), strip_, kNothing);
    const std::vector<Sources> last = rows < kRowsAtOnce ? MakeSources(rows) : std::vector<Sources>();
    const Sources* const sources = rows < kRowsAtOnce ? last.data() : sources_.data();
    for (int result = from; result < to; ++result) {
      loops_.take_in(sources[result - uppermost].data(), strip_, Result(result));
    }
  }

  void Finish(int y) {
    loops_.from_keys(Result(y), strip_, step_.extreme == Extreme::kSmallest, samples_.Get());
    float* to = plane_.Row(y) + tile_.left * plane_.pixel_stride;
    CopyStrided(samples_.Get(), 1, to, plane_.pixel_stride, tile_.right - tile_.left);
  }

  const KeyPlane& keys_;
  const RegionPlane& plane_;
  const RegionStep& step_;
  const Shape& shape_;
  const RegionKeyLoops& loops_;
  std::size_t strip_;
  /// Rows of results that are being made at a time; row y of the plane is row y modulo this.
  int ring_;
  Tile tile_;
  int begun_ = 0;
  Scratch<RegionKey> runs_;
  Scratch<RegionKey> chords_;
  Scratch<RegionKey> results_;
  Scratch<float> samples_;
  std::vector<Sources> sources_;
};

}  // namespace

void ReplaceGray(const RegionPlane& plane, const RegionStep& step) {
  const RegionKeyLoops loops;
  const Shape shape(step.chords);
  const KeyPlane keys(plane, step.extreme == Extreme::kSmallest, loops);
  const Tiling tiling(plane, shape);
  ParallelRows(tiling.GetCount(), 1, [&](std::size_t from, std::size_t to) {
    TileWorker worker(keys, plane, step, shape, tiling.GetStripWidth(), loops);
    for (std::size_t i = from; i < to; ++i) worker.Make(tiling.Get(i));
  });
}

}  // namespace ScEng
