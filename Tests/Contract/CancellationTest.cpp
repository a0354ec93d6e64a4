// SPDX-License-Identifier: Apache-2.0
//
// Every node of the catalogue can be stopped from another thread at any instant: the evaluation ends soon after the
// request, leaves no result behind, and the next one gives what an undisturbed one gives.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <iostream>
#include <memory>
#include <ostream>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "Host/Tools/Engine.h"
#include "Host/Util/Cancellation.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Support/LibraryNodes.h"
#include "Tests/Support/ValueTesting.h"

namespace {

using ScEng::RefPtr;

// With the sanitizers the same paths are walked on a smaller image, and in the time that they take.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kSide = 512;
constexpr double kLongest = 60.0;
#else
constexpr int kSide = 4096;
constexpr double kLongest = 0.1;
#endif

/// A node type and the words, numbers and flags that differ from its defaults.
struct Case {
  std::string name;
  std::string type;
  std::vector<std::pair<std::string, std::string>> choices;
  std::vector<std::pair<std::string, double>> numbers;
  bool is_hard = false;
  unsigned color_mode = ColorMode::kValue;
};

/// The name of a test is no place for the bytes of its case, which are others in each run.
void PrintTo(const Case& of, std::ostream* out) { *out << of.name; }

std::vector<Case> MakeCases() {
  std::vector<Case> cases;
  for (const std::string& type : Testing::GetLibraryTypeNames()) {
    if (type == "ImageReliefNode") {
      for (const char* style : {"levels", "inner_bevel", "outer_bevel", "emboss", "pillow_emboss"}) {
        for (const bool is_hard : {false, true}) {
          cases.push_back({type + "_" + style + (is_hard ? "_hard" : ""),
                           type,
                           {{"style", style}},
                           {{"radius", is_hard ? 40.0 : 6.0}, {"soften", is_hard ? 0.0 : 8.0}, {"multiplier", 2.0}},
                           is_hard});
        }
      }
      continue;
    }
    cases.push_back({type, type, {}, {}});
    if (type == "ImageAmbientOcclusionNode") cases.back().numbers = {{"radius", 8.0}};
    if (type == "ImageValueFunctionNode") cases.back().choices = {{"function", "log"}};
    if (type == "ImageValueClampNode" || type == "ImageValueCompareNode" || type == "ImageToValueNode" ||
        type == "ImageConnectedComponentsNode" || type == "ImageComponentEdgesNode") {
      cases.push_back({type + "_color", type, {}, {}, false, ColorMode::kColor});
    }
  }
  return cases;
}

RefPtr<Image> MakeInput(const Case& tested) {
  RefPtr<Image> image(new Image(kSide, kSide, tested.color_mode, nullptr));
  std::mt19937 random(11);
  float* samples = image->GetArray();
  for (std::size_t i = 0; i < image->GetNumSamples(); ++i) {
    const float noise = static_cast<float>(random() >> 8) / 16777216.0F;
    samples[i] = tested.is_hard ? (noise > 0.999F ? 1.0F : 0.0F) : noise;
  }
  return image;
}

/// A number for the samples of each output; 0 for one without an image.
std::vector<std::uint64_t> Fold(const Node& node) {
  std::vector<std::uint64_t> outputs;
  for (unsigned outplug = 0; outplug < node.GetOutplugs().size(); ++outplug) {
    const Image* image = node.GetOutputImage(outplug);
    std::uint64_t& folded = outputs.emplace_back(image == nullptr ? 0 : 14695981039346656037U);
    for (std::size_t i = 0; image != nullptr && i < image->GetNumSamples(); ++i) {
      std::uint32_t bits = 0;
      std::memcpy(&bits, image->GetConstArray() + i, sizeof(bits));
      folded = (folded ^ bits) * 1099511628211U;
    }
  }
  return outputs;
}

double GetProcessorSeconds() {
  std::timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

double GetSeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

class EveryNodeCancellation : public testing::TestWithParam<Case> {
 protected:
  EveryNodeCancellation() {
    const auto catalog = Testing::MakeLibraryCatalog<>();
    engine_.SetCatalog(catalog);
    Node* giving = engine_.CreateNode(Testing::GivingNode::kType);
    node_ = engine_.CreateNode(catalog->FindTypeName(GetParam().type)->GetNodeType());
    for (const auto& [name, word] : GetParam().choices) Testing::SetChoice(*node_, name.c_str(), word.c_str());
    for (const auto& [name, number] : GetParam().numbers) Testing::SetNumber(*node_, name.c_str(), number);
    engine_.SetOutputOverride(giving, 0, MakeInput(GetParam()));
    for (std::size_t plug = 0; plug < node_->GetNumRegularInputs(); ++plug) {
      engine_.ConnectNodes(giving, "image", 0, node_, node_->GetInplugs()[plug].name, 0);
    }
    for (unsigned outplug = 0; outplug < node_->GetOutplugs().size(); ++outplug) requests_.push_back({node_, outplug});
  }

  Engine engine_;
  Node* node_ = nullptr;
  std::vector<Engine::Request> requests_;
};

TEST_P(EveryNodeCancellation, EndsSoonAndLeavesNothingStale) {
  ScEng::Cancellation cancellation;
  Engine::Options options;
  options.cancellation = &cancellation;
  // A device compiles its program before the first evaluation, which nothing can stop.
  ASSERT_EQ(engine_.Evaluate(requests_, options), Engine::Outcome::kComplete);
  node_->NotifyChanged();
  const double begun = GetSeconds();
  ASSERT_EQ(engine_.Evaluate(requests_, options), Engine::Outcome::kComplete);
  const double whole = GetSeconds() - begun;
  ASSERT_EQ(node_->GetState(), Node::State::kReady) << node_->GetStateMessage();
  const std::vector<std::uint64_t> expected = Fold(*node_);

  std::mt19937 random(static_cast<std::uint32_t>(std::hash<std::string>()(GetParam().name)));
  double longest = 0.0;
  constexpr int kAttempts = 6;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    const Testing::ThreadsScope threads(attempt % 2 == 0 ? 1 : 0);
    const double wait = 0.95 * whole * static_cast<double>(random() % 1000) / 1000.0;
    double requested = 0.0;
    double used_before = 0.0;
    cancellation.Reset();
    node_->NotifyChanged();
    std::thread other([&] {
      std::this_thread::sleep_for(std::chrono::duration<double>(wait));
      requested = GetSeconds();
      used_before = GetProcessorSeconds();
      cancellation.Request();
    });
    const Engine::Outcome outcome = engine_.Evaluate(requests_, options);
    const double ended = GetSeconds();
    const double used = GetProcessorSeconds();
    other.join();
    // On a machine that is busy with other things, the time that this process was given counts.
    longest = std::max(longest, std::min(ended - requested, used - used_before));
    if (outcome == Engine::Outcome::kComplete) {
      EXPECT_EQ(Fold(*node_), expected) << "attempt " << attempt;
      continue;
    }
    // On a busy machine the request comes before the node begins, or when an output is complete. Nothing half-made is
    // left in any case.
    const std::vector<std::uint64_t> left = Fold(*node_);
    for (std::size_t i = 0; i < left.size(); ++i) EXPECT_TRUE(left[i] == 0 || left[i] == expected[i]) << i;
  }
  RecordProperty("whole_ms", static_cast<int>(whole * 1000.0));
  RecordProperty("longest_ms", static_cast<int>(longest * 1000.0));
  EXPECT_LE(longest, kLongest) << "of " << whole << " s";

  cancellation.Reset();
  EXPECT_EQ(engine_.Evaluate(requests_, options), Engine::Outcome::kComplete);
  EXPECT_EQ(Fold(*node_), expected);
}

INSTANTIATE_TEST_SUITE_P(Node, EveryNodeCancellation, testing::ValuesIn(MakeCases()),
                         [](const auto& tested) { return tested.param.name; });

}  // namespace
