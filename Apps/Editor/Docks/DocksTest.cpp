// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <QApplication>
#include <QHeaderView>
#include <QListView>
#include <QSignalSpy>
#include <QTextBrowser>
#include <QTreeView>
#include <algorithm>

#include "Apps/Editor/Docks/HelpDock.h"
#include "Apps/Editor/Docks/HistoryDock.h"
#include "Apps/Editor/Docks/ProblemsDock.h"
#include "Apps/Editor/Docks/ProfilerDock.h"
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

// ---- History ----

class HistoryDockTest : public Testing::EditSessionTest {};

TEST_F(HistoryDockTest, GoesWhereItIsClicked) {
  HistoryDock dock(*session_);
  Show(dock);
  auto* list = Find<QListView>(dock, "history.list");
  for (const char* note : {"one", "two", "three"}) EXPECT_FALSE(session_->SetNote("a", note).IsError());
  QCoreApplication::processEvents();
  ASSERT_EQ(list->model()->rowCount(), 4);
  EXPECT_EQ(TextAt(*list, 0), "Opened");
  EXPECT_EQ(TextAt(*list, 3), "Edit note of a");
  EXPECT_EQ(list->currentIndex().row(), 3);
  Click(*list, 1);
  EXPECT_EQ(session_->GetPlace(), 1U);
  EXPECT_EQ(session_->GetDocument().GetNote("a"), "one");
  Click(*list, 0);
  EXPECT_EQ(Save(session_->GetDocument()), before_);
  list->setCurrentIndex(list->model()->index(3, 0));
  QTest::keyClick(list, Qt::Key_Return);
  EXPECT_EQ(session_->GetDocument().GetNote("a"), "three");
  // A command in the past takes the place of what was undone.
  EXPECT_FALSE(session_->GoTo(1).IsError());
  EXPECT_FALSE(session_->RenameNode("a", "box").IsError());
  QCoreApplication::processEvents();
  ASSERT_EQ(list->model()->rowCount(), 3);
  EXPECT_EQ(TextAt(*list, 2), "Rename a to box");
  EXPECT_TRUE(list->model()->index(2, 0).data(HistoryModel::kIsCurrent).toBool());
  EXPECT_FALSE(list->model()->index(1, 0).data(HistoryModel::kIsCurrent).toBool());
}

// ---- Problems ----

class ProblemsDockTest : public Testing::EditSessionTest {
 protected:
  static ScEng::NodeFacts MakeFacts(const std::string& id, bool is_in_error, const std::vector<std::string>& lines) {
    ScEng::NodeFacts facts;
    facts.id = id;
    facts.is_in_error = is_in_error;
    facts.messages = lines;
    return facts;
  }
  /// The rows with this text.
  static int Count(const ProblemsDock& dock, const QString& text) {
    const auto* list = Find<QTreeView>(dock, "problems.list");
    int count = 0;
    for (int row = 0; row < list->model()->rowCount(); ++row) {
      count += TextAt(*list, row, ProblemsModel::kText).contains(text) ? 1 : 0;
    }
    return count;
  }
};

TEST_F(ProblemsDockTest, ListsErrorsFirstAndLeadsToTheNode) {
  ProblemsDock dock(*session_);
  Show(dock);
  dock.SetFacts({MakeFacts("c", false, {"three samples are NaN"}), MakeFacts("d", true, {"the range is empty"})});
  auto* list = Find<QTreeView>(dock, "problems.list");
  EXPECT_EQ(TextAt(*list, 0, ProblemsModel::kNode), "d");
  EXPECT_EQ(TextAt(*list, 0, ProblemsModel::kText), "the range is empty");
  // The document's own: the placeholder is an error.
  EXPECT_EQ(TextAt(*list, 1, ProblemsModel::kNode), "x");
  EXPECT_EQ(Count(dock, "three samples are NaN"), 1);
  EXPECT_EQ(dock.CountErrors(), 2);
  EXPECT_EQ(dock.windowTitle(), QString("Problems (%1)").arg(list->model()->rowCount()));
  QSignalSpy activated(&dock, &ProblemsDock::NodeActivated);
  Click(*list, 1, ProblemsModel::kText);
  ASSERT_FALSE(activated.empty());
  EXPECT_EQ(activated[0][0].toString(), "x");
}

TEST_F(ProblemsDockTest, IsSortedByItsHeadings) {
  ProblemsDock dock(*session_);
  Show(dock);
  dock.SetFacts({MakeFacts("c", false, {"zebras are striped"}), MakeFacts("d", true, {"a range is empty"})});
  auto* list = Find<QTreeView>(dock, "problems.list");
  const auto read = [&](int column) {
    QStringList texts;
    for (int row = 0; row < list->model()->rowCount(); ++row) texts << TextAt(*list, row, column);
    return texts;
  };
  const QStringList first = read(ProblemsModel::kNode);
  ASSERT_EQ(first.mid(0, 2), QStringList({"d", "x"}));
  const auto click = [&](int column) {
    const QHeaderView* header = list->header();
    const QPoint place(header->sectionViewportPosition(column) + 20, header->height() / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, place);
  };
  QStringList sorted = first;
  std::sort(sorted.begin(), sorted.end());
  click(ProblemsModel::kNode);
  EXPECT_EQ(read(ProblemsModel::kNode), sorted);
  QSignalSpy activated(&dock, &ProblemsDock::NodeActivated);
  Click(*list, 0, ProblemsModel::kText);
  ASSERT_FALSE(activated.empty());
  EXPECT_EQ(activated[0][0].toString(), sorted[0]);
  click(ProblemsModel::kText);
  EXPECT_EQ(read(ProblemsModel::kText).first(), "a range is empty");
  EXPECT_EQ(read(ProblemsModel::kText).last(), "zebras are striped");
  click(ProblemsModel::kText);
  EXPECT_EQ(read(ProblemsModel::kText).first(), "zebras are striped");
  // Once more, and the errors come first again.
  click(ProblemsModel::kText);
  EXPECT_EQ(read(ProblemsModel::kNode), first);
}

TEST_F(ProblemsDockTest, KeepsWhatWasSaidUntilTheNodeSaysOtherwise) {
  ProblemsDock dock(*session_);
  Show(dock);
  dock.SetFacts({MakeFacts("c", false, {"a note"}), MakeFacts("d", true, {"an error"})});
  dock.SetFacts({MakeFacts("d", false, {})});
  EXPECT_EQ(Count(dock, "a note"), 1);
  EXPECT_EQ(Count(dock, "an error"), 0);
  EXPECT_FALSE(session_->RenameNode("c", "sum").IsError());
  dock.SetFacts({});
  const auto* list = Find<QTreeView>(dock, "problems.list");
  EXPECT_TRUE(list->model()->match(list->model()->index(0, 0), Qt::DisplayRole, "sum").size() == 1);
  EXPECT_FALSE(session_->RemoveNodes({"sum"}).IsError());
  dock.SetFacts({});
  EXPECT_EQ(Count(dock, "a note"), 0);
}

TEST_F(ProblemsDockTest, FollowsTheDocument) {
  ProblemsDock dock(*session_);
  Show(dock);
  EXPECT_EQ(Count(dock, "ForeignNode"), 1);
  EXPECT_FALSE(session_->RemoveNodes({"x"}).IsError());
  EXPECT_TRUE(QTest::qWaitFor([&] { return Count(dock, "ForeignNode") == 0; }, 60000));
  EXPECT_FALSE(session_->Undo().IsError());
  EXPECT_TRUE(QTest::qWaitFor([&] { return Count(dock, "ForeignNode") == 1; }, 60000));
}

TEST_F(ProblemsDockTest, SelectionStaysWhereOtherRowsChange) {
  ProblemsModel model;
  const Problem one{true, "a", "one"};
  const Problem two{true, "b", "two"};
  const Problem note{false, "c", "three"};
  model.Update({note, one, two});
  EXPECT_EQ(model.GetProblems(), (std::vector<Problem>{one, two, note}));
  const QPersistentModelIndex kept = model.index(2, 0);
  model.Update({one, note});
  ASSERT_TRUE(kept.isValid());
  EXPECT_EQ(kept.row(), 1);
  model.Update({});
  EXPECT_FALSE(kept.isValid());
}

TEST(FindNodeInText, TakesTheFirstNameThatIsANode) {
  const auto has = [](const std::string& name) { return name == "blur" || name == "a.b"; };
  EXPECT_EQ(FindNodeInText("node \"blur\": it has no path", has), "blur");
  EXPECT_EQ(FindNodeInText("\"blur.radius\" has no effect", has), "blur");
  EXPECT_EQ(FindNodeInText("\"a.b.image\" of \"blur\"", has), "a.b");
  EXPECT_EQ(FindNodeInText("\"other\" and \"blur\"", has), "blur");
  EXPECT_EQ(FindNodeInText("nothing is \"written", has), "");
}

// ---- Profiler ----

class ProfilerDockTest : public Testing::EditSessionTest {
 protected:
  static ScEng::NodeFacts MakeFacts(const std::string& id, double seconds, std::size_t bytes) {
    ScEng::NodeFacts facts;
    facts.id = id;
    facts.seconds = seconds;
    facts.bytes_held = bytes;
    return facts;
  }
  static QStringList Column(const QTreeView& view, int column) {
    QStringList texts;
    for (int row = 0; row < view.model()->rowCount(); ++row) texts += TextAt(view, row, column);
    return texts;
  }
};

TEST_F(ProfilerDockTest, SortsNumbersAsNumbersAboveTheTotal) {
  ProfilerDock dock(*session_);
  Show(dock);
  auto* view = Find<QTreeView>(dock, "profiler.list");
  EXPECT_TRUE(Find<QLabel>(dock, "profiler.empty")->isVisible());
  dock.SetFacts({MakeFacts("a", 0.002, 1024), MakeFacts("b", 0.1, 300), MakeFacts("c", 0.05, 2048)});
  dock.SetFacts({MakeFacts("b", 0.1, 300)});
  EXPECT_EQ(Column(*view, ProfilerModel::kNode), QStringList({"b", "c", "a", "Total"}));
  EXPECT_EQ(Column(*view, ProfilerModel::kTime), QStringList({"100 ms", "50 ms", "2.00 ms", "152 ms"}));
  EXPECT_EQ(Column(*view, ProfilerModel::kEvaluations), QStringList({"2", "1", "1", "4"}));
  // A click on the heading sorts by it, a second one the other way round.
  const QHeaderView* header = view->header();
  const auto click = [&](int column) {
    const QPoint place(header->sectionViewportPosition(column) + header->sectionSize(column) / 2, header->height() / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, place);
  };
  click(ProfilerModel::kMemory);
  const QStringList once = Column(*view, ProfilerModel::kNode);
  click(ProfilerModel::kMemory);
  const QStringList twice = Column(*view, ProfilerModel::kNode);
  const QStringList rising{"b", "a", "c", "Total"};
  const QStringList falling{"c", "a", "b", "Total"};
  EXPECT_TRUE((once == rising && twice == falling) || (once == falling && twice == rising));
}

TEST_F(ProfilerDockTest, FollowsTheNodes) {
  ProfilerDock dock(*session_);
  Show(dock);
  auto* view = Find<QTreeView>(dock, "profiler.list");
  dock.SetFacts({MakeFacts("a", 0.002, 1024), MakeFacts("b", 0.1, 300)});
  EXPECT_FALSE(session_->RenameNode("b", "raised").IsError());
  EXPECT_FALSE(session_->RemoveNodes({"a"}).IsError());
  QCoreApplication::processEvents();
  EXPECT_EQ(Column(*view, ProfilerModel::kNode), QStringList({"raised", "Total"}));
  QSignalSpy activated(&dock, &ProfilerDock::NodeActivated);
  Click(*view, 0);
  ASSERT_EQ(activated.size(), 1);
  EXPECT_EQ(activated[0][0].toString(), "raised");
  Click(*view, 1);
  EXPECT_EQ(activated.size(), 1);
  EXPECT_FALSE(session_->RemoveNodes({"raised"}).IsError());
  QCoreApplication::processEvents();
  EXPECT_EQ(view->model()->rowCount(), 0);
}

// ---- Help ----

TEST(HelpDock, ShowsWhatTheTypeSaysOfItself) {
  HelpDock dock(Testing::GetCatalog());
  Show(dock);
  auto* page = Find<QTextBrowser>(dock, "help.page");
  EXPECT_TRUE(page->toPlainText().contains("Select a node"));
  dock.ShowNode("ImageValueClampNode");
  const QString text = page->toPlainText();
  EXPECT_TRUE(text.contains("Limits values to a range, and can bend what lies inside it with a curve."));
  for (const char* part : {"Value Clamp", "ImageValueClampNode", "Profile", "both", "from -10000 to 10000", "Inputs"}) {
    EXPECT_TRUE(text.contains(part)) << part << text.toStdString();
  }
  dock.ShowNode("<b>NoNode");
  EXPECT_TRUE(page->toPlainText().contains("<b>NoNode"));
}

TEST(HelpDock, HasAPageForEveryType) {
  HelpDock dock(Testing::GetCatalog());
  for (const NodeInterface* descriptor : Testing::GetCatalog()->GetDescriptors()) {
    dock.ShowNode(QString::fromStdString(descriptor->GetNodeFactory()->GetTypeName()));
    EXPECT_TRUE(
        Find<QTextBrowser>(dock, "help.page")->toPlainText().contains(QString::fromStdString(descriptor->GetName())));
  }
}

}  // namespace
