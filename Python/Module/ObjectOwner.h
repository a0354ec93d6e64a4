// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

#include <memory>

namespace ValuePython {

/// Keeps an object of Python. The last one that lets go may be any thread, with the interpreter's lock or without: the
/// object then goes at the next chance, and at the end of the interpreter it stays.
std::shared_ptr<const void> KeepObject(pybind11::object object);

}  // namespace ValuePython
