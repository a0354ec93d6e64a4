// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/BatchJobs.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <system_error>
#include <utility>

#include "Apps/Value/Common.h"
#include "Apps/Value/Interrupt.h"
#include "Apps/Value/Jobs.h"
#include "Apps/Value/SafeText.h"
#include "Host/Files/DecodeOptions.h"
#include "Host/Files/ImageFile.h"
#include "Host/Tools/Guard.h"
#include "Host/Util/ParallelRows.h"

namespace {

using Clock = std::chrono::steady_clock;
using ScEng::GraphDocument;

double SecondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

}  // namespace

BatchJobs::BatchJobs(Work work, std::shared_ptr<const ScEng::NodeCatalog> catalog, Reporter& reporter)
    : work_(std::move(work)), catalog_(std::move(catalog)), reporter_(reporter), memory_(MemoryBudget::FindDefault()) {}

BatchJobs::~BatchJobs() = default;

ExitCode BatchJobs::Run(std::optional<std::size_t> jobs, std::optional<unsigned> threads) {
  const Clock::time_point start = Clock::now();
  threads_ = ScEng::GetNumThreads();
  std::size_t wanted = jobs.value_or(threads_);
  if (threads && wanted > *threads) {
    reporter_.Note("--jobs " + std::to_string(wanted) + ": --threads " + std::to_string(*threads) +
                   " allows no more than that many at a time");
    wanted = *threads;
  }
  jobs_ = std::min(wanted, work_.count);
  reporter_.Progress("", 0, work_.count, ProgressUnit::kFiles);
  {
    Interrupt::Work interruptible([this] {
      TellInterruption();
      reporter_.FinishLines(MakeSum());
    });
    cancellation_ = &interruptible.GetCancellation();
    working_ = jobs_;
    ShareThreads(jobs_);
    // A process that opens a file ahead works beside the jobs, and counts where the number of threads was asked for.
    ExpectFiles(threads ? std::min(jobs_, threads_ - jobs_) : jobs_);
    const std::size_t used = RunJobs(jobs_, [this] { TakeFiles(); });
    if (used < jobs_) {
      reporter_.Note("--jobs " + std::to_string(jobs_) + ": the system had no more than " + std::to_string(used) +
                     (used == 1 ? " thread" : " threads") + " for it");
    }
    ScEng::ExpectImageFiles({}, 0);
    ScEng::SetNumThreads(threads_);
    seconds_ = SecondsSince(start);
  }
  nlohmann::ordered_json sum = MakeSum();
  const int signal = Interrupt::GetSignal();
  if (signal != 0) code_ = static_cast<ExitCode>(128 + signal);
  code_ = work_.finish(sum, code_);
  if (signal != 0) {
    TellInterruption();
  } else {
    TellEnd();
  }
  reporter_.FinishLines(sum);
  return code_;
}

void BatchJobs::TellEnd() const {
  reporter_.Info(std::to_string(done_ + skipped_) + " of " + std::to_string(work_.count) + " done" +
                 (skipped_ > 0 ? " (" + std::to_string(skipped_) + " were up to date)" : "") +
                 (failed_ > 0 ? ", " + std::to_string(failed_) + " failed" : "") + ", " + FormatSeconds(seconds_));
}

void BatchJobs::TakeFiles() {
  while (!cancellation_->IsRequested()) {
    const std::size_t index = next_++;
    if (index >= work_.count) break;
    RunFile(index);
  }
  ShareThreads(--working_);
}

void BatchJobs::ExpectFiles(std::size_t most) const {
  std::vector<std::filesystem::path> files;
  for (std::size_t i = 0; i < work_.count; ++i) {
    for (const GlobFile& file : work_.get_files(i)) files.push_back(file.file);
  }
  ScEng::ExpectImageFiles(std::move(files), most);
}

void BatchJobs::ShareThreads(std::size_t jobs) const {
  // Each job is one thread itself; the others are shared by whoever has use for them.
  ScEng::SetNumThreads(jobs < threads_ ? threads_ - jobs + 1 : 1);
}

void BatchJobs::RunFile(std::size_t index) {
  const Clock::time_point start = Clock::now();
  Outcome outcome;
  try {
    if (work_.is_up_to_date(index)) {
      outcome.state = State::kSkipped;
    } else {
      Evaluate(index, outcome);
    }
  } catch (...) {
    outcome.errors.push_back("an unexpected error: " + ScEng::DescribeHandledException());
    outcome.code = ExitCode::kNodeError;
    outcome.state = State::kFailed;
  }
  if (outcome.state == State::kLeftOut) return;
  Count(outcome);
  try {
    Tell(index, outcome, SecondsSince(start));
  } catch (...) {
    // Only for want of memory; the file has been counted.
    reporter_.Error(ScEng::DescribeHandledException());
  }
}

void BatchJobs::Evaluate(std::size_t index, Outcome& outcome) {
  GraphDocument document(catalog_);
  const Refusal refusal = work_.prepare(document, outcome.notes, index);
  // What the document and the options have to say is the same for all files, and has been said.
  outcome.notes.clear();
  if (refusal.IsRefused()) {
    outcome.errors.push_back(refusal.text);
    outcome.code = refusal.code;
    outcome.state = State::kFailed;
    return;
  }
  const MemoryBudget::Share share(memory_, EstimateMemory(index));
  Engine::Options options;
  options.cancellation = cancellation_;
  outcome.report = work_.run(document, index, options);
  if (outcome.report.canceled) return;
  outcome.notes = outcome.report.findings.notes;
  outcome.errors = outcome.report.findings.errors;
  outcome.code = GetExitCode(outcome.report.failure);
  outcome.state = outcome.code == ExitCode::kDone ? State::kDone : State::kFailed;
}

std::uint64_t BatchJobs::EstimateMemory(std::size_t index) const {
  // A file as small as this has no images that matter, and looking into it would take longer than reading it.
  constexpr std::uintmax_t kSmall = 16 << 10;
  constexpr std::uint64_t kImagesAtOnce = 6;
  if (jobs_ == 1) return 0;
  std::uint64_t samples = 0;
  for (const GlobFile& file : work_.get_files(index)) {
    std::error_code error;
    if (std::filesystem::file_size(file.file, error) <= kSmall || error) continue;
    ScEng::Status status;
    const auto description = ScEng::DescribeImageFile(file.file, status);
    if (!description || description->parts.empty()) continue;
    const ScEng::FilePart& part = description->parts.front();
    constexpr std::size_t kMostChannels = 4;
    samples += static_cast<std::uint64_t>(part.size_x) * static_cast<std::uint64_t>(part.size_y) *
               std::min(part.channels.size(), kMostChannels);
  }
  return samples * sizeof(float) * kImagesAtOnce;
}

void BatchJobs::Count(const Outcome& outcome) {
  switch (outcome.state) {
    case State::kDone: ++done_; break;
    case State::kFailed: ++failed_; break;
    case State::kSkipped: ++skipped_; break;
    case State::kLeftOut: break;
  }
}

void BatchJobs::Tell(std::size_t index, const Outcome& outcome, double seconds) {
  const FileSet& files = work_.get_files(index);
  const std::string input = files.front().file.string();
  const std::lock_guard lock(mutex_);
  code_ = std::max(code_, outcome.code);
  for (const std::string& note : outcome.notes) reporter_.NoteInPassing(input + ": " + note);
  for (const std::string& error : outcome.errors) reporter_.Error(input + ": " + error);
  for (const ScEng::WrittenFile& written : outcome.report.written) reporter_.Info(DescribeWritten(written, seconds));

  nlohmann::ordered_json line;
  line["input"] = input;
  if (files.size() > 1) {
    for (std::size_t i = 0; i < files.size(); ++i) line["inputs"][work_.readers[i]] = files[i].file.string();
  }
  line["state"] = outcome.state == State::kDone ? "done" : outcome.state == State::kSkipped ? "skipped" : "failed";
  line["seconds"] = seconds;
  line["outputs"] = nlohmann::ordered_json::array();
  for (const auto& output : outcome.report.outputs) line["outputs"].push_back(ToJson(output));
  line["written"] = nlohmann::ordered_json::array();
  for (const ScEng::WrittenFile& written : outcome.report.written) line["written"].push_back(written.file.string());
  if (!outcome.errors.empty()) line["error"] = EscapeLine(input + ": " + outcome.errors.front());
  for (const std::string& error : outcome.errors) {
    if (outcome.errors.size() > 1) line["errors"].push_back(EscapeLine(error));
  }
  for (const std::string& note : outcome.notes) line["notes"].push_back(EscapeLine(note));
  reporter_.AnswerLine(line);
  reporter_.Progress(input, done_ + failed_ + skipped_, work_.count, ProgressUnit::kFiles);
}

void BatchJobs::TellInterruption() {
  if (has_told_interruption_.exchange(true)) return;
  const std::size_t failed = failed_;
  const std::size_t finished = done_ + skipped_;
  reporter_.Error(std::to_string(finished) + " of " + std::to_string(work_.count) + " done, " +
                  (failed > 0 ? std::to_string(failed) + " failed, " : "") +
                  std::to_string(work_.count - finished - failed) + " left out; --skip-existing goes on from here");
}

nlohmann::ordered_json BatchJobs::MakeSum() const {
  nlohmann::ordered_json sum;
  sum["document"] = work_.name;
  sum["files"] = work_.count;
  const std::size_t done = done_;
  const std::size_t failed = failed_;
  const std::size_t skipped = skipped_;
  sum["done"] = done;
  sum["failed"] = failed;
  sum["skipped"] = skipped;
  sum["left_out"] = work_.count - done - failed - skipped;
  sum["seconds"] = seconds_;
  return sum;
}
