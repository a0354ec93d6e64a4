// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>

#include "Host/Tools/Node.h"
#include "Host/Tools/NodeInterface.h"

/// A text in lines of at most 80 characters, each indented, the first one not: it continues a line that is there.
/// A word that is longer has a line of its own.
std::string Wrap(const std::string& text, std::size_t indent);

/// A node type in two lines or more, for a list.
std::string DescribeBriefly(const NodeInterface& descriptor, const Node& node);

/// Everything about a node type, for people.
std::string DescribeNode(const NodeInterface& descriptor, const Node& node);
