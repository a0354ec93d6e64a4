// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDialog>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Host/Editing/EditSession.h"
#include "Host/Editing/Journals.h"
#include "Host/Tools/NodeLibrary.h"

class QLabel;
class QPushButton;
class QTreeWidget;

/// Asks what is to become of documents that were being edited when a program ended early.
class RecoveryDialog : public QDialog {
  Q_OBJECT

 public:
  /// Offers the journals of one document where it is given, else all. They are looked for again whenever the window
  /// becomes active: another one may have taken some of them.
  RecoveryDialog(std::shared_ptr<const ScEng::NodeCatalog> catalog, std::filesystem::path state_folder,
                 std::filesystem::path document, QWidget* parent = nullptr);
  ~RecoveryDialog() override;

  /// The journals that nobody uses: of one document where it is given, else of all.
  static std::vector<ScEng::FoundJournal> FindJournals(const std::filesystem::path& state_folder,
                                                       const std::filesystem::path& document,
                                                       std::vector<std::string>& notes);

  /// The document that was recovered; null when none was.
  [[nodiscard]] std::unique_ptr<ScEng::EditSession> TakeSession();

 protected:
  bool event(QEvent* event) override;

 private:
  void Look();
  void FillList();
  void Recover();
  void Discard();
  void ShowSelected();
  [[nodiscard]] int GetSelected() const;

  std::shared_ptr<const ScEng::NodeCatalog> catalog_;
  std::filesystem::path state_folder_;
  std::filesystem::path document_;
  std::vector<ScEng::FoundJournal> journals_;
  std::unique_ptr<ScEng::EditSession> session_;
  QTreeWidget* list_ = nullptr;
  QLabel* message_ = nullptr;
  QPushButton* recover_ = nullptr;
  QPushButton* discard_ = nullptr;
};
