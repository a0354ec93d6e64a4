// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <cerrno>
#include <cstddef>
#include <string>

#include "Host/Files/Descriptor.h"

namespace ScEng {

std::string DescribeErrno(ErrorNumber error);

/// Repeats a call that a signal interrupts.
template <typename Call>
auto Retry(Call call) {
  for (;;) {
    const auto result = call();
    if (result >= 0 || errno != EINTR) return result;
  }
}

ErrorNumber WriteBytes(int to, off_t offset, const char* bytes, std::size_t size);

/// Makes the content of `to` that of `from`, from the first byte to the last, and flushes it to disk.
ErrorNumber CopyContent(int from, int to);

ErrorNumber Flush(int descriptor);

/// Brings new and changed names in a folder to disk. A file system that cannot do so is not a reason to fail.
void FlushFolder(int folder);

}  // namespace ScEng
