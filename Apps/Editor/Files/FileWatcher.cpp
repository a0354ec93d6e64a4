// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Files/FileWatcher.h"

#include <sys/stat.h>

#include <QFileInfo>
#include <filesystem>
#include <utility>

namespace {

/// Programs write a file in several steps; what is read within them may be half of it.
constexpr int kDelay = 300;
/// Each watch takes something of the system's.
constexpr std::size_t kMostFiles = 2000;

QStringList ToList(const std::set<std::string>& ids) {
  QStringList list;
  for (const std::string& id : ids) list += QString::fromStdString(id);
  return list;
}

}  // namespace

FileWatcher::FileWatcher(ScEng::EditSession& session, QObject* parent)
    : QObject(parent), session_(session), watch_(session, this, kDelay) {
  setObjectName(QStringLiteral("file_watcher"));
  timer_.setSingleShot(true);
  timer_.setInterval(kDelay);
  connect(&timer_, &QTimer::timeout, this, &FileWatcher::Compare);
  // Every event starts the time anew: it counts from the last one.
  connect(&system_, &QFileSystemWatcher::fileChanged, this, [this] { timer_.start(); });
  connect(&system_, &QFileSystemWatcher::directoryChanged, this, [this] { timer_.start(); });
  connect(&watch_, &SessionWatch::Changed, this, &FileWatcher::Refresh);
  connect(&watch_, &SessionWatch::NodeRenamed, this, [this](const std::string& before, const std::string& now) {
    if (pending_.erase(before) != 0) pending_.insert(now);
  });
  Refresh();
}

FileWatcher::~FileWatcher() = default;

FileWatcher::Stamp FileWatcher::ReadStamp(const std::string& file) {
  struct stat facts {};
  if (stat(file.c_str(), &facts) != 0) return {};
  constexpr qint64 kNano = 1'000'000'000;
  return {.size = facts.st_size, .time = facts.st_mtim.tv_sec * kNano + facts.st_mtim.tv_nsec, .number = facts.st_ino};
}

void FileWatcher::SetMode(Mode mode) {
  mode_ = mode;
  if (mode_ == Mode::kAutomatic && !pending_.empty()) Accept();
  if (mode_ == Mode::kNever) Dismiss();
  emit ModeChanged();
}

QStringList FileWatcher::GetPending() const { return ToList(pending_); }

void FileWatcher::Accept() {
  const QStringList ids = ToList(std::exchange(pending_, {}));
  if (!ids.isEmpty()) emit FilesChanged(ids);
}

void FileWatcher::Dismiss() {
  pending_.clear();
  emit Dismissed();
}

void FileWatcher::Refresh() {
  std::map<std::string, std::filesystem::path> inputs = session_.GetDocument().GetInputFiles();
  if (inputs == inputs_) return;
  inputs_ = std::move(inputs);
  Follow();
}

void FileWatcher::Follow() {
  readers_.clear();
  for (const auto& [id, file] : inputs_) {
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(file, error);
    if (error || (readers_.size() >= kMostFiles && !readers_.contains(absolute.string()))) continue;
    readers_[absolute.string()].insert(id);
  }
  std::erase_if(stamps_, [&](const auto& entry) { return !readers_.contains(entry.first); });
  QStringList wanted;
  for (const auto& [file, ids] : readers_) {
    stamps_.try_emplace(file, ReadStamp(file));
    const QFileInfo info(QString::fromStdString(file));
    // The folder tells of files that are replaced, and of those that are not there yet.
    if (info.exists()) wanted += info.filePath();
    if (QFileInfo::exists(info.path()) && !wanted.contains(info.path())) wanted += info.path();
  }
  QStringList unwanted;
  for (const QString& path : system_.files() + system_.directories()) {
    if (!wanted.removeOne(path)) unwanted += path;
  }
  if (!unwanted.isEmpty()) system_.removePaths(unwanted);
  if (!wanted.isEmpty()) system_.addPaths(wanted);
}

void FileWatcher::Compare() {
  std::set<std::string> changed;
  for (auto& [file, stamp] : stamps_) {
    const Stamp now = ReadStamp(file);
    if (now == stamp) continue;
    stamp = now;
    changed.insert(readers_[file].begin(), readers_[file].end());
  }
  // A file that was replaced is another one to the system.
  Follow();
  if (changed.empty() || mode_ == Mode::kNever) return;
  pending_.insert(changed.begin(), changed.end());
  if (mode_ == Mode::kAutomatic) return Accept();
  emit Offered(ToList(pending_));
}
