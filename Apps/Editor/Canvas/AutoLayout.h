// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPointF>
#include <QSizeF>
#include <cstddef>
#include <utility>
#include <vector>

/// Places nodes so that wires lead from left to right: in layers by the longest way to a node, each ordered by the
/// medians of its neighbors. Graphs that nothing connects stand below each other. The same graph gets the same places.
///
/// An edge is from the first to the second; they form no cycle, which would only cost beauty. Answers the top left
/// corners.
std::vector<QPointF> LayOutGraph(const std::vector<QSizeF>& sizes,
                                 const std::vector<std::pair<std::size_t, std::size_t>>& edges);
