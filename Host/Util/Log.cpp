// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/Log.h"

#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>

#include "Host/Util/Forks.h"
#include "Host/Util/LogOutput.h"

namespace {

Log::Level FromSpdlog(spdlog::level::level_enum level) {
  if (level >= spdlog::level::err) return Log::Level::kError;
  return level == spdlog::level::warn ? Log::Level::kWarning : Log::Level::kInfo;
}

spdlog::level::level_enum ToSpdlog(Log::Level level) {
  switch (level) {
    case Log::Level::kInfo: return spdlog::level::info;
    case Log::Level::kWarning: return spdlog::level::warn;
    case Log::Level::kError: return spdlog::level::err;
    case Log::Level::kOff: break;
  }
  return spdlog::level::off;
}

/// Forwards messages to the function given to `Log::SetSink`.
class FunctionSink final : public spdlog::sinks::base_sink<std::mutex> {
 public:
  FunctionSink() { ScEng::HoldWhileForking(mutex_); }

  void SetFunction(std::function<void(Log::Level, const std::string&)> function) {
    const std::lock_guard lock(mutex_);
    function_ = std::move(function);
  }

 protected:
  void sink_it_(const spdlog::details::log_msg& message) override {
    if (function_) function_(FromSpdlog(message.level), std::string(message.payload.data(), message.payload.size()));
  }
  void flush_() override {}

 private:
  std::function<void(Log::Level, const std::string&)> function_;
};

struct Logger {
  std::shared_ptr<FunctionSink> function_sink = std::make_shared<FunctionSink>();
  std::shared_ptr<spdlog::sinks::sink> console;
  std::shared_ptr<spdlog::logger> logger;

  Logger() {
    console = std::make_shared<spdlog::sinks::stderr_sink_mt>();
    logger = std::make_shared<spdlog::logger>("value", spdlog::sinks_init_list{console, function_sink});
    logger->set_pattern("%l: %v");
    const char* wanted = std::getenv("VALUE_LOG");
    const bool info = wanted != nullptr && std::string_view(wanted) == "info";
    logger->set_level(info ? spdlog::level::info : spdlog::level::warn);
  }
};

// Never destroyed: threads may log until the process ends.
Logger& GetLogger() {
  static Logger& logger = *new Logger;
  return logger;
}

void LogFormatted(Log::Level level, const char* format, std::va_list arguments) {
  const auto& logger = GetLogger().logger;
  if (!logger->should_log(ToSpdlog(level))) return;
  std::va_list measured;
  va_copy(measured, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, measured);
  va_end(measured);
  if (length < 0) return;
  std::string text(static_cast<std::size_t>(length), '\0');
  static_cast<void>(std::vsnprintf(text.data(), text.size() + 1, format, arguments));
  logger->log(ToSpdlog(level), spdlog::string_view_t(text.data(), text.size()));
}

}  // namespace

void Log::Info(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  LogFormatted(Level::kInfo, format, arguments);
  va_end(arguments);
}

void Log::Warning(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  LogFormatted(Level::kWarning, format, arguments);
  va_end(arguments);
}

void Log::Error(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  LogFormatted(Level::kError, format, arguments);
  va_end(arguments);
}

void Log::SetLevel(Level level) { GetLogger().logger->set_level(ToSpdlog(level)); }

void ScEng::SetLogPrints(bool prints) {
  GetLogger().console->set_level(prints ? spdlog::level::trace : spdlog::level::off);
}

void Log::SetSink(std::function<void(Level, const std::string&)> sink) {
  GetLogger().function_sink->SetFunction(std::move(sink));
}
