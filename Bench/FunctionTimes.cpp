// SPDX-License-Identifier: Apache-2.0
//
// The functions that give the nearest float, beside the C library's double narrowed one sample at a time, and in units
// of a copy of as many bytes. Prints the table of Docs/Benchmarks.md:
//
//     value-function-times [ROUNDS]
//
// All of ComputeValue on an image of 4096 x 4096, in turn, by the processor's time; the smallest of the rounds counts,
// since whatever else runs only adds to it. With two threads it is the time of both, and so is that of the copy.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "Host/Image/ComputeValue.h"
#include "Host/Image/Image.h"
#include "Host/Util/ParallelRows.h"
#include "Value/Operations/ArithmeticOperations.h"
#include "Value/Operations/FunctionOperations.h"

namespace {

constexpr int kSide = 4096;

double ProcessorTime() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

ImagePtr MakeImage(float low, float high, std::uint32_t seed) {
  auto image = ScEng::MakeRef<Image>(kSide, kSide, ColorMode::kValue, nullptr);
  float* samples = image->GetArray();
  for (std::size_t i = 0; i < image->GetNumSamples(); ++i) {
    seed = seed * 1664525U + 1013904223U;
    samples[i] = low + (high - low) * static_cast<float>(seed >> 8U) / 16777216.0F;
  }
  return image;
}

/// Copies on the host's threads. The C library writes pieces of this size past the caches, with the widest vectors that
/// there are.
void Copy(const Image& from, Image& to) {
  const std::size_t count = from.GetNumSamples();
  const std::size_t threads = ScEng::GetNumThreads();
  const float* values = from.GetConstArray();
  float* samples = to.GetArray();
  ScEng::ParallelRows(count, (count + threads - 1) / threads, [&](std::size_t begin, std::size_t end) {
    std::memcpy(samples + begin, values + begin, (end - begin) * sizeof(float));
  });
}

/// The C library's double, narrowed: an operation of a class that nobody registered loops for.
template <class Function>
class LibraryOperation : public ValueOperation {
 public:
  explicit LibraryOperation(Function function, float constant) : function_(function) { a = constant; }
  float Compute(float first, float second) override {
    return static_cast<float>(function_(static_cast<double>(first), static_cast<double>(second)));
  }
  float Compute(float value) override { return Compute(value, a); }

 private:
  Function function_;
};

struct Case {
  std::string name;
  float low;
  float high;
  std::size_t inputs;
  std::function<void(const std::vector<const Image*>&)> nearest;
  std::function<void(const std::vector<const Image*>&)> library;
};

template <class Operation, class Function, class... Constants>
Case MakeCase(const char* name, float low, float high, std::size_t inputs, Function function, Constants... constants) {
  const auto run = [](const std::vector<const Image*>& images, ValueOperation& operation) {
    const ImagePtr result(ComputeValue(images, &operation));
  };
  return {name,
          low,
          high,
          inputs,
          [=](const auto& images) {
            Operation operation(constants...);
            run(images, operation);
          },
          [=](const auto& images) {
            const float constants_or_zero[] = {static_cast<float>(constants)..., 0.0F};
            LibraryOperation<Function> operation(function, constants_or_zero[0]);
            run(images, operation);
          }};
}

std::vector<Case> MakeCases() {
  return {
      MakeCase<SineValueOperation>("sine", -10.0F, 10.0F, 1, [](double v, double) { return std::sin(v); }),
      MakeCase<CosineValueOperation>("cosine", -10.0F, 10.0F, 1, [](double v, double) { return std::cos(v); }),
      MakeCase<TangentValueOperation>("tangent", -10.0F, 10.0F, 1, [](double v, double) { return std::tan(v); }),
      MakeCase<ArcSineValueOperation>("arcsine", -1.0F, 1.0F, 1, [](double v, double) { return std::asin(v); }),
      MakeCase<ArcCosineValueOperation>("arccosine", -1.0F, 1.0F, 1, [](double v, double) { return std::acos(v); }),
      MakeCase<ArcTangentValueOperation>("arctangent", -10.0F, 10.0F, 1, [](double v, double) { return std::atan(v); }),
      MakeCase<LogValueOperation>("log", 0.0F, 10.0F, 1, [](double v, double) { return std::log(v); }),
      MakeCase<Log2ValueOperation>("log2", 0.0F, 10.0F, 1, [](double v, double) { return std::log(v); }),
      MakeCase<ExponentialValueOperation>("exponential", -10.0F, 10.0F, 1,
                                          [](double v, double) { return std::exp(v); }),
      MakeCase<CubicRootValueOperation>("cubic_root", -10.0F, 10.0F, 1, [](double v, double) { return std::cbrt(v); }),
      MakeCase<PowerOperation>(
          "power of 2.2", 0.0F, 1.0F, 1, [](double v, double w) { return std::pow(v, w); }, 2.2F),
      MakeCase<PowerOperation>(
          "power of two images", 0.0F, 3.0F, 2, [](double v, double w) { return std::pow(v, w); }, 1.0F),
      MakeCase<SineValueOperation>("sine up to 10^30", -1e30F, 1e30F, 1, [](double v, double) { return std::sin(v); }),
  };
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::atoi(argv[1]) : 7;
  std::printf("| Function | Threads | Copies | ms | ns a sample | C library, ms |\n|---|---|---|---|---|---|\n");
  for (const Case& one : MakeCases()) {
    const ImagePtr first = MakeImage(one.low, one.high, 1);
    const ImagePtr second = MakeImage(one.low, one.high, 2);
    Image target(*first);
    std::vector<const Image*> images{first.Get(), second.Get()};
    images.resize(one.inputs);
    for (const std::size_t threads : {1U, 2U}) {
      ScEng::SetNumThreads(threads);
      constexpr double kNever = std::numeric_limits<double>::infinity();
      double copy = kNever;
      double nearest = kNever;
      double library = kNever;
      const auto measure = [](double& least, const std::function<void()>& body) {
        const double start = ProcessorTime();
        body();
        least = std::min(least, ProcessorTime() - start);
      };
      for (int round = 0; round < rounds; ++round) {
        measure(copy, [&] { Copy(*first, target); });
        // The range of a lone image is found anew each time, as for one that was just made.
        static_cast<void>(first->GetArray());
        measure(nearest, [&] { one.nearest(images); });
        if (round > 1) continue;
        static_cast<void>(first->GetArray());
        measure(library, [&] { one.library(images); });
      }
      // A copy reads one image and writes one.
      copy *= static_cast<double>(one.inputs + 1) / 2.0;
      std::printf("| %s | %zu | %.2f | %.1f | %.2f | %.0f |\n", one.name.c_str(), threads, nearest / copy,
                  nearest * 1e3, nearest * 1e9 / kSide / kSide, library * 1e3);
      std::fflush(stdout);
    }
  }
  return EXIT_SUCCESS;
}
