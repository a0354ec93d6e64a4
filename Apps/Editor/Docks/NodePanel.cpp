// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/NodePanel.h"

#include <QLabel>
#include <QVBoxLayout>
#include <QVariant>

#include "Host/Tools/Guard.h"
#include "Host/Widgets/QNodeAttributesWidget.h"

namespace {

/// The property of a blocked widget that holds the tooltip it had before.
constexpr char kOwnTip[] = "own_tip";

}  // namespace

NodePanel::NodePanel(Node& node, NodeInterface* descriptor, QWidget* parent) : QWidget(parent), node_(&node) {
  setObjectName(QStringLiteral("attributes.panel"));
  // What is on the stack keeps its node; one entry is enough to merge with.
  stack_.setUndoLimit(1);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  if (descriptor != nullptr) {
    panel_ = ScEng::AskGuarded<QWidget*>("CreateAttributesWidget", nullptr,
                                         [&] { return descriptor->CreateAttributesWidget(&node, this, 0); });
  }
  // The host's own types, and those of libraries without panels of their own, have the general one.
  if (panel_ == nullptr) panel_ = new QNodeAttributesWidget(this, &node, descriptor, nullptr, false);
  layout->addWidget(panel_);
  QList<QNodeAttributesWidget*> panels = findChildren<QNodeAttributesWidget*>();
  for (QNodeAttributesWidget* panel : panels) {
    panel->SetUndoStack(&stack_);
    // The dock has a heading, with a button that makes one step of the history.
    auto* title = panel->findChild<QLabel*>(QStringLiteral("title"));
    if (title != nullptr && title->parentWidget() != panel) title->parentWidget()->hide();
  }
  node.AddObserver(this);
}

NodePanel::~NodePanel() {
  if (node_ != nullptr) node_->RemoveObserver(this);
  // The panel uses the stack to its end, and the commands on it look at the node.
  delete panel_;
}

void NodePanel::OnNodeDestroyed(Node&) { node_ = nullptr; }

QList<QWidget*> NodePanel::FindRowWidgets(const std::string& attribute) const {
  const QString name = QString::fromStdString(attribute);
  QList<QWidget*> widgets;
  for (QWidget* child : findChildren<QWidget*>()) {
    const QString own = child->objectName();
    if (own == name || own.startsWith(name + u'.')) widgets.append(child);
  }
  return widgets;
}

QRect NodePanel::FindRow(const std::string& attribute) const {
  QRect row;
  for (const QWidget* widget : FindRowWidgets(attribute)) {
    if (widget->isVisibleTo(this)) row |= QRect(widget->mapTo(this, QPoint()), widget->size());
  }
  if (row.isEmpty()) return {};
  constexpr int kGap = 2;
  return {0, row.top() - kGap, width(), row.height() + 2 * kGap};
}

void NodePanel::MarkDiffering(const std::string& attribute, bool differs) {
  auto* label = findChild<QLabel*>(QString::fromStdString(attribute) + QStringLiteral(".label"));
  if (label == nullptr) return;
  const QString mark = QStringLiteral(" ≠");
  const bool is_marked = label->text().endsWith(mark);
  if (is_marked == differs) return;
  label->setText(differs ? label->text() + mark : label->text().chopped(mark.size()));
  label->setAccessibleDescription(differs ? tr("The nodes have different values") : QString());
}

void NodePanel::SetBlocked(const std::string& attribute, bool blocked, const QString& reason) {
  for (QWidget* child : FindRowWidgets(attribute)) {
    const QVariant own_tip = child->property(kOwnTip);
    if (blocked) {
      if (!own_tip.isValid()) child->setProperty(kOwnTip, child->toolTip());
      child->setEnabled(false);
      child->setToolTip(reason);
    } else if (own_tip.isValid()) {
      // What was disabled by the panel itself stays so.
      child->setEnabled(true);
      child->setToolTip(own_tip.toString());
      child->setProperty(kOwnTip, QVariant());
    }
  }
}
