// SPDX-License-Identifier: Apache-2.0
// The panel by mouse and keyboard alone: presets, lines for the terminal, attributes that a connection drives.
#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QDoubleSpinBox>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QSlider>
#include <QToolButton>
#include <memory>

#include "Apps/Editor/Docks/AttributesDock.h"
#include "Tests/Support/EditTesting.h"
#include "Tests/Widgets/MenuTesting.h"
#include "Tests/Widgets/WidgetTesting.h"

namespace {

using Testing::Save;
using WidgetTest::Find;

class PanelByHand : public Testing::EditSessionTest {
 protected:
  void SetUp() override {
    EditSessionTest::SetUp();
    // Presets go to a folder of this test alone.
    qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString((folder_ / "config").string()));
    dock_ = std::make_unique<AttributesDock>(*session_, Testing::GetCatalog());
    dock_->resize(420, 800);
    WidgetTest::ShowActive(*dock_);
  }
  void TearDown() override {
    dock_.reset();
    EditSessionTest::TearDown();
  }

  void Select(const QStringList& ids) {
    dock_->SetSelection(ids);
    QCoreApplication::processEvents();
  }
  void Choose(const char* button, const QStringList& path) {
    WidgetTest::ChooseAfter(
        [&] { QTest::mouseClick(Find<QToolButton>(*dock_, button), Qt::LeftButton, {}, QPoint(6, 6)); }, path);
    QCoreApplication::processEvents();
  }
  void TypeNumber(const char* name, const char* text) {
    auto* field = Find<QDoubleSpinBox>(*dock_, name);
    ASSERT_NE(field, nullptr);
    WidgetTest::Type(field, text);
    QTest::keyClick(field, Qt::Key_Return);
    QCoreApplication::processEvents();
  }
  [[nodiscard]] double Low() const {
    return session_->GetDocument().FindNode("d")->GetAttribute("low")->GetValue().GetNumber();
  }

  std::unique_ptr<AttributesDock> dock_;
};

TEST_F(PanelByHand, APresetIsSavedTakenAndDeleted) {
  Select({"d"});
  TypeNumber("low", "0.125");
  Choose("attributes.presets", {"Save as Preset…"});
  auto* dialog = Find<QInputDialog>(*dock_, "attributes.preset_name");
  ASSERT_NE(dialog, nullptr);
  auto* name = dialog->findChild<QLineEdit*>();
  QTest::keyClicks(name, "Sea");
  QTest::keyClick(name, Qt::Key_Return);
  QCoreApplication::processEvents();
  TypeNumber("low", "5");
  Choose("attributes.presets", {"Sea"});
  EXPECT_EQ(Low(), 0.125);
  EXPECT_EQ(Find<QDoubleSpinBox>(*dock_, "low")->value(), 0.125);
  EXPECT_EQ(session_->GetHistory().back(), "Apply preset Sea");
  // Another window finds it, since it is a file.
  AttributesDock other(*session_, Testing::GetCatalog());
  other.SetSelection({"d"});
  Choose("attributes.presets", {"Delete", "Sea"});
  WidgetTest::ChooseAfter([&] { QTest::mouseClick(Find<QToolButton>(*dock_, "attributes.presets"), Qt::LeftButton); },
                          {"Save as Preset…"});
  dialog = Find<QInputDialog>(*dock_, "attributes.preset_name");
  ASSERT_NE(dialog, nullptr);
  QTest::keyClick(dialog->findChild<QLineEdit*>(), Qt::Key_Escape);
  EXPECT_EQ(WidgetTest::FindEntry(*Find<QToolButton>(*dock_, "attributes.presets")->menu(), "Sea"), nullptr);
}

TEST_F(PanelByHand, CopiesTheNodeAsACommand) {
  Select({"d"});
  TypeNumber("low", "0.1");
  const auto choose = [&](int row) {
    bool is_done = false;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, [&] {
      QMenu* menu = WidgetTest::GetOpenMenu();
      if (menu == nullptr) return;
      look.stop();
      for (int i = 0; i <= row; ++i) QTest::keyClick(menu, Qt::Key_Down);
      QTest::keyClick(menu, Qt::Key_Return);
      is_done = true;
    });
    look.start(5);
    auto* button = Find<QToolButton>(*dock_, "attributes.copy");
    button->setFocus();
    QTest::keyClick(button, Qt::Key_Space);
    ASSERT_TRUE(QTest::qWaitFor([&] { return is_done; }, 60000));
  };
  choose(0);
  EXPECT_EQ(QApplication::clipboard()->text(), "value apply ImageValueClampNode -i FILE --set low=0.1 -o FILE");
  choose(1);
  EXPECT_EQ(QApplication::clipboard()->text(), "--set d.low=0.1");
}

TEST_F(PanelByHand, WhatAConnectionDrivesSaysByWhat) {
  Select({"b"});
  auto* source = Find<QLabel>(*dock_, "constant.source");
  ASSERT_NE(source, nullptr);
  EXPECT_TRUE(source->isVisible());
  EXPECT_EQ(source->text(), "driven by n.number");
  EXPECT_FALSE(Find<QDoubleSpinBox>(*dock_, "constant")->isVisible());
  // The row is one to type in once the wire is gone, and again what it was with it.
  EXPECT_FALSE(session_->Disconnect({"n.number", "b.constant", 0}).IsError());
  QCoreApplication::processEvents();
  EXPECT_FALSE(source->isVisible());
  TypeNumber("constant", "2");
  EXPECT_EQ(Constant("b"), 2.0);
  EXPECT_FALSE(session_->GoTo(0).IsError());
  QCoreApplication::processEvents();
  EXPECT_TRUE(source->isVisible());
  EXPECT_EQ(Save(session_->GetDocument()), before_);
}

TEST_F(PanelByHand, ASliderSetsAllNodesOfOneType) {
  EXPECT_FALSE(session_->AddNode({Testing::kAdd, "e", {}}).IsError());
  Select({"c", "e"});
  auto* slider = Find<QSlider>(*dock_, "constant.slider");
  ASSERT_NE(slider, nullptr);
  const std::size_t steps = session_->GetHistory().size();
  const QPoint middle = slider->rect().center();
  QTest::mousePress(slider, Qt::LeftButton, {}, middle);
  for (int step = 1; step <= 5; ++step) QTest::mouseMove(slider, middle + QPoint(5 * step, 0));
  QTest::mouseRelease(slider, Qt::LeftButton, {}, middle + QPoint(25, 0));
  QCoreApplication::processEvents();
  EXPECT_NE(Constant("c"), 0.0);
  EXPECT_EQ(Constant("c"), Constant("e"));
  EXPECT_EQ(session_->GetHistory().size(), steps + 1);
}

TEST_F(PanelByHand, TabGoesThroughAllOfIt) {
  Select({"d"});
  auto* name = Find<QLineEdit>(*dock_, "attributes.name");
  name->setFocus();
  QStringList reached;
  for (int i = 0; i < 80; ++i) {
    QWidget* focused = QApplication::focusWidget();
    ASSERT_NE(focused, nullptr);
    EXPECT_FALSE(focused->accessibleName().isEmpty()) << focused->objectName().toStdString();
    reached << focused->objectName();
    QTest::keyClick(focused, Qt::Key_Tab);
    if (QApplication::focusWidget() == name) break;
  }
  EXPECT_EQ(QApplication::focusWidget(), name);
  for (const char* control : {"attributes.enabled", "attributes.note", "attributes.reset", "attributes.presets",
                              "attributes.copy", "attributes.help", "low", "high", "clamp"}) {
    EXPECT_TRUE(reached.contains(QString::fromLatin1(control))) << control;
  }
}

}  // namespace
