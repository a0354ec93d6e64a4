// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Files/Api.h"

namespace ScEng {

/// Makes a write beyond the largest file that the process may write (`ulimit -f`) an error of the function that writes,
/// with nothing half-written left behind. Otherwise the signal SIGXFSZ ends the process; and where it is ignored, a
/// file may lack its end without an error, since some encoders do not look at the result of a write.
///
/// Takes over the handling of that signal, so it is for programs, once, before they start threads.
HOST_FILES_API void CatchFileSizeSignal();

}  // namespace ScEng
