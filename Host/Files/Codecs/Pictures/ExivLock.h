// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <mutex>

namespace ScEng {

/// The lock of the metadata library, which is not made for several threads; the library is prepared with the first
/// call.
std::mutex& GetExivMutex();

}  // namespace ScEng
