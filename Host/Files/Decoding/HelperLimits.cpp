// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Decoding/HelperLimits.h"

#include <algorithm>
#include <mutex>

namespace ScEng {
namespace {

std::mutex mutex;
HelperLimits current;

}  // namespace

void SetHelperLimits(const HelperLimits& limits) {
  const std::lock_guard lock(mutex);
  current = limits;
}

HelperLimits GetHelperLimits() {
  const std::lock_guard lock(mutex);
  return current;
}

std::uint64_t GetAllowedMemory(const HelperLimits& limits, std::uint64_t file_bytes, std::uint64_t declared_bytes) {
  // Numbers from a file may be anything; none that matters is beyond the most there is to allow.
  const std::uint64_t most = limits.most_memory;
  const std::uint64_t bytes = std::min(file_bytes, most) + std::min(declared_bytes, most);
  if (limits.memory_per_byte != 0 && bytes > most / limits.memory_per_byte) return most;
  return std::min(most, limits.memory + bytes * limits.memory_per_byte);
}

}  // namespace ScEng
