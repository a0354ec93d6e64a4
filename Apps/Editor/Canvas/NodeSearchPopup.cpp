// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/NodeSearchPopup.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QScreen>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "Apps/Editor/Canvas/TypeTile.h"

NodeSearchPopup::NodeSearchPopup(const NodeTypes& types, const NodeUsage& usage, QWidget* parent)
    : QFrame(parent, Qt::Popup),
      types_(types),
      usage_(usage),
      words_(new QLineEdit(this)),
      list_(new QListWidget(this)),
      sentence_(new QLabel(this)) {
  setObjectName(QStringLiteral("canvas.search"));
  setAccessibleName(tr("Add a node"));
  setFrameShape(QFrame::StyledPanel);
  words_->setObjectName(QStringLiteral("canvas.search.words"));
  words_->setAccessibleName(tr("Find a node type"));
  words_->setPlaceholderText(tr("Find a node type"));
  words_->setClearButtonEnabled(true);
  list_->setObjectName(QStringLiteral("canvas.search.list"));
  list_->setAccessibleName(tr("Node types"));
  list_->setFrameShape(QFrame::NoFrame);
  list_->setUniformItemSizes(true);
  list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  const int line = fontMetrics().height();
  list_->setIconSize(QSize(line * 3 / 2, line * 3 / 2));
  list_->setFocusPolicy(Qt::NoFocus);
  sentence_->setObjectName(QStringLiteral("canvas.search.sentence"));
  sentence_->setWordWrap(true);
  sentence_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
  sentence_->setFixedHeight(line * 3 + 6);
  sentence_->setForegroundRole(QPalette::PlaceholderText);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(8, 8, 8, 8);
  layout->setSpacing(6);
  layout->addWidget(words_);
  layout->addWidget(list_, 1);
  layout->addWidget(sentence_);
  words_->installEventFilter(this);
  resize(line * 22, line * 24);
  connect(words_, &QLineEdit::textChanged, this, &NodeSearchPopup::List);
  connect(list_, &QListWidget::currentRowChanged, this, &NodeSearchPopup::ShowSentence);
  connect(list_, &QListWidget::itemClicked, this, &NodeSearchPopup::Take);
}

void NodeSearchPopup::Open(const QPoint& global, Filter filter) {
  filter_ = std::move(filter);
  words_->clear();
  List({});
  QRect place(global, size());
  if (const QScreen* screen = QApplication::screenAt(global)) {
    const QRect all = screen->availableGeometry();
    place.moveRight(std::min(place.right(), all.right()));
    place.moveBottom(std::min(place.bottom(), all.bottom()));
    place.moveLeft(std::max(place.left(), all.left()));
    place.moveTop(std::max(place.top(), all.top()));
  }
  move(place.topLeft());
  show();
  words_->setFocus();
}

std::vector<const TypeInfo*> NodeSearchPopup::Find(const QString& words) const {
  std::vector<const TypeInfo*> found;
  const auto add = [&](const TypeInfo* type) {
    const bool is_new = type != nullptr && std::find(found.begin(), found.end(), type) == found.end();
    if (is_new && (!filter_ || filter_(*type))) found.push_back(type);
  };
  if (!words.trimmed().isEmpty()) {
    for (const std::size_t place : types_.Search(words.toStdString())) add(&types_.GetAll()[place]);
    return found;
  }
  for (const std::string& name : usage_.Rank()) add(types_.FindName(name));
  std::vector<const TypeInfo*> rest;
  for (const TypeInfo& type : types_.GetAll()) rest.push_back(&type);
  std::stable_sort(rest.begin(), rest.end(),
                   [](const TypeInfo* a, const TypeInfo* b) { return a->name.localeAwareCompare(b->name) < 0; });
  for (const TypeInfo* type : rest) add(type);
  return found;
}

void NodeSearchPopup::List(const QString& words) {
  list_->clear();
  const CanvasColors colors(palette());
  for (const TypeInfo* type : Find(words)) {
    auto* item = new QListWidgetItem(
        MakeTypeIcon(*type, colors, font(), list_->iconSize().height(), devicePixelRatioF()), type->name, list_);
    item->setData(Qt::UserRole, static_cast<int>(type - types_.GetAll().data()));
    item->setToolTip(type->sentence);
  }
  list_->setCurrentRow(0);
  ShowSentence();
}

void NodeSearchPopup::ShowSentence() {
  const QListWidgetItem* item = list_->currentItem();
  if (item == nullptr) {
    sentence_->setText(tr("No node type is found by these words."));
    return;
  }
  sentence_->setText(types_.GetAll()[static_cast<std::size_t>(item->data(Qt::UserRole).toInt())].sentence);
  words_->setAccessibleDescription(item->text() + QStringLiteral(". ") + sentence_->text());
}

void NodeSearchPopup::Take() {
  const QListWidgetItem* item = list_->currentItem();
  if (item == nullptr) return;
  const TypeInfo* type = &types_.GetAll()[static_cast<std::size_t>(item->data(Qt::UserRole).toInt())];
  hide();
  emit Chosen(type);
}

void NodeSearchPopup::MoveMark(int rows) {
  if (list_->count() == 0) return;
  list_->setCurrentRow(std::clamp(list_->currentRow() + rows, 0, list_->count() - 1));
}

bool NodeSearchPopup::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::ShortcutOverride) {
    // The shortcuts of the canvas, Tab among them, rest while it is open.
    event->accept();
    return true;
  }
  if (event->type() != QEvent::KeyPress) return QFrame::eventFilter(watched, event);
  constexpr int kPage = 8;
  switch (static_cast<QKeyEvent*>(event)->key()) {
    case Qt::Key_Down:
    case Qt::Key_Tab: MoveMark(1); return true;
    case Qt::Key_Up:
    case Qt::Key_Backtab: MoveMark(-1); return true;
    case Qt::Key_PageDown: MoveMark(kPage); return true;
    case Qt::Key_PageUp: MoveMark(-kPage); return true;
    case Qt::Key_Return:
    case Qt::Key_Enter: Take(); return true;
    case Qt::Key_Escape: hide(); return true;
    default: return QFrame::eventFilter(watched, event);
  }
}
