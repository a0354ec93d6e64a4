// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPainter>
#include <QPointF>
#include <memory>
#include <optional>

#include "Apps/Editor/Canvas/PlugRef.h"
#include "Host/Documents/DocumentParts.h"

class FrameItem;
class GraphView;

/// What the mouse does from a press to its release. All places are in the scene.
class Drag {
 public:
  Drag() = default;
  Drag(const Drag&) = delete;
  Drag& operator=(const Drag&) = delete;
  virtual ~Drag() = default;

  virtual void Move(const QPointF& place) = 0;
  virtual void Finish(const QPointF& place) = 0;
  /// Everything is as it was before.
  virtual void Cancel() {}
  /// On top of the scene.
  virtual void Paint(QPainter& painter) { static_cast<void>(painter); }
};

/// Moves what is selected; a node that is dropped on a wire goes into it.
std::unique_ptr<Drag> MakeMoveDrag(GraphView& view, const QPointF& start);
/// Resizes a frame by its lower right corner.
std::unique_ptr<Drag> MakeResizeDrag(GraphView& view, FrameItem& frame);
/// Drags the free end of a wire whose other end is at `fixed`; `replaced` is the connection that was picked up.
std::unique_ptr<Drag> MakeWireDrag(GraphView& view, const PlugRef& fixed,
                                   const std::optional<ScEng::DocumentConnection>& replaced, const QPointF& start);
/// Selects what a rectangle, or a line drawn around it, touches.
std::unique_ptr<Drag> MakeBoxDrag(GraphView& view, const QPointF& start, bool extends);
std::unique_ptr<Drag> MakeLassoDrag(GraphView& view, const QPointF& start, bool extends);
/// Disconnects the wires that a line crosses.
std::unique_ptr<Drag> MakeCutDrag(GraphView& view, const QPointF& start);
