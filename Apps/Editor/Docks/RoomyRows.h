// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QStyledItemDelegate>

/// Rows of a list with some air around their text.
class RoomyRows : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    const QSize size = QStyledItemDelegate::sizeHint(option, index);
    return {size.width() + option.fontMetrics.averageCharWidth(), size.height() + option.fontMetrics.height() / 2};
  }
};
