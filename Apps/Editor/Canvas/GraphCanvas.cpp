// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/GraphCanvas.h"

#include <QAccessible>
#include <QFileInfo>
#include <QImageReader>
#include <QMenu>
#include <QPixmapCache>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <utility>

#include "Apps/Editor/Canvas/CanvasActions.h"
#include "Apps/Editor/Canvas/GraphView.h"
#include "Apps/Editor/Canvas/InlineEditors.h"
#include "Apps/Editor/Canvas/Minimap.h"
#include "Apps/Editor/Canvas/NodeSearchPopup.h"

GraphCanvas::GraphCanvas(ScEng::EditSession& session, std::shared_ptr<const ScEng::NodeCatalog> catalog,
                         QWidget* parent)
    : QWidget(parent),
      session_(session),
      types_(std::move(catalog)),
      scene_(std::make_unique<GraphScene>(session, types_, palette())),
      commands_(std::make_unique<CanvasCommands>(*scene_)),
      view_(new GraphView(*scene_, *commands_, this)),
      map_(new Minimap(*view_)),
      search_(new NodeSearchPopup(types_, usage_, this)) {
  setObjectName(QStringLiteral("canvas"));
  setAccessibleName(tr("Canvas"));
  view_->setAccessibleName(tr("Graph of nodes"));
  view_->viewport()->setAccessibleName(view_->accessibleName());
  setFocusProxy(view_);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(view_);
  map_->raise();
  // Nodes are kept as they were drawn, so that moving the view costs little: a large display full of them.
  constexpr int kDrawnNodes = 96 * 1024;
  QPixmapCache::setCacheLimit(std::max(QPixmapCache::cacheLimit(), kDrawnNodes));
  actions_ = std::make_unique<CanvasActions>(*this);
  constexpr int kViewDelay = 400;
  view_timer_.setSingleShot(true);
  view_timer_.setInterval(kViewDelay);
  Connect();
  DescribeSelection();
}

GraphCanvas::~GraphCanvas() {
  CloseEditorsInPlace(view_);
  // The view goes before the scene that it shows.
  delete search_;
  delete view_;
}

void GraphCanvas::Connect() {
  connect(commands_.get(), &CanvasCommands::Failed, this, &GraphCanvas::Failed);
  connect(commands_.get(), &CanvasCommands::Added, this,
          [this](const std::string& type_name) { usage_.Count(type_name); });
  connect(scene_.get(), &QGraphicsScene::selectionChanged, this, [this] {
    DescribeSelection();
    emit SelectionChanged();
  });
  connect(scene_.get(), &GraphScene::ShownChanged, this, &GraphCanvas::ShownChanged);
  connect(view_, &GraphView::ViewChanged, this, [this] {
    scene_->SetPlaceForNew(view_->GetCenter());
    if (is_view_known_) view_timer_.start();
  });
  connect(&view_timer_, &QTimer::timeout, this, &GraphCanvas::StoreView);
  connect(view_, &GraphView::ShowRequested, this, [this](const QString& plug) {
    SetShown(plug);
    emit ShowRequested(plug);
  });
  connect(view_, &GraphView::AddRequested, this, &GraphCanvas::OpenSearchAt);
  connect(view_, &GraphView::ChoiceRequested, this, &GraphCanvas::ChoosePlug);
  connect(view_, &GraphView::MenuRequested, this, &GraphCanvas::OpenMenu);
  connect(view_, &GraphView::FrameTitleRequested, this, &GraphCanvas::EditFrameTitle);
  connect(view_, &GraphView::WireDoubleClicked, this, &GraphCanvas::AddReroute);
  connect(view_, &GraphView::FilesDropped, this, &GraphCanvas::TakeFiles);
  connect(search_, &NodeSearchPopup::Chosen, this, [this](const TypeInfo* type) {
    commands_->Add(*type, search_place_, search_wiring_);
    view_->setFocus();
  });
}

bool GraphCanvas::event(QEvent* event) {
  const bool is_shown_first = event->type() == QEvent::Show && !is_view_known_;
  const bool done = QWidget::event(event);
  // Only now is it known how large the view is.
  if (is_shown_first) RestoreView();
  return done;
}

// ---- What is shown ----

void GraphCanvas::SetFacts(const std::vector<ScEng::NodeFacts>& facts) { scene_->SetFacts(facts); }

void GraphCanvas::SetRunning(const QString& id, double fraction) { scene_->SetRunning(id.toStdString(), fraction); }

void GraphCanvas::SetShown(const QString& plug) {
  if (plug == GetShown()) return;
  scene_->SetShown(plug.toStdString());
  StoreView();
}

QString GraphCanvas::GetShown() const { return QString::fromStdString(scene_->GetShown()); }

void GraphCanvas::RestoreView() {
  view_->resize(size());
  map_->Place();
  const auto& view = session_.GetDocument().GetView();
  if (view && view->zoom) view_->SetZoom(*view->zoom, view_->viewport()->rect().center());
  if (view && view->center) {
    view_->SetCenter({view->center->x, view->center->y});
  } else {
    ZoomToAll();
  }
  is_view_known_ = true;
}

void GraphCanvas::StoreView() {
  view_timer_.stop();
  ScEng::DocumentView view;
  if (is_view_known_) {
    const QPointF center = view_->GetCenter();
    view.center = ScEng::Point{std::round(center.x()), std::round(center.y())};
    view.zoom = std::round(view_->GetZoom() * 1000.0) / 1000.0;
  } else if (session_.GetDocument().GetView()) {
    view = *session_.GetDocument().GetView();
  }
  view.shown = scene_->GetShown();
  const ScEng::Status status = session_.SetView(view);
  if (status.IsError()) emit Failed(QString::fromStdString(status.GetMessage()));
}

// ---- Selection ----

QStringList GraphCanvas::GetSelection() const {
  QStringList ids;
  for (const std::string& id : scene_->GetSelectedIds()) ids << QString::fromStdString(id);
  return ids;
}

void GraphCanvas::Select(const QStringList& ids) {
  std::vector<std::string> selected;
  for (const QString& id : ids) selected.push_back(id.toStdString());
  scene_->SelectIds(selected);
}

void GraphCanvas::CenterOn(const QString& id) {
  if (const NodeItem* item = scene_->FindNode(id.toStdString())) view_->SetCenter(item->GetBody().center());
}

void GraphCanvas::ZoomToAll() { view_->ZoomTo(scene_->GetExtent()); }

void GraphCanvas::ZoomToSelection() {
  QRectF extent;
  for (const std::string& id : scene_->GetSelectedIds()) extent |= scene_->FindNode(id)->GetBody();
  view_->ZoomTo(extent.isEmpty() ? scene_->GetExtent() : extent);
}

void GraphCanvas::Reveal(const QRectF& place) {
  if (!place.isNull() && !view_->viewport()->rect().contains(view_->ToViewport(place)))
    view_->SetCenter(place.center());
}

QString GraphCanvas::DescribeSelected() const {
  const QStringList ids = GetSelection();
  constexpr qsizetype kMostNamed = 6;
  const QString text = tr("%n node(s) selected", nullptr, static_cast<int>(ids.size()));
  if (!ids.isEmpty() && ids.size() <= kMostNamed) return text + QStringLiteral(": ") + ids.join(QStringLiteral(", "));
  if (!ids.isEmpty()) return text;
  if (const WireItem* wire = FindSelectedWire()) {
    const ScEng::DocumentConnection& connection = wire->GetConnection();
    return tr("Wire from %1 to %2 selected")
        .arg(QString::fromStdString(connection.from), QString::fromStdString(connection.to));
  }
  for (const FrameItem* frame : scene_->GetFrames()) {
    if (frame->isSelected()) return tr("Frame \"%1\" selected").arg(QString::fromStdString(frame->GetFrame().title));
  }
  return text;
}

void GraphCanvas::DescribeSelection() {
  view_->setAccessibleDescription(DescribeSelected());
  QAccessibleEvent event(view_, QAccessible::DescriptionChanged);
  QAccessible::updateAccessibility(&event);
}

QList<QAction*> GraphCanvas::GetActions() const { return actions_->GetAll(); }

// ---- Adding ----

void GraphCanvas::OpenSearch() { OpenSearchAt(view_->GetCenter(), {}); }

void GraphCanvas::AddNode(const QString& type_name) {
  const TypeInfo* type = types_.FindName(type_name.toStdString());
  if (type == nullptr) {
    emit Failed(tr("There is no node type \"%1\".").arg(type_name));
    return;
  }
  commands_->Add(*type, scene_->FindFreePlace(view_->GetCenter()), {});
}

void GraphCanvas::OpenSearchAt(const QPointF& place, const NewNodeWiring& wiring) {
  search_place_ = place;
  search_wiring_ = wiring;
  NodeSearchPopup::Filter filter;
  if (wiring.plug && wiring.plug->type != PlugType::kNone) {
    const PlugRef plug = *wiring.plug;
    filter = [plug](const TypeInfo& type) { return plug.is_input ? type.Gives(plug.type) : type.Takes(plug.type); };
  } else if (wiring.connection) {
    const WireItem* wire = scene_->FindWire(*wiring.connection);
    const unsigned kind = wire == nullptr ? PlugType::kImage : wire->GetKind();
    filter = [kind](const TypeInfo& type) { return type.Passes(kind); };
  }
  search_->Open(view_->viewport()->mapToGlobal(view_->mapFromScene(place)), std::move(filter));
}

void GraphCanvas::AddReroute(const ScEng::DocumentConnection& connection, const QPointF& place) {
  const TypeInfo* reroute = types_.FindName("ImageRerouteNode");
  const WireItem* wire = scene_->FindWire(connection);
  if (reroute == nullptr || wire == nullptr || !reroute->Passes(wire->GetKind())) {
    OpenSearchAt(place, {std::nullopt, connection});
    return;
  }
  commands_->Add(*reroute, place, {std::nullopt, connection});
}

void GraphCanvas::ChoosePlug(const PlugRef& fixed, const std::string& node,
                             const std::optional<ScEng::DocumentConnection>& replaced) {
  const NodeItem* item = scene_->FindNode(node);
  if (item == nullptr) return;
  const NodeFace& face = item->GetFace();
  std::vector<PlugFace> rows = fixed.is_input ? face.outputs : face.inputs;
  if (!fixed.is_input) {
    for (PlugFace& row : ListFreeAttributes(session_.GetDocument(), types_, face, fixed.type)) rows.push_back(row);
  }
  std::erase_if(rows, [&](const PlugFace& row) { return row.type != fixed.type && row.type != PlugType::kNone; });
  std::vector<PlugFace> free;
  for (const PlugFace& row : rows) {
    if (fixed.is_input || !row.is_connected) free.push_back(row);
  }
  const auto take = [this, fixed, node, replaced](const PlugFace& row) {
    commands_->Connect(fixed, {node, row.name, row.index, row.type, !fixed.is_input}, replaced);
  };
  if (rows.empty()) {
    emit Failed(fixed.is_input ? tr("\"%1\" has no output that fits.").arg(face.title)
                               : tr("\"%1\" has no input that fits.").arg(face.title));
  } else if (free.size() == 1) {
    take(free.front());
  } else if (rows.size() == 1) {
    take(rows.front());
  } else {
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setObjectName(QStringLiteral("canvas.plugs"));
    for (const PlugFace& row : rows) connect(menu->addAction(row.label), &QAction::triggered, this, [=] { take(row); });
    menu->popup(QCursor::pos());
  }
}

void GraphCanvas::ConnectSelected() {
  std::vector<std::string> ids = scene_->GetSelectedIds();
  if (ids.size() != 2) return;
  // Wires lead to the right.
  if (scene_->FindNode(ids[0])->pos().x() > scene_->FindNode(ids[1])->pos().x()) std::swap(ids[0], ids[1]);
  const NodeFace& from = scene_->FindNode(ids[0])->GetFace();
  const NodeFace& to = scene_->FindNode(ids[1])->GetFace();
  std::vector<std::pair<PlugRef, PlugRef>> pairs;
  for (const PlugFace& output : from.outputs) {
    std::vector<PlugFace> inputs = to.inputs;
    for (PlugFace& row : ListFreeAttributes(session_.GetDocument(), types_, to, output.type)) inputs.push_back(row);
    for (const PlugFace& input : inputs) {
      if (input.type != output.type || input.is_connected) continue;
      pairs.emplace_back(PlugRef{from.id, output.name, 0, output.type, false},
                         PlugRef{to.id, input.name, input.index, input.type, true});
    }
  }
  if (pairs.empty()) {
    emit Failed(tr("Nothing of \"%1\" fits a free input of \"%2\".").arg(from.title, to.title));
  } else if (pairs.size() == 1) {
    commands_->Connect(pairs[0].first, pairs[0].second, std::nullopt);
  } else {
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setObjectName(QStringLiteral("canvas.plugs"));
    for (const auto& [output, input] : pairs) {
      const QString text = QStringLiteral("%1 → %2").arg(QString::fromStdString(output.GetPlug()),
                                                         QString::fromStdString(input.GetPlug()));
      connect(menu->addAction(text), &QAction::triggered, this,
              [this, out = output, in = input] { commands_->Connect(out, in, std::nullopt); });
    }
    menu->popup(view_->viewport()->mapToGlobal(view_->ToViewport(scene_->FindNode(ids[1])->GetBody()).topLeft()));
  }
}

WireItem* GraphCanvas::FindSelectedWire() const {
  for (WireItem* wire : scene_->GetAllWires()) {
    if (wire->isSelected()) return wire;
  }
  return nullptr;
}

void GraphCanvas::InsertOnSelected(bool is_reroute) {
  const WireItem* wire = FindSelectedWire();
  if (wire == nullptr) return;
  const ScEng::DocumentConnection connection = wire->GetConnection();
  const QPointF middle = (wire->GetStart() + wire->GetEnd()) / 2;
  if (is_reroute) {
    AddReroute(connection, middle);
  } else {
    OpenSearchAt(middle, {std::nullopt, connection});
  }
}

void GraphCanvas::TakeFiles(const QStringList& files, const QPointF& place) {
  QStringList images;
  QString document;
  for (const QString& file : files) {
    const bool is_document = QFileInfo(file).suffix().compare(QLatin1String("json"), Qt::CaseInsensitive) == 0;
    if (is_document) document = file;
    if (!is_document) images << file;
  }
  if (!images.isEmpty()) commands_->AddReaders(images, place);
  // The last thing that is done: another document may take the place of this one.
  if (!document.isEmpty()) emit OpenRequested(document);
}

// ---- Menus and fields ----

void GraphCanvas::OpenMenu(const QPoint& global) {
  auto* menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  menu->setObjectName(QStringLiteral("canvas.menu"));
  actions_->FillMenu(*menu);
  menu->popup(global);
}

void GraphCanvas::FillMenu(QMenu& menu) { actions_->FillMenu(menu); }

void GraphCanvas::ShowSelected() {
  const std::vector<std::string> ids = scene_->GetSelectedIds();
  if (!ids.empty()) view_->RequestShow(ids.front());
}

void GraphCanvas::RenameSelected() {
  const std::vector<std::string> ids = scene_->GetSelectedIds();
  for (const FrameItem* frame : scene_->GetFrames()) {
    if (ids.empty() && frame->isSelected()) return EditFrameTitle(frame->GetIndex());
  }
  if (ids.empty()) return;
  const std::string id = ids.front();
  const QRectF body = scene_->FindNode(id)->GetBody();
  EditLineInPlace(view_, view_->ToViewport(QRectF(body.topLeft(), QSizeF(body.width(), 26))), tr("Name of the node"),
                  QString::fromStdString(id), [this, id](const QString& now) { commands_->Rename(id, now); });
}

void GraphCanvas::EditNote() {
  const std::vector<std::string> ids = scene_->GetSelectedIds();
  if (ids.empty()) return;
  const std::string id = ids.front();
  const QRectF body = scene_->FindNode(id)->GetBody();
  const QString before = QString::fromStdString(session_.GetDocument().GetNote(id));
  EditTextInPlace(view_, view_->ToViewport(QRectF(body.bottomLeft(), QSizeF(body.width(), 60))), tr("Note of the node"),
                  before, [this, id](const QString& now) { commands_->SetNote(id, now); });
}

void GraphCanvas::EditFrameTitle(std::size_t index) {
  if (index >= scene_->GetFrames().size()) return;
  const FrameItem* frame = scene_->GetFrames()[index];
  EditLineInPlace(view_, view_->ToViewport(frame->GetTitleBox()), tr("Title of the frame"),
                  QString::fromStdString(frame->GetFrame().title),
                  [this, index](const QString& now) { commands_->SetFrameTitle(index, now); });
}
