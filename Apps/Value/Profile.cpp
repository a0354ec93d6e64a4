// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/Profile.h"

#include <algorithm>
#include <system_error>

#include "Apps/Value/ProfileRecorder.h"
#include "Host/Files/ImageFile.h"

using ScEng::Status;

void Profile::Declare(CLI::App& app) {
  app.add_flag("--profile", prints_,
               "Print where the time goes: for each node and each written file its time and how fast it moves samples");
  app.add_option("--trace", trace_file_,
                 "Write the same as a timeline, in the trace event format (JSON) of chrome://tracing and Perfetto")
      ->type_name("FILE");
}

ExitCode Profile::Begin(const std::string& command, const std::string& subject, std::string& problem) {
  if (!trace_file_) return ExitCode::kDone;
  const std::string option = "--trace " + *trace_file_ + ": ";
  const std::filesystem::path file = ScEng::MakePath(*trace_file_);
  std::error_code error;
  // Images and documents end otherwise or are caught here, so that none is replaced by mistake.
  if (file.extension() != ".json") {
    problem = option + "the name of a trace ends in .json";
    return ExitCode::kUsage;
  }
  if (std::filesystem::equivalent(file, ScEng::MakeReadPath(subject), error)) {
    problem = option + "this is the document; name another file";
    return ExitCode::kUsage;
  }
  const std::filesystem::path folder = std::filesystem::absolute(file, error).parent_path();
  if (!std::filesystem::is_directory(folder, error)) {
    problem = option + "there is no folder \"" + folder.string() + "\"";
    return ExitCode::kFile;
  }
  if (std::filesystem::is_directory(file, error)) {
    problem = option + "this is a folder; name a file";
    return ExitCode::kFile;
  }
  // A run that may have taken hours is no time to find out.
  if (const std::string obstacle = ScEng::TryPlace(file); !obstacle.empty()) {
    problem = option + "it cannot be written: " + obstacle;
    return ExitCode::kFile;
  }
  trace_.emplace(begin_, "value " + command + " " + subject);
  return ExitCode::kDone;
}

ScEng::RunReport Profile::Run(ScEng::GraphDocument& document, const std::string& name,
                              const ScEng::GraphDocument::Progress& progress, const Engine::Options& options) {
  if (!IsOn()) return document.Run(progress, options);
  ProfileRecorder recorder(document, name);
  ScEng::RunReport report = recorder.Run(progress, options);
  Add(recorder.GetRecord());
  return report;
}

void Profile::Add(const RunRecord& record) {
  const std::lock_guard lock(mutex_);
  first_run_ = first_run_ ? std::min(*first_run_, record.span.begin) : record.span.begin;
  sums_.Add(record);
  if (!trace_) return;
  const auto row = rows_.try_emplace(std::this_thread::get_id(), static_cast<unsigned>(rows_.size()) + 1).first;
  trace_->Add(record, row->second);
}

ExitCode Profile::Finish(Reporter& reporter, nlohmann::ordered_json& answer, ExitCode code) {
  if (prints_) {
    const CopySpeed copy = MeasureCopySpeed();
    const double before = first_run_ ? ProfileSpan{begin_, *first_run_}.GetSeconds() : 0.0;
    reporter.Print(sums_.ToText(copy, before));
    answer["profile"] = sums_.ToJson(copy, before);
  }
  if (!trace_) return code;
  const Status written = WriteTrace(reporter);
  if (!written.IsError()) return code;
  reporter.Error(written.GetMessage());
  return std::max(code, ExitCode::kFile);
}

Status Profile::WriteTrace(Reporter& reporter) const {
  if (trace_->GetNumLeftOut() > 0) {
    reporter.Note("--trace " + *trace_file_ + ": the last " + std::to_string(trace_->GetNumLeftOut()) +
                  " steps are left out, since it would be too large for viewers");
  }
  return ScEng::WriteWholeFile(ScEng::MakePath(*trace_file_), trace_->ToText());
}
