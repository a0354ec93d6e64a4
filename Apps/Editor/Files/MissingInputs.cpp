// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Files/MissingInputs.h"

#include <QCoreApplication>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <mutex>
#include <thread>
#include <utility>

#include "Apps/Editor/Docks/PanelLook.h"
#include "Apps/Editor/Docks/PlainTip.h"
#include "Apps/Editor/Docks/RoomyRows.h"
#include "Apps/Editor/Docks/Signs.h"
#include "Apps/Editor/Files/DocumentPath.h"
#include "Host/Files/ImageFile.h"
#include "Host/Tools/RunningCall.h"

namespace {

namespace fs = std::filesystem;

constexpr int kDelay = 200;

const Attribute* FindPath(const Node& node) {
  for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
    const Attribute* attribute = node.GetAttribute(i);
    const bool is_path = attribute->GetKind() == Attribute::Kind::kString &&
                         attribute->GetStringUse() == Attribute::StringUse::kReadPath;
    // What a connection feeds cannot be given here.
    if (is_path && node.GetAttributeSource(attribute->GetId()).empty()) return attribute;
  }
  return nullptr;
}

}  // namespace

struct MissingInputs::Answer {
  std::mutex mutex;
  /// Null when it is gone.
  MissingInputs* owner = nullptr;
};

bool IsFileThere(const fs::path& file) {
  std::error_code error;
  return fs::exists(file, error);
}

std::vector<MissingInput> ListInputs(const ScEng::GraphDocument& document) {
  std::vector<MissingInput> inputs;
  for (const std::string& id : document.GetIds()) {
    const Node* node = document.FindNode(id);
    if (node == nullptr) {
      inputs.push_back({id, {}, {}});
      continue;
    }
    const Attribute* path = document.IsEnabled(id) ? FindPath(*node) : nullptr;
    if (path == nullptr || path->GetValue().GetText().empty()) continue;
    inputs.push_back({id, path->GetName(), ScEng::MakeReadPath(path->GetValue().GetText(), document.GetFolder())});
  }
  return inputs;
}

std::vector<MissingInput> KeepMissing(std::vector<MissingInput> inputs, const FileCheck& is_there) {
  std::erase_if(inputs, [&](const MissingInput& input) { return !input.attribute.empty() && is_there(input.file); });
  return inputs;
}

ScEng::Status LocateInput(ScEng::EditSession& session, const MissingInput& missing,
                          const std::vector<MissingInput>& all, const fs::path& file) {
  const fs::path& folder = session.GetDocument().GetFolder();
  std::vector<ScEng::AttributeValue> values{
      {missing.id + "." + missing.attribute, PlugValue(MakeDocumentPath(file, folder))}};
  for (const MissingInput& other : all) {
    if (other.id == missing.id || other.attribute.empty()) continue;
    // The same file, or one that has moved along with it.
    const fs::path place = other.file == missing.file ? file : file.parent_path() / other.file.filename();
    if (!IsFileThere(place)) continue;
    values.push_back({other.id + "." + other.attribute, PlugValue(MakeDocumentPath(place, folder))});
  }
  const int count = static_cast<int>(values.size());
  const QString title =
      count == 1
          ? QCoreApplication::translate("MissingInputs", "Locate files of %1").arg(QString::fromStdString(missing.id))
          : QCoreApplication::translate("MissingInputs", "Locate files of %n readers", nullptr, count);
  return session.Group(title.toStdString(), [&] { return session.SetAttributes(values); });
}

MissingInputs::MissingInputs(ScEng::EditSession& session, QWidget* parent, FileCheck is_there)
    : QWidget(parent),
      session_(session),
      watch_(session, this, kDelay),
      is_there_(std::move(is_there)),
      answer_(std::make_shared<Answer>()) {
  answer_->owner = this;
  setObjectName(QStringLiteral("missing"));
  setWindowTitle(tr("Missing Files"));
  auto* layout = new QVBoxLayout(this);
  text_ = new QLabel(this);
  text_->setObjectName(QStringLiteral("missing.text"));
  text_->setWordWrap(true);
  layout->addWidget(text_);
  list_ = new QTreeWidget(this);
  list_->setObjectName(QStringLiteral("missing.list"));
  list_->setAccessibleName(tr("What is missing"));
  list_->setRootIsDecorated(false);
  list_->setAllColumnsShowFocus(true);
  list_->setTextElideMode(Qt::ElideMiddle);
  list_->setItemDelegate(new RoomyRows(list_));
  list_->setHeaderLabels({tr("Node"), tr("What is missing")});
  layout->addWidget(list_, 1);
  auto* bar = new QHBoxLayout;
  locate_ = new QPushButton(tr("&Locate…"), this);
  locate_->setObjectName(QStringLiteral("missing.locate"));
  locate_->setAccessibleName(tr("Locate the file"));
  bar->addWidget(locate_);
  bar->addStretch(1);
  layout->addLayout(bar);
  connect(locate_, &QPushButton::clicked, this, &MissingInputs::Locate);
  connect(list_, &QTreeWidget::currentItemChanged, this, &MissingInputs::ShowSelected);
  connect(list_, &QTreeWidget::itemActivated, this, [this] {
    if (const MissingInput* missing = GetSelected()) emit NodeActivated(QString::fromStdString(missing->id));
  });
  connect(&watch_, &SessionWatch::Changed, this, &MissingInputs::Refresh);
  UsePanelLook(*this);
  Refresh();
}

MissingInputs::~MissingInputs() {
  const std::lock_guard lock(answer_->mutex);
  answer_->owner = nullptr;
}

void MissingInputs::Refresh() {
  looks_again_ = is_looking_;
  if (!is_looking_) Look(ListInputs(session_.GetDocument()));
}

void MissingInputs::Look(std::vector<MissingInput> inputs) {
  is_looking_ = true;
  // Nobody waits for it: a folder of a network that does not answer may keep it for minutes.
  std::thread([answer = answer_, is_there = is_there_, inputs = std::move(inputs)] {
    ScEng::RunningCall::HelpNobody();
    std::vector<MissingInput> missing = KeepMissing(inputs, is_there);
    const std::lock_guard lock(answer->mutex);
    MissingInputs* owner = answer->owner;
    if (owner == nullptr) return;
    QMetaObject::invokeMethod(
        owner, [owner, missing = std::move(missing)] { owner->Show(missing); }, Qt::QueuedConnection);
  }).detach();
}

void MissingInputs::Show(std::vector<MissingInput> missing) {
  is_looking_ = false;
  if (std::exchange(looks_again_, false)) return Look(ListInputs(session_.GetDocument()));
  const std::size_t before = missing_.size();
  const MissingInput* selected = GetSelected();
  const std::string id = selected != nullptr ? selected->id : std::string();
  if (is_shown_ && missing == missing_) {
    emit Looked();
    return;
  }
  is_shown_ = true;
  missing_ = std::move(missing);
  list_->clear();
  for (const MissingInput& input : missing_) {
    auto* item = new QTreeWidgetItem(list_);
    item->setIcon(0, MakeSignIcon(Sign::kError));
    item->setText(0, QString::fromStdString(input.id));
    item->setText(1, input.attribute.empty() ? tr("No library that is loaded has its type")
                                             : QString::fromStdString(input.file.string()));
    item->setToolTip(1, MakePlainTip(item->text(1)));
    if (input.id == id || list_->currentItem() == nullptr) list_->setCurrentItem(item);
  }
  list_->resizeColumnToContents(0);
  text_->setText(missing_.empty() ? tr("Everything that the document needs is there.")
                                  : tr("The document needs what is not there. Nodes without it make no images."));
  ShowSelected();
  if (missing_.size() != before) emit CountChanged(Count());
  emit Looked();
}

const MissingInput* MissingInputs::GetSelected() const {
  const int row = list_->indexOfTopLevelItem(list_->currentItem());
  return row >= 0 && row < Count() ? &missing_[static_cast<std::size_t>(row)] : nullptr;
}

void MissingInputs::ShowSelected() {
  const MissingInput* missing = GetSelected();
  locate_->setEnabled(missing != nullptr && !missing->attribute.empty());
}

void MissingInputs::Locate() {
  const MissingInput* selected = GetSelected();
  if (selected == nullptr || selected->attribute.empty()) return;
  const MissingInput missing = *selected;
  const QString name = QString::fromStdString(missing.file.filename().string());
  auto* dialog = new QFileDialog(this, tr("Locate %1").arg(name));
  dialog->setObjectName(QStringLiteral("missing.dialog"));
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setFileMode(QFileDialog::ExistingFile);
  const fs::path& folder = session_.GetDocument().GetFolder();
  if (!folder.empty()) dialog->setDirectory(QString::fromStdString(folder.string()));
  connect(dialog, &QFileDialog::fileSelected, this, [this, missing](const QString& file) {
    const ScEng::Status status = LocateInput(session_, missing, missing_, file.toStdString());
    if (status.IsError()) emit Failed(QString::fromStdString(status.GetMessage()));
    Refresh();
  });
  dialog->open();
}
