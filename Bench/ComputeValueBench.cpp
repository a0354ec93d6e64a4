// SPDX-License-Identifier: Apache-2.0
//
// ComputeValue on images of 4096 x 4096 values: every arithmetic operation, with one image and with two, and an
// operation that the host has never seen. Each case also times a plain copy of the same bytes, in turn with the
// operation, and reports the ratio of the two medians as "x_copy".

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "Host/Image/ComputeValue.h"
#include "Host/Image/Image.h"
#include "Host/Util/ParallelRows.h"
#include "Value/Operations/ArithmeticOperations.h"

namespace {

constexpr int kSide = 4096;

/// An operation of a class that nobody registered loops for.
class UnknownOperation : public ValueOperation {
 public:
  float Compute(float first, float second) override { return first + second; }
  float Compute(float value) override { return value + a; }
};

std::unique_ptr<Image> MakeImage(std::uint32_t seed) {
  auto image = std::make_unique<Image>(kSide, kSide, ColorMode::kValue, nullptr);
  float* samples = image->GetArray();
  for (std::size_t i = 0; i < image->GetNumSamples(); ++i) {
    seed = seed * 1664525U + 1013904223U;
    samples[i] = static_cast<float>(seed >> 8) / 16777216.0F + 0.001F;
  }
  return image;
}

double Seconds(const std::chrono::steady_clock::time_point& from) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - from).count();
}

/// Copies every input once and writes as many bytes: what an operation moves at least, per byte read.
class PlainCopy {
 public:
  explicit PlainCopy(const Image& image) : from_(image), to_(image) {}

  /// Seconds for a copy of the whole image on the host's threads.
  double Run() {
    const auto start = std::chrono::steady_clock::now();
    const std::size_t count = from_.GetNumSamples();
    const std::size_t threads = ScEng::GetNumThreads();
    float* to = to_.GetArray();
    ScEng::ParallelRows(count, (count + threads - 1) / threads, [&](std::size_t begin, std::size_t end) {
      std::memcpy(to + begin, from_.GetConstArray() + begin, (end - begin) * sizeof(float));
    });
    benchmark::ClobberMemory();
    return Seconds(start);
  }

 private:
  const Image& from_;
  Image to_;
};

double Median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2), values.end());
  return values[values.size() / 2];
}

/// What one case moves, in images: `inputs` are read and one is written; a copy reads one and writes one.
double CopiesOfTheSameBytes(std::size_t inputs) { return static_cast<double>(inputs + 1) / 2.0; }

void RunComputeValue(benchmark::State& state, ValueOperation& operation, std::size_t num_inputs) {
  const std::unique_ptr<Image> first = MakeImage(1);
  const std::unique_ptr<Image> second = MakeImage(2);
  std::vector<const Image*> images{first.get(), second.get()};
  images.resize(num_inputs);
  PlainCopy copy(*first);
  ScEng::SetNumThreads(static_cast<std::size_t>(state.range(0)));

  std::vector<double> times;
  std::vector<double> copies;
  for (auto _ : state) {
    copies.push_back(copy.Run() * CopiesOfTheSameBytes(num_inputs));
    // A lone image's range is found anew each time, as for one that was just made.
    static_cast<void>(first->GetArray());
    const auto start = std::chrono::steady_clock::now();
    const std::unique_ptr<Image> result(ComputeValue(images, &operation));
    benchmark::DoNotOptimize(result->GetConstArray());
    times.push_back(Seconds(start));
    state.SetIterationTime(times.back());
  }
  state.counters["copy_ms"] = Median(copies) * 1e3;
  state.counters["x_copy"] = Median(times) / Median(copies);
  ScEng::SetNumThreads(0);
}

template <class Operation>
void Register(const std::string& name) {
  for (const std::size_t inputs : {std::size_t{1}, std::size_t{2}}) {
    const std::string full = "ComputeValue/" + name + (inputs == 1 ? "/constant" : "/two_images");
    benchmark::RegisterBenchmark(full.c_str(),
                                 [inputs](benchmark::State& state) {
                                   if constexpr (std::is_same_v<Operation, UnknownOperation>) {
                                     Operation operation;
                                     operation.a = 1.7F;
                                     RunComputeValue(state, operation, inputs);
                                   } else {
                                     Operation operation(1.7F);
                                     RunComputeValue(state, operation, inputs);
                                   }
                                 })
        ->ArgName("threads")
        ->Arg(1)
        ->Arg(2)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
  }
}

void RegisterAll() {
  Register<AdditionOperation>("Addition");
  Register<SubtractionOperation>("Subtraction");
  Register<MultiplicationOperation>("Multiplication");
  Register<DivideOperation>("Divide");
  Register<MinimumOperation>("Minimum");
  Register<MaximumOperation>("Maximum");
  Register<PowerOperation>("Power");
  Register<UnknownOperation>("Unknown");
}

}  // namespace

int main(int argc, char** argv) {
  RegisterAll();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
