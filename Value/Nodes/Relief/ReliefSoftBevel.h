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
/// that of the mask grown by so much. The search begins where something may be met first and ends where it has reached
/// 1, since any further step is drawn over. The same goes for the smallest sample and 0. Where a growing mask stays
/// below 1, it ends where larger radii make no difference to the last bit, which bounds tell (R. E. Moore, "Interval
/// Analysis", 1966).
///
/// A disc holds little that none of the discs around the four neighbours, smaller by 1, holds: one offset of a ring in
/// ten. So the pixels of a tile are searched for together, and each takes over what its neighbours have found, as
/// dilations by large shapes are made of those by smaller ones (X. Zhuang and R. M. Haralick, "Morphological
/// Structuring Element Decomposition", 1986). The few offsets that are left are looked at in those directions only in
/// which tables of the largest samples of squares do not rule out that there is more.
///
/// For each pixel it takes time in proportion to the rings in which the mask rises from 0 to 1 around its tile. Memory
/// for two planes of the mask's size with a border of the largest offset. Throws `std::bad_alloc`.
void DrawSoft(const Image& mask, bool wrap, const Rings& rings, int from, int to, Image& output);

}  // namespace ReliefBevel
