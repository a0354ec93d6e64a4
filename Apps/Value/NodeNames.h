// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Host/Tools/NodeLibrary.h"

/// The error line for a text that names no node: what it may have meant, or how to look for it.
std::string DescribeUnknownNode(const ScEng::NodeCatalog& catalog, const std::string& written);
