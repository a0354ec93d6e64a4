// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>
#include <memory>

#include "Host/Tools/NodeLibrary.h"

class QTextBrowser;

/// The page of a node type.
class HelpDock : public QWidget {
  Q_OBJECT

 public:
  explicit HelpDock(std::shared_ptr<const ScEng::NodeCatalog> catalog, QWidget* parent = nullptr);
  ~HelpDock() override;

  /// Shows the page of a type, by its class name.
  void ShowNode(const QString& type_name);
  [[nodiscard]] const QString& GetNode() const { return shown_; }

 protected:
  void changeEvent(QEvent* event) override;

 private:
  void Refresh();

  std::shared_ptr<const ScEng::NodeCatalog> catalog_;
  QTextBrowser* page_ = nullptr;
  QString shown_;
};
