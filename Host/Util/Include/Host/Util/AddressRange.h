// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "Host/Util/Api.h"

namespace ScEng {

/// The addresses of a library's code and data.
struct AddressRange {
  std::uintptr_t begin = 0;
  std::uintptr_t end = 0;

  /// That of the loaded file which `address` is in; empty where it is in none.
  HOST_UTIL_API static AddressRange FindOf(const void* address);
  [[nodiscard]] bool Contains(std::uintptr_t address) const { return address >= begin && address < end; }
};

}  // namespace ScEng
