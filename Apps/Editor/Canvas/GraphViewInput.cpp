// SPDX-License-Identifier: Apache-2.0
// What mouse and keyboard do on the canvas.
#include <QApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QToolTip>
#include <QUrl>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "Apps/Editor/Canvas/GraphView.h"
#include "Apps/Editor/Canvas/Neighbors.h"

namespace {

/// How near the pointer must be to a plug and to a wire, in pixels.
constexpr double kPlugReach = 11.0;
constexpr double kWireReach = 7.0;
/// The class name of a node type that is dragged here from a list of types.
constexpr char kTypeMime[] = "application/x-value-node-type";

bool IsTaken(const QMimeData& data) { return data.hasUrls() || data.hasFormat(QLatin1String(kTypeMime)); }

}  // namespace

// ---- Mouse ----

void GraphView::mousePressEvent(QMouseEvent* event) {
  setFocus(Qt::MouseFocusReason);
  press_ = event->pos();
  has_moved_ = false;
  if (event->button() == Qt::MiddleButton || (event->button() == Qt::LeftButton && is_space_down_)) {
    is_panning_ = true;
    pan_from_ = event->pos();
    viewport()->setCursor(Qt::ClosedHandCursor);
  } else if (event->button() == Qt::LeftButton && !drag_) {
    PressLeft(event);
  }
  event->accept();
}

void GraphView::PressLeft(QMouseEvent* event) {
  const QPointF place = mapToScene(event->pos());
  NodeItem* node = scene_.NodeAt(place);
  if (node != nullptr && node->IsAtEye(place) && event->modifiers() == Qt::NoModifier) {
    RequestShow(node->GetFace().id);
    return;
  }
  drag_ = StartAt(place, event->modifiers());
}

std::unique_ptr<Drag> GraphView::StartAt(const QPointF& place, Qt::KeyboardModifiers modifiers) {
  const bool extends = modifiers.testFlag(Qt::ShiftModifier);
  const bool toggles = modifiers.testFlag(Qt::ControlModifier);
  if (modifiers.testFlag(Qt::AltModifier)) return MakeLassoDrag(*this, place, extends);
  if (!toggles) {
    if (const auto plug = scene_.PlugAt(place, ToScene(kPlugReach))) return StartAtPlug(*plug, place);
  }
  if (NodeItem* node = scene_.NodeAt(place)) {
    SelectItem(*node, extends, toggles);
    return toggles ? nullptr : MakeMoveDrag(*this, place);
  }
  if (toggles) return MakeCutDrag(*this, place);
  if (WireItem* wire = scene_.WireAt(place, ToScene(kWireReach))) return StartAtWire(*wire, place, extends);
  if (FrameItem* frame = scene_.FrameAt(place)) {
    SelectItem(*frame, extends, false);
    return frame->GetGrip().contains(place) ? MakeResizeDrag(*this, *frame) : MakeMoveDrag(*this, place);
  }
  return MakeBoxDrag(*this, place, extends);
}

std::unique_ptr<Drag> GraphView::StartAtPlug(const PlugRef& plug, const QPointF& place) {
  if (!plug.is_input) return MakeWireDrag(*this, plug, std::nullopt, place);
  // The wire that is plugged in is picked up.
  for (const WireItem* wire : scene_.GetWires(plug.node)) {
    const ScEng::DocumentConnection connection = wire->GetConnection();
    if (connection.to != plug.GetPlug() || connection.index != plug.index) continue;
    const PlugRef from{GetNodeOfPlug(connection.from), GetNameOfPlug(connection.from), 0, wire->GetKind(), false};
    return MakeWireDrag(*this, from, connection, place);
  }
  return MakeWireDrag(*this, plug, std::nullopt, place);
}

std::unique_ptr<Drag> GraphView::StartAtWire(WireItem& wire, const QPointF& place, bool extends) {
  // Near its ends a wire is picked up, elsewhere it is selected.
  const double reach = std::min(ToScene(34.0), QLineF(wire.GetStart(), wire.GetEnd()).length() / 4);
  const ScEng::DocumentConnection connection = wire.GetConnection();
  const PlugRef from{GetNodeOfPlug(connection.from), GetNameOfPlug(connection.from), 0, wire.GetKind(), false};
  const PlugRef to{GetNodeOfPlug(connection.to), GetNameOfPlug(connection.to), connection.index, wire.GetKind(), true};
  if (QLineF(place, wire.GetEnd()).length() < reach) return MakeWireDrag(*this, from, connection, place);
  if (QLineF(place, wire.GetStart()).length() < reach) return MakeWireDrag(*this, to, connection, place);
  SelectItem(wire, extends, false);
  return nullptr;
}

void GraphView::SelectItem(QGraphicsItem& item, bool extends, bool toggles) {
  if (toggles) {
    item.setSelected(!item.isSelected());
  } else if (!item.isSelected()) {
    if (!extends) scene_.clearSelection();
    item.setSelected(true);
  }
}

void GraphView::mouseMoveEvent(QMouseEvent* event) {
  if (is_panning_) {
    PanBy(event->pos() - pan_from_);
    pan_from_ = event->pos();
    return;
  }
  const QPointF place = mapToScene(event->pos());
  if (!drag_) {
    Hover(place);
    return;
  }
  // A hand that trembles while it clicks drags nothing.
  has_moved_ = has_moved_ || (event->pos() - press_).manhattanLength() >= QApplication::startDragDistance() / 2;
  if (!has_moved_) return;
  drag_->Move(place);
  ScrollAtEdge(event->pos());
  viewport()->update();
}

bool GraphView::IsOutside(const QPointF& place) const { return !viewport()->rect().contains(mapFromScene(place)); }

std::string GraphView::OfferOutside(const QPointF& place, const PlugRef& from) const {
  if (!outside_rows_.offer || from.is_input) return {};
  if (IsOutside(place)) return outside_rows_.offer(viewport()->mapToGlobal(mapFromScene(place)), from);
  WithdrawOutside();
  return {};
}

void GraphView::WithdrawOutside() const {
  if (outside_rows_.withdraw) outside_rows_.withdraw();
}

void GraphView::ScrollAtEdge(const QPoint& pointer) {
  constexpr int kEdge = 20;
  // Whoever is far outside is on the way to something beside the canvas.
  constexpr int kFar = 3 * kEdge;
  if (!viewport()->rect().adjusted(-kFar, -kFar, kFar, kFar).contains(pointer)) return;
  const QRect inner = viewport()->rect().adjusted(kEdge, kEdge, -kEdge, -kEdge);
  const QPoint nearest(std::clamp(pointer.x(), inner.left(), inner.right()),
                       std::clamp(pointer.y(), inner.top(), inner.bottom()));
  if (inner.isValid() && nearest != pointer) PanBy(nearest - pointer);
}

void GraphView::mouseReleaseEvent(QMouseEvent* event) {
  if (is_panning_) {
    is_panning_ = false;
    viewport()->setCursor(is_space_down_ ? Qt::OpenHandCursor : Qt::ArrowCursor);
    return;
  }
  if (!drag_ || event->button() != Qt::LeftButton) return;
  // What is finished may show a menu, during which no drag goes on.
  const std::unique_ptr<Drag> drag = std::move(drag_);
  const QPointF place = mapToScene(event->pos());
  if (has_moved_) {
    drag->Finish(place);
  } else {
    drag->Cancel();
    const bool is_plain = event->modifiers() == Qt::NoModifier;
    if (is_plain && !scene_.NodeAt(place) && !scene_.FrameAt(place)) scene_.clearSelection();
  }
  viewport()->update();
}

void GraphView::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  CancelDrag();
  const QPointF place = mapToScene(event->pos());
  if (NodeItem* node = scene_.NodeAt(place)) {
    if (!node->IsAtEye(place)) RequestShow(node->GetFace().id);
  } else if (const WireItem* wire = scene_.WireAt(place, ToScene(kWireReach))) {
    emit WireDoubleClicked(wire->GetConnection(), place);
  } else if (const FrameItem* frame = scene_.FrameAt(place)) {
    emit FrameTitleRequested(frame->GetIndex());
  } else {
    RequestAdd(place, {});
  }
}

void GraphView::CancelDrag() {
  if (!drag_) return;
  drag_->Cancel();
  drag_.reset();
  viewport()->update();
}

void GraphView::wheelEvent(QWheelEvent* event) {
  constexpr double kStep = 1.0015;
  const int turn = event->angleDelta().y();
  if (turn != 0) SetZoom(GetZoom() * std::pow(kStep, turn), event->position().toPoint());
  event->accept();
}

void GraphView::Hover(const QPointF& place) {
  const auto plug = transform().m11() < Detail::kNear ? std::nullopt : scene_.PlugAt(place, ToScene(kPlugReach));
  const std::string node = plug ? plug->node : std::string();
  if (node != hovered_) {
    if (NodeItem* before = scene_.FindNode(hovered_)) before->SetHovered({});
    hovered_ = node;
  }
  if (NodeItem* item = scene_.FindNode(node)) item->SetHovered(*plug);
  if (is_space_down_) return;
  viewport()->setCursor(plug ? Qt::CrossCursor : Qt::ArrowCursor);
}

bool GraphView::viewportEvent(QEvent* event) {
  if (event->type() == QEvent::ToolTip) return ShowToolTip(static_cast<QHelpEvent*>(event));
  return QGraphicsView::viewportEvent(event);
}

bool GraphView::ShowToolTip(QHelpEvent* event) {
  const QPointF place = mapToScene(event->pos());
  const auto plug = scene_.PlugAt(place, ToScene(kPlugReach));
  const NodeItem* node = plug ? scene_.FindNode(plug->node) : scene_.NodeAt(place);
  if (node == nullptr) {
    QToolTip::hideText();
  } else {
    QToolTip::showText(event->globalPos(), node->GetToolTip(place), viewport());
  }
  return true;
}

void GraphView::contextMenuEvent(QContextMenuEvent* event) {
  QPoint at = event->pos();
  if (event->reason() == QContextMenuEvent::Keyboard) {
    const std::vector<std::string> ids = scene_.GetSelectedIds();
    at = ids.empty() ? viewport()->rect().center() : ToViewport(scene_.FindNode(ids.front())->GetBody()).center();
  } else {
    const QPointF place = mapToScene(at);
    if (NodeItem* node = scene_.NodeAt(place)) {
      SelectItem(*node, false, false);
    } else if (WireItem* wire = scene_.WireAt(place, ToScene(kWireReach))) {
      SelectItem(*wire, false, false);
    } else if (FrameItem* frame = scene_.FrameAt(place)) {
      SelectItem(*frame, false, false);
    } else {
      scene_.clearSelection();
    }
  }
  emit MenuRequested(viewport()->mapToGlobal(at));
  event->accept();
}

// ---- Keyboard ----

void GraphView::keyPressEvent(QKeyEvent* event) {
  const int key = event->key();
  const Qt::KeyboardModifiers held = event->modifiers() & ~Qt::KeypadModifier;
  const bool is_plain = held == Qt::NoModifier;
  const bool is_extending = held == Qt::ShiftModifier;
  if (key == Qt::Key_Escape && drag_) {
    CancelDrag();
  } else if (key == Qt::Key_Escape && !scene_.selectedItems().isEmpty()) {
    scene_.clearSelection();
  } else if (key == Qt::Key_Space && is_plain) {
    if (!event->isAutoRepeat() && !is_panning_) viewport()->setCursor(Qt::OpenHandCursor);
    is_space_down_ = true;
  } else if ((key == Qt::Key_Return || key == Qt::Key_Enter) && is_plain) {
    const std::vector<std::string> ids = scene_.GetSelectedIds();
    if (!ids.empty()) RequestShow(ids.front());
  } else if (!(is_plain || is_extending) || !MoveSelection(key, is_extending)) {
    event->ignore();
  }
}

void GraphView::keyReleaseEvent(QKeyEvent* event) {
  if (event->key() != Qt::Key_Space || event->isAutoRepeat()) return;
  is_space_down_ = false;
  if (!is_panning_) viewport()->setCursor(Qt::ArrowCursor);
}

void GraphView::focusOutEvent(QFocusEvent* event) {
  is_space_down_ = false;
  QGraphicsView::focusOutEvent(event);
}

bool GraphView::MoveSelection(int key, bool extends) {
  if (key != Qt::Key_Left && key != Qt::Key_Right && key != Qt::Key_Up && key != Qt::Key_Down) return false;
  std::vector<std::string> ids = scene_.GetSelectedIds();
  if (std::find(ids.begin(), ids.end(), current_) == ids.end()) current_ = ids.empty() ? std::string() : ids.front();
  const std::string next = current_.empty() ? FindFirst(scene_) : FindNeighbor(scene_, current_, key);
  if (next.empty()) return true;
  current_ = next;
  if (!extends) ids.clear();
  ids.push_back(next);
  scene_.SelectIds(ids);
  const QRectF body = scene_.FindNode(next)->GetBody();
  if (!viewport()->rect().contains(ToViewport(body))) SetCenter(body.center());
  return true;
}

void GraphView::RequestShow(const std::string& id) {
  const NodeItem* node = scene_.FindNode(id);
  if (node == nullptr) return;
  std::vector<std::string> images;
  for (const PlugFace& plug : node->GetFace().outputs) {
    if (plug.type == PlugType::kImage) images.push_back(id + "." + plug.name);
  }
  if (images.empty()) return;
  // A node that is shown already shows its next image.
  const auto shown = std::find(images.begin(), images.end(), scene_.GetShown());
  const bool has_next = shown != images.end() && shown + 1 != images.end();
  emit ShowRequested(QString::fromStdString(has_next ? *(shown + 1) : images.front()));
}

// ---- Files ----

void GraphView::dragEnterEvent(QDragEnterEvent* event) {
  if (IsTaken(*event->mimeData())) event->acceptProposedAction();
}

void GraphView::dragMoveEvent(QDragMoveEvent* event) {
  if (IsTaken(*event->mimeData())) event->acceptProposedAction();
}

void GraphView::dropEvent(QDropEvent* event) {
  QStringList files;
  for (const QUrl& url : event->mimeData()->urls()) {
    if (url.isLocalFile()) files << url.toLocalFile();
  }
  const QPointF place = mapToScene(event->position().toPoint());
  if (event->mimeData()->hasFormat(QLatin1String(kTypeMime))) {
    const std::string name = event->mimeData()->data(QLatin1String(kTypeMime)).toStdString();
    if (const TypeInfo* type = scene_.GetTypes().FindName(name)) commands_.Add(*type, place, {});
  }
  if (!files.isEmpty()) emit FilesDropped(files, place);
  event->acceptProposedAction();
}
