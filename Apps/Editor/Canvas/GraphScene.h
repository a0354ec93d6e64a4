// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QGraphicsScene>
#include <QTimer>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "Apps/Editor/Canvas/CanvasColors.h"
#include "Apps/Editor/Canvas/FrameItem.h"
#include "Apps/Editor/Canvas/NodeItem.h"
#include "Apps/Editor/Canvas/NodeTypes.h"
#include "Apps/Editor/Canvas/WireItem.h"
#include "Host/Editing/BackgroundEvaluator.h"
#include "Host/Editing/EditSession.h"

/// The items of a document. It follows the document by what it is told as its observer, and never changes it.
class GraphScene : public QGraphicsScene, public ScEng::EditObserver {
  Q_OBJECT

 public:
  /// Session and types outlive the scene.
  GraphScene(ScEng::EditSession& session, const NodeTypes& types, const QPalette& palette);
  ~GraphScene() override;

  [[nodiscard]] ScEng::EditSession& GetSession() const { return session_; }
  [[nodiscard]] const NodeTypes& GetTypes() const { return types_; }
  [[nodiscard]] const CanvasColors& GetColors() const { return colors_; }
  void SetPalette(const QPalette& palette);

  // ---- Items ----

  [[nodiscard]] NodeItem* FindNode(const std::string& id) const;
  [[nodiscard]] WireItem* FindWire(const ScEng::DocumentConnection& connection) const;
  /// The wires at both sides of a node.
  [[nodiscard]] const std::vector<WireItem*>& GetWires(const std::string& id) const;
  [[nodiscard]] const std::vector<WireItem*>& GetAllWires() const { return all_wires_; }
  [[nodiscard]] const std::vector<FrameItem*>& GetFrames() const { return frames_; }
  /// Of all nodes, in the order of the document.
  [[nodiscard]] const std::vector<std::string>& GetIds() const;
  /// Where all nodes and frames are; empty without any.
  [[nodiscard]] QRectF GetExtent() const;

  // ---- What is at a place ----

  [[nodiscard]] NodeItem* NodeAt(const QPointF& place) const;
  [[nodiscard]] std::optional<PlugRef> PlugAt(const QPointF& place, double reach) const;
  [[nodiscard]] WireItem* WireAt(const QPointF& place, double reach) const;
  /// The frame whose title or grip is there.
  [[nodiscard]] FrameItem* FrameAt(const QPointF& place) const;

  // ---- Selection ----

  /// Of the nodes, in the order of the document.
  [[nodiscard]] std::vector<std::string> GetSelectedIds() const;
  void SelectIds(const std::vector<std::string>& ids);
  /// The selected nodes and those in selected frames, in the order of the document.
  [[nodiscard]] std::vector<std::string> GetIdsToMove() const;

  // ---- What is shown ----

  void SetFacts(const std::vector<ScEng::NodeFacts>& facts);
  void SetRunning(const std::string& id, double fraction);
  /// "id.plug"
  void SetShown(const std::string& plug);
  [[nodiscard]] const std::string& GetShown() const { return shown_; }
  void SetDims(bool dims);
  void SetHasThumbnails(bool has_thumbnails);

  // ---- Places ----

  /// The wires of a node follow it to where it is dragged.
  void UpdateWires(const std::string& id);
  /// Puts items back to where the document has them.
  void ResetPlaces(const std::vector<std::string>& ids);
  /// Places for nodes as the automatic layout would have them, the top left one where it is now.
  [[nodiscard]] std::vector<ScEng::EditSession::Placement> LayOut(const std::vector<std::string>& ids) const;
  /// A free place of the size of a node, at or below `wanted`.
  [[nodiscard]] QPointF FindFreePlace(const QPointF& wanted) const;
  /// Where a node that has no position is put when it is added.
  void SetPlaceForNew(const QPointF& place) { place_for_new_ = place; }

  void OnNodeAdded(const std::string& id) override;
  void OnNodeRemoved(const std::string& id) override;
  void OnNodeRenamed(const std::string& before, const std::string& now) override;
  void OnNodeChanged(const std::string& id) override;
  void OnConnectionAdded(const ScEng::DocumentConnection& connection) override;
  void OnConnectionRemoved(const ScEng::DocumentConnection& connection) override;
  void OnFramesChanged() override;
  void OnViewChanged() override;

 signals:
  /// Anything that a small map of the scene would show differently.
  void Changed();
  /// The document has another plug to show.
  void ShownChanged();

 private:
  void ReadAll();
  void ReadFrames();
  NodeItem* AddItem(const std::string& id);
  WireItem* AddWire(const ScEng::DocumentConnection& connection);
  void RefreshFace(const std::string& id);
  void PlaceAll();
  void PlaceItem(NodeItem& item);
  void ChangeSoon();
  void UpdateDimming();
  [[nodiscard]] std::vector<QPointF> MakeLayout(const std::vector<std::string>& ids) const;

  ScEng::EditSession& session_;
  const NodeTypes& types_;
  CanvasColors colors_;
  std::unordered_map<std::string, NodeItem*> nodes_;
  std::unordered_map<std::string, std::vector<WireItem*>> wires_;
  std::vector<WireItem*> all_wires_;
  std::vector<FrameItem*> frames_;
  /// Of nodes without a position of their own.
  std::unordered_map<std::string, QPointF> automatic_;
  std::string running_;
  std::string shown_;
  QPointF place_for_new_;
  bool dims_ = true;
  bool has_thumbnails_ = true;
  bool is_reading_ = false;
  QTimer change_timer_;
};
