// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/Reporter.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <iostream>
#include <utility>

#include "Host/Util/Log.h"

namespace {

std::string OneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char letter) { return letter == '\n' || letter == '\r'; }, ' ');
  return text;
}

void WriteAll(int descriptor, const std::string& text) {
  for (std::size_t written = 0; written < text.size();) {
    const ssize_t put = write(descriptor, text.data() + written, text.size() - written);
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) return;
    written += static_cast<std::size_t>(put);
  }
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
      WriteLine(level == Log::Level::kInfo ? "value: info: " + message : "value: note: " + message);
    });
  }
}

void Reporter::Error(const std::string& text) {
  const std::lock_guard lock(mutex_);
  if (first_error_.empty()) first_error_ = OneLine(text);
  WriteLine("value: " + OneLine(text));
}

void Reporter::Note(const std::string& text) {
  const std::lock_guard lock(mutex_);
  notes_.push_back(OneLine(text));
  if (!quiet_) WriteLine("value: note: " + OneLine(text));
}

void Reporter::Notes(const std::vector<std::string>& texts) {
  for (const std::string& text : texts) Note(text);
}

void Reporter::Progress(const std::string& what, std::size_t done, std::size_t total) {
  const std::lock_guard lock(mutex_);
  if (!is_terminal_ || quiet_) return;
  WriteAll(descriptor_, "\r\033[K[" + std::to_string(done) + "/" + std::to_string(total) + "] " + OneLine(what));
  shows_progress_ = true;
}

void Reporter::Print(const std::string& text) {
  const std::lock_guard lock(mutex_);
  if (json_) return;
  ClearProgress();
  std::cout << text << std::flush;
}

void Reporter::Finish(nlohmann::ordered_json answer) {
  const std::lock_guard lock(mutex_);
  ClearProgress();
  if (!json_) return;
  if (!first_error_.empty()) answer["error"] = first_error_;
  if (!notes_.empty()) answer["notes"] = notes_;
  std::cout << answer.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << std::endl;
}

void Reporter::WriteLine(const std::string& line) {
  ClearProgress();
  WriteAll(descriptor_, line + "\n");
}

void Reporter::ClearProgress() {
  if (std::exchange(shows_progress_, false)) WriteAll(descriptor_, "\r\033[K");
}
