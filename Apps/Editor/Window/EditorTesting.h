// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <QAction>
#include <QTest>
#include <filesystem>
#include <memory>

#include "Apps/Editor/Canvas/GraphCanvas.h"
#include "Apps/Editor/Window/EditorWindow.h"
#include "Apps/Editor/Window/ViewerDock.h"
#include "Host/Widgets/ViewerWidget.h"
#include "Tests/Support/EditTesting.h"

/// A folder with a small document, "graph.json": a terrain, an addition and a clamp in a row; and the window on it.
class EditorWindowTest : public testing::Test {
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
  void Wait() { window_->WaitUntilDone(); }

  ScEng::EditSession& Session() { return window_->GetWorkspace()->GetSession(); }
  GraphCanvas& Canvas() { return window_->GetWorkspace()->GetCanvas(); }
  ViewerDock& Viewer() { return window_->GetWorkspace()->GetViewer(); }
  QAction* Action(const char* name) { return window_->findChild<QAction*>(QLatin1String(name)); }
  /// The lowest value of what is shown.
  float Lowest() {
    const auto& image = Viewer().GetViewer().GetContent().image;
    return image == nullptr ? -1.0F : image->GetFigures().finite.low;
  }

  Testing::TemporaryFolder folder_;
  std::unique_ptr<EditorWindow> window_;
};
