// SPDX-License-Identifier: Apache-2.0
//
// The driver of OpenCL for processors, pocl, keeps the programs that it has built in a folder, and offers no device
// where it cannot: what goes wrong with that folder, said so that a person can help it.
#pragma once

#include <filesystem>

#include "Host/Gpu/Api.h"
#include "Host/Gpu/OpenClApi.h"
#include "Host/Util/Status.h"

namespace Gpu {

/// The driver ends the process where POCL_CACHE_DIR is set but empty: such a variable is removed, so that the driver
/// takes the folder that it takes without one. To be called before OpenCL is loaded.
HOST_GPU_API void ForgetEmptyCacheFolder();

/// The folder, as the driver chooses it: POCL_CACHE_DIR, else pocl/kcache in XDG_CACHE_HOME or in .cache of HOME, else
/// in the system's folder for temporary files.
HOST_GPU_API std::filesystem::path FindCacheFolder();

/// The error of a system without devices: which driver offers none, or that there is no driver, and what helps.
HOST_GPU_API ScEng::Status ExplainNoDevice(const OpenClApi& api);

}  // namespace Gpu
