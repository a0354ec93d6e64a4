// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "Apps/NodePages/Picture.h"
#include "Host/Tools/Node.h"

/// One picture of a page: an output of the example graph and how it is shown.
struct PictureText {
  /// "id.plug" in the example.
  std::string source;
  Look look;
  std::string caption;
};

/// What a person wrote about a node: the part of its page that its record does not have.
///
/// A text lies beside its node and is Markdown. It starts with lines "key: value" between two lines "---":
///
///   disabled  what the node does when it is disabled, in one sentence
///   old       OLD = CURRENT, a name that an attribute once had; may be given again
///   gone      the name of an attribute that the node once had; may be given again
///   show      OUTPUT | LOOK | CAPTION, a picture; two at least, see `ParseLook`
///
/// The sections follow, in this order: "## What it is for", "## Inputs", "## Attributes" (where there are any),
/// "## Outputs", "## What surprises", "## Try it". Inputs and outputs have one "### name" per plug, in the order of the
/// node. An attribute needs one only where there is more to say than its row does; a choice has its words explained
/// there. "{ClassName}" becomes a link to that node's page.
struct NodeText {
  using Entries = std::vector<std::pair<std::string, std::string>>;

  std::string disabled;
  Entries old_names;
  std::vector<std::string> gone_names;
  std::vector<PictureText> pictures;
  std::string use;
  Entries inputs;
  Entries attributes;
  Entries outputs;
  std::string surprises;
  std::string trial;
};

/// Reads a text. What is wrong with its form goes to `errors`, one line each, every one naming `name`.
NodeText ReadNodeText(const std::filesystem::path& file, const std::string& name, std::vector<std::string>& errors);

/// Holds a text against the node that it is about: every plug and choice word is spoken of, every attribute by its row
/// or here, and nothing that does not exist. `known_old_names` are the old names that any text of the library mentions;
/// a node that takes one of them must say so.
void CheckNodeText(const NodeText& text, const Node& node, const std::vector<std::string>& known_old_names,
                   const std::string& name, std::vector<std::string>& errors);
