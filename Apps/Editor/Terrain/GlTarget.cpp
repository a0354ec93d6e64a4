// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/GlTarget.h"

namespace {

// Not in the headers of the embedded edition.
constexpr GLenum kDepth24 = 0x81A6;

}  // namespace

void GlTarget::Release() {
  if (frame_ != 0) gl_.glDeleteFramebuffers(1, &frame_);
  if (color_ != 0) gl_.glDeleteTextures(1, &color_);
  if (depth_ != 0) gl_.glDeleteRenderbuffers(1, &depth_);
  frame_ = color_ = depth_ = 0;
  size_ = {};
}

bool GlTarget::Bind(const QSize& size) {
  if (size == size_) {
    gl_.glBindFramebuffer(GL_FRAMEBUFFER, frame_);
    return true;
  }
  Release();
  gl_.glGenTextures(1, &color_);
  gl_.glBindTexture(GL_TEXTURE_2D, color_);
  gl_.glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, size.width(), size.height(), 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
  gl_.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  gl_.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  gl_.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
  gl_.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
  gl_.glBindTexture(GL_TEXTURE_2D, 0);
  gl_.glGenRenderbuffers(1, &depth_);
  gl_.glBindRenderbuffer(GL_RENDERBUFFER, depth_);
  gl_.glRenderbufferStorage(GL_RENDERBUFFER, is_embedded_ ? GL_DEPTH_COMPONENT16 : kDepth24, size.width(),
                            size.height());
  gl_.glGenFramebuffers(1, &frame_);
  gl_.glBindFramebuffer(GL_FRAMEBUFFER, frame_);
  gl_.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, color_, 0);
  gl_.glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, depth_);
  if (gl_.glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE) {
    Release();
    return false;
  }
  size_ = size;
  return true;
}

QImage GlTarget::Read() {
  QImage picture(size_, QImage::Format_RGBX8888);
  if (picture.isNull()) return picture;
  gl_.glPixelStorei(GL_PACK_ALIGNMENT, 4);
  gl_.glReadPixels(0, 0, size_.width(), size_.height(), GL_RGBA, GL_UNSIGNED_BYTE, picture.bits());
  return picture;
}
