// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QMainWindow>
#include <QSettings>
#include <QTimer>
#include <memory>
#include <string>
#include <vector>

#include "Apps/Editor/Editor.h"
#include "Apps/Editor/Files/DocumentDialogs.h"
#include "Apps/Editor/Window/AreaSwitch.h"
#include "Apps/Editor/Window/DockFrames.h"
#include "Apps/Editor/Window/Workspace.h"

class FirstSteps;
class QAction;
class QLabel;
class QMenu;
class QProgressBar;
class QToolButton;
class RecentFiles;
class WatchMenu;

/// The window of `value edit`: one document with its docks, menus and the line at the bottom.
class EditorWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit EditorWindow(const EditorRequest& request);
  ~EditorWindow() override;

  /// Opens what the window starts with. What is wrong with it, or with what is asked of the window, goes to `answer`.
  void Start(EditorAnswer& answer);
  /// Waits until everything that is shown has been computed, for pictures of the window.
  void WaitUntilDone();

  /// Opens a document in place of the one that is open; false, with the reasons told to the user, where it cannot.
  bool Open(const QString& file);
  [[nodiscard]] Workspace* GetWorkspace() { return workspace_.get(); }
  [[nodiscard]] DockFrames& GetDocks() { return docks_; }

 protected:
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  /// Shows a document in place of the one before.
  void SetSession(std::unique_ptr<ScEng::EditSession> session);
  /// A new document from the first template with a picture.
  std::unique_ptr<ScEng::EditSession> MakeFirst();
  /// What the user wants back of documents that were being edited when a program ended early; null for nothing.
  std::unique_ptr<ScEng::EditSession> Recover(const std::filesystem::path& document);
  void ApplyRequest(EditorAnswer& answer);

  void MakeMenus();
  void MakeFileMenu();
  void MakeEditMenu();
  void MakeViewMenu();
  void MakeHelpMenu();
  /// Undo, redo and what can be done with what is selected.
  void FillEditMenu();
  /// Puts the canvas' switch of thumbnails into the menu and keeps it in the settings.
  void FollowThumbnails();
  void MakeStatusLine();
  /// An action that works wherever the keyboard is in the window.
  QAction* AddOwn(const QString& text, const char* name, const QKeySequence& keys);
  QAction* Add(QMenu& menu, const QString& text, const char* name, const QKeySequence& keys);

  void New();
  void OpenByDialog();
  void Save();
  void SaveAs();
  void Revert();
  void WriteAll();
  /// What is being typed into a field becomes a command, as it does when the field is left.
  void FinishTyping();
  bool MayStopWriting();
  /// Whether the document may go: it is saved, or the user says so.
  bool MayLeave();
  void ShowTitle();
  void ShowProgress(const ScEng::EvaluationProgress& progress, bool is_idle);
  void Tell(const QString& message);
  void ApplyTheme(const QString& theme);
  void ShowFirstSteps();
  void ShowShortcuts();

  [[nodiscard]] bool IsDrawn() const { return !request_.screenshot.empty(); }

  EditorRequest request_;
  std::filesystem::path state_folder_;
  QSettings settings_;
  DocumentDialogs dialogs_;
  DockFrames docks_;
  AreaSwitch areas_;
  /// The user has arranged the docks in an earlier run.
  bool has_own_layout_ = false;
  std::unique_ptr<RecentFiles> recent_;
  QMenu* edit_menu_ = nullptr;
  QMenu* view_menu_ = nullptr;
  WatchMenu* watch_menu_ = nullptr;
  QAction* undo_ = nullptr;
  QAction* redo_ = nullptr;
  QAction* revert_ = nullptr;
  QLabel* message_ = nullptr;
  /// What was told once says nothing of what is done now.
  QTimer message_timer_;
  QProgressBar* progress_ = nullptr;
  QToolButton* cancel_ = nullptr;
  FirstSteps* first_steps_ = nullptr;
  /// Where the docks were before the first steps opened those that they point at.
  QByteArray docks_before_steps_;
  std::unique_ptr<Workspace> workspace_;
};
