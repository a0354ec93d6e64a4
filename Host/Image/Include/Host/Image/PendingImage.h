// SPDX-License-Identifier: Apache-2.0
//
// Images whose samples are not there yet: what lets operations that follow one another be computed in one pass.
#pragma once

#include <cstddef>

#include "Host/Image/Api.h"
#include "Host/Image/Image.h"

namespace ScEng {

/// While one lasts that is on, `ComputeValue` answers on this thread with a pending image where it can: one with all of
/// its header but the declared range, which holds the images that it is computed from and the operation in place of
/// samples. Of the operation it keeps a copy. It can for one image, and for several of one mode that lie at one place
/// and of which none but the first is pending.
///
/// A pending image may be given to `ComputeValue`, as often as one likes, to `Settle`, `MakeWhole` and `FetchSamples`.
/// Its samples and its declared range are not to be read: the former ends the program, the latter is NaN until somebody
/// declares one. So a scope is for whoever knows that the one who gets the image does nothing else with it. It lives on
/// the thread that made it.
class HOST_IMAGE_API PendingScope {
 public:
  explicit PendingScope(bool is_on);
  ~PendingScope();
  PendingScope(const PendingScope&) = delete;
  PendingScope& operator=(const PendingScope&) = delete;

  /// Whether the innermost scope on this thread is on.
  [[nodiscard]] static bool IsOn();

 private:
  bool outer_;
};

HOST_IMAGE_API bool IsPending(const Image& image);

/// Whether the samples of what is computed from the image go through `ComputeValue`: it is pending, or the result may
/// be.
inline bool IsJoined(const Image& image) { return PendingScope::IsOn() || IsPending(image); }

/// A new image with the header and the samples of a pending one; null for one that has its samples. Throws what the
/// constructors of `Image` throw.
HOST_IMAGE_API ImagePtr Settle(const Image& image);

/// The same with all that the image would have had it never been pending: the declared range that is measured, where
/// nobody has declared one, and the metadata. For whoever finds that a pending image is to be read by others.
HOST_IMAGE_API ImagePtr MakeWhole(const Image& image);

/// `count` samples of an image from the `first` one on: where they are, or in `buffer`, which they are computed into,
/// for a pending image. For a node that reads them a piece at a time.
HOST_IMAGE_API const float* FetchSamples(const Image& image, std::size_t first, std::size_t count, float* buffer);

}  // namespace ScEng
