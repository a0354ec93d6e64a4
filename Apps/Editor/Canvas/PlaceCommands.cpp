// SPDX-License-Identifier: Apache-2.0
// The commands that concern where nodes and frames are.
#include <algorithm>
#include <cmath>

#include "Apps/Editor/Canvas/CanvasCommands.h"

using ScEng::Status;
using Placement = ScEng::EditSession::Placement;

namespace {

Placement MakePlacement(const std::string& id, const QPointF& place) {
  return {id, ScEng::Point{std::round(place.x()), std::round(place.y())}};
}

ScEng::Frame ToFrame(const QRectF& box) {
  return {std::round(box.x()), std::round(box.y()), std::round(box.width()), std::round(box.height())};
}

}  // namespace

void CanvasCommands::Place(const std::vector<std::string>& ids, const std::vector<FrameItem*>& frames,
                           const std::optional<ScEng::DocumentConnection>& connection) {
  std::vector<Placement> placements;
  for (const std::string& id : ids) {
    if (const NodeItem* item = scene_.FindNode(id)) placements.push_back(MakePlacement(id, item->pos()));
  }
  std::vector<std::pair<std::size_t, ScEng::DocumentFrame>> boxes;
  for (const FrameItem* item : frames) {
    ScEng::DocumentFrame frame = item->GetFrame();
    frame.box = ToFrame(item->GetBox());
    boxes.emplace_back(item->GetIndex(), frame);
  }
  const QString what = ids.size() == 1 && frames.empty() ? QString::fromStdString(ids.front())
                       : ids.empty()                     ? tr("a frame")
                                                         : tr("%n node(s)", nullptr, static_cast<int>(ids.size()));
  const Status status = session_.Group(tr("Move %1").arg(what).toStdString(), [&] {
    Status done = placements.empty() ? Status() : session_.SetPositions(placements);
    for (const auto& [index, frame] : boxes) {
      if (!done.IsError()) done = session_.SetFrame(index, frame);
    }
    if (!done.IsError() && connection) done = session_.InsertOnConnection(ids.front(), *connection);
    return done;
  });
  // The items were dragged ahead of the document.
  scene_.ResetPlaces(ids);
  Do(status);
}

void CanvasCommands::Nudge(const QPointF& offset) {
  const std::vector<std::string> ids = scene_.GetIdsToMove();
  std::vector<FrameItem*> frames;
  for (FrameItem* frame : scene_.GetFrames()) {
    if (!frame->isSelected()) continue;
    frame->SetBox(frame->GetBox().translated(offset));
    frames.push_back(frame);
  }
  for (const std::string& id : ids) scene_.FindNode(id)->moveBy(offset.x(), offset.y());
  if (!ids.empty() || !frames.empty()) Place(ids, frames, std::nullopt);
}

void CanvasCommands::Align(Alignment alignment) {
  const std::vector<std::string> ids = scene_.GetSelectedIds();
  if (ids.size() < 2) return;
  QRectF extent;
  for (const std::string& id : ids) extent |= scene_.FindNode(id)->GetBody();
  std::vector<Placement> placements;
  for (const std::string& id : ids) {
    QRectF body = scene_.FindNode(id)->GetBody();
    switch (alignment) {
      case Alignment::kLeft: body.moveLeft(extent.left()); break;
      case Alignment::kRight: body.moveRight(extent.right()); break;
      case Alignment::kTop: body.moveTop(extent.top()); break;
      case Alignment::kBottom: body.moveBottom(extent.bottom()); break;
      case Alignment::kAcross: body.moveCenter({body.center().x(), extent.center().y()}); break;
      case Alignment::kDown: body.moveCenter({extent.center().x(), body.center().y()}); break;
    }
    placements.push_back(MakePlacement(id, body.topLeft()));
  }
  Do(session_.SetPositions(placements));
}

void CanvasCommands::Distribute(bool is_across) {
  std::vector<std::pair<QRectF, std::string>> bodies;
  for (const std::string& id : scene_.GetSelectedIds()) bodies.emplace_back(scene_.FindNode(id)->GetBody(), id);
  if (bodies.size() < 3) return;
  const auto start = [&](const QRectF& body) { return is_across ? body.left() : body.top(); };
  const auto extent = [&](const QRectF& body) { return is_across ? body.width() : body.height(); };
  std::stable_sort(bodies.begin(), bodies.end(),
                   [&](const auto& a, const auto& b) { return start(a.first) < start(b.first); });
  double taken = 0.0;
  for (const auto& [body, id] : bodies) taken += extent(body);
  const QRectF& last = bodies.back().first;
  const double whole = start(last) + extent(last) - start(bodies.front().first);
  const double gap = (whole - taken) / static_cast<double>(bodies.size() - 1);
  double at = start(bodies.front().first);
  std::vector<Placement> placements;
  for (const auto& [body, id] : bodies) {
    placements.push_back(MakePlacement(id, is_across ? QPointF(at, body.top()) : QPointF(body.left(), at)));
    at += extent(body) + gap;
  }
  Do(session_.SetPositions(placements));
}

void CanvasCommands::LayOut() {
  std::vector<std::string> ids = scene_.GetSelectedIds();
  if (ids.size() < 2) ids = scene_.GetIds();
  if (!ids.empty()) Do(session_.SetPositions(scene_.LayOut(ids)));
}

// ---- Frames ----

void CanvasCommands::AddFrame() {
  QRectF extent;
  for (const std::string& id : scene_.GetSelectedIds()) extent |= scene_.FindNode(id)->GetBody();
  if (extent.isEmpty()) {
    emit Failed(tr("Select the nodes that the frame is to go around."));
    return;
  }
  ScEng::DocumentFrame frame;
  frame.title = tr("Frame").toStdString();
  frame.box = ToFrame(extent.adjusted(-24, -48, 24, 40));
  Do(session_.AddFrame(frame));
}

void CanvasCommands::SetFrameTitle(std::size_t index, const QString& title) {
  const std::vector<ScEng::DocumentFrame>& frames = session_.GetDocument().GetFrames();
  if (index >= frames.size()) return;
  ScEng::DocumentFrame frame = frames[index];
  frame.title = title.toStdString();
  Do(session_.SetFrame(index, frame));
}

void CanvasCommands::SetFrameColor(const QString& color) {
  std::vector<std::pair<std::size_t, ScEng::DocumentFrame>> changed;
  for (const FrameItem* item : scene_.GetFrames()) {
    if (!item->isSelected()) continue;
    ScEng::DocumentFrame frame = item->GetFrame();
    frame.color = color.toStdString();
    changed.emplace_back(item->GetIndex(), frame);
  }
  Do(session_.Group(tr("Color frames").toStdString(), [&] {
    for (const auto& [index, frame] : changed) {
      const Status status = session_.SetFrame(index, frame);
      if (status.IsError()) return status;
    }
    return Status();
  }));
}
