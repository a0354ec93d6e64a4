// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Window/EditorWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QEventLoop>
#include <QFileInfo>
#include <QLabel>
#include <QLayout>
#include <QMessageBox>
#include <QMimeData>
#include <QProgressBar>
#include <QSettings>
#include <QStatusBar>
#include <QTimer>
#include <QToolButton>
#include <QUrl>
#include <QVBoxLayout>

#include "Apps/Desktop/Theme.h"
#include "Apps/Editor/Canvas/GraphCanvas.h"
#include "Apps/Editor/Canvas/PlugRef.h"
#include "Apps/Editor/Docks/HistoryNames.h"
#include "Apps/Editor/Docks/OutputsDock.h"
#include "Apps/Editor/Files/FilesChangedBar.h"
#include "Apps/Editor/Files/FirstSteps.h"
#include "Apps/Editor/Files/RecentFiles.h"
#include "Apps/Editor/Files/RecoveryDialog.h"
#include "Apps/Editor/Files/Settings.h"
#include "Apps/Editor/Files/Templates.h"
#include "Apps/Editor/Files/TemplatesDialog.h"
#include "Apps/Editor/Files/WatchMenu.h"
#include "Apps/Editor/Window/ViewerDock.h"
#include "Host/Editing/Journals.h"
#include "Host/Util/ClosestName.h"

namespace {

constexpr int kUsualWidth = 1440;
constexpr int kUsualHeight = 900;

bool IsDocument(const QString& file) { return file.endsWith(QStringLiteral(".json"), Qt::CaseInsensitive); }

/// The one document among what is dropped; empty for none or several.
QString FindDroppedDocument(const QMimeData& data) {
  const QList<QUrl> urls = data.urls();
  if (urls.size() != 1 || !urls.front().isLocalFile()) return {};
  const QString file = urls.front().toLocalFile();
  return IsDocument(file) ? file : QString();
}

}  // namespace

EditorWindow::EditorWindow(const EditorRequest& request)
    : request_(request),
      state_folder_(request.state_folder.empty() ? ScEng::GetStateFolder() : request.state_folder),
      settings_(GetSettingsFile(), QSettings::IniFormat),
      dialogs_(this),
      docks_(*this),
      areas_(*this, docks_),
      recent_(std::make_unique<RecentFiles>(GetSettingsFile())) {
  setObjectName(QStringLiteral("editor"));
  setWindowTitle(tr("Value"));
  // Keeps the place of the canvas while something is asked before there is a document.
  setCentralWidget(new QWidget(this));
  setAcceptDrops(true);
  setWindowIcon(QIcon(QStringLiteral(":/editor/value-editor-128.png")));
  resize(request.width > 0 ? request.width : kUsualWidth, request.height > 0 ? request.height : kUsualHeight);
  MakeMenus();
  MakeStatusLine();
  docks_.Arrange();
  if (IsDrawn()) {
    // A picture has the size that is asked for, also where the docks would like more.
    layout()->setSizeConstraint(QLayout::SetNoConstraint);
    return;
  }
  restoreGeometry(settings_.value(QStringLiteral("window/geometry")).toByteArray());
  has_own_layout_ = restoreState(settings_.value(QStringLiteral("window/docks")).toByteArray());
}

EditorWindow::~EditorWindow() = default;

void EditorWindow::Start(EditorAnswer& answer) {
  ApplyRequest(answer);
  if (!answer.problems.empty()) return;
  std::unique_ptr<ScEng::EditSession> session;
  if (!IsDrawn()) session = Recover(request_.document);
  if (session == nullptr && !request_.document.empty()) {
    ScEng::Findings findings;
    session = ScEng::EditSession::Open(request_.catalog, request_.document, state_folder_, findings);
    if (session == nullptr) {
      answer.problems = findings.errors;
      return;
    }
  }
  if (session == nullptr) session = MakeFirst();
  SetSession(std::move(session));
  // Layouts are made when events are handled; sizes before that are forgotten.
  QApplication::processEvents();
  if (!has_own_layout_) docks_.Resize();
  QApplication::processEvents();
  workspace_->GetCanvas().RestoreView();
  if (!request_.shown.empty()) {
    ScEng::GraphDocument& document = workspace_->GetSession().GetDocument();
    const ScEng::Status status = document.SetSource(request_.shown, nullptr);
    if (status.IsError()) {
      answer.problems = {"--shown: " + status.GetMessage()};
      answer.is_usage = true;
      return;
    }
    const QString shown = QString::fromStdString(request_.shown);
    workspace_->GetCanvas().Select({QString::fromStdString(GetNodeOfPlug(request_.shown))});
    workspace_->Show(shown);
    workspace_->GetViewer().SetPinned(true);
  }
  if (!request_.document.empty() && !IsDrawn()) recent_->Add(QString::fromStdString(request_.document.string()));
  if (!IsDrawn() && FirstSteps::AreWanted(GetSettingsFile())) QTimer::singleShot(0, this, [this] { ShowFirstSteps(); });
}

void EditorWindow::ApplyRequest(EditorAnswer& answer) {
  for (const std::string& name : request_.docks) {
    if (docks_.Find(name) != nullptr) continue;
    answer.problems.push_back("--dock: there is no dock \"" + name + "\"" +
                              ScEng::SuggestClosestNames(name, DockFrames::GetNames()));
    answer.is_usage = true;
    return;
  }
  if (!request_.docks.empty()) docks_.ShowOnly(request_.docks);
}

void EditorWindow::WaitUntilDone() {
  // What was asked for last may still be on its way to the evaluation.
  QApplication::processEvents();
  constexpr double kStep = 0.02;
  while (!workspace_->GetEvaluator().WaitUntilIdle(kStep)) QApplication::processEvents();
  while (workspace_->IsLookingForFiles()) QApplication::processEvents(QEventLoop::WaitForMoreEvents);
  // What the evaluation told last is still on its way, and widgets draw what they were told.
  for (int i = 0; i < 3; ++i) QApplication::processEvents(QEventLoop::AllEvents, 100);
  workspace_->FinishPictures();
}

// ---- Documents ----

std::unique_ptr<ScEng::EditSession> EditorWindow::MakeFirst() {
  for (const Template& possible : ListTemplates()) {
    if (possible.GetPicture().isEmpty()) continue;
    ScEng::Findings findings;
    if (auto session = MakeFromTemplate(possible, request_.catalog, state_folder_, findings)) return session;
  }
  return std::make_unique<ScEng::EditSession>(request_.catalog, state_folder_);
}

std::unique_ptr<ScEng::EditSession> EditorWindow::Recover(const std::filesystem::path& document) {
  std::vector<std::string> notes;
  const bool has_journals = !RecoveryDialog::FindJournals(state_folder_, document, notes).empty();
  for (const std::string& note : notes) Tell(QString::fromStdString(note));
  if (!has_journals) return nullptr;
  RecoveryDialog dialog(request_.catalog, state_folder_, document, this);
  dialog.exec();
  return dialog.TakeSession();
}

void EditorWindow::SetSession(std::unique_ptr<ScEng::EditSession> session) {
  // Fields that lose the keyboard now may still give a command, which nobody has to hear of.
  if (workspace_ != nullptr) workspace_->disconnect(this);
  // The canvas and the bar look at the workspace.
  delete takeCentralWidget();
  workspace_.reset();
  workspace_ = std::make_unique<Workspace>(std::move(session), docks_);
  auto* middle = new QWidget(this);
  auto* layout = new QVBoxLayout(middle);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(new FilesChangedBar(workspace_->GetWatcher(), GetSettingsFile(), middle));
  layout->addWidget(&workspace_->GetCanvas(), 1);
  setCentralWidget(middle);
  connect(workspace_.get(), &Workspace::HistoryChanged, this, &EditorWindow::ShowTitle);
  connect(workspace_.get(), &Workspace::Told, this, &EditorWindow::Tell);
  connect(workspace_.get(), &Workspace::ProgressChanged, this, &EditorWindow::ShowProgress);
  // What asks for it is the workspace that is about to go.
  const auto open = [this](const QString& file) {
    if (MayLeave()) Open(file);
  };
  connect(workspace_.get(), &Workspace::OpenRequested, this, open, Qt::QueuedConnection);
  if (!IsDrawn()) {
    workspace_->GetCanvas().SetUsage(settings_.value(QStringLiteral("canvas/usage")).toStringList());
  }
  workspace_->GetCanvas().setFocus(Qt::OtherFocusReason);
  FollowThumbnails();
  watch_menu_->Follow(workspace_->GetWatcher());
  ShowTitle();
}

bool EditorWindow::Open(const QString& file) {
  ScEng::Findings findings;
  auto session = Recover(file.toStdString());
  if (session == nullptr) {
    session = ScEng::EditSession::Open(request_.catalog, file.toStdString(), state_folder_, findings);
  }
  if (session == nullptr) {
    QStringList lines;
    for (const std::string& error : findings.errors) lines.push_back(QString::fromStdString(error));
    QMessageBox box(QMessageBox::Warning, tr("Cannot open"), tr("%1 cannot be opened.").arg(QFileInfo(file).fileName()),
                    QMessageBox::Ok, this);
    box.setInformativeText(lines.mid(0, 8).join(QLatin1Char('\n')));
    box.exec();
    return false;
  }
  if (workspace_ != nullptr) workspace_->GetSession().Close();
  SetSession(std::move(session));
  recent_->Add(file);
  return true;
}

void EditorWindow::New() {
  TemplatesDialog dialog(this);
  if (dialog.exec() != QDialog::Accepted || !MayLeave()) return;
  ScEng::Findings findings;
  auto session = MakeFromTemplate(dialog.GetChosen(), request_.catalog, state_folder_, findings);
  if (session == nullptr) {
    dialogs_.ShowError(tr("Cannot start from this template"), QString::fromStdString(findings.errors.front()));
    return;
  }
  workspace_->GetSession().Close();
  SetSession(std::move(session));
}

void EditorWindow::OpenByDialog() {
  const auto& folder = workspace_->GetSession().GetDocument().GetFolder();
  const QString file = dialogs_.AskForFile(QString::fromStdString(folder.string()));
  if (!file.isEmpty() && MayLeave()) Open(file);
}

void EditorWindow::Save() {
  FinishTyping();
  ScEng::EditSession& session = workspace_->GetSession();
  workspace_->GetCanvas().StoreView();
  if (!dialogs_.Save(session)) return;
  recent_->Add(QString::fromStdString(session.GetFile().string()));
  Tell(tr("Saved %1").arg(DocumentDialogs::GetName(session)));
  ShowTitle();
}

void EditorWindow::SaveAs() {
  FinishTyping();
  ScEng::EditSession& session = workspace_->GetSession();
  workspace_->GetCanvas().StoreView();
  if (!dialogs_.SaveAs(session)) return;
  recent_->Add(QString::fromStdString(session.GetFile().string()));
  Tell(tr("Saved %1").arg(DocumentDialogs::GetName(session)));
  ShowTitle();
}

void EditorWindow::Revert() {
  const QString file = QString::fromStdString(workspace_->GetSession().GetFile().string());
  const auto answer =
      QMessageBox::question(this, tr("Revert"), tr("Go back to what was saved last? What was changed since is lost."),
                            QMessageBox::Yes | QMessageBox::Cancel, QMessageBox::Cancel);
  if (answer == QMessageBox::Yes) Open(file);
}

void EditorWindow::WriteAll() {
  docks_.Raise("outputs");
  workspace_->GetOutputs().WriteAll();
}

void EditorWindow::FinishTyping() {
  if (QWidget* field = QApplication::focusWidget(); field != nullptr && isAncestorOf(field)) field->clearFocus();
}

bool EditorWindow::MayStopWriting() {
  const auto answer =
      QMessageBox::question(this, tr("Outputs Are Being Written"), tr("Stop writing? What is written already stays."),
                            QMessageBox::Yes | QMessageBox::Cancel, QMessageBox::Cancel);
  return answer == QMessageBox::Yes;
}

bool EditorWindow::MayLeave() {
  FinishTyping();
  if (workspace_ != nullptr && workspace_->GetOutputs().IsWriting() && !MayStopWriting()) return false;
  return workspace_ == nullptr || IsDrawn() || dialogs_.MayClose(workspace_->GetSession());
}

void EditorWindow::ShowTitle() {
  const ScEng::EditSession& session = workspace_->GetSession();
  const QString name =
      session.GetFile().empty() ? tr("Untitled") : QString::fromStdString(session.GetFile().filename().string());
  setWindowTitle(tr("%1[*] – Value").arg(name));
  setWindowModified(session.IsModified());
  const std::size_t place = session.GetPlace();
  const auto& history = session.GetHistory();
  const auto describe = [&](const QString& verb, const QString& verb_with_name, bool is_there, std::size_t step) {
    return is_there ? verb_with_name.arg(TranslateStep(history[step])) : verb;
  };
  undo_->setEnabled(place > 0);
  undo_->setText(describe(tr("Undo"), tr("Undo %1"), place > 0, place - 1));
  redo_->setEnabled(place < history.size());
  redo_->setText(describe(tr("Redo"), tr("Redo %1"), place < history.size(), place));
  revert_->setEnabled(session.IsModified() && !session.GetFile().empty());
}

void EditorWindow::ShowProgress(const ScEng::EvaluationProgress& progress, bool is_idle) {
  progress_->setVisible(!is_idle);
  cancel_->setVisible(!is_idle);
  if (is_idle) return;
  progress_->setRange(0, progress.total > 0 ? static_cast<int>(progress.total) : 0);
  progress_->setValue(static_cast<int>(progress.done));
  progress_->setToolTip(QString::fromStdString(progress.id));
}

void EditorWindow::Tell(const QString& message) {
  message_->setText(message);
  message_->setToolTip(message);
  constexpr int kReadingTime = 30000;
  if (!message.isEmpty()) message_timer_.start(kReadingTime);
}

void EditorWindow::ApplyTheme(const QString& theme) {
  settings_.setValue(QStringLiteral("window/theme"), theme);
  ::ApplyTheme(theme.toStdString());
}

void EditorWindow::closeEvent(QCloseEvent* event) {
  if (!MayLeave()) {
    event->ignore();
    return;
  }
  if (workspace_ != nullptr) workspace_->GetSession().Close();
  if (!IsDrawn()) {
    settings_.setValue(QStringLiteral("window/geometry"), saveGeometry());
    settings_.setValue(QStringLiteral("window/docks"), saveState());
    if (workspace_ != nullptr) {
      settings_.setValue(QStringLiteral("canvas/usage"), workspace_->GetCanvas().GetUsage());
    }
  }
  event->accept();
}

void EditorWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (!FindDroppedDocument(*event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void EditorWindow::dropEvent(QDropEvent* event) {
  const QString file = FindDroppedDocument(*event->mimeData());
  if (!file.isEmpty() && MayLeave()) Open(file);
}
