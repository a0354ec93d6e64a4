// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace Gpu {

/// The source of the engine's program for devices, Kernels/AmbientOcclusion.cl.
extern const char* const kKernels;

}  // namespace Gpu
