// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>
#include <memory>
#include <string>
#include <vector>

#include "Apps/Editor/Docks/NodePanel.h"
#include "Host/Documents/GraphDocument.h"
#include "Host/Editing/EditSession.h"
#include "Host/Tools/NodeLibrary.h"

/// The panel of several nodes of one type. It shows the values of the first of them, by a copy that is no part of the
/// document, and marks where the others have different ones; what is changed becomes one command for all of them.
class SharedPanel : public QWidget, private NodeObserver {
  Q_OBJECT

 public:
  /// The nodes are there, and are of the type that `descriptor` describes.
  SharedPanel(ScEng::EditSession& session, const std::shared_ptr<const ScEng::NodeCatalog>& catalog,
              NodeInterface& descriptor, std::vector<std::string> ids, QWidget* parent);
  ~SharedPanel() override;

  [[nodiscard]] const std::vector<std::string>& GetIds() const { return ids_; }
  /// Shows what the first node holds by now.
  void Follow();

 signals:
  void Failed(const QString& message);

 private:
  void OnNodeChanged(Node& node) override;

  ScEng::EditSession& session_;
  std::vector<std::string> ids_;
  ScEng::GraphDocument copies_;
  Node* copy_ = nullptr;
  NodePanel* panel_ = nullptr;
  std::vector<PlugValue> shown_;
  bool is_following_ = false;
};
