// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPointer>
#include <QRubberBand>
#include <QStringList>
#include <QWidget>
#include <memory>
#include <string>
#include <vector>

#include "Apps/Editor/Docks/SessionWatch.h"
#include "Host/Editing/EditSession.h"
#include "Host/Tools/NodeLibrary.h"

class NodeHeader;
class NodePanel;
class QLabel;
class QMenu;
class QScrollArea;
class SharedPanel;

/// The attributes of the selected nodes: the panel of one node, or one panel for several nodes of a type.
class AttributesDock : public QWidget {
  Q_OBJECT

 public:
  AttributesDock(ScEng::EditSession& session, std::shared_ptr<const ScEng::NodeCatalog> catalog,
                 QWidget* parent = nullptr);
  ~AttributesDock() override;

  void SetSelection(const QStringList& ids);

  /// The attribute "id.name" of the row at a place of the screen, if it takes what a plug of this kind delivers and
  /// belongs to another node than `from`; its row is marked, and no other. Empty where there is none.
  std::string OfferRow(const QPoint& global, const std::string& from, unsigned plug_type);
  void WithdrawRow();

 signals:
  /// Asks for the page of a node type, by its class name.
  void HelpRequested(const QString& type_name);
  /// A line about what could not be done.
  void Failed(const QString& message);

 private:
  void Refresh();
  void ShowHeader(const std::vector<std::string>& ids);
  /// Makes the panel anew where the nodes are other ones than those it shows.
  void ShowPanel(const std::vector<std::string>& ids);
  void ClearPanel(const QString& text);
  /// Those of the selection that are there.
  [[nodiscard]] std::vector<std::string> FindIds() const;
  /// The type that all nodes have; null for several types, and for unknown ones.
  [[nodiscard]] NodeInterface* FindType(const std::vector<std::string>& ids) const;

  void Rename(const QString& now);
  void Reset();
  void FillPresets(QMenu& menu);
  void LoadPreset(const QString& name);
  void AskForPreset();
  void SavePreset(const QString& name);
  void FillCopyMenu(QMenu& menu);
  void Report(const ScEng::Status& status);

  ScEng::EditSession& session_;
  std::shared_ptr<const ScEng::NodeCatalog> catalog_;
  SessionWatch watch_;
  std::vector<std::string> selection_;
  NodeHeader* header_ = nullptr;
  QScrollArea* area_ = nullptr;
  QLabel* empty_ = nullptr;
  NodePanel* panel_ = nullptr;
  SharedPanel* shared_ = nullptr;
  /// Around the row that a wire can be dropped on.
  QPointer<QRubberBand> mark_;
};
