// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>
#include <functional>
#include <memory>

#include "Host/Viewing/Look.h"

namespace ScEng {

class HistogramPlot;
class ViewImage;

/// A handle below the histogram, at one end of the shown range.
class RangeHandle : public QWidget {
  Q_OBJECT

 public:
  RangeHandle(HistogramPlot* plot, bool is_high);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  HistogramPlot* plot_;
  bool is_high_;
};

/// The bars of a histogram over an axis of values, with the handles of the shown range.
class HistogramPlot : public QWidget {
  Q_OBJECT

 public:
  explicit HistogramPlot(QWidget* parent);

  void SetImage(std::shared_ptr<const ViewImage> image);
  void SetLook(const Look& look);
  void SetLogarithmic(bool on);
  [[nodiscard]] bool IsLogarithmic() const { return is_logarithmic_; }
  [[nodiscard]] const ValueRange& GetShown() const { return shown_; }

  [[nodiscard]] double ToX(double value) const;
  [[nodiscard]] double ToValue(double x) const;

  /// Puts one end of the range elsewhere. It stops at the other end.
  void MoveEnd(bool is_high, double value);
  /// Moves it by so many steps of two pixels or so.
  void StepEnd(bool is_high, int steps);
  /// Takes it to the lowest or the highest value of the image.
  void MoveToMeasured(bool is_high, bool to_highest);
  /// While a handle is held, the axis stays.
  void SetHeld(bool held);

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override;

 Q_SIGNALS:
  void RangeMoved(ScEng::ValueRange range);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;

 private:
  [[nodiscard]] QRectF GetBarArea() const;
  void SettleAxis();
  void PlaceHandles();
  void PaintBars(QPainter& painter) const;
  void PaintDeclared(QPainter& painter) const;
  void PaintStrip(QPainter& painter) const;

  std::shared_ptr<const ViewImage> image_;
  Look look_;
  ValueRange shown_;
  double axis_low_ = 0.0;
  double axis_high_ = 1.0;
  bool is_logarithmic_ = false;
  bool is_held_ = false;
  /// Of a press between the handles, which moves both.
  double pressed_ = 0.0;
  ValueRange at_press_;
  RangeHandle* low_;
  RangeHandle* high_;
};

}  // namespace ScEng
