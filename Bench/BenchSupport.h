// SPDX-License-Identifier: Apache-2.0
//
// What the benchmarks share: images, the plain copy that every case is held against, and the loop that times both in
// turn.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "Host/Image/Image.h"

namespace Bench {

inline constexpr int kSide = 4096;

/// An image of kSide times kSide pixels with samples of every size between 0.001 and 1.001.
ImagePtr MakeNoise(unsigned color_mode, std::uint32_t seed);

/// Seconds that `body` takes.
double Time(const std::function<void()>& body);

/// Times `body` and a plain copy of `image` in turn, both with as many threads as `state` asks for, and reports the
/// time of the copy and the ratio of the medians:
///
/// copy_ms  a copy that moves as many bytes: `copies` times the copy of the image (one read and one write of it)
/// x_copy   the body's time in such copies
void RunAgainstCopy(benchmark::State& state, const Image& image, double copies, const std::function<void()>& body);

/// Adds a case for one thread, and for two where the code uses the host's threads.
enum class Threads { kCaller, kOneAndTwo };
void Register(const std::string& name, Threads threads, const std::function<void(benchmark::State&)>& run);

void RegisterComponents();
void RegisterComputeValue();
void RegisterFilter();
void RegisterNodes();
void RegisterOcclusion();
void RegisterRegion();
void RegisterRelief();

}  // namespace Bench
