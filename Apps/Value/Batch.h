// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <cstddef>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Apps/Value/FilePairs.h"
#include "Apps/Value/OutputName.h"
#include "Apps/Value/Refusal.h"
#include "Apps/Value/Reporter.h"
#include "Host/Documents/GraphDocument.h"
#include "Host/Tools/NodeLibrary.h"

/// The options of a command that does its work once per file.
class BatchOptions {
 public:
  /// `what` and `help` say what --each takes.
  void Declare(CLI::App& app, const std::string& what, const std::string& help);

  [[nodiscard]] bool IsBatch() const { return !each_.empty(); }
  [[nodiscard]] const std::vector<std::string>& GetEach() const { return each_; }
  /// An error where options are missing or belong to a batch that was not asked for; else what has no effect.
  ScEng::Status Check(std::vector<std::string>& notes) const;

 private:
  friend class Batch;

  std::vector<std::string> each_;
  std::string output_dir_;
  std::string name_ = OutputName::kDefault;
  std::string pair_ = "order";
  bool skips_existing_ = false;
  std::optional<std::size_t> jobs_;
  bool has_name_ = false;
};

/// A reader that is given one file after the other.
struct BatchReader {
  /// As it was written after --each.
  std::string written;
  /// In the document.
  std::string id;
  std::string pattern;
};

/// What a batch does once per file.
class BatchTask {
 public:
  BatchTask() = default;
  virtual ~BatchTask() = default;
  BatchTask(const BatchTask&) = delete;
  BatchTask& operator=(const BatchTask&) = delete;

  /// What messages call the document.
  [[nodiscard]] virtual std::string GetName() const = 0;
  /// The file of the document, whose age counts; empty where there is none.
  [[nodiscard]] virtual std::filesystem::path GetDocumentFile() const { return {}; }
  /// Makes the document with all that was asked for; the files of the readers and the names of the outputs are set
  /// afterwards. From several threads at once, the first call done.
  virtual Refusal MakeDocument(ScEng::GraphDocument& document, std::vector<std::string>& notes) = 0;
  /// What is wrong with the files that it would write, once they have their names.
  [[nodiscard]] virtual ScEng::Status CheckFiles(const ScEng::GraphDocument& document) const = 0;
  /// Runs it. From several threads at once.
  virtual ScEng::RunReport RunOne(ScEng::GraphDocument& document, const std::string& name,
                                  const Engine::Options& options) = 0;
  /// Adds to the sum of the answer, at the end; answers the exit code.
  virtual ExitCode FinishBatch(nlohmann::ordered_json& sum, ExitCode code) = 0;
};

/// Does a task once per file, or set of files, of its readers, on several threads.
///
/// All that can be wrong with the document, the options and the names of the outputs is told once and before anything
/// is written. A file that fails is reported and the others go on. The threads of all jobs together are those that the
/// host may use, and so is their memory bounded: a file whose images would not fit beside the others waits.
class Batch {
 public:
  Batch(const BatchOptions& options, std::vector<BatchReader> readers, BatchTask& task,
        std::shared_ptr<const ScEng::NodeCatalog> catalog, std::optional<unsigned> threads, Reporter& reporter);
  ~Batch();
  Batch(const Batch&) = delete;
  Batch& operator=(const Batch&) = delete;

  ExitCode Run();

 private:
  /// Who writes a file: an output of a set.
  struct Writer {
    std::size_t set = 0;
    std::filesystem::path output;
  };

  /// Makes the document with the files of a set, which is named by its number from 0.
  Refusal Prepare(ScEng::GraphDocument& document, std::vector<std::string>& notes, std::size_t index);
  /// Names its outputs, and looks for what stands in the way of a run.
  Refusal Finish(ScEng::GraphDocument& document, std::size_t index) const;
  Refusal FindSets(std::vector<std::string>& notes);
  /// Looks at the document, with the first files, and at the names of all outputs.
  Refusal Probe(std::vector<std::string>& notes);
  /// What two outputs would be written under one name, or over a file that another run reads.
  [[nodiscard]] Refusal FindClash() const;
  [[nodiscard]] Refusal FindReplacedInput(const std::map<std::filesystem::path, Writer>& writers) const;
  [[nodiscard]] std::filesystem::path GetTarget(std::size_t index, const std::filesystem::path& output) const;
  /// Finds out whether the files that a run reads are known before it.
  void FindFedReaders(ScEng::GraphDocument& document, std::vector<std::string>& notes);
  /// Whether all outputs of a set are there and none is older than what it is made of.
  [[nodiscard]] bool IsUpToDate(std::size_t index) const;
  ExitCode RunSets();

  const BatchOptions& options_;
  std::vector<BatchReader> readers_;
  BatchTask& task_;
  std::shared_ptr<const ScEng::NodeCatalog> catalog_;
  std::optional<unsigned> threads_;
  Reporter& reporter_;

  OutputName name_;
  std::vector<FileSet> sets_;
  /// What the document itself would write.
  std::vector<std::filesystem::path> outputs_;
  /// Files that all runs depend on: the document and what its other readers read.
  std::vector<std::filesystem::path> shared_inputs_;
  bool has_fed_readers_ = false;
};
