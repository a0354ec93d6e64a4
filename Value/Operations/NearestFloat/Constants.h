// SPDX-License-Identifier: Apache-2.0
//
// Written by make_constants.py.
#pragma once

#include <cstdint>

#include "Value/Operations/NearestFloat/DoubleDouble.h"

namespace NearestFloat {

/// sin r = r + r z p(z) with z = r^2, for r up to half pi.
inline constexpr double kSine[] = {-0x1.555555555554fp-3, 0x1.111111111004dp-7,   -0x1.a01a019e676e8p-13,
                                   0x1.71de394d4c5d3p-19, -0x1.ae63bd862848dp-26, 0x1.60f6d9cc3c671p-33,
                                   -0x1.a105edd952fafp-41};
/// The same for r up to a quarter of pi.
inline constexpr double kShortSine[] = {-0x1.5555555555555p-3, 0x1.1111111110ba5p-7,   -0x1.a01a019e80693p-13,
                                        0x1.71de379252004p-19, -0x1.ae60069e53ef1p-26, 0x1.5e098556d302ep-33};
/// cos r = 1 + z p(z) with z = r^2, for r up to a quarter of pi.
inline constexpr double kShortCosine[] = {-0x1.ffffffffffffap-2, 0x1.5555555554103p-5,   -0x1.6c16c16917713p-10,
                                          0x1.a019fc7364c4bp-16, -0x1.27e0f15bb1c0cp-22, 0x1.1c04cd182d06dp-29};
/// atan t = t + t z p(z) with z = t^2, for t up to tan(pi / 8).
inline constexpr double kArcTangent[] = {-0x1.55555555553a3p-2, 0x1.99999998d13eep-3,  -0x1.249248aa5b194p-3,
                                         0x1.c71c381e0a924p-4,  -0x1.74563ccc389e2p-4, 0x1.3a9d8856ba6e6p-4,
                                         -0x1.0c52c4d131bb4p-4, 0x1.a76ab33fd6b4fp-5,  -0x1.be23c10ccb5c7p-6};
/// asin t = t + t z p(z) with z = t^2, for t up to 1/2.
inline constexpr double kArcSine[] = {0x1.55555555555bbp-3,  0x1.33333333030cfp-4, 0x1.6db6dba99e56dp-5,
                                      0x1.f1c6ff7f5507fp-6,  0x1.6e8f34a32a3ecp-6, 0x1.1c0d74beb3610p-6,
                                      0x1.cf5ed14c7cb7ep-7,  0x1.512bc40e88a9ep-7, 0x1.fa1b2b4831188p-7,
                                      -0x1.bf16e7c9f283cp-8, 0x1.c8a4a8d5d7026p-6};
/// exp r = 1 + r + r^2 p(r), for r up to half of ln 2.
inline constexpr double kExponential[] = {0x1.0000000000003p-1,  0x1.5555555553a37p-3,  0x1.5555555550e55p-5,
                                          0x1.1111111caebfcp-7,  0x1.6c16c18bb9fc4p-10, 0x1.a019aba534f8fp-13,
                                          0x1.a0196c93355b7p-16, 0x1.72c9e94824d84p-19, 0x1.28ede876c6e3fp-22};
/// 2^r = 1 + r p(r), for r up to 1/2.
inline constexpr double kPowerOfTwo[] = {
    0x1.62e42fefa39f7p-1,  0x1.ebfbdff82c590p-3,  0x1.c6b08d7043f8fp-5,  0x1.3b2ab6fba3804p-7,  0x1.5d87fe90d9668p-10,
    0x1.430913039a652p-13, 0x1.ffcb75655e26ep-17, 0x1.62bfe3e1f42e8p-20, 0x1.b65857cff5f78p-24, 0x1.e5eb174f596a7p-28};
/// ln((1 + s) / (1 - s)) = 2 s + s z p(z) with z = s^2, for s up to (sqrt 2 - 1) / (sqrt 2 + 1).
inline constexpr double kLog[] = {0x1.55555555553b7p-1, 0x1.9999999b878d7p-2, 0x1.249246299fc8ep-2,
                                  0x1.c71fcdfe2f300p-3, 0x1.7382a9fa2e7aep-3, 0x1.546d249f36cb2p-3};
/// The same times 1 / ln 2, without its first term kTwoByLn2.
inline constexpr double kLog2[] = {0x1.ec709dc3a08c3p-1, 0x1.2776c50e5520cp-1, 0x1.a61763b61e7b0p-2,
                                   0x1.484aa7beae38cp-2, 0x1.0cb18279bb01ap-2, 0x1.c157adb521ad1p-3,
                                   0x1.d3525de83004dp-3};
/// 2 / ln 2.
inline constexpr double kTwoByLn2 = 0x1.71547652b82fep+1;
/// 1 / ln 2.
inline constexpr double kByLn2 = 0x1.71547652b82fep+0;
/// 1 / pi.
inline constexpr double kByPi = 0x1.45f306dc9c883p-2;
/// 2 / pi.
inline constexpr double kTwoByPi = 0x1.45f306dc9c883p-1;
/// pi.
inline constexpr double kPi = 0x1.921fb54442d18p+1;
/// pi / 2.
inline constexpr double kHalfPi = 0x1.921fb54442d18p+0;
/// pi / 4.
inline constexpr double kQuarterPi = 0x1.921fb54442d18p-1;
/// ln 2.
inline constexpr double kLn2 = 0x1.62e42fefa39efp-1;
/// pi in parts whose products with 23 bits are exact, and the rest.
inline constexpr double kPiParts[] = {0x1.921fb54000000p+1, 0x1.10b4611800000p-29, 0x1.313198a2e0370p-60};
/// ln 2 in a part whose products with 11 bits are exact, and the rest.
inline constexpr double kLn2Parts[] = {0x1.62e42fefa3800p-1, 0x1.ef35793c76730p-45};

/// 2^k / pi without whole multiples of 2, for k from 0 to 104: parts whose products with 24 bits are exact, and the
/// rest.
inline constexpr double kTurnHigh[] = {
    0x1.45f3068000000p-2, 0x1.45f306c000000p-1, 0x1.45f306c000000p+0, 0x1.17cc1b4000000p-1, 0x1.17cc1b6000000p+0,
    0x1.7cc1b70000000p-3, 0x1.7cc1b70000000p-2, 0x1.7cc1b70000000p-1, 0x1.7cc1b72000000p+0, 0x1.f306dc8000000p-1,
    0x1.f306dc8000000p+0, 0x1.e60db92000000p+0, 0x1.cc1b726000000p+0, 0x1.9836e4e000000p+0, 0x1.306dc9c000000p+0,
    0x1.836e4e0000000p-2, 0x1.836e4e4000000p-1, 0x1.836e4e4000000p+0, 0x1.06dc9c8000000p+0, 0x1.b727200000000p-5,
    0x1.b727220000000p-4, 0x1.b727220000000p-3, 0x1.b727220000000p-2, 0x1.b727220000000p-1, 0x1.b727220000000p+0,
    0x1.6e4e440000000p+0, 0x1.b939104000000p-1, 0x1.b939104000000p+0, 0x1.727220a000000p+0, 0x1.c9c8828000000p-1,
    0x1.c9c882a000000p+0, 0x1.9391054000000p+0, 0x1.27220a8000000p+0, 0x1.3910548000000p-2, 0x1.3910548000000p-1,
    0x1.391054a000000p+0, 0x1.c882a50000000p-2, 0x1.c882a50000000p-1, 0x1.c882a52000000p+0, 0x1.91054a6000000p+0,
    0x1.220a94e000000p+0, 0x1.1054a78000000p-2, 0x1.1054a7c000000p-1, 0x1.1054a7e000000p+0, 0x1.054a7f0000000p-3,
    0x1.054a7f0000000p-2, 0x1.054a7f0000000p-1, 0x1.054a7f0000000p+0, 0x1.529fc00000000p-5, 0x1.529fc20000000p-4,
    0x1.529fc20000000p-3, 0x1.529fc20000000p-2, 0x1.529fc24000000p-1, 0x1.529fc26000000p+0, 0x1.4a7f09c000000p-1,
    0x1.4a7f09c000000p+0, 0x1.29fc274000000p-1, 0x1.29fc274000000p+0, 0x1.4fe13a8000000p-2, 0x1.4fe13a8000000p-1,
    0x1.4fe13aa000000p+0, 0x1.3f84eac000000p-1, 0x1.3f84eae000000p+0, 0x1.fc27578000000p-2, 0x1.fc2757c000000p-1,
    0x1.fc2757c000000p+0, 0x1.f84eafa000000p+0, 0x1.f09d5f4000000p+0, 0x1.e13abe8000000p+0, 0x1.c2757d0000000p+0,
    0x1.84eafa2000000p+0, 0x1.09d5f46000000p+0, 0x1.3abe8e0000000p-4, 0x1.3abe8f0000000p-3, 0x1.3abe8f8000000p-2,
    0x1.3abe8f8000000p-1, 0x1.3abe8fa000000p+0, 0x1.d5f47d0000000p-2, 0x1.d5f47d4000000p-1, 0x1.d5f47d4000000p+0,
    0x1.abe8fa8000000p+0, 0x1.57d1f52000000p+0, 0x1.5f47d4c000000p-1, 0x1.5f47d4c000000p+0, 0x1.7d1f534000000p-1,
    0x1.7d1f534000000p+0, 0x1.f47d4d0000000p-1, 0x1.f47d4d2000000p+0, 0x1.e8fa9a6000000p+0, 0x1.d1f534c000000p+0,
    0x1.a3ea69a000000p+0, 0x1.47d4d36000000p+0, 0x1.1f534dc000000p-1, 0x1.1f534dc000000p+0, 0x1.f534dd0000000p-3,
    0x1.f534dd8000000p-2, 0x1.f534ddc000000p-1, 0x1.f534ddc000000p+0, 0x1.ea69bb8000000p+0, 0x1.d4d3770000000p+0,
    0x1.a9a6ee0000000p+0, 0x1.534ddc0000000p+0, 0x1.4d37700000000p-1, 0x1.4d37702000000p+0, 0x1.34ddc0c000000p-1};
inline constexpr double kTurnMiddle[] = {
    0x1.727220a000000p-28, 0x1.c9c8828000000p-29, 0x1.c9c882a000000p-28, 0x1.9391054000000p-28, 0x1.27220a8000000p-28,
    0x1.3910548000000p-30, 0x1.3910548000000p-29, 0x1.391054a000000p-28, 0x1.c882a50000000p-30, 0x1.c882a50000000p-29,
    0x1.c882a52000000p-28, 0x1.91054a6000000p-28, 0x1.220a94e000000p-28, 0x1.1054a78000000p-30, 0x1.1054a7c000000p-29,
    0x1.1054a7e000000p-28, 0x1.054a7f0000000p-31, 0x1.054a7f0000000p-30, 0x1.054a7f0000000p-29, 0x1.054a7f0000000p-28,
    0x1.529fc00000000p-33, 0x1.529fc20000000p-32, 0x1.529fc20000000p-31, 0x1.529fc20000000p-30, 0x1.529fc24000000p-29,
    0x1.529fc26000000p-28, 0x1.4a7f09c000000p-29, 0x1.4a7f09c000000p-28, 0x1.29fc274000000p-29, 0x1.29fc274000000p-28,
    0x1.4fe13a8000000p-30, 0x1.4fe13a8000000p-29, 0x1.4fe13aa000000p-28, 0x1.3f84eac000000p-29, 0x1.3f84eae000000p-28,
    0x1.fc27578000000p-30, 0x1.fc2757c000000p-29, 0x1.fc2757c000000p-28, 0x1.f84eafa000000p-28, 0x1.f09d5f4000000p-28,
    0x1.e13abe8000000p-28, 0x1.c2757d0000000p-28, 0x1.84eafa2000000p-28, 0x1.09d5f46000000p-28, 0x1.3abe8e0000000p-32,
    0x1.3abe8f0000000p-31, 0x1.3abe8f8000000p-30, 0x1.3abe8f8000000p-29, 0x1.3abe8fa000000p-28, 0x1.d5f47d0000000p-30,
    0x1.d5f47d4000000p-29, 0x1.d5f47d4000000p-28, 0x1.abe8fa8000000p-28, 0x1.57d1f52000000p-28, 0x1.5f47d4c000000p-29,
    0x1.5f47d4c000000p-28, 0x1.7d1f534000000p-29, 0x1.7d1f534000000p-28, 0x1.f47d4d0000000p-29, 0x1.f47d4d2000000p-28,
    0x1.e8fa9a6000000p-28, 0x1.d1f534c000000p-28, 0x1.a3ea69a000000p-28, 0x1.47d4d36000000p-28, 0x1.1f534dc000000p-29,
    0x1.1f534dc000000p-28, 0x1.f534dd0000000p-31, 0x1.f534dd8000000p-30, 0x1.f534ddc000000p-29, 0x1.f534ddc000000p-28,
    0x1.ea69bb8000000p-28, 0x1.d4d3770000000p-28, 0x1.a9a6ee0000000p-28, 0x1.534ddc0000000p-28, 0x1.4d37700000000p-29,
    0x1.4d37702000000p-28, 0x1.34ddc0c000000p-29, 0x1.34ddc0c000000p-28, 0x1.a6ee068000000p-30, 0x1.a6ee06c000000p-29,
    0x1.a6ee06c000000p-28, 0x1.4ddc0da000000p-28, 0x1.377036c000000p-29, 0x1.377036c000000p-28, 0x1.bb81b68000000p-30,
    0x1.bb81b6c000000p-29, 0x1.bb81b6c000000p-28, 0x1.77036d8000000p-28, 0x1.dc0db60000000p-29, 0x1.dc0db62000000p-28,
    0x1.b81b6c4000000p-28, 0x1.7036d8a000000p-28, 0x1.c0db628000000p-29, 0x1.c0db628000000p-28, 0x1.81b6c52000000p-28,
    0x1.036d8a4000000p-28, 0x1.b6c5280000000p-34, 0x1.b6c5280000000p-33, 0x1.b6c52a0000000p-32, 0x1.b6c52b0000000p-31,
    0x1.b6c52b0000000p-30, 0x1.b6c52b0000000p-29, 0x1.b6c52b2000000p-28, 0x1.6d8a566000000p-28, 0x1.b629598000000p-29};
inline constexpr double kTurnLow[] = {
    0x1.29fc2757d1f53p-57, 0x1.29fc2757d1f53p-56, 0x1.4fe13abe8fa9ap-58, 0x1.4fe13abe8fa9ap-57, 0x1.4fe13abe8fa9ap-56,
    0x1.3f84eafa3ea6ap-57, 0x1.3f84eafa3ea6ap-56, 0x1.fc2757d1f534ep-58, 0x1.fc2757d1f534ep-57, 0x1.fc2757d1f534ep-56,
    0x1.f84eafa3ea69cp-56, 0x1.f09d5f47d4d37p-56, 0x1.e13abe8fa9a6fp-56, 0x1.c2757d1f534dep-56, 0x1.84eafa3ea69bcp-56,
    0x1.09d5f47d4d377p-56, 0x1.3abe8fa9a6ee0p-60, 0x1.3abe8fa9a6ee0p-59, 0x1.3abe8fa9a6ee0p-58, 0x1.3abe8fa9a6ee0p-57,
    0x1.3abe8fa9a6ee0p-56, 0x1.d5f47d4d37703p-58, 0x1.d5f47d4d37703p-57, 0x1.d5f47d4d37703p-56, 0x1.abe8fa9a6ee07p-56,
    0x1.57d1f534ddc0ep-56, 0x1.5f47d4d377037p-57, 0x1.5f47d4d377037p-56, 0x1.7d1f534ddc0dbp-57, 0x1.7d1f534ddc0dbp-56,
    0x1.f47d4d377036ep-57, 0x1.f47d4d377036ep-56, 0x1.e8fa9a6ee06dbp-56, 0x1.d1f534ddc0db6p-56, 0x1.a3ea69bb81b6cp-56,
    0x1.47d4d377036d9p-56, 0x1.1f534ddc0db63p-57, 0x1.1f534ddc0db63p-56, 0x1.f534ddc0db629p-59, 0x1.f534ddc0db629p-58,
    0x1.f534ddc0db629p-57, 0x1.f534ddc0db629p-56, 0x1.ea69bb81b6c53p-56, 0x1.d4d377036d8a5p-56, 0x1.a9a6ee06db14bp-56,
    0x1.534ddc0db6296p-56, 0x1.4d377036d8a56p-57, 0x1.4d377036d8a56p-56, 0x1.34ddc0db6295ap-57, 0x1.34ddc0db6295ap-56,
    0x1.a6ee06db14acdp-58, 0x1.a6ee06db14acdp-57, 0x1.a6ee06db14acdp-56, 0x1.4ddc0db629599p-56, 0x1.377036d8a5665p-57,
    0x1.377036d8a5665p-56, 0x1.bb81b6c52b328p-58, 0x1.bb81b6c52b328p-57, 0x1.bb81b6c52b328p-56, 0x1.77036d8a5664fp-56,
    0x1.dc0db6295993cp-57, 0x1.dc0db6295993cp-56, 0x1.b81b6c52b3279p-56, 0x1.7036d8a5664f1p-56, 0x1.c0db6295993c4p-57,
    0x1.c0db6295993c4p-56, 0x1.81b6c52b32788p-56, 0x1.036d8a5664f11p-56, 0x1.b6c52b3278872p-62, 0x1.b6c52b3278872p-61,
    0x1.b6c52b3278872p-60, 0x1.b6c52b3278872p-59, 0x1.b6c52b3278872p-58, 0x1.b6c52b3278872p-57, 0x1.b6c52b3278872p-56,
    0x1.6d8a5664f10e4p-56, 0x1.b6295993c4390p-57, 0x1.b6295993c4390p-56, 0x1.6c52b32788721p-56, 0x1.b14acc9e21c82p-57,
    0x1.b14acc9e21c82p-56, 0x1.6295993c43904p-56, 0x1.8a5664f10e410p-57, 0x1.8a5664f10e410p-56, 0x1.14acc9e21c821p-56,
    0x1.4acc9e21c8210p-59, 0x1.4acc9e21c8210p-58, 0x1.4acc9e21c8210p-57, 0x1.4acc9e21c8210p-56, 0x1.2b32788720840p-57,
    0x1.2b32788720840p-56, 0x1.5993c439041fep-58, 0x1.5993c439041fep-57, 0x1.5993c439041fep-56, 0x1.664f10e4107f9p-57,
    0x1.664f10e4107f9p-56, 0x1.993c439041fe5p-57, 0x1.993c439041fe5p-56, 0x1.3278872083fcap-56, 0x1.93c439041fe51p-58,
    0x1.93c439041fe51p-57, 0x1.93c439041fe51p-56, 0x1.278872083fca3p-56, 0x1.3c439041fe516p-58, 0x1.3c439041fe516p-57};

/// The binary digits of 1 / pi behind the point, 32 in a word, after a word of zeros.
inline constexpr std::uint32_t kDigitsByPi[] = {0,          0x517cc1b7, 0x27220a94, 0xfe13abe8, 0xfa9a6ee0, 0x6db14acc,
                                                0x9e21c820, 0xff28b1d5, 0xef5de2b0, 0xdb92371d, 0x2126e970};

/// 1 / n!.
inline constexpr DoubleDouble kByFactorial[] = {{0x1.0000000000000p+0, 0x0.0p+0},
                                                {0x1.0000000000000p+0, 0x0.0p+0},
                                                {0x1.0000000000000p-1, 0x0.0p+0},
                                                {0x1.5555555555555p-3, 0x1.5555555555555p-57},
                                                {0x1.5555555555555p-5, 0x1.5555555555555p-59},
                                                {0x1.1111111111111p-7, 0x1.1111111111111p-63},
                                                {0x1.6c16c16c16c17p-10, -0x1.f49f49f49f49fp-65},
                                                {0x1.a01a01a01a01ap-13, 0x1.a01a01a01a01ap-73},
                                                {0x1.a01a01a01a01ap-16, 0x1.a01a01a01a01ap-76},
                                                {0x1.71de3a556c734p-19, -0x1.c154f8ddc6c00p-73},
                                                {0x1.27e4fb7789f5cp-22, 0x1.cbbc05b4fa99ap-76},
                                                {0x1.ae64567f544e4p-26, -0x1.c062e06d1f209p-80},
                                                {0x1.1eed8eff8d898p-29, -0x1.2aec959e14c06p-83},
                                                {0x1.6124613a86d09p-33, 0x1.f28e0cc748ebep-87},
                                                {0x1.93974a8c07c9dp-37, 0x1.05d6f8a2efd1fp-92},
                                                {0x1.ae7f3e733b81fp-41, 0x1.1d8656b0ee8cbp-97},
                                                {0x1.ae7f3e733b81fp-45, 0x1.1d8656b0ee8cbp-101},
                                                {0x1.952c77030ad4ap-49, 0x1.ac981465ddc6cp-103},
                                                {0x1.6827863b97d97p-53, 0x1.eec01221a8b0bp-107},
                                                {0x1.2f49b46814157p-57, 0x1.2650f61dbdcb4p-112},
                                                {0x1.e542ba4020225p-62, 0x1.ea72b4afe3c2fp-120},
                                                {0x1.71b8ef6dcf572p-66, -0x1.d043ae40c4647p-120},
                                                {0x1.0ce396db7f853p-70, -0x1.aebcdbd20331cp-124},
                                                {0x1.761b41316381ap-75, -0x1.3423c7d91404fp-130},
                                                {0x1.f2cf01972f578p-80, -0x1.9ada5fcc1ab14p-135},
                                                {0x1.3f3ccdd165fa9p-84, -0x1.58ddadf344487p-139},
                                                {0x1.88e85fc6a4e5ap-89, -0x1.71c37ebd16540p-143},
                                                {0x1.d1ab1c2dccea3p-94, 0x1.054d0c78aea14p-149},
                                                {0x1.0a18a2635085dp-98, 0x1.b9e2e28e1aa54p-153},
                                                {0x1.259f98b4358adp-103, 0x1.eaf8c39dd9bc5p-157},
                                                {0x1.3932c5047d60ep-108, 0x1.832b7b530a627p-162},
                                                {0x1.434d2e783f5bcp-113, 0x1.0b87b91be9affp-167},
                                                {0x1.434d2e783f5bcp-118, 0x1.0b87b91be9affp-172},
                                                {0x1.3981254dd0d52p-123, -0x1.2b1f4c8015a2fp-177},
                                                {0x1.2710231c0fd7ap-128, 0x1.3f8a2b4af9d6bp-184},
                                                {0x1.0dc59c716d91fp-133, 0x1.419e3fad3f031p-188},
                                                {0x1.df983290c2ca9p-139, 0x1.5835c6895393bp-194},
                                                {0x1.9ec8d1c94e85bp-144, -0x1.670e9d4784ec6p-201},
                                                {0x1.5d4acb9c0c3abp-149, -0x1.6ec2c8f5b13b2p-205},
                                                {0x1.1e99449a4bacep-154, -0x1.fefbb89514b3cp-210}};
/// 2 / (2 n + 1).
inline constexpr DoubleDouble kByOdd[] = {{0x1.0000000000000p+1, 0x0.0p+0},
                                          {0x1.5555555555555p-1, 0x1.5555555555555p-55},
                                          {0x1.999999999999ap-2, -0x1.999999999999ap-56},
                                          {0x1.2492492492492p-2, 0x1.2492492492492p-56},
                                          {0x1.c71c71c71c71cp-3, 0x1.c71c71c71c71cp-57},
                                          {0x1.745d1745d1746p-3, -0x1.745d1745d1746p-58},
                                          {0x1.3b13b13b13b14p-3, -0x1.3b13b13b13b14p-57},
                                          {0x1.1111111111111p-3, 0x1.1111111111111p-59},
                                          {0x1.e1e1e1e1e1e1ep-4, 0x1.e1e1e1e1e1e1ep-60},
                                          {0x1.af286bca1af28p-4, 0x1.af286bca1af28p-58},
                                          {0x1.8618618618618p-4, 0x1.8618618618618p-58},
                                          {0x1.642c8590b2164p-4, 0x1.642c8590b2164p-59},
                                          {0x1.47ae147ae147bp-4, -0x1.eb851eb851eb8p-60},
                                          {0x1.2f684bda12f68p-4, 0x1.2f684bda12f68p-58},
                                          {0x1.1a7b9611a7b96p-4, 0x1.1a7b9611a7b96p-60},
                                          {0x1.0842108421084p-4, 0x1.0842108421084p-59},
                                          {0x1.f07c1f07c1f08p-5, -0x1.f07c1f07c1f08p-60},
                                          {0x1.d41d41d41d41dp-5, 0x1.0750750750750p-59},
                                          {0x1.bacf914c1bad0p-5, -0x1.bacf914c1bad0p-59},
                                          {0x1.a41a41a41a41ap-5, 0x1.0690690690690p-59},
                                          {0x1.8f9c18f9c18fap-5, -0x1.f3831f3831f38p-60},
                                          {0x1.7d05f417d05f4p-5, 0x1.7d05f417d05f4p-61},
                                          {0x1.6c16c16c16c17p-5, -0x1.f49f49f49f49fp-60},
                                          {0x1.5c9882b931057p-5, 0x1.310572620ae4cp-60}};
/// pi.
inline constexpr DoubleDouble kPiPair = {0x1.921fb54442d18p+1, 0x1.1a62633145c07p-53};
/// ln 2 to 106 bits.
inline constexpr DoubleDouble kLn2Pair = {0x1.62e42fefa39efp-1, 0x1.abc9e3b39803fp-56};
/// ln 2 in parts whose products with 11 bits are exact, and the rest.
inline constexpr double kLn2Thirds[] = {0x1.62e42fefa3800p-1, 0x1.ef35793c76000p-45, 0x1.cc01f97b57a08p-87};
/// 1 / ln 2.
inline constexpr DoubleDouble kByLn2Pair = {0x1.71547652b82fep+0, 0x1.777d0ffda0d24p-56};

}  // namespace NearestFloat
