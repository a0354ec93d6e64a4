// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>
#include <filesystem>

#include "Apps/Editor/Editor.h"
#include "Apps/Value/Common.h"
#include "Apps/Value/WindowFlags.h"
#include "Host/Files/ImageFile.h"
#include "Host/Util/HostModule.h"

namespace {

/// "1280x800" as two numbers; nothing for anything else.
std::optional<std::pair<int, int>> ParseSize(const std::string& text) {
  const std::size_t by = text.find('x');
  if (by == std::string::npos) return std::nullopt;
  int width = 0;
  int height = 0;
  if (!CLI::detail::lexical_cast(text.substr(0, by), width)) return std::nullopt;
  if (!CLI::detail::lexical_cast(text.substr(by + 1), height)) return std::nullopt;
  constexpr int kLeast = 320;
  constexpr int kMost = 8192;
  if (width < kLeast || width > kMost || height < kLeast || height > kMost) return std::nullopt;
  return std::pair(width, height);
}

class EditCommand : public Command {
 public:
  using Command::Command;

  CLI::App* Declare(CLI::App& app) override {
    CLI::App* sub = app.add_subcommand("edit", "Opens the editor: a document as a graph, with its images at once");
    sub->add_option("GRAPH", graph_, "The document to open; without it the editor starts with an example");
    window_.Declare(*sub, 3);
    sub->add_option("--size", size_, "Size of the window that --screenshot draws, 320x320 to 8192x8192")
        ->type_name("SIZE");
    sub->add_option("--shown", shown_, "The output that is shown, \"node.plug\"")->type_name("NODE.PLUG");
    AddRepeatable(*sub, "--dock", docks_, "NAME",
                  "A dock that is open: viewer, terrain, panel, help, outputs, problems, profiler, history or missing");
    sub->footer(
        "Examples:\n"
        "  value edit\n"
        "  value edit masks.json --shown masks.image\n"
        "  value edit masks.json --screenshot masks.png --size 1600x1000 --dock viewer --dock problems");
    return sub;
  }

  ExitCode Run() override {
    EditorRequest request;
    if (const std::string problem = window_.FindProblem(); !problem.empty()) return Fail(ExitCode::kUsage, problem);
    if (size_) {
      const auto size = ParseSize(*size_);
      if (!size) {
        return Fail(ExitCode::kUsage,
                    "--size is width and height in pixels from 320 to 8192, as in 1280x800; \"" + *size_ + "\" is not");
      }
      if (window_.GetScreenshot().empty()) {
        return Fail(ExitCode::kUsage, "--size belongs to --screenshot FILE, which is not given");
      }
      std::tie(request.width, request.height) = *size;
    }
    const std::string missing = window_.FindMissingDisplay();
    if (!missing.empty()) return Fail(ExitCode::kNodeError, missing);
    request.catalog = LoadCatalog();
    if (!request.catalog) return ExitCode::kPlugin;
    if (graph_) {
      request.document = ScEng::MakePath(*graph_);
      std::error_code error;
      if (!std::filesystem::is_regular_file(request.document, error)) {
        const bool is_folder = std::filesystem::is_directory(request.document, error);
        return Fail(ExitCode::kFile, "cannot open " + request.document.string() +
                                         (is_folder ? ": it is a folder" : ": there is no such file"));
      }
    }
    request.theme = window_.GetTheme();
    request.scale = window_.GetScale();
    request.screenshot = window_.GetScreenshot();
    request.shown = shown_;
    request.docks = docks_;
    request.on_fatal = [this](const std::string& text) {
      Fail(ExitCode::kNodeError, text);
      // Qt would abort the process next.
      std::_Exit(static_cast<int>(ExitCode::kNodeError));
    };

    ScEng::HostModule module("ValueEditor", "the module of the editor");
    const auto show = module.Load<decltype(&ValueShowEditor)>("ValueShowEditor");
    if (show == nullptr) return Fail(ExitCode::kPlugin, module.GetProblem());
    EditorAnswer answer;
    show(request, answer);
    return Finish(request, answer);
  }

 private:
  ExitCode Finish(const EditorRequest& request, const EditorAnswer& answer) {
    if (!answer.problems.empty()) {
      for (const std::string& problem : answer.problems) reporter_.Error(problem);
      reporter_.Finish(nlohmann::ordered_json::object());
      return answer.is_usage ? ExitCode::kUsage : ExitCode::kInvalidDocument;
    }
    ExitCode code = ExitCode::kDone;
    if (answer.status.IsError()) {
      reporter_.Error(answer.status.GetMessage());
      code = ExitCode::kFile;
    }
    nlohmann::ordered_json told = nlohmann::ordered_json::object();
    if (!request.screenshot.empty()) {
      told["screenshot"]["path"] = request.screenshot;
      told["screenshot"]["written"] = !answer.status.IsError();
      told["screenshot"]["width"] = answer.width;
      told["screenshot"]["height"] = answer.height;
    }
    reporter_.Finish(told);
    return code;
  }

  std::optional<std::string> graph_;
  WindowFlags window_;
  std::optional<std::string> size_;
  std::string shown_;
  std::vector<std::string> docks_;
};

}  // namespace

std::unique_ptr<Command> MakeEditCommand(const CommonOptions& common, Reporter& reporter) {
  return std::make_unique<EditCommand>(common, reporter);
}
