// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QStringList>
#include <QTimer>
#include <filesystem>
#include <map>
#include <set>
#include <string>

#include "Apps/Editor/Docks/SessionWatch.h"
#include "Host/Editing/EditSession.h"

/// Watches the files that a document reads, and says which readers have to read again when other programs have changed
/// them. Files that are replaced, removed and made anew are followed.
class FileWatcher : public QObject {
  Q_OBJECT

 public:
  /// What happens when a file has changed.
  enum class Mode { kNever, kAsk, kAutomatic };

  explicit FileWatcher(ScEng::EditSession& session, QObject* parent = nullptr);
  ~FileWatcher() override;

  void SetMode(Mode mode);
  [[nodiscard]] Mode GetMode() const { return mode_; }
  /// The readers that were offered and have not read again since.
  [[nodiscard]] QStringList GetPending() const;
  /// What was offered is to be done, or not.
  void Accept();
  void Dismiss();

 signals:
  /// These readers are to read again.
  void FilesChanged(const QStringList& ids);
  /// The same as a question, which `Accept` or `Dismiss` answers.
  void Offered(const QStringList& ids);
  /// There is nothing to ask any more: what was offered stays as it was read.
  void Dismissed();
  void ModeChanged();

 private:
  /// What a change of a file shows in.
  struct Stamp {
    qint64 size = -1;
    qint64 time = 0;
    quint64 number = 0;
    friend bool operator==(const Stamp&, const Stamp&) = default;
  };
  static Stamp ReadStamp(const std::string& file);

  /// Follows the readers of the document, where they are other ones now.
  void Refresh();
  void Follow();
  void Compare();

  ScEng::EditSession& session_;
  SessionWatch watch_;
  QFileSystemWatcher system_;
  QTimer timer_;
  Mode mode_ = Mode::kAsk;
  /// By file: the readers, and what the file was like.
  std::map<std::string, std::set<std::string>> readers_;
  std::map<std::string, std::filesystem::path> inputs_;
  std::map<std::string, Stamp> stamps_;
  std::set<std::string> pending_;
};
