// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDialog>

#include "Apps/Editor/Files/Templates.h"

class QListWidget;

/// Lets a person choose what a new document starts from.
class TemplatesDialog : public QDialog {
  Q_OBJECT

 public:
  explicit TemplatesDialog(QWidget* parent = nullptr);

  /// What was chosen, once the dialog was accepted.
  [[nodiscard]] Template GetChosen() const;

 private:
  QList<Template> templates_;
  QListWidget* list_ = nullptr;
};
