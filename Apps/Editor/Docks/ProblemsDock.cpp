// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/ProblemsDock.h"

#include <QHeaderView>
#include <QLabel>
#include <QTreeView>
#include <QVBoxLayout>
#include <unordered_set>
#include <utility>

#include "Apps/Editor/Docks/RoomyRows.h"

namespace {

// Checking the whole document may take a while in a large one, and nobody reads faster.
constexpr int kDelay = 150;

}  // namespace

ProblemsDock::ProblemsDock(ScEng::EditSession& session, QWidget* parent)
    : QWidget(parent), session_(session), watch_(session, this, kDelay) {
  setObjectName(QStringLiteral("problems"));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  view_ = new QTreeView(this);
  view_->setObjectName(QStringLiteral("problems.list"));
  view_->setAccessibleName(tr("Errors and notes"));
  view_->setFrameShape(QFrame::NoFrame);
  view_->setRootIsDecorated(false);
  view_->setUniformRowHeights(true);
  view_->setAllColumnsShowFocus(true);
  view_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  view_->setItemDelegate(new RoomyRows(view_));
  order_.setSourceModel(&model_);
  order_.setSortLocaleAware(true);
  view_->setModel(&order_);
  // A third click on a heading goes back to the order of the document, errors first.
  view_->header()->setSortIndicatorClearable(true);
  view_->setSortingEnabled(true);
  view_->sortByColumn(-1, Qt::AscendingOrder);
  view_->header()->setSectionResizeMode(ProblemsModel::kNode, QHeaderView::Interactive);
  view_->header()->resizeSection(ProblemsModel::kNode, fontMetrics().averageCharWidth() * 22);
  view_->header()->setStretchLastSection(true);
  layout->addWidget(view_);
  empty_ = new QLabel(tr("No problems."), this);
  empty_->setObjectName(QStringLiteral("problems.empty"));
  empty_->setAlignment(Qt::AlignCenter);
  empty_->setEnabled(false);
  layout->addWidget(empty_, 1);
  connect(view_, &QTreeView::clicked, this, &ProblemsDock::Activate);
  connect(view_, &QTreeView::activated, this, &ProblemsDock::Activate);
  connect(&watch_, &SessionWatch::Changed, this, &ProblemsDock::Refresh);
  connect(&watch_, &SessionWatch::NodeRenamed, this, &ProblemsDock::Rename);
  Refresh();
}

ProblemsDock::~ProblemsDock() = default;

void ProblemsDock::SetFacts(const std::vector<ScEng::NodeFacts>& facts) {
  for (const ScEng::NodeFacts& fact : facts) {
    std::vector<Problem> lines;
    for (const std::string& message : fact.messages) {
      // A node that another one keeps from working is not at fault.
      lines.push_back({.is_error = fact.is_in_error && !fact.is_blocked, .id = fact.id, .text = message});
    }
    if (lines.empty()) {
      said_.erase(fact.id);
    } else {
      said_[fact.id] = std::move(lines);
    }
  }
  ShowProblems();
}

void ProblemsDock::Rename(const std::string& before, const std::string& now) {
  auto entry = said_.extract(before);
  if (entry.empty()) return;
  for (Problem& problem : entry.mapped()) problem.id = now;
  entry.key() = now;
  said_.insert(std::move(entry));
}

std::vector<Problem> ProblemsDock::CollectProblems() const {
  const ScEng::GraphDocument& document = session_.GetDocument();
  std::vector<Problem> problems;
  // In the order of the document, whoever was evaluated first.
  for (const std::string& id : document.GetIds()) {
    const auto found = said_.find(id);
    if (found != said_.end()) problems.insert(problems.end(), found->second.begin(), found->second.end());
  }
  std::unordered_set<std::string> said;
  for (const Problem& problem : problems) said.insert(problem.id + "\n" + problem.text);
  const auto add = [&](bool is_error, const std::string& text) {
    const std::string id = FindNodeInText(text, [&](const std::string& name) { return document.HasId(name); });
    // The node itself says the same without its name.
    const std::size_t colon = text.find(": ");
    const std::string own = colon == std::string::npos ? text : text.substr(colon + 2);
    if (said.contains(id + "\n" + text) || said.contains(id + "\n" + own)) return;
    problems.push_back({.is_error = is_error, .id = id, .text = text});
  };
  for (const std::string& text : findings_.errors) add(true, text);
  for (const std::string& text : findings_.notes) add(false, text);
  return problems;
}

void ProblemsDock::Refresh() {
  // A node that is gone has nothing to say, also if it comes back: it is evaluated again then.
  std::erase_if(said_, [&](const auto& entry) { return !session_.GetDocument().HasId(entry.first); });
  findings_ = {};
  session_.GetDocument().CheckComplete(findings_);
  session_.GetDocument().Advise(findings_);
  ShowProblems();
}

void ProblemsDock::ShowProblems() {
  model_.Update(CollectProblems());
  const int count = model_.rowCount();
  const int errors = model_.CountErrors();
  setWindowTitle(count == 0 ? tr("Problems") : tr("Problems (%1)").arg(count));
  view_->setVisible(count > 0);
  empty_->setVisible(count == 0);
  emit CountChanged(errors, count - errors);
}

void ProblemsDock::Activate(const QModelIndex& index) {
  if (!index.isValid()) return;
  const auto row = static_cast<std::size_t>(order_.mapToSource(index).row());
  const std::string& id = model_.GetProblems()[row].id;
  if (!id.empty()) emit NodeActivated(QString::fromStdString(id));
}
