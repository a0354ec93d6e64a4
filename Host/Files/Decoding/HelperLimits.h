// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>

#include "Host/Files/Api.h"

namespace ScEng {

/// What a process that decodes may take. The memory beside the samples that are asked for grows with the file and with
/// what it says it holds, so that a small damaged one cannot take gigabytes.
struct HelperLimits {
  /// For each question, opening a file or reading samples.
  std::chrono::milliseconds time{60'000};
  std::uint64_t most_memory = std::uint64_t{8} << 30;
  std::uint64_t memory = std::uint64_t{768} << 20;
  /// Times the bytes of the file and of the part that is read.
  std::uint64_t memory_per_byte = 4;
};

/// The limits from now on; for tests. From any thread.
HOST_FILES_API void SetHelperLimits(const HelperLimits& limits);
HelperLimits GetHelperLimits();

/// The bytes that a process may allocate for a file: `file_bytes` of its size, `declared_bytes` of what is read of it.
HOST_FILES_API std::uint64_t GetAllowedMemory(const HelperLimits& limits, std::uint64_t file_bytes,
                                              std::uint64_t declared_bytes);

}  // namespace ScEng
