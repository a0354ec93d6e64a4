// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/OutputsDock.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalSpy>
#include <QToolButton>
#include <QTreeView>
#include <memory>
#include <utility>

#include "Tests/Support/EditTesting.h"
#include "Tests/Widgets/WidgetTesting.h"

namespace {

using Testing::Save;
using WidgetTest::Find;

void Show(QWidget& dock) {
  dock.resize(480, 700);
  dock.show();
  dock.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&dock, 60000));
}

void Click(QAbstractItemView& view, int row, int column = 0) {
  const QRect place = view.visualRect(view.model()->index(row, column));
  QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, place.center());
}

QString TextAt(const QAbstractItemView& view, int row, int column = 0) {
  return view.model()->index(row, column).data().toString();
}

/// A run that goes on as a test says.
class ScriptedRun : public OutputRun {
 public:
  struct Script {
    ScEng::BackgroundRun::Progress progress;
    ScEng::RunReport report;
    bool is_canceled = false;
    int alive = 0;
    std::function<void()> notify;
  };
  explicit ScriptedRun(Script& script) : script_(script) { ++script_.alive; }
  ~ScriptedRun() override { --script_.alive; }
  void Cancel() override { script_.is_canceled = true; }
  [[nodiscard]] ScEng::BackgroundRun::Progress GetProgress() const override { return script_.progress; }
  [[nodiscard]] const ScEng::RunReport& GetReport() const override { return script_.report; }

 private:
  Script& script_;
};

class OutputsDockTest : public Testing::EditSessionTest {
 protected:
  void SetUp() override {
    EditSessionTest::SetUp();
    dock_ = std::make_unique<OutputsDock>(*session_, [this](const ScEng::EditSession&, std::function<void()> notify) {
      script_.notify = std::move(notify);
      return std::make_unique<ScriptedRun>(script_);
    });
    Show(*dock_);
    list_ = Find<QTreeView>(*dock_, "outputs.list");
  }
  void TearDown() override {
    dock_.reset();
    EditSessionTest::TearDown();
  }
  [[nodiscard]] const std::vector<ScEng::DocumentOutput>& Outputs() const {
    return session_->GetDocument().GetOutputs();
  }

  ScriptedRun::Script script_;
  std::unique_ptr<OutputsDock> dock_;
  QTreeView* list_ = nullptr;
};

TEST_F(OutputsDockTest, ShowsTheOutputThatIsSelected) {
  EXPECT_EQ(TextAt(*list_, 0, OutputsModel::kPath), "b.exr");
  Click(*list_, 1);
  EXPECT_EQ(Find<QComboBox>(*dock_, "outputs.from")->currentText(), "d.image");
  EXPECT_EQ(Find<QLineEdit>(*dock_, "outputs.path")->text(), "d.exr");
  EXPECT_EQ(Find<QComboBox>(*dock_, "outputs.type")->currentData().toString(), "half");
  Click(*list_, 0);
  EXPECT_EQ(Find<QComboBox>(*dock_, "outputs.type")->currentData().toString(), "auto");
}

TEST_F(OutputsDockTest, EachFieldIsACommand) {
  Click(*list_, 0);
  auto* path = Find<QLineEdit>(*dock_, "outputs.path");
  WidgetTest::Type(path, "height.png");
  QTest::keyClick(path, Qt::Key_Return);
  EXPECT_EQ(Outputs()[0].path, "height.png");
  auto* type = Find<QComboBox>(*dock_, "outputs.type");
  type->setFocus();
  QTest::keyClick(type, Qt::Key_End);
  EXPECT_EQ(Outputs()[0].type, "int16");
  EXPECT_EQ(Outputs()[0].samples, "");
  EXPECT_EQ(session_->GetHistory().size(), 2U);
  EXPECT_EQ(TextAt(*list_, 0, OutputsModel::kType), "int16");
  EXPECT_FALSE(session_->GoTo(0).IsError());
  QCoreApplication::processEvents();
  EXPECT_EQ(path->text(), "b.exr");
  EXPECT_EQ(type->currentIndex(), 0);
}

TEST_F(OutputsDockTest, SaysWhatIsWrongWithAField) {
  Click(*list_, 0);
  auto* path = Find<QLineEdit>(*dock_, "outputs.path");
  WidgetTest::Type(path, "");
  QTest::keyClick(path, Qt::Key_Backspace);
  QTest::keyClick(path, Qt::Key_Return);
  EXPECT_EQ(Outputs()[0].path, "b.exr");
  EXPECT_TRUE(Find<QLabel>(*dock_, "outputs.error")->isVisible());
}

TEST_F(OutputsDockTest, AddsWhatIsShownAndRemovesWhatIsSelected) {
  QTest::mouseClick(Find<QToolButton>(*dock_, "outputs.add"), Qt::LeftButton);
  ASSERT_EQ(Outputs().size(), 3U);
  // The view of the document shows it.
  EXPECT_EQ(Outputs()[2].from, "c.image");
  EXPECT_EQ(Outputs()[2].path, "c.png");
  QTest::mouseClick(Find<QToolButton>(*dock_, "outputs.add"), Qt::LeftButton);
  EXPECT_EQ(Outputs()[3].path, "c2.png");
  EXPECT_EQ(list_->currentIndex().row(), 3);
  list_->setFocus();
  QTest::keyClick(list_, Qt::Key_Delete);
  EXPECT_EQ(Outputs().size(), 3U);
  QTest::mouseClick(Find<QToolButton>(*dock_, "outputs.remove"), Qt::LeftButton);
  EXPECT_EQ(Outputs().size(), 2U);
  EXPECT_FALSE(session_->GoTo(0).IsError());
  EXPECT_EQ(Save(session_->GetDocument()), before_);
}

TEST_F(OutputsDockTest, LeavesTheGraphItsHeightBelowIt) {
  Click(*list_, 0);
  auto* fields = Find<QScrollArea>(*dock_, "outputs.fields");
  const auto place = [&](const QWidget& part) { return QRect(part.mapTo(dock_.get(), QPoint()), part.size()); };
  EXPECT_GT(place(*fields).top(), place(*list_).bottom());
  // As at the bottom of a window of 1440 x 900, of which it takes less than a third.
  dock_->resize(860, 260);
  QCoreApplication::processEvents();
  EXPECT_EQ(dock_->height(), 260);
  EXPECT_GT(place(*fields).left(), place(*list_).right());
  // Each field can still be had by the keyboard.
  auto* layer = Find<QLineEdit>(*dock_, "outputs.layer");
  Find<QLineEdit>(*dock_, "outputs.path")->setFocus();
  for (int i = 0; i < 20 && !layer->hasFocus(); ++i) {
    ASSERT_NE(dock_->focusWidget(), nullptr);
    QTest::keyClick(dock_->focusWidget(), Qt::Key_Tab);
  }
  ASSERT_TRUE(layer->hasFocus());
  EXPECT_TRUE(place(*fields).contains(place(*layer).center()));
}

TEST_F(OutputsDockTest, WritesAndTells) {
  script_.progress.id = "b";
  script_.progress.done = 1;
  script_.progress.total = 4;
  auto* write = Find<QPushButton>(*dock_, "outputs.write");
  auto* cancel = Find<QPushButton>(*dock_, "outputs.cancel");
  auto* progress = Find<QProgressBar>(*dock_, "outputs.progress");
  QSignalSpy written(dock_.get(), &OutputsDock::Written);
  QTest::mouseClick(write, Qt::LeftButton);
  EXPECT_FALSE(write->isEnabled());
  EXPECT_EQ(progress->maximum(), 4);
  EXPECT_EQ(progress->value(), 1);
  QTest::mouseClick(cancel, Qt::LeftButton);
  EXPECT_TRUE(script_.is_canceled);

  script_.progress.is_finished = true;
  script_.report.canceled = true;
  script_.report.findings.AddError("cannot write d.exr: the disk is full");
  script_.report.written.push_back({.file = "b.exr", .header = {}});
  script_.notify();
  QCoreApplication::processEvents();
  EXPECT_EQ(script_.alive, 0);
  EXPECT_TRUE(write->isEnabled());
  EXPECT_FALSE(cancel->isVisible());
  auto* results = Find<QListWidget>(*dock_, "outputs.results");
  ASSERT_EQ(results->count(), 2);
  EXPECT_EQ(results->item(0)->text(), "cannot write d.exr: the disk is full");
  EXPECT_EQ(results->item(1)->text(), "b.exr");
  EXPECT_EQ(Find<QLabel>(*dock_, "outputs.summary")->text(), "1 file written, 1 error, canceled");
  ASSERT_EQ(written.size(), 1);
  EXPECT_EQ(written[0][0].toInt(), 1);
  EXPECT_EQ(written[0][1].toInt(), 1);
}

TEST_F(OutputsDockTest, EndsARunThatIsUnderWayWhenItGoes) {
  script_.progress.total = 1;
  dock_->WriteAll();
  EXPECT_EQ(script_.alive, 1);
  dock_.reset();
  EXPECT_EQ(script_.alive, 0);
}

}  // namespace
