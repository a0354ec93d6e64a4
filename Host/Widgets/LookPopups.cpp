// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/LookPopups.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QPainter>
#include <QScreen>
#include <algorithm>

#include "Host/Widgets/QNodeAttributesWidget.h"
#include "Host/Widgets/RangeModes.h"

namespace ScEng {
namespace {

QPixmap DrawRamp(const std::string& ramp, const QSize& size) {
  QPixmap picture(size);
  QPainter painter(&picture);
  const int last = std::max(1, size.width() - 1);
  for (int x = 0; x < size.width(); ++x) {
    painter.fillRect(x, 0, 1, size.height(), QColor::fromRgb(GetRampColor(ramp, static_cast<double>(x) / last)));
  }
  return picture;
}

QString MakeTitle(const std::string& name) {
  QString title = QString::fromStdString(name);
  if (!title.isEmpty()) title[0] = title[0].toUpper();
  return title;
}

}  // namespace

// ---- What popups share ----

LookPopup::LookPopup(QWidget* parent) : QFrame(parent, Qt::Popup) {
  setFrameShape(QFrame::StyledPanel);
  // What opened it is clicked to close it, and not to open it again.
  setAttribute(Qt::WA_NoMouseReplay);
}

void LookPopup::SetLook(const Look& look) {
  look_ = look;
  is_showing_ = true;
  Show(look);
  is_showing_ = false;
}

void LookPopup::Open(const QWidget& anchor) {
  adjustSize();
  QPoint place = anchor.mapToGlobal(anchor.rect().bottomLeft());
  const QRect room = anchor.screen()->availableGeometry();
  place.setX(std::clamp(place.x(), room.left(), std::max(room.left(), room.right() - width())));
  place.setY(std::clamp(place.y(), room.top(), std::max(room.top(), room.bottom() - height())));
  move(place);
  show();
  for (QWidget* field : findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
    if (field->focusPolicy() == Qt::NoFocus || !field->isEnabled()) continue;
    field->setFocus(Qt::PopupFocusReason);
    break;
  }
}

void LookPopup::Change(const Look& look) {
  if (is_showing_ || look == look_) return;
  SetLook(look);
  Q_EMIT LookChanged(look);
}

QFormLayout* LookPopup::MakeForm() {
  auto* form = new QFormLayout(this);
  const int gap = fontMetrics().height() * 2 / 3;
  form->setContentsMargins(gap, gap, gap, gap);
  form->setSpacing(gap * 2 / 3);
  form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
  return form;
}

QDoubleSpinBox* LookPopup::AddNumber(QFormLayout* form, const QString& name, const QString& text, const QString& suffix,
                                     double low, double high, double step, const QString& tooltip) {
  auto* field = new QDoubleSpinBox(this);
  field->setObjectName(name);
  field->setAccessibleName(text);
  field->setToolTip(tooltip);
  field->setRange(low, high);
  field->setSingleStep(step);
  field->setSuffix(suffix);
  field->setStyle(QNodeAttributesWidget::GetPanelStyle());
  form->addRow(text, field);
  return field;
}

// ---- Shading ----

ShadingPopup::ShadingPopup(QWidget* parent)
    : LookPopup(parent), shading_(new QComboBox(this)), ramp_(new QComboBox(this)) {
  setObjectName(QStringLiteral("viewer.shading_popup"));
  setAccessibleName(tr("Shading"));
  QFormLayout* form = MakeForm();
  shading_->setObjectName(QStringLiteral("viewer.shading_mode"));
  shading_->setAccessibleName(tr("Shading"));
  for (const Shading shading : kShadings) shading_->addItem(NameShading(shading));
  form->addRow(tr("Shading"), shading_);
  ramp_->setObjectName(QStringLiteral("viewer.ramp"));
  ramp_->setAccessibleName(tr("Color ramp"));
  const QSize swatch(fontMetrics().height() * 5, fontMetrics().height());
  ramp_->setIconSize(swatch);
  for (const std::string& name : GetRampNames()) {
    ramp_->addItem(QIcon(DrawRamp(name, swatch)), MakeTitle(name), QString::fromStdString(name));
  }
  form->addRow(tr("Color ramp"), ramp_);
  for (QComboBox* list : {shading_, ramp_}) list->setStyle(QNodeAttributesWidget::GetPanelStyle());
  azimuth_ = AddNumber(form, QStringLiteral("viewer.azimuth"), tr("Light from"), QStringLiteral("°"), 0.0, 360.0, 15.0,
                       tr("Where the light comes from, clockwise from the top of the image"));
  azimuth_->setWrapping(true);
  azimuth_->setDecimals(0);
  altitude_ = AddNumber(form, QStringLiteral("viewer.altitude"), tr("Light height"), QStringLiteral("°"), 0.0, 90.0,
                        5.0, tr("How high the light stands over the horizon"));
  altitude_->setDecimals(0);
  exaggeration_ = AddNumber(form, QStringLiteral("viewer.exaggeration"), tr("Height scale"), QString(), 0.001, 1e6,
                            10.0, tr("Heights in pixels per unit of value"));
  exaggeration_->setDecimals(3);
  exaggeration_->setStepType(QAbstractSpinBox::AdaptiveDecimalStepType);
  for (QComboBox* list : {shading_, ramp_}) connect(list, &QComboBox::currentIndexChanged, this, [this] { Take(); });
  for (QDoubleSpinBox* field : {azimuth_, altitude_, exaggeration_}) {
    connect(field, &QDoubleSpinBox::valueChanged, this, [this] { Take(); });
  }
}

void ShadingPopup::Show(const Look& look) {
  for (std::size_t i = 0; i < kShadings.size(); ++i) {
    if (kShadings[i] == look.shading) shading_->setCurrentIndex(static_cast<int>(i));
  }
  ramp_->setCurrentIndex(ramp_->findData(QString::fromStdString(look.ramp)));
  azimuth_->setValue(look.light.azimuth_degrees);
  altitude_->setValue(look.light.altitude_degrees);
  exaggeration_->setValue(look.light.exaggeration);
  ramp_->setEnabled(look.shading == Shading::kRamp || look.shading == Shading::kSlope);
  const bool is_lit = look.shading == Shading::kHillshade;
  azimuth_->setEnabled(is_lit);
  altitude_->setEnabled(is_lit);
  exaggeration_->setEnabled(is_lit || look.shading == Shading::kSlope);
}

void ShadingPopup::Take() {
  Look look = GetLook();
  if (shading_->currentIndex() >= 0) look.shading = kShadings[static_cast<std::size_t>(shading_->currentIndex())];
  if (ramp_->currentIndex() >= 0) look.ramp = ramp_->currentData().toString().toStdString();
  look.light.azimuth_degrees = azimuth_->value();
  look.light.altitude_degrees = altitude_->value();
  look.light.exaggeration = exaggeration_->value();
  Change(look);
}

// ---- Contours ----

ContourPopup::ContourPopup(QWidget* parent) : LookPopup(parent), contours_(new QCheckBox(tr("Show contours"), this)) {
  setObjectName(QStringLiteral("viewer.contour_popup"));
  setAccessibleName(tr("Contours"));
  QFormLayout* form = MakeForm();
  contours_->setObjectName(QStringLiteral("viewer.contours_on"));
  contours_->setAccessibleName(tr("Show contours"));
  contours_->setStyle(QNodeAttributesWidget::GetPanelStyle());
  form->addRow(contours_);
  step_ = AddNumber(form, QStringLiteral("viewer.contour_step"), tr("Step"), QString(), 0.0, 1e9, 0.1,
                    tr("The step of value from one contour to the next"));
  step_->setDecimals(6);
  step_->setStepType(QAbstractSpinBox::AdaptiveDecimalStepType);
  step_->setSpecialValueText(tr("A tenth of the range"));
  connect(contours_, &QCheckBox::toggled, this, [this] { Take(); });
  connect(step_, &QDoubleSpinBox::valueChanged, this, [this] { Take(); });
}

void ContourPopup::Show(const Look& look) {
  contours_->setChecked(look.contours);
  step_->setValue(look.contour_step);
  step_->setEnabled(look.contours);
}

void ContourPopup::Take() {
  Look look = GetLook();
  look.contours = contours_->isChecked();
  look.contour_step = step_->value();
  Change(look);
}

}  // namespace ScEng
