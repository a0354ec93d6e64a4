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
#include "Host/Util/ParallelRows.h"

namespace {

using nlohmann::ordered_json;

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

/// What a node library brings: how many types, and which of their icons are not there.
struct LibraryFindings {
  std::size_t types = 0;
  std::size_t icons = 0;
  std::vector<std::string> missing_icons;
};

LibraryFindings Inspect(const ScEng::NodeLibrary& library) {
  LibraryFindings findings;
  for (const auto& descriptor : library.GetDescriptors()) {
    ++findings.types;
    for (const std::string& path : {descriptor->GetIconPath(), descriptor->GetSmallIconPath()}) {
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

class DoctorCommand : public Command {
 public:
  using Command::Command;

  CLI::App* Declare(CLI::App& app) override {
    CLI::App* sub = app.add_subcommand("doctor", "Shows what the program runs on, and what is wrong with it");
    sub->footer(
        "Examples:\n"
        "  value doctor\n"
        "  value doctor --device cpu --json\n"
        "It ends with 0 when all is well, 1 when something that a function needs is missing, and 5 when the node\n"
        "library cannot be loaded. Each thing that is wrong is a line with its remedy.");
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
      const char* decoder = !codec.decoder_problem.empty() ? "missing"
                            : codec.is_confined            ? "confined"
                                                           : "not confined";
      json["decoder"] = decoder;
      ShowLine(codec.name, names + (codec.problem.empty() ? "" : " (missing)"));
      ShowLine("", std::string("decoded in a process of its own, ") + decoder);
      answer_["image_formats"].push_back(json);
      if (codec.problem.empty() && !codec.decoder_problem.empty()) {
        problems_.push_back(names + " can only be read with --in-process: " + codec.decoder_problem);
      }
      if (codec.problem.empty()) continue;
      problems_.push_back(names + " can neither be read nor written: " + codec.problem +
                          "; put it beside the host's libraries, or install the program anew");
    }
  }

  /// False when a library cannot be loaded.
  bool ShowLibraries() {
    text_ << "Node libraries\n";
    answer_["libraries"] = ordered_json::array();
    ScEng::Status status;
    const auto catalog = FindCatalog(status);
    if (!catalog) {
      problems_.push_back(status.GetMessage() + "; give the file with --plugin, or install the program anew");
      text_ << "  none\n";
      return false;
    }
    for (const auto& library : catalog->GetLibraries()) {
      const LibraryFindings findings = Inspect(*library);
      text_ << "  " << library->GetFile().string() << ": " << findings.types << " node types, " << findings.icons
            << " icons\n";
      ordered_json json;
      json["name"] = library->GetName();
      json["file"] = library->GetFile().string();
      json["node_types"] = findings.types;
      json["icons"] = findings.icons;
      json["missing_icons"] = findings.missing_icons;
      answer_["libraries"].push_back(json);
      if (!findings.missing_icons.empty()) {
        problems_.push_back("node library \"" + library->GetFile().string() + "\" lacks " +
                            std::to_string(findings.missing_icons.size()) + " icons, the first being " +
                            findings.missing_icons.front() + "; build it with its resources");
      }
    }
    return true;
  }

  std::ostringstream text_;
  ordered_json answer_;
  std::vector<std::string> problems_;
};

}  // namespace

std::unique_ptr<Command> MakeDoctorCommand(const CommonOptions& common, Reporter& reporter) {
  return std::make_unique<DoctorCommand>(common, reporter);
}
