// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <set>
#include <string>

namespace ScEng {

/// The addresses of a library's code and data.
struct AddressRange {
  std::uintptr_t begin = 0;
  std::uintptr_t end = 0;

  /// That of the loaded file which `address` is in; empty where it is in none.
  static AddressRange FindOf(const void* address);
  [[nodiscard]] bool Contains(std::uintptr_t address) const { return address >= begin && address < end; }
};

/// The waiting threads of this process, but for the calling one, that return into the range some time: they run code of
/// that library, or wait within it. By their numbers. A thread that computes at this moment is not seen.
std::set<std::string> FindThreadsIn(const AddressRange& range);

}  // namespace ScEng
