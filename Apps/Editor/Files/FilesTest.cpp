// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTreeWidget>
#include <filesystem>
#include <future>

#include "Apps/Editor/Files/FileWatcher.h"
#include "Apps/Editor/Files/FilesChangedBar.h"
#include "Apps/Editor/Files/MissingInputs.h"
#include "Apps/Editor/Files/RecentFiles.h"
#include "Apps/Editor/Files/Templates.h"
#include "Apps/Editor/Files/TemplatesDialog.h"
#include "Host/Nodes/HostNodes.h"
#include "Tests/Support/EditTesting.h"
#include "Tests/Widgets/WidgetTesting.h"

namespace {

namespace fs = std::filesystem;
using Testing::TemporaryFolder;
using Testing::WriteText;
using WidgetTest::Find;

constexpr int kPatience = 60000;

QString ToText(const fs::path& path) { return QString::fromStdString(path.string()); }

// ---- Recent files ----

TEST(RecentFiles, KeepsTheNewestThatAreThere) {
  const TemporaryFolder folder;
  RecentFiles recent(ToText(folder / "settings.ini"));
  for (int i = 0; i < 14; ++i) {
    const fs::path file = folder / (std::to_string(i) + ".json");
    WriteText(file, "{}");
    recent.Add(ToText(file));
  }
  recent.Add(ToText(folder / "5.json"));
  QStringList files = recent.GetFiles();
  ASSERT_EQ(files.size(), RecentFiles::kMost);
  EXPECT_EQ(files[0], ToText(folder / "5.json"));
  EXPECT_EQ(files[1], ToText(folder / "13.json"));
  EXPECT_EQ(files.count(files[0]), 1);
  fs::remove(folder / "13.json");
  // Another window has the same list.
  const RecentFiles other(ToText(folder / "settings.ini"));
  EXPECT_EQ(other.GetFiles()[1], ToText(folder / "12.json"));
}

TEST(RecentFiles, OffersThemInAMenu) {
  const TemporaryFolder folder;
  RecentFiles recent(ToText(folder / "settings.ini"));
  QMenu menu;
  recent.FillMenu(menu);
  EXPECT_FALSE(menu.actions().front()->isEnabled());
  WriteText(folder / "a&b.json", "{}");
  recent.Add(ToText(folder / "a&b.json"));
  recent.FillMenu(menu);
  EXPECT_TRUE(menu.actions().front()->text().contains("a&&b.json"));
  QSignalSpy chosen(&recent, &RecentFiles::Chosen);
  menu.actions().front()->trigger();
  ASSERT_EQ(chosen.size(), 1);
  EXPECT_EQ(chosen[0][0].toString(), ToText(folder / "a&b.json"));
  menu.actions().back()->trigger();
  EXPECT_TRUE(recent.GetFiles().isEmpty());
}

// ---- Templates ----

TEST(Templates, AreDocumentsWithoutProblemsThatReadNoFiles) {
  const TemporaryFolder folder;
  const QList<Template> templates = ListTemplates();
  EXPECT_GE(templates.size(), 6);
  for (const Template& entry : templates) {
    ScEng::Findings findings;
    const auto session = MakeFromTemplate(entry, Testing::GetCatalog(), folder.Path(), findings);
    ASSERT_NE(session, nullptr) << entry.title.toStdString() << findings.errors[0];
    EXPECT_FALSE(session->IsModified());
    EXPECT_TRUE(session->GetFile().empty());
    EXPECT_TRUE(session->GetDocument().GetInputFiles().empty());
    if (entry.name.isEmpty()) {
      EXPECT_TRUE(session->GetDocument().GetIds().empty());
      continue;
    }
    session->GetDocument().CheckComplete(findings);
    session->GetDocument().Advise(findings);
    EXPECT_EQ(findings.GetNumErrors(), 0U);
    EXPECT_TRUE(findings.notes.empty()) << entry.title.toStdString() << ": " << findings.notes[0];
    ASSERT_TRUE(session->GetDocument().GetView());
    ScEng::RunReport report;
    const auto image = session->GetDocument().Evaluate(session->GetDocument().GetView()->shown, report);
    EXPECT_TRUE(image) << entry.title.toStdString();
    const QPixmap picture(entry.GetPicture());
    EXPECT_EQ(picture.size(), QSize(320, 200));
    EXPECT_LT(QFileInfo(entry.GetPicture()).size(), 40 * 1024);
  }
}

TEST(TemplatesDialog, IsUsedWithKeysAndMouse) {
  TemplatesDialog dialog;
  WidgetTest::ShowActive(dialog);
  auto* list = Find<QListWidget>(dialog, "templates.list");
  EXPECT_EQ(dialog.GetChosen().name, "");
  list->setFocus();
  QTest::keyClick(list, Qt::Key_Right);
  EXPECT_EQ(dialog.GetChosen().name, "shaded");
  const QRect place = list->visualItemRect(list->item(2));
  QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, place.center());
  EXPECT_EQ(dialog.GetChosen().name, "bands");
  QSignalSpy accepted(&dialog, &QDialog::accepted);
  QTest::mouseClick(Find<QPushButton>(dialog, "templates.create"), Qt::LeftButton);
  EXPECT_EQ(accepted.size(), 1);
}

// ---- Watching files ----

class FileWatcherTest : public testing::Test {
 protected:
  void SetUp() override {
    WriteText(folder_ / "a.png", "one");
    ScEng::Findings findings;
    WriteText(folder_ / "graph.json",
              Testing::MakeText("{'id': 'a', 'type': 'ImageReaderNode', 'attributes': {'path': 'a.png'}}, "
                                "{'id': 'same', 'type': 'ImageReaderNode', 'attributes': {'path': 'a.png'}}, "
                                "{'id': 'later', 'type': 'ImageReaderNode', 'attributes': {'path': 'b.png'}}"));
    session_ = ScEng::EditSession::Open(Testing::GetCatalog(), folder_ / "graph.json", folder_ / "state", findings);
    ASSERT_NE(session_, nullptr);
  }

  TemporaryFolder folder_;
  std::unique_ptr<ScEng::EditSession> session_;
};

TEST_F(FileWatcherTest, TellsOfFilesThatAreChangedReplacedAndMade) {
  FileWatcher watcher(*session_);
  watcher.SetMode(FileWatcher::Mode::kAutomatic);
  QSignalSpy changed(&watcher, &FileWatcher::FilesChanged);
  WriteText(folder_ / "a.png", "longer");
  ASSERT_TRUE(QTest::qWaitFor([&] { return changed.size() == 1; }, kPatience));
  EXPECT_EQ(changed[0][0].toStringList(), QStringList({"a", "same"}));
  // As programs do that write a file beside the one before and rename it.
  for (int round = 2; round <= 3; ++round) {
    WriteText(folder_ / "new.png", "another" + std::to_string(round));
    fs::rename(folder_ / "new.png", folder_ / "a.png");
    ASSERT_TRUE(QTest::qWaitFor([&] { return changed.size() == round; }, kPatience));
    EXPECT_EQ(changed[round - 1][0].toStringList(), QStringList({"a", "same"}));
  }
  WriteText(folder_ / "b.png", "made");
  ASSERT_TRUE(QTest::qWaitFor([&] { return changed.size() == 4; }, kPatience));
  EXPECT_EQ(changed[3][0].toStringList(), QStringList({"later"}));
}

TEST_F(FileWatcherTest, AsksFirst) {
  FileWatcher watcher(*session_);
  QSignalSpy offered(&watcher, &FileWatcher::Offered);
  QSignalSpy changed(&watcher, &FileWatcher::FilesChanged);
  WriteText(folder_ / "a.png", "longer");
  ASSERT_TRUE(QTest::qWaitFor([&] { return offered.size() == 1; }, kPatience));
  EXPECT_FALSE(session_->RenameNode("a", "height").IsError());
  EXPECT_EQ(watcher.GetPending(), QStringList({"height", "same"}));
  EXPECT_TRUE(changed.empty());
  watcher.Accept();
  ASSERT_EQ(changed.size(), 1);
  EXPECT_EQ(changed[0][0].toStringList(), QStringList({"height", "same"}));
  watcher.Accept();
  EXPECT_EQ(changed.size(), 1);
}

TEST_F(FileWatcherTest, FollowsTheDocument) {
  FileWatcher watcher(*session_);
  watcher.SetMode(FileWatcher::Mode::kAutomatic);
  QSignalSpy changed(&watcher, &FileWatcher::FilesChanged);
  fs::create_directory(folder_ / "other");
  WriteText(folder_ / "other/c.png", "one");
  EXPECT_FALSE(session_->SetAttribute("later.path", "other/c.png").IsError());
  // Before the watcher follows, a change goes unseen, so another one is made.
  bool is_told = false;
  for (std::size_t round = 1; !is_told && round <= 60; ++round) {
    WriteText(folder_ / "other/c.png", std::string(round, 'x'));
    is_told = QTest::qWaitFor([&] { return !changed.empty(); }, 1000);
  }
  ASSERT_TRUE(is_told);
  EXPECT_EQ(changed[0][0].toStringList(), QStringList({"later"}));
}

TEST_F(FileWatcherTest, TheBarAsksAndRemembersTheAnswer) {
  const QString settings = ToText(folder_ / "settings.ini");
  FileWatcher watcher(*session_);
  FilesChangedBar bar(watcher, settings);
  QSignalSpy changed(&watcher, &FileWatcher::FilesChanged);
  EXPECT_EQ(watcher.GetMode(), FileWatcher::Mode::kAsk);
  EXPECT_FALSE(bar.isVisible());
  WriteText(folder_ / "a.png", "longer");
  ASSERT_TRUE(QTest::qWaitFor([&] { return bar.isVisible(); }, kPatience));
  EXPECT_EQ(Find<QLabel>(bar, "files_changed.text")->text(), "The files of 2 readers have changed.");
  QTest::mouseClick(Find<QPushButton>(bar, "files_changed.dismiss"), Qt::LeftButton);
  EXPECT_FALSE(bar.isVisible());
  EXPECT_TRUE(watcher.GetPending().isEmpty());
  WriteText(folder_ / "b.png", "made");
  ASSERT_TRUE(QTest::qWaitFor([&] { return bar.isVisible(); }, kPatience));
  EXPECT_EQ(Find<QLabel>(bar, "files_changed.text")->text(), "The file of later has changed.");
  QTest::mouseClick(Find<QPushButton>(bar, "files_changed.always"), Qt::LeftButton);
  EXPECT_FALSE(bar.isVisible());
  ASSERT_EQ(changed.size(), 1);
  EXPECT_EQ(changed[0][0].toStringList(), QStringList({"later"}));
  EXPECT_EQ(ReadWatchMode(settings), FileWatcher::Mode::kAutomatic);
  StoreWatchMode(settings, FileWatcher::Mode::kNever);
  EXPECT_EQ(ReadWatchMode(settings), FileWatcher::Mode::kNever);
}

// ---- Missing files ----

TEST_F(FileWatcherTest, MissingFilesAreLocatedInADialog) {
  MissingInputs missing(*session_);
  missing.resize(500, 300);
  missing.show();
  ASSERT_TRUE(QTest::qWaitFor([&] { return missing.Count() == 1; }, kPatience));
  auto* list = Find<QTreeWidget>(missing, "missing.list");
  EXPECT_EQ(list->topLevelItem(0)->text(0), "later");
  EXPECT_EQ(list->topLevelItem(0)->text(1), ToText(folder_ / "b.png"));
  QTest::mouseClick(Find<QPushButton>(missing, "missing.locate"), Qt::LeftButton);
  auto* dialog = Find<QFileDialog>(missing, "missing.dialog");
  ASSERT_NE(dialog, nullptr);
  QSignalSpy count(&missing, &MissingInputs::CountChanged);
  emit dialog->fileSelected(ToText(folder_ / "a.png"));
  EXPECT_EQ(session_->GetDocument().FindNode("later")->GetAttribute("path")->GetValue().GetText(), "a.png");
  EXPECT_TRUE(QTest::qWaitFor([&] { return missing.Count() == 0; }, kPatience));
  EXPECT_EQ(count.size(), 1);
  EXPECT_FALSE(session_->Undo().IsError());
  EXPECT_TRUE(QTest::qWaitFor([&] { return missing.Count() == 1; }, kPatience));
}

TEST_F(FileWatcherTest, NobodyWaitsForFilesThatAreLookedFor) {
  // A disk that answers when it is told to.
  std::promise<void> answer;
  const std::shared_future<void> answered = answer.get_future().share();
  const auto is_there = [answered](const fs::path&) {
    answered.wait();
    return false;
  };
  {
    const MissingInputs gone(*session_, nullptr, is_there);
    EXPECT_TRUE(gone.IsLooking());
  }
  MissingInputs missing(*session_, nullptr, is_there);
  EXPECT_EQ(missing.Count(), 0);
  // What changes meanwhile is looked at afterwards.
  EXPECT_FALSE(session_->SetAttribute("later.path", "").IsError());
  missing.Refresh();
  answer.set_value();
  EXPECT_TRUE(QTest::qWaitFor([&] { return !missing.IsLooking(); }, kPatience));
  // The two that read a.png.
  EXPECT_EQ(missing.Count(), 2);
}

}  // namespace
