// SPDX-License-Identifier: Apache-2.0
//
// Proves that the functions of one value give the float nearest to the true value for each of the 2^32 floats:
//
//     prove-functions [NAME ...]
//
// The C library's double, here from its vectors, is right to 45 bits: where both ends of that interval round to the
// same float, that float is the nearest one. Elsewhere MPFR says which is. The program says how many of the floats MPFR
// decided, and where the C library's double of one value, narrowed, is another float.
//
// Each function is computed in rows, with the best instruction set of the processor and with one that has no fused
// multiplication and addition, and every 61st float one value at a time. Of odd and even functions the C library
// computes the floats from 0 up; those below have the same result but for the sign.

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
#include <string>

#include "Host/Math/Constants.h"
#include "Tests/Proofs/LibraryRows.h"
#include "Tests/Proofs/TrueValue.h"
#include "Value/Operations/NearestFloat/NearestFloat.h"

namespace {

/// How a function of a negated float follows.
enum class Symmetry { kNone, kOdd, kEven };

struct Function {
  const char* name;
  float (*one)(float);
  void (*row)(const float*, float*, std::size_t);
  double (*library)(double);
  Proofs::LibraryRow library_row;
  Proofs::MpfrFunction true_value;
  Symmetry symmetry;
};

constexpr std::array<Function, 9> kFunctions{{
    {"sine", NearestFloat::Sine, NearestFloat::Sine, std::sin, Proofs::LibrarySine, mpfr_sin, Symmetry::kOdd},
    {"cosine", NearestFloat::Cosine, NearestFloat::Cosine, std::cos, Proofs::LibraryCosine, mpfr_cos, Symmetry::kEven},
    {"tangent", NearestFloat::Tangent, NearestFloat::Tangent, std::tan, Proofs::LibraryTangent, mpfr_tan,
     Symmetry::kOdd},
    // Not odd, as NaN has a result of its own.
    {"arc_sine", NearestFloat::ArcSine, NearestFloat::ArcSine, std::asin, Proofs::LibraryArcSine, mpfr_asin,
     Symmetry::kNone},
    {"arc_cosine", NearestFloat::ArcCosine, NearestFloat::ArcCosine, std::acos, Proofs::LibraryArcCosine, mpfr_acos,
     Symmetry::kNone},
    {"arc_tangent", NearestFloat::ArcTangent, NearestFloat::ArcTangent, std::atan, Proofs::LibraryArcTangent, mpfr_atan,
     Symmetry::kOdd},
    {"log", NearestFloat::Log, NearestFloat::Log, std::log, Proofs::LibraryLog, mpfr_log, Symmetry::kNone},
    {"exponential", NearestFloat::Exponential, NearestFloat::Exponential, std::exp, Proofs::LibraryExponential,
     mpfr_exp, Symmetry::kNone},
    {"cubic_root", NearestFloat::CubicRoot, NearestFloat::CubicRoot, std::cbrt, Proofs::LibraryCubicRoot, mpfr_cbrt,
     Symmetry::kOdd},
}};

/// What the arc sine and the arc cosine are outside the range in which they are defined.
bool IsGuarded(const Function& function, float value, float& result) {
  const bool is_sine = function.library == static_cast<double (*)(double)>(std::asin);
  if (!is_sine && function.library != static_cast<double (*)(double)>(std::acos)) return false;
  if (!(value > -1.0F)) {
    result = is_sine ? -ScEng::Math<float>::HALF_PI : ScEng::Math<float>::PI;
  } else if (!(value < 1.0F)) {
    result = is_sine ? ScEng::Math<float>::HALF_PI : 0.0F;
  } else {
    return false;
  }
  return true;
}

struct Tally {
  std::uint64_t decided = 0;
  std::uint64_t wrong = 0;
  std::uint64_t other_in_library = 0;
  Proofs::Hardest hardest;
};

/// The float nearest to the function's true value, which `library` is to 45 bits.
float GetExpected(const Function& function, float value, double library, Tally& tally) {
  float expected = 0.0F;
  if (IsGuarded(function, value, expected)) return expected;
  if (Proofs::IsSure(library)) return static_cast<float>(library);
  // A float stands for its mirror image too.
  const std::uint64_t floats = function.symmetry == Symmetry::kNone ? 1 : 2;
  tally.decided += floats;
  expected = Proofs::GetTrueValue(function.true_value, value, &tally.hardest);
  const auto narrowed = static_cast<float>(function.library(static_cast<double>(value)));
  if (!Proofs::AreSame(narrowed, expected)) {
    tally.other_in_library += floats;
    if (tally.other_in_library <= 24) {
      std::printf("  the C library's double at %a narrows to %a, not %a\n", static_cast<double>(value),
                  static_cast<double>(narrowed), static_cast<double>(expected));
    }
  }
  return expected;
}

constexpr std::size_t kRow = 4096;
using Row = std::array<float, kRow>;

void Check(const Row& values, const Row& results, const Row& expected, Tally& tally) {
  if (std::memcmp(results.data(), expected.data(), sizeof(Row)) == 0) return;
  // Any NaN is as good as any other.
  for (std::size_t i = 0; i < kRow; ++i) {
    if (Proofs::AreSame(results[i], expected[i]) || ++tally.wrong > 20) continue;
    std::printf("  WRONG: %a gives %a, not %a\n", static_cast<double>(values[i]), static_cast<double>(results[i]),
                static_cast<double>(expected[i]));
  }
}

void CheckRow(const Function& function, const Row& values, const Row& expected, Tally& tally) {
  static Row results;
  function.row(values.data(), results.data(), kRow);
  Check(values, results, expected, tally);
  hwy::SetSupportedTargetsForTest(HWY_SSE4);
  function.row(values.data(), results.data(), kRow);
  hwy::SetSupportedTargetsForTest(0);
  Check(values, results, expected, tally);
  results = expected;
  constexpr std::uint32_t kOneOf = 61;
  for (std::size_t i = std::bit_cast<std::uint32_t>(values[0]) / kRow % kOneOf; i < kRow; i += kOneOf) {
    results[i] = function.one(values[i]);
  }
  Check(values, results, expected, tally);
}

void GetExpectedRow(const Function& function, const Row& values, Row& expected, Tally& tally) {
  static std::array<double, kRow> library;
  // Outside its range the C library is slow, and not asked. The floats of a row are neighbours.
  float ignored = 0.0F;
  const bool is_guarded = IsGuarded(function, values.front(), ignored) && IsGuarded(function, values.back(), ignored);
  if (!is_guarded) function.library_row(values.data(), library.data(), kRow);
  for (std::size_t i = 0; i < kRow; ++i) expected[i] = GetExpected(function, values[i], library[i], tally);
}

bool Prove(const Function& function) {
  constexpr std::uint64_t kFloatsFromZeroUp = std::uint64_t{1} << 31U;
  static Row values;
  static Row expected;
  Tally tally;
  for (std::uint64_t from = 0; from < kFloatsFromZeroUp; from += kRow) {
    for (std::size_t i = 0; i < kRow; ++i) values[i] = std::bit_cast<float>(static_cast<std::uint32_t>(from + i));
    GetExpectedRow(function, values, expected, tally);
    CheckRow(function, values, expected, tally);
    for (float& value : values) value = -value;
    if (function.symmetry == Symmetry::kNone) GetExpectedRow(function, values, expected, tally);
    if (function.symmetry == Symmetry::kOdd) {
      for (float& result : expected) result = -result;
    }
    CheckRow(function, values, expected, tally);
  }
  std::printf(
      "%s: 2^32 floats, of which MPFR decided %llu; wrong: %llu; the C library's double narrows to another: %llu\n",
      function.name, static_cast<unsigned long long>(tally.decided), static_cast<unsigned long long>(tally.wrong),
      static_cast<unsigned long long>(tally.other_in_library));
  std::printf("  nearest to the middle between two floats: %a gives %a, 2^%.1f beside it\n",
              static_cast<double>(tally.hardest.argument), static_cast<double>(tally.hardest.result),
              tally.hardest.distance);
  std::fflush(stdout);
  return tally.wrong == 0;
}

}  // namespace

int main(int argc, char** argv) {
  bool right = true;
  bool any = false;
  for (const Function& function : kFunctions) {
    bool chosen = argc < 2;
    for (int i = 1; i < argc; ++i) chosen = chosen || std::string(argv[i]) == function.name;
    if (!chosen) continue;
    any = true;
    right = Prove(function) && right;
  }
  if (!any) std::fprintf(stderr, "prove-functions: no such function\n");
  return right && any ? EXIT_SUCCESS : EXIT_FAILURE;
}
