// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPixmap>
#include <QString>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Host/Nodes/NodeSearch.h"
#include "Host/Tools/NodeLibrary.h"

/// What the canvas shows of a plug of a type.
struct TypePlug {
  std::string name;
  QString label;
  /// What the attribute does; empty for plugs that are no attributes.
  QString sentence;
  unsigned type = 0;
  bool takes_many = false;
};

/// What the canvas shows of a node type: read once, since the virtual functions of a plug-in may be slow, or fail.
struct TypeInfo {
  NodeType type;
  std::string type_name;
  QString name;
  QString sentence;
  QString group;
  QPixmap icon;
  std::vector<TypePlug> inputs;
  std::vector<TypePlug> attributes;
  std::vector<TypePlug> outputs;

  [[nodiscard]] bool IsReroute() const { return type_name == "ImageRerouteNode"; }
  /// Whether nodes of the type have an input (or an attribute) of a kind, and an output of a kind.
  [[nodiscard]] bool Takes(unsigned kind) const;
  [[nodiscard]] bool Gives(unsigned kind) const;
  /// Whether a node of the type can stand in a connection of a kind.
  [[nodiscard]] bool Passes(unsigned kind) const;
};

/// The node types of a catalog as the canvas shows them.
class NodeTypes {
 public:
  explicit NodeTypes(std::shared_ptr<const ScEng::NodeCatalog> catalog);
  NodeTypes(const NodeTypes&) = delete;
  NodeTypes& operator=(const NodeTypes&) = delete;

  /// In the order of the catalog.
  [[nodiscard]] const std::vector<TypeInfo>& GetAll() const { return infos_; }
  /// Null where the catalog does not have it.
  [[nodiscard]] const TypeInfo* Find(const NodeType& type) const;
  [[nodiscard]] const TypeInfo* FindName(const std::string& type_name) const;
  /// The places of the types that words find, the best first.
  [[nodiscard]] std::vector<std::size_t> Search(const std::string& words) const;

 private:
  std::shared_ptr<const ScEng::NodeCatalog> catalog_;
  std::vector<TypeInfo> infos_;
  std::map<NodeType, std::size_t> by_type_;
  mutable std::vector<ScEng::SearchTexts> texts_;
};
