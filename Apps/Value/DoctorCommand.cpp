// SPDX-License-Identifier: Apache-2.0
#include <dlfcn.h>
#include <hwy/highway.h>
#include <hwy/targets.h>
#include <tbb/version.h>

#include <QFile>
#include <QString>
#include <QtGlobal>
#include <algorithm>
#include <sstream>
#include <system_error>

#include "Apps/Value/Common.h"
#include "Host/Files/ImageFile.h"
#include "Host/Gpu/GpuEngine.h"
#include "Host/Tools/LibraryInterface.h"
#include "Host/Tools/NodeInterface.h"
#include "Host/Tools/TypeGuard.h"
#include "Host/Util/ParallelRows.h"

namespace {

using nlohmann::ordered_json;

/// Where files are decoded, in the answer, that go without a process of their own.
constexpr const char* kInProcess = "in process";

/// Instruction sets by their names, the best first.
std::vector<std::string> NamesOf(const std::vector<std::int64_t>& targets) {
  std::vector<std::string> names;
  names.reserve(targets.size());
  for (const std::int64_t target : targets) names.emplace_back(hwy::TargetName(target));
  return names;
}

std::string Join(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
  return text.empty() ? "none" : text;
}

/// "1 icon", "2 icons".
std::string Count(std::size_t number, const std::string& one, const std::string& more) {
  return std::to_string(number) + " " + (number == 1 ? one : more);
}

/// What a node library brings: how many types, and which of their icons are not there.
struct LibraryFindings {
  std::size_t types = 0;
  std::size_t icons = 0;
  std::vector<std::string> missing_icons;
  /// Errors of types that cannot be asked for their icons.
  std::vector<std::string> problems;
};

LibraryFindings Inspect(const ScEng::NodeLibrary& library) {
  LibraryFindings findings;
  for (const auto& descriptor : library.GetDescriptors()) {
    ++findings.types;
    std::vector<std::string> paths;
    const ScEng::Status asked = ScEng::CallTypeGuarded(*descriptor, "its icon path", [&] {
      paths = {descriptor->GetIconPath(), descriptor->GetSmallIconPath()};
    });
    if (asked.IsError()) findings.problems.push_back(asked.GetMessage());
    for (const std::string& path : paths) {
      if (path.empty()) continue;
      if (QFile::exists(QString::fromStdString(path))) {
        ++findings.icons;
      } else {
        findings.missing_icons.push_back(path);
      }
    }
  }
  return findings;
}

const char* NameSource(FoundPlugin::Source source) {
  switch (source) {
    case FoundPlugin::Source::kOwn: return "program";
    case FoundPlugin::Source::kFolder: return "VALUE_PLUGIN_PATH";
    case FoundPlugin::Source::kOption: break;
  }
  return "--plugin";
}

std::string DescribeSource(FoundPlugin::Source source) {
  return source == FoundPlugin::Source::kOwn ? "beside the program" : NameSource(source);
}

const char* NameExamination(FoundPlugin::Examination examination) {
  switch (examination) {
    case FoundPlugin::Examination::kOwn: return "own";
    case FoundPlugin::Examination::kTrusted: return "trusted";
    case FoundPlugin::Examination::kPassed: return "passed";
    case FoundPlugin::Examination::kRemembered: return "remembered";
    case FoundPlugin::Examination::kFailed: return "failed";
    case FoundPlugin::Examination::kNone: break;
  }
  return "none";
}

std::string DescribeExamination(FoundPlugin::Examination examination) {
  switch (examination) {
    case FoundPlugin::Examination::kOwn: return "the program's own, not examined";
    case FoundPlugin::Examination::kTrusted: return "trusted, not examined";
    case FoundPlugin::Examination::kPassed: return "examined now";
    case FoundPlugin::Examination::kRemembered: return "examined in an earlier run";
    case FoundPlugin::Examination::kFailed: return "did not pass its examination";
    case FoundPlugin::Examination::kNone: break;
  }
  return "not examined";
}

/// What is wrong with a library that is left out, and what helps.
std::string DescribeLeftOut(const FoundPlugin& plugin) {
  // The problem says which two offer the same type, and to leave one of them out.
  if (plugin.is_clash) return plugin.problem;
  switch (plugin.source) {
    case FoundPlugin::Source::kOwn: return plugin.problem + "; install the program anew";
    case FoundPlugin::Source::kFolder:
      return plugin.problem +
             "; it is left out: take it out of the folder, or mend what \"value validate FILE\" shows of it";
    case FoundPlugin::Source::kOption: break;
  }
  return plugin.problem + "; give another file with --plugin";
}

/// The same of a folder that cannot be searched.
std::string DescribeFolder(const PluginFolder& folder) {
  std::error_code error;
  const bool is_there = std::filesystem::exists(folder.folder, error);
  return "VALUE_PLUGIN_PATH: " + folder.problem + "; " + (is_there ? "name one that can be read" : "create it") +
         ", or take it out of the variable";
}

class DoctorCommand : public Command {
 public:
  using Command::Command;

  CLI::App* Declare(CLI::App& app) override {
    CLI::App* sub = app.add_subcommand("doctor", "Shows what the program runs on, and what is wrong with it");
    sub->footer(
        "Examples:\n"
        "  value doctor\n"
        "  value doctor --device cpu --json\n"
        "It ends with 0 when all is well, 1 when something is wrong, and 5 when a node library cannot be loaded that\n"
        "has to be. Each thing that is wrong is a line with its remedy.");
    return sub;
  }

  ExitCode Run() override {
    ShowVersions();
    ShowProcessor();
    ShowDevices();
    ShowFormats();
    const bool has_plugin = ShowLibraries();

    answer_["problems"] = problems_;
    if (problems_.empty()) text_ << "\nAll is well.\n";
    reporter_.Print(text_.str());
    for (const std::string& problem : problems_) reporter_.Error(problem);
    reporter_.Finish(answer_);
    if (!has_plugin) return ExitCode::kPlugin;
    return problems_.empty() ? ExitCode::kDone : ExitCode::kNodeError;
  }

 private:
  void ShowLine(const std::string& name, const std::string& value) { text_ << "  " << Pad(name, 18) << value << "\n"; }

  void ShowVersion(const char* name, const std::string& version) {
    ShowLine(name, version);
    answer_["versions"][name] = version;
  }

  void ShowVersions() {
    text_ << "Versions\n";
    ShowVersion("value", VALUE_VERSION);
    ShowVersion("Qt", qVersion());
    // The library itself is loaded with the first image file only; this is the version that its module was built with.
    ShowVersion("OpenImageIO", VALUE_OPENIMAGEIO_VERSION);
    ShowVersion("Highway",
                std::to_string(HWY_MAJOR) + "." + std::to_string(HWY_MINOR) + "." + std::to_string(HWY_PATCH));
    ShowVersion("oneTBB", TBB_runtime_version());
  }

  void ShowProcessor() {
    text_ << "Processor\n";
    const std::vector<std::string> sets = NamesOf(hwy::SupportedAndGeneratedTargets());
    ShowLine("instruction set", sets.empty() ? "none" : sets.front());
    ShowLine("available", Join(sets));
    ShowLine("threads", std::to_string(ScEng::GetNumThreads()));
    answer_["processor"]["instruction_set"] = sets.empty() ? "none" : sets.front();
    answer_["processor"]["available"] = sets;
    answer_["processor"]["threads"] = ScEng::GetNumThreads();
  }

  void ShowDevices() {
    text_ << "OpenCL devices\n";
    ScEng::Status status;
    const std::vector<GpuDevice> devices = GpuEngine::Get()->GetDevices(status);
    answer_["devices"] = ordered_json::array();
    for (std::size_t i = 0; i < devices.size(); ++i) {
      const GpuDevice& device = devices[i];
      text_ << (device.is_chosen ? "* " : "  ") << i << " " << device.name << " (" << device.type << ", "
            << device.platform << ", driver " << device.driver << ", " << device.version << ")";
      if (!device.problem.empty()) text_ << ": cannot be used, " << device.problem;
      text_ << "\n";
      ordered_json json;
      json["name"] = device.name;
      json["type"] = device.type;
      json["platform"] = device.platform;
      json["driver"] = device.driver;
      json["version"] = device.version;
      json["compute_units"] = device.compute_units;
      json["memory_bytes"] = device.memory_bytes;
      json["chosen"] = device.is_chosen;
      if (!device.problem.empty()) json["problem"] = device.problem;
      answer_["devices"].push_back(json);
    }
    if (devices.empty()) text_ << "  none\n";
    if (status.IsError()) problems_.push_back("Ambient Occlusion cannot run: " + status.GetMessage());
  }

  void ShowFormats() {
    text_ << "Image formats\n";
    for (const ScEng::CodecReport& codec : ScEng::FindCodecs()) {
      ordered_json json;
      json["codec"] = codec.name;
      json["module"] = codec.file.string();
      json["found"] = codec.problem.empty();
      std::string names;
      for (const std::string& format : codec.formats) {
        names += (names.empty() ? "" : ", ") + format;
        json["formats"].push_back(format);
      }
      const char* decoder = common_.decodes_in_process       ? kInProcess
                            : !codec.decoder_problem.empty() ? "missing"
                            : codec.is_confined              ? "confined"
                                                             : "not confined";
      json["decoder"] = decoder;
      ShowLine(codec.name, names + (codec.problem.empty() ? "" : " (missing)"));
      ShowLine("", DescribeDecoding(decoder));
      answer_["image_formats"].push_back(json);
      if (codec.problem.empty() && !codec.decoder_problem.empty() && !common_.decodes_in_process) {
        problems_.push_back(names + " can only be read with --in-process: " + codec.decoder_problem);
      }
      if (codec.problem.empty()) continue;
      problems_.push_back(names + " can neither be read nor written: " + codec.problem +
                          "; put it beside the host's libraries, or install the program anew");
    }
  }

  /// Where the files of a codec are decoded, and how.
  [[nodiscard]] std::string DescribeDecoding(const char* decoder) const {
    if (common_.decodes_in_process) return "decoded in this program, without the limits of a process of its own";
    return std::string("decoded in a process of its own, ") + decoder;
  }

  /// False when a library cannot be loaded that has to be.
  bool ShowLibraries() {
    text_ << "Node libraries\n";
    PluginSearch search(common_.plugins);
    ScEng::Status status;
    const auto catalog = LoadCatalog(search, status);
    answer_["libraries"] = ordered_json::array();
    for (const FoundPlugin& plugin : search.GetPlugins()) ShowLibrary(plugin);
    if (search.GetPlugins().empty()) text_ << "  none\n";
    ShowPluginFolders(search);
    return catalog != nullptr;
  }

  void ShowLibrary(const FoundPlugin& plugin) {
    ordered_json json;
    if (plugin.library) json["name"] = plugin.library->GetName();
    json["file"] = (plugin.library ? plugin.library->GetFile() : plugin.file).string();
    json["from"] = NameSource(plugin.source);
    json["examination"] = NameExamination(plugin.examination);
    text_ << "  " << json["file"].get<std::string>() << ": ";
    if (plugin.library) {
      const LibraryFindings findings = Inspect(*plugin.library);
      text_ << Count(findings.types, "node type", "node types") << ", " << Count(findings.icons, "icon", "icons");
      json["node_types"] = findings.types;
      json["icons"] = findings.icons;
      json["missing_icons"] = findings.missing_icons;
      NoteMissingIcons(*plugin.library, findings);
      for (const std::string& problem : findings.problems) {
        problems_.push_back(problem + "; \"value validate\" shows what else is wrong with its library");
      }
    } else {
      text_ << "left out";
      json["problem"] = plugin.problem;
      problems_.push_back(DescribeLeftOut(plugin));
    }
    text_ << "\n";
    ShowLine("", std::string("from ") + DescribeSource(plugin.source) + ", " + DescribeExamination(plugin.examination));
    if (!plugin.library) ShowLine("", plugin.problem);
    answer_["libraries"].push_back(json);
  }

  void NoteMissingIcons(const ScEng::NodeLibrary& library, const LibraryFindings& findings) {
    if (findings.missing_icons.empty()) return;
    problems_.push_back("node library \"" + library.GetFile().string() + "\" lacks " +
                        std::to_string(findings.missing_icons.size()) + " icons, the first being " +
                        findings.missing_icons.front() + "; build it with its resources");
  }

  void ShowPluginFolders(const PluginSearch& search) {
    answer_["plugin_folders"] = ordered_json::array();
    text_ << "Folders of VALUE_PLUGIN_PATH\n";
    if (search.GetFolders().empty()) text_ << (common_.plugins.no_defaults ? "  left out\n" : "  none\n");
    for (const PluginFolder& folder : search.GetFolders()) {
      ordered_json json;
      json["folder"] = folder.folder.string();
      json["libraries"] = folder.num_libraries;
      if (!folder.problem.empty()) {
        json["problem"] = folder.problem;
        problems_.push_back(DescribeFolder(folder));
      }
      text_ << "  " << folder.folder.string() << ": "
            << (folder.problem.empty() ? Count(folder.num_libraries, "library", "libraries") : folder.problem) << "\n";
      answer_["plugin_folders"].push_back(json);
    }
  }

  std::ostringstream text_;
  ordered_json answer_;
  std::vector<std::string> problems_;
};

}  // namespace

std::unique_ptr<Command> MakeDoctorCommand(const CommonOptions& common, Reporter& reporter) {
  return std::make_unique<DoctorCommand>(common, reporter);
}
