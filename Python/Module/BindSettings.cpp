// SPDX-License-Identifier: Apache-2.0
#include <pybind11/stl.h>

#include <string>
#include <vector>

#include "Host/Files/ImageFile.h"
#include "Host/Gpu/GpuEngine.h"
#include "Host/Image/Image.h"
#include "Host/Tools/NodeLibrary.h"
#include "Host/Util/ParallelRows.h"
#include "Python/Module/Bindings.h"
#include "Python/Module/Catalog.h"
#include "Python/Module/Interruption.h"

namespace py = pybind11;

namespace ValuePython {
namespace {

constexpr int kMostThreads = 1024;

void SetThreads(int threads) {
  if (threads < 0 || threads > kMostThreads) {
    throw py::value_error("threads are 1 to " + std::to_string(kMostThreads) + ", or 0 for one per core, not " +
                          std::to_string(threads));
  }
  ScEng::SetNumThreads(static_cast<std::size_t>(threads));
}

void SetMaxSize(int columns, int rows) {
  if (columns < 1 || rows < 1) throw py::value_error("the largest size of images is at least 1 in each direction");
  Image::SetMaxSize(columns, rows);
}

py::list DescribeLibraries() {
  py::list libraries;
  for (const auto& library : Catalog::Get().GetTypes()->GetLibraries()) {
    py::dict facts;
    facts["name"] = library->GetName();
    facts["file"] = library->GetFile().string();
    facts["nodes"] = library->GetDescriptors().size();
    libraries.append(facts);
  }
  return libraries;
}

py::list DescribeCodecs() {
  std::vector<ScEng::CodecReport> codecs;
  Interruption().Run([&] { codecs = ScEng::FindCodecs(); });
  py::list list;
  for (const ScEng::CodecReport& codec : codecs) {
    py::dict facts;
    facts["name"] = codec.name;
    facts["file"] = codec.file.string();
    facts["formats"] = codec.formats;
    facts["problem"] = codec.problem.empty() ? codec.decoder_problem : codec.problem;
    list.append(facts);
  }
  return list;
}

py::list DescribeDevices() {
  ScEng::Status status;
  std::vector<GpuDevice> devices;
  Interruption().Run([&] { devices = GpuEngine::Get()->GetDevices(status); });
  py::list list;
  for (const GpuDevice& device : devices) {
    py::dict facts;
    facts["name"] = device.name;
    facts["type"] = device.type;
    facts["driver"] = device.driver;
    facts["problem"] = device.problem;
    facts["is_chosen"] = device.is_chosen;
    list.append(facts);
  }
  return list;
}

}  // namespace

void BindSettings(py::module_& module) {
  // Threads that compute while the process ends would use what is being taken down.
  py::module_::import("atexit").attr("register")(py::cpp_function(&Interruption::StopAll));
  module.attr("version") = VALUE_VERSION;
  module.def("set_threads", &SetThreads, py::arg("threads"));
  module.def("get_threads", &ScEng::GetNumThreads);
  module.def("set_max_size", &SetMaxSize, py::arg("columns"), py::arg("rows"));
  module.def("describe_libraries", &DescribeLibraries);
  module.def("describe_codecs", &DescribeCodecs);
  module.def("describe_devices", &DescribeDevices);
}

}  // namespace ValuePython
