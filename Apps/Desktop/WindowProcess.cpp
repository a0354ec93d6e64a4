// SPDX-License-Identifier: Apache-2.0
#include "Apps/Desktop/WindowProcess.h"

#include "Host/Tools/RunningCall.h"

namespace {

/// Where a fatal message of Qt goes; Qt ends the process after it.
std::function<void(const std::string&)> tell_fatal;

void TakeMessage(QtMsgType type, const QMessageLogContext&, const QString& text) {
  if (type != QtFatalMsg || !tell_fatal) return;
  // Several lines of advice that speak of Qt's plugins say less than this one.
  static_cast<void>(text);
  tell_fatal("no window can be opened on the display; give --screenshot FILE to draw it without one");
}

}  // namespace

WindowProcess::Surroundings::Surroundings(const WindowOptions& options) {
  tell_fatal = options.on_fatal;
  qInstallMessageHandler(TakeMessage);
  if (options.offscreen) qputenv("QT_QPA_PLATFORM", "offscreen");
  if (options.scale > 1) qputenv("QT_SCALE_FACTOR", QByteArray::number(options.scale));
}

WindowProcess::Surroundings::~Surroundings() {
  qInstallMessageHandler(nullptr);
  tell_fatal = nullptr;
}

WindowProcess::WindowProcess(const WindowOptions& options) : surroundings_(options), application_(count_, arguments_) {
  // Nodes are evaluated elsewhere: no crash of the window is theirs.
  ScEng::RunningCall::HelpNobody();
}

WindowProcess::~WindowProcess() = default;
