// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Window/ViewerDock.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QToolButton>
#include <QVBoxLayout>
#include <utility>

#include "Apps/Editor/Canvas/PlugRef.h"
#include "Host/Widgets/ViewerWidget.h"

ViewerDock::ViewerDock(ScEng::EditSession& session, QWidget* parent)
    : QWidget(parent), session_(session), watch_(session, this) {
  setObjectName(QStringLiteral("viewer"));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  auto* bar = new QHBoxLayout;
  bar->setContentsMargins(8, 4, 8, 4);
  title_ = new QLabel(this);
  title_->setObjectName(QStringLiteral("viewer.title"));
  title_->setTextFormat(Qt::PlainText);
  title_->setMinimumWidth(40);
  bar->addWidget(title_, 1);
  outputs_ = new QComboBox(this);
  outputs_->setObjectName(QStringLiteral("viewer.output"));
  outputs_->setAccessibleName(tr("Output"));
  outputs_->setToolTip(tr("The output of the node that is shown"));
  connect(outputs_, &QComboBox::activated, this, [this] { emit ShowRequested(outputs_->currentData().toString()); });
  bar->addWidget(outputs_);
  sources_ = new QComboBox(this);
  sources_->setObjectName(QStringLiteral("viewer.source"));
  sources_->setAccessibleName(tr("Result or input"));
  sources_->setToolTip(tr("Shows the result of the node, or an image that feeds it"));
  connect(sources_, &QComboBox::activated, this, [this] { ShowContent(); });
  bar->addWidget(sources_);
  pin_ = new QToolButton(this);
  pin_->setObjectName(QStringLiteral("viewer.pin"));
  pin_->setText(tr("Pin"));
  pin_->setCheckable(true);
  pin_->setAutoRaise(true);
  pin_->setToolTip(tr("Stays with this node whatever is selected"));
  pin_->setAccessibleName(tr("Pin the shown node"));
  connect(pin_, &QToolButton::toggled, this, [this](bool pinned) {
    // Told by the word too: themes differ little in how a button is pressed.
    pin_->setText(pinned ? tr("Pinned") : tr("Pin"));
    emit PinChanged(pinned);
  });
  bar->addWidget(pin_);
  layout->addLayout(bar);
  viewer_ = new ScEng::ViewerWidget(this);
  // As far from the edges of the window as the line above.
  viewer_->layout()->setContentsMargins(8, 0, 8, 4);
  layout->addWidget(viewer_, 1);
  connect(viewer_, &ScEng::ViewerWidget::LookChanged, this, &ViewerDock::TakeLook);
  connect(&watch_, &SessionWatch::NodeRenamed, this, &ViewerDock::FollowRename);
  FillOutputs();
  FillSources();
}

void ViewerDock::SetShown(const QString& plug) {
  if (shown_ == plug) return;
  const bool is_other_node = GetNodeOfPlug(shown_.toStdString()) != GetNodeOfPlug(plug.toStdString());
  shown_ = plug;
  if (is_other_node) sources_->setCurrentIndex(0);
  FillOutputs();
}

void ViewerDock::SetResult(const std::shared_ptr<const ScEng::ShownResult>& result) {
  result_ = result;
  FillSources();
  ShowContent();
}

void ViewerDock::SetProgress(const ScEng::EvaluationProgress& progress, bool is_idle) {
  // Once the result of what is shown is there, the rest goes on unseen.
  const bool is_waiting =
      !is_idle && (result_ == nullptr || result_->shown.plug != shown_.toStdString() || !progress.id.empty());
  viewer_->SetBusy(is_waiting, progress.total > 0
                                   ? static_cast<double>(progress.done) / static_cast<double>(progress.total)
                                   : progress.fraction);
}

void ViewerDock::SetPinned(bool pinned) { pin_->setChecked(pinned); }

bool ViewerDock::IsPinned() const { return pin_->isChecked(); }

void ViewerDock::FillOutputs() {
  outputs_->clear();
  const std::string id = GetNodeOfPlug(shown_.toStdString());
  title_->setText(shown_.isEmpty() ? tr("Nothing is shown") : QString::fromStdString(id));
  if (const Node* node = session_.GetDocument().FindNode(id)) {
    for (const PlugRecord& plug : node->GetOutplugs()) {
      if (plug.type != PlugType::kImage) continue;
      outputs_->addItem(QString::fromStdString(plug.name), QString::fromStdString(id + "." + plug.name));
    }
  }
  outputs_->setCurrentIndex(outputs_->findData(shown_));
  outputs_->setVisible(outputs_->count() > 1);
}

void ViewerDock::FillSources() {
  const QString before = sources_->currentData().toString();
  const QSignalBlocker blocker(sources_);
  sources_->clear();
  sources_->addItem(tr("Result"), QString());
  if (result_ != nullptr) {
    for (const ScEng::ShownInput& input : result_->inputs) {
      const QString from = QString::fromStdString(input.from);
      sources_->addItem(tr("Input %1: %2").arg(QString::fromStdString(input.inplug), from), from);
    }
  }
  sources_->setCurrentIndex(std::max(0, sources_->findData(before)));
  sources_->setVisible(sources_->count() > 1);
}

void ViewerDock::ShowContent() {
  ScEng::ViewerContent content;
  if (result_ != nullptr) {
    content.image = result_->image;
    content.message = QString::fromStdString(result_->message);
    content.title = QString::fromStdString(result_->shown.plug);
    const QString source = sources_->currentData().toString();
    for (const ScEng::ShownInput& input : result_->inputs) {
      content.inputs.emplace_back(QString::fromStdString(input.from), input.image);
      if (QString::fromStdString(input.from) != source) continue;
      content.image = input.image;
      content.message.clear();
      content.title = source;
    }
    if (!result_->inputs.empty()) content.before = result_->inputs.front().image;
  }
  RecallRange(content.title);
  viewer_->SetContent(content);
}

void ViewerDock::TakeLook(const ScEng::Look& look) {
  if (look.range == ScEng::RangeSource::kCustom) {
    own_ranges_[seen_] = look.custom;
  } else {
    own_ranges_.erase(seen_);
    range_ = look.range;
  }
}

void ViewerDock::RecallRange(const QString& plug) {
  if (plug == seen_) return;
  seen_ = plug;
  ScEng::Look look = viewer_->GetLook();
  const auto own = own_ranges_.find(plug);
  look.range = own == own_ranges_.end() ? range_ : ScEng::RangeSource::kCustom;
  if (own != own_ranges_.end()) look.custom = own->second;
  if (look != viewer_->GetLook()) viewer_->SetLook(look);
}

void ViewerDock::FollowRename(const std::string& before, const std::string& now) {
  const auto rename = [&](const QString& plug) {
    const std::string text = plug.toStdString();
    return GetNodeOfPlug(text) == before ? QString::fromStdString(now + "." + GetNameOfPlug(text)) : plug;
  };
  std::map<QString, ScEng::ValueRange> ranges;
  for (const auto& [plug, range] : own_ranges_) ranges.emplace(rename(plug), range);
  own_ranges_ = std::move(ranges);
  seen_ = rename(seen_);
}
