// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ReliefBevel {

/// The whole offsets of a disc in the order of their distances: ring c holds those with c - 1 < distance <= c, so that
/// rings 0 to c make up the disc of radius c.
///
/// The plane is cut into four wedges of 90 degrees, each around one of the four steps to a neighbouring pixel. Most
/// offsets of ring c are shared: they lie within c - 1 of the neighbour of their wedge. The others, about one in ten,
/// are apart.
///
/// `kBelt` rings together make a belt, which is cut into as many sectors in each wedge, in the order of their angles;
/// a sector fits into a square of `kWindow` pixels. Offsets are given as steps through planes with rows of `stride`
/// samples, whole cells.
struct DiscRings {
  static constexpr int kWindow = 16;
  static constexpr int kBelt = 8;
  static constexpr int kWedges = 4;
  static constexpr int kCell = 8;

  /// Rings 1 to `radius`.
  DiscRings(int radius, std::ptrdiff_t stride);

  static constexpr int GetBelt(int ring) { return (ring - 1) / kBelt; }
  static constexpr int GetFirstRing(int belt) { return belt * kBelt + 1; }

  struct Belt {
    /// Its first window.
    std::size_t first;
    /// The sectors of each wedge. Sector i of wedge w is sector w * sectors + i of the belt.
    std::size_t sectors;
  };
  /// Offsets of one kind, ring by ring, and in each by sectors.
  struct Offsets {
    std::vector<std::int32_t> offsets;
    /// For each ring and sector where its offsets begin; they end where the next begin.
    std::vector<std::uint32_t> begins;
  };

  std::vector<Belt> belts;
  /// For each sector of a belt the corner of a square that holds it. Beyond the sector it reaches towards the middle of
  /// the disc.
  std::vector<std::int32_t> windows;
  /// The same corners as steps through a table with one entry for each square of `kCell` pixels of the plane.
  std::vector<std::int32_t> cells;
  /// For each ring where the entries of its sectors begin in both `begins`.
  std::vector<std::size_t> rings;
  Offsets apart;
  Offsets shared;
};

}  // namespace ReliefBevel
