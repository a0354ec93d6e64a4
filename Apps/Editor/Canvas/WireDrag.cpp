// SPDX-License-Identifier: Apache-2.0
#include <QCoreApplication>
#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "Apps/Editor/Canvas/Drag.h"
#include "Apps/Editor/Canvas/GraphView.h"
#include "Apps/Editor/Canvas/PlugMark.h"
#include "Apps/Editor/Canvas/PointerHint.h"
#include "Apps/Editor/Canvas/WireFit.h"

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
    static_cast<void>(view_.OfferOutside(place, fixed_));
    OfferAt(place);
    const auto plug = FindTarget(place);
    LookForMisfit(place, plug);
    // A wire that would be refused does not snap.
    NodeItem* node = plug && misfit_.isEmpty() ? scene_.FindNode(plug->node) : nullptr;
    if (NodeItem* before = scene_.FindNode(hovered_)) before->SetHovered({});
    hovered_ = plug ? plug->node : std::string();
    if (node == nullptr) return;
    node->SetHovered(*plug);
    end_ = node->GetPlugPlace(plug->name, plug->index, plug->is_input);
  }

  void Finish(const QPointF& place) override {
    const std::string row = view_.OfferOutside(place, fixed_);
    if (!row.empty()) {
      Clear();
      return ConnectTo(row);
    }
    if (view_.IsOutside(place)) return Clear();
    const auto plug = FindTarget(place);
    const NodeItem* node = scene_.NodeAt(place);
    const std::string id = node == nullptr ? std::string() : node->GetFace().id;
    LookForMisfit(place, plug);
    Clear();
    // The hint stays for a moment where it was while the wire was dragged.
    if (!misfit_.isEmpty()) ShowHint(view_, place, misfit_);
    if (plug && !misfit_.isEmpty()) {
      view_.GetCommands().Refuse(misfit_);
    } else if (plug) {
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
    const CanvasColors& colors = scene_.GetColors();
    painter.setBrush(Qt::NoBrush);
    painter.setPen(MakeWirePen(fixed_.type, misfit_.isEmpty() ? colors.GetKind(fixed_.type) : colors.error, 2.4));
    painter.drawPath(fixed_.is_input ? MakeWirePath(end_, start) : MakeWirePath(start, end_));
    DrawPlugMark(painter, end_, 4.5, fixed_.type, true, colors);
    if (!misfit_.isEmpty()) PaintHint(painter, view_, end_, misfit_);
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

  /// Feeds an attribute, "id.attribute".
  void ConnectTo(const std::string& row) {
    PlugRef to{.node = GetNodeOfPlug(row), .name = GetNameOfPlug(row), .type = fixed_.type, .is_input = true};
    view_.GetCommands().Connect(fixed_, to, replaced_);
  }

  /// What is wrong with dropping the wire at a place, where there is a plug or a node.
  void LookForMisfit(const QPointF& place, const std::optional<PlugRef>& plug) {
    misfit_.clear();
    if (plug) {
      misfit_ = FindMisfit(scene_, fixed_, *plug, replaced_);
      return;
    }
    const NodeItem* node = scene_.NodeAt(place);
    if (node == nullptr || node->GetFace().id == fixed_.node) {
      const auto near_plug = scene_.PlugAt(place, view_.ToScene(9.0));
      const bool is_own = near_plug && near_plug->GetPlug() == fixed_.GetPlug() && near_plug->index == fixed_.index;
      if (near_plug && !is_own) misfit_ = FindMisfit(scene_, fixed_, *near_plug, replaced_);
    } else if (!HasFittingRow(scene_, fixed_, node->GetFace().id)) {
      misfit_ = fixed_.is_input ? QCoreApplication::translate("WireDrag", "No output here fits: %1")
                                : QCoreApplication::translate("WireDrag", "No input here fits: %1");
      misfit_ = misfit_.arg(NamePlugKind(fixed_.type));
    }
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
    view_.WithdrawOutside();
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
  /// Why the wire cannot be dropped where it is; empty where it can.
  QString misfit_;
  std::string hovered_;
  std::string offering_;
};

}  // namespace

std::unique_ptr<Drag> MakeWireDrag(GraphView& view, const PlugRef& fixed,
                                   const std::optional<ScEng::DocumentConnection>& replaced, const QPointF& start) {
  return std::make_unique<WireDrag>(view, fixed, replaced, start);
}
