// SPDX-License-Identifier: Apache-2.0
//
// The functions with about 100 bits, for the arguments at which a double does not tell which float is nearest: about
// one in some 300,000. One value at a time and the same on every processor.
//
// `argument` is finite, not 0 and, where the function has a domain, inside it. `estimate` is the function in double,
// right to about 40 bits, for those functions that improve it.
#pragma once

#include <optional>

namespace NearestFloat::SlowWay {

float Sine(float argument, double estimate);
float Cosine(float argument, double estimate);
float Tangent(float argument, double estimate);
float ArcSine(float argument, double estimate);
float ArcCosine(float argument, double estimate);
float ArcTangent(float argument, double estimate);
float Log(float argument, double estimate);
float Exponential(float argument, double estimate);
float CubicRoot(float argument, double estimate);

// The power has as many pairs of arguments as there are doubles, too many to try them all: where 100 bits do not tell
// either, it is computed with 150. The base is finite and not 0, and above 0 unless the exponent is a whole number.

float Power(float base, float exponent);

/// The power where it is a number with at most 53 bits, such as 5001^2 or 2.25^1.5, rounded to float. These are the
/// only powers that can lie half way between two floats. The base is above 0.
std::optional<float> PowerIfExact(float base, float exponent);
/// With 100 bits, or nothing where they do not tell. The base is above 0, and the power no special value.
std::optional<float> PowerByPairs(float base, float exponent);
/// With 150 bits. As before, and the power is not exact.
float PowerByDigits(float base, float exponent);

}  // namespace NearestFloat::SlowWay
