// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Files/TemplatesDialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QPixmap>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include "Apps/Editor/Docks/PanelLook.h"

namespace {

constexpr int kSentence = Qt::UserRole;
/// The shape of the pictures.
constexpr double kPictureRatio = 200.0 / 320.0;

/// Draws a template as a card: picture, title, sentence. Sizes follow the font.
class CardDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    const int gap = option.fontMetrics.height() / 2;
    const QRect card = option.rect.adjusted(gap / 2, gap / 2, -gap / 2, -gap / 2);
    const bool is_chosen = (option.state & QStyle::State_Selected) != 0;
    const QPalette& colors = option.palette;
    painter->setPen(QPen(colors.color(is_chosen ? QPalette::Highlight : QPalette::Mid), is_chosen ? 2.0 : 1.0));
    painter->setBrush(colors.color(QPalette::Base));
    painter->drawRoundedRect(card, gap / 2.0, gap / 2.0);
    QRect picture = card.adjusted(gap, gap, -gap, 0);
    picture.setHeight(static_cast<int>(picture.width() * kPictureRatio));
    const auto pixmap = index.data(Qt::DecorationRole).value<QPixmap>();
    if (!pixmap.isNull()) {
      painter->drawPixmap(picture, pixmap);
    } else {
      DrawEmpty(*painter, picture, colors, gap);
    }
    QRect text = card.adjusted(gap, picture.height() + gap * 2, -gap, -gap / 2);
    QFont bold = option.font;
    bold.setBold(true);
    painter->setFont(bold);
    painter->setPen(colors.color(QPalette::Text));
    painter->drawText(text, Qt::AlignTop | Qt::AlignLeft, index.data(Qt::DisplayRole).toString());
    text.setTop(text.top() + option.fontMetrics.lineSpacing() + gap / 3);
    painter->setFont(option.font);
    painter->setPen(colors.color(QPalette::PlaceholderText));
    painter->drawText(text, static_cast<int>(Qt::AlignTop | Qt::AlignLeft) | static_cast<int>(Qt::TextWordWrap),
                      index.data(kSentence).toString());
    painter->restore();
  }

  [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override {
    const int width = option.fontMetrics.averageCharWidth() * 32;
    constexpr int kLines = 4;
    return {width, static_cast<int>(width * kPictureRatio) + option.fontMetrics.lineSpacing() * (kLines + 1)};
  }

 private:
  /// A plus sign in place of a picture.
  static void DrawEmpty(QPainter& painter, const QRect& place, const QPalette& colors, int gap) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(colors.color(QPalette::Window));
    painter.drawRect(place);
    painter.setPen(QPen(colors.color(QPalette::PlaceholderText), 2.0, Qt::SolidLine, Qt::RoundCap));
    const QPoint middle = place.center();
    painter.drawLine(middle - QPoint(gap * 2, 0), middle + QPoint(gap * 2, 0));
    painter.drawLine(middle - QPoint(0, gap * 2), middle + QPoint(0, gap * 2));
  }
};

}  // namespace

TemplatesDialog::TemplatesDialog(QWidget* parent) : QDialog(parent), templates_(ListTemplates()) {
  setObjectName(QStringLiteral("templates"));
  setWindowTitle(tr("New from Template"));
  auto* layout = new QVBoxLayout(this);
  list_ = new QListWidget(this);
  list_->setObjectName(QStringLiteral("templates.list"));
  list_->setAccessibleName(tr("Templates"));
  list_->setFrameShape(QFrame::NoFrame);
  list_->setViewMode(QListView::IconMode);
  list_->setMovement(QListView::Static);
  list_->setResizeMode(QListView::Adjust);
  list_->setUniformItemSizes(true);
  list_->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
  list_->setItemDelegate(new CardDelegate(list_));
  QPalette colors = list_->palette();
  colors.setColor(QPalette::Base, colors.color(QPalette::Window));
  list_->viewport()->setPalette(colors);
  for (const Template& entry : templates_) {
    auto* item = new QListWidgetItem(entry.title, list_);
    item->setData(kSentence, entry.sentence);
    item->setData(Qt::AccessibleDescriptionRole, entry.sentence);
    item->setToolTip(entry.sentence);
    if (!entry.name.isEmpty()) item->setData(Qt::DecorationRole, QPixmap(entry.GetPicture()));
  }
  list_->setCurrentRow(0);
  layout->addWidget(list_, 1);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  buttons->button(QDialogButtonBox::Ok)->setText(tr("Create"));
  buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("templates.create"));
  layout->addWidget(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(list_, &QListWidget::itemDoubleClicked, this, &QDialog::accept);
  const int character = fontMetrics().averageCharWidth();
  resize(character * 136, character * 76);
  UsePanelLook(*this);
}

Template TemplatesDialog::GetChosen() const {
  const int row = list_->currentRow();
  return row >= 0 && row < templates_.size() ? templates_[row] : templates_.front();
}
