// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string_view>

/// Writes all of a text to a descriptor; 0, or the errno of what failed. May be called where a signal has interrupted
/// the program.
inline int WriteAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t put = write(descriptor, text.data(), text.size());
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) return put < 0 ? errno : EIO;
    text.remove_prefix(static_cast<std::size_t>(put));
  }
  return 0;
}
