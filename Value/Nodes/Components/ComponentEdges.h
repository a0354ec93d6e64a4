// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include "Value/Nodes/Components/NeighborRule.h"

/// The algorithm of the Component Edges node.
namespace ComponentEdges {

/// What is written for a pixel that is not an edge, and for one that is.
struct Marks {
  float background = 0.0F;
  float edge = 1.0F;
};

/// Writes a mark to `marked` for each pixel, row by row: an edge is a pixel that differs from a neighbour in some
/// channel by more than the tolerance, strictly. A difference that is NaN makes no edge.
///
/// Where the image is not seamless, rows follow each other without a border between them: the left neighbour of a row's
/// first pixel is the last pixel of the row before, and the right neighbour of its last pixel the first pixel of the
/// next one; likewise at the corners. A neighbour in a row outside the image, or before its first or behind its last
/// pixel, makes no edge.
///
/// On the threads of `ParallelFor`, 16 rows at a time.
void Mark(const PixelView& image, const NeighborRule& rule, const Marks& marks, float* marked);

/// The rows [from, to) of it, on the calling thread.
void MarkRows(const PixelView& image, const NeighborRule& rule, const Marks& marks, std::size_t from, std::size_t to,
              float* marked);

}  // namespace ComponentEdges
