// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/SettingRow.h"

#include <QHBoxLayout>
#include <QSignalBlocker>
#include <cmath>

namespace {

constexpr int kPositions = 200;

}  // namespace

SettingRow::SettingRow(const QString& name, const QString& object_name, const Range& range, QWidget* parent)
    : QWidget(parent), range_(range), slider_(new QSlider(Qt::Horizontal, this)), field_(new QDoubleSpinBox(this)) {
  slider_->setRange(0, kPositions);
  slider_->setPageStep(kPositions / 10);
  slider_->setObjectName(object_name + QStringLiteral(" slider"));
  slider_->setAccessibleName(name);
  field_->setRange(range.low, range.high);
  field_->setDecimals(range.decimals);
  field_->setSuffix(range.unit);
  field_->setWrapping(range.is_circle);
  field_->setSingleStep(range.decimals == 0 ? 5.0 : 0.1);
  field_->setObjectName(object_name);
  field_->setAccessibleName(name);
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(slider_, 1);
  layout->addWidget(field_);
  field_->setMinimumWidth(fontMetrics().averageCharWidth() * 12);
  slider_->setMinimumWidth(fontMetrics().averageCharWidth() * 20);
  connect(slider_, &QSlider::valueChanged, this, [this](int position) {
    // The field rounds, which must not push the slider back.
    const QSignalBlocker blocker(field_);
    field_->setValue(ToValue(position));
    emit Changed();
  });
  connect(field_, &QDoubleSpinBox::valueChanged, this, [this](double value) {
    const QSignalBlocker blocker(slider_);
    slider_->setValue(ToPosition(value));
    emit Changed();
  });
}

void SettingRow::SetValue(double value) {
  if (value == field_->value()) return;
  const QSignalBlocker field_blocker(field_);
  const QSignalBlocker slider_blocker(slider_);
  field_->setValue(value);
  slider_->setValue(ToPosition(field_->value()));
}

int SettingRow::ToPosition(double value) const {
  const double share = range_.is_logarithmic ? std::log(value / range_.low) / std::log(range_.high / range_.low)
                                             : (value - range_.low) / (range_.high - range_.low);
  return static_cast<int>(std::lround(share * kPositions));
}

double SettingRow::ToValue(int position) const {
  const double share = position / static_cast<double>(kPositions);
  return range_.is_logarithmic ? range_.low * std::pow(range_.high / range_.low, share)
                               : range_.low + (range_.high - range_.low) * share;
}
