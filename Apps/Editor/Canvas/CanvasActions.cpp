// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/CanvasActions.h"

#include <QIcon>
#include <QPixmap>
#include <QPointer>
#include <algorithm>
#include <utility>

#include "Apps/Editor/Canvas/GraphCanvas.h"
#include "Apps/Editor/Canvas/GraphView.h"
#include "Apps/Editor/Canvas/Minimap.h"

namespace {

struct FrameColor {
  const char* name;
  const char* color;
};

constexpr FrameColor kFrameColors[] = {
    {QT_TRANSLATE_NOOP("CanvasActions", "Gray"), ""},          {QT_TRANSLATE_NOOP("CanvasActions", "Blue"), "#4a7fd6"},
    {QT_TRANSLATE_NOOP("CanvasActions", "Teal"), "#2f9d94"},   {QT_TRANSLATE_NOOP("CanvasActions", "Green"), "#5a9e4b"},
    {QT_TRANSLATE_NOOP("CanvasActions", "Yellow"), "#c79a2b"}, {QT_TRANSLATE_NOOP("CanvasActions", "Red"), "#c65353"},
    {QT_TRANSLATE_NOOP("CanvasActions", "Purple"), "#8d6bc7"},
};

}  // namespace

CanvasActions::CanvasActions(GraphCanvas& canvas) : canvas_(canvas) {
  MakeNodeActions();
  MakePlaceActions();
  MakeViewActions();
  QObject::connect(&canvas.GetScene(), &QGraphicsScene::selectionChanged, &canvas, [this] { Update(); });
  Update();
}

QAction* CanvasActions::Add(const char* name, const QString& text, const QList<QKeySequence>& keys,
                            std::function<void()> act) {
  auto* action = new QAction(text, &canvas_);
  action->setObjectName(QStringLiteral("canvas.") + QLatin1String(name));
  action->setShortcuts(keys);
  action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
  QObject::connect(action, &QAction::triggered, &canvas_, [act = std::move(act)] { act(); });
  canvas_.addAction(action);
  actions_ << action;
  return action;
}

QAction* CanvasActions::AddSwitch(const char* name, const QString& text, bool is_on, std::function<void(bool)> act) {
  QAction* action = Add(name, text, {}, [] {});
  action->setCheckable(true);
  action->setChecked(is_on);
  QObject::connect(action, &QAction::toggled, &canvas_, [act = std::move(act)](bool now) { act(now); });
  return action;
}

QAction* CanvasActions::Find(const QString& name) const {
  for (QAction* action : actions_) {
    if (action->objectName() == QStringLiteral("canvas.") + name) return action;
  }
  return nullptr;
}

void CanvasActions::MakeNodeActions() {
  CanvasCommands& commands = *canvas_.commands_;
  GraphCanvas& canvas = canvas_;
  Add("add", tr("Add Node…"), {Qt::Key_Tab, Qt::SHIFT | Qt::Key_A},
      [&canvas] { canvas.OpenSearchAt(canvas.view_->GetPointer(), {}); });
  Add("show", tr("Show"), {Qt::Key_V}, [&canvas] { canvas.ShowSelected(); });
  Add("cut", tr("Cut"), QKeySequence::keyBindings(QKeySequence::Cut), [&commands] { commands.Cut(); });
  Add("copy", tr("Copy"), QKeySequence::keyBindings(QKeySequence::Copy), [&commands] { commands.Copy(); });
  Add("paste", tr("Paste"), QKeySequence::keyBindings(QKeySequence::Paste),
      [&canvas, &commands] { commands.Paste(canvas.view_->GetPointer()); });
  Add("duplicate", tr("Duplicate"), {Qt::CTRL | Qt::Key_D}, [&commands] { commands.Duplicate(false); });
  Add("duplicateWired", tr("Duplicate with Inputs"), {Qt::CTRL | Qt::SHIFT | Qt::Key_D},
      [&commands] { commands.Duplicate(true); });
  Add("delete", tr("Delete"), {Qt::Key_Delete, Qt::Key_Backspace}, [&commands] { commands.Remove(false); });
  Add("heal", tr("Delete and Reconnect"), {Qt::Key_X, Qt::CTRL | Qt::Key_Delete},
      [&commands] { commands.Remove(true); });
  Add("mute", tr("Mute or Unmute"), {Qt::Key_M}, [&commands] { commands.ToggleEnabled(); });
  Add("rename", tr("Rename…"), {Qt::Key_F2}, [&canvas] { canvas.RenameSelected(); });
  Add("note", tr("Edit Note…"), {Qt::Key_N}, [&canvas] { canvas.EditNote(); });
  Add("connect", tr("Connect Selected…"), {Qt::Key_C}, [&canvas] { canvas.ConnectSelected(); });
  Add("insert", tr("Insert Node…"), {Qt::Key_I}, [&canvas] { canvas.InsertOnSelected(false); });
  Add("reroute", tr("Insert Reroute Point"), {Qt::Key_R}, [&canvas] {
    canvas.InsertOnSelected(true);
  })->setVisible(canvas.types_.FindName("ImageRerouteNode") != nullptr);
  Add("selectAll", tr("Select All"), QKeySequence::keyBindings(QKeySequence::SelectAll),
      [&commands] { commands.SelectAll(); });
  Add("selectConnected", tr("Select Connected"), {Qt::Key_L}, [&commands] { commands.SelectConnected(); });
  const auto select_next = [&canvas](const QRectF& place) { canvas.Reveal(place); };
  Add("selectWire", tr("Select Next Wire"), {Qt::Key_W}, [=, &commands] { select_next(commands.SelectNextWire()); });
  Add("selectFrame", tr("Select Next Frame"), {Qt::SHIFT | Qt::Key_F},
      [=, &commands] { select_next(commands.SelectNextFrame()); });
  Add("help", tr("About This Node Type"), {Qt::Key_F1}, [&canvas] {
    const QStringList ids = canvas.GetSelection();
    if (!ids.isEmpty()) emit canvas.HelpRequested(ids.front());
  });
}

void CanvasActions::MakePlaceActions() {
  CanvasCommands& commands = *canvas_.commands_;
  Add("layOut", tr("Lay Out"), {Qt::CTRL | Qt::SHIFT | Qt::Key_L}, [&commands] { commands.LayOut(); });
  const auto align = [&](const char* name, const QString& text, Alignment alignment) {
    Add(name, text, {}, [&commands, alignment] { commands.Align(alignment); });
  };
  align("alignLeft", tr("Align Left"), Alignment::kLeft);
  align("alignRight", tr("Align Right"), Alignment::kRight);
  align("alignTop", tr("Align Top"), Alignment::kTop);
  align("alignBottom", tr("Align Bottom"), Alignment::kBottom);
  align("alignAcross", tr("Align in a Row"), Alignment::kAcross);
  align("alignDown", tr("Align in a Column"), Alignment::kDown);
  Add("distributeAcross", tr("Distribute Across"), {}, [&commands] { commands.Distribute(true); });
  Add("distributeDown", tr("Distribute Down"), {}, [&commands] { commands.Distribute(false); });
  Add("frame", tr("Add Frame"), {Qt::CTRL | Qt::SHIFT | Qt::Key_F}, [&commands] { commands.AddFrame(); });
  constexpr double kStep = 12.0;
  const auto nudge = [&](const char* name, const QString& text, Qt::Key key, const QPointF& offset) {
    Add(name, text, {Qt::CTRL | key}, [&commands, offset] { commands.Nudge(offset); });
  };
  nudge("moveLeft", tr("Move Left"), Qt::Key_Left, {-kStep, 0});
  nudge("moveRight", tr("Move Right"), Qt::Key_Right, {kStep, 0});
  nudge("moveUp", tr("Move Up"), Qt::Key_Up, {0, -kStep});
  nudge("moveDown", tr("Move Down"), Qt::Key_Down, {0, kStep});
}

void CanvasActions::MakeViewActions() {
  GraphCanvas& canvas = canvas_;
  Add("zoomSelection", tr("Zoom to Selection"), {Qt::Key_F}, [&canvas] { canvas.ZoomToSelection(); });
  Add("zoomAll", tr("Zoom to All"), {Qt::Key_A, Qt::Key_Home}, [&canvas] { canvas.ZoomToAll(); });
  const auto zoom = [&canvas](double factor) {
    GraphView& view = *canvas.view_;
    view.SetZoom(factor == 0.0 ? 1.0 : view.GetZoom() * factor, view.viewport()->rect().center());
  };
  Add("zoomIn", tr("Zoom In"), {Qt::Key_Plus, Qt::CTRL | Qt::Key_Plus}, [zoom] { zoom(1.25); });
  Add("zoomOut", tr("Zoom Out"), {Qt::Key_Minus, Qt::CTRL | Qt::Key_Minus}, [zoom] { zoom(0.8); });
  Add("zoomLife", tr("Life Size"), {Qt::CTRL | Qt::Key_0}, [zoom] { zoom(0.0); });
  AddSwitch("thumbnails", tr("Thumbnails"), true, [&canvas](bool on) { canvas.GetScene().SetHasThumbnails(on); });
  AddSwitch("dim", tr("Dim What Does Not Feed the Shown Node"), true,
            [&canvas](bool on) { canvas.GetScene().SetDims(on); });
  AddSwitch("map", tr("Map"), true, [&canvas](bool on) { canvas.map_->setVisible(on); });
}

void CanvasActions::Update() {
  const std::vector<std::string> ids = canvas_.GetScene().GetSelectedIds();
  const bool has_any = !canvas_.GetScene().selectedItems().isEmpty();
  for (const char* name :
       {"show", "cut", "copy", "duplicate", "duplicateWired", "mute", "note", "selectConnected", "help", "frame"}) {
    Find(QLatin1String(name))->setEnabled(!ids.empty());
  }
  const std::vector<FrameItem*>& frames = canvas_.GetScene().GetFrames();
  const bool has_frame = std::any_of(frames.begin(), frames.end(), [](auto* frame) { return frame->isSelected(); });
  for (const char* name : {"moveLeft", "moveRight", "moveUp", "moveDown"}) {
    Find(QLatin1String(name))->setEnabled(!ids.empty() || has_frame);
  }
  for (const char* name : {"delete", "heal"}) Find(QLatin1String(name))->setEnabled(has_any);
  for (const char* name : {"alignLeft", "alignRight", "alignTop", "alignBottom", "alignAcross", "alignDown"}) {
    Find(QLatin1String(name))->setEnabled(ids.size() > 1);
  }
  Find(QStringLiteral("connect"))->setEnabled(ids.size() == 2);
  Find(QStringLiteral("rename"))->setEnabled(has_any);
  for (const char* name : {"insert", "reroute"}) Find(QLatin1String(name))->setEnabled(canvas_.FindSelectedWire());
  for (const char* name : {"distributeAcross", "distributeDown"}) Find(QLatin1String(name))->setEnabled(ids.size() > 2);
}

void CanvasActions::FillMenu(QMenu& menu) {
  const auto add = [&](QMenu& to, std::initializer_list<const char*> names) {
    for (const char* name : names) to.addAction(Find(QLatin1String(name)));
    to.addSeparator();
  };
  const std::vector<std::string> ids = canvas_.GetScene().GetSelectedIds();
  bool has_frame = false;
  for (const FrameItem* frame : canvas_.GetScene().GetFrames()) has_frame = has_frame || frame->isSelected();
  if (canvas_.FindSelectedWire() != nullptr) add(menu, {"insert", "reroute"});
  if (ids.size() == 2) add(menu, {"connect"});
  if (ids.empty()) {
    add(menu, {"add", "paste"});
  } else {
    add(menu, {"show", "mute", "rename", "note"});
    add(menu, {"cut", "copy", "paste", "duplicate", "duplicateWired"});
  }
  if (!canvas_.GetScene().selectedItems().isEmpty()) add(menu, {"delete", "heal"});
  if (has_frame) FillFrameMenu(menu);
  QMenu* select = menu.addMenu(tr("Select"));
  add(*select, {"selectAll", "selectConnected", "selectWire", "selectFrame"});
  QMenu* arrange = menu.addMenu(tr("Arrange"));
  add(*arrange, {"layOut", "frame"});
  add(*arrange, {"alignLeft", "alignRight", "alignTop", "alignBottom", "alignAcross", "alignDown"});
  add(*arrange, {"distributeAcross", "distributeDown"});
  QMenu* view = menu.addMenu(tr("View"));
  add(*view, {"zoomSelection", "zoomAll", "zoomIn", "zoomOut", "zoomLife"});
  add(*view, {"thumbnails", "dim", "map"});
  if (!ids.empty()) add(menu, {"help"});
}

void CanvasActions::FillFrameMenu(QMenu& menu) {
  QMenu* colors = menu.addMenu(tr("Frame Color"));
  for (const FrameColor& choice : kFrameColors) {
    QPixmap swatch(16, 16);
    swatch.fill(*choice.color == '\0' ? QColor(Qt::gray) : QColor(QLatin1String(choice.color)));
    const QString color = QLatin1String(choice.color);
    QAction* action = colors->addAction(QIcon(swatch), tr(choice.name));
    CanvasCommands& commands = *canvas_.commands_;
    QObject::connect(action, &QAction::triggered, &canvas_, [&commands, color] { commands.SetFrameColor(color); });
  }
  menu.addSeparator();
}
