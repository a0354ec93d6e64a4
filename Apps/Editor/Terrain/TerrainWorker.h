// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QSurface>
#include <atomic>
#include <memory>
#include <mutex>
#include <optional>

#include "Apps/Editor/Terrain/TerrainRenderer.h"

/// Draws terrains in the thread that it has been moved to.
class TerrainWorker : public QObject {
  Q_OBJECT

 public:
  explicit TerrainWorker(QSurface& surface) : surface_(surface) {}
  ~TerrainWorker() override;

  // From any thread:
  /// The frame is drawn when the one before it is done; it replaces one that waits. A fine one that is being drawn is
  /// stopped.
  void Ask(const TerrainFrame& frame);
  /// What is being drawn is stopped, and no more is drawn.
  void Stop() { has_ended_ = true; }

  // In its thread:
  /// Why there is no OpenGL, or nothing. Starts it at the first call.
  const QString& GetProblem();
  /// Draws at once, and to the end.
  TerrainPicture Draw(const TerrainFrame& frame);
  /// Gives all of OpenGL back.
  void End();

 signals:
  /// A picture that has been asked for, or a problem.
  void Drawn(const TerrainPicture& picture);

 private:
  void DrawWaiting();
  TerrainPicture Draw(const TerrainFrame& frame, const std::function<bool()>& should_stop);

  QSurface& surface_;
  std::unique_ptr<TerrainRenderer> renderer_;
  std::optional<QString> problem_;
  std::mutex mutex_;
  std::optional<TerrainFrame> waiting_;
  std::atomic<unsigned> num_asked_ = 0;
  std::atomic<bool> has_ended_ = false;
};
