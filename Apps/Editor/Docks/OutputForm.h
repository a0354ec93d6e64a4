// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QStringList>
#include <QWidget>
#include <filesystem>

#include "Host/Documents/DocumentParts.h"

class QComboBox;
class QLabel;
class QLineEdit;

/// The fields of one output of a document.
class OutputForm : public QWidget {
  Q_OBJECT

 public:
  explicit OutputForm(QWidget* parent);

  /// Shows an output. `plugs` are the image outputs that there are, "id.plug".
  void Show(const ScEng::DocumentOutput& output, const QStringList& plugs, const std::filesystem::path& folder);
  [[nodiscard]] ScEng::DocumentOutput GetOutput() const;
  void ShowError(const QString& message);

 signals:
  /// A field was set, or left with another text.
  void Edited();

 private:
  QComboBox* AddChoice(const QString& name, const QString& label, const QString& tip,
                       const QList<std::pair<QString, QString>>& choices);
  void Browse();
  void TellIfEdited();

  QComboBox* from_ = nullptr;
  QLineEdit* path_ = nullptr;
  QComboBox* type_ = nullptr;
  QComboBox* samples_ = nullptr;
  QComboBox* opacity_ = nullptr;
  QComboBox* metadata_ = nullptr;
  QLineEdit* layer_ = nullptr;
  QLabel* error_ = nullptr;
  QStringList plugs_;
  ScEng::DocumentOutput shown_;
  std::filesystem::path folder_;
};
