// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Apps/Value/FilePairs.h"
#include "Apps/Value/MemoryBudget.h"
#include "Apps/Value/Refusal.h"
#include "Apps/Value/Reporter.h"
#include "Host/Documents/GraphDocument.h"
#include "Host/Tools/NodeLibrary.h"
#include "Host/Util/Cancellation.h"

/// Runs the documents of a batch on several threads and reports on each file as soon as it is done.
class BatchJobs {
 public:
  struct Work {
    std::size_t count = 0;
    /// What messages call the document.
    std::string name;
    /// Their ids in the document, in the order of the files of a set.
    std::vector<std::string> readers;
    std::function<const FileSet&(std::size_t)> get_files;
    std::function<Refusal(ScEng::GraphDocument&, std::vector<std::string>& notes, std::size_t)> prepare;
    std::function<ScEng::RunReport(ScEng::GraphDocument&, std::size_t, const Engine::Options&)> run;
    std::function<ExitCode(nlohmann::ordered_json& sum, ExitCode code)> finish;
    /// Whether there is nothing to do.
    std::function<bool(std::size_t)> is_up_to_date;
  };

  BatchJobs(Work work, std::shared_ptr<const ScEng::NodeCatalog> catalog, Reporter& reporter);
  ~BatchJobs();
  BatchJobs(const BatchJobs&) = delete;
  BatchJobs& operator=(const BatchJobs&) = delete;

  /// `jobs` and `threads` as they were asked for: one job per thread unless told otherwise, never more jobs than
  /// threads.
  ExitCode Run(std::optional<std::size_t> jobs, std::optional<unsigned> threads);

 private:
  enum class State { kLeftOut, kDone, kFailed, kSkipped };

  /// What became of one file.
  struct Outcome {
    State state = State::kLeftOut;
    ExitCode code = ExitCode::kDone;
    std::vector<std::string> notes;
    std::vector<std::string> errors;
    ScEng::RunReport report;
  };

  void TakeFiles();
  /// Tells which files will be read; so many may be opened ahead.
  void ExpectFiles(std::size_t most) const;
  void RunFile(std::size_t index);
  void Evaluate(std::size_t index, Outcome& outcome);
  void Count(const Outcome& outcome);
  void Tell(std::size_t index, const Outcome& outcome, double seconds);
  /// How much memory a file takes on its way, roughly: its samples as floats, several times.
  [[nodiscard]] std::uint64_t EstimateMemory(std::size_t index) const;
  /// Gives the threads of a job that has ended to the others.
  void ShareThreads(std::size_t jobs) const;
  /// Says how far the work came, once.
  void TellInterruption();
  void TellEnd() const;
  [[nodiscard]] nlohmann::ordered_json MakeSum() const;

  Work work_;
  std::shared_ptr<const ScEng::NodeCatalog> catalog_;
  Reporter& reporter_;
  const ScEng::Cancellation* cancellation_ = nullptr;
  MemoryBudget memory_;
  std::size_t threads_ = 1;
  std::size_t jobs_ = 1;
  std::atomic<std::size_t> next_{0};
  std::atomic<std::size_t> working_{0};
  /// Keeps the lines of a file together.
  std::mutex mutex_;
  std::atomic<std::size_t> done_{0};
  std::atomic<std::size_t> failed_{0};
  std::atomic<std::size_t> skipped_{0};
  std::atomic<bool> has_told_interruption_{false};
  ExitCode code_ = ExitCode::kDone;
  double seconds_ = 0.0;
};
