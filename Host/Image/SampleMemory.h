// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace ScEng {

/// 64-byte aligned memory for samples; throws `std::bad_alloc`. May be called from any thread.
///
/// Fresh pages cost more than the arithmetic of most nodes (the kernel clears each one first), so blocks that images
/// give back are kept for the next image of the same size, up to a fixed total.
float* AllocateSamples(std::size_t bytes);
void ReleaseSamples(float* samples, std::size_t bytes) noexcept;

}  // namespace ScEng
