// SPDX-License-Identifier: Apache-2.0
// value-decoder <codec> <module> <package> <threads>
//
// Decodes image files for the program that starts it, which talks to it on two sockets. Nothing for people to run.

#include <malloc.h>
#include <poll.h>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>

#include "Host/Files/Codecs/CodecTable.h"
#include "Host/Files/Decoding/Messages.h"
#include "Host/Files/Decoding/Program/Confinement.h"
#include "Host/Files/Decoding/Program/Service.h"
#include "Host/Util/ParallelRows.h"

namespace {

using namespace ScEng;

/// Ends this process with the other one, even in the middle of a file.
void EndWithOtherSide() {
  std::thread([] {
    pollfd watched{kControlSocket, 0, 0};
    while (poll(&watched, 1, -1) <= 0 || (watched.revents & (POLLHUP | POLLERR)) == 0) {
    }
    _exit(0);
  }).detach();
}

/// Small stacks and few heaps, since all of that counts as memory that a file takes.
void SaveMemory() {
  constexpr std::size_t kStackBytes = std::size_t{2} << 20;
  constexpr int kMostHeaps = 4;
  mallopt(M_ARENA_MAX, kMostHeaps);
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) return;
  if (pthread_attr_setstacksize(&attributes, kStackBytes) == 0) pthread_setattr_default_np(&attributes);
  pthread_attr_destroy(&attributes);
}

/// What libraries of this language and of C look up once, while files can still be opened.
void LookUpInAdvance() {
  tzset();
  try {
    throw std::runtime_error("to have the tables of exceptions read");
  } catch (const std::exception&) {
    static_cast<void>(std::thread::hardware_concurrency());
  }
}

HelperState MeasureState() {
  std::ifstream file("/proc/self/statm");
  std::array<std::uint64_t, 6> pages{};
  for (std::uint64_t& count : pages) file >> count;
  const auto page_bytes = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
  HelperState state;
  state.address_bytes = pages[0] * page_bytes;
  state.data_bytes = pages[5] * page_bytes;
  return state;
}

int TellUnable(const std::string& problem) {
  static_cast<void>(SendMessage(kControlSocket, MessageKind::kUnable, Bytes(problem.begin(), problem.end())));
  return 1;
}

int Run(const CodecRow& row) {
  LimitProcess();
  SaveMemory();
  std::string problem;
  const ImageCodec* const codec = LoadCodec(row, problem);
  if (codec == nullptr) return TellUnable(problem);
  codec->Prepare();
  LookUpInAdvance();
  EndWithOtherSide();
  HelperState state = MeasureState();
  state.is_confined = ConfineProcess();
  if (!SendMessage(kControlSocket, MessageKind::kReady, MakeBody(state))) return 1;
  ServeFiles(*codec);
  return 0;
}

bool IsSocket(int descriptor) {
  struct stat status {};
  return fstat(descriptor, &status) == 0 && S_ISSOCK(status.st_mode);
}

}  // namespace

int main(int count, char** words) {
  constexpr int kWords = 5;
  if (count != kWords || !IsSocket(kControlSocket) || !IsSocket(kBrokerSocket)) {
    std::fputs("value-decoder decodes image files for the program value, which starts it by itself\n", stderr);
    return 2;
  }
  if (chdir("/") != 0) return 1;
  int result = 1;
  try {
    SetNumThreads(static_cast<std::size_t>(std::max(1, std::atoi(words[4]))));
    result = Run({words[1], words[2], words[3]});
  } catch (const std::exception& exception) {
    TellUnable(exception.what());
  }
  // Threads of libraries may still run, and nothing here is worth putting in order.
  _exit(result);
}
