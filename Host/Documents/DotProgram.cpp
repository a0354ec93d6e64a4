// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/DotProgram.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include "Host/Documents/Findings.h"
#include "Host/Util/Cancellation.h"

extern char** environ;  // NOLINT(readability-redundant-declaration)

namespace ScEng {
namespace {

using Clock = std::chrono::steady_clock;
constexpr auto kPatience = std::chrono::minutes(2);
constexpr std::size_t kLongestPicture = std::size_t{256} << 20;

/// A file in memory that the program reads or writes, so that nobody waits for a pipe.
class MemoryFile {
 public:
  explicit MemoryFile(const char* name) : descriptor_(memfd_create(name, MFD_CLOEXEC)) {}
  ~MemoryFile() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  [[nodiscard]] int Get() const { return descriptor_; }

  bool Write(const std::string& text) const {
    std::size_t done = 0;
    while (done < text.size()) {
      const ssize_t written = write(descriptor_, text.data() + done, text.size() - done);
      if (written < 0 && errno == EINTR) continue;
      if (written <= 0) return false;
      done += static_cast<std::size_t>(written);
    }
    return lseek(descriptor_, 0, SEEK_SET) == 0;
  }

  [[nodiscard]] std::string Read(std::size_t most) const {
    const off_t size = lseek(descriptor_, 0, SEEK_END);
    std::string text(std::min(most, static_cast<std::size_t>(std::max<off_t>(size, 0))), '\0');
    std::size_t done = 0;
    while (done < text.size()) {
      const ssize_t got = pread(descriptor_, text.data() + done, text.size() - done, static_cast<off_t>(done));
      if (got < 0 && errno == EINTR) continue;
      if (got <= 0) break;
      done += static_cast<std::size_t>(got);
    }
    text.resize(done);
    return text;
  }

 private:
  int descriptor_;
};

/// A process that is killed where nobody waits for its end any more.
class Process {
 public:
  explicit Process(pid_t pid) : pid_(pid) {}
  ~Process() {
    if (pid_ <= 0) return;
    kill(pid_, SIGKILL);
    Wait(0);
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  /// Whether it has ended.
  bool HasEnded() { return Wait(WNOHANG); }
  [[nodiscard]] bool HasFailed() const { return !WIFEXITED(state_) || WEXITSTATUS(state_) != 0; }

 private:
  bool Wait(int options) {
    pid_t ended = 0;
    do {
      ended = waitpid(pid_, &state_, options);
    } while (ended < 0 && errno == EINTR);
    // A process that somebody else has waited for is known by what it wrote alone.
    if (ended < 0) state_ = 0;
    if (ended != 0) pid_ = 0;
    return ended != 0;
  }

  pid_t pid_;
  int state_ = 0;
};

int Spawn(const MemoryFile& in, const MemoryFile& out, const MemoryFile& errors, pid_t& pid) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in.Get(), STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, out.Get(), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, errors.Get(), STDERR_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  // In a group of its own, so that Ctrl-C is this program's to handle.
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK);
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  std::string program = "dot";
  std::string format = "-Tsvg";
  char* const arguments[] = {program.data(), format.data(), nullptr};
  const int failed = posix_spawnp(&pid, program.c_str(), &actions, &attributes, arguments, environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return failed;
}

Status MakeMemoryError() { return Status::Error("a picture cannot be drawn: " + std::string(std::strerror(errno))); }

}  // namespace

Status RunDot(const std::string& text, std::string& svg) {
  const MemoryFile in("graph");
  const MemoryFile out("picture");
  const MemoryFile errors("errors");
  if (in.Get() < 0 || out.Get() < 0 || errors.Get() < 0 || !in.Write(text)) return MakeMemoryError();
  pid_t pid = 0;
  const int failed = Spawn(in, out, errors, pid);
  if (failed == ENOENT) {
    return Status::Error(
        "a picture is laid out by Graphviz' program \"dot\", which is not on the PATH; the package \"graphviz\" has "
        "it");
  }
  if (failed != 0) return Status::Error("the program \"dot\" cannot be started: " + std::string(std::strerror(failed)));
  Process process(pid);
  const auto deadline = Clock::now() + kPatience;
  for (auto pause = std::chrono::milliseconds(1); !process.HasEnded();
       pause = std::min(2 * pause, std::chrono::milliseconds(20))) {
    PollCancellation();
    if (Clock::now() > deadline) return Status::Error("the program \"dot\" has not laid out the graph in two minutes");
    std::this_thread::sleep_for(pause);
  }
  svg = out.Read(kLongestPicture);
  if (!process.HasFailed() && svg.find("</svg>") != std::string::npos) return {};
  svg.clear();
  const std::string said = errors.Read(2000);
  const std::string line = MakeLine(said.substr(0, said.find('\n')), 200);
  return Status::Error("the program \"dot\" made no picture" + (line.empty() ? std::string() : ": " + line));
}

}  // namespace ScEng
