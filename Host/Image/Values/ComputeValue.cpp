// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/ComputeValue.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <utility>

#include "Host/Image/Oversize.h"
#include "Host/Image/PendingImage.h"
#include "Host/Image/Placement.h"
#include "Host/Image/Streaming.h"
#include "Host/Image/Values/PendingSamples.h"
#include "Host/Image/Values/ValueOperationLoops.h"
#include "Host/Util/ParallelReduce.h"

namespace {

using ScEng::Box2I;
using ScEng::PendingSamples;
using ScEng::RowPass;
using ScEng::RowRanges;
using ScEng::SampleRange;
using ScEng::ValueOperationLoops;

// A block of every image taking part stays in the first cache level while it is fetched, computed, measured and
// written.
constexpr std::size_t kBlockSamples = 2048;
using Block = std::array<float, kBlockSamples>;
// What goes from image to image in registers is only looked at again where not all of it is finite.
constexpr std::size_t kDirectBlockSamples = 8192;

// The definition: one virtual call per sample. Every other loop must give the same bits.
void ComputeOne(const ValueOperation& operation, const float* values, float* to, std::size_t count) {
  auto& callable = const_cast<ValueOperation&>(operation);
  for (std::size_t i = 0; i < count; ++i) to[i] = callable.Compute(values[i]);
}

void ComputeTwo(const ValueOperation& operation, const float* first, const float* second, float* to,
                std::size_t count) {
  auto& callable = const_cast<ValueOperation&>(operation);
  for (std::size_t i = 0; i < count; ++i) to[i] = callable.Compute(first[i], second[i]);
}

ValueOperationLoops GetLoops(const ValueOperation& operation) {
  return ScEng::FindValueOperationLoops(typeid(operation)).value_or(ValueOperationLoops{ComputeOne, ComputeTwo, true});
}

void StoreRange(const SampleRange& range, ValueOperation& operation) {
  operation.min = range.IsEmpty() ? 0.0F : range.low;
  operation.max = range.IsEmpty() ? 1.0F : range.high;
}

/// Where the result lies and what it is.
struct Layout {
  Box2I box;
  bool all_boxes_equal = true;
  unsigned color_mode = ColorMode::kValue;
};

Layout MakeLayout(const std::vector<const Image*>& images) {
  Layout layout;
  layout.box = images.front()->GetBox();
  layout.color_mode = images.front()->GetColorMode();
  for (const Image* image : images) {
    const Box2I box = image->GetBox();
    if (box != layout.box) layout.all_boxes_equal = false;
    layout.box = ScEng::Union(layout.box, box);
  }
  const bool one_mode = std::all_of(images.begin(), images.end(), [&](const Image* image) {
    return image->GetColorMode() == images.front()->GetColorMode();
  });
  if (!one_mode) layout.color_mode = ColorMode::kValue;
  return layout;
}

/// Whether every image is one dense run of the result's samples at the same places.
bool IsFlat(const std::vector<const Image*>& images, const Layout& layout) {
  return layout.all_boxes_equal && std::all_of(images.begin(), images.end(), [&](const Image* image) {
           return image->GetColorMode() == layout.color_mode;
         });
}

ImageHeader MakeHeader(const Layout& layout, const Image& first) {
  ImageHeader header = ScEng::PlaceOver(layout.box, first, layout.color_mode);
  if (layout.all_boxes_equal) {
    header.pivot_x = first.GetPivotX();
    header.pivot_y = first.GetPivotY();
  }
  return header;
}

/// Hands out the samples of one image for any run of the result's pixels, in the result's colour mode.
class Source {
 public:
  Source(const Image& image, const Layout& layout)
      : image_(image),
        pending_(PendingSamples::Find(image)),
        samples_(pending_ != nullptr ? pending_->GetSource() : image.GetConstArray()),
        channels_(static_cast<std::size_t>(ColorMode::GetNumChannels(layout.color_mode))),
        mode_(layout.color_mode),
        left_(image.GetBox().left - layout.box.left),
        top_(image.GetBox().top - layout.box.top) {}

  /// `count` pixels of row `y` from column `x` on: a pointer into the image where it holds them all in the right mode,
  /// else `buffer`, filled.
  const float* Fetch(std::int64_t x, std::int64_t y, std::size_t count, float* buffer) const {
    const std::int64_t row = y - top_;
    const std::int64_t from = std::max<std::int64_t>(x - left_, 0);
    const std::int64_t to = std::min<std::int64_t>(x - left_ + static_cast<std::int64_t>(count), image_.GetSizeX());
    const bool row_inside = row >= 0 && row < image_.GetSizeY();
    const bool converted = mode_ != image_.GetColorMode();
    const bool all_inside = row_inside && to - from == static_cast<std::int64_t>(count);
    if (all_inside && !converted && pending_ == nullptr) return Pixel(from, row);
    if (!all_inside) std::fill_n(buffer, count * channels_, image_.GetOutsideValue());
    if (row_inside && from < to) {
      float* inside = buffer + static_cast<std::size_t>(from - (x - left_)) * channels_;
      Convert(Pixel(from, row), inside, static_cast<std::size_t>(to - from));
    }
    return buffer;
  }

  /// `count` samples from the `first` one on, where the image is one dense run of the result's samples.
  const float* FetchRun(std::size_t first, std::size_t count, float* buffer) const {
    if (pending_ == nullptr) return samples_ + first;
    pending_->Compute(samples_ + first, buffer, count);
    return buffer;
  }

  [[nodiscard]] bool IsPending() const { return pending_ != nullptr; }
  /// The samples that `FetchRun` reads.
  [[nodiscard]] const float* GetSamples() const { return samples_; }

 private:
  const float* Pixel(std::int64_t x, std::int64_t y) const {
    return samples_ + (y * image_.GetSizeX() + x) * image_.GetNumChannels();
  }

  void Convert(const float* from, float* to, std::size_t pixels) const {
    if (pending_ == nullptr) {
      ScEng::ConvertSamples(from, image_.GetColorMode(), to, mode_, pixels);
      return;
    }
    const auto channels = static_cast<std::size_t>(image_.GetNumChannels());
    const std::size_t most = kBlockSamples / channels;
    alignas(64) Block made;
    for (std::size_t i = 0; i < pixels; i += most) {
      const std::size_t count = std::min(most, pixels - i);
      pending_->Compute(from + i * channels, made.data(), count * channels);
      ScEng::ConvertSamples(made.data(), image_.GetColorMode(), to + i * channels_, mode_, count);
    }
  }

  const Image& image_;
  const PendingSamples* pending_;
  const float* samples_;
  std::size_t channels_;
  unsigned mode_;
  std::int64_t left_;
  std::int64_t top_;
};

/// Runs the operation over every block of the result.
class Pass {
 public:
  Pass(const std::vector<const Image*>& images, const Layout& layout, ValueOperation& operation,
       const ValueOperationLoops& loops, Image& output)
      : operation_(operation), loops_(loops), output_(output.GetArray()) {
    const auto channels = static_cast<std::size_t>(output.GetNumChannels());
    for (const Image* image : images) sources_.emplace_back(*image, layout);
    streamed_ = ScEng::IsStreamed(output.GetNumSamples());
    channels_ = channels;
    width_ = static_cast<std::size_t>(output.GetSizeX());
    rows_ = static_cast<std::size_t>(output.GetSizeY());
    if (IsFlat(images, layout)) {
      // No row ends to stop at.
      is_flat_ = true;
      width_ *= rows_;
      rows_ = width_ == 0 ? 0 : 1;
    }
    block_samples_ = NeedsNoBuffer() ? kDirectBlockSamples : kBlockSamples;
    block_pixels_ = block_samples_ / std::max<std::size_t>(channels_, 1);
    blocks_per_row_ = (width_ + block_pixels_ - 1) / block_pixels_;
    // Nobody asks for the range of a pending image that the formula does not read.
    measures_input_ = images.size() == 1 && !loops.reads_range && !images.front()->GetKnownSampleRange() &&
                      !ScEng::IsPending(*images.front());
  }

  RowRanges Run() {
    constexpr std::size_t kGrainSamples = std::size_t{1} << 16;
    return ScEng::ParallelReduce<RowRanges>(rows_ * blocks_per_row_, kGrainSamples / block_samples_,
                                            [&](std::size_t from, std::size_t to) { return RunBlocks(from, to); });
  }

 private:
  /// Whether the operation's pass goes from the images to the result, with nothing in between.
  [[nodiscard]] bool NeedsNoBuffer() const {
    if (!is_flat_ ||
        std::any_of(sources_.begin(), sources_.end(), [](const Source& source) { return source.IsPending(); }))
      return false;
    return (sources_.size() == 1 && loops_.pass_one != nullptr) || (sources_.size() == 2 && loops_.pass_two != nullptr);
  }

  RowRanges RunBlocks(std::size_t from, std::size_t to) const {
    alignas(64) Block fetched;
    alignas(64) Block even;
    alignas(64) Block odd;
    RowRanges ranges;
    for (std::size_t index = from; index < to; ++index) {
      const std::size_t y = index / blocks_per_row_;
      const std::size_t x = (index % blocks_per_row_) * block_pixels_;
      const std::size_t pixels = std::min(block_pixels_, width_ - x);
      const std::size_t count = pixels * channels_;
      float* target = output_ + (y * width_ + x) * channels_;

      const float* result = Fetch(0, x, y, pixels, odd.data());
      for (std::size_t i = 1; i + 1 < sources_.size(); ++i) {
        float* made = i % 2 == 1 ? even.data() : odd.data();
        loops_.two(operation_, result, Fetch(i, x, y, pixels, fetched.data()), made, count);
        result = made;
      }
      RowPass row{.first = result,
                  .second = result,
                  .to = target,
                  .count = count,
                  .streamed = streamed_,
                  .measures_input = measures_input_};
      if (sources_.size() > 1) row.second = Fetch(sources_.size() - 1, x, y, pixels, fetched.data());
      ranges.Include(RunRow(row, FindNext(index + 1, to), result == even.data() ? odd : even));
    }
    return ranges;
  }

  /// Makes the samples of a row, if need be in `block`, which holds none of those that it reads. `ahead` is what is
  /// read next, if that is known.
  RowRanges RunRow(const RowPass& row, const float* ahead, Block& block) const {
    const bool is_one = sources_.size() == 1;
    if (const auto pass = is_one ? loops_.pass_one : loops_.pass_two; pass != nullptr) return pass(operation_, row);
    RowRanges ranges;
    if (row.measures_input) ranges.input = ScEng::MeasureRange(row.first, row.count);
    // What is streamed is made in a block of its own first.
    float* const made = row.streamed ? block.data() : row.to;
    if (is_one) {
      loops_.one(operation_, row.first, made, row.count);
    } else {
      loops_.two(operation_, row.first, row.second, made, row.count);
    }
    ranges.output = row.streamed ? ScEng::StreamSamples(made, row.to, row.count, ahead)
                                 : ScEng::MeasureFiniteRange(made, row.count);
    return ranges;
  }

  /// The first image's samples of the next block, where it is a whole one in one piece.
  const float* FindNext(std::size_t next, std::size_t end) const {
    if (!is_flat_ || next >= end || next + 1 >= blocks_per_row_) return nullptr;
    return sources_.front().GetSamples() + next * block_pixels_ * channels_;
  }

  const float* Fetch(std::size_t source, std::size_t x, std::size_t y, std::size_t pixels, float* buffer) const {
    if (is_flat_) return sources_[source].FetchRun(x * channels_, pixels * channels_, buffer);
    return sources_[source].Fetch(static_cast<std::int64_t>(x), static_cast<std::int64_t>(y), pixels, buffer);
  }

  ValueOperation& operation_;
  const ValueOperationLoops& loops_;
  float* output_;
  std::vector<Source> sources_;
  bool is_flat_ = false;
  std::size_t channels_ = 1;
  std::size_t width_ = 0;
  std::size_t rows_ = 0;
  std::size_t block_samples_ = kBlockSamples;
  std::size_t block_pixels_ = 0;
  std::size_t blocks_per_row_ = 0;
  bool streamed_ = false;
  bool measures_input_ = false;
};

float FoldOutsideValues(const std::vector<const Image*>& images, ValueOperation& operation) {
  float folded = images.front()->GetOutsideValue();
  for (std::size_t i = 1; i < images.size(); ++i) folded = operation.Compute(folded, images[i]->GetOutsideValue());
  return folded;
}

}  // namespace

Image* ComputeValue(const Image* image, ValueOperation* operation) {
  return ComputeValue(std::vector<const Image*>{image}, operation);
}

Image* ComputeValue(std::vector<const Image*> images, ValueOperation* operation) {
  const bool any_null = std::find(images.begin(), images.end(), nullptr) != images.end();
  if (images.empty() || any_null || operation == nullptr) return nullptr;

  const Layout layout = MakeLayout(images);
  ImageHeader header = MakeHeader(layout, *images.front());
  const ValueOperationLoops loops = GetLoops(*operation);
  const bool single = images.size() == 1;
  ImagePtr settled;
  if (single && loops.reads_range) {
    if (ScEng::IsPending(*images.front())) {
      settled = ScEng::NullIfOversize([&] { return ScEng::Settle(*images.front()); });
      if (!settled) return nullptr;
      images.front() = settled.Get();
    }
    StoreRange(images.front()->GetSampleRange(), *operation);
  }
  if (ScEng::PendingScope::IsOn() && IsFlat(images, layout)) {
    if (!single) header.outside_value = FoldOutsideValues(images, *operation);
    std::unique_ptr<Image> pending =
        ScEng::NullIfOversize([&] { return PendingSamples::MakeImage(header, images, *operation, loops); });
    if (pending) return pending.release();
  }
  std::unique_ptr<Image> output(ScEng::NullIfOversize([&] { return new Image(header, nullptr); }));
  if (!output) return nullptr;

  // What is called meanwhile may compute images of its own.
  const ScEng::PendingScope off(false);
  const RowRanges ranges = Pass(images, layout, *operation, loops, *output).Run();
  if (!single) output->SetOutsideValue(FoldOutsideValues(images, *operation));
  if (single && !loops.reads_range && !ScEng::IsPending(*images.front())) {
    const auto known = images.front()->GetKnownSampleRange();
    if (!known) images.front()->RememberSampleRange(ranges.input);
    StoreRange(known.value_or(ranges.input), *operation);
  }

  output->SetValueLowHigh(ranges.output.IsEmpty() ? 0.0F : ranges.output.low,
                          ranges.output.IsEmpty() ? 0.0F : ranges.output.high);
  return output.release();
}
