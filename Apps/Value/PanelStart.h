// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/Documents/GraphDocument.h"
#include "Host/Tools/Node.h"
#include "Host/Util/Status.h"

/// A node of what is made up for a panel, with its settings, "name=value".
struct StartNode {
  std::string class_name;
  std::vector<std::string> settings = {};
};

/// What the panel of a node opens with, so that there is something to be seen: many nodes make a plain black or white
/// image of most inputs with the attributes that they have at first.
struct PanelStart {
  /// For each input a generator and what follows it, one behind the other.
  std::vector<std::vector<StartNode>> inputs = {};
  /// A second image for the first input, which takes any number; empty for none.
  std::vector<StartNode> further = {};
  /// Of the node itself, unless the attribute is set otherwise.
  std::vector<std::string> settings = {};
  /// Only with the inputs above, which they are made for.
  std::vector<std::string> settings_with_inputs = {};
};

/// The one of a node type; a terrain and waves for one that has none of its own.
[[nodiscard]] const PanelStart& FindPanelStart(const std::string& class_name);

/// Adds the inputs to a document and connects them to the node of that id. Where the catalogue lacks a type, what leads
/// there is connected in its place.
ScEng::Status AddStartInputs(ScEng::GraphDocument& document, const ScEng::NodeCatalog& catalog, const std::string& id,
                             const std::vector<PlugRecord>& plugs, const PanelStart& start);
