// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

namespace ValuePython {

/// The samples of an image as a capsule of DLPack, which keeps them. Without `max_version`, or with one below 1.0, it
/// is of the old form, which cannot say that nobody may write into them.
///
/// BufferError for another device than the processor; `stream` is None or -1, as there is none.
pybind11::capsule MakeDlPack(const pybind11::object& image, const pybind11::object& stream,
                             const pybind11::object& max_version, const pybind11::object& device,
                             const pybind11::object& copy);

}  // namespace ValuePython
