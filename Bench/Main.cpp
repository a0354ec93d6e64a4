// SPDX-License-Identifier: Apache-2.0
//
// The benchmark program. Every case also times a plain copy of the same bytes, in turn with the code under test, and
// reports the ratio of the two medians as "x_copy".

#include <benchmark/benchmark.h>

#include "Bench/BenchSupport.h"

int main(int argc, char** argv) {
  Bench::RegisterComponents();
  Bench::RegisterComputeValue();
  Bench::RegisterFilter();
  Bench::RegisterNodes();
  Bench::RegisterOcclusion();
  Bench::RegisterRegion();
  Bench::RegisterRelief();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
