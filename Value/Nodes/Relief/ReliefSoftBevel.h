// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Image/Image.h"
#include "Value/Nodes/Relief/ReliefBevel.h"

namespace ReliefBevel {

/// Whether `DrawSoft` can grow and shrink a mask by up to `reach` pixels: not where its tables would be much larger
/// than the mask.
bool CanDrawSoft(const Image& mask, int reach);

/// Draws steps [from, to) of the rings, whatever the mask's samples.
///
/// Around each pixel the mask is looked through ring by ring, from the pixel on outwards: the largest sample so far is
/// that of the mask grown by so much. The search ends where it reaches 1, since any further step is drawn over, and it
/// begins where the one for the pixel above has met something first. The same goes for the smallest sample and 0.
///
/// A vector of neighbouring pixels is searched for at a time. Arcs of a ring that hold nothing larger are ruled out by
/// tables of the largest samples of squares: those of many rings by one comparison, then each by one of its own.
///
/// For each pixel it takes time in proportion to the rings in which the mask rises from 0 to 1 around it, and for each
/// of these some comparisons, which grow with the root of the radius. Memory for two planes of the mask's size with a
/// border of the largest offset. Throws `std::bad_alloc`.
void DrawSoft(const Image& mask, bool wrap, const Rings& rings, int from, int to, Image& output);

}  // namespace ReliefBevel
