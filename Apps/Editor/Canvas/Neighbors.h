// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

class GraphScene;

/// Where the keyboard starts: the top left node. Empty without nodes.
std::string FindFirst(const GraphScene& scene);

/// The node that an arrow key (`Qt::Key`) leads to: left and right along wires where there are any, else, and up and
/// down, to the nearest node on that side. Empty where there is none.
std::string FindNeighbor(const GraphScene& scene, const std::string& id, int key);
