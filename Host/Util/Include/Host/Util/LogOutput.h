// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Util/Api.h"

namespace ScEng {

/// Whether messages of the `Log` go to standard error; they do at the start. For a program that has a log of its own,
/// which `Log::SetSink` fills. May be called from any thread.
HOST_UTIL_API void SetLogPrints(bool prints);

}  // namespace ScEng
