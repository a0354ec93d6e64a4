// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <type_traits>
#include <vector>

#include "Host/Gpu/Api.h"
#include "Host/Gpu/GpuEngine.h"
#include "Host/Gpu/OpenClApi.h"
#include "Host/Util/Status.h"

namespace Gpu {

/// A device of the system: what a person wants to know of it, and what a computation needs.
struct DeviceRecord {
  GpuDevice info;
  cl_device_id id = nullptr;
  bool is_processor = false;
  bool has_double = false;
  /// Floats in a vector of the device's own; 1 where work-items are computed side by side.
  unsigned lanes = 1;
  std::size_t largest_buffer = 0;
};

/// What to do where no driver offers a device.
inline constexpr const char* kInstallDriver =
    "install a driver of OpenCL (the package pocl-opencl-icd runs on every processor)";

/// The names of all platforms, one for each driver.
HOST_GPU_API std::vector<std::string> ListPlatforms(const OpenClApi& api);

/// Every device of every platform, in the order in which OpenCL names them.
HOST_GPU_API std::vector<DeviceRecord> ListDevices(const OpenClApi& api);

/// The place of the device that `word` means (see `GpuEngine::SelectDevice`), or that is taken unasked when it is
/// empty. -1 and an error that names the devices there are, or says what to install, when there is none. `origin` says
/// in messages where the word comes from.
HOST_GPU_API int ChooseDevice(const std::vector<DeviceRecord>& devices, const std::string& word,
                              const std::string& origin, ScEng::Status& status);

/// An object of OpenCL that is given back at the end of its scope.
template <class Handle>
struct Releaser {
  cl_int (*release)(Handle) = nullptr;
  void operator()(Handle handle) const { release(handle); }
};
template <class Handle>
using Owned = std::unique_ptr<std::remove_pointer_t<Handle>, Releaser<Handle>>;

/// A device made ready, with the programs that were built for it. May be used from several threads.
class HOST_GPU_API Device {
 public:
  /// Null and an error in `status` when it cannot be made ready.
  static std::shared_ptr<Device> Open(const OpenClApi& api, const DeviceRecord& record, ScEng::Status& status);
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  [[nodiscard]] const OpenClApi& GetApi() const { return api_; }
  [[nodiscard]] const DeviceRecord& GetRecord() const { return record_; }
  [[nodiscard]] cl_context GetContext() const { return context_.get(); }

  /// The engine's program, built with these definitions at the first request; null and an error when it cannot be.
  cl_program GetProgram(const std::string& definitions, ScEng::Status& status);

  /// The error of a call that failed on this device: what was tried, what it means, what can be done.
  [[nodiscard]] ScEng::Status MakeError(const std::string& tried, cl_int error) const;

 private:
  Device(const OpenClApi& api, const DeviceRecord& record) : api_(api), record_(record) {}

  const OpenClApi& api_;
  DeviceRecord record_;
  Owned<cl_context> context_;
  std::mutex mutex_;
  std::map<std::string, Owned<cl_program>> programs_;
};

}  // namespace Gpu
