// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Value/Nodes/Components/NeighborRule.h"

/// The algorithm of the Connected Components node.
namespace ComponentLabels {

/// Writes the index of its component to `labels` for each pixel, row by row, and returns the number of components.
///
/// Two neighbours belong together when in every channel tolerance > |difference|, strictly; so a NaN joins nothing, and
/// neither do two equal infinities, whose difference is NaN. Components are what chains of such neighbours make. They
/// are numbered 0, 1, 2, ... in the order in which their first pixels come, row by row. The number is counted in single
/// precision: from 16777216 on it stays where it is, and so do the labels.
///
/// By runs of joined pixels within a row, found as bits, and a union-find over runs that keeps the first run of a
/// component as its root (two passes as in L. He, Y. Chao, K. Suzuki, "A Run-Based Two-Scan Labeling Algorithm", IEEE
/// Transactions on Image Processing 17(5), 2008; path halving as in R. E. Tarjan, J. van Leeuwen, "Worst-Case Analysis
/// of Set Union Algorithms", JACM 31(2), 1984). Beside `labels` it takes one bit per pixel and a few rows of bits.
///
/// Runs on the calling thread. Throws `std::length_error` for more than 2147483647 pixels, `std::bad_alloc` when the
/// bits cannot be allocated.
float Label(const PixelView& image, const NeighborRule& rule, float* labels);

}  // namespace ComponentLabels
