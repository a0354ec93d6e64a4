// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <memory>

#include "Host/Image/Image.h"

namespace ValuePython {

/// Samples with what keeps them: an array of Python, or an image of the host. Counted atomically, so that any thread
/// may let go of them.
using Samples = std::shared_ptr<const float>;

/// The samples for an image of the host, which becomes one more of their owners and only reads them. The same samples
/// may be lent any number of times.
ScEng::SampleBuffer Lend(const Samples& samples, std::size_t bytes);

/// An owner of the samples that an image borrows; null for an image with samples of its own.
Samples FindOwner(const Image& image);

}  // namespace ValuePython
