// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QFrame>

#include "Apps/Editor/Terrain/SettingRow.h"
#include "Apps/Editor/Terrain/TerrainFrame.h"

/// The settings of the view of a terrain, in a popup of its own.
class TerrainSettingsPopup : public QFrame {
  Q_OBJECT

 public:
  explicit TerrainSettingsPopup(QWidget* parent);

  /// Tells nobody.
  void SetSettings(const TerrainSettings& settings);
  [[nodiscard]] const TerrainSettings& GetSettings() const { return settings_; }
  /// Shows it below a widget, with the keyboard in its first field.
  void Open(const QWidget& below);

 signals:
  void Changed();

 private:
  void TakeRows();

  TerrainSettings settings_;
  SettingRow* exaggeration_;
  SettingRow* azimuth_;
  SettingRow* altitude_;
};
