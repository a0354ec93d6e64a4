// SPDX-License-Identifier: Apache-2.0
// One source for two libraries, each with a class of the same name and a formula of its own.

#include <cstddef>
#include <typeinfo>

#include "Host/Image/ValueOperation.h"

#define TWIN_EXPORT extern "C" __attribute__((visibility("default")))

namespace {
constexpr float kFactor = VALUE_TWIN_FACTOR;
}

class TwinOperation : public ValueOperation {
 public:
  float Compute(float first, float second) override { return first + second * kFactor; }
  float Compute(float value) override { return value * kFactor; }
};

namespace {

void RunOne(const ValueOperation&, const float* values, float* to, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) to[i] = values[i] * kFactor;
}

void RunTwo(const ValueOperation&, const float* first, const float* second, float* to, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) to[i] = first[i] + second[i] * kFactor;
}

}  // namespace

TWIN_EXPORT ValueOperation* MakeTwin() { return new TwinOperation; }
TWIN_EXPORT void RegisterTwin() { ScEng::RegisterValueOperationLoops(typeid(TwinOperation), {RunOne, RunTwo, false}); }
TWIN_EXPORT void UnregisterTwin() { ScEng::UnregisterValueOperationLoops(typeid(TwinOperation)); }
TWIN_EXPORT bool HasTwin() { return ScEng::HasValueOperationLoops(typeid(TwinOperation)); }
TWIN_EXPORT const char* GetTwinName() { return typeid(TwinOperation).name(); }
