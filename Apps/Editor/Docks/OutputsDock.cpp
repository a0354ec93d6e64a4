// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/OutputsDock.h"

#include <QBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QMetaObject>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QShortcut>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "Apps/Editor/Docks/OutputForm.h"
#include "Apps/Editor/Docks/PanelLook.h"
#include "Apps/Editor/Docks/PlainTip.h"
#include "Apps/Editor/Docks/RoomyRows.h"
#include "Apps/Editor/Docks/Signs.h"

namespace {

constexpr int kMargin = 12;

/// A name that no output has: "output.png", "output2.png" and so on.
std::string MakeFreePath(const std::vector<ScEng::DocumentOutput>& outputs, const std::string& name) {
  for (int number = 1;; ++number) {
    const std::string path = name + (number == 1 ? "" : std::to_string(number)) + ".png";
    const auto has_path = [&](const ScEng::DocumentOutput& output) { return output.path == path; };
    if (std::none_of(outputs.begin(), outputs.end(), has_path)) return path;
  }
}

}  // namespace

OutputsDock::OutputsDock(ScEng::EditSession& session, OutputRunStarter start, QWidget* parent)
    : QWidget(parent), session_(session), start_(std::move(start)), watch_(session, this) {
  setObjectName(QStringLiteral("outputs"));
  setWindowTitle(tr("Outputs"));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
  layout->setSpacing(kMargin);
  parts_ = new QBoxLayout(QBoxLayout::TopToBottom);
  parts_->setSpacing(kMargin);
  parts_->addWidget(MakeList(), 1);
  parts_->addWidget(MakeForm(), 2);
  layout->addLayout(parts_, 2);
  layout->addWidget(MakeRunBar());
  results_ = new QListWidget(this);
  results_->setObjectName(QStringLiteral("outputs.results"));
  results_->setAccessibleName(tr("What was written"));
  results_->setFrameShape(QFrame::NoFrame);
  results_->setWordWrap(true);
  results_->setTextElideMode(Qt::ElideMiddle);
  results_->hide();
  layout->addWidget(results_, 1);
  connect(form_, &OutputForm::Edited, this, &OutputsDock::ApplyForm);
  connect(&watch_, &SessionWatch::Changed, this, &OutputsDock::Refresh);
  UsePanelLook(*this);
  Refresh();
}

OutputsDock::~OutputsDock() = default;

QWidget* OutputsDock::MakeList() {
  auto* place = new QWidget(this);
  auto* layout = new QVBoxLayout(place);
  layout->setContentsMargins(0, 0, 0, 0);
  list_ = new QTreeView(place);
  list_->setObjectName(QStringLiteral("outputs.list"));
  list_->setAccessibleName(tr("Outputs"));
  list_->setRootIsDecorated(false);
  list_->setUniformRowHeights(true);
  list_->setAllColumnsShowFocus(true);
  list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  list_->setItemDelegate(new RoomyRows(list_));
  list_->setModel(&model_);
  list_->header()->setStretchLastSection(false);
  list_->header()->setSectionResizeMode(OutputsModel::kFrom, QHeaderView::ResizeToContents);
  list_->header()->setSectionResizeMode(OutputsModel::kPath, QHeaderView::Stretch);
  list_->header()->setSectionResizeMode(OutputsModel::kType, QHeaderView::ResizeToContents);
  list_->setTextElideMode(Qt::ElideMiddle);
  list_->setMinimumHeight(fontMetrics().height() * 5);
  layout->addWidget(list_, 1);
  empty_ = new QLabel(tr("Nothing is written yet. Add an output to keep an image as a file."), place);
  empty_->setObjectName(QStringLiteral("outputs.empty"));
  empty_->setAlignment(Qt::AlignCenter);
  empty_->setWordWrap(true);
  empty_->setEnabled(false);
  layout->addWidget(empty_, 1);
  auto* bar = new QHBoxLayout;
  const auto add = [&](const QString& name, const QString& text, const QString& tip) {
    auto* button = new QToolButton(place);
    button->setObjectName(name);
    button->setText(text);
    button->setAccessibleName(tip);
    button->setToolTip(tip);
    button->setFocusPolicy(Qt::StrongFocus);
    bar->addWidget(button);
    return button;
  };
  QToolButton* addition = add(QStringLiteral("outputs.add"), tr("Add"), tr("Add an output"));
  remove_ = add(QStringLiteral("outputs.remove"), tr("Remove"), tr("Remove the selected output"));
  bar->addStretch(1);
  layout->addLayout(bar);
  connect(addition, &QToolButton::clicked, this, [this] { AddOutput(); });
  connect(remove_, &QToolButton::clicked, this, &OutputsDock::RemoveSelected);
  auto* removal = new QShortcut(QKeySequence::Delete, list_);
  removal->setContext(Qt::WidgetShortcut);
  connect(removal, &QShortcut::activated, this, &OutputsDock::RemoveSelected);
  connect(list_->selectionModel(), &QItemSelectionModel::currentRowChanged, this, &OutputsDock::ShowSelected);
  return place;
}

QWidget* OutputsDock::MakeForm() {
  // Below the graph there is little height to have.
  fields_ = new QScrollArea(this);
  fields_->setObjectName(QStringLiteral("outputs.fields"));
  fields_->setFrameShape(QFrame::NoFrame);
  fields_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  fields_->setWidgetResizable(true);
  fields_->setFocusPolicy(Qt::NoFocus);
  form_ = new OutputForm(fields_);
  fields_->setWidget(form_);
  return fields_;
}

void OutputsDock::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  // Side by side in a place that is wide, one above the other in one that is high.
  const bool is_wide = 2 * width() > 3 * height();
  parts_->setDirection(is_wide ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
  // Paths are long; fields are many.
  parts_->setStretch(1, is_wide ? 1 : 2);
}

QWidget* OutputsDock::MakeRunBar() {
  auto* place = new QWidget(this);
  auto* layout = new QVBoxLayout(place);
  layout->setContentsMargins(0, 0, 0, 0);
  auto* bar = new QHBoxLayout;
  write_ = new QPushButton(tr("&Write All"), place);
  write_->setObjectName(QStringLiteral("outputs.write"));
  write_->setAccessibleName(tr("Write all outputs"));
  write_->setToolTip(tr("Writes every output, and what the enabled writers write"));
  cancel_ = new QPushButton(tr("Cancel"), place);
  cancel_->setObjectName(QStringLiteral("outputs.cancel"));
  cancel_->setAccessibleName(tr("Cancel writing"));
  cancel_->hide();
  progress_ = new QProgressBar(place);
  progress_->setObjectName(QStringLiteral("outputs.progress"));
  progress_->setAccessibleName(tr("Progress of writing"));
  progress_->hide();
  bar->addWidget(write_);
  bar->addWidget(progress_, 1);
  bar->addWidget(cancel_);
  bar->addStretch(0);
  layout->addLayout(bar);
  summary_ = new QLabel(place);
  summary_->setObjectName(QStringLiteral("outputs.summary"));
  summary_->setTextFormat(Qt::PlainText);
  summary_->setWordWrap(true);
  summary_->hide();
  layout->addWidget(summary_);
  connect(write_, &QPushButton::clicked, this, &OutputsDock::WriteAll);
  connect(cancel_, &QPushButton::clicked, this, [this] {
    if (run_ != nullptr) run_->Cancel();
    cancel_->setEnabled(false);
  });
  return place;
}

QStringList OutputsDock::FindPlugs() const {
  const ScEng::GraphDocument& document = session_.GetDocument();
  QStringList plugs;
  for (const std::string& id : document.GetIds()) {
    const Node* node = document.FindNode(id);
    if (node == nullptr) continue;
    for (const PlugRecord& plug : node->GetOutplugs()) {
      if (plug.type == PlugType::kImage) plugs += QString::fromStdString(id + "." + plug.name);
    }
  }
  return plugs;
}

int OutputsDock::GetSelected() const {
  const int row = list_->currentIndex().row();
  return list_->currentIndex().isValid() && row < static_cast<int>(session_.GetDocument().GetOutputs().size()) ? row
                                                                                                               : -1;
}

void OutputsDock::Refresh() {
  model_.Update(session_.GetDocument().GetOutputs());
  const bool has_any = model_.rowCount() > 0;
  list_->setVisible(has_any);
  empty_->setVisible(!has_any);
  if (has_any && GetSelected() < 0) list_->setCurrentIndex(model_.index(model_.rowCount() - 1, 0));
  ShowSelected();
}

void OutputsDock::ShowSelected() {
  const int row = GetSelected();
  fields_->setVisible(row >= 0);
  remove_->setEnabled(row >= 0);
  if (row < 0) return;
  const ScEng::GraphDocument& document = session_.GetDocument();
  form_->Show(document.GetOutputs()[static_cast<std::size_t>(row)], FindPlugs(), document.GetFolder());
}

void OutputsDock::AddOutput(const QString& plug) {
  const ScEng::GraphDocument& document = session_.GetDocument();
  const QStringList plugs = FindPlugs();
  QString from = plug;
  if (from.isEmpty() && document.GetView()) from = QString::fromStdString(document.GetView()->shown);
  if (!plugs.contains(from) && !plugs.isEmpty()) from = plugs.back();
  if (!plugs.contains(from))
    return Report(ScEng::Status::Error(tr("there is no image to write: add a node that makes one").toStdString()));
  const std::string id = from.left(from.lastIndexOf(u'.')).toStdString();
  ScEng::DocumentOutput output;
  output.from = from.toStdString();
  // An id may hold what no file name can.
  const bool is_name = id.find('/') == std::string::npos && id.find('\\') == std::string::npos && id[0] != '.';
  output.path = MakeFreePath(document.GetOutputs(), is_name ? id : "output");
  const ScEng::Status status = session_.AddOutput(output);
  if (status.IsError()) return Report(status);
  Refresh();
  list_->setCurrentIndex(model_.index(model_.rowCount() - 1, 0));
}

void OutputsDock::RemoveSelected() {
  const int row = GetSelected();
  if (row < 0) return;
  Report(session_.RemoveOutput(static_cast<std::size_t>(row)));
  Refresh();
}

void OutputsDock::ApplyForm() {
  const int row = GetSelected();
  if (row < 0) return;
  const ScEng::Status status = session_.SetOutput(static_cast<std::size_t>(row), form_->GetOutput());
  form_->ShowError(status.IsError() ? QString::fromStdString(status.GetMessage()) : QString());
  if (!status.IsError()) Refresh();
}

void OutputsDock::WriteAll() {
  if (run_ != nullptr) return;
  results_->clear();
  results_->hide();
  summary_->hide();
  write_->setEnabled(false);
  cancel_->setEnabled(true);
  cancel_->show();
  progress_->setRange(0, 0);
  progress_->show();
  run_ =
      start_(session_, [this] { QMetaObject::invokeMethod(this, &OutputsDock::TakeProgress, Qt::QueuedConnection); });
  // It may have been done before this knew of it.
  TakeProgress();
}

void OutputsDock::TakeProgress() {
  if (run_ == nullptr) return;
  const ScEng::BackgroundRun::Progress progress = run_->GetProgress();
  progress_->setRange(0, static_cast<int>(progress.total));
  progress_->setValue(static_cast<int>(progress.done));
  progress_->setFormat(progress.id.empty() ? QStringLiteral("%p%")
                                           : QString::fromStdString(progress.id).replace(u'%', u' '));
  if (!progress.is_finished) return;
  ShowReport(run_->GetReport());
  run_.reset();
  write_->setEnabled(true);
  cancel_->hide();
  progress_->hide();
}

void OutputsDock::ShowReport(const ScEng::RunReport& report) {
  const auto add = [&](Sign sign, const QString& text) {
    auto* item = new QListWidgetItem(MakeSignIcon(sign), text, results_);
    item->setToolTip(MakePlainTip(text));
  };
  for (const std::string& error : report.findings.errors) add(Sign::kError, QString::fromStdString(error));
  for (const std::string& note : report.findings.notes) add(Sign::kNote, QString::fromStdString(note));
  for (const ScEng::WrittenFile& file : report.written) add(Sign::kDone, QString::fromStdString(file.file.string()));
  const auto files = static_cast<int>(report.written.size());
  const auto errors = static_cast<int>(report.findings.GetNumErrors());
  QString text = files == 1 ? tr("1 file written") : tr("%1 files written").arg(files);
  if (errors > 0) text += errors == 1 ? tr(", 1 error") : tr(", %1 errors").arg(errors);
  if (report.canceled) text += tr(", canceled");
  summary_->setText(text);
  summary_->show();
  results_->setVisible(results_->count() > 0);
  emit Written(files, errors);
}

void OutputsDock::Report(const ScEng::Status& status) {
  if (status.IsError()) emit Failed(QString::fromStdString(status.GetMessage()));
}
