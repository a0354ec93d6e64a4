// SPDX-License-Identifier: Apache-2.0
//
// The C library's functions over rows of floats, in double. GNU's has vectors of them, right to 4 of the last bits,
// which a compiler uses where it is told that it may.
#pragma once

#include <cstddef>

namespace Proofs {

using LibraryRow = void (*)(const float* values, double* to, std::size_t count);

void LibrarySine(const float* values, double* to, std::size_t count);
void LibraryCosine(const float* values, double* to, std::size_t count);
void LibraryTangent(const float* values, double* to, std::size_t count);
void LibraryArcSine(const float* values, double* to, std::size_t count);
void LibraryArcCosine(const float* values, double* to, std::size_t count);
void LibraryArcTangent(const float* values, double* to, std::size_t count);
void LibraryLog(const float* values, double* to, std::size_t count);
void LibraryExponential(const float* values, double* to, std::size_t count);
void LibraryCubicRoot(const float* values, double* to, std::size_t count);

void LibraryPower(const float* bases, const float* exponents, double* to, std::size_t count);

}  // namespace Proofs
