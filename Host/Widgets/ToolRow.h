// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QToolButton>
#include <QWidget>
#include <vector>

class QAction;

namespace ScEng {

/// A flat button of a tool row: a sign or a word, tinted while it is on.
class ToolRowButton : public QToolButton {
  Q_OBJECT

 public:
  explicit ToolRowButton(QWidget* parent);
  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  void paintEvent(QPaintEvent* event) override;
};

/// One row of tools. Those that find no room are in a menu at its end.
class ToolRow : public QWidget {
  Q_OBJECT

 public:
  explicit ToolRow(QWidget* parent);

  /// Adds a button for an action, with its name and its menu if it has one. The first ones added stay longest.
  ToolRowButton* Add(QAction* action);
  /// What is added from here on stands at the right end.
  void AddStretch();
  void AddGap();

  /// Where a window that belongs to an action opens: its button, or the menu of what finds no room.
  [[nodiscard]] QWidget* FindAnchor(const QAction* action) const;

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override;

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;
  bool event(QEvent* event) override;

 private:
  struct Item {
    ToolRowButton* button = nullptr;
    /// Room before it, in pixels.
    int gap = 0;
    bool is_right = false;
  };
  void Arrange();
  void FillMenu();

  std::vector<Item> items_;
  ToolRowButton* more_;
  QMenu* menu_;
  int next_gap_ = 0;
  bool is_right_ = false;
};

}  // namespace ScEng
