// SPDX-License-Identifier: Apache-2.0
//
// What a chain of pointwise nodes takes in an engine, beside plain loops over memory that is there already. They take
// turns, so that whatever else slows the machine slows all of them; the figures are medians, in microseconds of the
// processors:
//
//   value-chain-times LIBRARY SIDE NODES ROUNDS THREADS
//
// copy    memcpy of the image
// plain   reads a sample, adds to it, writes it and compares it with the lowest and highest so far
// each    a node of the chain where every node makes its image
// joined  a node of the chain where the engine joins their passes
// chain   the whole chain where the engine joins their passes, in copies
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "Bench/ProgramSupport.h"
#include "Host/Image/Image.h"
#include "Host/Image/SampleRange.h"
#include "Host/Nodes/HostNodes.h"
#include "Host/Tools/Engine.h"
#include "Host/Tools/NodeLibrary.h"
#include "Host/Util/ParallelRows.h"

namespace {

using Bench::Check;
using Bench::GetProcessorSeconds;

/// Pointwise nodes one after the other, behind an image that stands in for what feeds them.
class Chain {
 public:
  Chain(const std::shared_ptr<const ScEng::NodeCatalog>& catalog, std::size_t nodes)
      : engine_(catalog), source_(engine_.CreateNode(ScEng::kImageRerouteType)) {
    const char* const types[] = {"ImageValueAddNode",       "ImageValueMultiplyNode", "ImageValueMaximumNode",
                                 "ImageValueSubtractNode",  "ImageValueMinimumNode",  "ImageValueDivideNode",
                                 "ImageValueConditionNode", "ImageValueRangeNode"};
    last_ = source_;
    for (std::size_t i = 0; i < nodes; ++i) {
      const NodeInterface* const type = catalog->FindTypeName(types[i % std::size(types)]);
      if (type == nullptr)
        throw std::runtime_error(std::string("there is no node type ") + types[i % std::size(types)]);
      Node* const node = engine_.CreateNode(type->GetNodeType());
      Check(engine_.Connect(last_, "image", 0, node, "image", 0));
      // Not the default, which needs the lowest sample of all before it starts.
      if (Attribute* const condition = node->GetAttribute("condition")) condition->SetChoice("v_lt_a", false);
      last_ = node;
    }
    options_.release_results = true;
  }

  void Evaluate(const ImagePtr& image, bool joined) {
    // Whoever asks for the times of nodes has each evaluated by itself.
    options_.on_timed = nullptr;
    if (!joined) options_.on_timed = [](Node&, const Engine::NodeTiming&) {};
    // The range is found anew each time, as for an image that was just made.
    static_cast<void>(image->GetArray());
    engine_.SetOutputOverride(source_, 0, image);
    engine_.Evaluate({{last_, 0}}, options_);
    if (last_->IsInError()) throw std::runtime_error(last_->GetStateMessage());
  }

 private:
  Engine engine_;
  Node* source_;
  Node* last_;
  Engine::Options options_;
};

template <class Body>
double Time(const Body& body) {
  const double begun = GetProcessorSeconds();
  body();
  return GetProcessorSeconds() - begun;
}

double Median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2), values.end());
  return values[values.size() / 2];
}

void Run(char** arguments) {
  const auto catalog = Bench::LoadCatalog(arguments[1]);
  const int side = std::atoi(arguments[2]);
  const std::size_t nodes = std::strtoul(arguments[3], nullptr, 10);
  const std::size_t rounds = std::strtoul(arguments[4], nullptr, 10);
  ScEng::SetNumThreads(std::strtoul(arguments[5], nullptr, 10));

  const float fill = 0.25F;
  const auto image = ScEng::MakeRef<Image>(side, side, ColorMode::kValue, &fill);
  const auto target = ScEng::MakeRef<Image>(*image);
  const std::size_t count = image->GetNumSamples();
  Chain chain(catalog, nodes);
  std::vector<double> plain;
  std::vector<double> copy;
  std::vector<double> each;
  std::vector<double> joined;
  for (std::size_t round = 0; round <= rounds; ++round) {
    plain.push_back(Time([&] {
      const float* from = image->GetConstArray();
      float* to = target->GetArray();
      // In pieces that stay in the first level of the caches until they are measured.
      constexpr std::size_t kPiece = 2048;
      ScEng::SampleRange range;
      for (std::size_t i = 0; i < count; i += kPiece) {
        const std::size_t piece = std::min(kPiece, count - i);
        for (std::size_t k = i; k < i + piece; ++k) to[k] = from[k] + 0.5F;
        range.Include(ScEng::MeasureFiniteRange(to + i, piece));
      }
      target->SetValueLowHigh(range.low, range.high);
    }));
    copy.push_back(Time([&] { std::memcpy(target->GetArray(), image->GetConstArray(), count * sizeof(float)); }));
    each.push_back(Time([&] { chain.Evaluate(image, false); }) / static_cast<double>(nodes));
    joined.push_back(Time([&] { chain.Evaluate(image, true); }) / static_cast<double>(nodes));
  }
  // The first round fills the caches and the memory that is kept.
  for (auto* times : {&plain, &copy, &each, &joined}) times->erase(times->begin());
  std::cout << "copy " << Median(copy) * 1e6 << "  plain " << Median(plain) * 1e6 << "  each " << Median(each) * 1e6
            << "  joined " << Median(joined) * 1e6 << "  chain "
            << Median(joined) * static_cast<double>(nodes) / Median(copy) << "\n";
}

}  // namespace

int main(int argc, char** argv) {
  return Bench::RunProgram("value-chain-times LIBRARY SIDE NODES ROUNDS THREADS", [&] {
    if (argc != 6) return false;
    Run(argv);
    return true;
  });
}
