// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QAction>
#include <QList>
#include <QTimer>
#include <QWidget>
#include <memory>
#include <vector>

#include "Apps/Editor/Canvas/CanvasCommands.h"
#include "Apps/Editor/Canvas/NodeTypes.h"
#include "Apps/Editor/Canvas/NodeUsage.h"
#include "Host/Editing/BackgroundEvaluator.h"
#include "Host/Editing/EditSession.h"

class CanvasActions;
class GraphView;
class Minimap;
class NodeSearchPopup;
class QMenu;

/// The graph of a document as it is edited: nodes, wires and frames, and everything that mouse and keyboard do to them.
/// Every change is a command of the session.
class GraphCanvas : public QWidget {
  Q_OBJECT

 public:
  /// The session outlives the canvas.
  GraphCanvas(ScEng::EditSession& session, std::shared_ptr<const ScEng::NodeCatalog> catalog,
              QWidget* parent = nullptr);
  ~GraphCanvas() override;

  void SetFacts(const std::vector<ScEng::NodeFacts>& facts);
  /// The node that is being evaluated; an empty id when nothing is.
  void SetRunning(const QString& id, double fraction);

  /// The image that is shown, "id.plug"; empty for none. Kept in the view of the document.
  void SetShown(const QString& plug);
  [[nodiscard]] QString GetShown() const;

  /// Ids of nodes, in the order of the document.
  [[nodiscard]] QStringList GetSelection() const;
  void Select(const QStringList& ids);
  void CenterOn(const QString& id);
  void ZoomToAll();
  /// Shows the part of the graph that the document names, or all of it, at the present size of the canvas.
  void RestoreView();
  /// Opens the search for a node type in the middle of the canvas.
  void OpenSearch();
  /// Adds a node of a type in the middle of the canvas, as a list of types beside it would ask for.
  void AddNode(const QString& type_name);

  /// Every action, with object name, text and shortcut, for menus and the page of shortcuts. They work while the canvas
  /// or something in it has the keyboard.
  [[nodiscard]] QList<QAction*> GetActions() const;
  /// Adds those that mean something with the present selection to a menu, in groups.
  void FillMenu(QMenu& menu);

  /// Which node types were added, to be kept between two runs of the program.
  [[nodiscard]] QStringList GetUsage() const { return usage_.Save(); }
  void SetUsage(const QStringList& usage) { usage_.Load(usage); }

  /// Writes the view into the document now rather than soon, before it is saved.
  void StoreView();

  [[nodiscard]] GraphView& GetView() const { return *view_; }
  [[nodiscard]] GraphScene& GetScene() const { return *scene_; }

 signals:
  /// Also while a command is being made, when no other can be given.
  void SelectionChanged();
  /// What is shown goes by another name, or a command has put something else in its place. Told like the selection.
  void ShownChanged();
  /// The person wants to see this image.
  void ShowRequested(const QString& plug);
  /// A command was refused; one line for people.
  void Failed(const QString& message);
  /// The page of a node's type is wanted.
  void HelpRequested(const QString& id);
  /// A document was dropped on the canvas.
  void OpenRequested(const QString& file);

 protected:
  bool event(QEvent* event) override;

 private:
  friend class CanvasActions;
  void Connect();
  void OpenSearchAt(const QPointF& place, const NewNodeWiring& wiring);
  void ChoosePlug(const PlugRef& fixed, const std::string& node,
                  const std::optional<ScEng::DocumentConnection>& replaced);
  void OpenMenu(const QPoint& global);
  void ConnectSelected();
  [[nodiscard]] WireItem* FindSelectedWire() const;
  void InsertOnSelected(bool is_reroute);
  void ShowSelected();
  void RenameSelected();
  void EditNote();
  void EditFrameTitle(std::size_t index);
  void AddReroute(const ScEng::DocumentConnection& connection, const QPointF& place);
  void TakeFiles(const QStringList& files, const QPointF& place);
  void ZoomToSelection();
  /// Moves the view to a place that it does not show whole.
  void Reveal(const QRectF& place);
  [[nodiscard]] QString DescribeSelected() const;
  void DescribeSelection();

  ScEng::EditSession& session_;
  NodeTypes types_;
  NodeUsage usage_;
  std::unique_ptr<GraphScene> scene_;
  std::unique_ptr<CanvasCommands> commands_;
  GraphView* view_;
  Minimap* map_;
  NodeSearchPopup* search_;
  std::unique_ptr<CanvasActions> actions_;
  QTimer view_timer_;
  bool is_view_known_ = false;
  QPointF search_place_;
  NewNodeWiring search_wiring_;
};
