// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/ProfilerDock.h"

#include <QHeaderView>
#include <QLabel>
#include <QPainter>
#include <QTreeView>
#include <QVBoxLayout>

#include "Apps/Editor/Docks/RoomyRows.h"

namespace {

/// Draws a bar behind each time, as long as its share of the longest.
class ShareRows : public RoomyRows {
 public:
  using RoomyRows::RoomyRows;

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    RoomyRows::paint(painter, option, index);
    const QVariant share = index.data(ProfilerModel::kShare);
    if (!share.isValid() || (option.state & QStyle::State_Selected) != 0) return;
    QColor color = option.palette.color(QPalette::Highlight);
    color.setAlphaF(0.22F);
    const int gap = option.fontMetrics.height() / 6;
    QRect bar = option.rect.adjusted(gap, gap, -gap, -gap);
    bar.setLeft(bar.right() - static_cast<int>(bar.width() * share.toDouble()));
    painter->fillRect(bar, color);
  }
};

}  // namespace

ProfilerDock::ProfilerDock(ScEng::EditSession& session, QWidget* parent)
    : QWidget(parent), session_(session), watch_(session, this) {
  setObjectName(QStringLiteral("profiler"));
  setWindowTitle(tr("Profiler"));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  view_ = new QTreeView(this);
  view_->setObjectName(QStringLiteral("profiler.list"));
  view_->setAccessibleName(tr("Cost of each node"));
  view_->setFrameShape(QFrame::NoFrame);
  view_->setRootIsDecorated(false);
  view_->setUniformRowHeights(true);
  view_->setAllColumnsShowFocus(true);
  view_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  view_->setItemDelegate(new ShareRows(view_));
  order_.setSourceModel(&model_);
  order_.setDynamicSortFilter(true);
  view_->setModel(&order_);
  view_->setSortingEnabled(true);
  view_->sortByColumn(ProfilerModel::kTime, Qt::DescendingOrder);
  view_->header()->setStretchLastSection(false);
  view_->header()->setSectionResizeMode(ProfilerModel::kNode, QHeaderView::Stretch);
  const int character = fontMetrics().averageCharWidth();
  for (const int column : {ProfilerModel::kTime, ProfilerModel::kMemory, ProfilerModel::kEvaluations}) {
    view_->header()->resizeSection(column, character * 15);
  }
  layout->addWidget(view_, 1);
  empty_ = new QLabel(tr("Nothing has been evaluated yet."), this);
  empty_->setObjectName(QStringLiteral("profiler.empty"));
  empty_->setAlignment(Qt::AlignCenter);
  empty_->setEnabled(false);
  layout->addWidget(empty_, 1);
  connect(view_, &QTreeView::clicked, this, &ProfilerDock::Activate);
  connect(view_, &QTreeView::activated, this, &ProfilerDock::Activate);
  connect(&watch_, &SessionWatch::Changed, this, &ProfilerDock::Refresh);
  connect(&watch_, &SessionWatch::NodeRenamed, this,
          [this](const std::string& before, const std::string& now) { model_.Rename(before, now); });
  Refresh();
}

ProfilerDock::~ProfilerDock() = default;

void ProfilerDock::SetFacts(const std::vector<ScEng::NodeFacts>& facts) {
  model_.Add(facts);
  Refresh();
}

void ProfilerDock::Refresh() {
  model_.Keep([this](const std::string& id) { return session_.GetDocument().HasId(id); });
  const bool has_any = model_.rowCount() > 0;
  view_->setVisible(has_any);
  empty_->setVisible(!has_any);
}

void ProfilerDock::Activate(const QModelIndex& index) {
  const std::string id = model_.GetId(order_.mapToSource(index).row());
  if (!id.empty()) emit NodeActivated(QString::fromStdString(id));
}
