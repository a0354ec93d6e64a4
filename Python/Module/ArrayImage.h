// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

#include <optional>
#include <string>

#include "Python/Module/SharedImage.h"

namespace ValuePython {

/// Numpy, which only arrays need. Throws ModuleNotFoundError that says so where it is not installed.
pybind11::module_ ImportNumpy();

/// Whether an object may stand for an image: an array of numpy, or what says that it can be read as one. Lists do not,
/// since a list of images is easily given by mistake.
bool IsArrayLike(pybind11::handle object);

/// An image of an array of shape (rows, columns) or (rows, columns, channels), or of what numpy makes one of. A dense
/// array of native float32 lends its samples, any other is converted once. Without a mode it is that of the channels.
///
/// Throws TypeError for what is no array of numbers, ValueError for a shape that no image has, and OverflowError where
/// a finite number is beyond the largest float. Messages begin with `lead`, "add: image 2: " for example.
SharedImage MakeImage(pybind11::handle object, std::optional<unsigned> mode, const std::string& lead);

}  // namespace ValuePython
