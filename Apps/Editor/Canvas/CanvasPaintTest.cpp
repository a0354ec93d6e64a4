// SPDX-License-Identifier: Apache-2.0
#include <QImage>
#include <QListWidget>
#include <set>
#include <vector>

#include "Apps/Editor/Canvas/CanvasTesting.h"
#include "Host/Viewing/ViewImage.h"
#include "Tests/Support/HostTesting.h"

namespace {

class CanvasPaint : public CanvasTest {
 protected:
  [[nodiscard]] QImage Draw() const {
    QApplication::processEvents();
    return view().viewport()->grab().toImage();
  }
  [[nodiscard]] static QImage Cut(const QImage& picture, const QRect& box) { return picture.copy(box); }
};

TEST_F(CanvasPaint, NothingShowsThroughADimmedNode) {
  Open(
      "{'id': 'below', 'type': 'ImageCheckerNode', 'position': [0, 400]},"
      "{'id': 'above', 'type': 'ImageValueClampNode', 'position': [0, 0]},"
      "{'id': 'shown', 'type': 'ImageCheckerNode', 'position': [400, 0]}");
  canvas_->SetShown("shown.image");
  QApplication::processEvents();
  NodeItem* above = scene().FindNode("above");
  ASSERT_TRUE(above->IsDimmed());
  const QRect body = view().ToViewport(above->GetBody().adjusted(4, 4, -4, -4));
  const QImage alone = Cut(Draw(), body);
  NodeItem* below = scene().FindNode("below");
  below->setPos(70, 30);
  above->setZValue(2.0);
  EXPECT_EQ(Cut(Draw(), body), alone);
  // It is paler than a node that feeds what is shown.
  canvas_->SetShown("above.image");
  QApplication::processEvents();
  EXPECT_FALSE(above->IsDimmed());
  EXPECT_NE(Cut(Draw(), body), alone);
}

TEST_F(CanvasPaint, ACheckerboardShowsThroughAThumbnailWithoutOpacity) {
  Open("{'id': 'a', 'type': 'ImageCheckerNode', 'position': [0, 0]}");
  const auto show = [&](float opacity) {
    std::vector<float> samples;
    for (int i = 0; i < 64 * 64; ++i) samples.insert(samples.end(), {1.0F, 0.0F, 0.0F, opacity});
    ScEng::NodeFacts facts;
    facts.id = "a";
    facts.thumbnail = ScEng::ViewImage::Make(*Testing::MakeImage(64, 64, ColorMode::kColor, samples));
    canvas_->SetFacts({facts});
    const NodeItem* item = scene().FindNode("a");
    const QPointF middle = item->pos() + item->GetShape().thumbnail.center();
    const QImage seen = Cut(Draw(), QRect(view().mapFromScene(middle) - QPoint(15, 15), QSize(30, 30)));
    std::set<QRgb> colors;
    for (int y = 0; y < seen.height(); ++y) {
      for (int x = 0; x < seen.width(); ++x) colors.insert(seen.pixel(x, y));
    }
    return colors;
  };
  EXPECT_EQ(show(1.0F), (std::set<QRgb>{qRgb(255, 0, 0)}));
  const std::set<QRgb> seen = show(0.0F);
  EXPECT_TRUE(seen.contains(qRgb(204, 204, 204)) && seen.contains(qRgb(255, 255, 255))) << seen.size();
}

TEST_F(CanvasPaint, EveryTypeHasAnIconInTheSearch) {
  Open("{'id': 'a', 'type': 'ImageCheckerNode', 'position': [0, 0]}");
  Trigger("add");
  const auto* list = canvas_->findChild<QListWidget*>(QStringLiteral("canvas.search.list"));
  ASSERT_NE(list, nullptr);
  ASSERT_GT(list->count(), 10);
  for (int row = 0; row < list->count(); ++row) {
    EXPECT_FALSE(list->item(row)->icon().isNull()) << list->item(row)->text().toStdString();
  }
}

}  // namespace
