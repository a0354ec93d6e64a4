// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Apps/NodePages/NodeText.h"
#include "Host/Tools/NodeInterface.h"
#include "Host/Tools/NodeRecord.h"

/// A node with everything that its page is written from. It has a record.
struct NodePage {
  const NodeInterface* descriptor = nullptr;
  ScEng::RefPtr<Node> node;
  NodeText text;

  /// The folder of the node's text and example graph, from the root of the repository.
  std::string folder;

  [[nodiscard]] std::string GetClass() const { return descriptor->GetNodeFactory()->GetTypeName(); }
  [[nodiscard]] const NodeRecord& GetRecord() const { return *node->GetRecord(); }
  [[nodiscard]] std::string GetTextFile() const { return folder + "/" + GetClass() + ".md"; }
  [[nodiscard]] std::string GetExampleFile() const { return folder + "/" + GetClass() + ".json"; }
  /// The file of a picture, from the folder of the pages.
  [[nodiscard]] std::string GetPictureFile(const PictureText& picture) const;
};

/// The page of one node as Markdown. "{ClassName}" in its text becomes a link by `get_name`, which answers a class's
/// display name; what it answers an empty name for goes to `unknown`.
std::string WritePage(const NodePage& page, const std::function<std::string(const std::string&)>& get_name,
                      std::vector<std::string>& unknown);

/// The index of the pages, grouped by the groups of the records in the order in which these first occur.
std::string WriteIndex(const std::vector<NodePage>& pages);
