// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/GlProgram.h"

#include <QByteArray>
#include <QCoreApplication>

namespace {

/// The first line of what a driver says, without what is no text.
QString FirstLine(const QByteArray& text) {
  QString line = QString::fromUtf8(text.constData()).section(QLatin1Char('\n'), 0, 0).simplified();
  line.removeIf([](QChar character) { return !character.isPrint(); });
  return line;
}

}  // namespace

GlProgram::~GlProgram() {
  if (program_ != 0) gl_.glDeleteProgram(program_);
}

QString GlProgram::Attach(GLenum type, const char* source) {
  const GLuint shader = gl_.glCreateShader(type);
  gl_.glShaderSource(shader, 1, &source, nullptr);
  gl_.glCompileShader(shader);
  GLint is_compiled = GL_FALSE;
  gl_.glGetShaderiv(shader, GL_COMPILE_STATUS, &is_compiled);
  QByteArray log(1024, '\0');
  if (is_compiled == GL_TRUE) {
    gl_.glAttachShader(program_, shader);
    log.clear();
  } else {
    gl_.glGetShaderInfoLog(shader, static_cast<GLsizei>(log.size() - 1), nullptr, log.data());
  }
  // It lives on in the program.
  gl_.glDeleteShader(shader);
  return is_compiled == GL_TRUE
             ? QString()
             : QCoreApplication::translate("GlProgram", "a shader does not compile: %1").arg(FirstLine(log));
}

QString GlProgram::Make(const char* vertex_source, const char* fragment_source,
                        std::initializer_list<const char*> attributes) {
  program_ = gl_.glCreateProgram();
  QString problem = Attach(GL_VERTEX_SHADER, vertex_source);
  if (problem.isEmpty()) problem = Attach(GL_FRAGMENT_SHADER, fragment_source);
  if (!problem.isEmpty()) return problem;
  GLuint number = 0;
  for (const char* attribute : attributes) gl_.glBindAttribLocation(program_, number++, attribute);
  gl_.glLinkProgram(program_);
  GLint is_linked = GL_FALSE;
  gl_.glGetProgramiv(program_, GL_LINK_STATUS, &is_linked);
  if (is_linked == GL_TRUE) return {};
  QByteArray log(1024, '\0');
  gl_.glGetProgramInfoLog(program_, static_cast<GLsizei>(log.size() - 1), nullptr, log.data());
  return QCoreApplication::translate("GlProgram", "the shaders do not fit together: %1").arg(FirstLine(log));
}
