// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/NodePainter.h"

#include <QApplication>
#include <QFontMetricsF>
#include <QPainterPath>
#include <QStyleOptionGraphicsItem>
#include <QTextOption>
#include <algorithm>

#include "Apps/Editor/Canvas/PlugMark.h"
#include "Apps/Editor/Canvas/TypeTile.h"

namespace {

double GetZoom(const QPainter& painter) {
  return QStyleOptionGraphicsItem::levelOfDetailFromTransform(painter.worldTransform());
}

}  // namespace

QString FormatSeconds(double seconds) {
  if (seconds < 0.001) return NodePainter::tr("< 1 ms");
  if (seconds < 1.0) return NodePainter::tr("%1 ms").arg(seconds * 1000.0, 0, 'f', 0);
  return NodePainter::tr("%1 s").arg(seconds, 0, 'f', seconds < 10.0 ? 1 : 0);
}

NodePainter::NodePainter(const NodeItem& item, QPainter& painter, const CanvasColors& colors)
    : item_(item), painter_(painter), colors_(colors), zoom_(GetZoom(painter)) {}

void NodePainter::Paint() {
  if (item_.IsDimmed()) {
    PaintGround();
    painter_.setOpacity(0.5);
  }
  if (item_.face_.is_reroute) {
    PaintReroute();
    return;
  }
  PaintSelection();
  PaintBody();
  PaintHeader();
  PaintPlugs();
  if (!item_.shape_.thumbnail.isEmpty()) PaintThumbnail();
  if (item_.condition_.progress >= 0.0) PaintProgress();
  if (zoom_ >= Detail::kText) PaintBelow();
  PaintBadge();
}

void NodePainter::PaintGround() {
  painter_.setPen(Qt::NoPen);
  painter_.setBrush(colors_.ground);
  if (item_.face_.is_reroute) {
    painter_.drawEllipse(item_.shape_.body.center(), NodeShape::kPlugRadius, NodeShape::kPlugRadius);
    return;
  }
  painter_.drawRoundedRect(item_.shape_.body, NodeShape::kRadius, NodeShape::kRadius);
  for (const auto* plugs : {&item_.shape_.inputs, &item_.shape_.outputs}) {
    for (const QPointF& place : *plugs) painter_.drawEllipse(place, NodeShape::kPlugRadius, NodeShape::kPlugRadius);
  }
}

QFont NodePainter::MakeFont(double size, bool is_bold) const {
  QFont font = QApplication::font();
  // In units of the scene, which the zoom takes to the size of the desktop's font.
  font.setPixelSize(static_cast<int>(size));
  font.setWeight(is_bold ? QFont::DemiBold : QFont::Normal);
  font.setHintingPreference(QFont::PreferNoHinting);
  return font;
}

void NodePainter::PaintReroute() {
  const QRectF body = item_.shape_.body;
  const QPointF middle = body.center();
  if (item_.isSelected()) {
    painter_.setPen(QPen(colors_.accent, 2.5));
    painter_.setBrush(Qt::NoBrush);
    painter_.drawEllipse(middle, 12, 12);
  }
  painter_.setPen(MakeWirePen(PlugType::kImage, colors_.GetKind(PlugType::kImage), 2.4));
  painter_.drawLine(QPointF(body.left(), middle.y()), QPointF(body.right(), middle.y()));
  DrawPlugMark(painter_, middle, 7.0, PlugType::kImage, true, colors_);
}

void NodePainter::PaintSelection() {
  if (!item_.isSelected()) return;
  const QRectF body = item_.shape_.body;
  // The ring keeps its width on the display when seen from afar.
  const double width = 2.6 / std::min(1.0, zoom_);
  painter_.setBrush(Qt::NoBrush);
  painter_.setPen(QPen(colors_.accent, width));
  painter_.drawRoundedRect(body.adjusted(-4, -4, 4, 4), NodeShape::kRadius + 4, NodeShape::kRadius + 4);
}

void NodePainter::PaintBody() {
  const QRectF body = item_.shape_.body;
  constexpr double kRadius = NodeShape::kRadius;
  if (zoom_ >= Detail::kText) {
    painter_.setPen(Qt::NoPen);
    painter_.setBrush(colors_.shadow);
    painter_.drawRoundedRect(body.adjusted(-1, 1, 1, 4), kRadius + 1, kRadius + 1);
    painter_.drawRoundedRect(body.adjusted(-2, 2, 2, 7), kRadius + 3, kRadius + 3);
  }
  const NodeFace& face = item_.face_;
  QPen pen(colors_.edge, 1.2);
  if (item_.condition_.is_in_error) pen = QPen(colors_.error, 2.0);
  if (item_.IsShown()) pen = QPen(colors_.accent, 2.0);
  if (face.is_placeholder || !face.is_enabled) {
    // Dashes need more contrast than a line to be seen beside the shadow.
    if (pen.color() == colors_.edge) pen = QPen(MixColors(colors_.body, colors_.text, 0.5), 1.5);
    pen.setDashPattern({4, 3});
  }
  painter_.setPen(pen);
  painter_.setBrush(face.is_placeholder ? MixColors(colors_.body, colors_.warning, 0.10) : colors_.body);
  painter_.drawRoundedRect(body, kRadius, kRadius);
}

void NodePainter::PaintHeader() {
  const NodeShape& shape = item_.shape_;
  const bool is_muted = !item_.face_.is_enabled;
  painter_.setPen(Qt::NoPen);
  painter_.setBrush(is_muted ? MixColors(colors_.body, colors_.header, 0.5) : colors_.header);
  const QRectF header = shape.header.adjusted(1, 1, -1, 0);
  if (shape.body.height() <= NodeShape::kHeader) {
    painter_.drawRoundedRect(header.adjusted(0, 0, 0, -1), NodeShape::kRadius - 1, NodeShape::kRadius - 1);
  } else {
    QPainterPath path;
    path.moveTo(header.bottomLeft());
    path.lineTo(header.left(), header.top() + NodeShape::kRadius);
    path.quadTo(header.topLeft(), QPointF(header.left() + NodeShape::kRadius, header.top()));
    path.lineTo(header.right() - NodeShape::kRadius, header.top());
    path.quadTo(header.topRight(), QPointF(header.right(), header.top() + NodeShape::kRadius));
    path.lineTo(header.bottomRight());
    painter_.drawPath(path);
  }
  const double opacity = painter_.opacity();
  if (is_muted) painter_.setOpacity(opacity * 0.6);
  if (item_.face_.icon.isNull()) {
    PaintTile();
  } else {
    painter_.setRenderHint(QPainter::SmoothPixmapTransform);
    painter_.drawPixmap(shape.icon, item_.face_.icon, QRectF(item_.face_.icon.rect()));
  }
  if (zoom_ >= Detail::kText) {
    PaintTitle();
  } else {
    PaintLargeTitle();
  }
  painter_.setOpacity(opacity);
  if (!shape.eye.isEmpty()) PaintEye();
}

void NodePainter::PaintTile() {
  const NodeFace& face = item_.face_;
  const QRectF tile = item_.shape_.icon.adjusted(2, 2, -2, -2);
  const unsigned kind = face.outputs.empty() ? PlugType::kNone : face.outputs.front().type;
  const QColor color = face.is_placeholder ? colors_.warning : GetTileColor(colors_, kind);
  QString letters;
  if (zoom_ >= Detail::kText) letters = face.is_placeholder ? QStringLiteral("?") : MakeInitials(face.type_name);
  PaintTypeTile(painter_, tile, color, letters, MakeFont(11, true), colors_);
}

void NodePainter::PaintLargeTitle() {
  const NodeShape& shape = item_.shape_;
  const double left = shape.icon.right() + 8;
  const double right = item_.IsShown() ? shape.eye.left() - 4 : shape.header.right() - 8;
  // As large as the header allows, so that names can be read where nothing else can.
  const QFont font = MakeFont(std::min(27.0, 9.5 / zoom_), true);
  painter_.setFont(font);
  painter_.setPen(colors_.text);
  const QRectF box(left, 0, right - left, shape.header.height());
  painter_.drawText(box, Qt::AlignLeft | Qt::AlignVCenter,
                    QFontMetricsF(font).elidedText(item_.face_.title, Qt::ElideRight, box.width()));
}

void NodePainter::PaintTitle() {
  const NodeShape& shape = item_.shape_;
  const double left = shape.icon.right() + 8;
  const double right = shape.eye.isEmpty() ? shape.header.right() - 10 : shape.eye.left() - 4;
  const QRectF title(left, 6, right - left, 18);
  const QRectF subtitle(left, 23, right - left, 15);
  const QFont font = MakeFont(13, true);
  painter_.setFont(font);
  painter_.setPen(colors_.text);
  painter_.drawText(title, Qt::AlignLeft | Qt::AlignVCenter,
                    QFontMetricsF(font).elidedText(item_.face_.title, Qt::ElideMiddle, title.width()));
  const QFont small = MakeFont(10.5);
  painter_.setFont(small);
  painter_.setPen(colors_.faint);
  const QString type = item_.face_.is_enabled ? item_.face_.type_name : tr("Muted: %1").arg(item_.face_.type_name);
  painter_.drawText(subtitle, Qt::AlignLeft | Qt::AlignVCenter,
                    QFontMetricsF(small).elidedText(type, Qt::ElideRight, subtitle.width()));
}

void NodePainter::PaintEye() {
  const QRectF box = item_.shape_.eye;
  const QPointF middle = box.center();
  QColor color = MixColors(colors_.header, colors_.text, 0.38);
  if (item_.IsShown()) {
    painter_.setPen(Qt::NoPen);
    painter_.setBrush(colors_.accent);
    painter_.drawRoundedRect(box, 6, 6);
    color = colors_.on_accent;
  } else if (zoom_ < Detail::kText) {
    return;
  }
  QPainterPath lid;
  lid.moveTo(middle.x() - 7, middle.y());
  lid.quadTo(middle.x(), middle.y() - 8.5, middle.x() + 7, middle.y());
  lid.quadTo(middle.x(), middle.y() + 8.5, middle.x() - 7, middle.y());
  painter_.setPen(QPen(color, 1.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter_.setBrush(Qt::NoBrush);
  painter_.drawPath(lid);
  painter_.setPen(Qt::NoPen);
  painter_.setBrush(color);
  painter_.drawEllipse(middle, 2.4, 2.4);
}

void NodePainter::PaintPlugs() {
  const NodeFace& face = item_.face_;
  const std::size_t own = face.inputs.size() - item_.offered_;
  for (std::size_t i = 0; i < face.inputs.size(); ++i) {
    PaintPlug(face.inputs[i], item_.shape_.inputs[i], true, i >= own);
  }
  for (std::size_t i = 0; i < face.outputs.size(); ++i)
    PaintPlug(face.outputs[i], item_.shape_.outputs[i], false, false);
}

void NodePainter::PaintPlug(const PlugFace& plug, const QPointF& place, bool is_input, bool is_offered) {
  const PlugRef& hovered = item_.hovered_;
  const bool is_hovered =
      hovered.IsValid() && hovered.is_input == is_input && hovered.name == plug.name && hovered.index == plug.index;
  if (is_hovered) {
    QColor halo = colors_.GetKind(plug.type);
    halo.setAlphaF(0.3F);
    painter_.setPen(Qt::NoPen);
    painter_.setBrush(halo);
    painter_.drawEllipse(place, NodeShape::kPlugRadius * 2.1, NodeShape::kPlugRadius * 2.1);
  }
  const bool is_shown = !is_input && item_.shown_ == plug.name && item_.face_.outputs.size() > 1;
  if (is_shown) {
    painter_.setPen(QPen(colors_.accent, 2.0));
    painter_.setBrush(Qt::NoBrush);
    painter_.drawEllipse(place, NodeShape::kPlugRadius * 1.9, NodeShape::kPlugRadius * 1.9);
  }
  DrawPlugMark(painter_, place, NodeShape::kPlugRadius, plug.type, plug.is_connected, colors_);
  if (zoom_ < Detail::kText) return;
  QFont font = MakeFont(11);
  font.setItalic(plug.is_attribute);
  painter_.setFont(font);
  painter_.setPen(is_hovered                        ? colors_.text
                  : is_offered || plug.is_connected ? MixColors(colors_.body, colors_.text, 0.8)
                                                    : colors_.faint);
  constexpr double kInset = 12.0;
  const bool has_both = !item_.face_.outputs.empty() && !item_.face_.inputs.empty();
  const double width = (has_both ? 0.5 : 1.0) * NodeShape::kWidth - kInset - 4;
  const QRectF box(is_input ? kInset : NodeShape::kWidth - kInset - width, place.y() - NodeShape::kRow / 2, width,
                   NodeShape::kRow);
  const Qt::Alignment alignment = (is_input ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter;
  painter_.drawText(box, static_cast<int>(alignment),
                    QFontMetricsF(font).elidedText(plug.label, Qt::ElideRight, width));
}

void NodePainter::PaintThumbnail() {
  const QRectF area = item_.shape_.thumbnail;
  painter_.setPen(Qt::NoPen);
  painter_.setBrush(MixColors(colors_.ground, colors_.body, 0.3));
  painter_.drawRoundedRect(area, 5, 5);
  const QImage& picture = item_.GetThumbnail();
  if (picture.isNull()) return;
  const QSizeF size = QSizeF(picture.size()).scaled(area.size() - QSizeF(4, 4), Qt::KeepAspectRatio);
  QRectF box(QPointF(), size);
  box.moveCenter(area.center());
  const double opacity = painter_.opacity();
  if (!item_.face_.is_enabled) painter_.setOpacity(opacity * 0.4);
  if (picture.hasAlphaChannel()) PaintCheckerboard(box);
  painter_.setRenderHint(QPainter::SmoothPixmapTransform, size.width() * zoom_ < 2 * picture.width());
  painter_.drawImage(box, picture);
  painter_.setOpacity(opacity);
}

void NodePainter::PaintCheckerboard(const QRectF& area) {
  // The colors of the viewer, in cells that are as large at every zoom as the picture is.
  constexpr double kCell = 6.0;
  painter_.fillRect(area, colors_.is_dark ? QColor(64, 64, 64) : QColor(204, 204, 204));
  const QColor light = colors_.is_dark ? QColor(96, 96, 96) : QColor(255, 255, 255);
  for (int row = 0; row * kCell < area.height(); ++row) {
    for (int column = row % 2; column * kCell < area.width(); column += 2) {
      const QRectF cell(area.left() + column * kCell, area.top() + row * kCell, kCell, kCell);
      painter_.fillRect(cell & area, light);
    }
  }
}

void NodePainter::PaintProgress() {
  const QRectF header = item_.shape_.header;
  const QRectF track(header.left() + 1, header.bottom() - 3, header.width() - 2, 3);
  painter_.setPen(Qt::NoPen);
  painter_.setBrush(MixColors(colors_.header, colors_.accent, 0.25));
  painter_.drawRect(track);
  painter_.setBrush(colors_.accent);
  const double share = std::clamp(item_.condition_.progress, 0.04, 1.0);
  painter_.drawRect(QRectF(track.left(), track.top(), track.width() * share, track.height()));
}

void NodePainter::PaintBadge() {
  const NodeCondition& condition = item_.condition_;
  const bool is_warning = !condition.messages.isEmpty() || condition.is_blocked;
  if (!condition.is_in_error && !is_warning) return;
  // What is wrong counts also where nobody looks.
  painter_.setOpacity(1.0);
  const QPointF middle = item_.shape_.body.topLeft() + QPointF(3, 3);
  painter_.setPen(QPen(colors_.body, 1.5));
  painter_.setBrush(condition.is_in_error ? colors_.error : colors_.warning);
  const double radius = 8.5 / std::min(1.0, std::max(zoom_, 0.4) * 1.5);
  if (condition.is_in_error) {
    painter_.drawEllipse(middle, radius, radius);
  } else {
    QPolygonF triangle;
    triangle << middle + QPointF(0, -radius * 1.1) << middle + QPointF(radius * 1.1, radius * 0.8)
             << middle + QPointF(-radius * 1.1, radius * 0.8);
    painter_.drawPolygon(triangle);
  }
  painter_.setPen(QPen(colors_.is_dark ? QColor(Qt::black) : QColor(Qt::white), 1.8, Qt::SolidLine, Qt::RoundCap));
  painter_.drawLine(middle + QPointF(0, -radius * 0.45), middle + QPointF(0, radius * 0.1));
  painter_.drawPoint(middle + QPointF(0, radius * 0.5));
}

void NodePainter::PaintBelow() {
  const NodeCondition& condition = item_.condition_;
  const QRectF body = item_.shape_.body;
  double top = body.bottom() + 5;
  if (condition.seconds >= 0.0) {
    painter_.setFont(MakeFont(10));
    painter_.setPen(colors_.faint);
    painter_.drawText(QRectF(body.left(), top, body.width() - 4, 14), Qt::AlignRight | Qt::AlignVCenter,
                      FormatSeconds(condition.seconds));
  }
  const QFont font = MakeFont(10.5);
  painter_.setFont(font);
  QTextOption option;
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  if (!condition.messages.isEmpty() && zoom_ >= Detail::kMessages) {
    painter_.setPen(condition.is_in_error ? colors_.error : colors_.warning);
    painter_.drawText(QRectF(body.left() + 2, top, body.width() - 52, 42), condition.messages.front(), option);
    top += 44;
  }
  if (!item_.face_.note.isEmpty()) {
    QFont italic = font;
    italic.setItalic(true);
    painter_.setFont(italic);
    painter_.setPen(colors_.faint);
    const double width = condition.seconds >= 0.0 ? body.width() - 52 : body.width() - 4;
    painter_.drawText(QRectF(body.left() + 2, top, width, 44), item_.face_.note, option);
  }
}
