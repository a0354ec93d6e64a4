// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Files/FirstSteps.h"

#include <QCheckBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QSettings>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "Apps/Editor/Docks/PanelLook.h"

namespace {

const QString kKey = QStringLiteral("first_steps/hidden");

}  // namespace

// ---- The frame ----

StepMarker::StepMarker(QWidget* window) : QWidget(window) {
  setObjectName(QStringLiteral("first_steps.marker"));
  setAttribute(Qt::WA_TransparentForMouseEvents);
  setFocusPolicy(Qt::NoFocus);
  hide();
}

void StepMarker::Mark(QWidget* target) {
  if (target_ != nullptr) target_->removeEventFilter(this);
  target_ = target;
  if (target_ != nullptr) target_->installEventFilter(this);
  Follow();
}

void StepMarker::Follow() {
  const bool is_shown = target_ != nullptr && target_->isVisible() && target_->window() == window();
  setVisible(is_shown);
  if (!is_shown) return;
  setGeometry(QRect(target_->mapTo(parentWidget(), QPoint(0, 0)), target_->size()));
  raise();
}

bool StepMarker::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::Move:
    case QEvent::Resize:
    case QEvent::Show:
    case QEvent::Hide: Follow(); break;
    default: break;
  }
  return QWidget::eventFilter(watched, event);
}

void StepMarker::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const double thickness = fontMetrics().height() / 5.0;
  const QRectF line = QRectF(rect()).adjusted(thickness, thickness, -thickness, -thickness);
  QColor glow = palette().color(QPalette::Highlight);
  glow.setAlphaF(0.3F);
  painter.setPen(QPen(glow, thickness * 2.0));
  painter.drawRoundedRect(line, thickness * 2.0, thickness * 2.0);
  painter.setPen(QPen(palette().color(QPalette::Highlight), thickness));
  painter.drawRoundedRect(line, thickness * 2.0, thickness * 2.0);
}

// ---- The panel ----

FirstSteps::FirstSteps(QWidget* window, QList<FirstStep> steps, const QString& settings_file)
    : QFrame(window), window_(window), steps_(std::move(steps)), settings_file_(settings_file) {
  setObjectName(QStringLiteral("first_steps"));
  setAccessibleName(tr("First steps"));
  setFrameShape(QFrame::NoFrame);
  marker_ = new StepMarker(window);
  const int unit = fontMetrics().height();
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(unit, unit, unit, unit);
  layout->setSpacing(unit / 2);
  count_ = new QLabel(this);
  count_->setObjectName(QStringLiteral("first_steps.count"));
  count_->setEnabled(false);
  layout->addWidget(count_);
  title_ = new QLabel(this);
  title_->setObjectName(QStringLiteral("first_steps.title"));
  QFont font = title_->font();
  font.setBold(true);
  font.setPointSizeF(font.pointSizeF() * 1.25);
  title_->setFont(font);
  layout->addWidget(title_);
  text_ = new QLabel(this);
  text_->setObjectName(QStringLiteral("first_steps.text"));
  text_->setWordWrap(true);
  text_->setFixedWidth(fontMetrics().averageCharWidth() * 52);
  text_->setMinimumHeight(fontMetrics().lineSpacing() * 3);
  text_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
  layout->addWidget(text_);
  never_ = new QCheckBox(tr("Do not show this again"), this);
  never_->setObjectName(QStringLiteral("first_steps.never"));
  never_->setAccessibleName(never_->text());
  layout->addWidget(never_);
  auto* bar = new QHBoxLayout;
  const auto add = [&](const QString& name, const QString& text) {
    auto* button = new QPushButton(text, this);
    button->setObjectName(name);
    button->setAccessibleName(QString(text).remove(u'&'));
    button->setAutoDefault(true);
    bar->addWidget(button);
    return button;
  };
  QPushButton* skip = add(QStringLiteral("first_steps.skip"), tr("&Skip"));
  bar->addStretch(1);
  back_ = add(QStringLiteral("first_steps.back"), tr("&Back"));
  next_ = add(QStringLiteral("first_steps.next"), tr("&Next"));
  layout->addLayout(bar);
  connect(skip, &QPushButton::clicked, this, &FirstSteps::End);
  connect(back_, &QPushButton::clicked, this, [this] { GoTo(step_ - 1); });
  connect(next_, &QPushButton::clicked, this, [this] { GoTo(step_ + 1); });
  UsePanelLook(*this);
  window_->installEventFilter(this);
  hide();
}

FirstSteps::~FirstSteps() = default;

QList<FirstStep> FirstSteps::MakeSteps() {
  return {
      {tr("Add nodes"),
       tr("This is the graph. Press Tab, or double-click, and type what you look for: the node appears where the "
          "pointer is. Drag from one plug to another to connect them."),
       QStringLiteral("canvas")},
      {tr("See the result"),
       tr("The image of the node that you choose is shown here, and again after every change. Scroll to zoom, and "
          "drag to move."),
       QStringLiteral("viewer")},
      {tr("Set attributes"),
       tr("Select a node to see its attributes. Everything can be undone, so try what a slider does."),
       QStringLiteral("attributes")},
      {tr("Keep the result"),
       tr("An output writes an image to a file. The ending of its name says the format. Write All writes them all."),
       QStringLiteral("outputs")},
      {tr("Find out more"),
       tr("Each node has a page that says what it does and what each of its attributes is for. You can read these "
          "steps again from the Help menu."),
       QStringLiteral("help")}};
}

bool FirstSteps::AreWanted(const QString& settings_file) {
  return !QSettings(settings_file, QSettings::IniFormat).value(kKey, false).toBool();
}

void FirstSteps::Start() {
  if (steps_.isEmpty()) return;
  // Once is enough, unless somebody says otherwise.
  never_->setChecked(true);
  show();
  GoTo(0);
  next_->setFocus();
}

void FirstSteps::GoTo(int step) {
  if (step >= steps_.size()) return End();
  step_ = std::max(0, step);
  const FirstStep& shown = steps_[step_];
  count_->setText(tr("Step %1 of %2").arg(step_ + 1).arg(steps_.size()));
  title_->setText(shown.title);
  text_->setText(shown.text);
  back_->setEnabled(step_ > 0);
  next_->setText(step_ + 1 == steps_.size() ? tr("&Done") : tr("&Next"));
  next_->setAccessibleName(next_->text().remove(u'&'));
  auto* target = shown.target.isEmpty() ? nullptr : window_->findChild<QWidget*>(shown.target);
  marker_->Mark(target);
  Place();
}

void FirstSteps::End() {
  QSettings(settings_file_, QSettings::IniFormat).setValue(kKey, never_->isChecked());
  marker_->Mark(nullptr);
  hide();
  emit Finished();
}

void FirstSteps::Place() {
  adjustSize();
  const int gap = fontMetrics().height() * 2;
  const QRect room = window_->rect().adjusted(gap, gap, -gap, -gap);
  // In the corner that hides least of what it points at.
  const QRect marked = marker_->isVisible() ? marker_->geometry() : QRect();
  QPoint best;
  int least = -1;
  for (const QPoint& corner :
       {QPoint(room.right() - width(), room.bottom() - height()), QPoint(room.left(), room.bottom() - height()),
        room.topLeft(), QPoint(room.right() - width(), room.top())}) {
    const QRect hidden = QRect(corner, size()).intersected(marked);
    const int area = hidden.isEmpty() ? 0 : hidden.width() * hidden.height();
    if (least >= 0 && area >= least) continue;
    least = area;
    best = corner;
  }
  move(best);
  raise();
}

void FirstSteps::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const double radius = fontMetrics().height() / 2.0;
  painter.setPen(QPen(palette().color(QPalette::Highlight), fontMetrics().height() / 10.0));
  painter.setBrush(palette().color(QPalette::Base));
  const double edge = painter.pen().widthF();
  painter.drawRoundedRect(QRectF(rect()).adjusted(edge, edge, -edge, -edge), radius, radius);
}

bool FirstSteps::eventFilter(QObject* watched, QEvent* event) {
  if (watched == window_ && event->type() == QEvent::Resize && isVisible()) Place();
  return QFrame::eventFilter(watched, event);
}

void FirstSteps::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape) return End();
  QFrame::keyPressEvent(event);
}
