// SPDX-License-Identifier: Apache-2.0
//
// ComputeValue on images of 4096 x 4096 values: every arithmetic operation, with one image and with two, and an
// operation that the host has never seen.

#include <string>
#include <type_traits>
#include <vector>

#include "Bench/BenchSupport.h"
#include "Host/Image/ComputeValue.h"
#include "Value/Operations/ArithmeticOperations.h"

namespace {

/// An operation of a class that nobody registered loops for.
class UnknownOperation : public ValueOperation {
 public:
  explicit UnknownOperation(float constant) { a = constant; }
  float Compute(float first, float second) override { return first + second; }
  float Compute(float value) override { return value + a; }
};

/// What one case moves, in images: `inputs` are read and one is written; a copy reads one and writes one.
double CopiesOfTheSameBytes(std::size_t inputs) { return static_cast<double>(inputs + 1) / 2.0; }

void RunComputeValue(benchmark::State& state, ValueOperation& operation, std::size_t num_inputs) {
  const ImagePtr first = Bench::MakeNoise(ColorMode::kValue, 1);
  const ImagePtr second = Bench::MakeNoise(ColorMode::kValue, 2);
  std::vector<const Image*> images{first.Get(), second.Get()};
  images.resize(num_inputs);
  Bench::RunAgainstCopy(state, *first, CopiesOfTheSameBytes(num_inputs), [&] {
    // A lone image's range is found anew each time, as for one that was just made.
    static_cast<void>(first->GetArray());
    const ImagePtr result(ComputeValue(images, &operation));
    benchmark::DoNotOptimize(result->GetConstArray());
  });
}

template <class Operation>
void RegisterOperation(const std::string& name) {
  for (const std::size_t inputs : {std::size_t{1}, std::size_t{2}}) {
    Bench::Register("ComputeValue/" + name + (inputs == 1 ? "/constant" : "/two_images"), Bench::Threads::kOneAndTwo,
                    [inputs](benchmark::State& state) {
                      Operation operation(1.7F);
                      RunComputeValue(state, operation, inputs);
                    });
  }
}

}  // namespace

void Bench::RegisterComputeValue() {
  RegisterOperation<AdditionOperation>("Addition");
  RegisterOperation<SubtractionOperation>("Subtraction");
  RegisterOperation<MultiplicationOperation>("Multiplication");
  RegisterOperation<DivideOperation>("Divide");
  RegisterOperation<MinimumOperation>("Minimum");
  RegisterOperation<MaximumOperation>("Maximum");
  RegisterOperation<PowerOperation>("Power");
  RegisterOperation<UnknownOperation>("Unknown");
}
