// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

namespace ValuePython {

// Each adds its part of the module.

void BindImage(pybind11::module_& module);
void BindNodes(pybind11::module_& module);
void BindGraphs(pybind11::module_& module);
void BindPythonNodes(pybind11::module_& module);
void BindFiles(pybind11::module_& module);
void BindPictures(pybind11::module_& module);
void BindSettings(pybind11::module_& module);

}  // namespace ValuePython
