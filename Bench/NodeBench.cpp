// SPDX-License-Identifier: Apache-2.0
//
// The value nodes with pixel loops of their own, and those whose operation goes through the evaluator, as whole nodes
// on 4096 x 4096 values: what a host waits for when it asks for the output.

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "Bench/BenchSupport.h"
#include "Host/Tools/Node.h"
#include "Host/Util/RefCounter.h"
#include "Value/Nodes/Clamp/ImageValueClampNode.h"
#include "Value/Nodes/Compare/ImageValueCompareNode.h"
#include "Value/Nodes/Condition/ImageValueConditionNode.h"
#include "Value/Nodes/Function/ImageValueFunctionNode.h"
#include "Value/Nodes/Range/ImageValueRangeNode.h"
#include "Value/Nodes/Steps/ImageValueStepsNode.h"
#include "Value/Nodes/ToValue/ImageToValueNode.h"

namespace {

/// What a case sets before it runs.
struct Settings {
  std::vector<std::pair<std::string, double>> numbers;
  std::vector<std::pair<std::string, std::string>> words;
  std::vector<std::pair<std::string, bool>> flags;
};

void Check(bool done) {
  if (!done) std::abort();
}

void Set(Node& node, const Settings& settings) {
  for (const auto& [name, value] : settings.numbers) Check(node.GetAttribute(name)->SetNumber(value, false));
  for (const auto& [name, word] : settings.words) Check(node.GetAttribute(name)->SetChoice(word.c_str(), false));
  for (const auto& [name, flag] : settings.flags) Check(node.GetAttribute(name)->SetFlag(flag, false));
}

/// Evaluates output 0 again and again. `moved` is the number of images that are read or written once each.
template <class NodeClass>
void Add(const std::string& name, const Settings& settings, double moved, Bench::Threads threads,
         unsigned color_mode = ColorMode::kValue) {
  Bench::Register(name, threads, [=](benchmark::State& state) {
    const ScEng::RefPtr<Node> node(new NodeClass);
    Set(*node, settings);
    std::vector<ImagePtr> images;
    std::vector<PlugValue> inputs;
    for (std::size_t i = 0; i < node->GetNumRegularInputs(); ++i) {
      images.push_back(Bench::MakeNoise(color_mode, static_cast<std::uint32_t>(i + 1)));
      inputs.emplace_back(static_cast<const Image*>(images.back().Get()));
    }
    for (std::size_t id = 0; id < node->GetNumAttributes(); ++id) {
      inputs.push_back(node->GetAttribute(id)->GetValue());
    }
    Bench::RunAgainstCopy(state, *images.front(), moved / 2.0, [&] {
      // Ranges are found anew each time, as for images that were just made.
      static_cast<void>(images.front()->GetArray());
      node->Evaluate(0, inputs);
      benchmark::DoNotOptimize(node->GetOutputImage(0)->GetConstArray());
    });
  });
}

constexpr Bench::Threads kCaller = Bench::Threads::kCaller;
constexpr Bench::Threads kOneAndTwo = Bench::Threads::kOneAndTwo;

}  // namespace

void Bench::RegisterNodes() {
  Add<ImageToValueNode>("Node/ToValue/declared", {}, 2, kCaller);
  Add<ImageToValueNode>("Node/ToValue/auto_level", {{}, {}, {{"auto_level", true}}}, 2, kCaller);
  // Four samples are read for one written; the copy moves eight.
  Add<ImageToValueNode>("Node/ToValue/color", {}, 1.25, kCaller, ColorMode::kColor);
  Add<ImageValueStepsNode>("Node/Steps", {{{"steps", 7}}, {}, {}}, 2, kCaller);
  for (const char* profile : {"linear", "smooth", "perlin", "arc_out", "arc_in"}) {
    Add<ImageValueClampNode>(std::string("Node/Clamp/") + profile,
                             {{{"low", 0.25}, {"high", 0.75}}, {{"profile", profile}}, {}}, 2, kCaller);
  }
  Add<ImageValueClampNode>("Node/Clamp/low_only", {{{"low", 0.25}}, {{"clamp", "low"}}, {}}, 2, kCaller);
  for (const char* precision : {"0.000001", "1.0", "10.0"}) {
    Add<ImageValueCompareNode>(std::string("Node/Compare/") + precision, {{}, {{"precision", precision}}, {}}, 3,
                               kCaller);
  }
  for (const char* condition : {"v_eq_min", "v_df_max", "v_lt_a", "v_gte_a", "a_lte_v_lt_b"}) {
    Add<ImageValueConditionNode>(std::string("Node/Condition/") + condition,
                                 {{{"a", 0.25}, {"b", 0.75}}, {{"condition", condition}}, {}}, 2, kOneAndTwo);
  }
  for (const char* profile : {"linear", "smooth", "arc_out", "arc_in"}) {
    Add<ImageValueRangeNode>(std::string("Node/Range/") + profile,
                             {{{"center", 0.5}, {"size", 0.25}, {"falloff", 0.25}}, {{"profile", profile}}, {}}, 2,
                             kOneAndTwo);
  }
  for (const char* function :
       {"absolute", "sine", "cosine", "tangent", "arcsine", "arccosine", "arctangent", "floor", "ceil", "inverse",
        "log", "log2", "log10", "exponential", "square_root", "cubic_root", "deg_to_rad", "rad_to_deg"}) {
    Add<ImageValueFunctionNode>(std::string("Node/Function/") + function, {{}, {{"function", function}}, {}}, 2,
                                kOneAndTwo);
  }
}
