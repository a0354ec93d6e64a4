// SPDX-License-Identifier: Apache-2.0
#include "Apps/Panel/PanelWindow.h"

#include <QAction>
#include <QComboBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QKeySequence>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QShortcut>
#include <QUndoStack>
#include <QVBoxLayout>
#include <algorithm>

#include "Host/Image/ColorMode.h"
#include "Host/Image/Image.h"
#include "Host/Tools/Guard.h"
#include "Host/Widgets/QNodeAttributesWidget.h"

namespace {

constexpr int kPanelWidth = 400;
constexpr int kGap = 12;
// A picture with more pixels than any display shows in this window would only be slower.
constexpr int kMostPixels = 2048;

QString Describe(const Image& image) {
  return QStringLiteral("%1 × %2  ·  %3  ·  %4 to %5")
      .arg(image.GetSizeX())
      .arg(image.GetSizeY())
      .arg(QString::fromLatin1(ColorMode::GetName(image.GetColorMode())))
      .arg(static_cast<double>(image.GetValueLow()), 0, 'g', 6)
      .arg(static_cast<double>(image.GetValueHigh()), 0, 'g', 6);
}

}  // namespace

PanelWindow::PanelWindow(const PanelRequest& request) : request_(request) {
  setWindowTitle(QString::fromStdString(
      ScEng::AskGuarded("GetName", std::string(), [&] { return request_.descriptor->GetName(); })));
  setWindowIcon(QIcon(QString::fromStdString(
      ScEng::AskGuarded("GetIconPath", std::string(), [&] { return request_.descriptor->GetIconPath(); }))));
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  QWidget* panel = MakePanel();
  layout->addWidget(MakeView(), 1);
  layout->addWidget(panel);
  timer_.setSingleShot(true);
  timer_.setInterval(0);
  connect(&timer_, &QTimer::timeout, this, [this] { Evaluate(); });
  request_.node->AddObserver(this);
  Evaluate();
}

PanelWindow::~PanelWindow() { request_.node->RemoveObserver(this); }

void PanelWindow::OnNodeChanged(Node&) { timer_.start(); }

QWidget* PanelWindow::MakePanel() {
  auto* area = new QScrollArea(this);
  area->setFrameShape(QFrame::NoFrame);
  area->setWidgetResizable(true);
  area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  area->setFixedWidth(kPanelWidth);
  area->setFocusPolicy(Qt::NoFocus);
  auto* panel = ScEng::AskGuarded<QWidget*>("CreateAttributesWidget", nullptr, [&] {
    return request_.descriptor->CreateAttributesWidget(request_.node, area, 0);
  });
  // The host's own types, and those of libraries without panels of their own, have the general one.
  if (panel == nullptr) panel = new QNodeAttributesWidget(area, request_.node, request_.descriptor, nullptr, false);
  area->setWidget(panel);
  const auto* attributes = qobject_cast<QNodeAttributesWidget*>(panel);
  stack_ = attributes != nullptr ? attributes->GetUndoStack() : QNodeAttributesWidget::GetDefaultUndoStack();
  constexpr int kLeast = 560;
  constexpr int kMost = 900;
  const int height = panel->sizeHint().height();
  resize(kPanelWidth + kLeast, std::clamp(height, kLeast, kMost));
  return area;
}

QWidget* PanelWindow::MakeView() {
  auto* view = new QWidget(this);
  auto* layout = new QVBoxLayout(view);
  layout->setContentsMargins(kGap, kGap, 0, kGap);
  layout->setSpacing(kGap);
  auto* bar = new QHBoxLayout;
  bar->setSpacing(kGap / 2);
  outputs_ = new QComboBox(view);
  outputs_->setObjectName(QStringLiteral("outputs"));
  outputs_->setToolTip(QStringLiteral("The output that is shown"));
  outputs_->setAccessibleName(QStringLiteral("Output"));
  for (const unsigned outplug : request_.outplugs) {
    outputs_->addItem(QString::fromStdString(request_.node->GetOutplugAlias(outplug)), outplug);
  }
  outputs_->setVisible(outputs_->count() > 1);
  connect(outputs_, &QComboBox::currentIndexChanged, this, [this] { Evaluate(); });
  bar->addWidget(outputs_);
  before_ = new QPushButton(QStringLiteral("Before"), view);
  before_->setObjectName(QStringLiteral("before"));
  before_->setCheckable(true);
  before_->setToolTip(QStringLiteral("Shows the image that goes in"));
  before_->setVisible(request_.source != nullptr);
  connect(before_, &QPushButton::toggled, this, [this] { Evaluate(); });
  bar->addWidget(before_);
  bar->addStretch(1);
  const auto add_action = [&](const QString& text, const QString& name, QKeySequence::StandardKey key) {
    auto* button = new QPushButton(text, view);
    button->setObjectName(name);
    button->setEnabled(false);
    button->setToolTip(QKeySequence(key).toString(QKeySequence::NativeText));
    bar->addWidget(button);
    // The panel's own fields handle these keys; this is for when none of them has the focus.
    auto* shortcut = new QShortcut(key, this);
    connect(shortcut, &QShortcut::activated, button, &QPushButton::click);
    return button;
  };
  QPushButton* undo = add_action(QStringLiteral("Undo"), QStringLiteral("undo"), QKeySequence::Undo);
  QPushButton* redo = add_action(QStringLiteral("Redo"), QStringLiteral("redo"), QKeySequence::Redo);
  connect(undo, &QPushButton::clicked, stack_, &QUndoStack::undo);
  connect(redo, &QPushButton::clicked, stack_, &QUndoStack::redo);
  connect(stack_, &QUndoStack::canUndoChanged, undo, &QPushButton::setEnabled);
  connect(stack_, &QUndoStack::canRedoChanged, redo, &QPushButton::setEnabled);
  layout->addLayout(bar);
  preview_ = new Preview(view);
  layout->addWidget(preview_, 1);
  facts_ = new QLabel(view);
  facts_->setObjectName(QStringLiteral("facts"));
  facts_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  layout->addWidget(facts_);
  for (QWidget* child : view->findChildren<QWidget*>()) child->setStyle(QNodeAttributesWidget::GetPanelStyle());
  return view;
}

unsigned PanelWindow::GetOutplug() const { return outputs_->currentIndex() < 0 ? 0 : outputs_->currentData().toUInt(); }

void PanelWindow::Evaluate() {
  Node& node = before_->isChecked() && request_.source != nullptr ? *request_.source : *request_.node;
  const unsigned outplug = &node == request_.node ? GetOutplug() : 0;
  if (request_.outplugs.empty()) {
    preview_->Show({}, QStringLiteral("This node makes no image."));
    return;
  }
  const ScEng::RunReport report = request_.document->Evaluate(node, outplug);
  const Image* image = node.GetOutputImage(outplug);
  if (image == nullptr || node.IsInError()) {
    const std::string message =
        report.findings.errors.empty() ? "The node has no image to show." : report.findings.errors.front();
    preview_->Show({}, QString::fromStdString(message));
    facts_->clear();
    return;
  }
  preview_->Show(DrawImage(*image, kMostPixels), QString());
  facts_->setText(Describe(*image));
}
