// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/HistogramPlot.h"

#include <QKeyEvent>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "Host/Viewing/ViewImage.h"
#include "Host/Widgets/PanelStyle.h"
#include "Host/Widgets/ViewText.h"

namespace ScEng {
namespace {

constexpr int kHandleWidth = 14;
constexpr int kHandleHeight = 14;
constexpr int kStripHeight = 5;
constexpr int kSide = kHandleWidth / 2 + 1;

double ToHeight(std::uint64_t count, bool is_logarithmic) {
  const auto number = static_cast<double>(count);
  return is_logarithmic ? std::log1p(number) : number;
}

float ToFloat(double value) {
  constexpr auto kMost = static_cast<double>(std::numeric_limits<float>::max());
  return static_cast<float>(std::clamp(value, -kMost, kMost));
}

}  // namespace

// ---- Handle ----

RangeHandle::RangeHandle(HistogramPlot* plot, bool is_high) : QWidget(plot), plot_(plot), is_high_(is_high) {
  setObjectName(is_high ? QStringLiteral("histogram.high_handle") : QStringLiteral("histogram.low_handle"));
  setAccessibleName(is_high ? tr("White point") : tr("Black point"));
  setToolTip(is_high ? tr("The value shown as white") : tr("The value shown as black"));
  setFocusPolicy(Qt::StrongFocus);
  setCursor(Qt::SizeHorCursor);
  setFixedSize(kHandleWidth, kHandleHeight);
}

void RangeHandle::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const double middle = width() / 2.0;
  QPainterPath path;
  path.moveTo(middle, 1.0);
  path.lineTo(width() - 1.5, height() * 0.5);
  path.lineTo(width() - 1.5, height() - 1.5);
  path.lineTo(1.5, height() - 1.5);
  path.lineTo(1.5, height() * 0.5);
  path.closeSubpath();
  const QColor text = palette().color(QPalette::Text);
  painter.setPen(hasFocus() ? QPen(palette().color(QPalette::Highlight), 2.0)
                            : QPen(Mix(palette().color(QPalette::Window), text, 0.6), 1.0));
  painter.setBrush(is_high_ ? QColor(Qt::white) : QColor(Qt::black));
  painter.drawPath(path);
}

void RangeHandle::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) plot_->SetHeld(true);
}

void RangeHandle::mouseMoveEvent(QMouseEvent* event) {
  if (!event->buttons().testFlag(Qt::LeftButton)) return;
  plot_->MoveEnd(is_high_, plot_->ToValue(mapToParent(event->position().toPoint()).x()));
}

void RangeHandle::mouseReleaseEvent(QMouseEvent*) { plot_->SetHeld(false); }

void RangeHandle::keyPressEvent(QKeyEvent* event) {
  constexpr int kFar = 10;
  const int steps = event->modifiers().testFlag(Qt::ShiftModifier) ? kFar : 1;
  switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Down: return plot_->StepEnd(is_high_, -steps);
    case Qt::Key_Right:
    case Qt::Key_Up: return plot_->StepEnd(is_high_, steps);
    case Qt::Key_PageDown: return plot_->StepEnd(is_high_, -kFar);
    case Qt::Key_PageUp: return plot_->StepEnd(is_high_, kFar);
    case Qt::Key_Home: return plot_->MoveToMeasured(is_high_, false);
    case Qt::Key_End: return plot_->MoveToMeasured(is_high_, true);
    default: QWidget::keyPressEvent(event);
  }
}

// ---- Plot ----

HistogramPlot::HistogramPlot(QWidget* parent)
    : QWidget(parent), low_(new RangeHandle(this, false)), high_(new RangeHandle(this, true)) {
  setObjectName(QStringLiteral("histogram.plot"));
  setAccessibleName(tr("Histogram"));
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize HistogramPlot::sizeHint() const { return {280, 4 * fontMetrics().height() + kHandleHeight + kStripHeight}; }

QSize HistogramPlot::minimumSizeHint() const { return {96, sizeHint().height()}; }

void HistogramPlot::SetImage(std::shared_ptr<const ViewImage> image) {
  image_ = std::move(image);
  SetLook(look_);
}

void HistogramPlot::SetLook(const Look& look) {
  look_ = look;
  shown_ = image_ != nullptr ? GetShownRange(*image_, look_) : look_.custom;
  SettleAxis();
  PlaceHandles();
  update();
}

void HistogramPlot::SetLogarithmic(bool on) {
  is_logarithmic_ = on;
  update();
}

void HistogramPlot::SetHeld(bool held) {
  is_held_ = held;
  if (held) return;
  SettleAxis();
  PlaceHandles();
  update();
}

void HistogramPlot::SettleAxis() {
  if (is_held_) return;
  double low = static_cast<double>(std::min(shown_.low, shown_.high));
  double high = static_cast<double>(std::max(shown_.low, shown_.high));
  const auto include = [&](float value) {
    if (!std::isfinite(value)) return;
    low = std::min(low, static_cast<double>(value));
    high = std::max(high, static_cast<double>(value));
  };
  if (image_ != nullptr) {
    include(image_->GetImage().GetValueLow());
    include(image_->GetImage().GetValueHigh());
    if (!image_->GetHistogram().range.IsEmpty()) {
      include(image_->GetHistogram().range.low);
      include(image_->GetHistogram().range.high);
    }
  }
  if (!(high > low)) {
    const double reach = std::max(0.5, std::abs(low) * 1e-3);
    low -= reach;
    high += reach;
  }
  // Handles at the ends can be dragged outwards.
  const double margin = (high - low) * 0.04;
  axis_low_ = low - margin;
  axis_high_ = high + margin;
}

QRectF HistogramPlot::GetBarArea() const {
  return {static_cast<double>(kSide), 1.0, static_cast<double>(std::max(1, width() - 2 * kSide)),
          static_cast<double>(std::max(1, height() - kHandleHeight - kStripHeight - 2))};
}

double HistogramPlot::ToX(double value) const {
  const QRectF area = GetBarArea();
  return area.left() + (value - axis_low_) / (axis_high_ - axis_low_) * area.width();
}

double HistogramPlot::ToValue(double x) const {
  const QRectF area = GetBarArea();
  return axis_low_ + (x - area.left()) / area.width() * (axis_high_ - axis_low_);
}

void HistogramPlot::MoveEnd(bool is_high, double value) {
  ValueRange range = shown_;
  const float end = ToFloat(std::clamp(value, axis_low_, axis_high_));
  (is_high ? range.high : range.low) = is_high ? std::max(end, range.low) : std::min(end, range.high);
  if (range != shown_) Q_EMIT RangeMoved(range);
}

void HistogramPlot::StepEnd(bool is_high, int steps) {
  constexpr double kSteps = 200.0;
  const double by = (axis_high_ - axis_low_) / kSteps * steps;
  MoveEnd(is_high, static_cast<double>(is_high ? shown_.high : shown_.low) + by);
}

void HistogramPlot::MoveToMeasured(bool is_high, bool to_highest) {
  if (image_ == nullptr || image_->GetHistogram().range.IsEmpty()) return;
  const SampleRange& range = image_->GetHistogram().range;
  MoveEnd(is_high, static_cast<double>(to_highest ? range.high : range.low));
}

void HistogramPlot::PlaceHandles() {
  const int y = height() - kHandleHeight;
  const auto place = [&](RangeHandle* handle, float value) {
    const double x = std::clamp(ToX(static_cast<double>(value)), 0.0, static_cast<double>(width()));
    handle->move(static_cast<int>(std::lround(x)) - kHandleWidth / 2, y);
  };
  place(low_, shown_.low);
  place(high_, shown_.high);
  // At one place, the one that can be moved away is on top.
  if (shown_.low >= static_cast<float>(axis_high_)) low_->raise();
}

void HistogramPlot::resizeEvent(QResizeEvent*) { PlaceHandles(); }

void HistogramPlot::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return event->ignore();
  SetHeld(true);
  pressed_ = ToValue(event->position().x());
  at_press_ = shown_;
}

void HistogramPlot::mouseMoveEvent(QMouseEvent* event) {
  if (!is_held_) return;
  const double by = ToValue(event->position().x()) - pressed_;
  const ValueRange range{ToFloat(static_cast<double>(at_press_.low) + by),
                         ToFloat(static_cast<double>(at_press_.high) + by)};
  if (range != shown_) Q_EMIT RangeMoved(range);
}

void HistogramPlot::mouseReleaseEvent(QMouseEvent*) { SetHeld(false); }

void HistogramPlot::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const QRectF area = GetBarArea();
  painter.fillRect(area, palette().color(QPalette::Base));
  PaintDeclared(painter);
  PaintBars(painter);
  PaintStrip(painter);
  painter.setPen(QPen(OutlineColor(palette()), 1.0));
  painter.setBrush(Qt::NoBrush);
  painter.drawRect(area.adjusted(-0.5, -0.5, 0.5, 0.5));
}

void HistogramPlot::PaintBars(QPainter& painter) const {
  if (image_ == nullptr) return;
  const ViewHistogram& histogram = image_->GetHistogram();
  const std::uint64_t most = *std::max_element(histogram.bars.begin(), histogram.bars.end());
  if (most == 0) return;
  const QRectF area = GetBarArea();
  const QColor text = palette().color(QPalette::Text);
  const QColor inside = Mix(palette().color(QPalette::Base), text, 0.62);
  const QColor outside = Mix(palette().color(QPalette::Base), text, 0.3);
  const double tallest = ToHeight(most, is_logarithmic_);
  const double low = static_cast<double>(histogram.range.low);
  const double span = static_cast<double>(histogram.range.high) - low;
  const auto count = static_cast<double>(histogram.bars.size());
  for (std::size_t i = 0; i < histogram.bars.size(); ++i) {
    if (histogram.bars[i] == 0) continue;
    const double from = low + span * static_cast<double>(i) / count;
    const double to = low + span * static_cast<double>(i + 1) / count;
    const double x = ToX(from);
    const double height = std::max(1.0, ToHeight(histogram.bars[i], is_logarithmic_) / tallest * (area.height() - 2.0));
    const double middle = (from + to) / 2.0;
    const bool is_shown = middle >= static_cast<double>(shown_.low) && middle <= static_cast<double>(shown_.high);
    painter.fillRect(QRectF(x, area.bottom() - height, std::max(2.0, ToX(to) - x), height),
                     is_shown ? inside : outside);
  }
}

void HistogramPlot::PaintDeclared(QPainter& painter) const {
  if (image_ == nullptr) return;
  const QRectF area = GetBarArea();
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  const QColor color = palette().color(QPalette::Active, QPalette::Highlight);
  for (const float value : {image_->GetImage().GetValueLow(), image_->GetImage().GetValueHigh()}) {
    if (!std::isfinite(value)) continue;
    const double x = ToX(static_cast<double>(value));
    painter.setPen(QPen(color, 1.0, Qt::DashLine));
    painter.drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
    constexpr double kSize = 4.0;
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawPolygon(QPolygonF(
        {QPointF(x - kSize, area.top()), QPointF(x + kSize, area.top()), QPointF(x, area.top() + kSize * 1.4)}));
  }
  painter.restore();
}

void HistogramPlot::PaintStrip(QPainter& painter) const {
  const QRectF area = GetBarArea();
  const double from = std::clamp(ToX(static_cast<double>(shown_.low)), area.left(), area.right());
  const double to = std::clamp(ToX(static_cast<double>(shown_.high)), area.left(), area.right());
  const QRectF strip(area.left(), area.bottom() + 1.0, area.width(), kStripHeight);
  const bool has_ramp = look_.shading == Shading::kRamp;
  const auto color = [&](double share) {
    if (has_ramp) return QColor::fromRgb(GetRampColor(look_.ramp, share));
    return QColor::fromRgbF(static_cast<float>(share), static_cast<float>(share), static_cast<float>(share));
  };
  painter.fillRect(strip, color(0.0));
  QLinearGradient gradient(from, 0.0, std::max(from + 0.5, to), 0.0);
  constexpr int kStops = 16;
  for (int i = 0; i <= kStops; ++i) gradient.setColorAt(double{1.0} * i / kStops, color(double{1.0} * i / kStops));
  painter.fillRect(strip, gradient);
}

}  // namespace ScEng
