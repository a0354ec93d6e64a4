// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Decoding/SpawnDecoder.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "Host/Files/Decoding/Messages.h"
#include "Host/Util/HostModule.h"
#include "Host/Util/ParallelRows.h"

namespace ScEng {
namespace {

/// Both ends of a socket, closed on destruction unless taken.
class SocketPair {
 public:
  explicit SocketPair(int type) {
    // Above all descriptors that the new process gives a meaning to, so that moving one does not overwrite another.
    constexpr int kLeast = 16;
    int ends[2];
    if (socketpair(AF_UNIX, type | SOCK_CLOEXEC, 0, ends) != 0) return;
    ours_ = ends[0];
    theirs_ = fcntl(ends[1], F_DUPFD_CLOEXEC, kLeast);
    close(ends[1]);
  }
  ~SocketPair() {
    if (ours_ >= 0) close(ours_);
    if (theirs_ >= 0) close(theirs_);
  }
  SocketPair(const SocketPair&) = delete;
  SocketPair& operator=(const SocketPair&) = delete;

  [[nodiscard]] bool IsOpen() const { return ours_ >= 0 && theirs_ >= 0; }
  [[nodiscard]] int GetTheirs() const { return theirs_; }
  int TakeOurs() { return std::exchange(ours_, -1); }

 private:
  int ours_ = -1;
  int theirs_ = -1;
};

/// The attributes and the actions of a start, which are objects of the C library.
class SpawnSettings {
 public:
  SpawnSettings() {
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_init(&actions);
  }
  ~SpawnSettings() {
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;

  posix_spawnattr_t attributes{};
  posix_spawn_file_actions_t actions{};
};

/// More than these find nothing to do in a file, and their stacks would count as memory that it takes.
constexpr std::size_t kMostThreads = 32;

/// A session of its own keeps keys that interrupt the program away from the process, which ends with the program
/// anyway.
void SetAttributes(posix_spawnattr_t& attributes) {
  sigset_t none;
  sigset_t all;
  sigemptyset(&none);
  sigfillset(&all);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setsigdefault(&attributes, &all);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSID);
}

void SetActions(posix_spawn_file_actions_t& actions, int control, int broker) {
  for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    posix_spawn_file_actions_addopen(&actions, standard, "/dev/null", O_RDWR, 0);
  }
  posix_spawn_file_actions_adddup2(&actions, control, kControlSocket);
  posix_spawn_file_actions_adddup2(&actions, broker, kBrokerSocket);
  posix_spawn_file_actions_addclosefrom_np(&actions, kBrokerSocket + 1);
}

/// What of the environment the process needs to be loaded, and its memory to be checked, as this one.
std::vector<std::string> MakeEnvironment() {
  std::vector<std::string> environment = {"LC_ALL=C.UTF-8"};
  for (const char* name : {"LD_LIBRARY_PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS", "MALLOC_PERTURB_"}) {
    if (const char* value = std::getenv(name)) environment.push_back(std::string(name) + "=" + value);
  }
  return environment;
}

std::vector<char*> PointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

std::filesystem::path GetDecoderProgram() {
  static const std::filesystem::path program = FindHostProgram("value-decoder", VALUE_DECODER_FROM_LIBRARIES);
  return program;
}

std::string SpawnDecoder(const CodecRow& codec, SpawnedDecoder& spawned) {
  const std::filesystem::path program = GetDecoderProgram();
  std::error_code error;
  if (!std::filesystem::exists(program, error)) return "there is no " + program.string();
  SocketPair control(SOCK_STREAM);
  SocketPair broker(SOCK_SEQPACKET);
  if (!control.IsOpen() || !broker.IsOpen()) return std::string("no sockets can be made: ") + std::strerror(errno);

  SpawnSettings settings;
  SetAttributes(settings.attributes);
  SetActions(settings.actions, control.GetTheirs(), broker.GetTheirs());
  std::vector<std::string> words = {program.string(), codec.name, codec.module, codec.package,
                                    std::to_string(std::min(GetNumThreads(), kMostThreads))};
  std::vector<std::string> environment = MakeEnvironment();
  const int failure = posix_spawn(&spawned.id, program.c_str(), &settings.actions, &settings.attributes,
                                  PointersTo(words).data(), PointersTo(environment).data());
  if (failure != 0) {
    spawned.id = -1;
    return program.string() + " cannot be run: " + std::strerror(failure);
  }
  spawned.control = control.TakeOurs();
  spawned.broker = broker.TakeOurs();
  return {};
}

}  // namespace ScEng
