// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QApplication>
#include <functional>
#include <string>

/// How a program with windows starts.
struct WindowOptions {
  /// Windows are drawn into memory: no display is needed.
  bool offscreen = false;
  int scale = 1;
  /// Told the one line that Qt ends the process with when it finds no display.
  std::function<void(const std::string&)> on_fatal;
};

/// Qt's application for as long as a module shows windows. One at a time.
class WindowProcess {
 public:
  explicit WindowProcess(const WindowOptions& options);
  ~WindowProcess();
  WindowProcess(const WindowProcess&) = delete;
  WindowProcess& operator=(const WindowProcess&) = delete;

 private:
  /// Prepares what Qt reads when it starts.
  struct Surroundings {
    explicit Surroundings(const WindowOptions& options);
    ~Surroundings();
  };

  Surroundings surroundings_;
  int count_ = 1;
  char name_[6] = "value";
  char* arguments_[2] = {name_, nullptr};
  QApplication application_;
};
