// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Image/SampleRange.h"
#include "Host/Viewing/Api.h"

namespace ScEng {

/// How many of the values of an image lie in each of so many ranges of one width, from the lowest to the highest finite
/// value. Values are those of `ValueOfPixel`. All bars are 0 where no value is finite.
struct ViewHistogram {
  static constexpr std::size_t kBars = 256;
  SampleRange range;
  std::vector<std::uint64_t> bars = std::vector<std::uint64_t>(kBars);
};

/// Figures of the values of an image, or of a part of it.
struct ViewFigures {
  /// Of the finite values; empty without one.
  SampleRange finite;
  /// Of the finite values; 0 without one.
  double mean = 0.0;
  /// All of them, one for each pixel.
  std::uint64_t values = 0;
  std::uint64_t nan = 0;
  std::uint64_t infinite = 0;
};

/// A copy of an image that is made to be looked at: with smaller copies for views from afar, figures and a histogram.
///
/// It does not change once it is made, and nothing that counts references is handed out: any threads may read it, and
/// any of them may be the last that lets go of it.
class HOST_VIEWING_API ViewImage {
 public:
  /// Copies an image. Uses the threads of the host, and asks whether to stop (`PollCancellation`).
  static std::shared_ptr<const ViewImage> Make(const Image& image);
  /// A preview of an image: copies what was computed from images that were reduced `halvings` times by two, and has the
  /// size and place of `header`, as the image itself will. Places are those of the image; each sample that is there
  /// stands for 2^halvings by 2^halvings of its pixels, and figures are those of these samples. Throws
  /// `std::invalid_argument` where the sizes do not belong together.
  static std::shared_ptr<const ViewImage> MakePreview(const Image& reduced, int halvings, const ImageHeader& header);
  /// A small copy that fits into `size` by `size` pixels, for thumbnails: never larger than the image, with its mode
  /// and declared range and without its metadata. Each channel of a pixel is the mean of the finite ones of at most 4
  /// by 4 samples below it, so that the time does not depend on the size of the image.
  static std::shared_ptr<const ViewImage> MakeSmall(const Image& image, int size);

  ~ViewImage();
  ViewImage(const ViewImage&) = delete;
  ViewImage& operator=(const ViewImage&) = delete;

  /// The samples that are there: the copy, or the reduced image of a preview. Nobody takes or releases a reference to
  /// it.
  [[nodiscard]] const Image& GetImage() const;
  /// Size and place of the image, in the pixels that views, probes and documents count in.
  [[nodiscard]] const ImageHeader& GetHeader() const;

  /// The first level that there are samples of: 0, but for previews.
  [[nodiscard]] int GetFirstLevel() const;
  [[nodiscard]] bool IsPreview() const { return GetFirstLevel() > 0; }
  /// How many pixels of the image one sample stands for, along each side: 1, but for previews.
  [[nodiscard]] int GetReduction() const { return 1 << GetFirstLevel(); }

  /// A copy of the image in which one pixel stands for 2^level by 2^level: level 0 is the image itself. Of a preview,
  /// levels before the first are the first one.
  struct Level {
    const float* samples = nullptr;
    int size_x = 0;
    int size_y = 0;
  };
  /// At least 1; the last level is the first that is at most 64 pixels wide and high. A pixel is, in each channel, the
  /// mean of the finite ones of four pixels of the level before, at the right and bottom edges of fewer; without a
  /// finite one it is one of them as it is.
  [[nodiscard]] int GetNumLevels() const;
  [[nodiscard]] Level GetLevel(int level) const;

  /// The lowest and highest finite sample of a channel; empty without one, and for a channel that does not exist.
  [[nodiscard]] SampleRange GetChannelRange(int channel) const;
  [[nodiscard]] const ViewFigures& GetFigures() const;
  [[nodiscard]] const ViewHistogram& GetHistogram() const;

 private:
  struct Implementation;
  explicit ViewImage(std::unique_ptr<const Implementation> implementation);
  std::unique_ptr<const Implementation> implementation_;
};

/// A rectangle of pixels of an image, from its top left corner, which is (0, 0).
struct PixelBox {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;

  friend bool operator==(const PixelBox&, const PixelBox&) = default;
};

/// The figures of the values in a part of an image; what lies outside of it does not count. Of a preview, those of the
/// samples that the part touches.
HOST_VIEWING_API ViewFigures MeasureBox(const ViewImage& image, const PixelBox& box);

}  // namespace ScEng
