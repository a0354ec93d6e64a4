// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/TerrainSettingsPopup.h"

#include <QFormLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <algorithm>

TerrainSettingsPopup::TerrainSettingsPopup(QWidget* parent)
    : QFrame(parent, Qt::Popup),
      exaggeration_(new SettingRow(
          tr("Exaggeration of heights"), QStringLiteral("exaggeration"),
          {.low = 0.1, .high = 10.0, .decimals = 2, .unit = QStringLiteral(" ×"), .is_logarithmic = true}, this)),
      azimuth_(new SettingRow(
          tr("Direction of the light"), QStringLiteral("azimuth"),
          {.low = 0.0, .high = 360.0, .decimals = 0, .unit = QStringLiteral("°"), .is_circle = true}, this)),
      altitude_(new SettingRow(tr("Height of the light"), QStringLiteral("altitude"),
                               {.low = 5.0, .high = 90.0, .decimals = 0, .unit = QStringLiteral("°")}, this)) {
  setObjectName(QStringLiteral("terrain settings"));
  setAccessibleName(tr("Settings of the 3D view"));
  setFrameShape(QFrame::StyledPanel);
  auto* layout = new QFormLayout(this);
  const int margin = fontMetrics().height() * 3 / 4;
  layout->setContentsMargins(margin, margin, margin, margin);
  const auto add = [&](const QString& text, SettingRow* row) {
    auto* label = new QLabel(text, this);
    label->setBuddy(row->GetField());
    layout->addRow(label, row);
    connect(row, &SettingRow::Changed, this, &TerrainSettingsPopup::TakeRows);
  };
  add(tr("&Exaggeration"), exaggeration_);
  add(tr("Light &direction"), azimuth_);
  add(tr("Light &height"), altitude_);
  auto* usual = new QPushButton(tr("&Reset settings"), this);
  usual->setObjectName(QStringLiteral("reset settings"));
  usual->setAccessibleName(tr("Reset the settings of the 3D view"));
  usual->setAutoDefault(false);
  layout->addRow(QString(), usual);
  connect(usual, &QPushButton::clicked, this, [this] {
    TerrainSettings fresh;
    fresh.wireframe = settings_.wireframe;
    SetSettings(fresh);
    emit Changed();
  });
  SetSettings({});
}

void TerrainSettingsPopup::SetSettings(const TerrainSettings& settings) {
  settings_ = settings;
  exaggeration_->SetValue(settings.exaggeration);
  azimuth_->SetValue(settings.azimuth_degrees);
  altitude_->SetValue(settings.altitude_degrees);
}

void TerrainSettingsPopup::TakeRows() {
  settings_.exaggeration = exaggeration_->GetValue();
  settings_.azimuth_degrees = azimuth_->GetValue();
  settings_.altitude_degrees = altitude_->GetValue();
  emit Changed();
}

void TerrainSettingsPopup::Open(const QWidget& below) {
  adjustSize();
  const QPoint corner = below.mapToGlobal(QPoint(below.width() - width(), below.height()));
  const QRect screen = below.screen()->availableGeometry();
  move(std::clamp(corner.x(), screen.left(), std::max(screen.left(), screen.right() - width())),
       std::clamp(corner.y(), screen.top(), std::max(screen.top(), screen.bottom() - height())));
  show();
  exaggeration_->GetField()->setFocus(Qt::PopupFocusReason);
}
