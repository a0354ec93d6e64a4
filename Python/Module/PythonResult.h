// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

#include <string>

#include "Host/Image/Image.h"

namespace ValuePython {

/// The image that a function of Python has returned for an output: an Image as it is, an array with the place of `like`
/// (null for none) where that has the same size. Values and pairs declare their lowest and highest finite sample;
/// colors and vectors the range of `like` where that is of their mode. Samples that somebody else could still change
/// are copied.
///
/// With the interpreter's lock. Throws TypeError, ValueError or OverflowError, with the output's name, for what is no
/// image.
ImagePtr TakeResult(pybind11::object returned, const std::string& output, const Image* like);

}  // namespace ValuePython
