// SPDX-License-Identifier: Apache-2.0
//
// Compiled with -ffast-math, without which no compiler takes the vectors of the C library.
#include "Tests/Proofs/LibraryRows.h"

#include <cmath>
#include <cstddef>

#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
#define FOR_EVERY_PROCESSOR __attribute__((target_clones("avx512f", "avx2", "default")))
#else
#define FOR_EVERY_PROCESSOR
#endif

namespace Proofs {

#define ROW(Name, function)                                                                      \
  FOR_EVERY_PROCESSOR void Name(const float* values, double* __restrict to, std::size_t count) { \
    for (std::size_t i = 0; i < count; ++i) to[i] = function(static_cast<double>(values[i]));    \
  }

ROW(LibrarySine, ::sin)
ROW(LibraryCosine, ::cos)
ROW(LibraryTangent, ::tan)
ROW(LibraryArcSine, ::asin)
ROW(LibraryArcCosine, ::acos)
ROW(LibraryArcTangent, ::atan)
ROW(LibraryLog, ::log)
ROW(LibraryExponential, ::exp)
ROW(LibraryCubicRoot, ::cbrt)

FOR_EVERY_PROCESSOR void LibraryPower(const float* bases, const float* exponents, double* __restrict to,
                                      std::size_t count) {
  for (std::size_t i = 0; i < count; ++i)
    to[i] = ::pow(static_cast<double>(bases[i]), static_cast<double>(exponents[i]));
}

}  // namespace Proofs
