// SPDX-License-Identifier: Apache-2.0
//
// How soon the evaluator in the background lets go of a node. Every node type with an image output is evaluated on a
// large terrain, and at a random instant something small is to be shown instead: what is printed is the time from that
// request until the small image is there. Rows are those of a Markdown table.
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "Bench/CancelTrial.h"
#include "Bench/ProgramSupport.h"
#include "Host/Tools/NodeLibrary.h"

namespace {

struct Options {
  std::filesystem::path library;
  int side = 4096;
  int attempts = 12;
  /// Only cases whose name has this in it.
  std::string filter;
};

std::optional<Options> ReadOptions(int argc, char** argv) {
  if (argc < 2 || argc > 5) return std::nullopt;
  Options options;
  options.library = argv[1];
  if (argc > 2) options.side = std::atoi(argv[2]);
  if (argc > 3) options.attempts = std::atoi(argv[3]);
  if (argc > 4) options.filter = argv[4];
  if (options.side < 1 || options.attempts < 1) return std::nullopt;
  return options;
}

/// All types with their defaults, and those whose cost depends on a setting with costly ones too.
std::vector<Bench::CancelCase> MakeCases(const ScEng::NodeCatalog& catalog) {
  std::vector<Bench::CancelCase> cases;
  for (NodeInterface* descriptor : catalog.GetDescriptors()) {
    const std::string type = descriptor->GetNodeFactory()->GetTypeName();
    cases.push_back({type, type, {}});
    const auto add = [&](const std::string& name, std::vector<std::pair<std::string, std::string>> attributes) {
      cases.push_back({type + ", " + name, type, std::move(attributes)});
    };
    if (type == "ImageReliefNode") {
      for (const std::string style : {"levels", "inner_bevel", "outer_bevel", "emboss", "pillow_emboss"}) {
        add(style + ", radius 250", {{"style", style}, {"radius", "250"}});
      }
      add("levels, smooth, radius 250, soften 16", {{"profile", "smooth"}, {"radius", "250"}, {"soften", "16"}});
      add("inner_bevel, radius 250, grow", {{"style", "inner_bevel"}, {"radius", "250"}, {"grow", "true"}});
    }
    if (type == "ImageAmbientOcclusionNode") add("radius 100", {{"radius", "100"}});
    if (type == "ImageValueFunctionNode") add("log", {{"function", "log"}});
    if (type == "ImageValueClampNode") add("smooth", {{"high", "1"}, {"profile", "smooth"}});
    if (type == "ImageReaderNode") {
      cases.pop_back();
      add("EXR", {{"path", "terrain.exr"}});
      add("PNG", {{"path", "terrain.png"}});
      add("TIFF", {{"path", "terrain.tif"}});
    }
  }
  return cases;
}

void PrintLoad(const char* when) {
  double loads[1] = {0.0};
  if (getloadavg(loads, 1) == 1) std::cout << "Load of the last minute " << when << ": " << loads[0] << "\n";
}

void Run(const Options& options) {
  const auto catalog = Bench::LoadCatalog(options.library);
  PrintLoad("before");
  Bench::CancelTrial trial(catalog, options.side);
  std::cout << "| Node | Whole | Stopped | Median | Largest | Largest, processor time |\n|---|---|---|---|---|---|\n";
  for (const Bench::CancelCase& tested : MakeCases(*catalog)) {
    if (tested.name.find(options.filter) == std::string::npos) continue;
    std::cout << trial.Run(tested, options.attempts) << std::flush;
  }
  PrintLoad("after");
}

}  // namespace

int main(int argc, char** argv) {
  return Bench::RunProgram("value-cancel-times LIBRARY [SIDE] [ATTEMPTS] [PART OF A NAME]", [&] {
    const auto options = ReadOptions(argc, argv);
    if (options) Run(*options);
    return options.has_value();
  });
}
