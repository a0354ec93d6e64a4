// SPDX-License-Identifier: Apache-2.0
#include "Host/Validation/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <sstream>
#include <thread>
#include <utility>

namespace ScEng {
namespace {

// A process can end without closing the socket, where one that it started holds it; so its end is asked for as well.
constexpr int kTickMilliseconds = 20;
constexpr std::size_t kMostKept = 8192;

/// What the new process does before it becomes the command; only what is safe after a fork.
[[noreturn]] void BecomeCommand(char* const* arguments, int socket, int output, pid_t parent) {
  setpgid(0, 0);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  // The parent may have ended before that took hold.
  if (getppid() != parent) _exit(127);
  fcntl(socket, F_SETFD, 0);
  fcntl(output, F_SETFD, 0);
  const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
  if (nothing >= 0) dup2(nothing, STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
  execv(arguments[0], arguments);
  _exit(127);
}

}  // namespace

std::string DescribeSignal(int signal) {
  const char* name = sigdescr_np(signal);
  std::string text = name != nullptr ? name : "unknown";
  if (!text.empty()) text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
  return "signal " + std::to_string(signal) + " (" + text + ")";
}

Status ChildProcess::Start(std::vector<std::string> command) {
  Stop();
  int sockets[2];
  int pipes[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0) {
    return Status::Error(std::string("no channel can be made: ") + std::strerror(errno));
  }
  if (pipe2(pipes, O_CLOEXEC) != 0) {
    close(sockets[0]);
    close(sockets[1]);
    return Status::Error(std::string("no pipe can be made: ") + std::strerror(errno));
  }
  command.push_back(std::to_string(sockets[1]) + "," + std::to_string(pipes[1]));
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (std::string& argument : command) arguments.push_back(argument.data());
  arguments.push_back(nullptr);
  const pid_t parent = getpid();
  pid_ = fork();
  if (pid_ == 0) BecomeCommand(arguments.data(), sockets[1], pipes[1], parent);
  close(sockets[1]);
  close(pipes[1]);
  socket_ = sockets[0];
  output_ = pipes[0];
  fcntl(socket_, F_SETFL, O_NONBLOCK);
  fcntl(output_, F_SETFL, O_NONBLOCK);
  is_socket_open_ = true;
  received_.clear();
  printed_.clear();
  end_.clear();
  if (pid_ > 0) return {};
  pid_ = 0;
  Close();
  return Status::Error(std::string("no process can be started: ") + std::strerror(errno));
}

void ChildProcess::Send(const std::string& line) const {
  const std::string text = line + "\n";
  // A command is far shorter than what a socket holds, so it goes at once or the process has ended.
  static_cast<void>(send(socket_, text.data(), text.size(), MSG_NOSIGNAL));
}

bool ChildProcess::Drain() {
  // Only so much at a time: who prints without end must not keep the deadline from being seen.
  constexpr int kMostReads = 64;
  char buffer[4096];
  for (int i = 0; i < kMostReads && output_ >= 0; ++i) {
    const ssize_t got = read(output_, buffer, sizeof(buffer));
    if (got <= 0) break;
    printed_.append(buffer, static_cast<std::size_t>(got));
    if (printed_.size() > 2 * kMostKept) printed_.erase(0, printed_.size() - kMostKept);
  }
  for (int i = 0; i < kMostReads; ++i) {
    const ssize_t got = read(socket_, buffer, sizeof(buffer));
    if (got <= 0) return got < 0 && (errno == EAGAIN || errno == EINTR);
    received_.append(buffer, static_cast<std::size_t>(got));
  }
  return true;
}

bool ChildProcess::HasEnded() {
  if (pid_ <= 0) return true;
  int status = 0;
  if (waitpid(pid_, &status, WNOHANG) != pid_) return false;
  end_ = WIFSIGNALED(status) ? "was ended by " + DescribeSignal(WTERMSIG(status))
                             : "ended with exit code " + std::to_string(WEXITSTATUS(status));
  // What it started goes too.
  kill(-pid_, SIGKILL);
  pid_ = 0;
  return true;
}

ChildProcess::Event ChildProcess::ReadLine(std::string& line, Clock::time_point deadline) {
  for (;;) {
    if (const std::size_t end = received_.find('\n'); end != std::string::npos) {
      line = received_.substr(0, end);
      received_.erase(0, end + 1);
      return Event::kLine;
    }
    if (HasEnded()) {
      Drain();
      if (received_.find('\n') != std::string::npos) continue;
      return Event::kEnded;
    }
    if (Clock::now() >= deadline) return Event::kTimeout;
    pollfd watched[] = {{output_, POLLIN, 0}, {is_socket_open_ ? socket_ : -1, POLLIN, 0}};
    // A pipe that was closed at its other end is readable at once, again and again; the tick bounds that as well.
    poll(watched, 2, kTickMilliseconds);
    if ((watched[0].revents & POLLIN) == 0 && (watched[0].revents & POLLHUP) != 0) {
      close(std::exchange(output_, -1));
    }
    if (is_socket_open_ && !Drain()) is_socket_open_ = false;
    if (!is_socket_open_) Drain();
  }
}

std::string ChildProcess::GetLastWords() const {
  std::istringstream stream(printed_);
  std::string last;
  for (std::string line; std::getline(stream, line);) {
    const auto is_blank = [](unsigned char letter) { return std::isspace(letter) != 0; };
    if (std::all_of(line.begin(), line.end(), is_blank)) continue;
    last = line;
    // What a sanitizer reports, and what an uncaught exception says, is followed by lines that say less.
    if (line.find("ERROR: ") != std::string::npos || line.find("runtime error:") != std::string::npos ||
        line.find("what():") != std::string::npos) {
      break;
    }
  }
  last.erase(0, last.find_first_not_of(" \t"));
  constexpr std::size_t kLongest = 200;
  if (last.size() > kLongest) last.resize(kLongest);
  return last;
}

void ChildProcess::Stop(std::chrono::milliseconds patience) {
  if (pid_ > 0) {
    shutdown(socket_, SHUT_WR);
    const Clock::time_point deadline = Clock::now() + patience;
    while (!HasEnded()) {
      if (Clock::now() >= deadline) {
        kill(-pid_, SIGKILL);
        kill(pid_, SIGKILL);
        int status = 0;
        while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) continue;
        pid_ = 0;
        break;
      }
      Drain();
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }
  Close();
}

void ChildProcess::Close() {
  if (socket_ >= 0) close(std::exchange(socket_, -1));
  if (output_ >= 0) close(std::exchange(output_, -1));
  is_socket_open_ = false;
}

}  // namespace ScEng
