// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/Batch.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <system_error>
#include <utility>

#include "Apps/Value/BatchJobs.h"
#include "Apps/Value/Common.h"
#include "Host/Files/ImageFormats.h"

namespace {

using ScEng::GraphDocument;
using ScEng::Status;

std::string Quote(const std::filesystem::path& file) { return "\"" + file.string() + "\""; }

/// What tells a file from all others, whatever way leads to it; nothing where there is none.
using Identity = std::optional<std::pair<dev_t, ino_t>>;

Identity FindIdentity(const std::filesystem::path& file) {
  struct stat status {};
  if (stat(file.c_str(), &status) != 0) return std::nullopt;
  return std::pair(status.st_dev, status.st_ino);
}

/// Whether the ending of a file names a format that is written.
bool IsWritten(const std::filesystem::path& file) {
  static const std::vector<std::string> kEndings = ScEng::ListWrittenEndings();
  std::string ending = file.extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(), [](unsigned char c) { return std::tolower(c); });
  return std::find(kEndings.begin(), kEndings.end(), ending) != kEndings.end();
}

Refusal MakeFolder(const std::filesystem::path& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (!error && std::filesystem::is_directory(folder)) return {};
  return {ExitCode::kFile,
          "the folder " + Quote(folder) + " cannot be created" + (error ? ": " + error.message() : std::string())};
}

}  // namespace

void BatchOptions::Declare(CLI::App& app, const std::string& what, const std::string& help) {
  const std::string group = "Once per file";
  AddRepeatable(app, "--each", each_, what, help)->group(group);
  app.add_option("--output-dir", output_dir_, "The folder for the results of --each; created where it is missing")
      ->type_name("DIR")
      ->group(group);
  app.add_option_function<std::string>(
         "--name",
         [this](const std::string& name) {
           name_ = name;
           has_name_ = true;
         },
         "How the results of --each are named (default: \"" + std::string(OutputName::kDefault) +
             "\");\nthere are also {folder} and {index}")
      ->type_name("TEMPLATE")
      ->group(group);
  app.add_option(
         "--pair", pair_,
         "How the files of several --each go together: order (default), as they are sorted, or stem, by equal names "
         "without endings")
      ->type_name("WORD")
      ->check(CLI::IsMember({"order", "stem"}))
      ->group(group);
  app.add_flag("--skip-existing", skips_existing_,
               "Leave out a file whose results are all there and not older than what they are made of")
      ->group(group);
  app.add_option("--jobs", jobs_, "How many files are worked on at a time (default: one per thread)")
      ->type_name("N")
      ->check(CLI::Range(1, 1024))
      ->group(group);
}

Status BatchOptions::Check(std::vector<std::string>& notes) const {
  const char* stray = !output_dir_.empty() ? "--output-dir"
                      : has_name_          ? "--name"
                      : skips_existing_    ? "--skip-existing"
                                           : "";
  if (!IsBatch() && *stray != '\0') {
    return Status::Error(std::string(stray) + " belongs to --each, which names the files to go through");
  }
  if (IsBatch() && output_dir_.empty()) {
    return Status::Error("--each needs --output-dir: one names the files, the other the folder for their results");
  }
  if (!IsBatch() && jobs_) notes.push_back("--jobs has no effect without --each");
  if (each_.size() < 2 && pair_ != "order") notes.push_back("--pair has no effect without a second --each");
  return {};
}

Batch::Batch(const BatchOptions& options, std::vector<BatchReader> readers, BatchTask& task,
             std::shared_ptr<const ScEng::NodeCatalog> catalog, std::optional<unsigned> threads, Reporter& reporter)
    : options_(options),
      readers_(std::move(readers)),
      task_(task),
      catalog_(std::move(catalog)),
      threads_(threads),
      reporter_(reporter) {}

Batch::~Batch() = default;

ExitCode Batch::Run() {
  std::vector<std::string> notes;
  Refusal refusal = FindSets(notes);
  if (!refusal.IsRefused() || refusal.code == ExitCode::kFile) {
    // What is wrong with the document comes before files that are missing.
    const Refusal of_document = Probe(notes);
    if (of_document.IsRefused()) refusal = of_document;
  }
  reporter_.Notes(notes);
  if (!refusal.IsRefused()) refusal = MakeFolder(ScEng::MakePath(options_.output_dir_));
  if (!refusal.IsRefused()) return RunSets();
  reporter_.Error(refusal.text);
  reporter_.FinishLines(nlohmann::ordered_json::object());
  return refusal.code;
}

Refusal Batch::FindSets(std::vector<std::string>& notes) {
  const Status status = name_.Parse(options_.name_);
  if (status.IsError()) return {ExitCode::kUsage, "--name " + options_.name_ + ": " + status.GetMessage()};
  std::set<std::string> ids;
  std::vector<ReaderFiles> found;
  for (const BatchReader& reader : readers_) {
    if (!ids.insert(reader.id).second) {
      return {ExitCode::kUsage, "--each " + reader.written + ": another --each gives this reader its files"};
    }
    found.push_back({reader.written, FindFiles(reader.pattern)});
  }
  for (const ReaderFiles& reader : found) {
    if (reader.files.empty()) return {ExitCode::kFile, "--each " + reader.written + ": no file matches"};
  }
  const PairRule rule = options_.pair_ == "stem" ? PairRule::kStem : PairRule::kOrder;
  const Status paired = PairFiles(found, rule, sets_, notes);
  if (paired.IsError()) return {ExitCode::kUsage, paired.GetMessage()};
  if (sets_.empty()) return {ExitCode::kFile, "no two files of the readers have one stem, so nothing is paired"};
  return {};
}

Refusal Batch::Prepare(GraphDocument& document, std::vector<std::string>& notes, std::size_t index) {
  Refusal refusal = task_.MakeDocument(document, notes);
  if (refusal.IsRefused()) return refusal;
  for (std::size_t i = 0; i < readers_.size(); ++i) {
    const Status status = document.SetInput(readers_[i].id, sets_[index][i].file);
    if (status.IsError()) return {ExitCode::kUsage, "--each " + readers_[i].written + ": " + status.GetMessage()};
  }
  return {};
}

Refusal Batch::Finish(GraphDocument& document, std::size_t index) const {
  Status status = document.RenameOutputs([&](const std::filesystem::path& output) { return GetTarget(index, output); });
  if (!status.IsError()) status = task_.CheckFiles(document);
  if (status.IsError()) return {ExitCode::kUsage, status.GetMessage()};
  ScEng::Findings findings;
  CheckComplete(document, task_.GetName(), findings);
  return findings.errors.empty() ? Refusal{} : RefuseDocument(findings);
}

Refusal Batch::Probe(std::vector<std::string>& notes) {
  if (sets_.empty()) sets_.push_back(FileSet(readers_.size(), GlobFile{"none", ""}));
  GraphDocument document(catalog_);
  Refusal refusal = Prepare(document, notes, 0);
  if (refusal.IsRefused()) return refusal;
  outputs_ = document.GetOutputFiles();
  if (!task_.GetDocumentFile().empty()) shared_inputs_.push_back(task_.GetDocumentFile());
  for (const auto& [id, file] : document.GetInputFiles()) {
    const bool is_given = std::any_of(readers_.begin(), readers_.end(),
                                      [&id = id](const BatchReader& reader) { return reader.id == id; });
    if (!is_given) shared_inputs_.push_back(file);
  }
  if (options_.skips_existing_) FindFedReaders(document, notes);
  refusal = FindClash();
  if (!refusal.IsRefused()) refusal = Finish(document, 0);
  if (!refusal.IsRefused()) Advise(document, notes);
  return refusal;
}

std::filesystem::path Batch::GetTarget(std::size_t index, const std::filesystem::path& output) const {
  const GlobFile& first = sets_[index].front();
  return ScEng::MakePath(options_.output_dir_) / name_.Make({first.file, first.folder, index + 1}, output);
}

Refusal Batch::FindClash() const {
  std::map<std::filesystem::path, Writer> writers;
  for (std::size_t i = 0; i < sets_.size(); ++i) {
    for (const std::filesystem::path& output : outputs_) {
      const std::filesystem::path target = GetTarget(i, output);
      const std::filesystem::path below = target.lexically_relative(ScEng::MakePath(options_.output_dir_));
      if (!target.has_filename() || below.empty() || *below.begin() == "..") {
        return {ExitCode::kUsage,
                "--name " + options_.name_ + ": for " + Quote(sets_[i].front().file) + " it leads out of the folder"};
      }
      if (!IsWritten(target)) {
        return {ExitCode::kUsage, Quote(target.filename()) + ": no image format that can be written has this ending" +
                                      "; --name gets it from {ending}, or ends with .exr, .tif, .png and the like"};
      }
      const auto [other, is_new] = writers.emplace(target.lexically_normal(), Writer{i, output});
      if (is_new) continue;
      if (other->second.set != i) {
        return {ExitCode::kUsage, Quote(sets_[other->second.set].front().file) + " and " +
                                      Quote(sets_[i].front().file) + " would both write " + Quote(target) +
                                      "; --name with {folder} or {index} keeps them apart"};
      }
      // One path twice is the document's own fault, and told as such.
      if (other->second.output != output) {
        return {ExitCode::kUsage, "the outputs " + Quote(other->second.output) + " and " + Quote(output) +
                                      " would both be " + Quote(target) +
                                      "; --name with {output}{ending} keeps them apart"};
      }
    }
  }
  return FindReplacedInput(writers);
}

Refusal Batch::FindReplacedInput(const std::map<std::filesystem::path, Writer>& writers) const {
  struct Input {
    std::filesystem::path file;
    /// The runs that read it.
    std::set<std::size_t> sets;
    bool is_shared = false;
  };
  std::map<Identity, Input> inputs;
  for (const std::filesystem::path& file : shared_inputs_) {
    inputs.try_emplace(FindIdentity(file), Input{file, {}, false}).first->second.is_shared = true;
  }
  for (std::size_t i = 0; i < sets_.size(); ++i) {
    for (const GlobFile& file : sets_[i]) {
      inputs.try_emplace(FindIdentity(file.file), Input{file.file, {}, false}).first->second.sets.insert(i);
    }
  }
  for (const auto& [target, writer] : writers) {
    const Identity identity = FindIdentity(target);
    const auto input = identity ? inputs.find(identity) : inputs.end();
    if (input == inputs.end()) continue;
    const std::set<std::size_t>& sets = input->second.sets;
    const bool is_own = !input->second.is_shared && sets.size() == 1 && *sets.begin() == writer.set;
    if (is_own || (input->second.is_shared && sets_.size() == 1)) continue;
    return {ExitCode::kUsage, "the result of " + Quote(sets_[writer.set].front().file) + " would replace " +
                                  Quote(input->second.file) +
                                  ", which another run reads; choose another --output-dir or --name"};
  }
  return {};
}

void Batch::FindFedReaders(GraphDocument& document, std::vector<std::string>& notes) {
  for (const std::string& id : document.GetIds()) {
    const Node* node = document.FindNode(id);
    for (std::size_t i = 0; node != nullptr && node->IsEnabled() && i < node->GetNumAttributes(); ++i) {
      const Attribute& attribute = *node->GetAttribute(i);
      const bool is_path = attribute.GetKind() == Attribute::Kind::kString &&
                           attribute.GetStringUse() == Attribute::StringUse::kReadPath;
      if (!is_path || !document.GetEngine().IsConnected(node, attribute.GetName())) continue;
      has_fed_readers_ = true;
      notes.push_back("--skip-existing leaves out nothing, because a connection feeds the path of \"" + id +
                      "\": which file it reads is known only when it is run");
      return;
    }
  }
}

bool Batch::IsUpToDate(std::size_t index) const {
  using Time = std::filesystem::file_time_type;
  std::error_code error;
  Time newest = Time::min();
  const auto add = [&](const std::filesystem::path& file) {
    const Time time = std::filesystem::last_write_time(file, error);
    // What cannot be looked at is for the run to complain of.
    newest = error ? Time::max() : std::max(newest, time);
  };
  for (const std::filesystem::path& file : shared_inputs_) add(file);
  for (const GlobFile& file : sets_[index]) add(file.file);
  for (const std::filesystem::path& output : outputs_) {
    const std::filesystem::path target = GetTarget(index, output);
    if (!std::filesystem::is_regular_file(target, error)) return false;
    const Time time = std::filesystem::last_write_time(target, error);
    if (error || time < newest) return false;
  }
  return !outputs_.empty() && !has_fed_readers_;
}

ExitCode Batch::RunSets() {
  reporter_.TakeOutput();
  std::vector<std::filesystem::path> targets;
  for (const std::filesystem::path& output : outputs_) targets.push_back(GetTarget(0, output));
  ScEng::LoadFormatsToWrite(targets);
  BatchJobs::Work work;
  work.count = sets_.size();
  work.name = task_.GetName();
  for (const BatchReader& reader : readers_) work.readers.push_back(reader.id);
  work.get_files = [this](std::size_t index) -> const FileSet& { return sets_[index]; };
  work.prepare = [this](GraphDocument& document, std::vector<std::string>& notes, std::size_t index) {
    Refusal refusal = Prepare(document, notes, index);
    for (const std::filesystem::path& output : outputs_) {
      if (!refusal.IsRefused()) refusal = MakeFolder(GetTarget(index, output).parent_path());
    }
    return refusal.IsRefused() ? refusal : Finish(document, index);
  };
  work.run = [this](GraphDocument& document, std::size_t index, const Engine::Options& options) {
    return task_.RunOne(document, sets_[index].front().file.string(), options);
  };
  work.finish = [this](nlohmann::ordered_json& sum, ExitCode code) { return task_.FinishBatch(sum, code); };
  work.is_up_to_date = [this](std::size_t index) { return options_.skips_existing_ && IsUpToDate(index); };
  return BatchJobs(std::move(work), catalog_, reporter_).Run(options_.jobs_, threads_);
}
