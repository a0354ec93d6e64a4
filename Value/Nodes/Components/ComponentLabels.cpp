// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Components/ComponentLabels.h"

#include "Host/Util/EvaluationScope.h"

// Highway compiles the part between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE once per instruction set and calls
// the best one that the processor has.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Value/Nodes/Components/ComponentLabels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "Value/Nodes/Components/CloseSamples-inl.h"
#include "Value/Nodes/Components/RunForest.h"

#ifndef VALUE_NODES_COMPONENT_LABELS_ONCE
#define VALUE_NODES_COMPONENT_LABELS_ONCE
namespace ComponentLabels {
namespace {

using CloseSamples::kWordBits;

/// The memory of one labelling beside the labels. Rows of bits have one bit per pixel, the first in the lowest place.
struct Workspace {
  std::size_t words_per_row = 0;
  /// For every row of the image: set where a pixel begins a run, clear where it belongs to the run of the one before.
  std::uint64_t* starts = nullptr;
  /// Two rows: the number of runs before each word.
  std::uint32_t* runs_before = nullptr;
  /// Three rows of pairs of close pixels, with one bit per sample while the channels are not yet put together.
  std::uint64_t* pairs = nullptr;
};

}  // namespace
}  // namespace ComponentLabels
#endif

HWY_BEFORE_NAMESPACE();
namespace ComponentLabels::HWY_NAMESPACE {
namespace {

using CloseSamples::HWY_NAMESPACE::FindClosePixels;
using CloseSamples::HWY_NAMESPACE::ShiftUp;

class Labeler {
 public:
  Labeler(const PixelView& image, const NeighborRule& rule, const Workspace& workspace, float* labels)
      : image_(image), rule_(rule), workspace_(workspace), labels_(labels), forest_(labels) {}

  float Run() {
    FindRuns();
    const float count = NumberComponents();
    SpreadLabels();
    return count;
  }

 private:
  struct Row {
    const float* samples;
    const std::uint64_t* starts;
    const std::uint32_t* runs_before;
    std::uint32_t first_run;
    std::uint32_t last_run;
  };

  // ---- First pass: runs, and which of them touch ----

  void FindRuns() {
    Row above{};
    ScEng::ProgressPass pass(image_.height);
    for (std::size_t y = 0; y < image_.height; ++y) {
      pass.Step();
      FindStarts(y);
      const Row row = CountRuns(y, num_runs_, y % 2);
      for (; num_runs_ <= row.last_run; ++num_runs_) forest_.Add(num_runs_);
      if (rule_.seamless && IsClose(row.samples, LastPixel(row))) forest_.Unite(row.first_run, row.last_run);
      if (y > 0) UniteRows(row, above);
      above = row;
    }
    if (rule_.seamless && image_.height > 1) UniteRows(CountRuns(0, 0, image_.height % 2), above);
  }

  void FindStarts(std::size_t y) {
    const std::size_t words = workspace_.words_per_row;
    std::uint64_t* HWY_RESTRICT joins = workspace_.pairs;
    std::uint64_t* HWY_RESTRICT starts = workspace_.starts + y * words;
    const float* samples = GetSamples(y);
    FindClose(samples + image_.channels, samples, image_.width - 1, joins);
    std::uint64_t joins_before = 0;
    for (std::size_t word = 0; word < words; ++word) {
      starts[word] = ~ShiftUp(joins[word], joins_before);
      joins_before = joins[word];
    }
    const std::size_t used = image_.width % kWordBits;
    if (used != 0) starts[words - 1] &= (std::uint64_t{1} << used) - 1;
  }

  /// Numbers the runs of a row from `first_run` on, in one of the two rows that there are for that.
  Row CountRuns(std::size_t y, std::uint32_t first_run, std::size_t buffer) {
    const std::size_t words = workspace_.words_per_row;
    const std::uint64_t* starts = workspace_.starts + y * words;
    std::uint32_t* runs_before = workspace_.runs_before + buffer * words;
    std::uint32_t runs = first_run;
    for (std::size_t word = 0; word < words; ++word) {
      runs_before[word] = runs;
      runs += static_cast<std::uint32_t>(std::popcount(starts[word]));
    }
    return {GetSamples(y), starts, runs_before, first_run, runs - 1};
  }

  /// Unites the runs of two rows that touch. Bit x of a word stands for these pairs:
  ///
  ///   vertical   pixel x with pixel x of the row above
  ///   falling    pixel x with pixel x - 1 of the row above
  ///   rising     pixel x - 1 with pixel x of the row above
  ///
  /// A pair is left out where its ends are joined over the other two of the four pixels at x - 1 and x.
  void UniteRows(const Row& row, const Row& above) {
    const std::size_t words = workspace_.words_per_row;
    const std::size_t channels = image_.channels;
    const bool is_cross = rule_.neighbors == Neighbors::kCross;
    std::uint64_t* vertical = workspace_.pairs;
    std::uint64_t* falling = vertical + words * channels;
    std::uint64_t* rising = falling + words * channels;
    FindClose(row.samples, above.samples, image_.width, vertical);
    if (!is_cross) {
      FindClose(row.samples + channels, above.samples, image_.width - 1, falling);
      FindClose(row.samples, above.samples + channels, image_.width - 1, rising);
    }
    std::uint64_t vertical_before = 0;
    std::uint64_t falling_before = 0;
    std::uint64_t rising_before = 0;
    for (std::size_t word = 0; word < words; ++word) {
      const std::uint64_t here = vertical[word];
      const std::uint64_t left = ShiftUp(here, vertical_before);
      const std::uint64_t joins = ~row.starts[word];
      const std::uint64_t joins_above = ~above.starts[word];
      for (std::uint64_t bits = here & ~(left & joins & joins_above); bits != 0; bits &= bits - 1) {
        const int bit = std::countr_zero(bits);
        forest_.Unite(RunAt(row, word, bit), RunAt(above, word, bit));
      }
      vertical_before = here;
      if (is_cross) continue;
      const std::uint64_t falls = ShiftUp(falling[word], falling_before);
      for (std::uint64_t bits = falls & ~((here & joins_above) | (left & joins)); bits != 0; bits &= bits - 1) {
        const int bit = std::countr_zero(bits);
        forest_.Unite(RunAt(row, word, bit), RunBefore(above, word, bit));
      }
      const std::uint64_t rises = ShiftUp(rising[word], rising_before);
      for (std::uint64_t bits = rises & ~((left & joins_above) | (here & joins)); bits != 0; bits &= bits - 1) {
        const int bit = std::countr_zero(bits);
        forest_.Unite(RunBefore(row, word, bit), RunAt(above, word, bit));
      }
      falling_before = falling[word];
      rising_before = rising[word];
    }
    if (is_cross || !rule_.seamless) return;
    if (IsClose(row.samples, LastPixel(above))) forest_.Unite(row.first_run, above.last_run);
    if (IsClose(LastPixel(row), above.samples)) forest_.Unite(row.last_run, above.first_run);
  }

  /// The run of a pixel, and that of the pixel on its left.
  static std::uint32_t RunAt(const Row& row, std::size_t word, int bit) {
    const std::uint64_t up_to_bit = ~std::uint64_t{0} >> (63 - bit);
    return row.runs_before[word] + static_cast<std::uint32_t>(std::popcount(row.starts[word] & up_to_bit)) - 1;
  }
  static std::uint32_t RunBefore(const Row& row, std::size_t word, int bit) {
    return RunAt(row, word, bit) - static_cast<std::uint32_t>((row.starts[word] >> bit) & 1U);
  }

  // ---- Pixels ----

  [[nodiscard]] const float* GetSamples(std::size_t y) const {
    return image_.samples + y * image_.width * image_.channels;
  }
  [[nodiscard]] const float* LastPixel(const Row& row) const {
    return row.samples + (image_.width - 1) * image_.channels;
  }

  /// One bit for each of `count` pixels, set where they are close; the bits behind them are clear.
  void FindClose(const float* a, const float* b, std::size_t count, std::uint64_t* words) const {
    FindClosePixels(a, b, count, image_.channels, rule_.tolerance, words, workspace_.words_per_row);
  }

  [[nodiscard]] bool IsClose(const float* a, const float* b) const {
    for (std::size_t channel = 0; channel < image_.channels; ++channel) {
      if (!(rule_.tolerance > std::abs(a[channel] - b[channel]))) return false;
    }
    return true;
  }

  // ---- Second pass: labels ----

  /// Turns the entry of each run into the label of its component. A parent comes before its children, so it has its
  /// label already.
  float NumberComponents() {
    // Counting in single precision stays where adding one no longer changes the number.
    constexpr std::uint32_t kMostCounted = std::uint32_t{1} << std::numeric_limits<float>::digits;
    std::uint32_t count = 0;
    for (std::uint32_t run = 0; run < num_runs_; ++run) {
      const std::uint32_t parent = forest_.GetParent(run);
      if (parent == run) {
        labels_[run] = static_cast<float>(count);
        if (count < kMostCounted) ++count;
      } else {
        labels_[run] = labels_[parent];
      }
    }
    return static_cast<float>(count);
  }

  /// Gives each pixel the label of its run. From the end, since the labels of the runs lie at the front: run i begins
  /// at pixel i at the earliest, so what is overwritten is not needed any more.
  void SpreadLabels() {
    std::uint32_t run = num_runs_ - 1;
    ScEng::ProgressPass pass(image_.height);
    for (std::size_t y = image_.height; y-- > 0;) {
      pass.Step();
      for (std::size_t word = workspace_.words_per_row; word-- > 0;) {
        const std::size_t first = word * kWordBits;
        const std::size_t count = image_.width - first < kWordBits ? image_.width - first : kWordBits;
        SpreadWord(workspace_.starts[y * workspace_.words_per_row + word], count, labels_ + y * image_.width + first,
                   run);
      }
    }
  }

  void SpreadWord(std::uint64_t starts, std::size_t count, float* pixels, std::uint32_t& run) const {
    constexpr std::size_t kPiece = 8;
    std::size_t end = count;
    for (; end % kPiece != 0; --end) {
      pixels[end - 1] = labels_[run];
      run -= static_cast<std::uint32_t>((starts >> (end - 1)) & 1U);
    }
    for (; end > 0; end -= kPiece) {
      const auto piece_starts = static_cast<std::uint32_t>((starts >> (end - kPiece)) & 0xFFU);
      float* piece = pixels + end - kPiece;
      if (piece_starts == 0) {
        const float label = labels_[run];
        for (std::size_t i = 0; i < kPiece; ++i) piece[i] = label;
        continue;
      }
      for (std::size_t i = kPiece; i-- > 0;) {
        piece[i] = labels_[run];
        run -= (piece_starts >> i) & 1U;
      }
    }
  }

  const PixelView image_;
  const NeighborRule rule_;
  const Workspace workspace_;
  float* const labels_;
  /// Lies where the labels will be: there are no more runs than pixels.
  RunForest forest_;
  std::uint32_t num_runs_ = 0;
};

float LabelImage(const PixelView& image, const NeighborRule& rule, const Workspace& workspace, float* labels) {
  return Labeler(image, rule, workspace, labels).Run();
}

}  // namespace
}  // namespace ComponentLabels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ComponentLabels {

HWY_EXPORT(LabelImage);

float Label(const PixelView& image, const NeighborRule& rule, float* labels) {
  if (image.width == 0 || image.height == 0) return 0.0F;
  constexpr auto kMostPixels = static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max());
  if (image.width > kMostPixels / image.height) {
    throw std::length_error("Connected Components: " + std::to_string(image.width) + " x " +
                            std::to_string(image.height) + " pixels are more than " + std::to_string(kMostPixels) +
                            ".");
  }
  Workspace workspace;
  workspace.words_per_row = (image.width + kWordBits - 1) / kWordBits;
  std::vector<std::uint64_t> starts(workspace.words_per_row * image.height);
  std::vector<std::uint32_t> runs_before(workspace.words_per_row * 2);
  std::vector<std::uint64_t> pairs(workspace.words_per_row * image.channels * 3);
  workspace.starts = starts.data();
  workspace.runs_before = runs_before.data();
  workspace.pairs = pairs.data();
  return HWY_DYNAMIC_DISPATCH(LabelImage)(image, rule, workspace, labels);
}

}  // namespace ComponentLabels
#endif
