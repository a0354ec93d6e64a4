// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/NodeHeader.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QToolButton>
#include <QVBoxLayout>

#include "Apps/Editor/Docks/PanelLook.h"
#include "Apps/Editor/Docks/Signs.h"

namespace {

constexpr int kMargin = 16;
constexpr int kGap = 8;
constexpr int kIconSize = 32;

}  // namespace

QSize NoteField::sizeHint() const {
  constexpr int kLines = 2;
  const int frame = 2 * frameWidth() + static_cast<int>(2.0 * document()->documentMargin()) + 2;
  return {fontMetrics().averageCharWidth() * 20, fontMetrics().lineSpacing() * kLines + frame};
}

QSize NoteField::minimumSizeHint() const { return {fontMetrics().averageCharWidth() * 8, sizeHint().height()}; }

void NoteField::focusOutEvent(QFocusEvent* event) {
  QPlainTextEdit::focusOutEvent(event);
  // Its own menu is no reason to end.
  if (event->reason() != Qt::PopupFocusReason) emit Finished();
}

void NoteField::keyPressEvent(QKeyEvent* event) {
  const bool is_enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (!is_enter || event->modifiers() != Qt::ControlModifier) return QPlainTextEdit::keyPressEvent(event);
  emit Finished();
}

NodeHeader::NodeHeader(QWidget* parent) : QWidget(parent) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(kMargin, kMargin, kMargin, kGap);
  layout->setSpacing(kGap);
  auto* top = new QHBoxLayout;
  top->setSpacing(kGap + kGap / 2);
  icon_ = new QLabel(this);
  icon_->setFixedSize(kIconSize, kIconSize);
  type_ = new QLabel(this);
  type_->setObjectName(QStringLiteral("attributes.type"));
  type_->setTextFormat(Qt::PlainText);
  QFont font = type_->font();
  font.setBold(true);
  font.setPointSizeF(font.pointSizeF() * 1.25);
  type_->setFont(font);
  enabled_ = new QCheckBox(tr("Enabled"), this);
  enabled_->setObjectName(QStringLiteral("attributes.enabled"));
  enabled_->setAccessibleName(tr("Enabled"));
  enabled_->setToolTip(tr("A disabled node passes on what comes in, or does nothing; Help says what."));
  top->addWidget(icon_);
  top->addWidget(type_, 1);
  top->addWidget(enabled_);
  layout->addLayout(top);

  auto* grid = new QGridLayout;
  grid->setHorizontalSpacing(kGap + kGap / 2);
  grid->setVerticalSpacing(kGap / 2);
  grid->setColumnStretch(1, 1);
  constexpr int kLeastLabel = 76;
  grid->setColumnMinimumWidth(0, kLeastLabel);
  name_ = new QLineEdit(this);
  name_->setObjectName(QStringLiteral("attributes.name"));
  name_->setAccessibleName(tr("Name of the node"));
  name_label_ = new QLabel(tr("Na&me"), this);
  name_label_->setBuddy(name_);
  grid->addWidget(name_label_, 0, 0);
  grid->addWidget(name_, 0, 1);
  error_ = new QLabel(this);
  error_->setObjectName(QStringLiteral("attributes.error"));
  error_->setTextFormat(Qt::PlainText);
  error_->setWordWrap(true);
  error_->hide();
  grid->addWidget(error_, 1, 1);
  note_ = new NoteField(this);
  note_->setObjectName(QStringLiteral("attributes.note"));
  note_->setAccessibleName(tr("Note"));
  note_->setPlaceholderText(tr("What this node is there for"));
  note_->setTabChangesFocus(true);
  note_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  note_label_ = new QLabel(tr("N&ote"), this);
  note_label_->setBuddy(note_);
  grid->addWidget(note_label_, 2, 0, Qt::AlignTop);
  grid->addWidget(note_, 2, 1);
  layout->addLayout(grid);

  auto* bar = new QHBoxLayout;
  bar->setSpacing(kGap / 2);
  QToolButton* reset =
      AddButton(QStringLiteral("attributes.reset"), tr("Reset"), tr("Sets every attribute to its default"));
  QToolButton* presets =
      AddButton(QStringLiteral("attributes.presets"), tr("Presets"), tr("Sets of values under a name"));
  QToolButton* copy = AddButton(QStringLiteral("attributes.copy"), tr("Copy as Command"),
                                tr("Copies what the node does as a command for the terminal"));
  QToolButton* help = AddButton(QStringLiteral("attributes.help"), tr("Help"), tr("Shows the page of this node"));
  presets_ = new QMenu(presets);
  presets->setMenu(presets_);
  presets->setPopupMode(QToolButton::InstantPopup);
  copy_ = new QMenu(copy);
  copy->setMenu(copy_);
  copy->setPopupMode(QToolButton::InstantPopup);
  for (QToolButton* button : buttons_) bar->addWidget(button);
  bar->addStretch(1);
  layout->addLayout(bar);

  connect(name_, &QLineEdit::editingFinished, this, &NodeHeader::FinishName);
  connect(name_, &QLineEdit::textEdited, this, [this] { ShowError({}); });
  connect(note_, &NoteField::Finished, this, &NodeHeader::FinishNote);
  // A click on a box that is partly checked checks it.
  connect(enabled_, &QCheckBox::clicked, this,
          [this] { emit EnabledChanged(enabled_->checkState() != Qt::Unchecked); });
  connect(reset, &QToolButton::clicked, this, &NodeHeader::ResetRequested);
  connect(help, &QToolButton::clicked, this, &NodeHeader::HelpRequested);
  UsePanelLook(*this);
}

QToolButton* NodeHeader::AddButton(const QString& name, const QString& text, const QString& tip) {
  auto* button = new QToolButton(this);
  button->setObjectName(name);
  button->setText(text);
  button->setAccessibleName(text);
  button->setToolTip(tip);
  button->setFocusPolicy(Qt::TabFocus);
  button->setAutoRaise(true);
  buttons_ += button;
  return button;
}

void NodeHeader::Show(const Facts& facts) {
  const bool is_other = facts.id != facts_.id;
  const QString before = facts_.note;
  const QString name_before = facts_.id;
  facts_ = facts;
  icon_->setPixmap(facts.icon.pixmap(kIconSize));
  icon_->setVisible(!facts.icon.isNull());
  type_->setText(facts.type);
  // Half-checked is what several nodes are; a person can only set or clear it.
  enabled_->setTristate(facts.enabled == Qt::PartiallyChecked);
  enabled_->setCheckState(facts.enabled);
  if (is_other || name_->text() == name_before || !name_->hasFocus()) name_->setText(facts.id);
  if (is_other || (note_->toPlainText() == before && before != facts.note)) note_->setPlainText(facts.note);
  if (is_other) ShowError({});
  const bool has_name = !facts.id.isEmpty();
  for (QWidget* widget : {static_cast<QWidget*>(name_), static_cast<QWidget*>(name_label_),
                          static_cast<QWidget*>(note_), static_cast<QWidget*>(note_label_)}) {
    widget->setVisible(has_name);
  }
  for (QToolButton* button : buttons_) button->setEnabled(facts.has_attributes);
}

void NodeHeader::ShowError(const QString& message) {
  QPalette colors = palette();
  colors.setColor(QPalette::WindowText, GetSignColor(Sign::kError, colors));
  error_->setPalette(colors);
  error_->setText(message);
  error_->setVisible(!message.isEmpty());
}

void NodeHeader::Finish() {
  FinishName();
  FinishNote();
}

void NodeHeader::FinishName() {
  const QString now = name_->text();
  if (facts_.id.isEmpty() || now == facts_.id) return;
  emit Renamed(now);
}

void NodeHeader::FinishNote() {
  const QString note = note_->toPlainText();
  if (facts_.id.isEmpty() || note == facts_.note) return;
  emit NoteChanged(note);
}
