// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/Tools/NodeInterface.h"

/// The schema of graph documents with what the node types say of themselves: for each type with a record, its sentence,
/// and for each of its attributes the text of its row, the default, and the form of the value. Editors show them as
/// hints.
///
/// `schema` is the schema without hints. Its definition of a node has the line `"allOf": [],`, which is where they go;
/// an empty answer stands for a schema without it.
std::string AddSchemaHints(const std::string& schema, const std::vector<NodeInterface*>& descriptors);
