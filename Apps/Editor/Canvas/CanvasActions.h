// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QAction>
#include <QCoreApplication>
#include <QKeySequence>
#include <QList>
#include <QMenu>
#include <functional>

class GraphCanvas;

/// The actions of the canvas, by their object names.
class CanvasActions {
  Q_DECLARE_TR_FUNCTIONS(CanvasActions)

 public:
  explicit CanvasActions(GraphCanvas& canvas);

  [[nodiscard]] const QList<QAction*>& GetAll() const { return actions_; }
  [[nodiscard]] QAction* Find(const QString& name) const;
  /// What can be done with what is selected.
  void FillMenu(QMenu& menu);
  /// What cannot be done with the selection is grey.
  void Update();

 private:
  QAction* Add(const char* name, const QString& text, const QList<QKeySequence>& keys, std::function<void()> act);
  QAction* AddSwitch(const char* name, const QString& text, bool is_on, std::function<void(bool)> act);
  void MakeNodeActions();
  void MakePlaceActions();
  void MakeViewActions();
  void FillFrameMenu(QMenu& menu);

  GraphCanvas& canvas_;
  QList<QAction*> actions_;
};
