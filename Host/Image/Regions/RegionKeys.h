// SPDX-License-Identifier: Apache-2.0
//
// Samples as numbers that are compared as whole ones, and the loops over rows of them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ScEng {

/// A sample as a whole number in the order of the samples, NaN as the least (`kNothing`) of all. -0.0 comes before
/// +0.0. For the smallest sample the order is turned round, so that the largest number wins in either case.
using RegionKey = std::int32_t;
inline constexpr RegionKey kNothing = INT32_MIN;

/// What holds of the length of every row of keys, so that vectors need no remainder (the longest is 64 of them).
inline constexpr int kKeyUnit = 64;

/// Rows that are taken in together.
inline constexpr int kRowsAtOnce = 4;

/// The loops for this processor, chosen once for an operation. Each goes over `count` keys, or, where that is no whole
/// number of `kKeyUnit`, a few more. Rows that nothing is said of are aligned to 64 bytes.
struct RegionKeyLoops {
  RegionKeyLoops();

  /// Samples to keys and back, from and to any place; `negate` turns the order round.
  void (*to_keys)(const float* samples, std::size_t count, bool negate, RegionKey* keys);
  void (*from_keys)(const RegionKey* keys, std::size_t count, bool negate, float* samples);
  /// Makes a table over runs of `length` one over runs of twice that length, in place: entry x holds the largest key of
  /// a run that begins at x. Entries up to `count` are made from entries up to `count` + `length`.
  void (*double_runs)(RegionKey* keys, std::size_t count, std::size_t length);
  /// The largest of two runs each, from any places, which overlap to one chord.
  void (*join_runs)(const RegionKey* left, const RegionKey* right, std::size_t count, RegionKey* to);
  /// Takes the keys of `kRowsAtOnce` rows into `to`.
  void (*take_in)(const RegionKey* const* rows, std::size_t count, RegionKey* to);
};

}  // namespace ScEng
