// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>
#include <QTreeWidget>
#include <filesystem>

#include "Apps/Editor/Files/DocumentDialogs.h"
#include "Apps/Editor/Files/FirstSteps.h"
#include "Apps/Editor/Files/RecoveryDialog.h"
#include "Apps/Editor/Files/ShortcutsDialog.h"
#include "Tests/Support/EditTesting.h"
#include "Tests/Widgets/WidgetTesting.h"

namespace {

namespace fs = std::filesystem;
using Testing::TemporaryFolder;
using Testing::WriteText;
using WidgetTest::Find;

QString ToText(const fs::path& path) { return QString::fromStdString(path.string()); }

/// Does something with the next dialog that waits for an answer.
template <class Dialog, class Function>
void AnswerNext(const Function& answer) {
  QTimer::singleShot(0, [answer] {
    auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
    ASSERT_NE(dialog, nullptr);
    answer(*dialog);
  });
}

// ---- Recovery ----

class RecoveryTest : public testing::Test {
 protected:
  /// Leaves a journal behind as a program does that ends early: another process that is gone.
  void LeaveJournal(const fs::path& document, const std::string& note) {
    if (!document.empty()) WriteText(document, Testing::MakeText("{'id': 'a', 'type': 'ImageRectangleNode'}"));
    const auto catalog = Testing::GetCatalog();
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) _exit(Edit(catalog, document, note) ? 0 : 1);
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);
  }
  [[nodiscard]] bool Edit(const std::shared_ptr<ScEng::NodeCatalog>& catalog, const fs::path& document,
                          const std::string& note) const {
    ScEng::Findings findings;
    std::unique_ptr<ScEng::EditSession> session;
    if (document.empty()) {
      session = std::make_unique<ScEng::EditSession>(catalog, folder_ / "state");
      if (session->AddNode({Testing::kRectangle, "a", {}}).IsError()) return false;
    } else {
      session = ScEng::EditSession::Open(catalog, document, folder_ / "state", findings);
    }
    return session != nullptr && !session->SetNote("a", note).IsError() &&
           !session->Tick(std::chrono::system_clock::now()).IsError();
  }
  [[nodiscard]] std::vector<ScEng::FoundJournal> FindJournals(const fs::path& document = {}) const {
    std::vector<std::string> notes;
    return RecoveryDialog::FindJournals(folder_ / "state", document, notes);
  }

  TemporaryFolder folder_;
};

TEST_F(RecoveryTest, RecoversTheDocumentThatIsSelected) {
  LeaveJournal(folder_ / "map.json", "kept");
  LeaveJournal({}, "new");
  ASSERT_EQ(FindJournals().size(), 2U);
  ASSERT_EQ(FindJournals(folder_ / "map.json").size(), 1U);
  RecoveryDialog dialog(Testing::GetCatalog(), folder_ / "state", {});
  dialog.show();
  auto* list = Find<QTreeWidget>(dialog, "recovery.list");
  ASSERT_EQ(list->topLevelItemCount(), 2);
  const int row = list->topLevelItem(0)->text(0) == "map.json" ? 0 : 1;
  EXPECT_EQ(list->topLevelItem(row)->text(0), "map.json");
  EXPECT_EQ(list->topLevelItem(row)->text(1), ToText(folder_.Path()));
  EXPECT_EQ(list->topLevelItem(1 - row)->text(0), "New document");
  QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->topLevelItem(row)).center());
  QTest::keyClick(&dialog, Qt::Key_Return);
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
  const auto session = dialog.TakeSession();
  ASSERT_NE(session, nullptr);
  EXPECT_EQ(session->GetFile(), folder_ / "map.json");
  EXPECT_EQ(session->GetDocument().GetNote("a"), "kept");
  EXPECT_TRUE(session->IsModified());
  EXPECT_FALSE(session->Tick(std::chrono::system_clock::now()).IsError());
  // It is being edited now, and no longer offered; the other one is.
  EXPECT_EQ(FindJournals().size(), 1U);
}

TEST_F(RecoveryTest, SaysWhyADocumentCannotBeRecovered) {
  LeaveJournal({}, "new");
  const auto journals = FindJournals();
  ASSERT_EQ(journals.size(), 1U);
  RecoveryDialog dialog(Testing::GetCatalog(), folder_ / "state", {});
  WidgetTest::ShowActive(dialog);
  fs::remove(journals[0].file);
  QTest::mouseClick(Find<QPushButton>(dialog, "recovery.recover"), Qt::LeftButton);
  EXPECT_TRUE(dialog.isVisible());
  EXPECT_TRUE(Find<QLabel>(dialog, "recovery.message")->text().contains("cannot recover"));
  EXPECT_EQ(dialog.TakeSession(), nullptr);
}

TEST_F(RecoveryTest, OffersWhatIsThereWhenItIsUsed) {
  LeaveJournal(folder_ / "map.json", "kept");
  RecoveryDialog dialog(Testing::GetCatalog(), folder_ / "state", {});
  WidgetTest::ShowActive(dialog);
  auto* list = Find<QTreeWidget>(dialog, "recovery.list");
  ASSERT_EQ(list->topLevelItemCount(), 1);
  LeaveJournal({}, "new");
  QEvent first(QEvent::WindowActivate);
  QApplication::sendEvent(&dialog, &first);
  EXPECT_EQ(list->topLevelItemCount(), 2);
  // What was selected is so still.
  EXPECT_EQ(list->currentItem()->text(0), "map.json");
  for (const ScEng::FoundJournal& journal : FindJournals()) ScEng::DiscardJournal(journal);
  QEvent second(QEvent::WindowActivate);
  QApplication::sendEvent(&dialog, &second);
  EXPECT_EQ(list->topLevelItemCount(), 0);
  EXPECT_FALSE(Find<QPushButton>(dialog, "recovery.recover")->isEnabled());
  EXPECT_EQ(Find<QLabel>(dialog, "recovery.message")->text(), "Nothing is left to recover.");
}

TEST_F(RecoveryTest, DiscardsAfterAQuestion) {
  LeaveJournal(folder_ / "map.json", "kept");
  const auto journals = FindJournals();
  ASSERT_EQ(journals.size(), 1U);
  RecoveryDialog dialog(Testing::GetCatalog(), folder_ / "state", {});
  dialog.show();
  const auto ask = [&] {
    QTest::mouseClick(Find<QPushButton>(dialog, "recovery.discard"), Qt::LeftButton);
    return Find<QMessageBox>(dialog, "recovery.question");
  };
  QMessageBox* question = ask();
  ASSERT_NE(question, nullptr);
  question->button(QMessageBox::Cancel)->click();
  EXPECT_TRUE(fs::exists(journals[0].file));
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  question = ask();
  ASSERT_NE(question, nullptr);
  question->button(QMessageBox::Discard)->click();
  EXPECT_FALSE(fs::exists(journals[0].file));
  EXPECT_FALSE(dialog.isVisible());
}

TEST_F(RecoveryTest, LaterLeavesEverythingWhereItIs) {
  LeaveJournal(folder_ / "map.json", "kept");
  const auto journals = FindJournals();
  ASSERT_EQ(journals.size(), 1U);
  RecoveryDialog dialog(Testing::GetCatalog(), folder_ / "state", {});
  dialog.show();
  QTest::mouseClick(Find<QPushButton>(dialog, "recovery.later"), Qt::LeftButton);
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_TRUE(fs::exists(journals[0].file));
}

// ---- Dialogs about documents ----

class DocumentDialogsTest : public Testing::EditSessionTest {
 protected:
  QWidget window_;
  DocumentDialogs dialogs_{&window_};
};

TEST_F(DocumentDialogsTest, ClosesAtOnceWithoutChanges) { EXPECT_TRUE(dialogs_.MayClose(*session_)); }

TEST_F(DocumentDialogsTest, AsksAboutChanges) {
  EXPECT_FALSE(session_->SetNote("a", "new").IsError());
  AnswerNext<QMessageBox>([](QMessageBox& box) {
    EXPECT_TRUE(box.text().contains("graph.json"));
    QTest::keyClick(&box, Qt::Key_Escape);
  });
  EXPECT_FALSE(dialogs_.MayClose(*session_));
  AnswerNext<QMessageBox>([](QMessageBox& box) { box.button(QMessageBox::Discard)->click(); });
  EXPECT_TRUE(dialogs_.MayClose(*session_));
  EXPECT_TRUE(session_->IsModified());
  AnswerNext<QMessageBox>([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Return); });
  EXPECT_TRUE(dialogs_.MayClose(*session_));
  EXPECT_FALSE(session_->IsModified());
  EXPECT_TRUE(Testing::Contains(Testing::ReadText(folder_ / "graph.json"), "\"new\""));
}

TEST_F(DocumentDialogsTest, SavesUnderANewName) {
  const QString file = ToText(folder_ / "copy");
  AnswerNext<QFileDialog>([&](QFileDialog& dialog) {
    EXPECT_EQ(QFileInfo(dialog.selectedFiles().front()).fileName(), "graph.json");
    dialog.selectFile(file);
    dialog.setDirectory(ToText(folder_.Path()));
    dialog.findChild<QLineEdit*>()->setText("copy");
    QTimer::singleShot(0, &dialog, [&dialog] { QTest::keyClick(dialog.findChild<QLineEdit*>(), Qt::Key_Return); });
  });
  EXPECT_TRUE(dialogs_.SaveAs(*session_));
  EXPECT_EQ(session_->GetFile(), folder_ / "copy.json");
  EXPECT_TRUE(fs::exists(folder_ / "copy.json"));
}

TEST_F(DocumentDialogsTest, SaysWhyADocumentCannotBeSaved) {
  fs::remove_all(folder_ / "graph.json");
  fs::create_directory(folder_ / "graph.json");
  QString message;
  AnswerNext<QMessageBox>([&](QMessageBox& box) {
    message = box.text();
    QTest::keyClick(&box, Qt::Key_Return);
  });
  EXPECT_FALSE(dialogs_.Save(*session_));
  EXPECT_TRUE(message.contains("graph.json")) << message.toStdString();
}

TEST_F(DocumentDialogsTest, CanceledDialogsSaveNothing) {
  AnswerNext<QFileDialog>([](QFileDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
  EXPECT_FALSE(dialogs_.SaveAs(*session_));
  AnswerNext<QFileDialog>([](QFileDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
  EXPECT_EQ(dialogs_.AskForFile(ToText(folder_.Path())), "");
}

// ---- First steps ----

TEST(FirstSteps, GoesForthAndBackAndPointsAtTheWindow) {
  const TemporaryFolder folder;
  const QString settings = ToText(folder / "settings.ini");
  QWidget window;
  window.resize(1000, 700);
  auto* canvas = new QWidget(&window);
  canvas->setObjectName("canvas");
  canvas->setGeometry(0, 0, 600, 700);
  FirstSteps steps(&window, FirstSteps::MakeSteps(), settings);
  WidgetTest::ShowActive(window);
  EXPECT_TRUE(FirstSteps::AreWanted(settings));
  steps.Start();
  auto* marker = Find<StepMarker>(window, "first_steps.marker");
  EXPECT_TRUE(marker->isVisible());
  EXPECT_EQ(marker->geometry(), canvas->geometry());
  // The panel keeps clear of what it points at.
  EXPECT_FALSE(steps.geometry().intersects(canvas->geometry()));
  canvas->setGeometry(0, 0, 500, 400);
  EXPECT_EQ(marker->geometry(), canvas->geometry());

  auto* next = Find<QPushButton>(steps, "first_steps.next");
  auto* back = Find<QPushButton>(steps, "first_steps.back");
  EXPECT_FALSE(back->isEnabled());
  const QString first = Find<QLabel>(steps, "first_steps.title")->text();
  QTest::keyClick(next, Qt::Key_Space);
  EXPECT_EQ(steps.GetStep(), 1);
  // There is no viewer in this window.
  EXPECT_FALSE(marker->isVisible());
  EXPECT_NE(Find<QLabel>(steps, "first_steps.title")->text(), first);
  QTest::mouseClick(back, Qt::LeftButton);
  EXPECT_EQ(Find<QLabel>(steps, "first_steps.title")->text(), first);

  QSignalSpy finished(&steps, &FirstSteps::Finished);
  for (int step = 0; step < 5; ++step) QTest::mouseClick(next, Qt::LeftButton);
  EXPECT_EQ(finished.size(), 1);
  EXPECT_FALSE(steps.isVisible());
  EXPECT_FALSE(marker->isVisible());
  EXPECT_FALSE(FirstSteps::AreWanted(settings));
}

TEST(FirstSteps, ComeAgainWhenSomebodyWantsThat) {
  const TemporaryFolder folder;
  const QString settings = ToText(folder / "settings.ini");
  QWidget window;
  window.resize(1000, 700);
  FirstSteps steps(&window, FirstSteps::MakeSteps(), settings);
  WidgetTest::ShowActive(window);
  steps.Start();
  auto* never = Find<QCheckBox>(steps, "first_steps.never");
  never->setFocus();
  QTest::keyClick(never, Qt::Key_Space);
  QTest::keyClick(&steps, Qt::Key_Escape);
  EXPECT_FALSE(steps.isVisible());
  EXPECT_TRUE(FirstSteps::AreWanted(settings));
}

// ---- Shortcuts ----

TEST(ShortcutsDialog, FindsActionsByNameAndKeys) {
  QAction save("&Save && Close…");
  save.setShortcut(QKeySequence("Ctrl+S"));
  QAction redo("Re&do this and that");
  redo.setProperty(kActionName, "Redo");
  redo.setShortcuts({QKeySequence("Ctrl+Y"), QKeySequence("Ctrl+Shift+Z")});
  QAction cut("Cut everything out of this document");
  cut.setShortcuts({QKeySequence("Ctrl+X"), QKeySequence("F20")});
  const QAction plain("No keys");
  ShortcutsDialog dialog({&save, &redo, &cut, const_cast<QAction*>(&plain)});
  WidgetTest::ShowActive(dialog);
  auto* list = Find<QTreeWidget>(dialog, "shortcuts.list");
  ASSERT_EQ(list->topLevelItemCount(), 3);
  EXPECT_EQ(list->topLevelItem(0)->text(0), "Save & Close");
  EXPECT_EQ(list->topLevelItem(1)->text(0), "Redo");
  EXPECT_EQ(list->topLevelItem(1)->text(1), "Ctrl+Y or Ctrl+Shift+Z");
  EXPECT_EQ(list->topLevelItem(2)->text(1), "Ctrl+X");
  // Names are there in full.
  EXPECT_GE(list->columnWidth(0), list->fontMetrics().horizontalAdvance(cut.text()));
  auto* search = Find<QLineEdit>(dialog, "shortcuts.search");
  EXPECT_TRUE(search->hasFocus());
  QTest::keyClicks(search, "shift+z");
  EXPECT_TRUE(list->topLevelItem(0)->isHidden());
  EXPECT_FALSE(list->topLevelItem(1)->isHidden());
  search->clear();
  QTest::keyClicks(search, "close ctrl+s");
  EXPECT_FALSE(list->topLevelItem(0)->isHidden());
  QTest::keyClicks(search, "xyz");
  EXPECT_TRUE(Find<QLabel>(dialog, "shortcuts.empty")->isVisible());
  QTest::keyClick(search, Qt::Key_Escape);
  EXPECT_FALSE(dialog.isVisible());
}

}  // namespace
