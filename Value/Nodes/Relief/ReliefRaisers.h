// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>

namespace ReliefLevels {

/// A bump: where its middle lies in the tree's plane, and its q.
struct Bump {
  float x;
  float y;
  float q;
};

/// The bumps that raised a pixel lately, without order.
class Raisers {
 public:
  void Add(const Bump& bump) {
    bumps_[static_cast<std::size_t>(next_) % kMost] = bump;
    ++next_;
  }
  [[nodiscard]] int GetCount() const { return next_ < kMost ? next_ : kMost; }
  [[nodiscard]] const Bump& Get(int i) const { return bumps_[static_cast<std::size_t>(i)]; }
  void Clear() { next_ = 0; }

 private:
  static constexpr int kMost = 16;
  std::array<Bump, kMost> bumps_;
  int next_ = 0;
};

}  // namespace ReliefLevels
