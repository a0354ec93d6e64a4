// SPDX-License-Identifier: Apache-2.0
//
// Proves that the power gives the float nearest to the true value, for every float to the powers of 1/2, 2, 2.2, 1/2.2,
// 3 and -1, and for random pairs:
//
//     prove-power exponents
//     prove-power pairs NUMBER SEED
//
// For the powers of 1/2, 2 and -1 the processor's square root, product and quotient are the nearest floats by their
// definition. For others the C library's double, which is right to 45 bits, says which float is the nearest one where
// it can, and MPFR elsewhere. Rows are computed with the best instruction set, every eighth also with one that has no
// fused multiplication and addition, and every 61st float of those one value at a time.
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

#include "Tests/Proofs/LibraryRows.h"
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

/// The float nearest to the true power, which `library` is to 45 bits.
float GetExpected(float base, float exponent, double library, Tally& tally) {
  ++tally.computed;
  if (Proofs::IsSure(library)) return static_cast<float>(library);
  ++tally.decided;
  const auto narrowed = static_cast<float>(std::pow(static_cast<double>(base), static_cast<double>(exponent)));
  const float expected = Proofs::GetTrueValue(mpfr_pow, base, exponent);
  if (!Proofs::AreSame(narrowed, expected) && ++tally.other_in_library <= 12) {
    std::printf("  the C library's double of %a ^ %a narrows to %a, not %a\n", static_cast<double>(base),
                static_cast<double>(exponent), static_cast<double>(narrowed), static_cast<double>(expected));
  }
  return expected;
}

void Check(const Row& bases, const Row& exponents, const Row& results, const Row& expected, Tally& tally) {
  if (std::memcmp(results.data(), expected.data(), sizeof(Row)) == 0) return;
  // Any NaN is as good as any other.
  for (std::size_t i = 0; i < kRow; ++i) {
    if (Proofs::AreSame(results[i], expected[i]) || ++tally.wrong > 20) continue;
    std::printf("  WRONG: %a ^ %a gives %a, not %a\n", static_cast<double>(bases[i]), static_cast<double>(exponents[i]),
                static_cast<double>(results[i]), static_cast<double>(expected[i]));
  }
}

/// Checks a row, with the instruction sets of `unfused` or all.
void CheckRow(const Row& bases, const Row& exponents, const Row& expected, bool unfused, Tally& tally) {
  static Row results;
  if (unfused) hwy::SetSupportedTargetsForTest(HWY_SSE4);
  NearestFloat::Power(bases.data(), exponents.data(), results.data(), kRow);
  Check(bases, exponents, results, expected, tally);
  hwy::SetSupportedTargetsForTest(0);
}

void CheckSome(const Row& bases, const Row& exponents, const Row& expected, std::uint64_t row, Tally& tally) {
  constexpr std::size_t kOneOf = 61;
  static Row results;
  results = expected;
  for (std::size_t i = row % kOneOf; i < kRow; i += kOneOf) {
    results[i] = NearestFloat::Power(bases[i], exponents[i]);
  }
  Check(bases, exponents, results, expected, tally);
}

bool Report(const char* what, const Tally& tally) {
  std::printf(
      "%s: %llu powers, of which MPFR decided %llu; wrong: %llu; the C library's double narrows to another: %llu\n",
      what, static_cast<unsigned long long>(tally.computed), static_cast<unsigned long long>(tally.decided),
      static_cast<unsigned long long>(tally.wrong), static_cast<unsigned long long>(tally.other_in_library));
  std::fflush(stdout);
  return tally.wrong == 0;
}

/// Where the processor has an operation for the power, that, else as for pairs.
float GetExpectedOfConstant(float base, float exponent, double library, Tally& tally) {
  // The powers of what is below 0 to the fractional exponents, but for those of infinity.
  const bool is_whole = exponent == std::trunc(exponent);
  ++tally.computed;
  if (exponent == 2.0F) return base * base;
  if (exponent == -1.0F) return 1.0F / base;
  if (base < 0.0F && !is_whole) return std::isinf(base) ? -base : NAN;
  // The square root keeps the sign of zeros, which the power does not.
  if (exponent == 0.5F) return std::sqrt(base) + 0.0F;
  --tally.computed;
  return GetExpected(base, exponent, library, tally);
}

bool ProveExponent(float exponent, const char* what) {
  constexpr std::uint64_t kRows = (std::uint64_t{1} << 32U) / kRow;
  static Row bases;
  static Row exponents;
  static Row expected;
  static Row results;
  Tally tally;
  static std::array<double, kRow> library;
  const bool uses_library = exponent != 0.5F && exponent != 2.0F && exponent != -1.0F;
  exponents.fill(exponent);
  for (std::uint64_t row = 0; row < kRows; ++row) {
    for (std::size_t i = 0; i < kRow; ++i) bases[i] = std::bit_cast<float>(static_cast<std::uint32_t>(row * kRow + i));
    if (uses_library) Proofs::LibraryPower(bases.data(), exponents.data(), library.data(), kRow);
    for (std::size_t i = 0; i < kRow; ++i) {
      expected[i] = GetExpectedOfConstant(bases[i], exponent, library[i], tally);
    }
    // The row of a constant exponent, and of two images where the former is a plain operation.
    NearestFloat::Power(bases.data(), exponent, results.data(), kRow);
    Check(bases, exponents, results, expected, tally);
    if (exponent == 2.0F || exponent == -1.0F) CheckRow(bases, exponents, expected, false, tally);
    if (row % 8 != 0) continue;
    CheckRow(bases, exponents, expected, true, tally);
    CheckSome(bases, exponents, expected, row / 8, tally);
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
  static std::array<double, kRow> library;
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
    }
    Proofs::LibraryPower(bases.data(), exponents.data(), library.data(), kRow);
    for (std::size_t i = 0; i < kRow; ++i) expected[i] = GetExpected(bases[i], exponents[i], library[i], tally);
    CheckRow(bases, exponents, expected, false, tally);
    if (row % 8 != 0) continue;
    CheckRow(bases, exponents, expected, true, tally);
    CheckSome(bases, exponents, expected, row / 8, tally);
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
