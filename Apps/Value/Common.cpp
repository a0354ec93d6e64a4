// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/Common.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <system_error>

#include "Apps/Value/ExitGuard.h"
#include "Apps/Value/Interrupt.h"
#include "Apps/Value/NodeNames.h"
#include "Apps/Value/Profile.h"
#include "Apps/Value/StandardOutput.h"
#include "Host/Files/DecodeOptions.h"
#include "Host/Files/FileWatch.h"
#include "Host/Files/ImageFormats.h"
#include "Host/Gpu/GpuEngine.h"
#include "Host/Nodes/HostNodes.h"
#include "Host/Tools/Guard.h"
#include "Host/Util/ParallelRows.h"

using ScEng::Status;

void CommonOptions::Declare(CLI::App& app) {
  const std::string group = "Options of every command";
  AddRepeatable(app, "--plugin", plugins.files, "FILE",
                "A node library to load besides the program's own and those in the folders of VALUE_PLUGIN_PATH;\n"
                "may be given again")
      ->group(group);
  app.add_flag("--no-default-plugins", plugins.no_defaults, "Load no node libraries but those that --plugin names")
      ->group(group);
  app.add_flag("--trust-plugins", plugins.trusts,
               "Load node libraries without examining them in a process of their own first")
      ->group(group);
  app.add_option("--threads", threads, "Threads that image operations may use (default: one per core)")
      ->check(CLI::Range(1, 1024))
      ->type_name("N")
      ->group(group);
  app.add_flag("--in-process", decodes_in_process,
               "Decode image files in this program, without the limits of a process of their own: for trusted files")
      ->group(group);
  app.add_option("--max-size", max_size, "Largest width and height of an image (default: 32768)")
      ->check(CLI::Range(1, 1 << 30))
      ->type_name("N")
      ->group(group);
  app.add_option("--device", device,
                 "The OpenCL device to compute on: its place in \"value doctor\", a word of its name, gpu or cpu\n"
                 "(default: VALUE_DEVICE, else the first GPU, else the first processor)")
      ->type_name("DEVICE")
      ->group(group);
  app.add_flag("--any-device", any_device, "Where that device fails, try once on another one, with a warning")
      ->group(group);
  app.add_flag("--quiet", quiet, "No notes, no progress, no summary")->group(group);
  app.add_flag("--json", json, "Answer as JSON on standard output")->group(group);
}

Status CommonOptions::Apply(Reporter& reporter) const {
  reporter.SetJson(json);
  reporter.SetQuiet(quiet);
  if (threads) ScEng::SetNumThreads(*threads);
  if (decodes_in_process) ScEng::SetDecodePlace(ScEng::DecodePlace::kInProcess);
  if (max_size) Image::SetMaxSize(*max_size, *max_size);
  if (any_device) GpuEngine::Get()->SetTriesOtherDevice(true);
  return device.empty() ? Status() : GpuEngine::Get()->SelectDevice(device);
}

ExitCode Command::Execute() {
  try {
    return Run();
  } catch (...) {
    return Fail(ExitCode::kNodeError, "an unexpected error: " + ScEng::DescribeHandledException());
  }
}

std::shared_ptr<const ScEng::NodeCatalog> Command::LoadCatalog(PluginSearch& search, Status& status) {
  const auto catalog = ScEng::CreateHostCatalog();
  catalogs_.push_back(catalog);
  status = search.LoadInto(*catalog);
  ExitGuard::Renew();
  return status.IsError() ? nullptr : catalog;
}

std::shared_ptr<const ScEng::NodeCatalog> Command::LoadCatalog() {
  PluginSearch search(common_.plugins);
  Status status;
  auto catalog = LoadCatalog(search, status);
  reporter_.Notes(search.GetNotes());
  if (!catalog) Fail(ExitCode::kPlugin, status.GetMessage());
  return catalog;
}

ExitCode Command::Fail(ExitCode code, const std::string& text, nlohmann::ordered_json answer) {
  reporter_.Error(text);
  reporter_.Finish(std::move(answer));
  return code;
}

const NodeInterface* Command::FindNode(const ScEng::NodeCatalog& catalog, const std::string& name) {
  if (name.empty()) {
    Fail(ExitCode::kUsage, "NODE is missing; \"value nodes\" lists them");
    return nullptr;
  }
  const NodeInterface* descriptor = catalog.FindWritten(name);
  if (descriptor == nullptr) Fail(ExitCode::kUsage, DescribeUnknownNode(catalog, name));
  return descriptor;
}

ExitCode Command::ReportRun(const ScEng::RunReport& report) {
  for (const std::string& note : report.findings.notes) reporter_.Note(note);
  for (const std::string& error : report.findings.errors) reporter_.Error(error);
  return GetExitCode(report.failure);
}

ExitCode Command::RunToEnd(ScEng::GraphDocument& document, const std::string& name, nlohmann::ordered_json answer,
                           Profile& profile, const StandardOutput& standard_output) {
  if (standard_output.IsUsed() && profile.Prints()) {
    return Fail(ExitCode::kUsage, "standard output takes the image or the table of --profile, not both");
  }
  reporter_.TakeOutput();
  const auto start = std::chrono::steady_clock::now();
  const std::size_t total = document.GetOutputFiles().size();
  std::atomic<std::size_t> written{0};
  std::atomic<bool> is_delivered{false};
  const ScEng::FileWatch watch([&](const ScEng::FileWatch::Event& event) {
    if (event.work == ScEng::FileWork::kSave) ++written;
  });
  const auto tell_interruption = [&] {
    const std::size_t on_its_way = standard_output.IsUsed() && !is_delivered ? 1 : 0;
    const std::size_t done = std::min<std::size_t>(written, total) - std::min<std::size_t>(written, on_its_way);
    reporter_.Error(std::to_string(done) + " of " + std::to_string(total) + " done, " + std::to_string(total - done) +
                    " left out");
  };
  Interrupt::Work interruptible([&, answer] {
    standard_output.RemoveFolder();
    tell_interruption();
    reporter_.Finish(answer);
  });
  Engine::Options options;
  options.cancellation = &interruptible.GetCancellation();
  reporter_.Progress("", 0, 0, ProgressUnit::kNodes);
  ScEng::RunReport report = profile.Run(
      document, name,
      [&](const std::string& id, std::size_t done, std::size_t count) {
        reporter_.Progress(id, done, count, ProgressUnit::kNodes);
      },
      options);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  for (std::string& note : report.findings.notes) note = standard_output.NameIn(note);
  for (std::string& error : report.findings.errors) error = standard_output.NameIn(error);
  ExitCode code = ReportRun(report);
  for (const ScEng::WrittenFile& file : report.written) {
    reporter_.Info(standard_output.NameIn(DescribeWritten(file, seconds)));
  }
  if (Interrupt::GetSignal() == 0) {
    const ScEng::Status delivered = standard_output.Deliver(reporter_);
    is_delivered = !delivered.IsError();
    if (delivered.IsError()) {
      reporter_.Error(delivered.GetMessage());
      code = std::max(code, ExitCode::kFile);
    }
  }
  answer["outputs"] = nlohmann::ordered_json::array();
  for (const ScEng::OutputReport& output : report.outputs) answer["outputs"].push_back(ToJson(output));
  code = profile.Finish(reporter_, answer, code);
  if (const int signal = Interrupt::GetSignal(); signal != 0) {
    code = static_cast<ExitCode>(128 + signal);
    tell_interruption();
  }
  reporter_.Finish(answer);
  return code;
}

void CheckComplete(const ScEng::GraphDocument& document, const std::string& file, ScEng::Findings& findings) {
  const std::size_t known = findings.errors.size();
  document.CheckComplete(findings);
  const std::vector<std::filesystem::path> files = document.GetOutputNames();
  const bool has_unknown = std::any_of(files.begin(), files.end(), [](const std::filesystem::path& written) {
    return !ScEng::FindEndingProblem(written).empty();
  });
  // What a run would meet on its own is counted, too, where it is refused anyway.
  if (!findings.errors.empty() || has_unknown) document.CheckOutputs(findings);
  for (std::size_t i = known; i < findings.errors.size(); ++i) {
    findings.errors[i] = ScEng::MakeLine(file + ": " + findings.errors[i]);
  }
}

void Advise(const ScEng::GraphDocument& document, std::vector<std::string>& notes) {
  ScEng::Findings advice;
  document.Advise(advice, ScEng::AdviceScope::kWithoutSiblings);
  notes.insert(notes.end(), advice.notes.begin(), advice.notes.end());
}

CLI::Option* AddRepeatable(CLI::App& app, const std::string& name, std::vector<std::string>& values,
                           const std::string& type_name, const std::string& help) {
  return app.add_option(name, values, help)
      ->type_name(type_name)
      ->allow_extra_args(false)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

std::filesystem::path GetProgramFile() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error);
}

std::string Pad(std::string text, std::size_t width) {
  text.resize(std::max(text.size() + 2, width), ' ');
  return text;
}

std::string JoinWords(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

std::optional<std::pair<std::string, std::string>> SplitAssignment(const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos || equals == 0) return std::nullopt;
  return std::pair(text.substr(0, equals), text.substr(equals + 1));
}

ExitCode GetExitCode(ScEng::RunFailure failure) {
  switch (failure) {
    case ScEng::RunFailure::kFile: return ExitCode::kFile;
    case ScEng::RunFailure::kNode: return ExitCode::kNodeError;
    case ScEng::RunFailure::kNone: break;
  }
  return ExitCode::kDone;
}

std::string DescribeWritten(const ScEng::WrittenFile& written, double seconds) {
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::current_path(error);
  const std::filesystem::path file = error ? written.file : written.file.lexically_proximate(folder);
  return file.string() + "  " + std::to_string(written.header.size_x) + " x " + std::to_string(written.header.size_y) +
         "  " + ScEng::GetName(written.type) + "  " + FormatSeconds(seconds);
}

std::string FormatSeconds(double seconds) {
  char text[32];
  std::snprintf(text, sizeof(text), "%.2f s", seconds);
  return text;
}

nlohmann::ordered_json ToJson(const ScEng::OutputReport& output) {
  nlohmann::ordered_json json;
  json["from"] = output.source;
  json["path"] = output.file.string();
  json["written"] = output.written;
  if (!output.written) return json;
  json["width"] = output.header.size_x;
  json["height"] = output.header.size_y;
  json["mode"] = ColorMode::GetName(output.header.color_mode);
  json["range"] = {ToJson(static_cast<double>(output.header.value_low)),
                   ToJson(static_cast<double>(output.header.value_high))};
  return json;
}

nlohmann::ordered_json ToJson(double number) {
  return std::isfinite(number) ? nlohmann::ordered_json(number) : nlohmann::ordered_json(nullptr);
}

nlohmann::ordered_json ToJson(const PlugValue& value) {
  switch (value.GetType()) {
    case PlugType::kFlag: return value.GetFlag();
    case PlugType::kNumber: return ToJson(value.GetNumber());
    case PlugType::kText: return value.GetText();
    case PlugType::kPoint: return {value.GetPoint().x, value.GetPoint().y};
    case PlugType::kFrame: {
      const ScEng::Frame frame = value.GetFrame();
      return {frame.x, frame.y, frame.width, frame.height};
    }
    case PlugType::kColor: {
      const ScEng::Rgbo color = value.GetColor();
      return {color.red, color.green, color.blue, color.opacity};
    }
    default: return nullptr;
  }
}

std::string FormatFloat(float number) {
  char text[32];
  return std::string(text, std::to_chars(text, text + sizeof(text), number).ptr);
}
