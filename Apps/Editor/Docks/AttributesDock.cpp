// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/AttributesDock.h"

#include <QApplication>
#include <QClipboard>
#include <QFrame>
#include <QInputDialog>
#include <QLabel>
#include <QMenu>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "Apps/Editor/Docks/AttributeText.h"
#include "Apps/Editor/Docks/NodeHeader.h"
#include "Apps/Editor/Docks/NodePanel.h"
#include "Apps/Editor/Docks/PanelGestures.h"
#include "Apps/Editor/Docks/Presets.h"
#include "Apps/Editor/Docks/SharedPanel.h"
#include "Host/Tools/Guard.h"

namespace {

template <class Function>
QString AskLibrary(const char* operation, const Function& function) {
  return QString::fromStdString(ScEng::AskGuarded(operation, std::string(), function));
}

std::string GetTypeName(const NodeInterface& descriptor) {
  return ScEng::AskGuarded("GetTypeName", std::string(), [&] { return descriptor.GetNodeFactory()->GetTypeName(); });
}

}  // namespace

AttributesDock::AttributesDock(ScEng::EditSession& session, std::shared_ptr<const ScEng::NodeCatalog> catalog,
                               QWidget* parent)
    : QWidget(parent), session_(session), catalog_(std::move(catalog)), watch_(session, this) {
  setObjectName(QStringLiteral("attributes"));
  setWindowTitle(tr("Attributes"));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  header_ = new NodeHeader(this);
  layout->addWidget(header_);
  area_ = new QScrollArea(this);
  area_->setObjectName(QStringLiteral("attributes.area"));
  area_->setAccessibleName(tr("Attributes"));
  area_->setFrameShape(QFrame::NoFrame);
  area_->setWidgetResizable(true);
  area_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  area_->setFocusPolicy(Qt::NoFocus);
  layout->addWidget(area_, 1);
  empty_ = new QLabel(this);
  empty_->setObjectName(QStringLiteral("attributes.empty"));
  empty_->setAlignment(Qt::AlignCenter);
  empty_->setWordWrap(true);
  empty_->setEnabled(false);
  empty_->setMargin(fontMetrics().height());
  layout->addWidget(empty_, 1);
  new PanelGestures(session_, area_);

  connect(header_, &NodeHeader::Renamed, this, &AttributesDock::Rename);
  connect(header_, &NodeHeader::NoteChanged, this, [this](const QString& note) {
    const auto ids = FindIds();
    if (ids.size() == 1) Report(session_.SetNote(ids[0], note.toStdString()));
  });
  connect(header_, &NodeHeader::EnabledChanged, this,
          [this](bool enabled) { Report(session_.SetEnabled(FindIds(), enabled)); });
  connect(header_, &NodeHeader::ResetRequested, this, &AttributesDock::Reset);
  connect(header_, &NodeHeader::HelpRequested, this, [this] {
    const NodeInterface* type = FindType(FindIds());
    if (type != nullptr) emit HelpRequested(QString::fromStdString(GetTypeName(*type)));
  });
  connect(&header_->GetPresetsMenu(), &QMenu::aboutToShow, this, [this] { FillPresets(header_->GetPresetsMenu()); });
  connect(&header_->GetCopyMenu(), &QMenu::aboutToShow, this, [this] { FillCopyMenu(header_->GetCopyMenu()); });
  connect(&watch_, &SessionWatch::Changed, this, &AttributesDock::Refresh);
  connect(&watch_, &SessionWatch::NodeRenamed, this, [this](const std::string& before, const std::string& now) {
    std::replace(selection_.begin(), selection_.end(), before, now);
  });
  Refresh();
}

AttributesDock::~AttributesDock() {
  disconnect(header_, nullptr, this, nullptr);
  session_.Watch({});
}

void AttributesDock::SetSelection(const QStringList& ids) {
  header_->Finish();
  selection_.clear();
  for (const QString& id : ids) selection_.push_back(id.toStdString());
  Refresh();
}

std::string AttributesDock::OfferRow(const QPoint& global, const std::string& from, unsigned plug_type) {
  const Node* node = panel_ == nullptr || !isVisible() ? nullptr : panel_->GetNode();
  const auto ids = FindIds();
  const bool is_seen = area_->viewport()->rect().contains(area_->viewport()->mapFromGlobal(global));
  for (std::size_t i = 0; node != nullptr && is_seen && i < node->GetNumAttributes(); ++i) {
    const Attribute& attribute = *node->GetAttribute(i);
    const QRect row = panel_->FindRow(attribute.GetName());
    if (!row.contains(panel_->mapFromGlobal(global))) continue;
    if (attribute.GetPlugType() != plug_type || ids[0] == from) break;
    if (mark_ == nullptr || mark_->parentWidget() != panel_) {
      delete mark_;
      mark_ = new QRubberBand(QRubberBand::Rectangle, panel_);
      mark_->setObjectName(QStringLiteral("attributes.wire_mark"));
    }
    mark_->setGeometry(row);
    mark_->show();
    return ids[0] + "." + attribute.GetName();
  }
  WithdrawRow();
  return {};
}

void AttributesDock::WithdrawRow() {
  if (mark_ != nullptr) mark_->hide();
}

std::vector<std::string> AttributesDock::FindIds() const {
  std::vector<std::string> ids;
  std::copy_if(selection_.begin(), selection_.end(), std::back_inserter(ids),
               [&](const std::string& id) { return session_.GetDocument().HasId(id); });
  return ids;
}

NodeInterface* AttributesDock::FindType(const std::vector<std::string>& ids) const {
  NodeInterface* type = nullptr;
  for (const std::string& id : ids) {
    const Node* node = session_.GetDocument().FindNode(id);
    NodeInterface* own = node != nullptr ? catalog_->Find(node->GetNodeType()) : nullptr;
    if (own == nullptr || (type != nullptr && own != type)) return nullptr;
    type = own;
  }
  return type;
}

void AttributesDock::Refresh() {
  const std::vector<std::string> ids = FindIds();
  header_->setVisible(!ids.empty());
  if (ids.empty()) return ClearPanel(tr("Select a node to see its attributes."));
  ShowHeader(ids);
  if (FindType(ids) != nullptr) return ShowPanel(ids);
  ClearPanel(ids.size() == 1
                 ? tr("No library that is loaded has this type of node. The document keeps what it says.")
                 : tr("Nodes of several types are selected. Select nodes of one type to edit them together."));
}

void AttributesDock::ShowHeader(const std::vector<std::string>& ids) {
  const ScEng::GraphDocument& document = session_.GetDocument();
  const NodeInterface* type = FindType(ids);
  NodeHeader::Facts facts;
  facts.has_attributes = type != nullptr;
  if (type != nullptr) {
    facts.type = AskLibrary("GetName", [&] { return type->GetName(); });
    facts.icon = QIcon(AskLibrary("GetIconPath", [&] { return type->GetIconPath(); }));
  }
  const auto num_enabled =
      std::count_if(ids.begin(), ids.end(), [&](const auto& id) { return document.IsEnabled(id); });
  facts.enabled = num_enabled == 0                                         ? Qt::Unchecked
                  : num_enabled == static_cast<std::ptrdiff_t>(ids.size()) ? Qt::Checked
                                                                           : Qt::PartiallyChecked;
  if (ids.size() == 1) {
    facts.id = QString::fromStdString(ids[0]);
    facts.note = QString::fromStdString(document.GetNote(ids[0]));
    if (type == nullptr) facts.type = tr("Unknown type");
  } else {
    const auto count = static_cast<int>(ids.size());
    facts.type = type != nullptr ? tr("%1 (%n nodes)", nullptr, count).arg(facts.type) : tr("%n nodes", nullptr, count);
  }
  header_->Show(facts);
}

void AttributesDock::ShowPanel(const std::vector<std::string>& ids) {
  NodeInterface* type = FindType(ids);
  empty_->hide();
  area_->show();
  if (ids.size() > 1) {
    if (shared_ != nullptr && shared_->GetIds() == ids) return shared_->Follow();
    Report(session_.Watch({}));
    shared_ = new SharedPanel(session_, catalog_, *type, ids, area_);
    connect(shared_, &SharedPanel::Failed, this, &AttributesDock::Failed);
    panel_ = nullptr;
    return area_->setWidget(shared_);
  }
  Node* node = session_.GetDocument().FindNode(ids[0]);
  if (panel_ != nullptr && panel_->GetNode() == node) return;
  Report(session_.Watch(ids));
  panel_ = new NodePanel(*node, type, area_);
  shared_ = nullptr;
  // Takes the place of the panel before, which goes.
  area_->setWidget(panel_);
}

void AttributesDock::ClearPanel(const QString& text) {
  session_.Watch({});
  delete area_->takeWidget();
  panel_ = nullptr;
  shared_ = nullptr;
  area_->hide();
  empty_->setText(text);
  empty_->show();
}

void AttributesDock::Rename(const QString& now) {
  const auto ids = FindIds();
  if (ids.size() != 1) return;
  const ScEng::Status status = session_.RenameNode(ids[0], now.toStdString());
  if (status.IsError()) {
    header_->ShowError(QString::fromStdString(status.GetMessage()));
  } else {
    ShowHeader(FindIds());
  }
}

void AttributesDock::Reset() {
  std::vector<ScEng::AttributeValue> values;
  const auto ids = FindIds();
  for (const std::string& id : ids) {
    const Node* node = session_.GetDocument().FindNode(id);
    for (std::size_t i = 0; node != nullptr && i < node->GetNumAttributes(); ++i) {
      const Attribute& attribute = *node->GetAttribute(i);
      const bool is_driven = !node->GetAttributeSource(attribute.GetId()).empty();
      if (is_driven || attribute.GetValue() == attribute.GetDefault()) continue;
      values.push_back({id + "." + attribute.GetName(), attribute.GetDefault()});
    }
  }
  if (values.empty()) return;
  const QString title = ids.size() == 1 ? tr("Reset attributes of %1").arg(QString::fromStdString(ids[0]))
                                        : tr("Reset attributes of %n nodes", nullptr, static_cast<int>(ids.size()));
  Report(session_.Group(title.toStdString(), [&] { return session_.SetAttributes(values); }));
}

void AttributesDock::FillPresets(QMenu& menu) {
  menu.clear();
  const NodeInterface* type = FindType(FindIds());
  if (type == nullptr) return;
  const QStringList names = Presets(GetTypeName(*type)).GetNames();
  // An ampersand would mark a letter.
  const auto show = [](QString name) { return name.replace(u'&', QStringLiteral("&&")); };
  for (const QString& name : names) menu.addAction(show(name), this, [this, name] { LoadPreset(name); });
  if (names.isEmpty()) menu.addAction(tr("No presets yet"))->setEnabled(false);
  menu.addSeparator();
  menu.addAction(tr("Save as Preset…"), this, &AttributesDock::AskForPreset);
  QMenu* removal = menu.addMenu(tr("Delete"));
  removal->setEnabled(!names.isEmpty());
  const std::string type_name = GetTypeName(*type);
  for (const QString& name : names) {
    removal->addAction(show(name), this, [this, type_name, name] { Report(Presets(type_name).Remove(name)); });
  }
}

void AttributesDock::LoadPreset(const QString& name) {
  const auto ids = FindIds();
  const NodeInterface* type = FindType(ids);
  if (type == nullptr) return;
  std::vector<ScEng::AttributeValue> values;
  std::vector<std::string> notes;
  for (const std::string& id : ids) {
    notes.clear();
    const ScEng::Status status =
        Presets(GetTypeName(*type)).Load(name, *session_.GetDocument().FindNode(id), id, values, notes);
    if (status.IsError()) return Report(status);
  }
  const std::string title = tr("Apply preset %1").arg(name).toStdString();
  Report(session_.Group(title, [&] { return session_.SetAttributes(values, &notes); }));
  if (!notes.empty()) emit Failed(QString::fromStdString(notes.front()));
}

void AttributesDock::AskForPreset() {
  auto* dialog = new QInputDialog(this);
  dialog->setObjectName(QStringLiteral("attributes.preset_name"));
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setWindowTitle(tr("Save as Preset"));
  dialog->setLabelText(tr("Name of the preset:"));
  dialog->setOkButtonText(tr("Save"));
  connect(dialog, &QInputDialog::textValueSelected, this, &AttributesDock::SavePreset);
  dialog->open();
}

void AttributesDock::SavePreset(const QString& name) {
  const auto ids = FindIds();
  const NodeInterface* type = FindType(ids);
  if (type != nullptr) Report(Presets(GetTypeName(*type)).Save(name, *session_.GetDocument().FindNode(ids[0])));
}

void AttributesDock::FillCopyMenu(QMenu& menu) {
  menu.clear();
  const auto ids = FindIds();
  const NodeInterface* type = FindType(ids);
  if (type == nullptr) return;
  const auto add = [&](const QString& title, const QString& text) {
    QAction* action = menu.addAction(title, this, [text] { QApplication::clipboard()->setText(text); });
    action->setToolTip(text);
    action->setEnabled(!text.isEmpty());
  };
  menu.setToolTipsVisible(true);
  if (ids.size() == 1) {
    add(tr("Command: value apply"), MakeApplyCommand(*session_.GetDocument().FindNode(ids[0]), GetTypeName(*type)));
  }
  QStringList options;
  for (const std::string& id : ids) {
    for (const QString& option : MakeSetOptions(*session_.GetDocument().FindNode(id), id)) options += option;
  }
  // A shell reads the lines as one.
  add(tr("Options for value run"), options.join(QStringLiteral(" \\\n")));
}

void AttributesDock::Report(const ScEng::Status& status) {
  if (status.IsError()) emit Failed(QString::fromStdString(status.GetMessage()));
}
