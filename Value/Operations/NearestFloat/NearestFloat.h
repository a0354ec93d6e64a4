// SPDX-License-Identifier: Apache-2.0
//
// Functions whose results are the floats nearest to the true values, for every float: on every processor, by every C
// library and for one value as for a row the same bits. They are computed in double; where a double is so near to the
// middle between two floats that its own error decides, they are computed again with 100 bits.
//
// Special values are those of the C library's functions of the same meaning.
#pragma once

#include <cstddef>

namespace ScEng {
struct RowPass;
struct RowRanges;
}  // namespace ScEng

namespace NearestFloat {

float Sine(float value);
float Cosine(float value);
float Tangent(float value);
/// At and below -1, and for NaN, minus half pi; at and above 1 half pi.
float ArcSine(float value);
/// At and below -1, and for NaN, pi; at and above 1 zero.
float ArcCosine(float value);
float ArcTangent(float value);
/// The natural logarithm.
float Log(float value);
float Exponential(float value);
float CubicRoot(float value);
float Power(float base, float exponent);

// The same for `count` values, in vectors. `to` does not overlap the values.

void Sine(const float* values, float* to, std::size_t count);
void Cosine(const float* values, float* to, std::size_t count);
void Tangent(const float* values, float* to, std::size_t count);
void ArcSine(const float* values, float* to, std::size_t count);
void ArcCosine(const float* values, float* to, std::size_t count);
void ArcTangent(const float* values, float* to, std::size_t count);
void Log(const float* values, float* to, std::size_t count);
void Exponential(const float* values, float* to, std::size_t count);
void CubicRoot(const float* values, float* to, std::size_t count);
void Power(const float* bases, float exponent, float* to, std::size_t count);
void Power(const float* bases, const float* exponents, float* to, std::size_t count);

// The same in one pass with what the host's evaluator does besides.

ScEng::RowRanges Sine(const ScEng::RowPass& row);
ScEng::RowRanges Cosine(const ScEng::RowPass& row);
ScEng::RowRanges Tangent(const ScEng::RowPass& row);
ScEng::RowRanges ArcSine(const ScEng::RowPass& row);
ScEng::RowRanges ArcCosine(const ScEng::RowPass& row);
ScEng::RowRanges ArcTangent(const ScEng::RowPass& row);
ScEng::RowRanges Log(const ScEng::RowPass& row);
ScEng::RowRanges Exponential(const ScEng::RowPass& row);
ScEng::RowRanges CubicRoot(const ScEng::RowPass& row);

}  // namespace NearestFloat
