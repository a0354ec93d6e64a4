// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "Apps/Editor/Canvas/Drag.h"
#include "Apps/Editor/Canvas/GraphView.h"
#include "Apps/Editor/Canvas/PlugMark.h"

namespace {

class WireDrag : public Drag {
 public:
  WireDrag(GraphView& view, PlugRef fixed, std::optional<ScEng::DocumentConnection> replaced, const QPointF& start)
      : view_(view), scene_(view.GetScene()), fixed_(std::move(fixed)), replaced_(std::move(replaced)), end_(start) {
    if (WireItem* wire = FindReplaced()) wire->setVisible(false);
  }

  ~WireDrag() override {
    if (WireItem* wire = FindReplaced()) wire->setVisible(true);
  }

  void Move(const QPointF& place) override {
    end_ = place;
    OfferAt(place);
    const auto plug = FindTarget(place);
    NodeItem* node = plug ? scene_.FindNode(plug->node) : nullptr;
    if (NodeItem* before = scene_.FindNode(hovered_)) before->SetHovered({});
    hovered_ = plug ? plug->node : std::string();
    if (node == nullptr) return;
    node->SetHovered(*plug);
    end_ = node->GetPlugPlace(plug->name, plug->index, plug->is_input);
  }

  void Finish(const QPointF& place) override {
    const auto plug = FindTarget(place);
    const NodeItem* node = scene_.NodeAt(place);
    const std::string id = node == nullptr ? std::string() : node->GetFace().id;
    Clear();
    if (plug) {
      view_.GetCommands().Connect(fixed_, *plug, replaced_);
    } else if (!id.empty()) {
      if (id != fixed_.node) view_.RequestChoice(fixed_, id, replaced_);
    } else if (replaced_) {
      view_.GetCommands().Disconnect({*replaced_});
    } else {
      view_.RequestAdd(place, {fixed_, std::nullopt});
    }
  }

  void Cancel() override { Clear(); }

  void Paint(QPainter& painter) override {
    const NodeItem* node = scene_.FindNode(fixed_.node);
    if (node == nullptr) return;
    const QPointF start = node->GetPlugPlace(fixed_.name, fixed_.index, fixed_.is_input);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(MakeWirePen(fixed_.type, scene_.GetColors().GetKind(fixed_.type), 2.4));
    painter.drawPath(fixed_.is_input ? MakeWirePath(end_, start) : MakeWirePath(start, end_));
    DrawPlugMark(painter, end_, 4.5, fixed_.type, true, scene_.GetColors());
  }

 private:
  [[nodiscard]] WireItem* FindReplaced() const { return replaced_ ? scene_.FindWire(*replaced_) : nullptr; }

  /// The plug at a place, if it is on the other side of another node.
  [[nodiscard]] std::optional<PlugRef> FindTarget(const QPointF& place) const {
    constexpr double kReach = 16.0;
    std::optional<PlugRef> plug = scene_.PlugAt(place, std::max(view_.ToScene(kReach), 9.0));
    if (!plug) plug = FindRow(place);
    const bool fits = plug && plug->is_input != fixed_.is_input && plug->node != fixed_.node;
    return fits ? plug : std::nullopt;
  }

  /// The plug whose row is there: its label counts as well as its mark.
  [[nodiscard]] std::optional<PlugRef> FindRow(const QPointF& place) const {
    const NodeItem* node = scene_.NodeAt(place);
    if (node == nullptr) return std::nullopt;
    const bool wants_inputs = !fixed_.is_input;
    const std::vector<PlugFace>& plugs = wants_inputs ? node->GetFace().inputs : node->GetFace().outputs;
    const std::vector<QPointF>& rows = wants_inputs ? node->GetShape().inputs : node->GetShape().outputs;
    const QPointF local = place - node->pos();
    const bool is_at_side = wants_inputs == (local.x() < NodeShape::kWidth / 2);
    for (std::size_t i = 0; i < plugs.size() && is_at_side; ++i) {
      if (std::abs(local.y() - rows[i].y()) > NodeShape::kRow / 2) continue;
      return PlugRef{node->GetFace().id, plugs[i].name, plugs[i].index, plugs[i].type, wants_inputs};
    }
    return std::nullopt;
  }

  /// The node below the pointer shows the attributes that the wire could feed.
  void OfferAt(const QPointF& place) {
    NodeItem* node = scene_.NodeAt(place);
    const std::string id = node == nullptr ? std::string() : node->GetFace().id;
    if (id == offering_) return;
    if (NodeItem* before = scene_.FindNode(offering_)) {
      before->Offer({});
      scene_.UpdateWires(offering_);
    }
    offering_ = id;
    if (node == nullptr || fixed_.is_input || id == fixed_.node) return;
    node->Offer(ListFreeAttributes(scene_.GetSession().GetDocument(), scene_.GetTypes(), node->GetFace(), fixed_.type));
    scene_.UpdateWires(id);
  }

  void Clear() {
    if (NodeItem* before = scene_.FindNode(hovered_)) before->SetHovered({});
    if (NodeItem* before = scene_.FindNode(offering_)) {
      before->Offer({});
      scene_.UpdateWires(offering_);
    }
    hovered_.clear();
    offering_.clear();
  }

  GraphView& view_;
  GraphScene& scene_;
  PlugRef fixed_;
  std::optional<ScEng::DocumentConnection> replaced_;
  QPointF end_;
  std::string hovered_;
  std::string offering_;
};

}  // namespace

std::unique_ptr<Drag> MakeWireDrag(GraphView& view, const PlugRef& fixed,
                                   const std::optional<ScEng::DocumentConnection>& replaced, const QPointF& start) {
  return std::make_unique<WireDrag>(view, fixed, replaced, start);
}
