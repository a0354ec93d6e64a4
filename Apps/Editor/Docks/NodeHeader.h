// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QIcon>
#include <QPlainTextEdit>
#include <QString>
#include <QWidget>

class QCheckBox;
class QLabel;
class QLineEdit;
class QMenu;
class QToolButton;

/// A field for a note of some lines: says when it is left, or Ctrl+Enter is pressed.
class NoteField : public QPlainTextEdit {
  Q_OBJECT

 public:
  using QPlainTextEdit::QPlainTextEdit;
  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override;

 signals:
  void Finished();

 protected:
  void focusOutEvent(QFocusEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
};

/// The part of the attributes dock above the panel: what the node is, its name, its switch, its note, and what can be
/// done with its attributes.
class NodeHeader : public QWidget {
  Q_OBJECT

 public:
  struct Facts {
    QIcon icon;
    QString type;
    /// Empty for several nodes, which have no name and no note of their own.
    QString id;
    QString note;
    Qt::CheckState enabled = Qt::Checked;
    /// False for a node of unknown type.
    bool has_attributes = true;
  };

  explicit NodeHeader(QWidget* parent);

  /// What is being typed stays.
  void Show(const Facts& facts);
  /// A line under the name; empty for none.
  void ShowError(const QString& message);
  /// Hands out what was typed and not finished.
  void Finish();
  [[nodiscard]] QMenu& GetPresetsMenu() const { return *presets_; }
  [[nodiscard]] QMenu& GetCopyMenu() const { return *copy_; }

 signals:
  void Renamed(const QString& now);
  void NoteChanged(const QString& note);
  void EnabledChanged(bool enabled);
  void ResetRequested();
  void HelpRequested();

 private:
  QToolButton* AddButton(const QString& name, const QString& text, const QString& tip);
  void FinishName();
  void FinishNote();

  QLabel* icon_ = nullptr;
  QLabel* type_ = nullptr;
  QLineEdit* name_ = nullptr;
  QLabel* name_label_ = nullptr;
  QLabel* error_ = nullptr;
  QCheckBox* enabled_ = nullptr;
  NoteField* note_ = nullptr;
  QLabel* note_label_ = nullptr;
  QMenu* presets_ = nullptr;
  QMenu* copy_ = nullptr;
  QList<QToolButton*> buttons_;
  Facts facts_;
};
