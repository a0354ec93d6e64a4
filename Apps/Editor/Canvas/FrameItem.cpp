// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/FrameItem.h"

#include <QApplication>
#include <QFontMetricsF>
#include <QPainter>
#include <QStyleOptionGraphicsItem>
#include <algorithm>

namespace {

constexpr double kTitle = 28.0;
constexpr double kGrip = 18.0;

QRectF GetBoxOf(const ScEng::DocumentFrame& frame) {
  // A document may hold any numbers; what is drawn stays where the view can get to.
  const auto bound = [](double value) { return std::clamp(value, -kFarthest, kFarthest); };
  return {bound(frame.box.x), bound(frame.box.y), std::max(0.0, bound(frame.box.width)),
          std::max(0.0, bound(frame.box.height))};
}

}  // namespace

FrameItem::FrameItem(const CanvasColors& colors, std::size_t index, const ScEng::DocumentFrame& frame)
    : colors_(colors), index_(index) {
  setFlags(ItemIsSelectable);
  setZValue(-2.0);
  SetFrame(frame);
}

void FrameItem::SetFrame(const ScEng::DocumentFrame& frame) {
  frame_ = frame;
  SetBox(GetBoxOf(frame));
}

void FrameItem::SetBox(const QRectF& box) {
  prepareGeometryChange();
  setPos(box.topLeft());
  box_ = QRectF(QPointF(), box.size());
  update();
}

QRectF FrameItem::boundingRect() const { return box_.adjusted(-4, -4, 4, 4); }
QRectF FrameItem::GetTitleBox() const { return {pos().x(), pos().y(), box_.width(), std::min(kTitle, box_.height())}; }
QRectF FrameItem::GetGrip() const {
  return {pos().x() + box_.width() - kGrip, pos().y() + box_.height() - kGrip, kGrip, kGrip};
}
QColor FrameItem::GetColor() const {
  const QColor color(QString::fromStdString(frame_.color));
  return color.isValid() ? color : MixColors(colors_.ground, colors_.text, 0.5);
}

void FrameItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*) {
  const double zoom = QStyleOptionGraphicsItem::levelOfDetailFromTransform(painter->worldTransform());
  const QColor color = GetColor();
  QColor fill = color;
  fill.setAlphaF(colors_.is_dark ? 0.14F : 0.12F);
  painter->setPen(isSelected() ? QPen(colors_.accent, 2.4 / std::min(1.0, zoom))
                               : QPen(MixColors(colors_.ground, color, 0.6), 1.2));
  painter->setBrush(fill);
  painter->drawRoundedRect(box_, 8, 8);
  if (!frame_.title.empty() && zoom * 1.6 >= Detail::kText) {
    QFont font = QApplication::font();
    font.setPixelSize(15);
    font.setWeight(QFont::DemiBold);
    painter->setFont(font);
    painter->setPen(MixColors(color, colors_.text, 0.55));
    const QRectF title(12, 4, box_.width() - 24, kTitle - 4);
    painter->drawText(
        title, Qt::AlignLeft | Qt::AlignVCenter,
        QFontMetricsF(font).elidedText(QString::fromStdString(frame_.title), Qt::ElideRight, title.width()));
  }
  if (zoom < Detail::kText) return;
  painter->setPen(QPen(MixColors(colors_.ground, color, 0.8), 1.4, Qt::SolidLine, Qt::RoundCap));
  const QPointF corner = box_.bottomRight() - QPointF(5, 5);
  for (const double size : {4.0, 8.0}) painter->drawLine(corner - QPointF(size, 0), corner - QPointF(0, size));
}
