// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Host/Tools/Node.h"
#include "Host/Tools/NodeInterface.h"

/// A node type in two lines or more, for a list.
std::string DescribeBriefly(const NodeInterface& descriptor, const Node& node);

/// Everything about a node type, for people.
std::string DescribeNode(const NodeInterface& descriptor, const Node& node);
