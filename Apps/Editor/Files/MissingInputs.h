// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>
#include <filesystem>
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

/// Readers of files that are not there, and nodes of unknown type.
std::vector<MissingInput> FindMissingInputs(const ScEng::GraphDocument& document);

/// Gives a reader another file by a command. With it, other missing files that lie in the same folder are found too.
ScEng::Status LocateInput(ScEng::EditSession& session, const MissingInput& missing, const std::filesystem::path& file);

/// Lists what is missing, and lets a person say where it is. The window that it stands in shows it while there is any.
class MissingInputs : public QWidget {
  Q_OBJECT

 public:
  explicit MissingInputs(ScEng::EditSession& session, QWidget* parent = nullptr);
  ~MissingInputs() override;

  [[nodiscard]] int Count() const { return static_cast<int>(missing_.size()); }
  /// Looks again at what is there.
  void Refresh();

 signals:
  void CountChanged(int count);
  void NodeActivated(const QString& id);
  void Failed(const QString& message);

 private:
  void ShowSelected();
  void Locate();
  [[nodiscard]] const MissingInput* GetSelected() const;

  ScEng::EditSession& session_;
  SessionWatch watch_;
  std::vector<MissingInput> missing_;
  bool is_shown_ = false;
  QTreeWidget* list_ = nullptr;
  QLabel* text_ = nullptr;
  QPushButton* locate_ = nullptr;
};
