// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace ScEng {

/// Whether a write of this thread was refused for the size of its file since the last `ForgetFileSizeSignal` of the
/// thread (see `CatchFileSizeSignal`).
bool HasFileSizeSignal();

void ForgetFileSizeSignal();

}  // namespace ScEng
