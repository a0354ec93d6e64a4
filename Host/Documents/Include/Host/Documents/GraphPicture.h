// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/Documents/Api.h"
#include "Host/Documents/GraphDocument.h"
#include "Host/Util/Status.h"

namespace ScEng {

/// A picture of a graph as text for Graphviz: nodes with type, id and the attributes that are not default, disabled
/// ones and those with problems marked, wires told apart by their kinds, and the files that are written.
///
/// `problems` are lines of `Findings` without the document's name in front. One that names a node in quotes stands at
/// that node, any other below the graph. Whatever the document holds becomes plain text.
HOST_DOCUMENTS_API std::string WriteDot(const GraphDocument& document, const std::vector<std::string>& problems);

/// The same as SVG, laid out by Graphviz' program `dot`, which is found on the PATH. An error that names the package
/// where there is none, and what went wrong otherwise. Can be stopped.
HOST_DOCUMENTS_API Status DrawSvg(const GraphDocument& document, const std::vector<std::string>& problems,
                                  std::string& svg);

}  // namespace ScEng
