// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace ScEng {

/// Makes a row of half the length from two rows of `size` pixels: each channel becomes the mean of the finite ones of
/// its four samples, or the first of them where none is finite. The last pixel of an odd row stands for two. Where
/// there is no second row, `bottom` is `top`.
void ReduceRows(const float* top, const float* bottom, int size, int channels, float* to);

/// The length that a row has when it is halved.
constexpr int Halve(int size) { return size / 2 + size % 2; }
constexpr int HalveOften(int size, int times) { return times > 0 ? HalveOften(Halve(size), times - 1) : size; }

}  // namespace ScEng
