// SPDX-License-Identifier: Apache-2.0
//
// How soon there is something to see after an attribute was changed: nodes on a large terrain are shown in the
// background evaluator, an attribute is set again and again, and the time until the first picture and until the image
// itself is there is taken. Rows are those of a Markdown table, with medians.
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Bench/ProgramSupport.h"
#include "Host/Editing/BackgroundEvaluator.h"
#include "Host/Editing/EditSession.h"
#include "Host/Tools/NodeLibrary.h"

namespace {

using Bench::Check;
using ScEng::BackgroundEvaluator;
using ScEng::EditSession;

struct Case {
  const char* name;
  NodeType type;
  const char* output;
  /// Set before.
  std::vector<std::pair<std::string, std::string>> attributes;
  /// The attribute that is changed, and what it is set to in turn.
  std::string changed;
  std::vector<std::string> values;
};

const std::vector<Case>& GetCases() {
  static const std::vector<Case> cases = {
      {"Value Add", {10, 320, 5}, "image", {}, "constant", {"0.1", "0.2", "0.3"}},
      {"Value Function", {10, 320, 64}, "image", {{"function", "sine"}}, "function", {"cosine", "log", "sine"}},
      {"Relief, levels", {10, 288, 26}, "image", {}, "radius", {"100", "150", "200"}},
      {"Relief, levels, smooth", {10, 288, 26}, "image", {{"profile", "smooth"}}, "radius", {"100", "150", "200"}},
      {"Ambient Occlusion", {10, 320, 85}, "image", {}, "radius", {"60", "80", "100"}},
      {"Value Gradient", {10, 320, 48}, "output_x", {}, "seamless", {"false", "true"}},
      {"Distance", {10, 288, 74}, "image", {}, "seamless", {"false", "true"}},
  };
  return cases;
}

std::shared_ptr<const ScEng::ShownResult> WaitForResult(BackgroundEvaluator& evaluator) {
  for (;;) {
    if (auto result = evaluator.TakeResult()) return result;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

double FindMedian(std::vector<double> times) {
  std::sort(times.begin(), times.end());
  return times[times.size() / 2] * 1000.0;
}

void Run(const Case& tested, const std::shared_ptr<const ScEng::NodeCatalog>& catalog, int side, int attempts) {
  EditSession session(catalog, std::filesystem::temp_directory_path());
  Check(session.AddNode({{10, 16, 40}, "terrain", {}}));
  Check(session.SetAttribute("terrain.frame", "0,0," + std::to_string(side) + "," + std::to_string(side)));
  Check(session.AddNode({tested.type, "node", {}}));
  for (const auto& [name, text] : tested.attributes) Check(session.SetAttribute("node." + name, text));
  Check(session.Connect({"terrain.image", "node.image", 0}));
  BackgroundEvaluator evaluator(session, [] {});
  const std::string plug = std::string("node.") + tested.output;
  evaluator.Show({plug, false});
  while (!evaluator.WaitUntilIdle(1.0)) {
  }
  static_cast<void>(evaluator.TakeResult());
  std::vector<double> first;
  std::vector<double> whole;
  int previews = 0;
  for (int i = 0; i < attempts; ++i) {
    const std::string& value = tested.values[static_cast<std::size_t>(i) % tested.values.size()];
    const auto begin = std::chrono::steady_clock::now();
    const auto count_seconds = [&] {
      return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    };
    Check(session.SetAttribute("node." + tested.changed, value));
    const auto result = WaitForResult(evaluator);
    first.push_back(count_seconds());
    const auto last = result->image != nullptr && result->image->IsPreview() ? WaitForResult(evaluator) : result;
    previews += last == result ? 0 : 1;
    whole.push_back(count_seconds());
  }
  std::cout << "| " << tested.name << " | " << FindMedian(first) << " | " << FindMedian(whole) << " | " << previews
            << " of " << attempts << " |\n"
            << std::flush;
}

}  // namespace

int main(int argc, char** argv) {
  return Bench::RunProgram("value-preview-times LIBRARY [SIDE] [ATTEMPTS]", [&] {
    const int side = argc > 2 ? std::atoi(argv[2]) : 4096;
    const int attempts = argc > 3 ? std::atoi(argv[3]) : 9;
    if (argc < 2 || argc > 4 || side < 1 || attempts < 1) return false;
    const auto catalog = Bench::LoadCatalog(argv[1]);
    std::cout << "| Node | First picture, ms | Image, ms | Previews |\n|---|---|---|---|\n";
    for (const Case& tested : GetCases()) Run(tested, catalog, side, attempts);
    return true;
  });
}
