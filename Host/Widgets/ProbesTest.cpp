// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/Probes.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTableWidget>
#include <QTest>
#include <array>
#include <memory>
#include <vector>

#include "Host/Image/ImageMetadata.h"
#include "Host/Viewing/ViewImage.h"
#include "Host/Widgets/ProbeReading.h"
#include "Host/Widgets/ProbeTable.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Widgets/WidgetTesting.h"

namespace ScEng {
namespace {

using Testing::MakeImage;

// ---- The list ----

TEST(ProbeList, NumbersStayAndGapsAreFilled) {
  ProbeList list;
  EXPECT_EQ(list.Add(1, 1), 1);
  EXPECT_EQ(list.Add(2, 2), 2);
  EXPECT_EQ(list.Add(3, 3), 3);
  list.Remove(2);
  EXPECT_EQ(list.GetProbes(), (std::vector<Probe>{{1, 1, 1, 1, 1}, {3, 3, 3, 1, 1}}));
  EXPECT_EQ(list.Add(4, 4, 2, 2), 2);
  EXPECT_EQ(list.GetProbes()[1], (Probe{2, 4, 4, 2, 2}));
}

TEST(ProbeList, TakesOverProbesAndPutsTheirNumbersRight) {
  ProbeList list;
  const QSignalSpy changed(&list, &ProbeList::Changed);
  list.SetProbes({{2, 1, 1, 1, 1}, {2, 5, 5, 0, -3}, {0, 7, 7, 2, 2}});
  EXPECT_EQ(list.GetProbes(), (std::vector<Probe>{{2, 1, 1, 1, 1}, {1, 5, 5, 1, 1}, {3, 7, 7, 2, 2}}));
  EXPECT_EQ(changed.count(), 1);
}

TEST(ProbeList, SelectionGoesWithItsProbe) {
  ProbeList list;
  list.Add(1, 1);
  list.Add(2, 2);
  EXPECT_EQ(list.GetSelected(), 2);
  list.SelectNext(1);
  EXPECT_EQ(list.GetSelected(), 1);
  list.SelectNext(-1);
  EXPECT_EQ(list.GetSelected(), 2);
  list.Remove(2);
  EXPECT_EQ(list.GetSelected(), 0);
}

// ---- What they read ----

TEST(ProbeReader, ReadsRegionsByHand) {
  const auto image = ViewImage::Make(*MakeImage(3, 2, ColorMode::kValue, {1.0F, 2.0F, 3.0F, 4.0F, 5.0F, 12.0F}));
  ProbeReader reader;
  const ProbeReading all = reader.Read(image, {1, 1, 0, 2, 2});
  EXPECT_EQ(all.lowest, "2");
  EXPECT_EQ(all.highest, "12");
  // (2 + 3 + 5 + 12) / 4
  EXPECT_EQ(all.mean, "5.5");
  EXPECT_EQ(all.count, "4");
  // What lies outside does not count.
  EXPECT_EQ(reader.Read(image, {1, 2, 1, 10, 10}).count, "1");
  EXPECT_EQ(reader.Read(image, {1, 20, 20, 4, 4}).count, "");
  EXPECT_EQ(reader.Read(nullptr, {1, 0, 0, 4, 4}).count, "");
}

TEST(ProbeReader, MeasuresARegionOnceWhileItStays) {
  const auto image = ViewImage::Make(*MakeImage(2, 1, ColorMode::kValue, {1.0F, 2.0F}));
  ProbeReader reader;
  for (int i = 0; i < 3; ++i) {
    static_cast<void>(reader.Read(image, {1, 0, 0, 2, 1}));
    reader.EndReading();
  }
  EXPECT_EQ(reader.GetMeasurements(), 1);
  reader.EndReading();
  static_cast<void>(reader.Read(image, {1, 0, 0, 2, 1}));
  EXPECT_EQ(reader.GetMeasurements(), 2);
}

// ---- The table ----

QStringList Row(const ProbeTable& table, int row) {
  const auto* cells = WidgetTest::Find<QTableWidget>(table, "probes");
  QStringList texts;
  for (int column = 0; column < cells->columnCount(); ++column) texts.append(cells->item(row, column)->text());
  return texts;
}

TEST(ProbeTable, ListsPlacesAndValuesAlsoOfOtherImages) {
  const auto image = MakeImage(2, 2, ColorMode::kValue, {1.0F, 2.0F, 3.0F, 4.0F});
  image->SetPin(10, 10);
  auto metadata = std::make_shared<ImageMetadata>();
  metadata->georeference = Georeference{"", std::array<double, 6>{100.0, 10.0, 0.0, 0.0, 0.0, -10.0}};
  image->SetMetadata(metadata);
  const auto input = MakeImage(20, 20, ColorMode::kValue, std::vector<float>(400, 0.5F));
  ProbeList list;
  list.SetProbes({{1, 11, 10, 1, 1}, {2, 10, 10, 2, 2}, {3, 0, 0, 1, 1}});
  ProbeTable table;
  table.SetProbes(&list);
  table.SetImages(ViewImage::Make(*image), {{"height", ViewImage::Make(*input)}});
  table.Refresh();
  EXPECT_EQ(Row(table, 0), (QStringList{"1", "11, 10", "215, -105", "2", "", "", "", "", "0.5"}));
  EXPECT_EQ(Row(table, 1),
            (QStringList{"2", QString::fromUtf8("10, 10 · 2 × 2"), "210, -110", "", "1", "4", "2.5", "4", "mean 0.5"}));
  EXPECT_EQ(Row(table, 2), (QStringList{"3", "0, 0", "105, -5", "outside", "", "", "", "", "0.5"}));
}

TEST(ProbeTable, FollowsTheListAndRemovesWithDelete) {
  ProbeList list;
  ProbeTable table;
  table.SetProbes(&list);
  table.SetImages(ViewImage::Make(*MakeImage(2, 1, ColorMode::kValue, {1.0F, 2.0F})), {});
  auto* cells = WidgetTest::Find<QTableWidget>(table, "probes");
  list.Add(0, 0);
  list.Add(1, 0);
  ASSERT_TRUE(QTest::qWaitFor([&] { return cells->rowCount() == 2; }, 60000));
  EXPECT_EQ(cells->selectionModel()->selectedRows().front().row(), 1);
  cells->selectRow(0);
  EXPECT_EQ(list.GetSelected(), 1);
  QTest::keyClick(cells, Qt::Key_Delete);
  ASSERT_TRUE(QTest::qWaitFor([&] { return cells->rowCount() == 1; }, 60000));
  EXPECT_EQ(Row(table, 0), (QStringList{"2", "1, 0", "2"}));
}

}  // namespace
}  // namespace ScEng
