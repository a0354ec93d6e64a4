// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Window/EditorWindow.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QAccessible>
#include <QAction>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <ctime>
#include <filesystem>
#include <random>

#include "Apps/Editor/Canvas/GraphCanvas.h"
#include "Apps/Editor/Docks/OutputsDock.h"
#include "Apps/Editor/Files/FirstSteps.h"
#include "Apps/Editor/Window/EditorWindowTesting.h"

namespace {

constexpr double kLong = 300.0;

class EditorWindowTest : public EditorWindowTesting {};

TEST_F(EditorWindowTest, ShowsTheLastImageOfADocument) {
  Open(folder_ / "graph.json");
  EXPECT_EQ(Viewer().GetShown(), QStringLiteral("high.image"));
  const auto& image = Viewer().GetViewer().GetContent().image;
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(image->GetImage().GetSizeX(), 64);
  EXPECT_EQ(window_->windowTitle(), QStringLiteral("graph.json[*] – Value"));
  EXPECT_FALSE(window_->isWindowModified());
}

TEST_F(EditorWindowTest, FollowsTheSelectionUnlessItIsPinned) {
  Open(folder_ / "graph.json");
  Canvas().Select({QStringLiteral("height")});
  Wait();
  EXPECT_EQ(Viewer().GetShown(), QStringLiteral("height.image"));
  Viewer().SetPinned(true);
  Canvas().Select({QStringLiteral("raised")});
  Wait();
  EXPECT_EQ(Viewer().GetShown(), QStringLiteral("height.image"));
  Viewer().SetPinned(false);
  EXPECT_EQ(Viewer().GetShown(), QStringLiteral("raised.image"));
}

TEST_F(EditorWindowTest, AFieldOfThePanelChangesThePicture) {
  Open(folder_ / "graph.json");
  Canvas().Select({QStringLiteral("raised")});
  Wait();
  const float before = Lowest();
  auto* field = window_->findChild<QDoubleSpinBox*>(QStringLiteral("constant"));
  ASSERT_NE(field, nullptr);
  WidgetTest::Type(field, "0.75");
  QTest::keyClick(field, Qt::Key_Return);
  Wait();
  EXPECT_NEAR(Lowest(), before + 0.5F, 1e-6F);
  EXPECT_TRUE(window_->isWindowModified());
  ASSERT_EQ(Session().GetHistory().size(), 1U);
  EXPECT_EQ(Session().GetHistory()[0], "Set raised.constant");
  EXPECT_EQ(Action("edit.undo")->text(), QStringLiteral("Undo Set raised.constant"));
  Action("edit.undo")->trigger();
  Wait();
  EXPECT_EQ(Lowest(), before);
  EXPECT_FALSE(window_->isWindowModified());
  Action("edit.redo")->trigger();
  Wait();
  EXPECT_NEAR(Lowest(), before + 0.5F, 1e-6F);
}

TEST_F(EditorWindowTest, TheRangeStaysWhereItIsWhenValuesChange) {
  Open(folder_ / "graph.json");
  ScEng::Look look = Viewer().GetViewer().GetLook();
  look.range = ScEng::RangeSource::kCustom;
  look.custom = {0.25F, 2.0F};
  Viewer().GetViewer().SetLook(look);
  ASSERT_FALSE(Session().SetAttribute("raised.constant", "5").IsError());
  Wait();
  EXPECT_EQ(Viewer().GetViewer().GetLook(), look);
}

TEST_F(EditorWindowTest, ARangeOfOnesOwnStaysWithItsOutput) {
  Open(folder_ / "graph.json");
  const auto choose = [&](ScEng::RangeSource range, const ScEng::ValueRange& custom) {
    ScEng::Look look = Viewer().GetViewer().GetLook();
    look.range = range;
    look.custom = custom;
    Viewer().GetViewer().SetLook(look);
    emit Viewer().GetViewer().LookChanged(look);
  };
  const auto show = [&](const char* id) {
    Canvas().Select({QLatin1String(id)});
    Wait();
    return Viewer().GetViewer().GetLook();
  };
  choose(ScEng::RangeSource::kAbsolute, {});
  choose(ScEng::RangeSource::kCustom, {0.25F, 2.0F});
  EXPECT_EQ(show("raised").range, ScEng::RangeSource::kAbsolute);
  choose(ScEng::RangeSource::kCustom, {-1.0F, 1.0F});
  EXPECT_EQ(show("high").custom, (ScEng::ValueRange{0.25F, 2.0F}));
  EXPECT_EQ(show("height").range, ScEng::RangeSource::kAbsolute);
  choose(ScEng::RangeSource::kMeasured, {});
  // Also under another name.
  ASSERT_FALSE(Session().RenameNode("raised", "lifted").IsError());
  EXPECT_EQ(show("lifted").range, ScEng::RangeSource::kCustom);
  EXPECT_EQ(show("lifted").custom, (ScEng::ValueRange{-1.0F, 1.0F}));
  choose(ScEng::RangeSource::kMeasured, {});
  EXPECT_EQ(show("high").range, ScEng::RangeSource::kCustom);
  EXPECT_EQ(show("lifted").range, ScEng::RangeSource::kMeasured);
}

TEST_F(EditorWindowTest, AShownNodeThatIsRenamedStaysShown) {
  Open(folder_ / "graph.json");
  ASSERT_FALSE(Session().RenameNode("high", "peaks").IsError());
  Wait();
  QApplication::processEvents();
  Wait();
  EXPECT_EQ(Viewer().GetShown(), QStringLiteral("peaks.image"));
  EXPECT_NE(Viewer().GetViewer().GetContent().image, nullptr);
}

TEST_F(EditorWindowTest, WhatTakesThePlaceOfTheShownNodeIsShown) {
  Open(folder_ / "graph.json");
  Canvas().Select({QStringLiteral("raised")});
  Wait();
  Viewer().SetPinned(true);
  ASSERT_FALSE(Session().RemoveAndHeal({"raised"}).IsError());
  Wait();
  EXPECT_EQ(Viewer().GetShown(), QStringLiteral("height.image"));
  EXPECT_NE(Viewer().GetViewer().GetContent().image, nullptr);
}

TEST_F(EditorWindowTest, AllNodesCanBeRemovedAndBroughtBack) {
  Open(folder_ / "graph.json");
  Canvas().Select({QStringLiteral("height"), QStringLiteral("raised"), QStringLiteral("high")});
  Wait();
  ASSERT_FALSE(Session().RemoveNodes({"height", "raised", "high"}).IsError());
  Wait();
  EXPECT_EQ(Viewer().GetShown(), QString());
  Action("edit.undo")->trigger();
  Canvas().Select({QStringLiteral("high")});
  Wait();
  EXPECT_EQ(Viewer().GetShown(), QStringLiteral("high.image"));
  EXPECT_NE(Viewer().GetViewer().GetContent().image, nullptr);
}

TEST_F(EditorWindowTest, TheEditMenuCanBeOpenedAgainAndAgain) {
  Open(folder_ / "graph.json");
  ASSERT_FALSE(Session().SetAttribute("raised.constant", "1").IsError());
  QMenu* menu = nullptr;
  for (QAction* action : window_->menuBar()->actions()) {
    if (action->text() == QStringLiteral("&Edit")) menu = action->menu();
  }
  ASSERT_NE(menu, nullptr);
  for (int i = 0; i < 3; ++i) {
    menu->popup(QPoint(0, 0));
    EXPECT_TRUE(menu->actions().contains(Action("edit.undo")));
    EXPECT_GT(menu->actions().size(), 4);
    menu->close();
  }
  Action("edit.undo")->trigger();
  EXPECT_EQ(Session().GetPlace(), 0U);
}

TEST_F(EditorWindowTest, TheFirstStepsLeaveTheDocksAsTheyWere) {
  Open(folder_ / "graph.json");
  const auto list_docks = [&] {
    QStringList names;
    for (const QDockWidget* frame : window_->GetDocks().GetAll()) {
      if (frame->isVisible()) names << frame->objectName();
    }
    return names;
  };
  // Those of the very first start are under way.
  if (auto* steps = window_->findChild<FirstSteps*>()) QTest::keyClick(steps, Qt::Key_Escape);
  const QStringList before = list_docks();
  Action("help.steps")->trigger();
  EXPECT_NE(list_docks(), before);
  auto* steps = window_->findChild<FirstSteps*>();
  ASSERT_NE(steps, nullptr);
  QTest::keyClick(steps, Qt::Key_Escape);
  EXPECT_EQ(list_docks(), before);
}

TEST_F(EditorWindowTest, F6GoesRoundTheAreasThatAreSeen) {
  Open(folder_ / "graph.json");
  if (auto* steps = window_->findChild<FirstSteps*>()) QTest::keyClick(steps, Qt::Key_Escape);
  for (const char* name : {"problems", "history", "panel"}) window_->GetDocks().Raise(name);
  QApplication::processEvents();
  Canvas().setFocus();
  const auto find_area = [&] {
    const QWidget* focus = QApplication::focusWidget();
    if (focus != nullptr && window_->centralWidget()->isAncestorOf(focus)) return QStringLiteral("canvas");
    for (const QDockWidget* frame : window_->GetDocks().GetAll()) {
      if (focus != nullptr && frame->isAncestorOf(focus)) return frame->objectName();
    }
    return QString();
  };
  QStringList seen;
  for (int i = 0; i < 4; ++i) {
    Action("view.next_area")->trigger();
    seen << find_area();
  }
  // Problems are behind the history.
  EXPECT_EQ(seen, (QStringList{"dock.viewer", "dock.panel", "dock.history", "canvas"}));
  Action("view.previous_area")->trigger();
  EXPECT_EQ(find_area(), QStringLiteral("dock.history"));
  Action("view.previous_area")->trigger();
  // It comes back to where it was.
  auto* field = window_->GetDocks().Find("panel")->findChild<QDoubleSpinBox*>();
  ASSERT_NE(field, nullptr);
  field->setFocus();
  Action("view.next_area")->trigger();
  Action("view.previous_area")->trigger();
  EXPECT_TRUE(field->hasFocus());
}

TEST_F(EditorWindowTest, WhatIsBeingTypedIsNotLost) {
  Open(folder_ / "graph.json");
  Canvas().Select({QStringLiteral("raised")});
  Wait();
  auto* name = window_->findChild<QLineEdit*>(QStringLiteral("attributes.name"));
  ASSERT_NE(name, nullptr);
  WidgetTest::Type(name, "lifted");
  Action("file.save")->trigger();
  EXPECT_TRUE(Session().GetDocument().HasId("lifted"));
  EXPECT_NE(Testing::ReadText(folder_ / "graph.json").find("lifted"), std::string::npos);
}

TEST_F(EditorWindowTest, WithoutADocumentThereIsAPicture) {
  Open({});
  EXPECT_FALSE(Session().GetDocument().GetIds().empty());
  EXPECT_NE(Viewer().GetViewer().GetContent().image, nullptr);
  EXPECT_FALSE(window_->isWindowModified());
}

TEST_F(EditorWindowTest, AsksBeforeChangesAreLost) {
  Open(folder_ / "graph.json");
  ASSERT_FALSE(Session().SetAttribute("raised.constant", "1").IsError());
  bool was_asked = false;
  QTimer::singleShot(0, [&] {
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    ASSERT_NE(box, nullptr);
    was_asked = true;
    box->reject();
  });
  EXPECT_FALSE(window_->close());
  EXPECT_TRUE(was_asked);
  Action("file.save")->trigger();
  EXPECT_FALSE(window_->isWindowModified());
  EXPECT_TRUE(window_->close());
  EXPECT_NE(Testing::ReadText(folder_ / "graph.json").find("\"constant\": 1"), std::string::npos);
}

TEST_F(EditorWindowTest, WritesAllOutputs) {
  Open(folder_ / "graph.json");
  ScEng::DocumentOutput output;
  output.from = "raised.image";
  output.path = "raised.exr";
  ASSERT_FALSE(Session().AddOutput(output).IsError());
  output.path = "none/high.exr";
  ASSERT_FALSE(Session().AddOutput(output).IsError());
  QSignalSpy written(&window_->GetWorkspace()->GetOutputs(), &OutputsDock::Written);
  Action("file.write")->trigger();
  ASSERT_TRUE(written.wait(static_cast<int>(kLong * 1000.0)));
  // One folder does not exist.
  EXPECT_EQ(written[0][0].toInt(), 1);
  EXPECT_EQ(written[0][1].toInt(), 1);
  EXPECT_TRUE(std::filesystem::exists(folder_ / "raised.exr"));
}

TEST_F(EditorWindowTest, OffersWhatWasLeftBehind) {
  // Journals of a process that is there are left alone, so that another one has to leave this behind.
  const pid_t child = fork();
  if (child == 0) {
    ScEng::Findings findings;
    auto session = ScEng::EditSession::Open(Testing::GetCatalog(), folder_ / "graph.json", folder_ / "state", findings);
    const bool is_kept = session != nullptr && !session->SetNote("high", "not saved").IsError() &&
                         !session->Tick(std::chrono::system_clock::now()).IsError();
    _exit(is_kept ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_EQ(status, 0);
  bool was_offered = false;
  QTimer answer;
  QObject::connect(&answer, &QTimer::timeout, [&] {
    QWidget* dialog = QApplication::activeModalWidget();
    if (dialog == nullptr) return;
    answer.stop();
    auto* recover = dialog->findChild<QPushButton*>(QStringLiteral("recovery.recover"));
    was_offered = recover != nullptr;
    if (recover != nullptr) recover->click();
    if (recover == nullptr) dialog->close();
  });
  answer.start(10);
  Open(folder_ / "graph.json");
  EXPECT_TRUE(was_offered);
  EXPECT_EQ(Session().GetDocument().GetNote("high"), "not saved");
  EXPECT_TRUE(window_->isWindowModified());
}

TEST_F(EditorWindowTest, EveryControlHasAName) {
  Open(folder_ / "graph.json");
  for (const char* name : {"panel", "viewer", "outputs", "problems", "profiler", "history", "help"}) {
    window_->GetDocks().Raise(name);
  }
  QApplication::processEvents();
  for (QWidget* widget : window_->findChildren<QWidget*>()) {
    const bool takes_keys = (widget->focusPolicy() & Qt::TabFocus) != 0;
    const bool is_own = !widget->objectName().startsWith(QStringLiteral("qt_"));
    if (!takes_keys || !is_own || !widget->isVisible()) continue;
    const QAccessibleInterface* told = QAccessible::queryAccessibleInterface(widget);
    ASSERT_NE(told, nullptr);
    EXPECT_FALSE(told->text(QAccessible::Name).isEmpty())
        << widget->metaObject()->className() << " " << widget->objectName().toStdString() << " in "
        << widget->parentWidget()->metaObject()->className() << " "
        << widget->parentWidget()->objectName().toStdString();
  }
}

/// Seconds of processor time that this thread has used.
double GetThreadSeconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

// The thread of the window is never busy for long while large images are computed, cancelled and changed. Its own time
// is measured, so that a slow machine changes nothing but the length of the test. VALUE_INSTANTS asks for more than the
// few instants of every day.
TEST_F(EditorWindowTest, TheWindowNeverWaitsForANode) {
  const char* asked = std::getenv("VALUE_INSTANTS");
  const int instants = asked != nullptr ? std::atoi(asked) : 25;
  Open(folder_ / "graph.json");
  ASSERT_FALSE(Session().SetAttribute("height.frame", "0,0,4096,4096").IsError());
  std::mt19937 random(12);
  double longest = 0.0;
  const auto handle = [&] {
    const double begun = GetThreadSeconds();
    QApplication::processEvents(QEventLoop::AllEvents, 1);
    longest = std::max(longest, GetThreadSeconds() - begun);
  };
  for (int i = 0; i < instants; ++i) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(random() % 300);
    while (std::chrono::steady_clock::now() < until) handle();
    const double begun = GetThreadSeconds();
    switch (random() % 5) {
      case 0: Canvas().Select({random() % 2 == 0 ? QStringLiteral("raised") : QStringLiteral("high")}); break;
      case 1: window_->GetWorkspace()->GetEvaluator().Cancel(); break;
      case 2: static_cast<void>(Session().Undo()); break;
      default: ASSERT_FALSE(Session().SetAttribute("raised.constant", std::to_string(random() % 100)).IsError()); break;
    }
    longest = std::max(longest, GetThreadSeconds() - begun);
  }
  while (!window_->GetWorkspace()->GetEvaluator().IsIdle()) handle();
  RecordProperty("longest_ms", static_cast<int>(longest * 1000.0));
  if (asked != nullptr) std::printf("%d instants, at most %.1f ms at once\n", instants, longest * 1000.0);
#if defined(NDEBUG) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  EXPECT_LE(longest, 0.05);
#endif
}

}  // namespace
