// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <csignal>

namespace ScEng {

/// The signals that end a program from outside, in one way or another.
inline constexpr int kEndSignals[] = {SIGINT, SIGTERM, SIGHUP};

/// A temporary file that a signal handler can find and remove.
struct RegisteredTemporary;

/// Notes a name, of at most 31 characters, in an open folder. The file need not exist yet.
RegisteredTemporary* RegisterTemporary(int folder, const char* name);

void ForgetTemporary(RegisteredTemporary* temporary);

/// Removes the files that this process has registered. Calls nothing that a signal handler may not call.
void RemoveRegisteredTemporaries();

/// Keeps this thread and, through the handlers of `CleanUpOnSignals`, the whole process from being ended by a signal
/// while something happens that a signal must not divide: a temporary file comes into being, or a file is rewritten in
/// place. Signals that arrive meanwhile take effect afterwards.
class SignalDelay {
 public:
  SignalDelay();
  ~SignalDelay();
  SignalDelay(const SignalDelay&) = delete;
  SignalDelay& operator=(const SignalDelay&) = delete;

 private:
  sigset_t before_{};
};

/// For signal handlers: lets no further delay begin and waits, a limited time, for those of other threads to end.
/// Whether they did; if not, a file that is being rewritten needs its copy.
bool EndSignalDelays();

}  // namespace ScEng
