// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QMatrix4x4>
#include <QOpenGLFunctions>
#include <QString>
#include <QVector3D>
#include <QVector4D>

/// A program of the graphics processor. Used with the context current that it was made with.
class GlProgram {
 public:
  explicit GlProgram(QOpenGLFunctions& gl) : gl_(gl) {}
  ~GlProgram();
  GlProgram(const GlProgram&) = delete;
  GlProgram& operator=(const GlProgram&) = delete;

  /// Attributes get the numbers of their places in the list. Answers what is wrong, or nothing.
  QString Make(const char* vertex_source, const char* fragment_source, std::initializer_list<const char*> attributes);

  void Use() { gl_.glUseProgram(program_); }
  void Set(const char* name, float value) { gl_.glUniform1f(Find(name), value); }
  void Set(const char* name, float x, float y) { gl_.glUniform2f(Find(name), x, y); }
  void Set(const char* name, const QVector3D& value) { gl_.glUniform3f(Find(name), value.x(), value.y(), value.z()); }
  void Set(const char* name, const QVector4D& value) {
    gl_.glUniform4f(Find(name), value.x(), value.y(), value.z(), value.w());
  }
  void Set(const char* name, const QMatrix4x4& value) {
    gl_.glUniformMatrix4fv(Find(name), 1, GL_FALSE, value.constData());
  }

 private:
  [[nodiscard]] GLint Find(const char* name) const { return gl_.glGetUniformLocation(program_, name); }
  QString Attach(GLenum type, const char* source);

  QOpenGLFunctions& gl_;
  GLuint program_ = 0;
};
