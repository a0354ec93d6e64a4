// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace ScEng {

/// Limits that the process keeps to its end: no core files, no files written, few open ones, no new rights.
void LimitProcess();

/// Gives up everything that decoding does not need: opening files other than through the other side of the broker's
/// socket, networks, processes, code that was not loaded before. False where the system has no filter of calls, or not
/// for this processor; then nothing is given up.
[[nodiscard]] bool ConfineProcess();

}  // namespace ScEng
