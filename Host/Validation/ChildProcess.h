// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

#include "Host/Util/Status.h"

namespace ScEng {

/// A process that is talked to in lines over a socket, and whose own prints are caught.
///
/// It leads a process group of its own, which is killed with it, and it ends when the process that started it ends.
class ChildProcess {
 public:
  using Clock = std::chrono::steady_clock;

  ChildProcess() = default;
  ~ChildProcess() { Stop(); }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// Starts the command with one more argument, the channel: the numbers of two descriptors, that of the socket and
  /// that of the pipe which catches what the process prints.
  Status Start(std::vector<std::string> command);
  [[nodiscard]] bool IsRunning() const { return pid_ > 0; }

  /// Sends one line; lost where the process has ended.
  void Send(const std::string& line) const;

  enum class Event {
    kLine,
    /// It ended, or closed the channel and was ended; `GetEnd` and `GetLastWords` tell more.
    kEnded,
    kTimeout
  };
  /// Waits for the next line until `deadline`. After a timeout the process still runs; end it with `Stop`.
  Event ReadLine(std::string& line, Clock::time_point deadline);

  /// How it ended: "was ended by signal 11 (segmentation fault)", "ended with exit code 0".
  [[nodiscard]] const std::string& GetEnd() const { return end_; }
  /// The line among the last that it printed which best tells why it ended; empty where it printed nothing.
  [[nodiscard]] std::string GetLastWords() const;

  /// Closes the channel and gives the process a moment to end by itself; then kills its group.
  void Stop(std::chrono::milliseconds patience = std::chrono::milliseconds(0));

 private:
  /// Takes what is there to be read; false when the other side has closed the socket.
  bool Drain();
  bool HasEnded();
  void Close();

  pid_t pid_ = 0;
  int socket_ = -1;
  int output_ = -1;
  bool is_socket_open_ = false;
  std::string received_;
  std::string printed_;
  std::string end_;
};

/// "signal 11 (segmentation fault)"
std::string DescribeSignal(int signal);

}  // namespace ScEng
