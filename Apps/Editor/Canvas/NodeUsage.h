// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QStringList>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

/// Which node types a person adds: a small list, the newest first, with how often each was added.
class NodeUsage {
 public:
  void Count(const std::string& type_name);
  /// The types, most used and newest first.
  [[nodiscard]] std::vector<std::string> Rank() const;

  /// As "TypeName=3", the newest first. What is not of this form is left out when it is read.
  [[nodiscard]] QStringList Save() const;
  void Load(const QStringList& lines);

 private:
  std::vector<std::pair<std::string, int>> types_;
};
