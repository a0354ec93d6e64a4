// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QOffscreenSurface>
#include <QThread>
#include <functional>
#include <memory>

#include "Apps/Editor/Terrain/TerrainWorker.h"

/// Draws terrains beside the interface: in a thread of its own wherever OpenGL can be used from one. Nothing in it
/// waits for a picture but what says so.
class TerrainPainter {
 public:
  TerrainPainter();
  ~TerrainPainter();
  TerrainPainter(const TerrainPainter&) = delete;
  TerrainPainter& operator=(const TerrainPainter&) = delete;

  /// Tells of the pictures that are asked for.
  [[nodiscard]] TerrainWorker& GetWorker() { return *worker_; }
  /// Why there is no OpenGL, or nothing. Waits until that is known.
  QString GetProblem();
  /// Draws a frame and waits for it.
  TerrainPicture Draw(const TerrainFrame& frame);

 private:
  void Run(const std::function<void()>& work);

  QOffscreenSurface surface_;
  QThread thread_;
  std::unique_ptr<TerrainWorker> worker_;
};
