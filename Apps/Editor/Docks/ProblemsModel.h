// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QAbstractTableModel>
#include <string>
#include <vector>

/// A line that a node, or the document as a whole, has to say.
struct Problem {
  bool is_error = false;
  /// Empty for the document as a whole.
  std::string id;
  std::string text;

  friend bool operator==(const Problem&, const Problem&) = default;
};

/// Finds the node that a line of the document is about: the first quoted name that is a node, or a plug of one. Empty
/// where there is none.
template <class HasId>
std::string FindNodeInText(const std::string& text, const HasId& has_id) {
  for (std::size_t open = text.find('"'); open != std::string::npos;) {
    const std::size_t close = text.find('"', open + 1);
    if (close == std::string::npos) break;
    const std::string name = text.substr(open + 1, close - open - 1);
    if (has_id(name)) return name;
    const std::size_t dot = name.rfind('.');
    if (dot != std::string::npos && has_id(name.substr(0, dot))) return name.substr(0, dot);
    open = text.find('"', close + 1);
  }
  return {};
}

/// Problems as a table: errors first, each in the order in which they were given.
class ProblemsModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column { kNode, kText, kColumns };
  using QAbstractTableModel::QAbstractTableModel;

  /// Changes the rows that are other ones, so that what is selected and scrolled to stays.
  void Update(std::vector<Problem> problems);
  [[nodiscard]] const std::vector<Problem>& GetProblems() const { return problems_; }
  [[nodiscard]] int CountErrors() const;

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  std::vector<Problem> problems_;
};
