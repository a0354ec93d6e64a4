// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/Reporter.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <iostream>
#include <string_view>
#include <system_error>
#include <utility>

#include "Apps/Value/SafeText.h"
#include "Host/Util/Log.h"

namespace {

constexpr std::string_view kErrorStart = "value: ";
constexpr std::string_view kNoteStart = "value: note: ";
constexpr std::string_view kInfoStart = "value: info: ";

/// What a line holds behind its start.
std::string MakeLine(std::string_view start, const std::string& text) {
  return EscapeLine(text, kLongestLine - start.size());
}

/// The errno of what failed, or 0.
int WriteAll(int descriptor, std::string_view text) {
  for (std::size_t written = 0; written < text.size();) {
    const ssize_t put = write(descriptor, text.data() + written, text.size() - written);
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) return put < 0 ? errno : EIO;
    written += static_cast<std::size_t>(put);
  }
  return 0;
}

}  // namespace

Reporter::Reporter() {
  // A sanitizer reports to standard error, so it keeps it.
#if !defined(__SANITIZE_ADDRESS__)
  const int own = dup(STDERR_FILENO);
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (own >= 0 && nowhere >= 0) {
    static_cast<void>(std::fflush(stderr));
    fcntl(own, F_SETFD, FD_CLOEXEC);
    dup2(nowhere, STDERR_FILENO);
    descriptor_ = own;
  }
  if (nowhere >= 0) close(nowhere);
#endif
  is_terminal_ = isatty(descriptor_) == 1;
  if (descriptor_ != STDERR_FILENO) {
    Log::SetSink([this](Log::Level level, const std::string& message) {
      const std::lock_guard lock(mutex_);
      const std::string_view start = level == Log::Level::kInfo ? kInfoStart : kNoteStart;
      WriteLine(std::string(start) + MakeLine(start, message));
    });
  }
}

void Reporter::Error(const std::string& text) {
  const std::string line = MakeLine(kErrorStart, text);
  const std::lock_guard lock(mutex_);
  if (first_error_.empty()) first_error_ = line;
  WriteLine(std::string(kErrorStart) + line);
}

void Reporter::Note(const std::string& text) {
  const std::string line = MakeLine(kNoteStart, text);
  const std::lock_guard lock(mutex_);
  notes_.push_back(line);
  if (!quiet_) WriteLine(std::string(kNoteStart) + line);
}

void Reporter::Notes(const std::vector<std::string>& texts) {
  for (const std::string& text : texts) Note(text);
}

void Reporter::Progress(const std::string& what, std::size_t done, std::size_t total) {
  const std::lock_guard lock(mutex_);
  if (!is_terminal_ || quiet_) return;
  const std::string start = "[" + std::to_string(done) + "/" + std::to_string(total) + "] ";
  WriteAll(descriptor_, "\r\033[K" + start + MakeLine(start, what));
  shows_progress_ = true;
}

void Reporter::Print(const std::string& text) {
  const std::lock_guard lock(mutex_);
  if (json_) return;
  ClearProgress();
  WriteOutput(EscapeText(text));
}

void Reporter::PrintAlways(const std::string& text) {
  const std::lock_guard lock(mutex_);
  ClearProgress();
  WriteOutput(EscapeText(text));
}

void Reporter::Finish(nlohmann::ordered_json answer) {
  const std::lock_guard lock(mutex_);
  ClearProgress();
  if (!json_) return;
  if (!first_error_.empty()) answer["error"] = first_error_;
  if (!notes_.empty()) answer["notes"] = notes_;
  WriteOutput(answer.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n");
}

ExitCode Reporter::Close(ExitCode code) {
  WriteOutput({});
  if (output_error_ == 0 || output_error_ == EPIPE) return code;
  Error("standard output cannot be written: " + std::generic_category().message(output_error_));
  return std::max(code, ExitCode::kFile);
}

void Reporter::WriteOutput(const std::string& text) {
  // What others have printed, such as a self-test, comes first.
  errno = 0;
  const bool is_flushed = std::cout.flush().good() && std::fflush(stdout) == 0;
  const int flush_error = is_flushed ? 0 : errno;
  int error = WriteAll(STDOUT_FILENO, text);
  if (error == 0 && !is_flushed) error = flush_error != 0 ? flush_error : EIO;
  if (output_error_ == 0) output_error_ = error;
}

void Reporter::WriteLine(const std::string& line) {
  ClearProgress();
  WriteAll(descriptor_, line + "\n");
}

void Reporter::ClearProgress() {
  if (std::exchange(shows_progress_, false)) WriteAll(descriptor_, "\r\033[K");
}
