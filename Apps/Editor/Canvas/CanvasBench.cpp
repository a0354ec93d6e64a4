// SPDX-License-Identifier: Apache-2.0
// Prints how long the canvas takes to open and to draw graphs, in milliseconds.
//
//   value-canvas-bench [THEME [DOCUMENT PICTURE]]
//
// With a document, draws it to a picture as well.
#include <QApplication>
#include <QElapsedTimer>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>

#include "Apps/Desktop/Theme.h"
#include "Apps/Editor/Canvas/GraphCanvas.h"
#include "Apps/Editor/Canvas/GraphView.h"
#include "Host/Nodes/HostNodes.h"

namespace {

std::shared_ptr<ScEng::NodeCatalog> MakeCatalog() {
  auto catalog = ScEng::CreateHostCatalog();
  ScEng::Status status;
  auto library = ScEng::NodeLibrary::Load(VALUE_LIBRARY_FILE, status);
  if (library) catalog->AddLibrary(std::move(library));
  return catalog;
}

double Milliseconds(const QElapsedTimer& timer) { return static_cast<double>(timer.nsecsElapsed()) * 1e-6; }

/// A grid of nodes, each fed by the one to its left and most by one above that as well.
void FillGraph(ScEng::EditSession& session, int nodes) {
  const int rows = std::max(1, static_cast<int>(std::sqrt(nodes * 0.8)));
  std::string text = R"({"format": "value-graph", "version": 1, "nodes": [)";
  std::string connections;
  for (int i = 0; i < nodes; ++i) {
    const int row = i % rows;
    const int column = i / rows;
    const std::string id = "node" + std::to_string(i);
    text += (i == 0 ? "" : ",") + std::string(R"({"id": ")") + id + R"(", "type": "ImageValueAddNode", "position": [)" +
            std::to_string(column * 270) + ", " + std::to_string(row * 230) + "]}";
    const auto wire = [&](int from, int index) {
      connections += (connections.empty() ? "" : ",") + std::string(R"({"from": "node)") + std::to_string(from) +
                     R"(.image", "to": ")" + id + R"(.image", "index": )" + std::to_string(index) + "}";
    };
    if (column > 0) wire(i - rows, 0);
    if (column > 0 && row > 0 && i % 2 == 0) wire(i - rows - 1, 1);
  }
  const ScEng::Status status = session.Paste(text + "], \"connections\": [" + connections + "], \"outputs\": []}", {});
  if (status.IsError()) std::fprintf(stderr, "%s\n", status.GetMessage().c_str());
}

void Measure(const std::shared_ptr<ScEng::NodeCatalog>& catalog, int nodes) {
  ScEng::EditSession session(catalog, std::filesystem::temp_directory_path());
  FillGraph(session, nodes);
  QElapsedTimer timer;
  timer.start();
  GraphCanvas canvas(session, catalog);
  canvas.resize(1440, 900);
  canvas.show();
  QApplication::processEvents();
  std::printf("%d nodes, %zu wires: opened in %.0f ms\n", nodes, canvas.GetScene().GetAllWires().size(),
              Milliseconds(timer));
  GraphView& view = canvas.GetView();
  for (const double zoom : {0.0, 0.12, 0.31, 0.5, 1.0}) {
    if (zoom == 0.0) {
      canvas.ZoomToAll();
    } else {
      view.SetZoom(zoom, view.viewport()->rect().center());
      view.SetCenter(canvas.GetScene().GetExtent().center());
    }
    QApplication::processEvents();
    constexpr int kTimes = 20;
    double least = 1e9;
    for (int i = 0; i < kTimes; ++i) {
      view.viewport()->repaint();
      least = std::min(least, view.GetPaintSeconds() * 1000.0);
    }
    // What steps of the wheel cost: every body is drawn anew.
    double after_step = 0.0;
    for (int i = 0; i < kTimes; ++i) {
      const double step = i % 2 == 0 ? 1.0 / 1.05 : 1.05;
      view.SetZoom(view.GetZoom() * step, view.viewport()->rect().center());
      view.viewport()->repaint();
      after_step = std::max(after_step, view.GetPaintSeconds() * 1000.0);
    }
    std::printf("  zoom %.3f: drawn in %.1f ms, after steps of the zoom in at most %.1f ms\n", view.GetZoom(), least,
                after_step);
  }
  session.Close();
}

/// Evaluates every first output.
std::vector<ScEng::NodeFacts> Evaluate(ScEng::GraphDocument& document) {
  std::vector<ScEng::NodeFacts> facts;
  for (const std::string& id : document.GetIds()) {
    const Node* node = document.FindNode(id);
    if (node == nullptr || node->GetOutplugs().empty() || node->GetOutplugs().front().type != PlugType::kImage)
      continue;
    ScEng::NodeFacts& fact = facts.emplace_back();
    fact.id = id;
    QElapsedTimer timer;
    timer.start();
    ScEng::RunReport report;
    const auto image = document.Evaluate(id + "." + node->GetOutplugName(0), report);
    fact.seconds = Milliseconds(timer) * 1e-3;
    if (image) {
      fact.thumbnail = ScEng::ViewImage::Make(*image);
    } else {
      fact.is_in_error = true;
      fact.messages = report.findings.errors;
    }
  }
  return facts;
}

void Draw(const std::shared_ptr<ScEng::NodeCatalog>& catalog, const std::string& document, const QString& picture) {
  ScEng::Findings findings;
  const auto session = ScEng::EditSession::Open(catalog, document, std::filesystem::temp_directory_path(), findings);
  if (!session) {
    std::fprintf(stderr, "%s cannot be opened\n", document.c_str());
    return;
  }
  GraphCanvas canvas(*session, catalog);
  canvas.resize(1440, 900);
  canvas.SetFacts(Evaluate(session->GetDocument()));
  canvas.show();
  QApplication::processEvents();
  canvas.grab().save(picture);
  session->Close();
}

}  // namespace

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  ApplyTheme(argc > 1 ? argv[1] : "dark");
  const auto catalog = MakeCatalog();
  if (argc > 3) {
    Draw(catalog, argv[2], QString::fromLocal8Bit(argv[3]));
    return 0;
  }
  for (const int nodes : {100, 1000, 10000}) Measure(catalog, nodes);
  return 0;
}
