// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QImage>
#include <QPoint>
#include <QString>
#include <QTimer>
#include <QWidget>
#include <memory>

#include "Apps/Editor/Terrain/TerrainFrame.h"
#include "Apps/Editor/Terrain/TerrainPainter.h"

/// The picture of a terrain, and the mouse and keyboard that turn it.
///
/// While something moves, coarse pictures follow it as fast as they are drawn; the fine one comes when it rests.
class TerrainCanvas : public QWidget {
  Q_OBJECT

 public:
  explicit TerrainCanvas(QWidget* parent = nullptr);
  ~TerrainCanvas() override;

  /// Null for none.
  void SetField(std::shared_ptr<const HeightField> field);
  void SetColors(std::shared_ptr<const SurfaceColors> colors);
  void SetSettings(const TerrainSettings& settings);
  [[nodiscard]] const TerrainSettings& GetSettings() const { return settings_; }
  [[nodiscard]] const TerrainCamera& GetCamera() const { return camera_; }

  void Orbit(double right_degrees, double up_degrees);
  void Pan(double right, double up);
  void Zoom(double factor);
  void ResetCamera();

  /// Why there is no OpenGL, or nothing. Waits until that is known.
  QString GetProblem();
  /// Draws what is shown at its best and waits for it, so that the widget shows it too.
  QImage Grab();
  /// What is said in place of a picture; nothing where there is something to draw.
  [[nodiscard]] QString GetNotice() const;
  /// The last picture that has been drawn.
  [[nodiscard]] const TerrainPicture& GetPicture() const { return picture_; }

  [[nodiscard]] QSize sizeHint() const override { return {640, 420}; }
  [[nodiscard]] QSize minimumSizeHint() const override { return {120, 90}; }

 signals:
  /// There is no OpenGL.
  void ProblemFound();
  void PictureDrawn();
  /// The key for it was pressed.
  void WireframeAsked();

 protected:
  bool event(QEvent* event) override;
  void changeEvent(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;

 private:
  TerrainPainter& GetPainter();
  [[nodiscard]] bool HasSurface() const { return field_ != nullptr && field_->HasSurface(); }
  [[nodiscard]] TerrainBackground GetBackground() const;
  [[nodiscard]] TerrainFrame MakeFrame(bool is_fine) const;

  void Refresh();
  void AskFine();
  void TakePicture(const TerrainPicture& picture);

  std::unique_ptr<TerrainPainter> painter_;
  std::shared_ptr<const HeightField> field_;
  std::shared_ptr<const SurfaceColors> colors_;
  TerrainSettings settings_;
  TerrainCamera camera_;
  TerrainPicture picture_;
  QTimer rest_;
  QPointF last_place_;
};
