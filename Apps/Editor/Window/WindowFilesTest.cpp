// SPDX-License-Identifier: Apache-2.0
// Files by mouse and keyboard: templates, opening, saving, what changes on the disk, and what is written.
#include <QDropEvent>
#include <QLabel>
#include <QListWidget>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QTreeWidget>
#include <QUrl>

#include "Apps/Editor/Docks/OutputsDock.h"
#include "Apps/Editor/Files/FilesChangedBar.h"
#include "Apps/Editor/Files/TemplatesDialog.h"
#include "Apps/Editor/Window/EditorWindowTesting.h"

namespace {

namespace fs = std::filesystem;
using Testing::ReadText;
using Testing::WriteText;

constexpr int kPatience = 60000;

class WindowFiles : public EditorWindowTesting {
 protected:
  /// A gray picture by Qt's own writer.
  static void WriteGray(const fs::path& file, unsigned gray) {
    QImage image(8, 8, QImage::Format_Grayscale8);
    image.fill(gray);
    // Written beside and renamed, so that nobody reads half of it.
    const fs::path part = file.string() + ".part";
    ASSERT_TRUE(image.save(QString::fromStdString(part.string()), "PNG"));
    fs::rename(part, file);
  }
  void WriteReader() {
    WriteGray(folder_ / "a.png", 51U);
    WriteText(folder_ / "reader.json",
              Testing::MakeText("{'id': 'read', 'type': 'ImageReaderNode', 'attributes': {'path': 'a.png'}, "
                                "'position': [0, 0]}"));
  }
  void Drop(QWidget& widget, const QPoint& at, const fs::path& file) {
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString(file.string()))});
    QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&widget, &enter);
    ASSERT_TRUE(enter.isAccepted());
    QDropEvent drop(at, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&widget, &drop);
    QApplication::processEvents();
    Wait();
  }
  /// A change of the document by hand: the note of the selected node.
  void ChangeByHand() {
    ClickNode("raised");
    Press(Qt::Key_M);
    ASSERT_TRUE(window_->isWindowModified());
  }
  [[nodiscard]] std::string PathOf(const char* id) {
    return Session().GetDocument().FindNode(id)->GetAttribute("path")->GetValue().GetText();
  }
};

// ---- New, open, save ----

TEST_F(WindowFiles, ATemplateIsChosenByKeys) {
  OpenForWork(folder_ / "graph.json");
  AnswerAfter<TemplatesDialog>([&] { Press(Qt::Key_N, Qt::ControlModifier); },
                               [&](TemplatesDialog& dialog) {
                                 auto* list = dialog.findChild<QListWidget*>();
                                 QTest::keyClick(list, Qt::Key_Right);
                                 QTest::keyClick(&dialog, Qt::Key_Return);
                               });
  Wait();
  EXPECT_FALSE(Session().GetDocument().HasId("raised"));
  EXPECT_FALSE(Session().GetDocument().GetIds().empty());
  EXPECT_TRUE(Session().GetFile().empty());
  EXPECT_NE(Viewer().GetViewer().GetContent().image, nullptr);
  EXPECT_TRUE(window_->windowTitle().startsWith(QStringLiteral("Untitled")));
}

TEST_F(WindowFiles, OpensByItsNameAndFromTheListOfRecentOnes) {
  WriteReader();
  OpenForWork(folder_ / "graph.json");
  TypeFileAfter([&] { Press(Qt::Key_O, Qt::ControlModifier); }, folder_ / "reader.json");
  Wait();
  EXPECT_TRUE(Session().GetDocument().HasId("read"));
  EXPECT_NEAR(PictureAt(4.1, 4.1).red(), 51, 1);
  // The other one is second in the list.
  QAction* file = WidgetTest::FindEntry(*window_->menuBar(), "File");
  QTest::mouseClick(window_->menuBar(), Qt::LeftButton, {}, window_->menuBar()->actionGeometry(file).center());
  QAction* recent = WidgetTest::FindEntry(*file->menu(), "Open Recent");
  ASSERT_NE(recent, nullptr);
  QTest::mouseClick(file->menu(), Qt::LeftButton, {}, file->menu()->actionGeometry(recent).center());
  ASSERT_TRUE(QTest::qWaitFor([&] { return recent->menu()->isVisible(); }, kPatience));
  ASSERT_GE(recent->menu()->actions().size(), 2);
  EXPECT_TRUE(recent->menu()->actions()[0]->text().contains(QStringLiteral("reader.json")));
  QTest::keyClick(recent->menu(), Qt::Key_2);
  QApplication::processEvents();
  Wait();
  EXPECT_TRUE(Session().GetDocument().HasId("raised"));
}

TEST_F(WindowFiles, SavesAndGoesBackToWhatWasSaved) {
  OpenForWork(folder_ / "graph.json");
  ChangeByHand();
  Press(Qt::Key_S, Qt::ControlModifier);
  EXPECT_FALSE(window_->isWindowModified());
  EXPECT_NE(ReadText(folder_ / "graph.json").find("\"enabled\": false"), std::string::npos);
  const std::string saved = Testing::Save(Session().GetDocument());
  ClickNode("high");
  Press(Qt::Key_Delete);
  ASSERT_FALSE(Session().GetDocument().HasId("high"));
  AnswerAfter<QMessageBox>([&] { Choose("File", {"Revert"}); },
                           [](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); });
  EXPECT_FALSE(Session().GetDocument().HasId("high"));
  AnswerAfter<QMessageBox>([&] { Choose("File", {"Revert"}); },
                           [](QMessageBox& box) { QTest::mouseClick(box.button(QMessageBox::Yes), Qt::LeftButton); });
  Wait();
  EXPECT_EQ(Testing::Save(Session().GetDocument()), saved);
  EXPECT_FALSE(window_->isWindowModified());
}

TEST_F(WindowFiles, SavedElsewhereItReadsTheSameFiles) {
  WriteReader();
  fs::create_directory(folder_ / "below");
  OpenForWork(folder_ / "reader.json");
  TypeFileAfter([&] { Press(Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier); }, folder_ / "below/moved");
  EXPECT_EQ(Session().GetFile(), folder_ / "below/moved.json");
  EXPECT_EQ(PathOf("read"), "../a.png");
  EXPECT_EQ(window_->windowTitle(), QStringLiteral("moved.json[*] – Value"));
  Wait();
  EXPECT_NEAR(PictureAt(4.1, 4.1).red(), 51, 1);
  EXPECT_NE(ReadText(folder_ / "reader.json").find("\"a.png\""), std::string::npos);
  EXPECT_NE(ReadText(folder_ / "below/moved.json").find("../a.png"), std::string::npos);
}

TEST_F(WindowFiles, LeavingAsksAboutChangesOnce) {
  WriteReader();
  OpenForWork(folder_ / "graph.json");
  ChangeByHand();
  AnswerAfter<QMessageBox>([&] { Drop(*window_, QPoint(5, 5), folder_ / "reader.json"); },
                           [](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); });
  EXPECT_TRUE(Session().GetDocument().HasId("raised"));
  AnswerAfter<QMessageBox>(
      [&] { Drop(*window_, QPoint(5, 5), folder_ / "reader.json"); },
      [](QMessageBox& box) { QTest::mouseClick(box.button(QMessageBox::Discard), Qt::LeftButton); });
  Wait();
  EXPECT_TRUE(Session().GetDocument().HasId("read"));
  EXPECT_EQ(ReadText(folder_ / "graph.json").find("\"enabled\": false"), std::string::npos);
}

TEST_F(WindowFiles, ADroppedImageIsReadAndADroppedDocumentOpened) {
  WriteReader();
  OpenForWork(folder_ / "graph.json");
  GraphView& view = Canvas().GetView();
  Drop(*view.viewport(), view.mapFromScene(QPointF(100, 330)), folder_ / "a.png");
  ASSERT_EQ(Canvas().GetSelection(), QStringList{"image_reader"});
  EXPECT_EQ(PathOf("image_reader"), "a.png");
  // It is selected, so that it is shown.
  EXPECT_EQ(Viewer().GetShown(), QStringLiteral("image_reader.image"));
  EXPECT_NEAR(PictureAt(4.1, 4.1).red(), 51, 1);
  Press(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_FALSE(window_->isWindowModified());
  Drop(*view.viewport(), QPoint(40, 40), folder_ / "reader.json");
  ASSERT_TRUE(QTest::qWaitFor([&] { return Session().GetDocument().HasId("read"); }, kPatience));
}

// ---- What changes on the disk ----

TEST_F(WindowFiles, AChangedFileIsAskedAboutThenReadByItself) {
  WriteReader();
  OpenForWork(folder_ / "reader.json");
  ASSERT_NEAR(PictureAt(4.1, 4.1).red(), 51, 1);
  auto* bar = Get<FilesChangedBar>("files_changed");
  ASSERT_FALSE(bar->isVisible());
  WriteGray(folder_ / "a.png", 102U);
  ASSERT_TRUE(QTest::qWaitFor([&] { return bar->isVisible(); }, kPatience));
  EXPECT_NEAR(PictureAt(4.1, 4.1).red(), 51, 1);
  QTest::mouseClick(Get<QPushButton>("files_changed.read"), Qt::LeftButton);
  EXPECT_FALSE(bar->isVisible());
  Wait();
  EXPECT_NEAR(PictureAt(4.1, 4.1).red(), 102, 1);
  Choose("File", {"Changed Image Files", "Read Again at Once"});
  WriteGray(folder_ / "a.png", 153U);
  EXPECT_TRUE(QTest::qWaitFor([&] { return std::abs(PictureAt(4.1, 4.1).red() - 153) <= 1; }, kPatience));
  EXPECT_FALSE(bar->isVisible());
  EXPECT_FALSE(window_->isWindowModified());
  // It is asked again as soon as somebody wants that.
  Choose("File", {"Changed Image Files", "Ask"});
  WriteGray(folder_ / "a.png", 204U);
  ASSERT_TRUE(QTest::qWaitFor([&] { return bar->isVisible(); }, kPatience));
  QTest::keyClick(Get<QPushButton>("files_changed.dismiss"), Qt::Key_Space);
  EXPECT_FALSE(bar->isVisible());
  EXPECT_NEAR(PictureAt(4.1, 4.1).red(), 153, 1);
}

TEST_F(WindowFiles, TheMenuSaysHowChangedFilesAreTaken) {
  WriteReader();
  OpenForWork(folder_ / "reader.json");
  EXPECT_TRUE(Action("file.changed.ask")->isChecked());
  WriteGray(folder_ / "a.png", 102U);
  auto* bar = Get<FilesChangedBar>("files_changed");
  ASSERT_TRUE(QTest::qWaitFor([&] { return bar->isVisible(); }, kPatience));
  QTest::mouseClick(Get<QPushButton>("files_changed.always"), Qt::LeftButton);
  Choose("File", {"Changed Image Files", "Leave Alone"});
  EXPECT_TRUE(Action("file.changed.never")->isChecked());
  EXPECT_FALSE(Action("file.changed.always")->isChecked());
  // The next window takes it over.
  window_.reset();
  OpenForWork(folder_ / "reader.json");
  EXPECT_EQ(window_->GetWorkspace()->GetWatcher().GetMode(), FileWatcher::Mode::kNever);
  Choose("File", {"Changed Image Files", "Read Again at Once"});
  EXPECT_EQ(window_->GetWorkspace()->GetWatcher().GetMode(), FileWatcher::Mode::kAutomatic);
}

TEST_F(WindowFiles, AMissingFileIsToldAndLocatedByHand) {
  WriteReader();
  fs::create_directory(folder_ / "elsewhere");
  fs::rename(folder_ / "a.png", folder_ / "elsewhere/a.png");
  OpenForWork(folder_ / "reader.json");
  // The dock comes up by itself.
  auto* list = Get<QTreeWidget>("missing.list");
  ASSERT_TRUE(list->isVisible());
  ASSERT_EQ(list->topLevelItemCount(), 1);
  EXPECT_EQ(list->topLevelItem(0)->text(0), "read");
  EXPECT_TRUE(Canvas().GetScene().FindNode("read")->GetCondition().is_in_error);
  TypeFileAfter([&] { QTest::mouseClick(Get<QPushButton>("missing.locate"), Qt::LeftButton); },
                folder_ / "elsewhere/a.png");
  Wait();
  EXPECT_EQ(PathOf("read"), "elsewhere/a.png");
  EXPECT_EQ(list->topLevelItemCount(), 0);
  EXPECT_NEAR(PictureAt(4.1, 4.1).red(), 51, 1);
  EXPECT_FALSE(Canvas().GetScene().FindNode("read")->GetCondition().is_in_error);
  Press(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(PathOf("read"), "a.png");
}

TEST_F(WindowFiles, AnUnknownTypeIsKeptToldAndReplacedByHand) {
  WriteText(folder_ / "odd.json", Testing::Quoted(R"({
  'format': 'value-graph',
  'version': 2,
  'nodes': [
    {'id': 'height', 'type': 'ImageTerrainNode', 'attributes': {'frame': [0, 0, 16, 16]}, 'position': [0, 0]},
    {'id': 'odd', 'type': 'NobodyKnowsNode', 'attributes': {'deep': [1, {'a': null}]}, 'position': [260, 0]},
    {'id': 'high', 'type': 'ImageValueClampNode', 'position': [520, 0]}
  ],
  'connections': [
    {'from': 'height.image', 'to': 'odd.image'},
    {'from': 'odd.image', 'to': 'high.image'}
  ]
}
)"));
  OpenForWork(folder_ / "odd.json");
  auto* list = Get<QTreeWidget>("missing.list");
  ASSERT_TRUE(list->isVisible());
  ASSERT_EQ(list->topLevelItemCount(), 1);
  EXPECT_EQ(list->topLevelItem(0)->text(0), "odd");
  // What it says is kept when something else is changed and saved.
  ClickNode("high");
  Press(Qt::Key_Down, Qt::ControlModifier);
  Press(Qt::Key_S, Qt::ControlModifier);
  EXPECT_NE(ReadText(folder_ / "odd.json").find("NobodyKnowsNode"), std::string::npos);
  EXPECT_NE(ReadText(folder_ / "odd.json").find("\"deep\""), std::string::npos);
  // It is taken away, and the wire led past it, by hand.
  ClickNode("odd");
  Press(Qt::Key_Delete);
  EXPECT_FALSE(Session().GetDocument().HasId("odd"));
  GraphView& view = Canvas().GetView();
  const auto at = [&](const char* id, bool is_input) {
    return view.mapFromScene(Canvas().GetScene().FindNode(id)->GetPlugPlace("image", 0, is_input));
  };
  QTest::mousePress(view.viewport(), Qt::LeftButton, {}, at("height", false));
  QTest::mouseMove(view.viewport(), (at("height", false) + at("high", true)) / 2);
  QTest::mouseMove(view.viewport(), at("high", true));
  QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, at("high", true));
  const auto& connections = Session().GetDocument().GetConnections();
  ASSERT_EQ(connections.size(), 1U);
  EXPECT_EQ(connections[0].from, "height.image");
  EXPECT_EQ(connections[0].to, "high.image");
  EXPECT_TRUE(QTest::qWaitFor([&] { return list->topLevelItemCount() == 0; }, kPatience));
  ClickNode("high");
  EXPECT_NE(Viewer().GetViewer().GetContent().image, nullptr);
}

// ---- What is written ----

TEST_F(WindowFiles, OutputsAreAddedAndWrittenByKeys) {
  OpenForWork(folder_ / "graph.json");
  ClickNode("raised");
  Choose("View", {"Outputs"});
  auto* add = Get<QToolButton>("outputs.add");
  ASSERT_TRUE(add->isVisible());
  add->setFocus();
  QTest::keyClick(add, Qt::Key_Space);
  ASSERT_EQ(Session().GetDocument().GetOutputs().size(), 1U);
  EXPECT_EQ(Session().GetDocument().GetOutputs()[0].from, "raised.image");
  auto* path = Get<QLineEdit>("outputs.path");
  WidgetTest::Type(path, "out.png");
  QTest::keyClick(path, Qt::Key_Return);
  QSignalSpy written(&window_->GetWorkspace()->GetOutputs(), &OutputsDock::Written);
  Press(Qt::Key_E, Qt::ControlModifier);
  // A short run may be done at once.
  ASSERT_TRUE(QTest::qWaitFor([&] { return !written.empty(); }, kPatience));
  EXPECT_EQ(QImage(QString::fromStdString((folder_ / "out.png").string())).size(), QSize(64, 48));
  auto* results = Get<QListWidget>("outputs.results");
  // Notes, as on values that the format cuts, come before the files.
  ASSERT_GE(results->count(), 1);
  EXPECT_TRUE(results->item(results->count() - 1)->text().contains(QStringLiteral("out.png")));
  EXPECT_TRUE(Get<QLabel>("outputs.summary")->text().startsWith(QStringLiteral("1 file written")));
}

TEST_F(WindowFiles, WritingIsCanceledByAClick) {
  OpenForWork(folder_ / "graph.json");
  // Long enough that nobody is faster.
  ASSERT_FALSE(Session().SetAttribute("height.frame", "0,0,4096,4096").IsError());
  ScEng::DocumentOutput output;
  output.from = "high.image";
  output.path = "large.exr";
  ASSERT_FALSE(Session().AddOutput(output).IsError());
  Choose("View", {"Outputs"});
  QSignalSpy written(&window_->GetWorkspace()->GetOutputs(), &OutputsDock::Written);
  QTest::mouseClick(Get<QPushButton>("outputs.write"), Qt::LeftButton);
  auto* cancel = Get<QPushButton>("outputs.cancel");
  ASSERT_TRUE(cancel->isVisible());
  QTest::mouseClick(cancel, Qt::LeftButton);
  ASSERT_TRUE(QTest::qWaitFor([&] { return !written.empty(); }, kPatience));
  EXPECT_TRUE(Get<QLabel>("outputs.summary")->text().contains(QStringLiteral("canceled")));
  EXPECT_FALSE(fs::exists(folder_ / "large.exr"));
  EXPECT_FALSE(cancel->isVisible());
  window_->GetWorkspace()->GetEvaluator().Cancel();
}

}  // namespace
