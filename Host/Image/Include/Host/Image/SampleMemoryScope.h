// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Image/Api.h"

namespace ScEng {

/// While one lasts, the memory of images that go is kept for the next ones of the same size, however large they are:
/// for work that makes one image after the other, as the evaluation of a graph does. The memory of samples together,
/// in use and kept, grows no larger than what is in use at most, but for the little that is kept at any time. With the
/// last scope of the process all of it but that goes back to the system.
class HOST_IMAGE_API SampleMemoryScope {
 public:
  SampleMemoryScope();
  ~SampleMemoryScope();
  SampleMemoryScope(const SampleMemoryScope&) = delete;
  SampleMemoryScope& operator=(const SampleMemoryScope&) = delete;
};

}  // namespace ScEng
