// SPDX-License-Identifier: Apache-2.0
//
// Ambient occlusion of fractal terrain, near and far. The cost must not grow in proportion to the radius.

#include <string>

#include "Bench/BenchSupport.h"
#include "Host/Gpu/GpuEngine.h"
#include "Host/Nodes/HostNodes.h"
#include "Host/Tools/Engine.h"

namespace {

/// The host's terrain: eight octaves, the first with eight hills along a side.
ImagePtr MakeTerrain() {
  Engine engine(ScEng::CreateHostCatalog());
  Node* terrain = engine.CreateNode(NodeType(10, 16, 40));
  terrain->GetAttribute("frame")->SetFrame(0, 0, Bench::kSide, Bench::kSide, false);
  terrain->GetAttribute("wavelength")->SetNumber(Bench::kSide / 8, false);
  engine.Evaluate({{terrain, 0}});
  return ScEng::MakeRef<Image>(*terrain->GetOutputImage(0));
}

void RunOcclusion(benchmark::State& state, float radius) {
  const ImagePtr terrain = MakeTerrain();
  // The device's program is compiled once per process; that is not what is timed.
  ScEng::Status status;
  const ImagePtr first(GpuEngine::Get()->ExecuteAmbientOcclusion(terrain.Get(), radius, 'p', status));
  if (!first) {
    state.SkipWithError(status.GetMessage().c_str());
    return;
  }
  Bench::RunAgainstCopy(state, *terrain, 1.0, [&] {
    const ImagePtr result(GpuEngine::Get()->ExecuteAmbientOcclusion(terrain.Get(), radius, 'p', status));
    benchmark::DoNotOptimize(result->GetConstArray());
  });
}

}  // namespace

void Bench::RegisterOcclusion() {
  for (const int radius : {3, 10, 30, 100}) {
    // The device has threads of its own.
    Bench::Register("AmbientOcclusion/terrain/radius_" + std::to_string(radius), Bench::Threads::kCaller,
                    [radius](benchmark::State& state) { RunOcclusion(state, static_cast<float>(radius)); });
  }
}
