// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <bit>
#include <cstdint>

namespace ComponentLabels {

/// The runs of pixels that are known to belong together, as trees: union-find with path halving.
///
/// A run's entry is its parent, a run of the same component that comes no later; a root is its own parent. The entries
/// are kept as the bits of floats, in memory of the caller's for as many of them as there are runs.
class RunForest {
 public:
  explicit RunForest(float* entries) : entries_(entries) {}

  /// A new run on its own.
  void Add(std::uint32_t run) { SetParent(run, run); }
  [[nodiscard]] std::uint32_t GetParent(std::uint32_t run) const { return std::bit_cast<std::uint32_t>(entries_[run]); }

  /// Makes one component of those of two runs; its root is the earlier one of theirs.
  void Unite(std::uint32_t run, std::uint32_t other) {
    const std::uint32_t root = FindRoot(run);
    const std::uint32_t other_root = FindRoot(other);
    if (root < other_root) {
      SetParent(other_root, root);
    } else {
      SetParent(root, other_root);
    }
  }

 private:
  void SetParent(std::uint32_t run, std::uint32_t parent) { entries_[run] = std::bit_cast<float>(parent); }

  std::uint32_t FindRoot(std::uint32_t run) {
    for (std::uint32_t parent = GetParent(run); parent != run; parent = GetParent(run)) {
      const std::uint32_t grandparent = GetParent(parent);
      SetParent(run, grandparent);
      run = grandparent;
    }
    return run;
  }

  float* entries_;
};

}  // namespace ComponentLabels
