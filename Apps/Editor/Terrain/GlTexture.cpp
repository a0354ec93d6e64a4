// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/GlTexture.h"

void GlTexture::Release() {
  if (texture_ != 0) gl_.glDeleteTextures(1, &texture_);
  texture_ = 0;
}

void GlTexture::Upload(const SlopeMap& map) {
  Release();
  gl_.glGenTextures(1, &texture_);
  gl_.glBindTexture(GL_TEXTURE_2D, texture_);
  gl_.glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
  gl_.glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, map.size_x, map.size_y, 0, GL_RGBA, GL_UNSIGNED_BYTE, map.pixels.data());
  gl_.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
  gl_.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
  gl_.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
  // The embedded edition has smaller copies for sizes that are powers of two only, unless it says otherwise.
  has_copies_ = gl_.hasOpenGLFeature(QOpenGLFunctions::NPOTTextures);
  if (has_copies_) gl_.glGenerateMipmap(GL_TEXTURE_2D);
}

void GlTexture::Bind(bool is_smooth) {
  gl_.glActiveTexture(GL_TEXTURE0);
  gl_.glBindTexture(GL_TEXTURE_2D, texture_);
  const GLint filter = is_smooth ? GL_LINEAR_MIPMAP_LINEAR : GL_LINEAR_MIPMAP_NEAREST;
  gl_.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, has_copies_ ? filter : GL_LINEAR);
}
