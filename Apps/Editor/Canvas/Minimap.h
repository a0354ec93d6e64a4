// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

class GraphView;

/// A small map of the whole graph with the part that is seen; a click goes there.
class Minimap : public QWidget {
  Q_OBJECT

 public:
  explicit Minimap(GraphView& view);

  /// Keeps to the lower right corner of the view.
  void Place();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  /// From the scene to this widget.
  [[nodiscard]] QTransform MakeTransform() const;
  [[nodiscard]] QRectF GetSeen() const;
  void GoTo(const QPoint& place);

  GraphView& view_;
};
