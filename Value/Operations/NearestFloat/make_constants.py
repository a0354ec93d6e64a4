#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Works out the constants of the functions that give the nearest float, and writes them as Constants.h.

    Value/Operations/NearestFloat/make_constants.py > Value/Operations/NearestFloat/Constants.h
    clang-format -i Value/Operations/NearestFloat/Constants.h

Needs Debian's python3-mpmath. The error of each polynomial goes to standard error, as a power of two relative to the
function. A polynomial passes through the function at Chebyshev's points of its interval, which is within a factor of
about two of the best polynomial.
"""
import sys

from mpmath import asin, atan, cos, exp, fabs, factorial, floor, log, lu_solve, matrix, mp, mpf, pi, polyval, sin, sqrt

mp.prec = 400


def double_of(number):
    """The double nearest to a number."""
    return mpf(float(number))


def hexadecimal(number):
    return float(number).hex()


def interpolate(function, low, high, degree):
    """Coefficients, constant first, of the polynomial through `function` at Chebyshev's points."""
    nodes = [(low + high) / 2 + (high - low) / 2 * cos(pi * (2 * k + 1) / (2 * degree + 2)) for k in range(degree + 1)]
    system = matrix(degree + 1, degree + 1)
    values = matrix(degree + 1, 1)
    for row, node in enumerate(nodes):
        values[row] = function(node)
        for column in range(degree + 1):
            system[row, column] = node**column
    solution = lu_solve(system, values)
    return [double_of(solution[k]) for k in range(degree + 1)]


def report(name, relative_error, low, high):
    worst = mpf(0)
    for k in range(1, 2000):
        worst = max(worst, fabs(relative_error(low + (high - low) * k / 2000)))
    print(f"{name}: 2^{float(log(worst, 2)):.1f}", file=sys.stderr)


def print_array(name, numbers, comment):
    print(f"/// {comment}")
    print(f"inline constexpr double {name}[] = {{{', '.join(hexadecimal(n) for n in numbers)}}};")


def print_polynomial(name, comment, function, low, high, degree, whole, full):
    """One polynomial; `whole(p, z)` is what the kernel makes of its value, `full(z)` the function that it stands for."""
    coefficients = interpolate(function, low, high, degree)
    report(name, lambda z: whole(polyval(coefficients[::-1], z), z) / full(z) - 1, low, high)
    print_array(name, coefficients, comment)


def split(number, *bits):
    """The number as a sum of doubles of so many bits each, and a last one of 53 bits."""
    parts = []
    rest = number
    for count in bits:
        scale = mpf(2)**(count - 1 - int(floor(log(fabs(rest), 2))))
        part = floor(rest * scale) / scale
        parts.append(part)
        rest -= part
    return parts + [double_of(rest)]


def pair(number):
    high = double_of(number)
    return [high, double_of(number - high)]


def print_pairs(name, numbers, comment):
    print(f"/// {comment}")
    rows = ", ".join("{" + ", ".join(hexadecimal(part) for part in pair(n)) + "}" for n in numbers)
    print(f"inline constexpr DoubleDouble {name}[] = {{{rows}}};")


def print_pair(name, number, comment):
    print(f"/// {comment}")
    print(f"inline constexpr DoubleDouble {name} = {{{', '.join(hexadecimal(part) for part in pair(number))}}};")


def print_parts(name, number, comment, *bits):
    print_array(name, split(number, *bits), comment)


def part_of_turn(exponent):
    """2^exponent / pi without whole multiples of 2, in parts of 26, 28 and 53 bits whose products with 24 bits fit."""
    fraction = mpf(2)**exponent / pi
    fraction -= 2 * floor(fraction / 2)
    high = floor(fraction * 2**27) / mpf(2)**27
    middle = floor((fraction - high) * 2**55) / mpf(2)**55
    return high, middle, double_of(fraction - high - middle)


print("""// SPDX-License-Identifier: Apache-2.0
//
// Written by make_constants.py.
#pragma once

#include <cstdint>

#include "Value/Operations/NearestFloat/DoubleDouble.h"

namespace NearestFloat {
""")

tiny = mpf(2)**-200
print_polynomial("kSine", "sin r = r + r z p(z) with z = r^2, for r up to half pi.",
                 lambda z: (sin(sqrt(z)) / sqrt(z) - 1) / z, tiny, (pi / 2)**2 * mpf("1.001"), 6,
                 lambda p, z: 1 + z * p, lambda z: sin(sqrt(z)) / sqrt(z))
quarter = (pi / 4 * mpf("1.001"))**2
print_polynomial("kShortSine", "The same for r up to a quarter of pi.",
                 lambda z: (sin(sqrt(z)) / sqrt(z) - 1) / z, tiny, quarter, 5,
                 lambda p, z: 1 + z * p, lambda z: sin(sqrt(z)) / sqrt(z))
print_polynomial("kShortCosine", "cos r = 1 + z p(z) with z = r^2, for r up to a quarter of pi.",
                 lambda z: (cos(sqrt(z)) - 1) / z, tiny, quarter, 5, lambda p, z: 1 + z * p, lambda z: cos(sqrt(z)))
print_polynomial("kArcTangent", "atan t = t + t z p(z) with z = t^2, for t up to tan(pi / 8).",
                 lambda z: (atan(sqrt(z)) / sqrt(z) - 1) / z, tiny, mpf("0.1716"), 8,
                 lambda p, z: 1 + z * p, lambda z: atan(sqrt(z)) / sqrt(z))
print_polynomial("kArcSine", "asin t = t + t z p(z) with z = t^2, for t up to 1/2.",
                 lambda z: (asin(sqrt(z)) / sqrt(z) - 1) / z, tiny, mpf("0.25"), 10,
                 lambda p, z: 1 + z * p, lambda z: asin(sqrt(z)) / sqrt(z))
edge = log(2) / 2 * mpf("1.001")
print_polynomial("kExponential", "exp r = 1 + r + r^2 p(r), for r up to half of ln 2.",
                 lambda r: (exp(r) - 1 - r) / r**2, -edge, edge * mpf("1.01"), 8,
                 lambda p, r: 1 + r + r * r * p, exp)
print_polynomial("kPowerOfTwo", "2^r = 1 + r p(r), for r up to 1/2.",
                 lambda r: (mpf(2)**r - 1) / r, -mpf("0.501"), mpf("0.501"), 9,
                 lambda p, r: 1 + r * p, lambda r: mpf(2)**r)


def area_tangent(z):
    s = sqrt(z)
    return log((1 + s) / (1 - s)) / s


print_polynomial("kLog", "ln((1 + s) / (1 - s)) = 2 s + s z p(z) with z = s^2, for s up to (sqrt 2 - 1) / (sqrt 2 + 1).",
                 lambda z: (area_tangent(z) - 2) / z, tiny, mpf("0.02945"), 5, lambda p, z: 2 + z * p, area_tangent)
print_polynomial("kLog2", "The same times 1 / ln 2, without its first term kTwoByLn2.",
                 lambda z: (area_tangent(z) / log(2) - double_of(2 / log(2))) / z, mpf("1e-6"), mpf("0.02945"), 6,
                 lambda p, z: double_of(2 / log(2)) + z * p, lambda z: area_tangent(z) / log(2))

for name, number, comment in (
        ("kTwoByLn2", 2 / log(2), "2 / ln 2."),
        ("kByLn2", 1 / log(2), "1 / ln 2."),
        ("kByPi", 1 / pi, "1 / pi."),
        ("kTwoByPi", 2 / pi, "2 / pi."),
        ("kPi", pi, "pi."),
        ("kHalfPi", pi / 2, "pi / 2."),
        ("kQuarterPi", pi / 4, "pi / 4."),
        ("kLn2", log(2), "ln 2.")):
    print(f"/// {comment}")
    print(f"inline constexpr double {name} = {hexadecimal(double_of(number))};")

print_parts("kPiParts", pi, "pi in parts whose products with 23 bits are exact, and the rest.", 30, 30)
print_parts("kLn2Parts", log(2), "ln 2 in a part whose products with 11 bits are exact, and the rest.", 42)

print("""
/// 2^k / pi without whole multiples of 2, for k from 0 to 104: parts whose products with 24 bits are exact, and the
/// rest.""")
turns = [part_of_turn(k) for k in range(105)]
for place, name in enumerate(("kTurnHigh", "kTurnMiddle", "kTurnLow")):
    print(f"inline constexpr double {name}[] = {{{', '.join(hexadecimal(turn[place]) for turn in turns)}}};")

print("""
/// The binary digits of 1 / pi behind the point, 32 in a word, after a word of zeros.""")
digits = int(floor(mpf(2)**320 / pi))
words = [(digits >> (320 - 32 * (k + 1))) & 0xFFFFFFFF for k in range(10)]
print(f"inline constexpr std::uint32_t kDigitsByPi[] = {{0, {', '.join(hex(word) for word in words)}}};")

print()
print_pairs("kByFactorial", [1 / factorial(n) for n in range(40)], "1 / n!.")
print_pairs("kByOdd", [2 / mpf(2 * n + 1) for n in range(24)], "2 / (2 n + 1).")
print_pair("kPiPair", pi, "pi.")
print_pair("kLn2Pair", log(2), "ln 2 to 106 bits.")
print_array("kLn2Thirds", split(log(2), 42, 42), "ln 2 in parts whose products with 11 bits are exact, and the rest.")
print_pair("kByLn2Pair", 1 / log(2), "1 / ln 2.")
print("""
}  // namespace NearestFloat""")
