// SPDX-License-Identifier: Apache-2.0
#include "Bench/BenchSupport.h"

#include <algorithm>
#include <chrono>
#include <cstring>

#include "Host/Util/ParallelRows.h"

namespace Bench {
namespace {

/// Copies an image on the host's threads.
void Copy(const Image& from, Image& to) {
  const std::size_t count = from.GetNumSamples();
  const std::size_t threads = ScEng::GetNumThreads();
  float* samples = to.GetArray();
  ScEng::ParallelRows(count, (count + threads - 1) / threads, [&](std::size_t begin, std::size_t end) {
    std::memcpy(samples + begin, from.GetConstArray() + begin, (end - begin) * sizeof(float));
  });
  benchmark::ClobberMemory();
}

double Median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2), values.end());
  return values[values.size() / 2];
}

}  // namespace

ImagePtr MakeNoise(unsigned color_mode, std::uint32_t seed) {
  auto image = ScEng::MakeRef<Image>(kSide, kSide, color_mode, nullptr);
  float* samples = image->GetArray();
  for (std::size_t i = 0; i < image->GetNumSamples(); ++i) {
    seed = seed * 1664525U + 1013904223U;
    samples[i] = static_cast<float>(seed >> 8) / 16777216.0F + 0.001F;
  }
  return image;
}

double Time(const std::function<void()>& body) {
  const auto start = std::chrono::steady_clock::now();
  body();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void RunAgainstCopy(benchmark::State& state, const Image& image, double copies, const std::function<void()>& body) {
  Image target(image);
  ScEng::SetNumThreads(static_cast<std::size_t>(state.range(0)));
  std::vector<double> times;
  std::vector<double> copy_times;
  for (auto _ : state) {
    copy_times.push_back(Time([&] { Copy(image, target); }) * copies);
    times.push_back(Time(body));
    state.SetIterationTime(times.back());
  }
  state.counters["copy_ms"] = Median(copy_times) * 1e3;
  state.counters["x_copy"] = Median(times) / Median(copy_times);
  ScEng::SetNumThreads(0);
}

void Register(const std::string& name, Threads threads, const std::function<void(benchmark::State&)>& run) {
  auto* added = benchmark::RegisterBenchmark(name.c_str(), run)->ArgName("threads")->Arg(1);
  if (threads == Threads::kOneAndTwo) added->Arg(2);
  added->UseManualTime()->Unit(benchmark::kMillisecond);
}

}  // namespace Bench
