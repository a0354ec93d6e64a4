// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QPointF>
#include <QStringList>
#include <optional>
#include <string>
#include <vector>

#include "Apps/Editor/Canvas/GraphScene.h"

/// Where selected nodes are aligned.
enum class Alignment { kLeft, kRight, kTop, kBottom, kAcross, kDown };

/// What a new node is to be connected with.
struct NewNodeWiring {
  /// A plug that a wire was dragged from.
  std::optional<PlugRef> plug;
  /// A connection that the node is put into.
  std::optional<ScEng::DocumentConnection> connection;
};

/// What the canvas does to the document: each is one step of its history.
class CanvasCommands : public QObject {
  Q_OBJECT

 public:
  explicit CanvasCommands(GraphScene& scene);

  /// Adds a node and selects it.
  void Add(const TypeInfo& type, const QPointF& place, const NewNodeWiring& wiring);
  void AddReaders(const QStringList& files, const QPointF& place);
  /// Connects an output and an input, given in either order, in place of what feeds the input, and of `replaced`.
  void Connect(const PlugRef& one, const PlugRef& other, const std::optional<ScEng::DocumentConnection>& replaced);
  void Disconnect(const std::vector<ScEng::DocumentConnection>& connections);
  /// Tells why something is not done that was asked for with the mouse.
  void Refuse(const QString& reason) { emit Failed(reason); }

  /// Of everything that is selected: nodes, wires and frames.
  void Remove(bool heals);
  void ToggleEnabled();
  void Duplicate(bool keeps_incoming);
  void Copy();
  void Cut();
  void Paste(const QPointF& place);
  void SelectAll();
  void SelectConnected();
  /// Selects the next wire in place of what is selected, of those at the selected node or of all, from the left.
  /// Answers where it is; null without any.
  QRectF SelectNextWire();
  /// The same for frames, in the order of the document.
  QRectF SelectNextFrame();

  void Align(Alignment alignment);
  void Distribute(bool is_across);
  /// Of the selected nodes, or of all.
  void LayOut();
  /// What was dragged, to where the items are now. A node may be put into a connection on the way.
  void Place(const std::vector<std::string>& ids, const std::vector<FrameItem*>& frames,
             const std::optional<ScEng::DocumentConnection>& connection);
  /// Moves the selected nodes and frames by so much.
  void Nudge(const QPointF& offset);

  void AddFrame();
  void SetFrameTitle(std::size_t index, const QString& title);
  void SetFrameColor(const QString& color);
  void Rename(const std::string& id, const QString& now);
  void SetNote(const std::string& id, const QString& note);

 signals:
  /// Why a command was refused.
  void Failed(const QString& message);
  void Added(const std::string& type_name);

 private:
  bool Do(const ScEng::Status& status);
  ScEng::Status ConnectPlugs(const PlugRef& from, const PlugRef& to);
  ScEng::Status ConnectNew(const std::string& id, const TypeInfo& type, const PlugRef& plug);
  ScEng::Status PlacePasted(const std::vector<std::string>& ids, const QPointF& place);

  GraphScene& scene_;
  ScEng::EditSession& session_;
  /// The node whose wires are selected one by one; empty for all wires.
  std::string node_of_wires_;
};
