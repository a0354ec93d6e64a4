// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPixmap>
#include <QString>
#include <string>
#include <vector>

#include "Apps/Editor/Canvas/NodeTypes.h"
#include "Host/Documents/GraphDocument.h"

/// A plug as a node shows it: one row.
struct PlugFace {
  std::string name;
  QString label;
  unsigned type = 0;
  /// Of an input that takes many: the place among its connections.
  unsigned index = 0;
  bool takes_many = false;
  bool is_attribute = false;
  bool is_connected = false;
};

/// What a node shows, as far as the document has it.
struct NodeFace {
  std::string id;
  QString title;
  QString type_name;
  QString note;
  QPixmap icon;
  bool is_enabled = true;
  bool is_placeholder = false;
  bool is_reroute = false;
  /// It delivers an image, so that it has a thumbnail and can be shown.
  bool has_image = false;
  std::vector<PlugFace> inputs;
  std::vector<PlugFace> outputs;
};

/// Reads what a node shows. `connections` are those that lead to it and away from it.
NodeFace ReadNodeFace(const ScEng::GraphDocument& document, const NodeTypes& types, const std::string& id,
                      const std::vector<ScEng::DocumentConnection>& connections);

/// The rows for the attributes of a kind that nothing feeds yet.
std::vector<PlugFace> ListFreeAttributes(const ScEng::GraphDocument& document, const NodeTypes& types,
                                         const NodeFace& face, unsigned kind);
