// SPDX-License-Identifier: Apache-2.0
#include <QSignalBlocker>
#include <algorithm>
#include <vector>

#include "Apps/Editor/Canvas/Drag.h"
#include "Apps/Editor/Canvas/GraphView.h"

namespace {

/// Draws an area and selects the nodes that it touches.
class AreaDrag : public Drag {
 public:
  AreaDrag(GraphView& view, const QPointF& start, bool extends, bool is_lasso)
      : view_(view), start_(start), extends_(extends), is_lasso_(is_lasso) {
    area_ << start;
  }

  void Move(const QPointF& place) override {
    if (is_lasso_) {
      area_ << place;
    } else {
      area_ = QPolygonF(QRectF(start_, place).normalized());
    }
  }

  void Finish(const QPointF& place) override {
    Move(place);
    GraphScene& scene = view_.GetScene();
    {
      const QSignalBlocker blocker(&scene);
      if (!extends_) scene.clearSelection();
      for (const std::string& id : scene.GetIds()) {
        NodeItem* item = scene.FindNode(id);
        if (item != nullptr && area_.intersects(QPolygonF(item->GetBody()))) item->setSelected(true);
      }
    }
    emit scene.selectionChanged();
  }

  void Paint(QPainter& painter) override {
    const CanvasColors& colors = view_.GetScene().GetColors();
    QColor fill = colors.accent;
    fill.setAlphaF(0.14F);
    QPen pen(colors.accent, 1.2);
    pen.setCosmetic(true);
    painter.setPen(pen);
    painter.setBrush(fill);
    painter.drawPolygon(area_);
  }

 private:
  GraphView& view_;
  QPointF start_;
  QPolygonF area_;
  bool extends_;
  bool is_lasso_;
};

class CutDrag : public Drag {
 public:
  CutDrag(GraphView& view, const QPointF& start) : view_(view) { line_ << start; }

  void Move(const QPointF& place) override {
    line_ << place;
    for (WireItem* wire : view_.GetScene().GetAllWires()) {
      if (wire->Crosses(QLineF(line_[line_.size() - 2], place))) wire->SetHighlighted(true);
    }
  }

  void Finish(const QPointF& place) override {
    Move(place);
    Clear();
    std::vector<ScEng::DocumentConnection> cut;
    for (const WireItem* wire : view_.GetScene().GetAllWires()) {
      for (qsizetype i = 1; i < line_.size(); ++i) {
        if (!wire->Crosses(QLineF(line_[i - 1], line_[i]))) continue;
        cut.push_back(wire->GetConnection());
        break;
      }
    }
    view_.GetCommands().Disconnect(cut);
  }

  void Cancel() override { Clear(); }

  void Paint(QPainter& painter) override {
    QPen pen(view_.GetScene().GetColors().error, 2.0, Qt::DashLine);
    pen.setCosmetic(true);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    painter.drawPolyline(line_);
  }

 private:
  void Clear() {
    for (WireItem* wire : view_.GetScene().GetAllWires()) wire->SetHighlighted(false);
  }

  GraphView& view_;
  QPolygonF line_;
};

}  // namespace

std::unique_ptr<Drag> MakeBoxDrag(GraphView& view, const QPointF& start, bool extends) {
  return std::make_unique<AreaDrag>(view, start, extends, false);
}

std::unique_ptr<Drag> MakeLassoDrag(GraphView& view, const QPointF& start, bool extends) {
  return std::make_unique<AreaDrag>(view, start, extends, true);
}

std::unique_ptr<Drag> MakeCutDrag(GraphView& view, const QPointF& start) {
  return std::make_unique<CutDrag>(view, start);
}
