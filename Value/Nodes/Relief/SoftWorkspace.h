// SPDX-License-Identifier: Apache-2.0
//
// What a search for the largest samples around pixels works in.
#pragma once

#include <hwy/aligned_allocator.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

#include "Value/Nodes/Relief/SoftPlane.h"

namespace ReliefBevel {

/// What a group of pixels has found within the radii [begin, begin + count), one row of it after the other for each.
/// Before them it has found nothing above the base, behind them what it has found last.
struct History {
  int begin;
  int count;
  const float* found;
};

struct Workspace {
  struct Radii {
    int begin = 0;
    int count = 0;
    /// Beyond this radius nothing is known: all pixels may have found more.
    int last_known = 0;
    [[nodiscard]] std::size_t GetEntry(int radius) const {
      return static_cast<std::size_t>(std::clamp(radius - begin, 0, count - 1));
    }
  };
  struct Edge {
    Radii radii;
    std::vector<float> numbers;
  };

  /// Of a tile's numbers with room for a neighbour on each side.
  static constexpr std::size_t kStride = kTileColumns + 2 * kMostLanes;

  explicit Workspace(int radius)
      : found(Allocate(GetRadii(radius) * kTileRows * kTileColumns)),
        lowest(Allocate(GetRadii(radius) * kTileColumns)),
        rest(Allocate(kTileRows * kTileColumns)),
        numbers({Allocate(kStride * (kTileRows + 2)), Allocate(kStride * (kTileRows + 2))}) {}

  static std::size_t GetRadii(int radius) { return static_cast<std::size_t>(radius) + 1; }

  static hwy::AlignedFreeUniquePtr<float[]> Allocate(std::size_t count) {
    auto memory = hwy::AllocateAligned<float>(count);
    if (!memory) throw std::bad_alloc();
    return memory;
  }

  /// For each group of a tile what it has found within each radius.
  hwy::AlignedFreeUniquePtr<float[]> found;
  /// The same of the lowest row of the tile above, with the radii of each group.
  hwy::AlignedFreeUniquePtr<float[]> lowest;
  std::array<Radii, kTileColumns> above;
  /// The same of the last column of the tile before, for each row of groups.
  std::vector<Edge> before;
  /// For each pixel of a tile what the rings so far leave of what was there before.
  hwy::AlignedFreeUniquePtr<float[]> rest;
  /// What the pixels of a tile have found so far, and where that of the next ring goes.
  std::array<hwy::AlignedFreeUniquePtr<float[]>, 2> numbers;
};

/// Workspaces that are used again, since fresh memory costs time.
class Workspaces {
 public:
  explicit Workspaces(int radius) : radius_(radius) {}

  /// Calls `body` with a workspace of its own. May be called from many threads at once.
  template <class Body>
  void Lend(const Body& body) {
    std::unique_ptr<Workspace> workspace = Take();
    body(*workspace);
    const std::scoped_lock lock(mutex_);
    free_.push_back(std::move(workspace));
  }

 private:
  std::unique_ptr<Workspace> Take() {
    {
      const std::scoped_lock lock(mutex_);
      if (!free_.empty()) {
        auto workspace = std::move(free_.back());
        free_.pop_back();
        return workspace;
      }
    }
    return std::make_unique<Workspace>(radius_);
  }

  int radius_;
  std::mutex mutex_;
  std::vector<std::unique_ptr<Workspace>> free_;
};

}  // namespace ReliefBevel
