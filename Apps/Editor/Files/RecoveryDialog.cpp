// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Files/RecoveryDialog.h"

#include <QDateTime>
#include <QEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "Apps/Editor/Docks/PanelLook.h"
#include "Apps/Editor/Docks/RoomyRows.h"

namespace {

QString ShowTime(std::chrono::system_clock::time_point time) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time.time_since_epoch()).count();
  return QLocale().toString(QDateTime::fromSecsSinceEpoch(seconds), QLocale::ShortFormat);
}

}  // namespace

std::vector<ScEng::FoundJournal> RecoveryDialog::FindJournals(const std::filesystem::path& state_folder,
                                                              const std::filesystem::path& document,
                                                              std::vector<std::string>& notes) {
  std::vector<ScEng::FoundJournal> journals =
      document.empty() ? ScEng::FindJournals(state_folder, notes) : ScEng::FindJournalsOf(document, notes);
  std::erase_if(journals, [](const ScEng::FoundJournal& journal) { return journal.is_in_use; });
  return journals;
}

RecoveryDialog::RecoveryDialog(std::shared_ptr<const ScEng::NodeCatalog> catalog, std::filesystem::path state_folder,
                               std::filesystem::path document, QWidget* parent)
    : QDialog(parent),
      catalog_(std::move(catalog)),
      state_folder_(std::move(state_folder)),
      document_(std::move(document)) {
  setObjectName(QStringLiteral("recovery"));
  setWindowTitle(tr("Recover Documents"));
  auto* layout = new QVBoxLayout(this);
  auto* text =
      new QLabel(tr("These documents were being edited when the program ended. Their changes were kept."), this);
  text->setWordWrap(true);
  layout->addWidget(text);
  list_ = new QTreeWidget(this);
  list_->setObjectName(QStringLiteral("recovery.list"));
  list_->setAccessibleName(tr("Documents that can be recovered"));
  list_->setRootIsDecorated(false);
  list_->setAllColumnsShowFocus(true);
  list_->setItemDelegate(new RoomyRows(list_));
  list_->setHeaderLabels({tr("Document"), tr("Folder"), tr("Last change")});
  list_->header()->setSectionResizeMode(1, QHeaderView::Stretch);
  list_->header()->setStretchLastSection(false);
  layout->addWidget(list_, 1);
  message_ = new QLabel(this);
  message_->setObjectName(QStringLiteral("recovery.message"));
  message_->setTextFormat(Qt::PlainText);
  message_->setWordWrap(true);
  layout->addWidget(message_);
  auto* bar = new QHBoxLayout;
  discard_ = new QPushButton(tr("&Discard…"), this);
  discard_->setObjectName(QStringLiteral("recovery.discard"));
  discard_->setAccessibleName(tr("Discard the changes"));
  discard_->setAutoDefault(false);
  auto* later = new QPushButton(tr("&Later"), this);
  later->setObjectName(QStringLiteral("recovery.later"));
  later->setAccessibleName(tr("Decide later"));
  later->setAutoDefault(false);
  recover_ = new QPushButton(tr("&Recover"), this);
  recover_->setObjectName(QStringLiteral("recovery.recover"));
  recover_->setAccessibleName(tr("Recover the document"));
  recover_->setDefault(true);
  bar->addWidget(discard_);
  bar->addStretch(1);
  bar->addWidget(later);
  bar->addWidget(recover_);
  layout->addLayout(bar);
  const int character = fontMetrics().averageCharWidth();
  resize(character * 90, character * 50);
  connect(recover_, &QPushButton::clicked, this, &RecoveryDialog::Recover);
  connect(discard_, &QPushButton::clicked, this, &RecoveryDialog::Discard);
  connect(later, &QPushButton::clicked, this, &QDialog::reject);
  connect(list_, &QTreeWidget::itemDoubleClicked, this, &RecoveryDialog::Recover);
  connect(list_, &QTreeWidget::currentItemChanged, this, &RecoveryDialog::ShowSelected);
  UsePanelLook(*this);
  Look();
}

RecoveryDialog::~RecoveryDialog() = default;

std::unique_ptr<ScEng::EditSession> RecoveryDialog::TakeSession() { return std::move(session_); }

bool RecoveryDialog::event(QEvent* event) {
  if (event->type() == QEvent::WindowActivate) Look();
  return QDialog::event(event);
}

void RecoveryDialog::Look() {
  // What cannot be read was told before.
  std::vector<std::string> notes;
  std::vector<ScEng::FoundJournal> found = FindJournals(state_folder_, document_, notes);
  const bool is_same = std::equal(
      found.begin(), found.end(), journals_.begin(), journals_.end(),
      [](const ScEng::FoundJournal& a, const ScEng::FoundJournal& b) { return a.file == b.file && a.time == b.time; });
  if (is_same && list_->topLevelItemCount() > 0) return;
  const int row = GetSelected();
  const std::filesystem::path selected =
      row >= 0 ? journals_[static_cast<std::size_t>(row)].file : std::filesystem::path();
  journals_ = std::move(found);
  FillList();
  for (std::size_t i = 0; i < journals_.size(); ++i) {
    if (journals_[i].file == selected) list_->setCurrentItem(list_->topLevelItem(static_cast<int>(i)));
  }
}

void RecoveryDialog::FillList() {
  list_->clear();
  for (const ScEng::FoundJournal& journal : journals_) {
    const bool has_file = !journal.document.empty();
    auto* item = new QTreeWidgetItem(list_);
    item->setText(0, has_file ? QString::fromStdString(journal.document.filename().string()) : tr("New document"));
    item->setText(1, QString::fromStdString(journal.document.parent_path().string()));
    item->setText(2, ShowTime(journal.time));
  }
  list_->resizeColumnToContents(0);
  list_->resizeColumnToContents(2);
  if (!journals_.empty()) list_->setCurrentItem(list_->topLevelItem(0));
  ShowSelected();
}

int RecoveryDialog::GetSelected() const {
  const int row = list_->indexOfTopLevelItem(list_->currentItem());
  return row < static_cast<int>(journals_.size()) ? row : -1;
}

void RecoveryDialog::ShowSelected() {
  const int row = GetSelected();
  recover_->setEnabled(row >= 0);
  discard_->setEnabled(row >= 0);
  const bool is_elsewhere = row >= 0 && journals_[static_cast<std::size_t>(row)].is_from_elsewhere;
  QString message;
  if (is_elsewhere) message = tr("It was being edited on another machine, and may still be.");
  if (journals_.empty()) message = tr("Nothing is left to recover.");
  message_->setText(message);
}

void RecoveryDialog::Recover() {
  const int row = GetSelected();
  if (row < 0) return;
  ScEng::Findings findings;
  session_ = ScEng::EditSession::Recover(catalog_, journals_[static_cast<std::size_t>(row)], state_folder_, findings);
  if (session_ != nullptr) return accept();
  message_->setText(findings.errors.empty() ? tr("The document cannot be recovered.")
                                            : QString::fromStdString(findings.errors.front()));
}

void RecoveryDialog::Discard() {
  const int selected = GetSelected();
  if (selected < 0) return;
  const std::filesystem::path file = journals_[static_cast<std::size_t>(selected)].file;
  auto* question =
      new QMessageBox(QMessageBox::Warning, tr("Discard Changes"),
                      tr("Discard the changes to %1? They cannot be brought back.").arg(list_->currentItem()->text(0)),
                      QMessageBox::Discard | QMessageBox::Cancel, this);
  question->setObjectName(QStringLiteral("recovery.question"));
  question->setTextFormat(Qt::PlainText);
  question->setAttribute(Qt::WA_DeleteOnClose);
  question->setDefaultButton(QMessageBox::Cancel);
  connect(question, &QDialog::finished, this, [this, file](int answer) {
    // The list may be another one by now.
    const auto journal = std::find_if(journals_.begin(), journals_.end(),
                                      [&](const ScEng::FoundJournal& other) { return other.file == file; });
    if (answer != QMessageBox::Discard || journal == journals_.end()) return;
    ScEng::DiscardJournal(*journal);
    journals_.erase(journal);
    if (journals_.empty()) return reject();
    FillList();
  });
  question->open();
}
