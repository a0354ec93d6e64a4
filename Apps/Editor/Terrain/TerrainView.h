// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QImage>
#include <QString>
#include <QToolButton>
#include <QWidget>
#include <memory>

#include "Apps/Editor/Terrain/SecondMapRow.h"
#include "Apps/Editor/Terrain/TerrainCanvas.h"
#include "Apps/Editor/Terrain/TerrainSettingsPopup.h"
#include "Host/Viewing/Look.h"
#include "Host/Viewing/ViewImage.h"

/// A height map as a terrain that can be turned, with a row of tools.
///
/// It is drawn by OpenGL beside the interface, which never waits for it. Where there is no OpenGL, it says so in place
/// of the picture.
class TerrainView : public QWidget {
  Q_OBJECT

 public:
  explicit TerrainView(QWidget* parent = nullptr);

  /// The heights; null for none. NaN and infinities are holes.
  void SetHeights(std::shared_ptr<const ScEng::ViewImage> heights);
  /// An image that is spread over the surface, with the colors of its look; null for clay.
  void SetColors(std::shared_ptr<const ScEng::ViewImage> colors, const ScEng::Look& look);
  /// The images that can be laid over the surface, "id.plug", for the person who looks to choose from.
  void SetMaps(const QStringList& maps) { maps_->SetMaps(maps); }
  /// The one that is chosen; empty for none.
  [[nodiscard]] QString GetSecondMap() const { return maps_->GetMap(); }
  /// Its image, which goes before the colors, or tints them where its values are high; null while it is not there.
  void SetSecond(std::shared_ptr<const ScEng::ViewImage> second);

  void SetSettings(const TerrainSettings& settings);
  [[nodiscard]] const TerrainSettings& GetSettings() const { return canvas_->GetSettings(); }

  /// Whether there is OpenGL; the first call waits until that is known.
  [[nodiscard]] bool IsAvailable() { return GetProblem().isEmpty(); }
  /// Why there is none, or nothing.
  [[nodiscard]] QString GetProblem() { return canvas_->GetProblem(); }

  /// The view without its tools at its best, once it is drawn. Pictures of the window show it too from then on.
  [[nodiscard]] QImage Grab() { return canvas_->Grab(); }
  [[nodiscard]] TerrainCanvas& GetCanvas() { return *canvas_; }

 signals:
  /// By the person who looks.
  void SettingsChanged();
  /// Another image is to be laid over the surface.
  void SecondMapChanged();

 private:
  QToolButton* AddButton(const QString& text, const QString& tip, const QString& object_name);
  void UpdateColors();
  void TakeSettings(const TerrainSettings& settings);
  void DisableTools();

  QWidget* tools_;
  TerrainCanvas* canvas_;
  TerrainSettingsPopup* popup_;
  SecondMapRow* maps_;
  QToolButton* wireframe_ = nullptr;
  std::shared_ptr<const ScEng::ViewImage> colors_;
  ScEng::Look look_;
  std::shared_ptr<const ScEng::ViewImage> second_;
  QString second_of_;
};
