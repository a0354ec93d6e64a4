// SPDX-License-Identifier: Apache-2.0
#include "Apps/Panel/PanelWindow.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QFileDialog>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QKeySequence>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollArea>
#include <QShortcut>
#include <QUndoStack>
#include <QVBoxLayout>
#include <algorithm>
#include <new>

#include "Apps/Panel/ApplyLine.h"
#include "Apps/Panel/FixedRange.h"
#include "Host/Documents/PlugName.h"
#include "Host/Files/ImageFile.h"
#include "Host/Tools/Guard.h"
#include "Host/Viewing/ViewImage.h"
#include "Host/Widgets/QNodeAttributesWidget.h"
#include "Host/Widgets/ViewerWidget.h"

namespace {

constexpr int kPanelWidth = 400;
constexpr int kGap = 12;

/// "Image files (*.exr *.png ...)", with every ending that images can be written with.
QString MakeFileFilter() {
  QStringList patterns;
  for (const ScEng::FormatReport& format : ScEng::ListFormats()) {
    if (!format.writes) continue;
    for (const std::string& ending : format.endings) patterns.append(QStringLiteral("*") + ending.c_str());
  }
  return PanelWindow::tr("Image files (%1)").arg(patterns.join(QLatin1Char(' ')));
}

unsigned FindOutplug(const Node& node, const std::string& name) {
  const std::vector<PlugRecord>& plugs = node.GetOutplugs();
  const auto found = std::find_if(plugs.begin(), plugs.end(), [&](const PlugRecord& p) { return p.name == name; });
  return found == plugs.end() ? 0 : static_cast<unsigned>(found - plugs.begin());
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

// ---- The parts ----

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
  constexpr int kLeast = 620;
  constexpr int kMost = 900;
  constexpr int kViewWidth = 560;
  const int height = panel->sizeHint().height();
  resize(kPanelWidth + kViewWidth, std::clamp(height, kLeast, kMost));
  return area;
}

QWidget* PanelWindow::MakeView() {
  auto* view = new QWidget(this);
  auto* layout = new QVBoxLayout(view);
  layout->setContentsMargins(kGap, kGap, 0, kGap);
  layout->setSpacing(kGap / 2);
  layout->addWidget(MakeBar(view));
  viewer_ = new ScEng::ViewerWidget(view);
  viewer_->setObjectName(QStringLiteral("viewer"));
  layout->addWidget(viewer_, 1);
  command_ = new QLineEdit(view);
  command_->setObjectName(QStringLiteral("command"));
  command_->setAccessibleName(tr("Command"));
  command_->setToolTip(tr("The command that makes this image"));
  command_->setReadOnly(true);
  command_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  command_->setStyle(QNodeAttributesWidget::GetPanelStyle());
  command_->hide();
  layout->addWidget(command_);
  return view;
}

QWidget* PanelWindow::MakeBar(QWidget* view) {
  auto* bar = new QWidget(view);
  auto* layout = new QHBoxLayout(bar);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(kGap / 2);
  outputs_ = new QComboBox(bar);
  outputs_->setObjectName(QStringLiteral("outputs"));
  outputs_->setToolTip(tr("The output that is shown"));
  outputs_->setAccessibleName(tr("Output"));
  outputs_->setStyle(QNodeAttributesWidget::GetPanelStyle());
  for (const unsigned outplug : request_.outplugs) {
    outputs_->addItem(QString::fromStdString(request_.node->GetOutplugAlias(outplug)), outplug);
  }
  outputs_->setVisible(outputs_->count() > 1);
  connect(outputs_, &QComboBox::currentIndexChanged, this, [this] { Evaluate(); });
  layout->addWidget(outputs_);
  save_ =
      AddButton(bar, tr("Save image…"), QStringLiteral("save_image"), tr("Writes the image that is shown to a file"));
  connect(save_, &QPushButton::clicked, this, [this] { AskForFile(); });
  QPushButton* copy = AddButton(bar, tr("Copy as command"), QStringLiteral("copy_command"),
                                tr("Copies the command that makes this image"));
  connect(copy, &QPushButton::clicked, this, [this] { CopyCommand(); });
  layout->addStretch(1);
  QPushButton* undo = AddUndoButton(bar, tr("Undo"), QStringLiteral("undo"), QKeySequence::Undo);
  QPushButton* redo = AddUndoButton(bar, tr("Redo"), QStringLiteral("redo"), QKeySequence::Redo);
  connect(undo, &QPushButton::clicked, stack_, &QUndoStack::undo);
  connect(redo, &QPushButton::clicked, stack_, &QUndoStack::redo);
  connect(stack_, &QUndoStack::canUndoChanged, undo, &QPushButton::setEnabled);
  connect(stack_, &QUndoStack::canRedoChanged, redo, &QPushButton::setEnabled);
  return bar;
}

QPushButton* PanelWindow::AddButton(QWidget* bar, const QString& text, const QString& name, const QString& tooltip) {
  auto* button = new QPushButton(text, bar);
  button->setObjectName(name);
  button->setAccessibleName(text);
  button->setToolTip(tooltip);
  button->setStyle(QNodeAttributesWidget::GetPanelStyle());
  button->setMinimumWidth(button->sizeHint().width() + kGap);
  bar->layout()->addWidget(button);
  return button;
}

QPushButton* PanelWindow::AddUndoButton(QWidget* bar, const QString& text, const QString& name,
                                        QKeySequence::StandardKey key) {
  QPushButton* button = AddButton(bar, text, name, QKeySequence(key).toString(QKeySequence::NativeText));
  button->setEnabled(false);
  // The panel's own fields handle these keys; this is for when none of them has the focus.
  auto* shortcut = new QShortcut(key, this);
  connect(shortcut, &QShortcut::activated, button, &QPushButton::click);
  return button;
}

// ---- Evaluation ----

unsigned PanelWindow::GetOutplug() const { return outputs_->currentIndex() < 0 ? 0 : outputs_->currentData().toUInt(); }

void PanelWindow::Evaluate() {
  ScEng::ViewerContent content;
  save_->setEnabled(false);
  ShowCommand();
  if (request_.outplugs.empty()) return ShowWithoutOutput();
  Node& node = *request_.node;
  const unsigned outplug = GetOutplug();
  const ScEng::RunReport report = request_.document->Evaluate(node, outplug);
  const Image* image = node.GetOutputImage(outplug);
  if (image == nullptr || node.IsInError()) {
    content.message = report.findings.errors.empty() ? tr("The node has no image to show.")
                                                     : QString::fromStdString(report.findings.errors.front());
    return viewer_->SetContent(content);
  }
  try {
    content.image = ScEng::ViewImage::Make(*image);
    AddSources(content);
  } catch (const std::bad_alloc&) {
    content = ScEng::ViewerContent();
    content.message = tr("There is not enough memory to show the image.");
    return viewer_->SetContent(content);
  }
  FixRange(*image, sources_.empty() ? nullptr : sources_.front().image.Get());
  viewer_->SetContent(content);
  save_->setEnabled(true);
}

void PanelWindow::ShowWithoutOutput() {
  ScEng::ViewerContent content;
  const std::string id = request_.document->GetId(*request_.node);
  for (const ScEng::DocumentConnection& connection : request_.document->GetConnections()) {
    if (ScEng::GetNodeOfPlug(connection.to) != id || content.image != nullptr) continue;
    ScEng::RunReport report;
    const ImagePtr image = request_.document->Evaluate(connection.from, report);
    if (!image) continue;
    content.image = ScEng::ViewImage::Make(*image);
    FixRange(*image, nullptr);
  }
  if (content.image == nullptr) {
    content.message = tr("This node makes no image.");
    viewer_->SetHistogramShown(false);
  }
  viewer_->SetContent(content);
}

void PanelWindow::AddSources(ScEng::ViewerContent& content) {
  const std::string id = request_.document->GetId(*request_.node);
  std::vector<Source> sources;
  for (const ScEng::DocumentConnection& connection : request_.document->GetConnections()) {
    if (ScEng::GetNodeOfPlug(connection.to) != id) continue;
    const Node* source = request_.document->FindNode(ScEng::GetNodeOfPlug(connection.from));
    if (source == nullptr) continue;
    Image* image = source->GetOutputImage(FindOutplug(*source, ScEng::GetNameOfPlug(connection.from)));
    if (image == nullptr) continue;
    // What has not changed is not copied again.
    const auto known =
        std::find_if(sources_.begin(), sources_.end(), [&](const Source& own) { return own.image.Get() == image; });
    sources.push_back(known != sources_.end() ? *known : Source{ImagePtr(image), ScEng::ViewImage::Make(*image)});
    QString name = QString::fromStdString(ScEng::GetNameOfPlug(connection.to));
    if (connection.index > 0) name += QStringLiteral(" %1").arg(connection.index + 1);
    content.inputs.emplace_back(name, sources.back().view);
  }
  sources_ = std::move(sources);
  if (!sources_.empty()) content.before = sources_.front().view;
}

void PanelWindow::FixRange(const Image& result, const Image* source) {
  const auto outplug = static_cast<int>(GetOutplug());
  ScEng::Look look = viewer_->GetLook();
  const bool is_ours = fixed_outplug_ < 0 || (look.range == ScEng::RangeSource::kCustom && look.custom == fixed_);
  if (fixed_outplug_ == outplug || !is_ours) return;
  fixed_outplug_ = outplug;
  fixed_ = ChooseFixedRange(result, source);
  look.range = ScEng::RangeSource::kCustom;
  look.custom = fixed_;
  viewer_->SetLook(look);
}

// ---- Saving and copying ----

ScEng::Status PanelWindow::SaveImage(const std::filesystem::path& file, std::vector<std::string>& notes) const {
  const Image* image = request_.outplugs.empty() ? nullptr : request_.node->GetOutputImage(GetOutplug());
  if (image == nullptr) return ScEng::Status::Error("there is no image to save");
  return ScEng::WriteImageFile(*image, file, ScEng::WriteOptions(), notes);
}

void PanelWindow::AskForFile() {
  const QString file = QFileDialog::getSaveFileName(this, tr("Save image"), QString(), MakeFileFilter());
  if (file.isEmpty()) return;
  std::vector<std::string> notes;
  const ScEng::Status status = SaveImage(file.toStdString(), notes);
  if (status.IsError()) {
    QMessageBox::warning(this, tr("Save image"), QString::fromStdString(status.GetMessage()));
    return;
  }
  QStringList lines;
  for (const std::string& note : notes) lines.append(QString::fromStdString(note));
  if (!lines.isEmpty()) QMessageBox::information(this, tr("Save image"), lines.join(QLatin1Char('\n')));
}

std::string PanelWindow::GetCommand() const {
  ApplyLine line;
  line.name = ScEng::AskGuarded("GetName", std::string(), [&] { return request_.descriptor->GetName(); });
  line.inputs = request_.inputs;
  line.range = request_.range;
  const unsigned outplug = GetOutplug();
  if (!request_.outplugs.empty() && outplug != request_.outplugs.front()) {
    line.outplug = request_.node->GetOutplugs()[outplug].name;
  }
  return MakeApplyLine(line, *request_.node);
}

void PanelWindow::CopyCommand() {
  command_->show();
  ShowCommand();
  QApplication::clipboard()->setText(command_->text());
}

void PanelWindow::ShowCommand() {
  if (command_->isHidden()) return;
  command_->setText(QString::fromStdString(GetCommand()));
  command_->setCursorPosition(0);
}
