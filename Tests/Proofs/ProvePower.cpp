// SPDX-License-Identifier: Apache-2.0
//
// Proves that the power gives the float nearest to the true value, for every float to the powers of 1/2, 2, 2.2, 1/2.2,
// 3 and -1, and for random pairs:
//
//     prove-power exponents
//     prove-power pairs NUMBER SEED
//
// As for the functions of one value, the C library's double says which float is the nearest one where it can, and MPFR
// elsewhere. Rows are computed with the best instruction set, and with one that has no fused multiplication and
// addition: all of the first, and every eighth row of pairs. Every 61st float is also computed one value at a time.
//
// In half of the pairs both are any two floats with a base from 0 up; in the others the exponent is such that the power
// lies evenly from 2^-151 to 2^129 by its logarithm.

#include <hwy/targets.h>
#include <mpfr.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Tests/Proofs/TrueValue.h"
#include "Value/Operations/NearestFloat/NearestFloat.h"

namespace {

constexpr std::size_t kRow = 4096;
using Row = std::array<float, kRow>;

struct Tally {
  std::uint64_t computed = 0;
  std::uint64_t decided = 0;
  std::uint64_t wrong = 0;
  std::uint64_t other_in_library = 0;
};

float GetExpected(float base, float exponent, Tally& tally) {
  const double library = std::pow(static_cast<double>(base), static_cast<double>(exponent));
  const auto narrowed = static_cast<float>(library);
  ++tally.computed;
  if (Proofs::IsSure(library)) return narrowed;
  ++tally.decided;
  const float expected = Proofs::GetTrueValue(mpfr_pow, base, exponent);
  if (!Proofs::AreSame(narrowed, expected) && ++tally.other_in_library <= 12) {
    std::printf("  the C library's double of %a ^ %a narrows to %a, not %a\n", static_cast<double>(base),
                static_cast<double>(exponent), static_cast<double>(narrowed), static_cast<double>(expected));
  }
  return expected;
}

void Check(float base, float exponent, float result, float expected, Tally& tally) {
  if (Proofs::AreSame(result, expected)) return;
  if (++tally.wrong <= 20) {
    std::printf("  WRONG: %a ^ %a gives %a, not %a\n", static_cast<double>(base), static_cast<double>(exponent),
                static_cast<double>(result), static_cast<double>(expected));
  }
}

/// Checks a row, with the instruction sets of `unfused` or all.
void CheckRow(const Row& bases, const Row& exponents, const Row& expected, bool unfused, Tally& tally) {
  static Row results;
  if (unfused) hwy::SetSupportedTargetsForTest(HWY_SSE4);
  NearestFloat::Power(bases.data(), exponents.data(), results.data(), kRow);
  for (std::size_t i = 0; i < kRow; ++i) Check(bases[i], exponents[i], results[i], expected[i], tally);
  hwy::SetSupportedTargetsForTest(0);
}

void CheckSome(const Row& bases, const Row& exponents, const Row& expected, std::uint64_t row, Tally& tally) {
  constexpr std::size_t kOneOf = 61;
  for (std::size_t i = row % kOneOf; i < kRow; i += kOneOf) {
    Check(bases[i], exponents[i], NearestFloat::Power(bases[i], exponents[i]), expected[i], tally);
  }
}

bool Report(const char* what, const Tally& tally) {
  std::printf(
      "%s: %llu powers, of which MPFR decided %llu; wrong: %llu; the C library's double narrows to another: %llu\n",
      what, static_cast<unsigned long long>(tally.computed), static_cast<unsigned long long>(tally.decided),
      static_cast<unsigned long long>(tally.wrong), static_cast<unsigned long long>(tally.other_in_library));
  std::fflush(stdout);
  return tally.wrong == 0;
}

bool ProveExponent(float exponent, const char* what) {
  constexpr std::uint64_t kRows = (std::uint64_t{1} << 32U) / kRow;
  static Row bases;
  static Row exponents;
  static Row expected;
  static Row results;
  Tally tally;
  exponents.fill(exponent);
  for (std::uint64_t row = 0; row < kRows; ++row) {
    for (std::size_t i = 0; i < kRow; ++i) {
      bases[i] = std::bit_cast<float>(static_cast<std::uint32_t>(row * kRow + i));
      expected[i] = GetExpected(bases[i], exponent, tally);
    }
    CheckRow(bases, exponents, expected, false, tally);
    CheckRow(bases, exponents, expected, true, tally);
    NearestFloat::Power(bases.data(), exponent, results.data(), kRow);
    for (std::size_t i = 0; i < kRow; ++i) Check(bases[i], exponent, results[i], expected[i], tally);
    CheckSome(bases, exponents, expected, row, tally);
  }
  return Report(what, tally);
}

/// Steele and Vigna's splitmix64.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}
  std::uint64_t Next() {
    std::uint64_t mixed = state_ += 0x9E3779B97F4A7C15U;
    mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
    return mixed ^ (mixed >> 31U);
  }

 private:
  std::uint64_t state_;
};

bool ProvePairs(std::uint64_t number, std::uint64_t seed) {
  static Row bases;
  static Row exponents;
  static Row expected;
  Tally tally;
  Random random(seed);
  for (std::uint64_t row = 0; row * kRow < number; ++row) {
    for (std::size_t i = 0; i < kRow; ++i) {
      const std::uint64_t bits = random.Next();
      bases[i] = std::bit_cast<float>(static_cast<std::uint32_t>(bits & 0x7FFFFFFFU));
      exponents[i] = std::bit_cast<float>(static_cast<std::uint32_t>(bits >> 32U));
      if (i % 2 == 0 && bases[i] > 0.0F && std::isfinite(bases[i]) && bases[i] != 1.0F) {
        const double share = static_cast<double>(bits >> 32U) * 0x1p-32;
        exponents[i] = static_cast<float>((share * 280.0 - 151.0) / std::log2(bases[i]));
      }
      expected[i] = GetExpected(bases[i], exponents[i], tally);
    }
    CheckRow(bases, exponents, expected, false, tally);
    if (row % 8 == 0) CheckRow(bases, exponents, expected, true, tally);
    CheckSome(bases, exponents, expected, row, tally);
  }
  return Report("random pairs", tally);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "exponents") == 0) {
    struct Exponent {
      float value;
      const char* name;
    };
    bool right = true;
    for (const auto& [value, name] : {Exponent{0.5F, "1/2"}, Exponent{2.0F, "2"}, Exponent{2.2F, "2.2"},
                                      Exponent{1.0F / 2.2F, "1/2.2"}, Exponent{3.0F, "3"}, Exponent{-1.0F, "-1"}}) {
      right = ProveExponent(value, name) && right;
    }
    return right ? EXIT_SUCCESS : EXIT_FAILURE;
  }
  if (argc == 4 && std::strcmp(argv[1], "pairs") == 0) {
    const bool right = ProvePairs(std::strtoull(argv[2], nullptr, 10), std::strtoull(argv[3], nullptr, 10));
    return right ? EXIT_SUCCESS : EXIT_FAILURE;
  }
  std::fprintf(stderr, "prove-power: takes \"exponents\", or \"pairs\" with a number and a seed\n");
  return EXIT_FAILURE;
}
