// SPDX-License-Identifier: Apache-2.0
//
// _valuenodes: what the Python package valuenodes does in the host.

#include "Python/Module/Bindings.h"
#include "Python/Module/LogBridge.h"

PYBIND11_MODULE(_valuenodes, module) {
  module.doc() = "The host of Value, for the package valuenodes.";
  ValuePython::BridgeLog();
  ValuePython::BindImage(module);
  ValuePython::BindNodes(module);
  ValuePython::BindGraphs(module);
  ValuePython::BindPythonNodes(module);
  ValuePython::BindFiles(module);
  ValuePython::BindPictures(module);
  ValuePython::BindSettings(module);
}
