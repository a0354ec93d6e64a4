// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QLabel>

namespace ScEng {

/// A line of text that is cut short where it finds no room; the tooltip then has all of it.
class ElidedLabel : public QLabel {
  Q_OBJECT

 public:
  ElidedLabel(Qt::TextElideMode mode, QWidget* parent);
  [[nodiscard]] QSize minimumSizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  Qt::TextElideMode mode_;
};

}  // namespace ScEng
