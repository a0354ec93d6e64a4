// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/ProfileTrace.h"

#include <utility>

namespace {

double ToMicroseconds(ProfileSpan::Clock::duration time) {
  return static_cast<double>(std::chrono::duration_cast<std::chrono::nanoseconds>(time).count()) / 1e3;
}

}  // namespace

ProfileTrace::ProfileTrace(ProfileSpan::Clock::time_point begin, const std::string& process, std::size_t most_events)
    : begin_(begin), most_events_(most_events), text_("{\"displayTimeUnit\": \"ms\", \"traceEvents\": [") {
  AddName("process_name", 0, process);
}

void ProfileTrace::AddName(const char* what, unsigned row, const std::string& name) {
  nlohmann::ordered_json event{{"name", what}, {"ph", "M"}, {"pid", 1}, {"tid", row}};
  event["args"]["name"] = name;
  AddEvent(event);
}

void ProfileTrace::AddSpan(const std::string& name, const char* category, const ProfileSpan& span, unsigned row,
                           nlohmann::ordered_json arguments) {
  if (events_ >= most_events_) {
    ++left_out_;
    return;
  }
  ++events_;
  AddEvent({{"name", name},
            {"cat", category},
            {"ph", "X"},
            {"ts", ToMicroseconds(span.begin - begin_)},
            {"dur", ToMicroseconds(span.end - span.begin)},
            {"pid", 1},
            {"tid", row},
            {"args", std::move(arguments)}});
}

void ProfileTrace::AddEvent(const nlohmann::ordered_json& event) {
  text_ += text_.back() == '[' ? "\n" : ",\n";
  text_ += event.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

void ProfileTrace::AddFile(const FileRecord& record, unsigned row) {
  nlohmann::ordered_json arguments;
  arguments["file"] = record.file.string();
  if (record.file_bytes > 0) arguments["file_bytes"] = record.file_bytes;
  if (record.sample_bytes > 0) arguments["sample_bytes"] = record.sample_bytes;
  AddSpan(GetName(record.work), "file", record.span, row, std::move(arguments));
}

void ProfileTrace::Add(const RunRecord& record, unsigned row) {
  while (rows_ < row) {
    ++rows_;
    AddName("thread_name", rows_, "job " + std::to_string(rows_));
  }
  nlohmann::ordered_json of_run;
  of_run["nodes"] = record.nodes.size();
  AddSpan(record.name, "run", record.span, row, std::move(of_run));
  for (const NodeStep& step : record.nodes) {
    nlohmann::ordered_json arguments{
        {"type", step.type}, {"bytes_read", step.bytes_read}, {"bytes_made", step.bytes_made}};
    if (step.size_x > 0) arguments["size"] = {step.size_x, step.size_y};
    AddSpan(step.id, "node", step.span, row, std::move(arguments));
    for (const FileRecord& file : step.files) AddFile(file, row);
  }
  for (const WriteStep& step : record.writes) {
    nlohmann::ordered_json arguments;
    arguments["file"] = step.file.string();
    AddSpan(step.sources.empty() ? "write" : "write " + step.sources, "write", step.span, row, std::move(arguments));
    for (const FileRecord& file : step.stages) AddFile(file, row);
  }
}
