// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/Completer.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

#include "Apps/Value/DeclaredOptions.h"
#include "Host/Files/ImageFile.h"
#include "Host/Gpu/GpuEngine.h"
#include "Host/Tools/Node.h"
#include "Host/Tools/TypeGuard.h"

namespace {

// Reading a larger document would take longer than a person waits.
constexpr std::uintmax_t kLargestDocument = 16U << 20U;

bool HasLongName(const CLI::Option& option, const char* name) {
  const std::vector<std::string>& names = option.get_lnames();
  return std::find(names.begin(), names.end(), name) != names.end();
}

/// The first line of a text.
std::string TakeLine(const std::string& text) { return text.substr(0, text.find('\n')); }

/// A path as the shell would have handed it over.
std::string ExpandHome(const std::string& path) {
  const char* home = std::getenv("HOME");
  return path.starts_with("~/") && home != nullptr ? home + path.substr(1) : path;
}

bool IsDocument(const std::string& file) {
  std::error_code error;
  return std::filesystem::is_regular_file(file, error) && std::filesystem::file_size(file, error) <= kLargestDocument &&
         !error;
}

}  // namespace

CommonOptions Completer::ReadLibraries(const TypedLine& line) {
  std::vector<std::string> words;
  for (const auto& [option, value] : line.options) {
    if (option->get_single_name().find("plugin") == std::string::npos) continue;
    words.push_back("--" + option->get_single_name());
    if (!IsFlag(*option)) words.push_back(ExpandHome(value));
  }
  // The parser takes them from the end.
  std::reverse(words.begin(), words.end());
  CommonOptions common;
  CLI::App app;
  common.Declare(app);
  app.parse(words);
  return common;
}

Candidates Completer::Find() {
  Candidates candidates;
  if (line_.option != nullptr) AddValue(candidates);
  const bool may_be_word = line_.option == nullptr || line_.takes_option;
  if (may_be_word && line_.takes_option && line_.word.starts_with('-')) {
    AddOptionNames(candidates);
  } else if (may_be_word) {
    if (line_.command->get_parent() == nullptr && line_.positionals.empty()) AddCommands(candidates);
    if (line_.option == nullptr) AddPositional(candidates);
  }
  candidates.Filter(line_.word);
  // Where nothing else is left to type, all that may follow are options.
  const bool is_empty = candidates.words.empty() && candidates.files == Candidates::Files::kNone;
  const bool has_arguments = line_.positional == nullptr || !line_.positionals.empty();
  const bool is_open = line_.option == nullptr && line_.takes_option && line_.word.empty();
  if (is_empty && has_arguments && is_open) AddOptionNames(candidates);
  return candidates;
}

void Completer::AddCommands(Candidates& candidates) const {
  for (const CLI::App* command : GetShownCommands(*line_.command)) {
    candidates.Add(command->get_name(), TakeLine(command->get_description()));
  }
}

void Completer::AddOptionNames(Candidates& candidates) const {
  for (const CLI::Option* option : GetShownOptions(*line_.command)) {
    if (line_.IsGiven(option) && !MayRepeat(*option)) continue;
    for (const std::string& name : GetNames(*option)) {
      // One of the two names is enough, unless the short one has begun.
      const bool is_short = name.size() == 2;
      if (is_short && !option->get_lnames().empty() && line_.word != name) continue;
      candidates.Add(name, TakeLine(option->get_description()));
    }
  }
}

void Completer::AddPositional(Candidates& candidates) {
  if (line_.positional == nullptr) return;
  const std::string& name = line_.positional->get_single_name();
  if (name == "GRAPH") {
    candidates.AddFiles({}, "json");
  } else if (name == "LIBRARY") {
    candidates.AddFiles({}, "so");
  } else if (name == "NODE" || name == "NAME" || name == "WORDS") {
    const ScEng::NodeCatalog* catalog = GetCatalog();
    if (catalog != nullptr) AddNodeNames(*catalog, line_.positionals, line_.word, candidates);
  } else if (name == "FILE") {
    candidates.AddFiles();
  }
}

void Completer::AddValue(Candidates& candidates) {
  const std::string name = GetValueName(*line_.option);
  const bool is_input = HasLongName(*line_.option, "input") || HasLongName(*line_.option, "each");
  if (const std::vector<std::string> words = GetWords(*line_.option); !words.empty()) {
    for (const std::string& word : words) candidates.Add(word);
  } else if (HasLongName(*line_.option, "plugin")) {
    candidates.AddFiles({}, "so");
  } else if (name == "DIR") {
    candidates.AddFolders();
  } else if (name == "DEVICE") {
    AddDevices(candidates);
  } else if (name == "EXT") {
    AddEndings(candidates);
  } else if (name == "NAME=VALUE") {
    if (const Node* node = GetNode()) AddSettings(*node, {}, line_.word, candidates);
  } else if (TakesNode() && (is_input || HasLongName(*line_.option, "output"))) {
    const Node* node = GetNode();
    if (node != nullptr) AddPlugFiles(*node, is_input, line_.word, candidates);
    if (node == nullptr) candidates.AddFiles();
  } else if (name == "FILE") {
    candidates.AddFiles();
  } else if (const ScEng::GraphDocument* document = name.starts_with("NODE") ? GetDocument() : nullptr) {
    if (name == "NODE.ATTRIBUTE=VALUE") AddDocumentSettings(*document, line_.word, candidates);
    if (name == "NODE.PLUG=FILE") AddDocumentOutputs(*document, line_.word, candidates);
    if (name == "NODE=FILE" || name == "NODE=GLOB") AddDocumentInputs(*document, line_.word, candidates);
  }
}

void Completer::AddDevices(Candidates& candidates) const {
  candidates.Add("gpu", "the first GPU");
  candidates.Add("cpu", "the first processor");
  ScEng::Status status;
  const std::vector<GpuDevice> devices = GpuEngine::Get()->GetDevices(status);
  for (std::size_t i = 0; i < devices.size(); ++i) candidates.Add(std::to_string(i), devices[i].name);
}

void Completer::AddEndings(Candidates& candidates) const {
  for (const ScEng::FormatReport& format : ScEng::ListFormats()) {
    if (!format.writes || format.endings.empty()) continue;
    candidates.Add(format.endings.front().substr(1), format.title);
  }
}

const ScEng::NodeCatalog* Completer::GetCatalog() {
  if (!catalog_) {
    PluginSearch search(common_.plugins);
    ScEng::Status status;
    catalog_ = LoadCatalog(search, status);
  }
  return catalog_.get();
}

const Node* Completer::GetNode() {
  const ScEng::NodeCatalog* catalog = GetCatalog();
  if (node_ || catalog == nullptr || !TakesNode()) return node_.Get();
  const NodeInterface* found = catalog->FindWritten(JoinWords(line_.positionals));
  // Behind "-i FILE..." the name of the node is one more value of that option.
  for (const auto& [option, value] : line_.options) {
    if (found == nullptr && line_.positionals.empty() && HasLongName(*option, "input")) {
      found = catalog->FindWritten(value);
    }
  }
  ScEng::Status unmade;
  if (found != nullptr) node_ = ScEng::CreateNode(*found, unmade);
  return node_.Get();
}

const ScEng::GraphDocument* Completer::GetDocument() {
  if (document_ || FindPositional("GRAPH") == nullptr || line_.positionals.empty()) return document_.get();
  const std::string file = ExpandHome(line_.positionals.front());
  if (!IsDocument(file) || GetCatalog() == nullptr) return nullptr;
  auto document = std::make_unique<ScEng::GraphDocument>(catalog_);
  ScEng::Findings findings;
  if (document->Load(ScEng::MakePath(file), findings, {ScEng::UnknownTypes::kKeep})) document_ = std::move(document);
  return document_.get();
}

bool Completer::TakesNode() const { return FindPositional("NODE") != nullptr; }

const CLI::Option* Completer::FindPositional(const char* name) const {
  for (const CLI::Option* positional : GetPositionals(*line_.command)) {
    if (positional->get_single_name() == name) return positional;
  }
  return nullptr;
}
