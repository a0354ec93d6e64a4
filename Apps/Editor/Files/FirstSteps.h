// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QFrame>
#include <QList>
#include <QPointer>
#include <QString>

class QCheckBox;
class QLabel;
class QPushButton;

/// What one step says, and the part of the window that it points at.
struct FirstStep {
  QString title;
  QString text;
  /// The object name of a widget in the window; nothing is pointed at where there is none.
  QString target;
};

/// A frame around a part of a window. It lies above everything and takes no events.
class StepMarker : public QWidget {
  Q_OBJECT

 public:
  explicit StepMarker(QWidget* window);
  void Mark(QWidget* target);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void Follow();
  QPointer<QWidget> target_;
};

/// The first things to know, one by one, in a small panel above a window. It is shown until somebody says that it need
/// not be shown again.
class FirstSteps : public QFrame {
  Q_OBJECT

 public:
  /// The steps point at widgets of `window`, which it belongs to.
  FirstSteps(QWidget* window, QList<FirstStep> steps, const QString& settings_file);
  ~FirstSteps() override;

  /// The usual five steps. They point at "canvas", "viewer", "attributes", "outputs" and "help".
  static QList<FirstStep> MakeSteps();
  /// Whether they are to be shown when the program starts: the first time, and as long as somebody wants them again.
  static bool AreWanted(const QString& settings_file);

  void Start();
  [[nodiscard]] int GetStep() const { return step_; }

 signals:
  void Finished();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void GoTo(int step);
  void End();
  void Place();

  QWidget* window_;
  QList<FirstStep> steps_;
  QString settings_file_;
  int step_ = 0;
  StepMarker* marker_ = nullptr;
  QLabel* count_ = nullptr;
  QLabel* title_ = nullptr;
  QLabel* text_ = nullptr;
  QCheckBox* never_ = nullptr;
  QPushButton* back_ = nullptr;
  QPushButton* next_ = nullptr;
};
