// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <QStringList>
#include <string>
#include <vector>

#include "Host/Editing/EditSession.h"
#include "Host/Tools/Node.h"
#include "Host/Util/Status.h"

/// Named sets of attribute values of one node type: one JSON file each in a folder of the user's settings.
///
/// Paths are no part of a preset, since they mean something in one document only.
class Presets {
 public:
  /// Those of a node type, in the folder of the user's settings.
  explicit Presets(const std::string& type_name);
  Presets(const std::string& type_name, const QString& folder);

  /// The names in the order of the alphabet.
  [[nodiscard]] QStringList GetNames() const;
  /// Writes what the node holds under a name, also in place of what has that name. An error for a name of no use.
  ScEng::Status Save(const QString& name, const Node& node) const;
  /// Reads the values for the attributes of a node of the type, by "id.attribute". What the node does not have, and
  /// what is of another kind, goes to `notes`.
  ScEng::Status Load(const QString& name, const Node& node, const std::string& id,
                     std::vector<ScEng::AttributeValue>& values, std::vector<std::string>& notes) const;
  ScEng::Status Remove(const QString& name) const;

 private:
  [[nodiscard]] QString GetFile(const QString& name) const;

  std::string type_name_;
  QString folder_;
};
