// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QStringList>
#include <QWidget>
#include <memory>

#include "Apps/Editor/Docks/OutputRun.h"
#include "Apps/Editor/Docks/OutputsModel.h"
#include "Apps/Editor/Docks/SessionWatch.h"
#include "Host/Editing/EditSession.h"

class OutputForm;
class QBoxLayout;
class QListWidget;
class QProgressBar;
class QPushButton;
class QScrollArea;
class QToolButton;
class QLabel;
class QTreeView;

/// The files that a document writes: a list, the fields of one of them, and writing them all.
class OutputsDock : public QWidget {
  Q_OBJECT

 public:
  OutputsDock(ScEng::EditSession& session, OutputRunStarter start, QWidget* parent = nullptr);
  ~OutputsDock() override;

  /// Adds an output of an image, "id.plug"; of what the document shows, or the last image that there is, where empty.
  void AddOutput(const QString& plug = {});
  /// Writes everything. Nothing happens while that goes on already.
  void WriteAll();
  [[nodiscard]] bool IsWriting() const { return run_ != nullptr; }

 signals:
  /// A line about what could not be done.
  void Failed(const QString& message);
  /// A run has ended: how many files were written, and how many errors there were.
  void Written(int files, int errors);

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private slots:
  void TakeProgress();

 private:
  QWidget* MakeList();
  QWidget* MakeForm();
  QWidget* MakeRunBar();
  void Refresh();
  void ShowSelected();
  void RemoveSelected();
  void ApplyForm();
  void ShowReport(const ScEng::RunReport& report);
  [[nodiscard]] QStringList FindPlugs() const;
  [[nodiscard]] int GetSelected() const;
  void Report(const ScEng::Status& status);

  ScEng::EditSession& session_;
  OutputRunStarter start_;
  SessionWatch watch_;
  OutputsModel model_;
  QTreeView* list_ = nullptr;
  QLabel* empty_ = nullptr;
  QBoxLayout* parts_ = nullptr;
  QScrollArea* fields_ = nullptr;
  OutputForm* form_ = nullptr;
  QToolButton* remove_ = nullptr;
  QPushButton* write_ = nullptr;
  QPushButton* cancel_ = nullptr;
  QProgressBar* progress_ = nullptr;
  QLabel* summary_ = nullptr;
  QListWidget* results_ = nullptr;
  std::unique_ptr<OutputRun> run_;
};
