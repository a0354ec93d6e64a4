// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Apps/Editor/Docks/SessionWatch.h"
#include "Host/Editing/EditSession.h"

class QLabel;
class QPushButton;
class QTreeWidget;

/// Something that a document needs and this machine does not have.
struct MissingInput {
  std::string id;
  /// The attribute that names a file; empty for a node of unknown type.
  std::string attribute;
  std::filesystem::path file;

  friend bool operator==(const MissingInput&, const MissingInput&) = default;
};

/// Readers of files, there or not, and nodes of unknown type.
std::vector<MissingInput> ListInputs(const ScEng::GraphDocument& document);

/// Whether a file is there: a question that may take as long as a network does.
using FileCheck = std::function<bool(const std::filesystem::path& file)>;
bool IsFileThere(const std::filesystem::path& file);

/// Those of the inputs that are not there. May be called on any thread.
std::vector<MissingInput> KeepMissing(std::vector<MissingInput> inputs, const FileCheck& is_there = IsFileThere);

/// Gives a reader another file by a command. With it, those of `all` that lie in the same folder are found too.
ScEng::Status LocateInput(ScEng::EditSession& session, const MissingInput& missing,
                          const std::vector<MissingInput>& all, const std::filesystem::path& file);

/// Lists what is missing, and lets a person say where it is. It looks for files on a thread of its own.
class MissingInputs : public QWidget {
  Q_OBJECT

 public:
  explicit MissingInputs(ScEng::EditSession& session, QWidget* parent = nullptr, FileCheck is_there = IsFileThere);
  ~MissingInputs() override;

  [[nodiscard]] int Count() const { return static_cast<int>(missing_.size()); }
  /// Whether files are still being looked for.
  [[nodiscard]] bool IsLooking() const { return is_looking_; }
  /// Looks again at what is there.
  void Refresh();

 signals:
  void CountChanged(int count);
  /// What is missing is known.
  void Looked();
  void NodeActivated(const QString& id);
  void Failed(const QString& message);

 private:
  /// Takes what a thread has found to its window, which may be gone by then.
  struct Answer;

  void Look(std::vector<MissingInput> inputs);
  void Show(std::vector<MissingInput> missing);
  void ShowSelected();
  void Locate();
  [[nodiscard]] const MissingInput* GetSelected() const;

  ScEng::EditSession& session_;
  SessionWatch watch_;
  FileCheck is_there_;
  std::shared_ptr<Answer> answer_;
  std::vector<MissingInput> missing_;
  bool is_looking_ = false;
  /// The document has changed while files were being looked for.
  bool looks_again_ = false;
  bool is_shown_ = false;
  QTreeWidget* list_ = nullptr;
  QLabel* text_ = nullptr;
  QPushButton* locate_ = nullptr;
};
