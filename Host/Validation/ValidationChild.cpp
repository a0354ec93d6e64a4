// SPDX-License-Identifier: Apache-2.0
//
// The child's side of a validation: it loads the library and makes the checks that it is asked for, one at a time.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <csignal>
#include <cstring>
#include <exception>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>

#include "Host/Tools/LoadProblem.h"
#include "Host/Validation/Channel.h"
#include "Host/Validation/Checks.h"
#include "Host/Validation/ExaminationChild.h"
#include "Host/Validation/GuardedMemory.h"
#include "Host/Validation/Protocol.h"
#include "Host/Validation/Validation.h"

namespace ScEng {
namespace {

using nlohmann::json;

// What the handler of a fault needs; set once, before the library is loaded.
const GuardedMemory* watched_memory = nullptr;
int fault_socket = -1;

/// Tells where beside an image the fault lies, if it does, and lets the fault happen again, without a handler.
void OnFault(int signal, siginfo_t* info, void*) {
  char text[512] = R"({"fault":")";
  constexpr char kEnd[] = {'"', '}', '\n'};
  constexpr std::size_t kTail = 8;
  const std::size_t head = std::strlen(text);
  const std::size_t length = watched_memory->Locate(info->si_addr, text + head, sizeof(text) - head - kTail);
  if (length > 0) {
    std::memcpy(text + head + length, kEnd, sizeof(kEnd));
    static_cast<void>(!write(fault_socket, text, head + length + sizeof(kEnd)));
  }
  struct sigaction standard = {};
  standard.sa_handler = SIG_DFL;
  sigaction(signal, &standard, nullptr);
}

void InstallFaultHandler(const GuardedMemory& memory, int socket) {
  watched_memory = &memory;
  fault_socket = socket;
  // A stack of its own, since a stack that is used up is a fault too.
  constexpr std::size_t kStackBytes = std::size_t{64} << 10U;
  stack_t stack = {};
  stack.ss_sp = mmap(nullptr, kStackBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  stack.ss_size = kStackBytes;
  if (stack.ss_sp == MAP_FAILED || sigaltstack(&stack, nullptr) != 0) return;
  struct sigaction action = {};
  action.sa_sigaction = OnFault;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK;
  sigaction(SIGSEGV, &action, nullptr);
  sigaction(SIGBUS, &action, nullptr);
}

template <class Function>
Function FindExport(void* handle, const char* name) {
  return reinterpret_cast<Function>(dlsym(handle, name));
}

class Child {
 public:
  Child(std::filesystem::path library, int socket, GuardedMemory& memory)
      : library_(std::move(library)), channel_(socket), memory_(memory) {}

  void Serve() {
    for (std::string line; channel_.ReadLine(line);) {
      const json request = json::parse(line, nullptr, false);
      if (!request.is_object()) continue;
      const std::string name = request.value(Protocol::kCheck, "");
      if (name == Protocol::kExamine) RunExamination(library_, channel_);
      const auto found =
          std::find_if(std::begin(kChecks), std::end(kChecks), [&](const Check& check) { return name == check.name; });
      if (found == std::end(kChecks)) continue;
      if (found->run == nullptr) {
        Load();
      } else {
        Run(*found, request.value(Protocol::kCount, 0), request.value(Protocol::kIndex, 0));
      }
    }
  }

 private:
  void Load() {
    channel_.Tell(Protocol::kAt, "loading the library");
    const std::set<std::string> before = ListThreads();
    entry_points_.handle = dlopen(library_.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (entry_points_.handle == nullptr) {
      channel_.Tell(Protocol::kRefused, DescribeLoadProblem(library_));
      return;
    }
    for (const std::string& thread : ListThreads()) {
      if (!before.contains(thread)) entry_points_.own_threads.insert(thread);
    }
    void* handle = entry_points_.handle;
    entry_points_.get_library = FindExport<NodeLibrary::GetLibraryInterfaceFunction>(handle, "GetLibraryInterface");
    entry_points_.get_count = FindExport<NodeLibrary::GetNumNodeInterfacesFunction>(handle, "GetNumNodeInterfaces");
    entry_points_.get_descriptor = FindExport<NodeLibrary::GetNodeInterfaceFunction>(handle, "GetNodeInterface");
    channel_.Answer({}, {});
  }

  void Run(const Check& check, std::int32_t count, std::int32_t index) {
    Subject subject(entry_points_, memory_, count, index,
                    [this](const char* key, const std::string& text) { channel_.Tell(key, text); });
    try {
      check.run(subject);
    } catch (const std::exception& error) {
      subject.Fail(std::string("an exception leaves the library: ") + error.what() +
                   "; nothing but Evaluate may throw, and what it throws becomes the node's error state");
    } catch (...) {
      subject.Fail("an exception that is not a std::exception leaves the library; nothing but Evaluate may throw");
    }
    channel_.Answer(subject.GetFailures(), subject.GetSkips());
  }

  std::filesystem::path library_;
  Channel channel_;
  GuardedMemory& memory_;
  EntryPoints entry_points_;
};

/// Reads "5,7".
bool ReadChannel(const std::string& text, int& socket, int& output) {
  const char* const end = text.data() + text.size();
  const auto first = std::from_chars(text.data(), end, socket);
  if (first.ec != std::errc() || first.ptr == end || *first.ptr != ',') return false;
  const auto second = std::from_chars(first.ptr + 1, end, output);
  return second.ec == std::errc() && second.ptr == end && fcntl(socket, F_GETFD) >= 0 && fcntl(output, F_GETFD) >= 0;
}

}  // namespace

int RunValidationChild(const std::filesystem::path& library, const std::string& channel) {
  int socket = -1;
  int output = -1;
  if (!ReadChannel(channel, socket, output)) return 2;
  // Whatever the program has done with its streams: the library's prints are caught.
  dup2(output, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
  fcntl(socket, F_SETFD, FD_CLOEXEC);
  close(output);
  const rlimit no_core_file = {0, 0};
  setrlimit(RLIMIT_CORE, &no_core_file);

  // Both stay to the end of the process: so may images, and so may faults.
  auto& memory = *new GuardedMemory;
  SetSampleAllocator(&memory);
  InstallFaultHandler(memory, socket);
  Child child(library, socket, memory);
  child.Serve();
  // Without exit handlers: those of the library are not what is looked at any more.
  _exit(0);
}

}  // namespace ScEng
