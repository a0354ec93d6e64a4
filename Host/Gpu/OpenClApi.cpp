// SPDX-License-Identifier: Apache-2.0
#include "Host/Gpu/OpenClApi.h"

#include <dlfcn.h>

#include <type_traits>

namespace Gpu {
namespace {

/// Fills the table; the name of the first function that the loader lacks, or null when it has all.
const char* FindFunctions(void* loader, OpenClApi& api) {
  const char* missing = nullptr;
  const auto find = [&](const char* name, auto& function) {
    function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(dlsym(loader, name));
    if (function == nullptr && missing == nullptr) missing = name;
  };
  find("clGetPlatformIDs", api.GetPlatformIDs);
  find("clGetPlatformInfo", api.GetPlatformInfo);
  find("clGetDeviceIDs", api.GetDeviceIDs);
  find("clGetDeviceInfo", api.GetDeviceInfo);
  find("clCreateContext", api.CreateContext);
  find("clReleaseContext", api.ReleaseContext);
  find("clCreateCommandQueue", api.CreateCommandQueue);
  find("clReleaseCommandQueue", api.ReleaseCommandQueue);
  find("clCreateProgramWithSource", api.CreateProgramWithSource);
  find("clBuildProgram", api.BuildProgram);
  find("clGetProgramBuildInfo", api.GetProgramBuildInfo);
  find("clReleaseProgram", api.ReleaseProgram);
  find("clCreateKernel", api.CreateKernel);
  find("clSetKernelArg", api.SetKernelArg);
  find("clReleaseKernel", api.ReleaseKernel);
  find("clCreateBuffer", api.CreateBuffer);
  find("clReleaseMemObject", api.ReleaseMemObject);
  find("clEnqueueMapBuffer", api.EnqueueMapBuffer);
  find("clEnqueueUnmapMemObject", api.EnqueueUnmapMemObject);
  find("clEnqueueNDRangeKernel", api.EnqueueNDRangeKernel);
  find("clFinish", api.Finish);
  return missing;
}

}  // namespace

const OpenClApi* LoadOpenCl(const char* file, OpenClApi& api, ScEng::Status& status) {
  void* loader = dlopen(file, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  if (loader == nullptr) {
    const char* reason = dlerror();
    status = ScEng::Status::Error(
        std::string("OpenCL cannot be loaded: ") + (reason != nullptr ? reason : file) +
        "; install the package ocl-icd-libopencl1 and a driver (pocl-opencl-icd runs on every processor)");
    return nullptr;
  }
  if (const char* missing = FindFunctions(loader, api)) {
    status = ScEng::Status::Error(std::string("OpenCL cannot be used: ") + file + " has no function " + missing +
                                  "; install a loader of OpenCL 1.2 or newer (ocl-icd-libopencl1)");
    return nullptr;
  }
  return &api;
}

std::string DescribeError(cl_int error) {
  switch (error) {
    case CL_DEVICE_NOT_FOUND: return "there is no such device";
    case CL_DEVICE_NOT_AVAILABLE: return "the device is not available";
    case CL_COMPILER_NOT_AVAILABLE: return "the driver has no compiler";
    case CL_MEM_OBJECT_ALLOCATION_FAILURE: return "the device's there is not enough memory";
    case CL_OUT_OF_RESOURCES: return "the device has run out of resources, or was lost";
    case CL_OUT_OF_HOST_MEMORY: return "there is not enough memory";
    case CL_MAP_FAILURE: return "the device's memory cannot be mapped";
    case CL_BUILD_PROGRAM_FAILURE: return "the program does not compile";
    case CL_INVALID_BUFFER_SIZE: return "the device has no buffer of this size";
    case CL_INVALID_DEVICE: return "the device is invalid, or was lost";
    case CL_INVALID_CONTEXT: return "the device's context is invalid, or was lost";
    case CL_INVALID_COMMAND_QUEUE: return "the device's queue is invalid, or was lost";
    // Of the loader, which finds no driver.
    case -1001: return "no driver is installed";
    default: return "OpenCL error " + std::to_string(error);
  }
}

}  // namespace Gpu
