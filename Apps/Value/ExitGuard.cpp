// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/ExitGuard.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <atomic>
#include <cctype>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "Apps/Value/CrashStack.h"
#include "Apps/Value/LastLine.h"
#include "Apps/Value/Reporter.h"
#include "Host/Files/SignalCleanup.h"
#include "Host/Tools/RunningCall.h"

namespace {

using ScEng::RunningCall;
using EndFunction = void (*)(int);

constexpr int kCrashSignals[] = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT};

std::atomic<bool> is_armed{false};
std::atomic<pid_t> speaking_thread{0};
pid_t guarded_process = 0;
int error_descriptor = STDERR_FILENO;
int output_descriptor = STDOUT_FILENO;
bool answers_json = false;

[[noreturn]] void EndNow(int code) {
  for (;;) syscall(SYS_exit_group, code);
}

/// Only one thread speaks, once: false where it has broken down in the middle of that. Another that comes here waits
/// for the end.
bool BeginToSpeak() {
  pid_t speaker = 0;
  const pid_t own = gettid();
  if (speaking_thread.compare_exchange_strong(speaker, own)) return true;
  while (speaker != own) pause();
  return false;
}

/// Writes who was running and what happened: `node "raised" of "Foo.so" <did>`.
void Speak(const RunningCall& call, const char* library, const LastLine& did) {
  constexpr std::size_t kLongestNode = 80;
  constexpr std::size_t kLongestFile = 120;
  LastLine line;
  if (call.node != nullptr) {
    line.Add("node \"").AddName(call.node, kLongestNode).Add("\"");
    if (library != nullptr) line.Add(" of \"").AddName(library, kLongestFile).Add("\"");
  } else if (library != nullptr) {
    line.Add("plug-in \"").AddName(library, kLongestFile).Add("\"");
  } else {
    line.Add("the program");
  }
  line.Add(" ").Add(did.GetText());
  ScEng::RemoveTemporariesBeforeEnd();
  line.WriteTo(error_descriptor);
  if (answers_json) line.WriteAsJsonTo(output_descriptor);
}

const char* FindLibrary(const RunningCall& call, const void* address) {
  return call.library != nullptr ? call.library : ScEng::FindLibraryOf(address);
}

/// The length of a path's folder, with the last slash.
std::size_t MeasureFolder(const char* path) {
  const char* const slash = std::strrchr(path, '/');
  return slash == nullptr ? 0 : static_cast<std::size_t>(slash - path) + 1;
}

/// Whether a file is one of the host's libraries: of their name, and in the folder of the one that has FindLibraryOf.
bool IsHostLibrary(const char* file) {
  constexpr const char* kStart = "libHost";
  Dl_info host{};
  const char* (*const in_host)(const void*) = &ScEng::FindLibraryOf;
  if (dladdr(reinterpret_cast<const void*>(in_host), &host) == 0 || host.dli_fname == nullptr) return false;
  const std::size_t folder = MeasureFolder(host.dli_fname);
  return MeasureFolder(file) == folder && std::strncmp(file, host.dli_fname, folder) == 0 &&
         std::strncmp(file + folder, kStart, std::strlen(kStart)) == 0;
}

/// Whether a call comes from a part of this program, which knows what it does.
bool IsOwnCode(const void* caller) {
  Dl_info info{};
  if (dladdr(caller, &info) == 0 || info.dli_fname == nullptr) return false;
  // A node library has whatever name and folder it likes.
  if (ScEng::FindLibraryOf(caller) != nullptr) return false;
  Dl_info own{};
  const bool is_program =
      dladdr(reinterpret_cast<const void*>(&IsOwnCode), &own) != 0 && own.dli_fbase == info.dli_fbase;
  return is_program || IsHostLibrary(info.dli_fname);
}

bool IsGuarded() { return is_armed && getpid() == guarded_process; }

/// Ends the program with a line where a library is about to end it without one; returns where that is not so.
void RefuseEnd(const char* function, int code, const void* caller) {
  if (!IsGuarded()) return;
  // The program itself may end when it wants to.
  if (IsOwnCode(caller)) {
    is_armed = false;
    return;
  }
  if (!BeginToSpeak()) EndNow(static_cast<int>(ExitCode::kNodeError));
  const RunningCall call = RunningCall::Find();
  LastLine did;
  did.Add("ended the program by ").Add(function).Add("(").Add(code).Add(")");
  if (call.operation != nullptr) did.Add(" in ").Add(call.operation);
  did.Add("; a node library must never end its host");
  Speak(call, FindLibrary(call, caller), did);
  EndNow(static_cast<int>(ExitCode::kNodeError));
}

/// Where the C library ends the program on its own, as `err` does, the functions below are not asked.
void OnProgramExit() {
  if (!IsGuarded()) return;
  if (!BeginToSpeak()) EndNow(static_cast<int>(ExitCode::kNodeError));
  const RunningCall call = RunningCall::Find();
  LastLine did;
  did.Add("ended the program");
  if (call.operation != nullptr) did.Add(" in ").Add(call.operation);
  did.Add("; a node library must never end its host");
  Speak(call, call.library, did);
  EndNow(static_cast<int>(ExitCode::kNodeError));
}

const void* GetFaultingCode(const void* context) {
#if defined(__x86_64__)
  const auto* state = static_cast<const ucontext_t*>(context);
  return reinterpret_cast<const void*>(state->uc_mcontext.gregs[REG_RIP]);
#elif defined(__aarch64__)
  const auto* state = static_cast<const ucontext_t*>(context);
  return reinterpret_cast<const void*>(state->uc_mcontext.pc);
#else
  static_cast<void>(context);
  return nullptr;
#endif
}

[[noreturn]] void EndBySignal(int signal) {
  struct sigaction standard {};
  standard.sa_handler = SIG_DFL;
  sigemptyset(&standard.sa_mask);
  sigaction(signal, &standard, nullptr);
  sigset_t raised;
  sigemptyset(&raised);
  sigaddset(&raised, signal);
  pthread_sigmask(SIG_UNBLOCK, &raised, nullptr);
  raise(signal);
  // The first process of a container is not ended by a signal that it sends to itself.
  EndNow(128 + signal);
}

extern "C" void OnCrash(int signal, siginfo_t*, void* context) {
  if (!IsGuarded()) EndBySignal(signal);
  if (!BeginToSpeak()) EndBySignal(signal);
  const RunningCall call = RunningCall::Find();
  LastLine did;
  did.Add("crashed");
  if (call.operation != nullptr) did.Add(" in ").Add(call.operation);
  did.Add(": signal ").Add(signal);
  if (const char* const text = sigdescr_np(signal)) {
    const char first[] = {static_cast<char>(std::tolower(static_cast<unsigned char>(text[0]))), '\0'};
    did.Add(" (").Add(first).Add(text + 1).Add(")");
  }
  Speak(call, FindLibrary(call, GetFaultingCode(context)), did);
  EndBySignal(signal);
}

void CatchCrashes() {
  // A sanitizer tells more of a crash.
#if !defined(__SANITIZE_ADDRESS__)
  // A stack that is used up is a crash, too. This one stays for the crashes at the very end of the program.
  static const auto& stack = *new CrashStack;
  static_cast<void>(stack);
  struct sigaction action {};
  action.sa_sigaction = OnCrash;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK;
  sigemptyset(&action.sa_mask);
  // A crash in the handler then ends the process at once.
  for (const int signal : kCrashSignals) sigaddset(&action.sa_mask, signal);
  for (const int signal : kCrashSignals) sigaction(signal, &action, nullptr);
#endif
}

EndFunction FindNext(const char* name) { return reinterpret_cast<EndFunction>(dlsym(RTLD_NEXT, name)); }

// What the C library has under the names below; looked for before a signal handler may want it.
EndFunction next_exit = nullptr;
EndFunction next_quick_exit = nullptr;

[[noreturn]] void PassOn(EndFunction next, int code) {
  if (next != nullptr) next(code);
  EndNow(code);
}

}  // namespace

// The program's own functions come before those of the C library, for every library that the process loads.
extern "C" {

__attribute__((noreturn, visibility("default"))) void exit(int code) noexcept {
  RefuseEnd("exit", code, __builtin_return_address(0));
  PassOn(next_exit != nullptr ? next_exit : FindNext("exit"), code);
}

__attribute__((noreturn, visibility("default"))) void quick_exit(int code) noexcept {
  RefuseEnd("quick_exit", code, __builtin_return_address(0));
  PassOn(next_quick_exit != nullptr ? next_quick_exit : FindNext("quick_exit"), code);
}

__attribute__((noreturn, visibility("default"))) void _exit(int code) {
  RefuseEnd("_exit", code, __builtin_return_address(0));
  EndNow(code);
}

__attribute__((noreturn, visibility("default"))) void _Exit(int code) noexcept {
  RefuseEnd("_Exit", code, __builtin_return_address(0));
  EndNow(code);
}

}  // extern "C"

ExitGuard::ExitGuard(bool has_json_flag) {
  const int own = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (own >= 0) error_descriptor = own;
  // The program takes both streams away from libraries later on.
  const int output = has_json_flag ? fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1) : -1;
  if (output >= 0) output_descriptor = output;
  answers_json = has_json_flag;
  guarded_process = getpid();
  next_exit = FindNext("exit");
  next_quick_exit = FindNext("quick_exit");
  CatchCrashes();
  is_armed = true;
  Renew();
}

void ExitGuard::Renew() { static_cast<void>(std::atexit(OnProgramExit)); }

void ExitGuard::Disarm() {
  is_armed = false;
#if !defined(__SANITIZE_ADDRESS__)
  for (const int signal : kCrashSignals) std::signal(signal, SIG_DFL);
#endif
}
