// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace ScEng {

/// Has calls that need a path, which the system stops with SIGSYS, answered by the other side of the broker's socket,
/// as if they had been made. In all threads. False where that cannot be.
[[nodiscard]] bool CatchFileCalls();

}  // namespace ScEng
