// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/HistoryDock.h"

#include <QListView>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

namespace {

/// Draws a line of steps beside the commands: full dots up to where the document is, hollow ones behind it.
class StepDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    QStyleOptionViewItem shifted = option;
    const int gutter = option.fontMetrics.height() * 3 / 2;
    shifted.rect.adjust(gutter, 0, 0, 0);
    QStyledItemDelegate::paint(painter, shifted, index);
    const auto* model = static_cast<const HistoryModel*>(index.model());
    const int row = index.row();
    const QColor accent = option.palette.color(QPalette::Highlight);
    const QColor faint = option.palette.color(QPalette::Mid);
    const QPointF middle(option.rect.left() + gutter / 2.0, option.rect.center().y() + 0.5);
    const double radius = option.fontMetrics.height() / (row == model->GetPlace() ? 3.6 : 5.5);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const double thickness = option.fontMetrics.height() / 10.0;
    const auto draw_line = [&](double from, double to, bool is_done) {
      painter->setPen(QPen(is_done ? accent : faint, thickness));
      painter->drawLine(QPointF(middle.x(), from), QPointF(middle.x(), to));
    };
    if (row > 0) draw_line(option.rect.top(), middle.y(), row <= model->GetPlace());
    if (row + 1 < model->rowCount()) draw_line(middle.y(), option.rect.bottom() + 1.0, row < model->GetPlace());
    const bool is_done = row <= model->GetPlace();
    painter->setPen(QPen(is_done ? accent : faint, thickness));
    painter->setBrush(is_done ? accent : option.palette.color(QPalette::Base));
    painter->drawEllipse(middle, radius, radius);
    painter->restore();
  }

  [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    const QSize size = QStyledItemDelegate::sizeHint(option, index);
    return {size.width() + option.fontMetrics.height() * 3 / 2, option.fontMetrics.height() * 8 / 5};
  }
};

}  // namespace

HistoryDock::HistoryDock(ScEng::EditSession& session, QWidget* parent)
    : QWidget(parent), session_(session), watch_(session, this) {
  setObjectName(QStringLiteral("history"));
  setWindowTitle(tr("History"));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  list_ = new QListView(this);
  list_->setObjectName(QStringLiteral("history.list"));
  list_->setAccessibleName(tr("History of changes"));
  list_->setFrameShape(QFrame::NoFrame);
  list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  list_->setUniformItemSizes(true);
  list_->setItemDelegate(new StepDelegate(list_));
  list_->setModel(&model_);
  layout->addWidget(list_);
  connect(list_, &QListView::clicked, this, &HistoryDock::GoTo);
  connect(list_, &QListView::activated, this, &HistoryDock::GoTo);
  connect(&watch_, &SessionWatch::Changed, this, &HistoryDock::Refresh);
  Refresh();
}

HistoryDock::~HistoryDock() = default;

void HistoryDock::Refresh() {
  const int before = model_.GetPlace();
  model_.Update(session_.GetFile().empty() ? tr("New document") : tr("Opened"), session_.GetHistory(),
                session_.GetPlace());
  if (model_.GetPlace() == before && list_->currentIndex().isValid()) return;
  const QModelIndex place = model_.index(model_.GetPlace());
  list_->setCurrentIndex(place);
  list_->scrollTo(place);
}

void HistoryDock::GoTo(const QModelIndex& index) {
  // A click tells both that it was clicked and, in some styles, that it was activated.
  if (!index.isValid() || index.row() == static_cast<int>(session_.GetPlace())) return;
  const ScEng::Status status = session_.GoTo(static_cast<std::size_t>(index.row()));
  if (status.IsError()) emit Failed(QString::fromStdString(status.GetMessage()));
  Refresh();
}
