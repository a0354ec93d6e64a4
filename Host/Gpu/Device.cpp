// SPDX-License-Identifier: Apache-2.0
#include "Host/Gpu/Device.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <string_view>
#include <system_error>

#include "Host/Gpu/Kernels.h"

namespace Gpu {
namespace {

using ScEng::Status;

std::string ToLower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return text;
}

/// Reads a text of OpenCL, whose size is asked for first.
template <class Get>
std::string ReadText(const Get& get) {
  std::size_t size = 0;
  if (get(0, nullptr, &size) != CL_SUCCESS || size == 0) return {};
  std::string text(size, '\0');
  if (get(size, text.data(), nullptr) != CL_SUCCESS) return {};
  text.resize(std::min(text.find('\0'), size));
  const std::size_t begin = text.find_first_not_of(" \n");
  if (begin == std::string::npos) return {};
  return text.substr(begin, text.find_last_not_of(" \n") + 1 - begin);
}

std::vector<cl_platform_id> GetPlatforms(const OpenClApi& api) {
  cl_uint count = 0;
  if (api.GetPlatformIDs(0, nullptr, &count) != CL_SUCCESS || count == 0) return {};
  std::vector<cl_platform_id> platforms(count);
  if (api.GetPlatformIDs(count, platforms.data(), nullptr) != CL_SUCCESS) return {};
  return platforms;
}

std::string GetPlatformName(const OpenClApi& api, cl_platform_id platform) {
  return ReadText([&](std::size_t size, void* to, std::size_t* needed) {
    return api.GetPlatformInfo(platform, CL_PLATFORM_NAME, size, to, needed);
  });
}

class DeviceReader {
 public:
  DeviceReader(const OpenClApi& api, cl_device_id id) : api_(api), id_(id) {}

  [[nodiscard]] std::string GetText(cl_device_info what) const {
    return ReadText([&](std::size_t size, void* to, std::size_t* needed) {
      return api_.GetDeviceInfo(id_, what, size, to, needed);
    });
  }
  template <class Number>
  [[nodiscard]] Number GetNumber(cl_device_info what) const {
    Number number{};
    return api_.GetDeviceInfo(id_, what, sizeof(number), &number, nullptr) == CL_SUCCESS ? number : Number{};
  }

 private:
  const OpenClApi& api_;
  cl_device_id id_;
};

/// The largest power of two up to 16 that is not above `lanes`.
unsigned RoundLanes(unsigned lanes) {
  unsigned rounded = 1;
  while (rounded < 16 && 2 * rounded <= lanes) rounded *= 2;
  return rounded;
}

bool OffersVersion12(const std::string& version) {
  constexpr std::string_view kBefore = "OpenCL ";
  if (!version.starts_with(kBefore)) return false;
  const char* const end = version.data() + version.size();
  int major = 0;
  int minor = 0;
  const auto [dot, error] = std::from_chars(version.data() + kBefore.size(), end, major);
  if (error != std::errc() || dot == end || *dot != '.') return false;
  if (std::from_chars(dot + 1, end, minor).ec != std::errc()) return false;
  return major > 1 || (major == 1 && minor >= 2);
}

DeviceRecord ReadDevice(const OpenClApi& api, const std::string& platform, cl_device_id id) {
  const DeviceReader reader(api, id);
  DeviceRecord record;
  record.id = id;
  record.info.platform = platform;
  record.info.name = reader.GetText(CL_DEVICE_NAME);
  record.info.driver = reader.GetText(CL_DRIVER_VERSION);
  record.info.version = reader.GetText(CL_DEVICE_VERSION);
  record.info.compute_units = reader.GetNumber<cl_uint>(CL_DEVICE_MAX_COMPUTE_UNITS);
  record.info.memory_bytes = reader.GetNumber<cl_ulong>(CL_DEVICE_GLOBAL_MEM_SIZE);
  const auto type = reader.GetNumber<cl_device_type>(CL_DEVICE_TYPE);
  record.is_processor = (type & CL_DEVICE_TYPE_CPU) != 0;
  record.info.type = (type & CL_DEVICE_TYPE_GPU) != 0 ? "gpu" : record.is_processor ? "cpu" : "accelerator";
  record.has_double = reader.GetNumber<cl_device_fp_config>(CL_DEVICE_DOUBLE_FP_CONFIG) != 0;
  record.largest_buffer = reader.GetNumber<cl_ulong>(CL_DEVICE_MAX_MEM_ALLOC_SIZE);
  if (record.is_processor) {
    record.lanes = RoundLanes(reader.GetNumber<cl_uint>(CL_DEVICE_NATIVE_VECTOR_WIDTH_FLOAT));
  }
  if (reader.GetNumber<cl_bool>(CL_DEVICE_AVAILABLE) == CL_FALSE) {
    record.info.problem = "the device is not available";
  } else if (reader.GetNumber<cl_bool>(CL_DEVICE_COMPILER_AVAILABLE) == CL_FALSE) {
    record.info.problem = "its driver has no compiler";
  } else if (!OffersVersion12(record.info.version)) {
    record.info.problem = "OpenCL 1.2 is needed, and it offers \"" + record.info.version + "\"";
  }
  return record;
}

bool IsMeant(const DeviceRecord& device, std::size_t index, const std::string& lower_word) {
  if (lower_word.find_first_not_of("0123456789") == std::string::npos) return lower_word == std::to_string(index);
  return lower_word == device.info.type || ToLower(device.info.name).find(lower_word) != std::string::npos;
}

std::string NameAll(const std::vector<DeviceRecord>& devices) {
  std::string names;
  for (std::size_t i = 0; i < devices.size(); ++i) {
    names +=
        (i == 0 ? "" : ", ") + std::to_string(i) + " \"" + devices[i].info.name + "\" (" + devices[i].info.type + ")";
  }
  return names;
}

}  // namespace

std::vector<std::string> ListPlatforms(const OpenClApi& api) {
  std::vector<std::string> names;
  for (cl_platform_id platform : GetPlatforms(api)) names.push_back(GetPlatformName(api, platform));
  return names;
}

std::vector<DeviceRecord> ListDevices(const OpenClApi& api) {
  std::vector<DeviceRecord> devices;
  for (cl_platform_id platform : GetPlatforms(api)) {
    const std::string name = GetPlatformName(api, platform);
    cl_uint count = 0;
    if (api.GetDeviceIDs(platform, CL_DEVICE_TYPE_ALL, 0, nullptr, &count) != CL_SUCCESS || count == 0) continue;
    std::vector<cl_device_id> ids(count);
    if (api.GetDeviceIDs(platform, CL_DEVICE_TYPE_ALL, count, ids.data(), nullptr) != CL_SUCCESS) continue;
    for (cl_device_id id : ids) devices.push_back(ReadDevice(api, name, id));
  }
  return devices;
}

int ChooseDevice(const std::vector<DeviceRecord>& devices, const std::string& word, const std::string& origin,
                 Status& status) {
  if (devices.empty()) {
    status = Status::Error(std::string("there is no OpenCL device; ") + kInstallDriver);
    return -1;
  }
  const auto find = [&](const auto& is_wanted) {
    for (std::size_t i = 0; i < devices.size(); ++i) {
      if (is_wanted(i)) return static_cast<int>(i);
    }
    return -1;
  };
  const auto is_usable = [&](std::size_t i) { return devices[i].info.problem.empty(); };

  if (word.empty()) {
    int chosen = find([&](std::size_t i) { return is_usable(i) && devices[i].info.type == "gpu"; });
    if (chosen < 0) chosen = find([&](std::size_t i) { return is_usable(i) && devices[i].is_processor; });
    if (chosen < 0) chosen = find(is_usable);
    if (chosen < 0) {
      status = Status::Error("no OpenCL device can be used; \"" + devices[0].info.name +
                             "\": " + devices[0].info.problem + "; " + kInstallDriver);
    }
    return chosen;
  }

  const std::string lower = ToLower(word);
  const auto is_meant = [&](std::size_t i) { return IsMeant(devices[i], i, lower); };
  const int usable = find([&](std::size_t i) { return is_meant(i) && is_usable(i); });
  if (usable >= 0) return usable;
  const int meant = find(is_meant);
  if (meant >= 0) {
    const GpuDevice& device = devices[static_cast<std::size_t>(meant)].info;
    status = Status::Error(origin + ": device \"" + device.name + "\" cannot be used: " + device.problem);
  } else {
    status = Status::Error(origin + ": there is no OpenCL device \"" + word + "\"; there is " + NameAll(devices));
  }
  return -1;
}

std::shared_ptr<Device> Device::Open(const OpenClApi& api, const DeviceRecord& record, Status& status) {
  std::shared_ptr<Device> device(new Device(api, record));
  cl_int error = CL_SUCCESS;
  device->context_ = {api.CreateContext(nullptr, 1, &record.id, nullptr, nullptr, &error), {api.ReleaseContext}};
  if (error == CL_SUCCESS) return device;
  status = device->MakeError("it cannot be made ready", error);
  return nullptr;
}

cl_program Device::GetProgram(const std::string& definitions, Status& status) {
  const std::lock_guard lock(mutex_);
  const auto found = programs_.find(definitions);
  if (found != programs_.end()) return found->second.get();

  cl_int error = CL_SUCCESS;
  const char* source = kKernels;
  Owned<cl_program> program(api_.CreateProgramWithSource(context_.get(), 1, &source, nullptr, &error),
                            {api_.ReleaseProgram});
  if (error == CL_SUCCESS) {
    const std::string options = "-cl-std=CL1.2 -cl-mad-enable " + definitions;
    error = api_.BuildProgram(program.get(), 1, &record_.id, options.c_str(), nullptr, nullptr);
  }
  if (error != CL_SUCCESS) {
    std::string tried = "its program cannot be built";
    if (program) {
      const std::string log = ReadText([&](std::size_t size, void* to, std::size_t* needed) {
        return api_.GetProgramBuildInfo(program.get(), record_.id, CL_PROGRAM_BUILD_LOG, size, to, needed);
      });
      // The first line names the fault; the rest repeats the source.
      if (!log.empty()) tried += " (" + log.substr(0, log.find('\n')) + ")";
    }
    status = MakeError(tried, error);
    return nullptr;
  }
  return programs_.emplace(definitions, std::move(program)).first->second.get();
}

Status Device::MakeError(const std::string& tried, cl_int error) const {
  std::string remedy = "try again, or choose another device (\"value doctor\" lists them)";
  if (error == CL_MEM_OBJECT_ALLOCATION_FAILURE || error == CL_OUT_OF_HOST_MEMORY || error == CL_INVALID_BUFFER_SIZE) {
    remedy = "free memory, or choose a device with more (\"value doctor\" lists them)";
  } else if (error == CL_BUILD_PROGRAM_FAILURE || error == CL_COMPILER_NOT_AVAILABLE) {
    remedy = "update its driver, or choose another device (\"value doctor\" lists them)";
  }
  return Status::Error("OpenCL device \"" + record_.info.name + "\": " + tried + ": " + DescribeError(error) + "; " +
                       remedy);
}

}  // namespace Gpu
