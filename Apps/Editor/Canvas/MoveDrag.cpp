// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "Apps/Editor/Canvas/Drag.h"
#include "Apps/Editor/Canvas/GraphView.h"

namespace {

/// Moves items ahead of the document, which is told once, when they are dropped: so a drag is one step of the history.
class MoveDrag : public Drag {
 public:
  MoveDrag(GraphView& view, const QPointF& start) : view_(view), scene_(view.GetScene()), start_(start) {
    for (const FrameItem* frame : scene_.GetFrames()) {
      if (frame->isSelected()) boxes_.emplace_back(frame->GetIndex(), frame->GetBox());
    }
    for (const std::string& id : scene_.GetIdsToMove()) places_.emplace_back(id, scene_.FindNode(id)->pos());
  }

  void Move(const QPointF& place) override {
    Shift(place - start_);
    FindWire();
  }

  void Finish(const QPointF& place) override {
    Shift(place - start_);
    FindWire();
    std::optional<ScEng::DocumentConnection> connection;
    if (WireItem* wire = Highlight({})) connection = wire->GetConnection();
    std::vector<std::string> ids;
    for (const auto& [id, before] : places_) ids.push_back(id);
    std::vector<FrameItem*> frames;
    for (const auto& [index, box] : boxes_) {
      if (index < scene_.GetFrames().size()) frames.push_back(scene_.GetFrames()[index]);
    }
    if (!ids.empty() || !frames.empty()) view_.GetCommands().Place(ids, frames, connection);
  }

  void Cancel() override {
    Highlight({});
    Shift({});
  }

 private:
  void Shift(const QPointF& offset) {
    for (const auto& [id, place] : places_) {
      NodeItem* item = scene_.FindNode(id);
      if (item == nullptr) continue;
      item->setPos(place + offset);
      scene_.UpdateWires(id);
    }
    for (const auto& [index, box] : boxes_) {
      if (index < scene_.GetFrames().size()) scene_.GetFrames()[index]->SetBox(box.translated(offset));
    }
  }

  /// The wire that the node is over, if it is a single one that could go into a wire.
  void FindWire() {
    const NodeItem* item = places_.size() == 1 ? scene_.FindNode(places_.front().first) : nullptr;
    if (item == nullptr) return;
    const NodeFace& face = item->GetFace();
    const bool fits = !face.inputs.empty() && !face.outputs.empty() && !face.inputs.front().is_connected &&
                      !face.inputs.front().is_attribute && face.inputs.front().type == face.outputs.front().type;
    WireItem* found = nullptr;
    const QRectF body = item->GetBody();
    if (fits) {
      for (QGraphicsItem* other : scene_.items(body, Qt::IntersectsItemBoundingRect)) {
        if (other->type() != ItemType::kWire) continue;
        auto* wire = static_cast<WireItem*>(other);
        const bool is_own = GetNodeOfPlug(wire->GetConnection().from) == face.id;
        if (is_own || wire->GetKind() != face.inputs.front().type) continue;
        const QPointF middle = body.center();
        if (wire->Crosses({middle - QPointF(0, 26), middle + QPointF(0, 26)}) ||
            wire->Crosses({middle - QPointF(40, 0), middle + QPointF(40, 0)})) {
          found = wire;
        }
      }
    }
    Highlight(found == nullptr ? std::nullopt : std::optional(found->GetConnection()));
  }

  /// Marks a wire in place of the one before, which it answers.
  WireItem* Highlight(const std::optional<ScEng::DocumentConnection>& connection) {
    WireItem* before = marked_ ? scene_.FindWire(*marked_) : nullptr;
    if (before != nullptr) before->SetHighlighted(false);
    marked_ = connection;
    WireItem* now = marked_ ? scene_.FindWire(*marked_) : nullptr;
    if (now != nullptr) now->SetHighlighted(true);
    return before;
  }

  GraphView& view_;
  GraphScene& scene_;
  QPointF start_;
  std::vector<std::pair<std::string, QPointF>> places_;
  std::vector<std::pair<std::size_t, QRectF>> boxes_;
  std::optional<ScEng::DocumentConnection> marked_;
};

class ResizeDrag : public Drag {
 public:
  ResizeDrag(GraphView& view, const FrameItem& frame)
      : view_(view), index_(frame.GetIndex()), before_(frame.GetBox()) {}

  void Move(const QPointF& place) override {
    constexpr double kLeast = 60.0;
    FrameItem* frame = Find();
    if (frame == nullptr) return;
    const QSizeF size(std::max(kLeast, place.x() - before_.left()), std::max(kLeast, place.y() - before_.top()));
    frame->SetBox(QRectF(before_.topLeft(), size));
  }

  void Finish(const QPointF& place) override {
    Move(place);
    if (FrameItem* frame = Find()) view_.GetCommands().Place({}, {frame}, std::nullopt);
  }

  void Cancel() override {
    if (FrameItem* frame = Find()) frame->SetBox(before_);
  }

 private:
  [[nodiscard]] FrameItem* Find() const {
    const std::vector<FrameItem*>& frames = view_.GetScene().GetFrames();
    return index_ < frames.size() ? frames[index_] : nullptr;
  }

  GraphView& view_;
  std::size_t index_;
  QRectF before_;
};

}  // namespace

std::unique_ptr<Drag> MakeMoveDrag(GraphView& view, const QPointF& start) {
  return std::make_unique<MoveDrag>(view, start);
}

std::unique_ptr<Drag> MakeResizeDrag(GraphView& view, FrameItem& frame) {
  return std::make_unique<ResizeDrag>(view, frame);
}
