// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <csetjmp>
#include <cstdio>
// The library's header needs the one before it.
#include <jpeglib.h>

#include <string>

namespace ScEng {

/// The library's errors as a jump back to whoever called it; without it they end the process. Whoever calls the
/// library sets `escape` first, in a function that has nothing to destroy.
struct JpegErrors : jpeg_error_mgr {
  std::jmp_buf escape;
  /// The library's code and words.
  int code = 0;
  char text[JMSG_LENGTH_MAX] = {};
  /// Bytes between the picture and its end marker, which harm nothing.
  bool has_padding = false;
};

/// Prepares the errors of a decoder, for which warnings are errors: the library goes on after them with grey pixels.
void PrepareJpegErrors(JpegErrors& errors);

}  // namespace ScEng
