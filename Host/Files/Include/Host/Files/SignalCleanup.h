// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Files/Api.h"

namespace ScEng {

/// Called in the signal handler. True when the program stops by itself soon, which leaves everything to it; false to
/// end the process now. It may do only what a signal handler may, such as setting a flag.
using SignalHook = bool (*)(int signal);

/// How a signal ends the process.
enum class SignalEnd {
  /// By the signal, as by default.
  kBySignal,
  /// With the exit code 128 plus the number of the signal, as shells tell it.
  kWithExitCode,
};

/// Has SIGINT, SIGTERM and SIGHUP remove the temporary files of saves that are under way and then end the process.
/// Otherwise such files stay behind. A file that is being rewritten in place is finished first.
///
/// Signals that are ignored stay ignored. It is for programs, once, before they start threads.
HOST_FILES_API void CleanUpOnSignals(SignalHook hook = nullptr, SignalEnd end = SignalEnd::kBySignal);

/// Removes the temporary files of saves that are under way, for a program that is about to end in the middle of them. A
/// file that is being rewritten in place is waited for, a limited time; where it does not come to an end, its copy
/// stays. It may be called in a signal handler.
HOST_FILES_API void RemoveTemporariesBeforeEnd();

}  // namespace ScEng
