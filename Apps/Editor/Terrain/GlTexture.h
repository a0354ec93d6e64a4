// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QOpenGLFunctions>

#include "Apps/Editor/Terrain/SlopeMap.h"

/// A slope map in the memory of the graphics processor.
class GlTexture {
 public:
  explicit GlTexture(QOpenGLFunctions& gl) : gl_(gl) {}
  ~GlTexture() { Release(); }
  GlTexture(const GlTexture&) = delete;
  GlTexture& operator=(const GlTexture&) = delete;

  void Upload(const SlopeMap& map);
  /// Draws read it from now on; `is_smooth` between its smaller copies too.
  void Bind(bool is_smooth);

 private:
  void Release();

  QOpenGLFunctions& gl_;
  GLuint texture_ = 0;
  bool has_copies_ = false;
};
