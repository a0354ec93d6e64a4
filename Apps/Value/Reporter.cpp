// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/Reporter.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <string_view>
#include <system_error>
#include <utility>

#include "Apps/Value/SafeText.h"
#include "Apps/Value/WriteAll.h"
#include "Host/Util/Log.h"

namespace {

constexpr std::string_view kErrorStart = "value: ";
constexpr std::string_view kNoteStart = "value: note: ";
constexpr std::string_view kInfoStart = "value: info: ";

/// How often progress is told where there is no terminal to show it on, and at most where there is one.
constexpr std::chrono::seconds kTickTime{10};
constexpr std::chrono::milliseconds kShowTime{50};

const char* GetName(ProgressUnit unit) {
  switch (unit) {
    case ProgressUnit::kNodes: return "nodes";
    case ProgressUnit::kFiles: return "files";
    case ProgressUnit::kChecks: return "checks";
    case ProgressUnit::kTests: return "tests";
  }
  return "";
}

/// "45 s", "3:20 min", "2:05 h"
std::string FormatTime(std::chrono::seconds time) {
  constexpr std::int64_t kMinute = 60;
  const std::int64_t seconds = time.count();
  if (seconds < 2 * kMinute) return std::to_string(seconds) + " s";
  const bool is_hours = seconds >= 2 * kMinute * kMinute;
  const std::int64_t large = is_hours ? seconds / kMinute / kMinute : seconds / kMinute;
  const std::int64_t small = is_hours ? seconds / kMinute % kMinute : seconds % kMinute;
  return std::to_string(large) + (small < 10 ? ":0" : ":") + std::to_string(small) + (is_hours ? " h" : " min");
}

/// What a line holds behind its start.
std::string MakeLine(std::string_view start, const std::string& text) {
  return EscapeLine(text, kLongestLine - start.size());
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

Reporter::~Reporter() { StopTicker(); }

void Reporter::TakeOutput() {
  if (output_ != STDOUT_FILENO) return;
  const int own = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (own >= 0 && nowhere >= 0 && dup2(nowhere, STDOUT_FILENO) >= 0) output_ = own;
  if (nowhere >= 0) close(nowhere);
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

void Reporter::NoteInPassing(const std::string& text) {
  const std::lock_guard lock(mutex_);
  if (!quiet_) WriteLine(std::string(kNoteStart) + MakeLine(kNoteStart, text));
}

void Reporter::Info(const std::string& text) {
  const std::lock_guard lock(mutex_);
  if (is_terminal_ && !quiet_) WriteLine(MakeLine("", text));
}

void Reporter::Progress(const std::string& what, std::size_t done, std::size_t total, ProgressUnit unit) {
  if (quiet_) return;
  const std::lock_guard lock(mutex_);
  const Clock::time_point now = Clock::now();
  const Clock::time_point start = std::exchange(has_state_, true) ? state_.start : now;
  const Clock::time_point shown = state_.shown;
  state_ = {what, done, total, unit, start, shown};
  if (!is_terminal_) {
    StartTicker();
    return;
  }
  if (total == 0 || (done < total && now - shown < kShowTime)) return;
  state_.shown = now;
  const std::string counts = "[" + std::to_string(done) + "/" + std::to_string(total) + "] ";
  const std::string time = unit == ProgressUnit::kFiles && done < total ? DescribeTime() + "  " : "";
  WriteAll(descriptor_, "\r\033[K" + counts + time + MakeLine(counts + time, what));
  shows_progress_ = true;
}

std::string Reporter::DescribeTime() const {
  const auto elapsed = Clock::now() - state_.start;
  const auto in_seconds = [](Clock::duration time) {
    return FormatTime(std::chrono::duration_cast<std::chrono::seconds>(time));
  };
  if (state_.unit != ProgressUnit::kFiles || state_.done == 0) return "after " + in_seconds(elapsed);
  return "about " + in_seconds(elapsed * (state_.total - state_.done) / state_.done) + " left";
}

std::string Reporter::DescribeState() const {
  if (state_.total == 0) return "still at work " + DescribeTime();
  return std::to_string(state_.done) + " of " + std::to_string(state_.total) + " " + GetName(state_.unit) + " done, " +
         DescribeTime();
}

void Reporter::StartTicker() {
  if (ticker_.joinable()) return;
  is_stopped_ = false;
  try {
    ticker_ = std::thread([this] {
      std::unique_lock lock(mutex_);
      while (!stopped_.wait_for(lock, kTickTime, [&] { return is_stopped_; })) {
        WriteLine(std::string(kInfoStart) + MakeLine(kInfoStart, DescribeState()));
      }
    });
  } catch (const std::system_error&) {
    // Without a thread to spare, the work goes on in silence.
  }
}

void Reporter::StopTicker() {
  {
    const std::lock_guard lock(mutex_);
    is_stopped_ = true;
  }
  stopped_.notify_all();
  if (ticker_.joinable()) ticker_.join();
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

void Reporter::WriteBytes(std::string_view bytes) {
  const std::lock_guard lock(mutex_);
  ClearProgress();
  WriteOutput(bytes);
}

void Reporter::AnswerLine(const nlohmann::ordered_json& line) {
  const std::lock_guard lock(mutex_);
  if (!json_) return;
  ClearProgress();
  WriteOutput(line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n");
}

void Reporter::Finish(nlohmann::ordered_json answer) {
  constexpr int kIndent = 2;
  WriteAnswer(std::move(answer), kIndent);
}

void Reporter::FinishLines(nlohmann::ordered_json answer) {
  constexpr int kOneLine = -1;
  WriteAnswer(std::move(answer), kOneLine);
}

void Reporter::WriteAnswer(nlohmann::ordered_json answer, int indent) {
  StopTicker();
  const std::lock_guard lock(mutex_);
  ClearProgress();
  if (!json_) return;
  if (!first_error_.empty()) answer["error"] = first_error_;
  if (!notes_.empty()) answer["notes"] = notes_;
  WriteOutput(answer.dump(indent, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n");
}

ExitCode Reporter::Close(ExitCode code) {
  WriteOutput({});
  if (output_error_ == 0 || output_error_ == EPIPE) return code;
  Error("standard output cannot be written: " + std::generic_category().message(output_error_));
  return std::max(code, ExitCode::kFile);
}

void Reporter::WriteOutput(std::string_view text) {
  // What others have printed, such as a self-test, comes first.
  errno = 0;
  const bool is_flushed = std::cout.flush().good() && std::fflush(stdout) == 0;
  const int flush_error = is_flushed ? 0 : errno;
  int error = WriteAll(output_, text);
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
