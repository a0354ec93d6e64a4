// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ReliefBevel {

/// The whole offsets of a disc in the order of their distances: ring c holds those with c - 1 < distance <= c, so that
/// rings 0 to c make up the disc of radius c.
///
/// A ring is cut into short arcs, each of which fits into a square of `kWindow` pixels; `kBelt` rings together make a
/// belt, which is cut into sectors. Offsets are given as steps through planes with rows of `stride` samples.
struct DiscRings {
  static constexpr int kWindow = 8;
  static constexpr int kBelt = 8;
  /// The most columns and rows that a sector takes.
  static constexpr int kWidestSector = 40;

  /// Rings 1 to `radius`.
  DiscRings(int radius, std::ptrdiff_t stride);

  struct Arc {
    /// The corner of a square of `kWindow` pixels that holds the arc. Beyond the arc it reaches towards the middle of
    /// the disc.
    std::int32_t window;
    /// Where its offsets begin; they end where the next arc's begin.
    std::uint32_t first;
  };
  struct Sector {
    /// The least column and row.
    std::int32_t left;
    std::int32_t top;
  };

  static constexpr int GetBelt(int ring) { return (ring - 1) / kBelt; }
  static constexpr int GetFirstRing(int belt) { return belt * kBelt + 1; }

  std::vector<std::int32_t> offsets;
  std::vector<Arc> arcs;
  std::vector<Sector> sectors;
  /// Where the sectors of a belt begin.
  std::vector<std::uint32_t> belts;
  /// For each ring, where the entries of its sectors begin in `parts`; and for each of these where its arcs begin.
  /// Both end where the next begin.
  std::vector<std::uint32_t> rings;
  std::vector<std::uint32_t> parts;
};

}  // namespace ReliefBevel
