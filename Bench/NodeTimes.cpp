// SPDX-License-Identifier: Apache-2.0
//
// What a node takes in the host, for those who want to hold their own way to it against that. Evaluates a node with its
// defaults on square images of values whose samples a file has, one after the other, and is told by lines when:
//
//   node COUNT     the node itself, called so many times
//   engine COUNT   the node in an engine, with images in place of what would feed it
//
// Each is answered by the seconds that one evaluation took on average, on the clock and of the processors.
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Bench/ProgramSupport.h"
#include "Host/Image/Image.h"
#include "Host/Nodes/HostNodes.h"
#include "Host/Tools/Engine.h"
#include "Host/Tools/NodeLibrary.h"
#include "Host/Tools/TypeGuard.h"
#include "Host/Util/ParallelRows.h"

namespace {

using Images = std::vector<ImagePtr>;

using Bench::Check;
using Bench::GetProcessorSeconds;

Images ReadImages(const std::string& path, int side, std::size_t count) {
  std::ifstream file(path, std::ios::binary);
  Images images;
  for (std::size_t i = 0; i < count; ++i) {
    auto image = ScEng::MakeRef<Image>(side, side, ColorMode::kValue, nullptr);
    const auto bytes = static_cast<std::streamsize>(image->GetNumSamples() * sizeof(float));
    if (!file.read(reinterpret_cast<char*>(image->GetArray()), bytes)) {
      throw std::runtime_error(path + " does not have that many samples");
    }
    images.push_back(std::move(image));
  }
  return images;
}

/// A node on its own.
class BareNode {
 public:
  BareNode(const NodeInterface& type, const Images& images) {
    ScEng::Status status;
    node_ = ScEng::CreateNode(type, status);
    Check(status);
    const bool takes_many = node_->GetInplugs().front().connections == PlugRecord::kAnyNumber;
    if (takes_many) node_->SetRegularInputEntries(0, static_cast<unsigned>(images.size()));
    for (const ImagePtr& image : images) inputs_.emplace_back(static_cast<const Image*>(image.Get()));
    for (std::size_t id = 0; id < node_->GetNumAttributes(); ++id) {
      inputs_.push_back(node_->GetAttribute(id)->GetValue());
    }
  }

  void Evaluate() {
    for (unsigned output = 0; output < node_->GetOutplugs().size(); ++output) node_->Evaluate(output, inputs_);
    static_cast<void>(node_->OnProcessEvent({.kind = NodeEvent::kDropCachedResults}));
  }

 private:
  ScEng::RefPtr<Node> node_;
  std::vector<PlugValue> inputs_;
};

/// A node in an engine, as part of a graph that has images in the place of its other nodes.
class NodeInGraph {
 public:
  NodeInGraph(const std::shared_ptr<const ScEng::NodeCatalog>& catalog, const NodeType& type, const Images& images)
      : engine_(catalog), node_(engine_.CreateNode(type)) {
    const bool takes_many = node_->GetInplugs().front().connections == PlugRecord::kAnyNumber;
    for (unsigned i = 0; i < images.size(); ++i) {
      Node* const source = engine_.CreateNode(ScEng::kImageRerouteType);
      Check(engine_.Connect(source, "image", 0, node_, node_->GetInplugName(takes_many ? 0 : i), takes_many ? i : 0));
      sources_.push_back(source);
    }
    for (unsigned i = 0; i < node_->GetOutplugs().size(); ++i) requests_.push_back({node_, i});
    options_.release_results = true;
  }

  void Evaluate(const Images& images) {
    for (std::size_t i = 0; i < images.size(); ++i) engine_.SetOutputOverride(sources_[i], 0, images[i]);
    engine_.Evaluate(requests_, options_);
    if (node_->IsInError()) throw std::runtime_error(node_->GetStateMessage());
  }

 private:
  Engine engine_;
  Node* node_;
  std::vector<Node*> sources_;
  std::vector<Engine::Request> requests_;
  Engine::Options options_;
};

void Run(char** arguments) {
  const auto catalog = Bench::LoadCatalog(arguments[1]);
  const NodeInterface* const type = catalog->FindTypeName(arguments[2]);
  if (type == nullptr) throw std::runtime_error(std::string("there is no node type ") + arguments[2]);
  const Images images = ReadImages(arguments[3], std::atoi(arguments[4]), std::strtoul(arguments[5], nullptr, 10));
  ScEng::SetNumThreads(std::strtoul(arguments[6], nullptr, 10));
  BareNode bare(*type, images);
  NodeInGraph in_graph(catalog, type->GetNodeType(), images);
  std::string way;
  for (std::size_t count = 0; std::cin >> way >> count;) {
    const double used = GetProcessorSeconds();
    const auto begun = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < count; ++i) {
      // Ranges are found anew each time, as for images that were just made.
      for (const ImagePtr& image : images) static_cast<void>(image->GetArray());
      if (way == "engine") {
        in_graph.Evaluate(images);
      } else {
        bare.Evaluate();
      }
    }
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begun;
    const auto times = static_cast<double>(count);
    std::cout << taken.count() / times << " " << (GetProcessorSeconds() - used) / times << std::endl;
  }
}

}  // namespace

int main(int argc, char** argv) {
  return Bench::RunProgram("value-node-times LIBRARY TYPE SAMPLES SIDE IMAGES THREADS", [&] {
    if (argc != 7) return false;
    Run(argv);
    return true;
  });
}
