// SPDX-License-Identifier: Apache-2.0
#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include <optional>
#include <string>
#include <vector>

#include "Host/Files/ImageFile.h"
#include "Python/Module/Bindings.h"
#include "Python/Module/Errors.h"
#include "Python/Module/Interruption.h"
#include "Python/Module/SharedImage.h"

namespace py = pybind11;

namespace ValuePython {
namespace {

void WriteFile(const SharedImage& image, const std::string& path, const std::string& layer,
               const ScEng::WriteOptions& options) {
  const ImagePtr lent = image.Lend();
  std::vector<std::string> notes;
  ScEng::Status status;
  Interruption interruption;
  interruption.Run([&] {
    status = ScEng::WriteImageLayers({{layer, lent.Get(), options}}, ScEng::MakePath(path), notes);
  });
  if (status.IsError()) ThrowFileError(status.GetMessage(), {path, true});
  Warn(notes);
}

}  // namespace

void BindFiles(py::module_& module) {
  module.def(
      "write",
      [](const SharedImage& image, const py::bytes& path, const std::string& type, const std::string& samples,
         const std::string& opacity, const std::string& metadata, const std::string& layer,
         const std::string& compression) {
        ScEng::WriteOptions options = ScEng::MakeWriteOptions(type, samples, opacity, metadata);
        options.compression = compression;
        WriteFile(image, path, layer, options);
      },
      py::arg("image"), py::arg("path"), py::arg("type"), py::arg("samples"), py::arg("opacity"), py::arg("metadata"),
      py::arg("layer"), py::arg("compression"));
}

}  // namespace ValuePython
