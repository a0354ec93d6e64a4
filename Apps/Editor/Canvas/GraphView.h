// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QGraphicsView>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "Apps/Editor/Canvas/CanvasCommands.h"
#include "Apps/Editor/Canvas/Drag.h"
#include "Apps/Editor/Canvas/GraphScene.h"

/// Rows beside the canvas that wires can be dropped on.
struct OutsideRows {
  /// The row at a place of the screen, "id.attribute", if a wire from this output could feed its attribute; marks it
  /// and no other.
  std::function<std::string(const QPoint& global, const PlugRef& from)> offer;
  /// No wire is dragged any more.
  std::function<void()> withdraw;
};

/// The view of the canvas: zooming, panning, and what mouse and keyboard do to the scene.
class GraphView : public QGraphicsView {
  Q_OBJECT

 public:
  /// Scene and commands outlive the view.
  GraphView(GraphScene& scene, CanvasCommands& commands, QWidget* parent);
  ~GraphView() override;

  [[nodiscard]] GraphScene& GetScene() const { return scene_; }
  [[nodiscard]] CanvasCommands& GetCommands() const { return commands_; }

  /// 1 is life size: text of nodes is as large as that of the desktop.
  [[nodiscard]] double GetZoom() const;
  void SetZoom(double zoom, const QPoint& fixed);
  [[nodiscard]] QPointF GetCenter() const;
  void SetCenter(const QPointF& center);
  void ZoomTo(const QRectF& extent);
  /// Drawn pixels as units of the scene.
  [[nodiscard]] double ToScene(double pixels) const;
  /// Where the mouse is, or the middle of the view when it is elsewhere.
  [[nodiscard]] QPointF GetPointer() const;
  /// A part of the scene as pixels of the viewport.
  [[nodiscard]] QRect ToViewport(const QRectF& extent) const;

  /// Shows a node by its main image.
  void RequestShow(const std::string& id);
  void RequestAdd(const QPointF& place, const NewNodeWiring& wiring) { emit AddRequested(place, wiring); }
  /// A wire was dropped on a node and fits several plugs.
  void RequestChoice(const PlugRef& fixed, const std::string& node,
                     const std::optional<ScEng::DocumentConnection>& replaced) {
    emit ChoiceRequested(fixed, node, replaced);
  }
  /// Must outlive the drags of the view, or be replaced by none.
  void SetOutsideRows(OutsideRows rows) { outside_rows_ = std::move(rows); }
  /// The row beside the canvas at a place of the scene that lies outside of the view; empty for none.
  [[nodiscard]] std::string OfferOutside(const QPointF& place, const PlugRef& from) const;
  void WithdrawOutside() const;
  [[nodiscard]] bool IsOutside(const QPointF& place) const;

  void CancelDrag();
  [[nodiscard]] bool IsDragging() const { return drag_ != nullptr; }
  /// How long the last drawing took, in seconds.
  [[nodiscard]] double GetPaintSeconds() const { return paint_seconds_; }

 signals:
  void ViewChanged();
  void ShowRequested(const QString& plug);
  void AddRequested(const QPointF& place, const NewNodeWiring& wiring);
  void ChoiceRequested(const PlugRef& fixed, const std::string& node,
                       const std::optional<ScEng::DocumentConnection>& replaced);
  void MenuRequested(const QPoint& global);
  void FrameTitleRequested(std::size_t index);
  void WireDoubleClicked(const ScEng::DocumentConnection& connection, const QPointF& place);
  void FilesDropped(const QStringList& files, const QPointF& place);

 protected:
  bool viewportEvent(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void drawBackground(QPainter* painter, const QRectF& rect) override;
  void drawForeground(QPainter* painter, const QRectF& rect) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void keyReleaseEvent(QKeyEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void MeasureScale();
  void PressLeft(QMouseEvent* event);
  [[nodiscard]] std::unique_ptr<Drag> StartAt(const QPointF& place, Qt::KeyboardModifiers modifiers);
  [[nodiscard]] std::unique_ptr<Drag> StartAtPlug(const PlugRef& plug, const QPointF& place);
  [[nodiscard]] std::unique_ptr<Drag> StartAtWire(WireItem& wire, const QPointF& place, bool extends);
  void SelectItem(QGraphicsItem& item, bool extends, bool toggles);
  void Hover(const QPointF& place);
  void PanBy(const QPoint& pixels);
  bool ShowToolTip(QHelpEvent* event);
  bool MoveSelection(int key, bool extends);
  /// Moves on while something is dragged beyond the edge.
  void ScrollAtEdge(const QPoint& pointer);

  GraphScene& scene_;
  CanvasCommands& commands_;
  OutsideRows outside_rows_;
  std::unique_ptr<Drag> drag_;
  QPoint press_;
  bool has_moved_ = false;
  bool is_panning_ = false;
  bool is_space_down_ = false;
  QPoint pan_from_;
  std::string hovered_;
  /// Where the arrow keys go on from.
  std::string current_;
  double scale_ = 1.0;
  double paint_seconds_ = 0.0;
};
