// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Host/Util/Status.h"

namespace ScEng {

/// Lays out a graph of Graphviz with the program `dot` of the PATH, as SVG. Can be stopped; ends after two minutes.
Status RunDot(const std::string& text, std::string& svg);

}  // namespace ScEng
