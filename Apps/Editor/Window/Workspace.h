// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>
#include <memory>

#include "Apps/Editor/Canvas/GraphCanvas.h"
#include "Apps/Editor/Window/DockFrames.h"
#include "Apps/Editor/Window/EvaluationBridge.h"
#include "Host/Editing/EditSession.h"

class AttributesDock;
class FileWatcher;
class HelpDock;
class HistoryDock;
class MissingInputs;
class OutputsDock;
class ProblemsDock;
class ProfilerDock;
class TerrainView;
class ViewerDock;

/// One open document: its session, its evaluation in the background, and everything that shows it. Another document is
/// another workspace.
class Workspace : public QObject {
  Q_OBJECT

 public:
  /// Puts its widgets into the docks, which outlive this. The canvas is the caller's to place.
  Workspace(std::unique_ptr<ScEng::EditSession> session, DockFrames& frames, QObject* parent = nullptr);
  ~Workspace() override;

  [[nodiscard]] ScEng::EditSession& GetSession() { return *session_; }
  [[nodiscard]] ScEng::BackgroundEvaluator& GetEvaluator() { return bridge_->GetEvaluator(); }
  [[nodiscard]] GraphCanvas& GetCanvas() { return *canvas_; }
  [[nodiscard]] ViewerDock& GetViewer() { return *viewer_; }
  [[nodiscard]] OutputsDock& GetOutputs() { return *outputs_; }
  [[nodiscard]] FileWatcher& GetWatcher() { return *watcher_; }

  /// Shows an output, "id.plug".
  void Show(const QString& plug);
  /// Shows what the document says, or the last image that it makes, and selects its node.
  void ShowFirst();
  void SetThumbnails(bool on);
  /// Whether it is not known yet which files are missing.
  [[nodiscard]] bool IsLookingForFiles() const;
  /// Waits for pictures that are drawn on threads of their own.
  void FinishPictures();
  void Undo();
  void Redo();

 signals:
  /// The document was changed or saved, and what can be undone with it.
  void HistoryChanged();
  /// A line for people about what could not be done, or what was.
  void Told(const QString& message);
  void ProgressChanged(const ScEng::EvaluationProgress& progress, bool is_idle);
  void OpenRequested(const QString& file);

 private:
  class Observer;

  void MakeWidgets();
  void ShowFirstImage();
  void Connect();
  void TakeResult(const std::shared_ptr<const ScEng::ShownResult>& result);
  void TakeFacts(const std::vector<ScEng::NodeFacts>& facts);
  /// Tells the lists of what was gathered.
  void TellFacts();
  void FollowSelection();
  void GoToNode(const QString& id);
  void ShowHelp(const QString& type_name);
  void ShowTerrain();
  /// Has the evaluation make what is shown, and what is laid over the terrain where that is seen.
  void AskForImages();
  /// Every image that the document makes, "id.plug".
  [[nodiscard]] QStringList ListImageOutputs() const;
  void Tick();
  void Report(const ScEng::Status& status);
  /// The class name of a node's type; empty for a placeholder.
  [[nodiscard]] QString FindTypeName(const QString& id) const;
  /// The first image output of a node, "id.plug"; empty where it has none.
  [[nodiscard]] QString FindImageOutput(const QString& id) const;

  std::unique_ptr<ScEng::EditSession> session_;
  std::unique_ptr<Observer> observer_;
  std::unique_ptr<EvaluationBridge> bridge_;
  DockFrames& frames_;
  QTimer journal_timer_;
  QTimer selection_timer_;
  QTimer facts_timer_;
  std::vector<ScEng::NodeFacts> gathered_facts_;
  QString journal_problem_;
  /// Goes with the window's middle, if that goes first.
  QPointer<GraphCanvas> canvas_;
  ViewerDock* viewer_ = nullptr;
  AttributesDock* attributes_ = nullptr;
  HistoryDock* history_ = nullptr;
  ProblemsDock* problems_ = nullptr;
  ProfilerDock* profiler_ = nullptr;
  OutputsDock* outputs_ = nullptr;
  HelpDock* help_ = nullptr;
  TerrainView* terrain_ = nullptr;
  MissingInputs* missing_ = nullptr;
  FileWatcher* watcher_ = nullptr;
};
