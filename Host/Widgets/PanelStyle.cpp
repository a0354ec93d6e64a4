// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/PanelStyle.h"

#include <QApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QStyleOption>

namespace ScEng {
namespace {

constexpr double kRadius = 4.0;
constexpr int kIndicator = 16;

/// Puts the painter back as it was.
class PainterScope {
 public:
  explicit PainterScope(QPainter& painter) : painter_(painter) {
    painter_.save();
    painter_.setRenderHint(QPainter::Antialiasing);
  }
  ~PainterScope() { painter_.restore(); }
  PainterScope(const PainterScope&) = delete;
  PainterScope& operator=(const PainterScope&) = delete;

 private:
  QPainter& painter_;
};

bool HasFlag(const QStyleOption& option, QStyle::StateFlag flag) { return option.state.testFlag(flag); }

void DrawFieldOf(QPainter& painter, const QStyleOption& option, const QRect& area) {
  DrawField(painter, area, option.palette, HasFlag(option, QStyle::State_Enabled),
            HasFlag(option, QStyle::State_HasFocus), HasFlag(option, QStyle::State_MouseOver));
}

void DrawCheck(QPainter& painter, const QStyleOption& option) {
  const PainterScope scope(painter);
  const bool is_enabled = HasFlag(option, QStyle::State_Enabled);
  const bool is_on = HasFlag(option, QStyle::State_On);
  const QRectF box = QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5);
  const QPalette::ColorGroup group = is_enabled ? QPalette::Active : QPalette::Disabled;
  const QColor accent = option.palette.color(group, QPalette::Highlight);
  painter.setPen(QPen(is_on ? accent : OutlineColor(option.palette), 1.0));
  painter.setBrush(is_on ? accent : option.palette.color(group, QPalette::Base));
  painter.drawRoundedRect(box, kRadius - 1.0, kRadius - 1.0);
  if (!is_on) return;
  const double unit = box.width() / 16.0;
  QPainterPath tick;
  tick.moveTo(box.left() + 4.0 * unit, box.top() + 8.2 * unit);
  tick.lineTo(box.left() + 7.0 * unit, box.top() + 11.2 * unit);
  tick.lineTo(box.left() + 12.2 * unit, box.top() + 5.2 * unit);
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(option.palette.color(group, QPalette::HighlightedText), 1.8 * unit, Qt::SolidLine, Qt::RoundCap,
                      Qt::RoundJoin));
  painter.drawPath(tick);
}

void DrawCombo(const QStyle& style, QPainter& painter, const QStyleOptionComboBox& option, const QWidget* widget) {
  DrawFieldOf(painter, option, option.rect);
  const QRect arrow = style.subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxArrow, widget);
  DrawChevron(painter, QRectF(arrow).center(), 7.0, true, option.palette.color(QPalette::Text));
}

void DrawSpin(const QStyle& style, QPainter& painter, const QStyleOptionSpinBox& option, const QWidget* widget) {
  DrawFieldOf(painter, option, option.rect);
  const auto draw_step = [&](QStyle::SubControl part, QAbstractSpinBox::StepEnabledFlag flag, bool down) {
    const QRectF area = style.subControlRect(QStyle::CC_SpinBox, &option, part, widget);
    const bool is_live = option.stepEnabled.testFlag(flag) && HasFlag(option, QStyle::State_Enabled);
    const bool is_pressed = option.activeSubControls.testFlag(part) && HasFlag(option, QStyle::State_Sunken);
    QColor color = option.palette.color(is_pressed ? QPalette::Highlight : QPalette::Text);
    if (!is_pressed) color.setAlphaF(is_live ? 0.75F : 0.25F);
    DrawChevron(painter, area.center() + QPointF(0.0, down ? -1.0 : 1.0), 5.5, down, color);
  };
  draw_step(QStyle::SC_SpinBoxUp, QAbstractSpinBox::StepUpEnabled, false);
  draw_step(QStyle::SC_SpinBoxDown, QAbstractSpinBox::StepDownEnabled, true);
}

void DrawButton(QPainter& painter, const QStyleOptionButton& option) {
  DrawFieldOf(painter, option, option.rect);
  if (!HasFlag(option, QStyle::State_Sunken) && !HasFlag(option, QStyle::State_On)) return;
  const PainterScope scope(painter);
  QColor accent = option.palette.color(QPalette::Highlight);
  accent.setAlphaF(0.25F);
  painter.setPen(Qt::NoPen);
  painter.setBrush(accent);
  painter.drawRoundedRect(QRectF(option.rect).adjusted(1, 1, -1, -1), kRadius, kRadius);
}

}  // namespace

QColor Mix(const QColor& under, const QColor& over, double share) {
  const auto mix = [&](float a, float b) { return static_cast<float>(a + (b - a) * share); };
  return QColor::fromRgbF(mix(under.redF(), over.redF()), mix(under.greenF(), over.greenF()),
                          mix(under.blueF(), over.blueF()));
}

QColor OutlineColor(const QPalette& palette) {
  return Mix(palette.color(QPalette::Window), palette.color(QPalette::WindowText), 0.32);
}

void DrawField(QPainter& painter, const QRectF& area, const QPalette& palette, bool enabled, bool has_focus,
               bool hovered) {
  const PainterScope scope(painter);
  const QColor ground = palette.color(enabled ? QPalette::Active : QPalette::Disabled, QPalette::Base);
  const QColor window = palette.color(QPalette::Window);
  QColor outline = OutlineColor(palette);
  if (!enabled) outline = Mix(window, outline, 0.5);
  if (hovered && enabled) outline = Mix(outline, palette.color(QPalette::WindowText), 0.4);
  if (has_focus) outline = palette.color(QPalette::Highlight);
  const double width = has_focus ? 2.0 : 1.0;
  painter.setPen(QPen(outline, width));
  painter.setBrush(enabled ? ground : Mix(window, ground, 0.4));
  const double inset = width / 2.0;
  painter.drawRoundedRect(area.adjusted(inset, inset, -inset, -inset), kRadius, kRadius);
}

void DrawChevron(QPainter& painter, QPointF center, double size, bool down, const QColor& color) {
  const PainterScope scope(painter);
  const double half = size / 2.0;
  const double rise = down ? half / 2.0 : -half / 2.0;
  painter.setPen(QPen(color, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.setBrush(Qt::NoBrush);
  QPainterPath path;
  path.moveTo(center + QPointF(-half, -rise));
  path.lineTo(center + QPointF(0.0, rise));
  path.lineTo(center + QPointF(half, -rise));
  painter.drawPath(path);
}

PanelStyle::PanelStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

void PanelStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                               const QWidget* widget) const {
  switch (element) {
    case PE_PanelLineEdit: {
      // The fields inside spin boxes and combo boxes have the frame of those.
      const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
      if (frame != nullptr && frame->lineWidth > 0) DrawFieldOf(*painter, *option, option->rect);
      return;
    }
    case PE_FrameLineEdit: return;
    case PE_IndicatorCheckBox: return DrawCheck(*painter, *option);
    case PE_FrameFocusRect: {
      const PainterScope scope(*painter);
      painter->setPen(QPen(option->palette.color(QPalette::Highlight), 2.0));
      painter->setBrush(Qt::NoBrush);
      painter->drawRoundedRect(QRectF(option->rect).adjusted(1, 1, -1, -1), kRadius, kRadius);
      return;
    }
    default: break;
  }
  QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void PanelStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                             const QWidget* widget) const {
  const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
  if (element == CE_PushButtonBevel && button != nullptr) return DrawButton(*painter, *button);
  QProxyStyle::drawControl(element, option, painter, widget);
}

void PanelStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                                    const QWidget* widget) const {
  const auto* combo = qstyleoption_cast<const QStyleOptionComboBox*>(option);
  if (control == CC_ComboBox && combo != nullptr) return DrawCombo(*this, *painter, *combo, widget);
  const auto* spin = qstyleoption_cast<const QStyleOptionSpinBox*>(option);
  if (control == CC_SpinBox && spin != nullptr) return DrawSpin(*this, *painter, *spin, widget);
  QProxyStyle::drawComplexControl(control, option, painter, widget);
}

int PanelStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
  if (metric == PM_IndicatorWidth || metric == PM_IndicatorHeight) return kIndicator;
  return QProxyStyle::pixelMetric(metric, option, widget);
}

int PanelStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                          QStyleHintReturn* data) const {
  // A list below its field shows more of thirteen words than one over it.
  if (hint == SH_ComboBox_Popup) return 0;
  return QProxyStyle::styleHint(hint, option, widget, data);
}

QSize PanelStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                                   const QWidget* widget) const {
  QSize result = QProxyStyle::sizeFromContents(type, option, size, widget);
  constexpr int kListPadding = 6;
  if (type == CT_ItemViewItem) result.rheight() += kListPadding;
  return result;
}

PanelStyle* PanelStyle::Get() {
  static QPointer<PanelStyle> style;
  if (style == nullptr) {
    style = new PanelStyle;
    style->setParent(QCoreApplication::instance());
  }
  return style;
}

}  // namespace ScEng
