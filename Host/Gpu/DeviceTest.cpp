// SPDX-License-Identifier: Apache-2.0
#include "Host/Gpu/Device.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "Host/Gpu/AmbientOcclusion.h"
#include "Host/Gpu/DevicePool.h"
#include "Host/Gpu/DriverCache.h"
#include "Host/Gpu/GpuEngine.h"
#include "Host/Gpu/OpenClApi.h"
#include "Tests/Support/HostTesting.h"

namespace Testing {
namespace {

using Gpu::DeviceRecord;
using Gpu::OpenClApi;
using ScEng::Status;

const OpenClApi& RealApi() {
  static OpenClApi api;
  static const bool loaded = [] {
    Status status;
    return Gpu::LoadOpenCl("libOpenCL.so.1", api, status) != nullptr;
  }();
  EXPECT_TRUE(loaded);
  return api;
}

DeviceRecord MakeRecord(const std::string& name, const std::string& type, const std::string& problem = "") {
  DeviceRecord record;
  record.info.name = name;
  record.info.type = type;
  record.info.problem = problem;
  record.is_processor = type == "cpu";
  return record;
}

TEST(OpenClApi, SaysWhatToInstallWithoutALoader) {
  OpenClApi api;
  Status status;
  EXPECT_EQ(Gpu::LoadOpenCl("libNoSuchLoader.so.1", api, status), nullptr);
  EXPECT_EQ(status.GetCode(), 2U);
  EXPECT_TRUE(Contains(status.GetMessage(), "libNoSuchLoader.so.1"));
  EXPECT_TRUE(Contains(status.GetMessage(), "ocl-icd-libopencl1"));
}

TEST(OpenClApi, RefusesALibraryThatLacksAFunction) {
  OpenClApi api;
  Status status;
  EXPECT_EQ(Gpu::LoadOpenCl("libm.so.6", api, status), nullptr);
  EXPECT_TRUE(Contains(status.GetMessage(), "clGetPlatformIDs"));
}

TEST(Devices, AreListedWithWhatAPersonWantsToKnow) {
  const std::vector<DeviceRecord> devices = Gpu::ListDevices(RealApi());
  ASSERT_FALSE(devices.empty());
  bool has_processor = false;
  for (const DeviceRecord& device : devices) {
    EXPECT_NE(device.info.platform, "");
    EXPECT_NE(device.info.name, "");
    EXPECT_NE(device.info.driver, "");
    EXPECT_EQ(device.info.version.rfind("OpenCL ", 0), 0U) << device.info.version;
    EXPECT_GT(device.info.compute_units, 0U);
    EXPECT_GT(device.info.memory_bytes, 0U);
    has_processor |= device.info.type == "cpu" && device.is_processor;
  }
  EXPECT_TRUE(has_processor) << "the driver pocl-opencl-icd is always installed";
}

TEST(Devices, AreTakenUnaskedInTheOrderGpuThenProcessor) {
  Status status;
  const auto gpu = MakeRecord("Fast", "gpu");
  const auto cpu = MakeRecord("Slow", "cpu");
  const auto other = MakeRecord("Odd", "accelerator");
  const auto broken = MakeRecord("Broken", "gpu", "it is broken");
  EXPECT_EQ(Gpu::ChooseDevice({other, cpu, gpu, gpu}, "", "", status), 2);
  EXPECT_EQ(Gpu::ChooseDevice({other, broken, cpu}, "", "", status), 2);
  EXPECT_EQ(Gpu::ChooseDevice({broken, other}, "", "", status), 1);
  EXPECT_FALSE(status.IsError());
  EXPECT_EQ(Gpu::ChooseDevice({broken}, "", "", status), -1);
  EXPECT_TRUE(Contains(status.GetMessage(), "it is broken"));
  EXPECT_EQ(Gpu::ChooseDevice({}, "", "", status), -1);
  EXPECT_EQ(status.GetCode(), 2U);
  EXPECT_TRUE(Contains(status.GetMessage(), "pocl-opencl-icd"));
}

TEST(Devices, AreChosenByNameTypeOrPlace) {
  const std::vector<DeviceRecord> devices{MakeRecord("Maker Fast 9000", "gpu"), MakeRecord("Maker Slow", "cpu"),
                                          MakeRecord("Third", "gpu", "it is broken")};
  Status status;
  EXPECT_EQ(Gpu::ChooseDevice(devices, "slow", "x", status), 1);
  EXPECT_EQ(Gpu::ChooseDevice(devices, "CPU", "x", status), 1);
  EXPECT_EQ(Gpu::ChooseDevice(devices, "1", "x", status), 1);
  EXPECT_EQ(Gpu::ChooseDevice(devices, "0", "x", status), 0);
  EXPECT_EQ(Gpu::ChooseDevice(devices, "maker", "x", status), 0);
  EXPECT_FALSE(status.IsError());
  EXPECT_EQ(Gpu::ChooseDevice(devices, "third", "--device", status), -1);
  EXPECT_TRUE(Contains(status.GetMessage(), "it is broken"));
  // A number is a place, also where a name has it.
  EXPECT_EQ(Gpu::ChooseDevice(devices, "9000", "--device", status), -1);
  EXPECT_EQ(Gpu::ChooseDevice(devices, "zebra", "--device", status), -1);
  for (const char* part : {"--device", "zebra", "Maker Fast 9000", "Maker Slow", "Third"}) {
    EXPECT_TRUE(Contains(status.GetMessage(), part));
  }
}

/// Runs a small field through a table in which a test has put a function that fails.
class FailingDevice : public testing::Test {
 protected:
  Status Run() {
    const std::vector<DeviceRecord> devices = Gpu::ListDevices(RealApi());
    Status status;
    const int chosen = Gpu::ChooseDevice(devices, "cpu", "test", status);
    if (chosen < 0) return status;
    const auto device = Gpu::Device::Open(api_, devices[static_cast<std::size_t>(chosen)], status);
    if (!device) return status;
    const float values[] = {0.0F, 1.0F, 0.0F, 1.0F};
    float result[4];
    Gpu::HeightField field;
    field.values = values;
    field.size_x = 2;
    field.size_y = 2;
    return Gpu::RunAmbientOcclusion(*device, field, 3, 1.0, result);
  }
  static void ExpectError(const Status& status, const std::string& part, const std::string& remedy) {
    EXPECT_EQ(status.GetCode(), 2U);
    EXPECT_TRUE(Contains(status.GetMessage(), "OpenCL device \""));
    EXPECT_TRUE(Contains(status.GetMessage(), part));
    EXPECT_TRUE(Contains(status.GetMessage(), remedy));
    EXPECT_EQ(status.GetMessage().find('\n'), std::string::npos);
  }

  OpenClApi api_ = RealApi();
};

TEST_F(FailingDevice, WorksWhereNothingFails) { EXPECT_EQ(Run().GetMessage(), ""); }

TEST_F(FailingDevice, NamesAContextThatCannotBeMade) {
  api_.CreateContext = [](const cl_context_properties*, cl_uint, const cl_device_id*,
                          void (*)(const char*, const void*, std::size_t, void*), void*, cl_int* error) -> cl_context {
    *error = CL_DEVICE_NOT_AVAILABLE;
    return nullptr;
  };
  ExpectError(Run(), "not available", "choose another device");
}

TEST_F(FailingDevice, NamesTheFaultOfAProgramThatDoesNotCompile) {
  api_.CreateProgramWithSource = [](cl_context context, cl_uint, const char**, const std::size_t*, cl_int* error) {
    const char* broken = "kernel void Occlude() { this_is_no_function(1; }\n";
    return RealApi().CreateProgramWithSource(context, 1, &broken, nullptr, error);
  };
  ExpectError(Run(), "does not compile", "update its driver");
}

TEST_F(FailingDevice, NamesMemoryThatDoesNotSuffice) {
  api_.CreateBuffer = [](cl_context, cl_mem_flags, std::size_t, void*, cl_int* error) -> cl_mem {
    *error = CL_MEM_OBJECT_ALLOCATION_FAILURE;
    return nullptr;
  };
  ExpectError(Run(), "there is not enough memory", "free memory");
}

TEST_F(FailingDevice, NamesALostDevice) {
  api_.EnqueueNDRangeKernel = [](cl_command_queue, cl_kernel, cl_uint, const std::size_t*, const std::size_t*,
                                 const std::size_t*, cl_uint, const cl_event*,
                                 cl_event*) -> cl_int { return CL_OUT_OF_RESOURCES; };
  ExpectError(Run(), "lost", "try again");
}

TEST_F(FailingDevice, NamesAResultThatCannotBeReached) {
  api_.EnqueueMapBuffer = [](cl_command_queue queue, cl_mem buffer, cl_bool waits, cl_map_flags flags,
                             std::size_t offset, std::size_t size, cl_uint, const cl_event*, cl_event*,
                             cl_int* error) -> void* {
    if ((flags & CL_MAP_READ) == 0) {
      return RealApi().EnqueueMapBuffer(queue, buffer, waits, flags, offset, size, 0, nullptr, nullptr, error);
    }
    *error = CL_MAP_FAILURE;
    return nullptr;
  };
  ExpectError(Run(), "cannot be reached", "try again");
}

/// How many computations are yet to fail.
int failures_left = 0;

/// A pool of the processor under two names, whose next computations fail.
class FailingPool : public testing::Test {
 protected:
  void SetUp() override {
    Status status;
    const std::vector<DeviceRecord> devices = Gpu::ListDevices(RealApi());
    const int processor = Gpu::ChooseDevice(devices, "cpu", "test", status);
    ASSERT_GE(processor, 0) << status.GetMessage();
    records_ = {devices[static_cast<std::size_t>(processor)], devices[static_cast<std::size_t>(processor)]};
    records_[0].info.name = "First";
    records_[1].info.name = "Second";
    api_.EnqueueNDRangeKernel = [](cl_command_queue queue, cl_kernel kernel, cl_uint dimensions,
                                   const std::size_t* offset, const std::size_t* size, const std::size_t* group,
                                   cl_uint, const cl_event*, cl_event*) -> cl_int {
      if (failures_left > 0) {
        --failures_left;
        return CL_OUT_OF_RESOURCES;
      }
      return RealApi().EnqueueNDRangeKernel(queue, kernel, dimensions, offset, size, group, 0, nullptr, nullptr);
    };
  }

  /// A tower of height 3 beside open ground.
  Status Run(bool tries_other, int failures) {
    failures_left = failures;
    Gpu::DevicePool pool(api_, records_);
    return pool.Run(0, tries_other, [&](Gpu::Device& device) {
      const float values[] = {0.0F, 3.0F};
      Gpu::HeightField field;
      field.values = values;
      field.size_x = 2;
      field.size_y = 1;
      return Gpu::RunAmbientOcclusion(device, field, 1.0, 3.0, result_);
    });
  }

  OpenClApi api_ = RealApi();
  std::vector<DeviceRecord> records_;
  float result_[2] = {-1.0F, -1.0F};
};

TEST_F(FailingPool, ComputesOnTheDeviceThatIsChosen) {
  EXPECT_EQ(Run(true, 0).GetMessage(), "");
  EXPECT_EQ(result_[1], 1.0F);
}

TEST_F(FailingPool, EndsInTheErrorOfTheDeviceUnlessAnotherMayBeTried) {
  const Status status = Run(false, 1);
  EXPECT_TRUE(status.IsError());
  EXPECT_TRUE(Contains(status.GetMessage(), "\"First\""));
  EXPECT_EQ(result_[1], -1.0F);
}

TEST_F(FailingPool, TriesAnotherDeviceOnceAndSaysSo) {
  const Status status = Run(true, 1);
  EXPECT_EQ(status.GetCode(), Status::kWarning);
  EXPECT_TRUE(Contains(status.GetMessage(), "\"First\""));
  EXPECT_TRUE(Contains(status.GetMessage(), "lost"));
  EXPECT_TRUE(Contains(status.GetMessage(), "computed on device 1 \"Second\" instead"));
  EXPECT_EQ(result_[1], 1.0F);
  EXPECT_LT(result_[0], 1.0F);
}

TEST_F(FailingPool, EndsInTheFirstErrorWhereTheOtherDeviceFailsToo) {
  const Status status = Run(true, 2);
  EXPECT_TRUE(status.IsError());
  EXPECT_TRUE(Contains(status.GetMessage(), "\"First\""));
  EXPECT_EQ(failures_left, 0) << "there is no third attempt";
}

TEST_F(FailingPool, HasNoOtherDeviceWhereNoneCanBeUsed) {
  records_[1].info.problem = "it is broken";
  EXPECT_TRUE(Run(true, 1).IsError());
  records_.pop_back();
  EXPECT_TRUE(Run(true, 1).IsError());
}

/// Sets an environment variable for one scope; null removes it.
class VariableScope {
 public:
  VariableScope(const char* name, const char* value) : name_(name) {
    if (const char* before = std::getenv(name)) before_ = before;
    Set(value);
  }
  ~VariableScope() { Set(before_ ? before_->c_str() : nullptr); }
  VariableScope(const VariableScope&) = delete;
  VariableScope& operator=(const VariableScope&) = delete;

 private:
  void Set(const char* value) const {
    if (value != nullptr) {
      setenv(name_, value, 1);
    } else {
      unsetenv(name_);
    }
  }

  const char* name_;
  std::optional<std::string> before_;
};

TEST(DriverCache, FollowsTheDriversVariables) {
  const VariableScope home("HOME", "/home/somebody");
  const VariableScope cache("XDG_CACHE_HOME", nullptr);
  const VariableScope own("POCL_CACHE_DIR", nullptr);
  EXPECT_EQ(Gpu::FindCacheFolder(), "/home/somebody/.cache/pocl/kcache");
  const VariableScope other_cache("XDG_CACHE_HOME", "/var/cache");
  EXPECT_EQ(Gpu::FindCacheFolder(), "/var/cache/pocl/kcache");
  const VariableScope other_own("POCL_CACHE_DIR", "/somewhere");
  EXPECT_EQ(Gpu::FindCacheFolder(), "/somewhere");
}

TEST(DriverCache, ForgetsAnEmptyVariableAlone) {
  {
    const VariableScope own("POCL_CACHE_DIR", "");
    Gpu::ForgetEmptyCacheFolder();
    EXPECT_EQ(std::getenv("POCL_CACHE_DIR"), nullptr);
  }
  const VariableScope own("POCL_CACHE_DIR", "/somewhere");
  Gpu::ForgetEmptyCacheFolder();
  EXPECT_STREQ(std::getenv("POCL_CACHE_DIR"), "/somewhere");
}

const char* platform_name = "";

/// A table with one platform of the name `platform_name`.
OpenClApi MakePlatformApi() {
  OpenClApi api;
  api.GetPlatformIDs = [](cl_uint, cl_platform_id* platforms, cl_uint* count) -> cl_int {
    if (count != nullptr) *count = 1;
    if (platforms != nullptr) *platforms = nullptr;
    return CL_SUCCESS;
  };
  api.GetPlatformInfo = [](cl_platform_id, cl_platform_info, std::size_t, void* to, std::size_t* size) -> cl_int {
    const std::string name = platform_name;
    if (size != nullptr) *size = name.size() + 1;
    if (to != nullptr) std::copy_n(name.c_str(), name.size() + 1, static_cast<char*>(to));
    return CL_SUCCESS;
  };
  return api;
}

TEST(DriverCache, IsNamedWhereTheDriverCannotWriteIt) {
  platform_name = "Portable Computing Language";
  const VariableScope own("POCL_CACHE_DIR", "/dev/null/cache");
  const Status status = Gpu::ExplainNoDevice(MakePlatformApi());
  EXPECT_TRUE(status.IsError());
  EXPECT_TRUE(Contains(status.GetMessage(), "\"/dev/null/cache\""));
  EXPECT_TRUE(Contains(status.GetMessage(), "POCL_CACHE_DIR"));
  EXPECT_EQ(status.GetMessage().find("install"), std::string::npos);
}

TEST(DriverCache, IsNotBlamedForAnythingElse) {
  platform_name = "Another Driver";
  {
    const VariableScope own("POCL_CACHE_DIR", "/dev/null/cache");
    EXPECT_TRUE(Contains(Gpu::ExplainNoDevice(MakePlatformApi()).GetMessage(), "\"Another Driver\" offers none"));
  }
  platform_name = "Portable Computing Language";
  const TemporaryFolder folder;
  const VariableScope own("POCL_CACHE_DIR", folder.Path().c_str());
  EXPECT_TRUE(Contains(Gpu::ExplainNoDevice(MakePlatformApi()).GetMessage(), "offers none"));
  OpenClApi none;
  none.GetPlatformIDs = [](cl_uint, cl_platform_id*, cl_uint*) -> cl_int { return -1001; };
  EXPECT_TRUE(Contains(Gpu::ExplainNoDevice(none).GetMessage(), "pocl-opencl-icd"));
}

}  // namespace
}  // namespace Testing
