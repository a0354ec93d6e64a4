// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace ScEng {

/// From now on the first opening of `path` is answered with the descriptor, and what is asked of its status with that
/// of the descriptor, without a question to the other side. The descriptor becomes this function's. A null path ends
/// that. Not safe in signal handlers.
void HandFile(const char* path, int descriptor);

/// Has calls that need a path, which the system stops with SIGSYS, answered by the other side of the broker's socket,
/// as if they had been made. In all threads. False where that cannot be.
[[nodiscard]] bool CatchFileCalls();

}  // namespace ScEng
