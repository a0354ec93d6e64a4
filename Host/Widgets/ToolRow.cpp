// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/ToolRow.h"

#include <QAction>
#include <QEvent>
#include <QMenu>
#include <QPainter>
#include <QStyle>
#include <algorithm>

#include "Host/Widgets/PanelStyle.h"
#include "Host/Widgets/ViewerIcons.h"

namespace ScEng {
namespace {

constexpr int kSpacing = 2;
constexpr int kGap = 9;

int GetPadding(const QWidget& widget) { return widget.fontMetrics().height() / 3; }
bool HasMenu(const QToolButton& button) {
  return button.defaultAction() != nullptr && button.defaultAction()->menu() != nullptr;
}
int GetIconSize(const QWidget& widget) { return widget.fontMetrics().height() + 2; }

}  // namespace

// ---- Button ----

ToolRowButton::ToolRowButton(QWidget* parent) : QToolButton(parent) {
  setFocusPolicy(Qt::TabFocus);
  setAttribute(Qt::WA_Hover);
}

QSize ToolRowButton::sizeHint() const {
  const int padding = GetPadding(*this);
  int width = 2 * padding;
  if (toolButtonStyle() != Qt::ToolButtonTextOnly) width += GetIconSize(*this);
  if (toolButtonStyle() == Qt::ToolButtonTextOnly) width += fontMetrics().horizontalAdvance(text()) + padding;
  if (HasMenu(*this)) width += fontMetrics().height() * 2 / 3;
  return {width, GetIconSize(*this) + 2 * padding};
}

void ToolRowButton::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QColor window = palette().color(QPalette::Window);
  const QColor accent = palette().color(QPalette::Active, QPalette::Highlight);
  const QRectF box = QRectF(rect()).adjusted(1.0, 1.0, -1.0, -1.0);
  QColor ground = Qt::transparent;
  if (isChecked()) ground = Mix(window, accent, 0.28);
  if (underMouse() && isEnabled())
    ground = Mix(isChecked() ? ground : window, palette().color(QPalette::WindowText), 0.1);
  if (isDown()) ground = Mix(window, accent, 0.4);
  painter.setPen(hasFocus() ? QPen(accent, 2.0) : QPen(Qt::NoPen));
  painter.setBrush(ground);
  painter.drawRoundedRect(box, 4.0, 4.0);

  const int padding = GetPadding(*this);
  const auto group = isEnabled() ? QPalette::Active : QPalette::Disabled;
  QRect content = rect().adjusted(padding, padding, -padding, -padding);
  if (HasMenu(*this)) {
    const int width = fontMetrics().height() * 2 / 3;
    DrawChevron(painter, QPointF(content.right() - width / 2.0 + 2.0, rect().center().y() + 1.0), 6.0, true,
                palette().color(group, QPalette::ButtonText));
    content.setRight(content.right() - width);
  }
  if (toolButtonStyle() == Qt::ToolButtonTextOnly) {
    painter.setPen(palette().color(group, QPalette::ButtonText));
    painter.drawText(content, Qt::AlignCenter, text());
    return;
  }
  const int size = GetIconSize(*this);
  QRect area(0, 0, size, size);
  area.moveCenter(content.center());
  icon().paint(&painter, area, Qt::AlignCenter, isEnabled() ? QIcon::Normal : QIcon::Disabled);
}

// ---- Row ----

ToolRow::ToolRow(QWidget* parent) : QWidget(parent), more_(new ToolRowButton(this)), menu_(new QMenu(this)) {
  more_->setObjectName(QStringLiteral("viewer.more"));
  more_->setAccessibleName(tr("More tools"));
  more_->setToolTip(tr("More tools"));
  more_->setIcon(MakeViewerIcon(ViewerSign::kMore));
  more_->hide();
  menu_->setObjectName(QStringLiteral("viewer.more_menu"));
  connect(menu_, &QMenu::aboutToShow, this, [this] { FillMenu(); });
  // Opened by hand: a button with a menu of its own would show a second arrow.
  connect(more_, &QToolButton::clicked, this, [this] { menu_->popup(more_->mapToGlobal(more_->rect().bottomLeft())); });
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

ToolRowButton* ToolRow::Add(QAction* action) {
  auto* button = new ToolRowButton(this);
  button->setDefaultAction(action);
  button->setPopupMode(QToolButton::InstantPopup);
  button->setObjectName(action->objectName());
  button->setAccessibleName(action->text());
  if (action->icon().isNull()) button->setToolButtonStyle(Qt::ToolButtonTextOnly);
  items_.push_back({button, next_gap_, is_right_});
  next_gap_ = 0;
  // The text of a button, and so its width, goes with its action.
  connect(action, &QAction::changed, this, [this, button, action] {
    button->setAccessibleName(action->text());
    Arrange();
  });
  Arrange();
  return button;
}

void ToolRow::AddStretch() { is_right_ = true; }

void ToolRow::AddGap() { next_gap_ = kGap; }

QWidget* ToolRow::FindAnchor(const QAction* action) const {
  for (const Item& item : items_) {
    if (item.button->defaultAction() == action && !item.button->isHidden()) return item.button;
  }
  return more_;
}

QSize ToolRow::sizeHint() const {
  int width = 0;
  int height = more_->sizeHint().height();
  for (const Item& item : items_) width += item.button->sizeHint().width() + kSpacing + item.gap;
  return {width, height};
}

QSize ToolRow::minimumSizeHint() const {
  constexpr int kLeast = 3;
  return more_->sizeHint() + QSize(kLeast * more_->sizeHint().width(), 0);
}

void ToolRow::resizeEvent(QResizeEvent*) { Arrange(); }

void ToolRow::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) Arrange();
}

bool ToolRow::event(QEvent* event) {
  if (event->type() == QEvent::LayoutRequest || event->type() == QEvent::Show) Arrange();
  return QWidget::event(event);
}

void ToolRow::Arrange() {
  const bool fits = sizeHint().width() <= width();
  const int room = fits ? width() : width() - more_->sizeHint().width() - kSpacing;
  int x = 0;
  std::size_t shown = 0;
  for (; shown < items_.size(); ++shown) {
    const Item& item = items_[shown];
    const int wide = item.button->sizeHint().width();
    if (x + item.gap + wide > room) break;
    item.button->setGeometry(x + item.gap, 0, wide, item.button->sizeHint().height());
    x += item.gap + wide + kSpacing;
  }
  for (std::size_t i = 0; i < items_.size(); ++i) items_[i].button->setVisible(i < shown);
  more_->setVisible(!fits);
  if (!fits) {
    more_->setGeometry(width() - more_->sizeHint().width(), 0, more_->sizeHint().width(), more_->sizeHint().height());
    return;
  }
  int right = width();
  for (auto item = items_.rbegin(); item != items_.rend() && item->is_right; ++item) {
    right -= item->button->width();
    item->button->move(right, 0);
    right -= kSpacing + item->gap;
  }
}

void ToolRow::FillMenu() {
  menu_->clear();
  for (const Item& item : items_) {
    if (item.button->isHidden()) menu_->addAction(item.button->defaultAction());
  }
}

}  // namespace ScEng
