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

/// The samples of an image as owners on any thread may keep them, without a copy: from now on the image borrows its own
/// samples. They stay where they are and are only read. Not while another thread uses the image.
Samples Share(Image& image);

}  // namespace ValuePython
