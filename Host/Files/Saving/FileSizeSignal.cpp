// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Saving/FileSizeSignal.h"

#include <csignal>

#include "Host/Files/FileSizeLimit.h"

namespace ScEng {
namespace {

/// The system sends the signal to the thread that writes.
thread_local volatile std::sig_atomic_t is_over_limit = 0;

extern "C" void OnFileSizeSignal(int) { is_over_limit = 1; }

}  // namespace

void CatchFileSizeSignal() {
  struct sigaction action {};
  action.sa_handler = OnFileSizeSignal;
  sigemptyset(&action.sa_mask);
  sigaction(SIGXFSZ, &action, nullptr);
}

bool HasFileSizeSignal() { return is_over_limit != 0; }

void ForgetFileSizeSignal() { is_over_limit = 0; }

}  // namespace ScEng
