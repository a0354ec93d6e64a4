// SPDX-License-Identifier: Apache-2.0
#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QKeySequence>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QStatusBar>
#include <QToolButton>

#include "Apps/Editor/Canvas/GraphCanvas.h"
#include "Apps/Editor/Files/FirstSteps.h"
#include "Apps/Editor/Files/RecentFiles.h"
#include "Apps/Editor/Files/Settings.h"
#include "Apps/Editor/Files/ShortcutsDialog.h"
#include "Apps/Editor/Files/WatchMenu.h"
#include "Apps/Editor/Window/EditorWindow.h"

void EditorWindow::FollowThumbnails() {
  QAction* thumbnails = workspace_->GetCanvas().findChild<QAction*>(QStringLiteral("canvas.thumbnails"));
  if (thumbnails == nullptr) return;
  // It goes from the menu with its canvas.
  view_menu_->insertAction(view_menu_->actions().back(), thumbnails);
  connect(thumbnails, &QAction::toggled, this, [this](bool on) {
    settings_.setValue(QStringLiteral("canvas/thumbnails"), on);
    workspace_->SetThumbnails(on);
  });
  thumbnails->setChecked(IsDrawn() || settings_.value(QStringLiteral("canvas/thumbnails"), true).toBool());
}

QAction* EditorWindow::Add(QMenu& menu, const QString& text, const char* name, const QKeySequence& keys) {
  QAction* action = menu.addAction(text);
  action->setObjectName(QLatin1String(name));
  action->setShortcut(keys);
  return action;
}

QAction* EditorWindow::AddOwn(const QString& text, const char* name, const QKeySequence& keys) {
  auto* action = new QAction(text, this);
  action->setObjectName(QLatin1String(name));
  action->setShortcut(keys);
  addAction(action);
  return action;
}

void EditorWindow::MakeMenus() {
  MakeFileMenu();
  MakeEditMenu();
  MakeViewMenu();
  MakeHelpMenu();
}

void EditorWindow::MakeFileMenu() {
  QMenu& menu = *menuBar()->addMenu(tr("&File"));
  connect(Add(menu, tr("&New…"), "file.new", QKeySequence::New), &QAction::triggered, this, &EditorWindow::New);
  connect(Add(menu, tr("&Open…"), "file.open", QKeySequence::Open), &QAction::triggered, this,
          &EditorWindow::OpenByDialog);
  QMenu* recent = menu.addMenu(tr("Open &Recent"));
  recent->setObjectName(QStringLiteral("file.recent"));
  connect(recent, &QMenu::aboutToShow, this, [this, recent] { recent_->FillMenu(*recent); });
  connect(recent_.get(), &RecentFiles::Chosen, this, [this](const QString& file) {
    if (MayLeave()) Open(file);
  });
  menu.addSeparator();
  connect(Add(menu, tr("&Save"), "file.save", QKeySequence::Save), &QAction::triggered, this, &EditorWindow::Save);
  connect(Add(menu, tr("Save &As…"), "file.save_as", QKeySequence(QStringLiteral("Ctrl+Shift+S"))), &QAction::triggered,
          this, &EditorWindow::SaveAs);
  watch_menu_ = new WatchMenu(GetSettingsFile(), &menu);
  revert_ = Add(menu, tr("Re&vert"), "file.revert", {});
  connect(revert_, &QAction::triggered, this, &EditorWindow::Revert);
  menu.addSeparator();
  connect(Add(menu, tr("&Write All Outputs"), "file.write", QKeySequence(QStringLiteral("Ctrl+E"))),
          &QAction::triggered, this, &EditorWindow::WriteAll);
  menu.addMenu(watch_menu_);
  menu.addSeparator();
  connect(Add(menu, tr("&Quit"), "file.quit", QKeySequence(QStringLiteral("Ctrl+Q"))), &QAction::triggered, this,
          &QWidget::close);
}

void EditorWindow::MakeEditMenu() {
  edit_menu_ = menuBar()->addMenu(tr("&Edit"));
  // They are the window's, since the menu is filled anew each time and takes what is its own along.
  undo_ = AddOwn(tr("Undo"), "edit.undo", QKeySequence::Undo);
  connect(undo_, &QAction::triggered, this, [this] { workspace_->Undo(); });
  redo_ = AddOwn(tr("Redo"), "edit.redo", QKeySequence::Redo);
  connect(redo_, &QAction::triggered, this, [this] { workspace_->Redo(); });
  // Their texts name the step as well.
  undo_->setProperty(kActionName, undo_->text());
  redo_->setProperty(kActionName, redo_->text());
  edit_menu_->addActions({undo_, redo_});
  connect(edit_menu_, &QMenu::aboutToShow, this, &EditorWindow::FillEditMenu);
}

void EditorWindow::FillEditMenu() {
  edit_menu_->clear();
  qDeleteAll(edit_menu_->findChildren<QMenu*>(Qt::FindDirectChildrenOnly));
  edit_menu_->addActions({undo_, redo_});
  edit_menu_->addSeparator();
  workspace_->GetCanvas().FillMenu(*edit_menu_);
}

void EditorWindow::MakeViewMenu() {
  QMenu& menu = *menuBar()->addMenu(tr("&View"));
  for (QDockWidget* frame : docks_.GetAll()) {
    QAction* action = frame->toggleViewAction();
    action->setObjectName(QStringLiteral("view.") + frame->objectName());
    menu.addAction(action);
    // Opened by hand, a dock comes before those that share its place.
    connect(action, &QAction::triggered, frame, [frame](bool on) {
      if (on) frame->raise();
    });
  }
  menu.addSeparator();
  connect(Add(menu, tr("&Next Area"), "view.next_area", QKeySequence(QStringLiteral("F6"))), &QAction::triggered, this,
          [this] { areas_.Go(1); });
  connect(Add(menu, tr("&Previous Area"), "view.previous_area", QKeySequence(QStringLiteral("Shift+F6"))),
          &QAction::triggered, this, [this] { areas_.Go(-1); });
  menu.addSeparator();
  view_menu_ = &menu;
  QMenu& themes = *menu.addMenu(tr("T&heme"));
  auto* group = new QActionGroup(this);
  const QString chosen = settings_.value(QStringLiteral("window/theme")).toString();
  for (const auto& [text, theme] :
       {std::pair(tr("As the Desktop"), QString()), std::pair(tr("Light"), QStringLiteral("light")),
        std::pair(tr("Dark"), QStringLiteral("dark"))}) {
    QAction* action = themes.addAction(text);
    action->setObjectName(QStringLiteral("view.theme.") + theme);
    action->setCheckable(true);
    action->setChecked(theme == chosen);
    group->addAction(action);
    connect(action, &QAction::triggered, this, [this, theme = theme] { ApplyTheme(theme); });
  }
  connect(Add(menu, tr("&Reset the Layout"), "view.reset", {}), &QAction::triggered, this, [this] {
    docks_.Arrange();
    docks_.Resize();
  });
}

void EditorWindow::MakeHelpMenu() {
  QMenu& menu = *menuBar()->addMenu(tr("&Help"));
  connect(Add(menu, tr("&First Steps"), "help.steps", {}), &QAction::triggered, this, &EditorWindow::ShowFirstSteps);
  connect(Add(menu, tr("&Keyboard Shortcuts"), "help.shortcuts", QKeySequence(QStringLiteral("Ctrl+F1"))),
          &QAction::triggered, this, &EditorWindow::ShowShortcuts);
}

void EditorWindow::MakeStatusLine() {
  message_ = new QLabel(this);
  message_->setObjectName(QStringLiteral("status.message"));
  message_->setTextFormat(Qt::PlainText);
  message_->setMinimumWidth(40);
  statusBar()->addWidget(message_, 1);
  message_timer_.setSingleShot(true);
  connect(&message_timer_, &QTimer::timeout, this, [this] { Tell({}); });
  progress_ = new QProgressBar(this);
  progress_->setObjectName(QStringLiteral("status.progress"));
  progress_->setAccessibleName(tr("Nodes evaluated"));
  progress_->setMaximumWidth(160);
  progress_->setTextVisible(false);
  progress_->hide();
  statusBar()->addPermanentWidget(progress_);
  cancel_ = new QToolButton(this);
  cancel_->setObjectName(QStringLiteral("status.cancel"));
  cancel_->setText(tr("Stop"));
  cancel_->setToolTip(tr("Stops computing until the next change"));
  cancel_->setAccessibleName(tr("Stop computing"));
  cancel_->hide();
  connect(cancel_, &QToolButton::clicked, this, [this] { workspace_->GetEvaluator().Cancel(); });
  statusBar()->addPermanentWidget(cancel_);
}

void EditorWindow::ShowFirstSteps() {
  if (first_steps_ == nullptr) {
    first_steps_ = new FirstSteps(this, FirstSteps::MakeSteps(), GetSettingsFile());
    connect(first_steps_, &FirstSteps::Finished, this, [this] {
      restoreState(docks_before_steps_);
      workspace_->GetCanvas().setFocus(Qt::OtherFocusReason);
    });
  }
  docks_before_steps_ = saveState();
  // The steps point at docks, which have to be there.
  for (const char* name : {"help", "panel", "outputs"}) docks_.Raise(name);
  first_steps_->Start();
}

void EditorWindow::ShowShortcuts() {
  ShortcutsDialog dialog(findChildren<QAction*>(), this);
  dialog.exec();
}
