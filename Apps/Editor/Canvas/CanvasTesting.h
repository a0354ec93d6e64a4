// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <QAction>
#include <QImage>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <fstream>
#include <memory>
#include <string>

#include "Apps/Editor/Canvas/GraphCanvas.h"
#include "Apps/Editor/Canvas/GraphView.h"
#include "Tests/Support/DocumentTesting.h"

/// A canvas of a document, in a window of 1000 by 700 pixels at life size, and the mouse on it.
class CanvasTest : public testing::Test {
 protected:
  /// Opens a document with these lists; single quotes stand for double ones.
  void Open(const std::string& nodes, const std::string& connections = "", const std::string& more = "") {
    const std::string text = "{'format': 'value-graph', 'version': 1, 'nodes': [" + nodes + "], 'connections': [" +
                             connections + "], 'outputs': []" + more + "}";
    const std::string file = folder_.filePath(QStringLiteral("graph.json")).toStdString();
    std::ofstream(file) << Testing::Quoted(text);
    ScEng::Findings findings;
    session_ = ScEng::EditSession::Open(Testing::GetCatalog(), file, folder_.path().toStdString(), findings);
    ASSERT_NE(session_, nullptr);
    canvas_ = std::make_unique<GraphCanvas>(*session_, Testing::GetCatalog());
    canvas_->resize(1000, 700);
    canvas_->show();
    canvas_->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(canvas_.get(), 60000));
    // One unit is one pixel, whatever the font.
    view().SetZoom(view().GetZoom() * view().ToScene(1.0), QPoint(0, 0));
    view().SetCenter({300, 200});
    view().setFocus();
    QObject::connect(canvas_.get(), &GraphCanvas::Failed, canvas_.get(),
                     [this](const QString& message) { failures_ << message; });
    before_ = Save();
  }

  [[nodiscard]] GraphView& view() const { return canvas_->GetView(); }
  [[nodiscard]] GraphScene& scene() const { return canvas_->GetScene(); }
  [[nodiscard]] const ScEng::GraphDocument& document() const { return session_->GetDocument(); }

  /// What the document is saved as; the view, which is no part of the history, is left out.
  [[nodiscard]] std::string Save() {
    const auto shown = document().GetView();
    EXPECT_FALSE(session_->SetView(std::nullopt).IsError());
    std::string text = Testing::Save(document());
    EXPECT_FALSE(session_->SetView(shown).IsError());
    return text;
  }

  /// Undoes the one step that there must be, after which the document is as it was opened.
  void ExpectOneStep() {
    EXPECT_EQ(session_->GetPlace(), 1U);
    const std::string after = Save();
    EXPECT_NE(after, before_);
    ASSERT_FALSE(session_->Undo().IsError());
    EXPECT_EQ(Save(), before_);
    ASSERT_FALSE(session_->Redo().IsError());
    EXPECT_EQ(Save(), after);
  }

  void Trigger(const char* name) const {
    for (QAction* action : canvas_->GetActions()) {
      if (action->objectName() == QLatin1String("canvas.") + QLatin1String(name)) return action->trigger();
    }
    FAIL() << "there is no action " << name;
  }

  [[nodiscard]] QPoint At(const QPointF& place) const { return view().mapFromScene(place); }
  [[nodiscard]] QPointF PlugOf(const std::string& id, const std::string& name, bool is_input,
                               unsigned index = 0) const {
    return scene().FindNode(id)->GetPlugPlace(name, index, is_input);
  }
  /// In the title of a node.
  [[nodiscard]] QPointF TitleOf(const std::string& id) const {
    return scene().FindNode(id)->GetBody().topLeft() + QPointF(70, 20);
  }

  void Click(const QPointF& place, Qt::KeyboardModifiers keys = Qt::NoModifier) const {
    QTest::mouseClick(view().viewport(), Qt::LeftButton, keys, At(place));
  }
  void Press(const QPointF& place, Qt::KeyboardModifiers keys = Qt::NoModifier) const {
    QTest::mousePress(view().viewport(), Qt::LeftButton, keys, At(place));
  }
  void Release(const QPointF& place, Qt::KeyboardModifiers keys = Qt::NoModifier) const {
    QTest::mouseRelease(view().viewport(), Qt::LeftButton, keys, At(place));
  }
  void MoveTo(const QPointF& place) const { QTest::mouseMove(view().viewport(), At(place)); }
  void DragFromTo(const QPointF& from, const QPointF& to, Qt::KeyboardModifiers keys = Qt::NoModifier) const {
    Press(from, keys);
    MoveTo(from + QPointF(12, 8));
    MoveTo((from + to) / 2);
    MoveTo(to);
    Release(to, keys);
  }
  void Key(Qt::Key key, Qt::KeyboardModifiers keys = Qt::NoModifier) const { QTest::keyClick(&view(), key, keys); }

  /// The canvas as it is seen.
  [[nodiscard]] QImage Grab() const { return view().viewport()->grab().toImage(); }
  [[nodiscard]] QColor ColorAt(const QPointF& place) const { return Grab().pixelColor(At(place)); }

  [[nodiscard]] bool HasConnection(const std::string& from, const std::string& to, unsigned index = 0) const {
    for (const ScEng::DocumentConnection& connection : document().GetConnections()) {
      if (connection == ScEng::DocumentConnection{from, to, index}) return true;
    }
    return false;
  }

  QTemporaryDir folder_;
  std::unique_ptr<ScEng::EditSession> session_;
  std::unique_ptr<GraphCanvas> canvas_;
  QStringList failures_;
  std::string before_;
};
