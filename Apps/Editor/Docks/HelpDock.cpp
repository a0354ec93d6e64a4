// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/HelpDock.h"

#include <QEvent>
#include <QScrollBar>
#include <QTextBrowser>
#include <QTextDocument>
#include <QVBoxLayout>
#include <utility>

#include "Apps/Editor/Docks/NodeHelp.h"

HelpDock::HelpDock(std::shared_ptr<const ScEng::NodeCatalog> catalog, QWidget* parent)
    : QWidget(parent), catalog_(std::move(catalog)) {
  setObjectName(QStringLiteral("help"));
  setWindowTitle(tr("Help"));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  page_ = new QTextBrowser(this);
  page_->setObjectName(QStringLiteral("help.page"));
  page_->setAccessibleName(tr("Page of the node"));
  page_->setFrameShape(QFrame::NoFrame);
  page_->setOpenLinks(false);
  page_->setTextInteractionFlags(Qt::TextBrowserInteraction);
  page_->document()->setDocumentMargin(fontMetrics().height());
  layout->addWidget(page_);
  Refresh();
}

HelpDock::~HelpDock() = default;

void HelpDock::ShowNode(const QString& type_name) {
  if (type_name == shown_) return;
  shown_ = type_name;
  Refresh();
  page_->verticalScrollBar()->setValue(0);
}

void HelpDock::Refresh() {
  const NodeInterface* descriptor = catalog_->FindTypeName(shown_.toStdString());
  QString html = descriptor != nullptr ? MakeNodeHelp(*descriptor) : QString();
  if (html.isEmpty()) {
    html = QStringLiteral("<p>") +
           (shown_.isEmpty() ? tr("Select a node to read its page.")
                             : tr("No library that is loaded has the type %1.").arg(shown_.toHtmlEscaped())) +
           QStringLiteral("</p>");
  }
  page_->setHtml(html);
}

void HelpDock::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  // Rich text has the colors of the palette that it was made under.
  if (event->type() == QEvent::PaletteChange && page_ != nullptr) Refresh();
}
