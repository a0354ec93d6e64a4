// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/Manual.h"

#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "Apps/Value/Common.h"
#include "Apps/Value/CompleteLine.h"
#include "Apps/Value/DeclaredOptions.h"
#include "Apps/Value/ManualPages.h"
#include "Host/Files/ImageFile.h"
#include "Host/Tools/Node.h"
#include "Host/Tools/NodeInterface.h"
#include "Host/Tools/NodeRecord.h"
#include "Host/Tools/TypeGuard.h"

namespace {

/// The day of the pages: that of the version, or of SOURCE_DATE_EPOCH where a distribution sets it.
std::string FindDate() {
  const char* epoch = std::getenv("SOURCE_DATE_EPOCH");
  if (epoch == nullptr || *epoch == '\0') return VALUE_RELEASE_DATE;
  std::int64_t seconds = 0;
  const char* end = epoch + std::strlen(epoch);
  const auto [stop, error] = std::from_chars(epoch, end, seconds);
  if (error != std::errc() || stop != end) return VALUE_RELEASE_DATE;
  const auto time = static_cast<std::time_t>(seconds);
  std::tm parts{};
  char text[32];
  if (gmtime_r(&time, &parts) == nullptr) return VALUE_RELEASE_DATE;
  return {text, std::strftime(text, sizeof(text), "%Y-%m-%d", &parts)};
}

/// Writes the pages; a command of its own, since it needs the catalogue.
class ManualWriter : public Command {
 public:
  ManualWriter(const CLI::App& app, const std::string& folder, const CommonOptions& common, Reporter& reporter)
      : Command(common, reporter), app_(app), folder_(ScEng::MakePath(folder)) {}

 private:
  CLI::App* Declare(CLI::App&) override { return nullptr; }

  ExitCode Run() override {
    const auto catalog = LoadCatalog();
    if (!catalog) return ExitCode::kPlugin;
    const std::vector<ManualNode> nodes = ListNodes(*catalog);
    const std::string date = FindDate();
    std::error_code error;
    std::filesystem::create_directories(folder_, error);
    ExitCode code = WritePage("value", MakeProgramPage(app_, date));
    for (const CLI::App* command : GetShownCommands(app_)) {
      if (code != ExitCode::kDone) return code;
      const bool is_about_nodes = command->get_name() == "nodes" || command->get_name() == "apply";
      const std::string page =
          MakeCommandPage(app_, *command, date, is_about_nodes ? nodes : std::vector<ManualNode>());
      code = WritePage("value-" + command->get_name(), page);
    }
    return code;
  }

  static std::vector<ManualNode> ListNodes(const ScEng::NodeCatalog& catalog) {
    std::vector<ManualNode> nodes;
    for (const NodeInterface* descriptor : catalog.GetDescriptors()) {
      ScEng::Status unmade;
      const ScEng::RefPtr<Node> node = ScEng::CreateNode(*descriptor, unmade);
      if (!node || node->GetRecord() == nullptr) continue;
      const std::string class_name = descriptor->GetNodeFactory()->GetTypeName();
      nodes.push_back({descriptor->GetName(), class_name, node->GetRecord()->sentence});
    }
    return nodes;
  }

  ExitCode WritePage(const std::string& name, const std::string& text) {
    const std::filesystem::path file = folder_ / (name + ".1");
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream << text;
    stream.close();
    if (stream.good()) return ExitCode::kDone;
    return Fail(ExitCode::kFile, file.string() + " cannot be written");
  }

  const CLI::App& app_;
  std::filesystem::path folder_;
};

}  // namespace

ExitCode WriteManual(const CLI::App& app, const std::vector<std::string>& arguments, Reporter& reporter) {
  if (arguments.size() != 2 || arguments[0] != "--output-dir" || arguments[1].empty()) {
    reporter.Error("value manual takes --output-dir DIR, the folder for its pages");
    return ExitCode::kUsage;
  }
  const CommonOptions common;
  return ManualWriter(app, arguments[1], common, reporter).Execute();
}
