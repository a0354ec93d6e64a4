// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/SignalCleanup.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "Host/Files/Saving/TemporaryRegistry.h"

namespace ScEng {
namespace {

SignalHook signal_hook = nullptr;
SignalEnd signal_end = SignalEnd::kBySignal;
pid_t prepared_process = 0;

[[noreturn]] void EndProcess(int signal) {
  if (signal_end == SignalEnd::kWithExitCode) _exit(128 + signal);
  struct sigaction action {};
  action.sa_handler = SIG_DFL;
  sigemptyset(&action.sa_mask);
  sigaction(signal, &action, nullptr);
  sigset_t raised;
  sigemptyset(&raised);
  sigaddset(&raised, signal);
  pthread_sigmask(SIG_UNBLOCK, &raised, nullptr);
  raise(signal);
  // The first process of a container is not ended by a signal that it sends to itself.
  _exit(128 + signal);
}

extern "C" void OnEndSignal(int signal) {
  const int error = errno;
  // A forked child has the handlers too, but neither the threads that save nor anyone to look at the hook's flag.
  const bool is_child = getpid() != prepared_process;
  if (!is_child && signal_hook != nullptr && signal_hook(signal)) {
    errno = error;
    return;
  }
  if (is_child || EndSignalDelays()) RemoveRegisteredTemporaries();
  EndProcess(signal);
}

}  // namespace

void RemoveTemporariesBeforeEnd() {
  if (EndSignalDelays()) RemoveRegisteredTemporaries();
}

void CleanUpOnSignals(SignalHook hook, SignalEnd end) {
  signal_hook = hook;
  signal_end = end;
  prepared_process = getpid();
  struct sigaction action {};
  action.sa_handler = OnEndSignal;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  for (const int signal : kEndSignals) sigaddset(&action.sa_mask, signal);
  for (const int signal : kEndSignals) {
    struct sigaction before {};
    if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);
  }
}

}  // namespace ScEng
