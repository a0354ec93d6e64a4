// SPDX-License-Identifier: Apache-2.0
#pragma once

#define CL_TARGET_OPENCL_VERSION 120
#include <CL/cl.h>

#include <string>

#include "Host/Gpu/Api.h"
#include "Host/Util/Status.h"

namespace Gpu {

/// The functions of OpenCL that the engine calls, found in the system's loader of OpenCL drivers when they are first
/// asked for: a program that computes nothing on a GPU loads no driver, and starts where there is no loader.
///
/// A table of pointers, so that tests can put failing functions in their places.
struct OpenClApi {
  decltype(&::clGetPlatformIDs) GetPlatformIDs = nullptr;
  decltype(&::clGetPlatformInfo) GetPlatformInfo = nullptr;
  decltype(&::clGetDeviceIDs) GetDeviceIDs = nullptr;
  decltype(&::clGetDeviceInfo) GetDeviceInfo = nullptr;
  decltype(&::clCreateContext) CreateContext = nullptr;
  decltype(&::clReleaseContext) ReleaseContext = nullptr;
  decltype(&::clCreateCommandQueue) CreateCommandQueue = nullptr;
  decltype(&::clReleaseCommandQueue) ReleaseCommandQueue = nullptr;
  decltype(&::clCreateProgramWithSource) CreateProgramWithSource = nullptr;
  decltype(&::clBuildProgram) BuildProgram = nullptr;
  decltype(&::clGetProgramBuildInfo) GetProgramBuildInfo = nullptr;
  decltype(&::clReleaseProgram) ReleaseProgram = nullptr;
  decltype(&::clCreateKernel) CreateKernel = nullptr;
  decltype(&::clSetKernelArg) SetKernelArg = nullptr;
  decltype(&::clReleaseKernel) ReleaseKernel = nullptr;
  decltype(&::clCreateBuffer) CreateBuffer = nullptr;
  decltype(&::clReleaseMemObject) ReleaseMemObject = nullptr;
  decltype(&::clEnqueueMapBuffer) EnqueueMapBuffer = nullptr;
  decltype(&::clEnqueueUnmapMemObject) EnqueueUnmapMemObject = nullptr;
  decltype(&::clEnqueueNDRangeKernel) EnqueueNDRangeKernel = nullptr;
  decltype(&::clFinish) Finish = nullptr;
};

/// Loads a loader by file name and finds every function in it. Null, and an error in `status` that says what to
/// install, when there is none or it lacks one. It stays loaded for the rest of the process, since drivers are not made
/// to be unloaded.
HOST_GPU_API const OpenClApi* LoadOpenCl(const char* file, OpenClApi& api, ScEng::Status& status);

/// What an error number of OpenCL means, in words.
HOST_GPU_API std::string DescribeError(cl_int error);

}  // namespace Gpu
