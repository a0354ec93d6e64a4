// SPDX-License-Identifier: Apache-2.0
#include "Host/Viewing/ReduceImage.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "Host/Image/ImageMetadata.h"
#include "Host/Util/Cancellation.h"
#include "Host/Util/ParallelRows.h"
#include "Host/Viewing/Reduction.h"

namespace ScEng {
namespace {

int ReducePlace(std::int64_t place, int halvings) {
  return static_cast<int>(std::lround(std::ldexp(static_cast<double>(place), -halvings)));
}

/// Makes rows that are halved so many times, each from the rows of the image that it stands for.
class RowReducer {
 public:
  RowReducer(const Image& image, int halvings) : image_(image), rows_(static_cast<std::size_t>(halvings)) {
    const auto channels = static_cast<std::size_t>(image.GetNumChannels());
    for (int halving = 1; halving <= halvings; ++halving) {
      const auto pixels = static_cast<std::size_t>(HalveOften(image.GetSizeX(), halving));
      for (std::vector<float>& row : rows_[static_cast<std::size_t>(halving - 1)].pair) row.resize(pixels * channels);
    }
  }

  /// Row `row` of the image halved `halving` times, where `to` is the one of two buffers that holds it.
  const float* Make(int halving, int row, std::size_t to) {
    if (halving == 0) return image_.GetConstArray() + static_cast<std::size_t>(row) * CountRowSamples();
    const int last = HalveOften(image_.GetSizeY(), halving - 1) - 1;
    const float* const top = Make(halving - 1, 2 * row, 0);
    const float* const bottom = 2 * row < last ? Make(halving - 1, 2 * row + 1, 1) : top;
    float* const made = rows_[static_cast<std::size_t>(halving - 1)].pair[to].data();
    ReduceRows(top, bottom, HalveOften(image_.GetSizeX(), halving - 1), image_.GetNumChannels(), made);
    return made;
  }

 private:
  struct Rows {
    std::vector<float> pair[2];
  };

  [[nodiscard]] std::size_t CountRowSamples() const {
    return static_cast<std::size_t>(image_.GetSizeX()) * static_cast<std::size_t>(image_.GetNumChannels());
  }

  const Image& image_;
  std::vector<Rows> rows_;
};

}  // namespace

int ReduceSize(int size, int halvings) { return HalveOften(size, halvings); }

ImageHeader ReduceHeader(const ImageHeader& header, int halvings) {
  if (halvings == 0) return header;
  const Box2I box = header.GetBox();
  ImageHeader reduced = header;
  reduced.size_x = HalveOften(header.size_x, halvings);
  reduced.size_y = HalveOften(header.size_y, halvings);
  reduced.pin_x = ReducePlace(box.left, halvings);
  reduced.pin_y = ReducePlace(box.top, halvings);
  reduced.pivot_x = 0.0F;
  reduced.pivot_y = 0.0F;
  return reduced;
}

ImagePtr ReduceImage(const Image& image, int halvings) {
  auto reduced = MakeRef<Image>(ReduceHeader(image.GetImageHeader(), halvings), nullptr);
  reduced->SetMetadata(image.GetMetadata());
  const std::size_t length =
      static_cast<std::size_t>(reduced->GetSizeX()) * static_cast<std::size_t>(reduced->GetNumChannels());
  float* const samples = reduced->GetArray();
  constexpr std::size_t kGrain = 4;
  ParallelRows(static_cast<std::size_t>(reduced->GetSizeY()), kGrain, [&](std::size_t from, std::size_t to) {
    RowReducer reducer(image, halvings);
    for (std::size_t row = from; row < to; ++row) {
      PollCancellation();
      std::copy_n(reducer.Make(halvings, static_cast<int>(row), 0), length, samples + row * length);
    }
  });
  return reduced;
}

}  // namespace ScEng
