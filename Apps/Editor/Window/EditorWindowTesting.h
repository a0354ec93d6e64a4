// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDockWidget>
#include <QFileDialog>
#include <QImage>
#include <QLineEdit>
#include <QMessageBox>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <filesystem>
#include <memory>
#include <string>

#include "Apps/Editor/Canvas/GraphCanvas.h"
#include "Apps/Editor/Canvas/GraphView.h"
#include "Apps/Editor/Files/FirstSteps.h"
#include "Apps/Editor/Window/EditorWindow.h"
#include "Apps/Editor/Window/ViewerDock.h"
#include "Host/Viewing/ViewImage.h"
#include "Host/Widgets/ImageView.h"
#include "Host/Widgets/ViewerWidget.h"
#include "Tests/Support/EditTesting.h"
#include "Tests/Widgets/MenuTesting.h"
#include "Tests/Widgets/WidgetTesting.h"

/// The whole window on a small document: a terrain, which is raised by 0.25 and then clamped.
class EditorWindowTesting : public testing::Test {
 protected:
  void SetUp() override {
    // Settings of tests stay in their folder.
    qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString((folder_ / "config").string()));
    Testing::WriteText(folder_ / "graph.json", Testing::Quoted(R"({
  'format': 'value-graph',
  'version': 2,
  'nodes': [
    {'id': 'height', 'type': 'ImageTerrainNode', 'attributes': {'frame': [0, 0, 64, 48]}, 'position': [0, 0]},
    {'id': 'raised', 'type': 'ImageValueAddNode', 'attributes': {'constant': 0.25}, 'position': [260, 0]},
    {'id': 'high', 'type': 'ImageValueClampNode', 'position': [520, 0]}
  ],
  'connections': [
    {'from': 'height.image', 'to': 'raised.image', 'index': 0},
    {'from': 'raised.image', 'to': 'high.image'}
  ]
}
)"));
  }
  void TearDown() override { window_.reset(); }

  void Open(const std::filesystem::path& document) {
    EditorRequest request;
    request.catalog = Testing::GetCatalog();
    request.document = document;
    request.state_folder = folder_ / "state";
    window_ = std::make_unique<EditorWindow>(request);
    window_->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window_.get(), 60000));
    window_->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get(), 60000));
    EditorAnswer answer;
    window_->Start(answer);
    ASSERT_TRUE(answer.problems.empty()) << answer.problems[0];
    Wait();
  }
  /// The same, with the first steps skipped by their key.
  void OpenForWork(const std::filesystem::path& document) {
    Open(document);
    if (auto* steps = window_->findChild<FirstSteps*>()) QTest::keyClick(steps, Qt::Key_Escape);
  }
  void Wait() { window_->WaitUntilDone(); }

  ScEng::EditSession& Session() { return window_->GetWorkspace()->GetSession(); }
  GraphCanvas& Canvas() { return window_->GetWorkspace()->GetCanvas(); }
  ViewerDock& Viewer() { return window_->GetWorkspace()->GetViewer(); }
  QAction* Action(const char* name) { return window_->findChild<QAction*>(QLatin1String(name)); }
  template <class Widget>
  Widget* Get(const char* name) {
    auto* found = window_->findChild<Widget*>(QLatin1String(name));
    EXPECT_NE(found, nullptr) << name;
    return found;
  }
  /// The lowest value of what is shown.
  float Lowest() {
    const auto& image = Viewer().GetViewer().GetContent().image;
    return image == nullptr ? -1.0F : image->GetFigures().finite.low;
  }

  // ---- As a person does it ----

  /// Opens a menu by a click and takes an entry of it.
  void Choose(const QString& menu, const QStringList& path) {
    WidgetTest::ChooseFromBar(*window_->menuBar(), menu, path);
    TakeKeyboard();
  }
  /// Gives the keyboard back to the window, which nobody does where there is no window manager.
  void TakeKeyboard() {
    window_->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get(), 60000));
    QApplication::processEvents();
  }
  /// Presses keys that work in the whole window, where the keyboard is on the canvas.
  void Press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(&Canvas().GetView(), key, modifiers);
  }
  void ClickNode(const char* id, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    const NodeItem* item = Canvas().GetScene().FindNode(id);
    ASSERT_NE(item, nullptr) << id;
    const QPoint at = Canvas().GetView().mapFromScene(item->GetBody().topLeft() + QPointF(70, 20));
    QTest::mouseClick(Canvas().GetView().viewport(), Qt::LeftButton, modifiers, at);
    QApplication::processEvents();
    Wait();
  }
  /// Does what opens a dialog, and answers it.
  template <class Dialog, class Open, class Answer>
  void AnswerAfter(const Open& open, const Answer& answer) {
    bool is_done = false;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, [&] {
      auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
      if (dialog == nullptr || !dialog->isVisible()) return;
      look.stop();
      is_done = true;
      answer(*dialog);
    });
    look.start(5);
    open();
    ASSERT_TRUE(QTest::qWaitFor([&] { return is_done; }, 60000));
    TakeKeyboard();
  }
  /// Types a whole name into a dialog for files.
  template <class Open>
  void TypeFileAfter(const Open& open, const std::filesystem::path& file) {
    AnswerAfter<QFileDialog>(open, [&](QFileDialog& dialog) {
      auto* field = dialog.findChild<QLineEdit*>();
      // Set rather than typed: what is typed is completed, by a list that takes the keyboard.
      field->setText(QString::fromStdString(file.string()));
      QTest::keyClick(field, Qt::Key_Return);
      if (dialog.isVisible()) QTimer::singleShot(100, &dialog, &QDialog::accept);
    });
  }
  /// The image as the viewer draws it.
  QImage Picture() { return Viewer().GetViewer().GetView()->grab().toImage(); }
  QColor PictureAt(double x, double y) {
    return Picture().pixelColor(Viewer().GetViewer().GetView()->ToView({x, y}).toPoint());
  }

  Testing::TemporaryFolder folder_;
  std::unique_ptr<EditorWindow> window_;
};
