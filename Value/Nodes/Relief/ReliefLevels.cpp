// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Relief/ReliefLevels.h"

// Highway compiles the part between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE once per instruction set and calls
// the best one that the processor has.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Value/Nodes/Relief/ReliefLevels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cstddef>
#include <memory>

#include "Host/Util/Cancellation.h"
#include "Value/Nodes/Relief/ReliefSearch-inl.h"
#include "Value/Nodes/Relief/ReliefTree.h"

HWY_BEFORE_NAMESPACE();
namespace ReliefLevels::HWY_NAMESPACE {
namespace {

template <class ProfileOf>
void ComputeRowsAs(const Field& field, const Tree& tree, int from, int to, float* output) {
  Leaf<ProfileOf> leaf(field, tree);
  Raisers raisers;
  for (int x = 0; x < field.width; x += kLeafColumns) {
    ScEng::PollCancellation();
    for (int y = from; y < to; y += kLeafRows) leaf.Compute(x, y, std::min(kLeafRows, to - y), raisers, output);
  }
}

void ComputeRowsFast(const Field& field, const Tree& tree, int from, int to, float* output) {
  if (IsFlat(field)) return ComputeRowsAs<Flat>(field, tree, from, to, output);
  switch (field.profile) {
    case ReliefProfile::kLinear: return ComputeRowsAs<Linear>(field, tree, from, to, output);
    case ReliefProfile::kSmooth: return ComputeRowsAs<Smooth>(field, tree, from, to, output);
    case ReliefProfile::kArcOut: return ComputeRowsAs<ArcOut>(field, tree, from, to, output);
    case ReliefProfile::kArcIn: return ComputeRowsAs<ArcIn>(field, tree, from, to, output);
  }
}

}  // namespace
}  // namespace ReliefLevels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ReliefLevels {
namespace {

HWY_EXPORT(ComputeRowsFast);

void ComputeRowsWithoutCandidates(const Field& field, int from, int to, float* output) {
  const auto width = static_cast<std::size_t>(field.width);
  for (std::size_t i = static_cast<std::size_t>(from) * width; i < static_cast<std::size_t>(to) * width; ++i) {
    const float a = field.mask[i];
    output[i] = !(field.grown[i] > 0.0F) ? 0.0F : a >= field.high ? a : field.low;
  }
}

}  // namespace

Analysis::Analysis(const Field& field) : field_(field) {
  if (HasCandidates(field)) tree_ = std::make_unique<Tree>(field);
}

Analysis::~Analysis() = default;

void Analysis::ComputeRows(int from, int to, float* output) const {
  if (tree_) {
    HWY_DYNAMIC_DISPATCH(ComputeRowsFast)(field_, *tree_, from, to, output);
  } else {
    ComputeRowsWithoutCandidates(field_, from, to, output);
  }
}

}  // namespace ReliefLevels
#endif
