// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace ValuePython {

/// Hands the lines of the host's log to the logger "valuenodes" of Python instead of standard error, which then decides
/// by its level what is shown.
void BridgeLog();

/// Hands over the lines that have come since, with the interpreter's lock. They are also handed over without it, at the
/// interpreter's next chance. Throws what the handler of a signal raises meanwhile.
void DeliverLog();

}  // namespace ValuePython
