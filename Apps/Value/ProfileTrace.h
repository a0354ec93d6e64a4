// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>

#include "Apps/Value/ProfileRecord.h"

/// Runs as a trace in the format of trace events, which the viewers of browsers open: an object whose "traceEvents" are
/// complete events ("X") with times in microseconds. A run holds its nodes and writes, and these their stages.
class ProfileTrace {
 public:
  /// `begin` is the time 0 of the trace, `process` what it is called. More than `most_events` are counted, not kept.
  ProfileTrace(ProfileSpan::Clock::time_point begin, const std::string& process, std::size_t most_events = kMostEvents);

  /// Adds a run to a row: the job that it belongs to, from 1.
  void Add(const RunRecord& record, unsigned row);
  [[nodiscard]] std::size_t GetNumLeftOut() const { return left_out_; }
  [[nodiscard]] std::string ToText() const { return text_ + "\n]}\n"; }

 private:
  static constexpr std::size_t kMostEvents = 500'000;

  void AddName(const char* what, unsigned row, const std::string& name);
  void AddSpan(const std::string& name, const char* category, const ProfileSpan& span, unsigned row,
               nlohmann::ordered_json arguments);
  void AddFile(const FileRecord& record, unsigned row);
  void AddEvent(const nlohmann::ordered_json& event);

  ProfileSpan::Clock::time_point begin_;
  std::size_t most_events_;
  std::size_t events_ = 0;
  std::size_t left_out_ = 0;
  unsigned rows_ = 0;
  std::string text_;
};
