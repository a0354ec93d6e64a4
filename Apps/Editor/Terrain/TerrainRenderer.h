// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QImage>
#include <QOpenGLContext>
#include <QString>
#include <QSurface>
#include <functional>
#include <memory>

#include "Apps/Editor/Terrain/GlProgram.h"
#include "Apps/Editor/Terrain/GlTarget.h"
#include "Apps/Editor/Terrain/GlTexture.h"
#include "Apps/Editor/Terrain/TerrainFrame.h"
#include "Apps/Editor/Terrain/TileStore.h"
#include "Apps/Editor/Terrain/TileTree.h"

/// A picture of a terrain, or why there is none.
struct TerrainPicture {
  /// Null when the drawing was stopped, and when there is a problem.
  QImage image;
  bool is_fine = false;
  /// How many triangles it shows, and how long it took.
  int triangles = 0;
  double milliseconds = 0.0;
  QString problem;
};

/// Draws terrains with OpenGL into pictures. Lives in one thread from `Start` to its end.
class TerrainRenderer {
 public:
  TerrainRenderer();
  ~TerrainRenderer();
  TerrainRenderer(const TerrainRenderer&) = delete;
  TerrainRenderer& operator=(const TerrainRenderer&) = delete;

  /// Makes what drawing needs, with a surface that outlives this. Answers why there is no OpenGL, or nothing.
  QString Start(QSurface& surface);
  /// Asks `should_stop` between steps of a few milliseconds.
  TerrainPicture Draw(const TerrainFrame& frame, const std::function<bool()>& should_stop);

 private:
  QString MakePrograms();
  void DrawCurrent(const TerrainFrame& frame, const std::function<bool()>& should_stop, TerrainPicture& picture);
  bool Prepare(const TerrainFrame& frame, const std::function<bool()>& should_stop);
  bool PrepareTiles(const TerrainFrame& frame, const std::vector<TileKey>& tiles,
                    const std::function<bool()>& should_stop);
  void SetLight(const TerrainFrame& frame, const TerrainEye& eye);
  void DrawSky(const TerrainBackground& background);
  void DrawShade(const TerrainFrame& frame, const TerrainEye& eye);
  void DrawSquare();
  /// Answers the number of triangles, or 0 when it has been stopped.
  int DrawSurface(const TerrainFrame& frame, const TerrainEye& eye, const std::vector<TileKey>& tiles,
                  const std::function<bool()>& should_stop);
  void BindVertices(const TileStore::Tile& tile);
  /// The size that a frame is drawn at: a fine one twice as large where that fits, a coarse one smaller on slow
  /// machines.
  [[nodiscard]] QSize FindSize(const TerrainFrame& frame) const;
  void AdaptScale(double milliseconds);

  QOpenGLContext context_;
  QSurface* surface_ = nullptr;
  QOpenGLFunctions* gl_ = nullptr;
  int most_pixels_ = 0;
  double coarse_scale_ = 1.0;
  std::unique_ptr<GlProgram> surface_program_;
  std::unique_ptr<GlProgram> sky_program_;
  std::unique_ptr<GlProgram> shade_program_;
  std::unique_ptr<GlTarget> target_;
  std::unique_ptr<TileStore> tiles_;
  std::unique_ptr<GlTexture> slopes_;
  int slopes_level_ = 0;
  int slopes_size_x_ = 1;
  int slopes_size_y_ = 1;
  GLuint square_ = 0;
  std::shared_ptr<const HeightField> field_;
  std::shared_ptr<const SurfaceColors> colors_;
  std::shared_ptr<const TileTree> tree_;
};
