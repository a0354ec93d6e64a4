// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

#include "Host/Util/Api.h"

#if defined(__GNUC__)
#define HOST_PRINTF_LIKE __attribute__((format(printf, 1, 2)))
#else
#define HOST_PRINTF_LIKE
#endif

/// The host's log. Messages are printf-style, one line each; every function may be called from any thread.
///
/// Informational messages are dropped unless the environment variable VALUE_LOG is "info" (or `SetLevel` says so). What
/// passes goes to standard error, unless `SetPrints` says otherwise.
class HOST_UTIL_API Log {
 public:
  enum class Level { kInfo, kWarning, kError, kOff };

  static void Info(const char* format, ...) HOST_PRINTF_LIKE;
  static void Warning(const char* format, ...) HOST_PRINTF_LIKE;
  static void Error(const char* format, ...) HOST_PRINTF_LIKE;

  /// Messages below this level are dropped before they are formatted.
  static void SetLevel(Level level);

  /// Whether messages go to standard error; they do at the start. For a program that has a log of its own.
  static void SetPrints(bool prints);

  /// Hands every message that passes the level to `sink` as well, until `SetSink(nullptr)`. `sink` is called from
  /// whichever thread logs, one call at a time.
  static void SetSink(std::function<void(Level, const std::string&)> sink);
};
