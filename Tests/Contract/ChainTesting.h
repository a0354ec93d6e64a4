// SPDX-License-Identifier: Apache-2.0
//
// What the tests of chains of nodes share: the count of samples, and graphs of the library's nodes.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "Host/Image/SampleAllocator.h"
#include "Host/Tools/Engine.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Support/ImageTesting.h"
#include "Tests/Support/LibraryNodes.h"

namespace Testing {

/// Counts what images hold, on all threads.
class CountingAllocator : public ScEng::SampleAllocator {
 public:
  float* Allocate(std::size_t bytes) override {
    if (spared-- == 0) throw std::bad_alloc();
    ++made;
    held += bytes;
    std::size_t before = most;
    while (before < held && !most.compare_exchange_weak(before, held)) {
    }
    return static_cast<float*>(::operator new (bytes + 1, std::align_val_t{64}));
  }
  void Release(float* samples, std::size_t bytes) noexcept override {
    held -= bytes;
    ::operator delete (samples, std::align_val_t{64});
  }

  /// Begins to count anew.
  void Begin() {
    made = 0;
    most = held.load();
  }

  std::atomic<std::size_t> held{0};
  std::atomic<std::size_t> most{0};
  std::atomic<std::size_t> made{0};
  // How many allocations go well before one fails.
  std::atomic<std::int64_t> spared{-1};
};

/// The samples of every image of the test program come from here.
CountingAllocator& GetAllocator();

/// Makes an image at each evaluation, and drops it when it is told.
class MakingNode : public GivingNode {
 public:
  static constexpr NodeType kType{700, 2, 2};
  static constexpr const char* kName = "MakingNode";
  static constexpr int kSide = 300;
  static constexpr std::size_t kBytes = std::size_t{kSide} * kSide * sizeof(float);
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  void Evaluate(unsigned, const std::vector<PlugValue>&) override {
    const float fill = 0.5F;
    output_.Reset(new Image(kSide, kSide, ColorMode::kValue, &fill));
  }
  bool OnProcessEvent(NodeEvent event) override {
    if (event.kind == NodeEvent::kDropCachedResults) output_.Reset();
    return true;
  }
  [[nodiscard]] Image* GetOutputImage(unsigned) const override { return output_.Get(); }

 private:
  ImagePtr output_;
};

/// A graph of nodes by their type names.
class Graph {
 public:
  explicit Graph(std::shared_ptr<ScEng::NodeCatalog> catalog = MakeLibraryCatalog<MakingNode>())
      : engine(std::move(catalog)) {}

  Node* Add(const std::string& type) {
    Node* const node = engine.CreateNode(engine.GetCatalog().FindTypeName(type)->GetNodeType());
    EXPECT_NE(node, nullptr) << type;
    return node;
  }
  Node* AddBehind(Node* before, const std::string& type) {
    Node* const node = Add(type);
    Connect(before, node);
    return node;
  }
  void Connect(Node* from, Node* to, const char* plug = nullptr, unsigned index = 0) {
    const std::string inplug = plug != nullptr ? plug : to->GetInplugs().front().name;
    const ScEng::Status status = engine.Connect(from, from->GetOutplugName(0), 0, to, inplug, index);
    EXPECT_FALSE(status.IsError()) << status.GetMessage();
  }

  /// The images of the nodes, evaluated in a way that may join their passes.
  std::vector<ImagePtr> EvaluateJoined(const std::vector<Node*>& nodes, Engine::Options options = {}) {
    std::vector<ImagePtr> images(nodes.size());
    options.release_results = true;
    options.on_evaluated = [&, told = options.on_evaluated](Node& evaluated, std::size_t done, std::size_t total) {
      for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (nodes[i] == &evaluated) images[i].Reset(engine.GetOutputImage(&evaluated, 0));
      }
      if (told) told(evaluated, done, total);
    };
    EXPECT_EQ(engine.Evaluate(MakeRequests(nodes), options), Engine::Outcome::kComplete);
    return images;
  }
  /// The same node by node. The results stay.
  std::vector<ImagePtr> EvaluateEach(const std::vector<Node*>& nodes) {
    EXPECT_EQ(engine.Evaluate(MakeRequests(nodes)), Engine::Outcome::kComplete);
    std::vector<ImagePtr> images;
    for (Node* node : nodes) images.emplace_back(engine.GetOutputImage(node, 0));
    return images;
  }

  static std::vector<Engine::Request> MakeRequests(const std::vector<Node*>& nodes) {
    std::vector<Engine::Request> requests;
    for (Node* node : nodes) requests.push_back({node, 0});
    return requests;
  }

  Engine engine;
};

/// Whether two images agree in samples and header, to the bit.
inline bool IsSame(const Image* image, const Image* expected) {
  if (image == nullptr || expected == nullptr) return image == expected;
  const auto same = AreSame;
  return SameSamples(GetSamples(*expected), GetSamples(*image)) && image->GetBox() == expected->GetBox() &&
         image->GetColorMode() == expected->GetColorMode() && image->GetPinX() == expected->GetPinX() &&
         image->GetPinY() == expected->GetPinY() && same(image->GetPivotX(), expected->GetPivotX()) &&
         same(image->GetPivotY(), expected->GetPivotY()) && same(image->GetValueLow(), expected->GetValueLow()) &&
         same(image->GetValueHigh(), expected->GetValueHigh()) &&
         same(image->GetOutsideValue(), expected->GetOutsideValue()) && image->GetMetadata() == expected->GetMetadata();
}

}  // namespace Testing
