// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QImage>
#include <QOpenGLFunctions>
#include <QSize>

/// A picture in the memory of the graphics processor, with depths, that is drawn into and read back.
class GlTarget {
 public:
  GlTarget(QOpenGLFunctions& gl, bool is_embedded) : gl_(gl), is_embedded_(is_embedded) {}
  ~GlTarget() { Release(); }
  GlTarget(const GlTarget&) = delete;
  GlTarget& operator=(const GlTarget&) = delete;

  /// Draws go here from now on. False where the driver has no picture of this size.
  bool Bind(const QSize& size);
  /// What has been drawn, the first row first drawn at the bottom.
  [[nodiscard]] QImage Read();

 private:
  void Release();

  QOpenGLFunctions& gl_;
  bool is_embedded_;
  QSize size_;
  GLuint frame_ = 0;
  GLuint color_ = 0;
  GLuint depth_ = 0;
};
