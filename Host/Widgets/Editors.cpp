// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/Editors.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QRegularExpression>
#include <QSignalBlocker>
#include <algorithm>
#include <cmath>

#include "Host/Widgets/PanelStyle.h"

namespace ScEng {
namespace {

constexpr int kFieldHeight = 26;
constexpr double kHandle = 7.0;
constexpr double kGroove = 4.0;
constexpr double kPageSteps = 10.0;

/// The digits of a number without those that say nothing: 1.500 is 1.5.
QString Shorten(QString text) {
  if (!text.contains(u'.')) return text;
  while (text.endsWith(u'0')) text.chop(1);
  if (text.endsWith(u'.')) text.chop(1);
  return text == QStringLiteral("-0") ? QStringLiteral("0") : text;
}

}  // namespace

// ---- NumberBox ----

NumberBox::NumberBox(QWidget* parent) : QDoubleSpinBox(parent) {
  setLocale(QLocale::c());
  setFocusPolicy(Qt::StrongFocus);
  setKeyboardTracking(true);
  setCorrectionMode(QAbstractSpinBox::CorrectToPreviousValue);
  setAccelerated(true);
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void NumberBox::Show(double value) {
  const QSignalBlocker blocker(this);
  // Setting the value that is there would rewrite a text that is being typed.
  if (this->value() != value) setValue(value);
  shown_ = this->value();
}

QSize NumberBox::sizeHint() const {
  // Boxes without a unit leave room for a short one, so that the sliders of a panel end in one line.
  const QString unit = suffix().size() > 3 ? suffix() : QStringLiteral(" px");
  return {fontMetrics().horizontalAdvance(QStringLiteral("-10000.00") + unit) + 30, kFieldHeight};
}

QSize NumberBox::minimumSizeHint() const {
  return {fontMetrics().horizontalAdvance(QStringLiteral("-0.00") + suffix()) + 30, kFieldHeight};
}

QString NumberBox::textFromValue(double value) const {
  constexpr double kMostPlain = 1e15;
  if (std::abs(value) >= kMostPlain) return QString::number(value, 'g', 9);
  return Shorten(QString::number(value, 'f', decimals()));
}

double NumberBox::valueFromText(const QString& text) const { return Plain(text).toDouble(); }

QString NumberBox::Plain(const QString& text) const {
  QString plain = text;
  plain.remove(suffix());
  return plain.replace(u',', u'.').trimmed();
}

QValidator::State NumberBox::validate(QString& text, int&) const {
  // Every number can be typed to its end. What the field cannot hold as it stands, it takes as the nearest that it can,
  // once the number is complete.
  static const QRegularExpression number(QStringLiteral("^[+-]?\\d*\\.?\\d*([eE][+-]?\\d*)?$"));
  const QString plain = Plain(text);
  if (!number.match(plain).hasMatch()) return QValidator::Invalid;
  bool is_complete = false;
  const double value = plain.toDouble(&is_complete);
  if (!is_complete || value < minimum() || value > maximum()) return QValidator::Intermediate;
  return Round(value) == value ? QValidator::Acceptable : QValidator::Intermediate;
}

void NumberBox::fixup(QString& text) const {
  bool is_number = false;
  const double value = Plain(text).toDouble(&is_number);
  if (is_number) text = textFromValue(std::clamp(Round(value), minimum(), maximum())) + suffix();
}

double NumberBox::Round(double value) const { return QString::number(value, 'f', decimals()).toDouble(); }

// ---- NumberSlider ----

NumberSlider::NumberSlider(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
  setRange(0, kPositions);
  setFocusPolicy(Qt::StrongFocus);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  setAttribute(Qt::WA_Hover);
}

void NumberSlider::SetMarks(double origin, double default_position) {
  if (origin == origin_ && default_position == default_position_) return;
  origin_ = origin;
  default_position_ = default_position;
  update();
}

QSize NumberSlider::sizeHint() const { return {140, kFieldHeight}; }
QSize NumberSlider::minimumSizeHint() const { return {60, kFieldHeight}; }

double NumberSlider::ToX(int position) const {
  const double travel = std::max(1.0, width() - 2.0 * kHandle - 2.0);
  return 1.0 + kHandle + travel * position / kPositions;
}

int NumberSlider::PositionAt(double x) const {
  const double travel = std::max(1.0, width() - 2.0 * kHandle - 2.0);
  return static_cast<int>(std::lround(std::clamp((x - 1.0 - kHandle) / travel, 0.0, 1.0) * kPositions));
}

void NumberSlider::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QPalette& colors = palette();
  const double middle = height() / 2.0;
  const QColor outline = OutlineColor(colors);
  const QColor groove = Mix(colors.color(QPalette::Window), colors.color(QPalette::WindowText), 0.18);
  QColor accent = colors.color(QPalette::Highlight);
  if (!isEnabled()) accent = outline;
  const auto draw_bar = [&](double from, double to, const QColor& color) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(QRectF(std::min(from, to), middle - kGroove / 2, std::abs(to - from), kGroove), kGroove / 2,
                            kGroove / 2);
  };
  draw_bar(ToX(0) - kGroove / 2, ToX(kPositions) + kGroove / 2, groove);
  const double handle = ToX(sliderPosition());
  const double origin = ToX(static_cast<int>(std::lround(origin_ * kPositions)));
  if (handle != origin) draw_bar(origin, handle, accent);
  // The default, as a tick below the groove.
  const double mark = ToX(static_cast<int>(std::lround(default_position_ * kPositions)));
  painter.setPen(QPen(outline, 1.0));
  painter.drawLine(QPointF(mark, middle + kGroove / 2 + 3.0), QPointF(mark, middle + kGroove / 2 + 6.0));

  if (hasFocus()) {
    QColor ring = accent;
    ring.setAlphaF(0.35F);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ring);
    painter.drawEllipse(QPointF(handle, middle), kHandle + 3.0, kHandle + 3.0);
  }
  const bool is_lit = isSliderDown() || underMouse() || hasFocus();
  painter.setPen(QPen(is_lit && isEnabled() ? accent : outline, 1.5));
  painter.setBrush(isSliderDown() ? accent : Mix(colors.color(QPalette::Base), colors.color(QPalette::Button), 0.5));
  painter.drawEllipse(QPointF(handle, middle), kHandle - 0.75, kHandle - 0.75);
}

void NumberSlider::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return event->ignore();
  setSliderDown(true);
  setSliderPosition(PositionAt(event->position().x()));
  update();
}

void NumberSlider::mouseMoveEvent(QMouseEvent* event) {
  if (isSliderDown()) setSliderPosition(PositionAt(event->position().x()));
}

void NumberSlider::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return event->ignore();
  setSliderDown(false);
  update();
}

void NumberSlider::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton && on_double_click_) on_double_click_();
}

void NumberSlider::keyPressEvent(QKeyEvent* event) {
  double steps = 0.0;
  switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Down: steps = -1.0; break;
    case Qt::Key_Right:
    case Qt::Key_Up: steps = 1.0; break;
    case Qt::Key_PageDown: steps = -kPageSteps; break;
    case Qt::Key_PageUp: steps = kPageSteps; break;
    default: return QSlider::keyPressEvent(event);
  }
  if (on_steps_) on_steps_(steps);
}

// ---- SignButton ----

SignButton::SignButton(Sign sign, QWidget* parent) : QAbstractButton(parent), sign_(sign) {
  setFocusPolicy(Qt::StrongFocus);
  setAttribute(Qt::WA_Hover);
  setCursor(Qt::PointingHandCursor);
  setFixedSize(sizeHint());
}

QSize SignButton::sizeHint() const { return {sign_ == Sign::kReset ? 22 : 30, kFieldHeight}; }

void SignButton::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QPalette& colors = palette();
  if (sign_ == Sign::kFolder) DrawField(painter, rect(), colors, isEnabled(), hasFocus(), underMouse());
  const bool is_lit = underMouse() || hasFocus() || isDown();
  QColor color = is_lit ? colors.color(QPalette::Highlight) : colors.color(QPalette::WindowText);
  if (!is_lit) color.setAlphaF(0.65F);
  painter.setPen(QPen(color, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.setBrush(Qt::NoBrush);
  const QPointF center = QRectF(rect()).center();
  QPainterPath path;
  if (sign_ == Sign::kFolder) {
    path.moveTo(center + QPointF(-7, 5));
    path.lineTo(center + QPointF(-7, -5));
    path.lineTo(center + QPointF(-2.5, -5));
    path.lineTo(center + QPointF(-0.5, -3));
    path.lineTo(center + QPointF(7, -3));
    path.lineTo(center + QPointF(7, 5));
    path.closeSubpath();
    painter.drawPath(path);
    return;
  }
  if (hasFocus()) {
    QColor ring = color;
    ring.setAlphaF(0.25F);
    painter.fillPath(
        [&] {
          QPainterPath disc;
          disc.addEllipse(center, 10.5, 10.5);
          return disc;
        }(),
        ring);
  }
  // Three quarters of a circle that run back, with the point of an arrow at the end.
  const QRectF circle(center.x() - 5.5, center.y() - 5.5, 11.0, 11.0);
  path.arcMoveTo(circle, -130.0);
  path.arcTo(circle, -130.0, 275.0);
  painter.drawPath(path);
  const QPointF tip(center.x() - 5.0, center.y() - 3.2);
  QPainterPath point;
  point.moveTo(tip + QPointF(-0.6, -4.2));
  point.lineTo(tip + QPointF(-0.2, 0.2));
  point.lineTo(tip + QPointF(4.2, -0.4));
  painter.drawPath(point);
}

// ---- Swatch ----

Swatch::Swatch(QWidget* parent) : QAbstractButton(parent) {
  setFocusPolicy(Qt::StrongFocus);
  setAttribute(Qt::WA_Hover);
  setCursor(Qt::PointingHandCursor);
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
}

void Swatch::SetColor(const QColor& color) {
  if (color == color_) return;
  color_ = color;
  update();
}

QSize Swatch::sizeHint() const { return {kFieldHeight * 2, kFieldHeight}; }

void Swatch::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  DrawField(painter, rect(), palette(), isEnabled(), hasFocus(), underMouse());
  painter.setRenderHint(QPainter::Antialiasing);
  QPainterPath clip;
  clip.addRoundedRect(QRectF(rect()).adjusted(3, 3, -3, -3), 2.0, 2.0);
  painter.setClipPath(clip);
  constexpr int kCell = 6;
  for (int y = 3; y < height(); y += kCell) {
    for (int x = 3; x < width(); x += kCell) {
      painter.fillRect(x, y, kCell, kCell, (x / kCell + y / kCell) % 2 == 0 ? Qt::white : Qt::lightGray);
    }
  }
  painter.fillPath(clip, color_);
}

}  // namespace ScEng
