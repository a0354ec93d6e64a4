// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Window/Workspace.h"

#include <QPointer>
#include <QTabBar>
#include <utility>

#include "Apps/Editor/Canvas/GraphCanvas.h"
#include "Apps/Editor/Canvas/GraphView.h"
#include "Apps/Editor/Canvas/PlugRef.h"
#include "Apps/Editor/Docks/AttributesDock.h"
#include "Apps/Editor/Docks/HelpDock.h"
#include "Apps/Editor/Docks/HistoryDock.h"
#include "Apps/Editor/Docks/OutputRun.h"
#include "Apps/Editor/Docks/OutputsDock.h"
#include "Apps/Editor/Docks/ProblemsDock.h"
#include "Apps/Editor/Docks/ProfilerDock.h"
#include "Apps/Editor/Files/FileWatcher.h"
#include "Apps/Editor/Files/MissingInputs.h"
#include "Apps/Editor/Terrain/TerrainView.h"
#include "Apps/Editor/Window/ViewerDock.h"
#include "Host/Tools/Guard.h"
#include "Host/Widgets/ViewerWidget.h"

namespace {

/// Width and height of thumbnails, in pixels of a display that doubles them.
constexpr int kThumbnailSize = 160;

}  // namespace

/// Tells the workspace of changes after the command that made them.
class Workspace::Observer : public ScEng::EditObserver {
 public:
  explicit Observer(Workspace& workspace) : workspace_(workspace) { workspace_.session_->AddObserver(this); }
  ~Observer() override { workspace_.session_->RemoveObserver(this); }

  void OnHistoryChanged() override { emit workspace_.HistoryChanged(); }

 private:
  Workspace& workspace_;
};

Workspace::Workspace(std::unique_ptr<ScEng::EditSession> session, DockFrames& frames, QObject* parent)
    : QObject(parent), session_(std::move(session)), frames_(frames) {
  MakeWidgets();
  observer_ = std::make_unique<Observer>(*this);
  bridge_ = std::make_unique<EvaluationBridge>(*session_);
  bridge_->GetEvaluator().SetThumbnailSize(kThumbnailSize);
  Connect();
  // Twice in the second after which a change has to be in the journal.
  journal_timer_.setInterval(400);
  connect(&journal_timer_, &QTimer::timeout, this, &Workspace::Tick);
  journal_timer_.start();
  ShowFirst();
}

Workspace::~Workspace() {
  observer_.reset();
  // Nothing that shows the document outlives it.
  for (QDockWidget* frame : frames_.GetAll()) {
    disconnect(frame, nullptr, this, nullptr);
    QWidget* content = frame->widget();
    frame->setWidget(nullptr);
    delete content;
  }
  delete canvas_.data();
  delete watcher_;
  bridge_.reset();
}

void Workspace::MakeWidgets() {
  canvas_ = new GraphCanvas(*session_, session_->GetCatalog());
  viewer_ = new ViewerDock(*session_);
  attributes_ = new AttributesDock(*session_, session_->GetCatalog());
  history_ = new HistoryDock(*session_);
  problems_ = new ProblemsDock(*session_);
  profiler_ = new ProfilerDock(*session_);
  outputs_ = new OutputsDock(*session_, StartBackgroundRun);
  help_ = new HelpDock(session_->GetCatalog());
  terrain_ = new TerrainView;
  missing_ = new MissingInputs(*session_);
  watcher_ = new FileWatcher(*session_, this);
  frames_.Find("viewer")->setWidget(viewer_);
  frames_.Find("terrain")->setWidget(terrain_);
  frames_.Find("panel")->setWidget(attributes_);
  frames_.Find("help")->setWidget(help_);
  frames_.Find("outputs")->setWidget(outputs_);
  frames_.Find("problems")->setWidget(problems_);
  frames_.Find("profiler")->setWidget(profiler_);
  frames_.Find("history")->setWidget(history_);
  frames_.Find("missing")->setWidget(missing_);
  // It has the number of problems in it.
  QDockWidget* problems = frames_.Find("problems");
  problems->setWindowTitle(problems_->windowTitle());
  connect(problems_, &QWidget::windowTitleChanged, problems, &QWidget::setWindowTitle);
}

void Workspace::Connect() {
  connect(bridge_.get(), &EvaluationBridge::ResultReady, this, &Workspace::TakeResult);
  connect(bridge_.get(), &EvaluationBridge::FactsReady, this, &Workspace::TakeFacts);
  connect(bridge_.get(), &EvaluationBridge::ProgressChanged, this,
          [this](const ScEng::EvaluationProgress& progress, bool is_idle) {
            viewer_->SetProgress(progress, is_idle);
            canvas_->SetRunning(QString::fromStdString(progress.id), progress.fraction);
            if (is_idle) TellFacts();
            emit ProgressChanged(progress, is_idle);
          });
  constexpr int kFactsInterval = 200;
  facts_timer_.setSingleShot(true);
  facts_timer_.setInterval(kFactsInterval);
  connect(&facts_timer_, &QTimer::timeout, this, &Workspace::TellFacts);
  // Once for all that a command selects, and when commands can be given again.
  selection_timer_.setSingleShot(true);
  connect(&selection_timer_, &QTimer::timeout, this, &Workspace::FollowSelection);
  connect(canvas_, &GraphCanvas::SelectionChanged, &selection_timer_, qOverload<>(&QTimer::start));
  const auto follow = [this] { Show(canvas_->GetShown()); };
  connect(canvas_, &GraphCanvas::ShownChanged, this, follow, Qt::QueuedConnection);
  connect(canvas_, &GraphCanvas::ShowRequested, this, [this](const QString& plug) {
    Show(plug);
    viewer_->SetPinned(!plug.isEmpty());
  });
  connect(canvas_, &GraphCanvas::Failed, this, &Workspace::Told);
  connect(canvas_, &GraphCanvas::OpenRequested, this, &Workspace::OpenRequested);
  connect(canvas_, &GraphCanvas::HelpRequested, this, [this](const QString& id) { ShowHelp(FindTypeName(id)); });
  connect(viewer_, &ViewerDock::ShowRequested, this, &Workspace::Show);
  connect(viewer_, &ViewerDock::PinChanged, this, [this](bool pinned) {
    if (!pinned) FollowSelection();
  });
  canvas_->GetView().SetOutsideRows({.offer =
                                         [panel = QPointer(attributes_)](const QPoint& global, const PlugRef& from) {
                                           return panel == nullptr ? std::string()
                                                                   : panel->OfferRow(global, from.node, from.type);
                                         },
                                     .withdraw =
                                         [panel = QPointer(attributes_)] {
                                           if (panel != nullptr) panel->WithdrawRow();
                                         }});
  connect(attributes_, &AttributesDock::HelpRequested, this, &Workspace::ShowHelp);
  connect(attributes_, &AttributesDock::Failed, this, &Workspace::Told);
  connect(history_, &HistoryDock::Failed, this, &Workspace::Told);
  connect(outputs_, &OutputsDock::Failed, this, &Workspace::Told);
  connect(problems_, &ProblemsDock::NodeActivated, this, &Workspace::GoToNode);
  connect(profiler_, &ProfilerDock::NodeActivated, this, &Workspace::GoToNode);
  connect(watcher_, &FileWatcher::FilesChanged, this, [this](const QStringList& ids) {
    std::vector<std::string> readers;
    for (const QString& id : ids) readers.push_back(id.toStdString());
    bridge_->GetEvaluator().ReadAgain(readers);
    missing_->Refresh();
    emit Told(tr("Read again: %1").arg(ids.join(QStringLiteral(", "))));
  });
  connect(watcher_, &FileWatcher::Offered, missing_, &MissingInputs::Refresh);
  const auto raise_missing = [this] {
    if (missing_->Count() == 0) return;
    // The keyboard stays where it is: what is looked for may take long.
    frames_.Find("missing")->show();
    frames_.Find("missing")->raise();
  };
  connect(missing_, &MissingInputs::Looked, this, raise_missing,
          static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::SingleShotConnection));
  connect(missing_, &MissingInputs::NodeActivated, this, &Workspace::GoToNode);
  connect(missing_, &MissingInputs::Failed, this, &Workspace::Told);
  connect(&viewer_->GetViewer(), &ScEng::ViewerWidget::LookChanged, this, [this] { ShowTerrain(); });
  connect(frames_.Find("help"), &QDockWidget::visibilityChanged, this, [this](bool is_visible) {
    if (is_visible) FollowSelection();
  });
  connect(frames_.Find("terrain"), &QDockWidget::visibilityChanged, this, [this] {
    ShowTerrain();
    AskForImages();
  });
  connect(terrain_, &TerrainView::SecondMapChanged, this, &Workspace::AskForImages);
  connect(this, &Workspace::HistoryChanged, this, [this] {
    if (frames_.Find("terrain")->isVisible()) terrain_->SetMaps(ListImageOutputs());
  });
}

void Workspace::Show(const QString& plug) {
  viewer_->SetShown(plug);
  canvas_->SetShown(plug);
  AskForImages();
}

void Workspace::AskForImages() {
  const QString second = frames_.Find("terrain")->isVisible() ? terrain_->GetSecondMap() : QString();
  bridge_->GetEvaluator().Show({viewer_->GetShown().toStdString(), true, second.toStdString()});
}

QStringList Workspace::ListImageOutputs() const {
  QStringList plugs;
  for (const std::string& id : session_->GetDocument().GetIds()) {
    const Node* node = session_->GetDocument().FindNode(id);
    if (node == nullptr) continue;
    for (const PlugRecord& plug : node->GetOutplugs()) {
      if (plug.type == PlugType::kImage) plugs << QString::fromStdString(id + "." + plug.name);
    }
  }
  return plugs;
}

void Workspace::ShowFirst() {
  ShowFirstImage();
  // Its attributes are at hand then.
  const std::string id = GetNodeOfPlug(viewer_->GetShown().toStdString());
  if (!id.empty()) canvas_->Select({QString::fromStdString(id)});
}

void Workspace::ShowFirstImage() {
  const ScEng::GraphDocument& document = session_->GetDocument();
  const auto& view = document.GetView();
  if (view && !view->shown.empty()) {
    Show(QString::fromStdString(view->shown));
    return;
  }
  if (!document.GetOutputs().empty()) {
    Show(QString::fromStdString(document.GetOutputs().front().from));
    return;
  }
  for (auto id = document.GetIds().rbegin(); id != document.GetIds().rend(); ++id) {
    const QString plug = FindImageOutput(QString::fromStdString(*id));
    if (plug.isEmpty()) continue;
    Show(plug);
    return;
  }
  Show({});
}

void Workspace::SetThumbnails(bool on) {
  // Without thumbnails, what does not feed the shown image is not computed either.
  bridge_->GetEvaluator().SetThumbnailSize(on ? kThumbnailSize : 0);
  bridge_->GetEvaluator().SetEvaluatesAll(on);
}

bool Workspace::IsLookingForFiles() const { return missing_->IsLooking(); }

void Workspace::FinishPictures() {
  if (frames_.Find("terrain")->isVisible() && terrain_->IsAvailable()) static_cast<void>(terrain_->Grab());
}

void Workspace::Undo() { Report(session_->Undo()); }

void Workspace::Redo() { Report(session_->Redo()); }

void Workspace::TakeResult(const std::shared_ptr<const ScEng::ShownResult>& result) {
  // An older wish may still come to its end.
  if (result->shown.plug != viewer_->GetShown().toStdString()) return;
  viewer_->SetResult(result);
  ShowTerrain();
}

void Workspace::TakeFacts(const std::vector<ScEng::NodeFacts>& facts) {
  canvas_->SetFacts(facts);
  // The lists are gone through as a whole, which is nothing to do for each of thousands of nodes.
  gathered_facts_.insert(gathered_facts_.end(), facts.begin(), facts.end());
  if (!facts_timer_.isActive()) facts_timer_.start();
}

void Workspace::TellFacts() {
  facts_timer_.stop();
  if (gathered_facts_.empty()) return;
  const std::vector<ScEng::NodeFacts> facts = std::exchange(gathered_facts_, {});
  problems_->SetFacts(facts);
  profiler_->SetFacts(facts);
}

void Workspace::FollowSelection() {
  const QStringList ids = canvas_->GetSelection();
  attributes_->SetSelection(ids);
  if (ids.size() == 1 && help_->isVisible()) help_->ShowNode(FindTypeName(ids.front()));
  if (viewer_->IsPinned() || ids.size() != 1) return;
  const QString plug = FindImageOutput(ids.front());
  if (!plug.isEmpty()) Show(plug);
}

void Workspace::GoToNode(const QString& id) {
  canvas_->Select({id});
  canvas_->CenterOn(id);
}

void Workspace::ShowHelp(const QString& type_name) {
  if (type_name.isEmpty()) return;
  help_->ShowNode(type_name);
  frames_.Raise("help");
}

void Workspace::ShowTerrain() {
  const auto& result = viewer_->GetResult();
  if (!frames_.Find("terrain")->isVisible()) return;
  terrain_->SetMaps(ListImageOutputs());
  if (result == nullptr) return;
  terrain_->SetHeights(result->image);
  // In gray the light tells more of the ground than its own height once more.
  const ScEng::Look& look = viewer_->GetViewer().GetLook();
  const bool is_colored = look.shading == ScEng::Shading::kRamp ||
                          (result->image != nullptr && result->image->GetImage().GetNumChannels() > 1);
  terrain_->SetColors(is_colored ? result->image : nullptr, look);
  if (QString::fromStdString(result->shown.second) == terrain_->GetSecondMap()) terrain_->SetSecond(result->second);
}

void Workspace::Tick() {
  const ScEng::Status status = session_->Tick(std::chrono::system_clock::now());
  // Told once, not every second.
  const QString problem = status.IsError() ? QString::fromStdString(status.GetMessage()) : QString();
  if (std::exchange(journal_problem_, problem) != problem && !problem.isEmpty()) emit Told(problem);
}

void Workspace::Report(const ScEng::Status& status) {
  if (status.IsError()) emit Told(QString::fromStdString(status.GetMessage()));
}

QString Workspace::FindTypeName(const QString& id) const {
  const Node* node = session_->GetDocument().FindNode(id.toStdString());
  const NodeInterface* type = node == nullptr ? nullptr : session_->GetCatalog()->Find(node->GetNodeType());
  if (type == nullptr) return {};
  return QString::fromStdString(
      ScEng::AskGuarded("GetTypeName", std::string(), [&] { return type->GetNodeFactory()->GetTypeName(); }));
}

QString Workspace::FindImageOutput(const QString& id) const {
  const Node* node = session_->GetDocument().FindNode(id.toStdString());
  if (node == nullptr) return {};
  for (const PlugRecord& plug : node->GetOutplugs()) {
    if (plug.type == PlugType::kImage) return id + QLatin1Char('.') + QString::fromStdString(plug.name);
  }
  return {};
}
