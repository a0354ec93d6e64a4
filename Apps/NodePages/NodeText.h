// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <functional>
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

/// What a person wrote about a node: the part of its page that its descriptor does not know.
///
/// A text file is Markdown. It starts with lines "key: value" between two lines "---":
///
///   family    the heading that the index lists the node under
///   purpose   one sentence
///   disabled  what the node does when it is disabled, in one sentence
///   old       OLD = CURRENT, a name that an attribute once had; may be given again
///   gone      the name of an attribute that the node once had; may be given again
///   show      OUTPUT | LOOK | CAPTION, a picture; two at least, see `ParseLook`
///
/// The sections follow, in this order: "## What it is for", "## Inputs", "## Attributes" (where there are any),
/// "## Outputs", "## What surprises", "## Try it". Inputs, attributes and outputs have one "### name" per plug or
/// attribute, in the order of the node. "{ClassName}" becomes a link to that node's page.
struct NodeText {
  using Entries = std::vector<std::pair<std::string, std::string>>;

  std::string family;
  std::string purpose;
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

/// The first sentence of a text in Markdown, as plain text: on one line, without the marks of code. "{ClassName}"
/// becomes what `get_name` answers for it.
std::string GetFirstSentence(const std::string& text,
                             const std::function<std::string(const std::string& class_name)>& get_name);

/// Reads a text. What is wrong with its form goes to `errors`, one line each, every one naming `name`.
NodeText ReadNodeText(const std::filesystem::path& file, const std::string& name, std::vector<std::string>& errors);

/// Holds a text against the node that it is about: every plug, attribute and choice word is spoken of, and nothing that
/// does not exist. `known_old_names` are the old names that any text of the library mentions; a node that takes one of
/// them must say so.
void CheckNodeText(const NodeText& text, const Node& node, const std::vector<std::string>& known_old_names,
                   const std::string& name, std::vector<std::string>& errors);
