// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>

#include "Host/Image/Image.h"
#include "Host/Tools/Node.h"
#include "Host/Util/RefCounter.h"

/// The cached output images of a node, one per output plug, each empty until it is computed.
///
/// Destroying it releases the images last to first.
template <std::size_t kCount>
class OutputImages {
 public:
  /// The cached image of an output, without a further reference; null for an index that the node does not have.
  [[nodiscard]] Image* Get(std::size_t output = 0) const { return output < kCount ? images_[output].Get() : nullptr; }

  /// Caches an image (null for none) in place of the one before.
  void Set(std::size_t output, Image* image) { images_[output].Reset(image); }
  void Set(Image* image) { Set(0, image); }

  void Release(std::size_t output) { images_[output].Reset(); }
  void ReleaseAll() {
    for (auto& image : images_) image.Reset();
  }

  /// What a node does with an event of the host: cached images are dropped at the event for it; every event is
  /// understood.
  bool OnEvent(const NodeEvent& event) {
    if (event.kind == NodeEvent::kDropCachedResults) ReleaseAll();
    return true;
  }

 private:
  std::array<ImagePtr, kCount> images_;
};
