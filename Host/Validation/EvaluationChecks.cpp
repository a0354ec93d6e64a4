// SPDX-License-Identifier: Apache-2.0
//
// Checks of a node type by evaluating its nodes. Each looks for one thing; that states and outputs make sense is looked
// at in every evaluation, but only the checks that are about evaluating as such speak of it.
#include <dlfcn.h>
#include <malloc.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Host/Nodes/HostNodes.h"
#include "Host/Tools/Engine.h"
#include "Host/Util/ParallelRows.h"
#include "Host/Validation/Checks.h"
#include "Host/Validation/Trial.h"

namespace ScEng {
namespace {

constexpr Size kTinySizes[] = {{1, 1}, {3, 2}, {1, 5}, {16, 1}};
constexpr Size kEmptySizes[] = {{0, 0}, {0, 3}, {5, 0}};
// Around the lengths of vectors, with sample counts that end a vector early, late and exactly.
constexpr Size kVectorSizes[] = {{1, 1}, {3, 2}, {16, 1}, {17, 3}, {64, 2}, {1, 33}};
constexpr Size kOrdinarySize{5, 3};
// Large enough that threads get pieces of their own.
constexpr Size kLargeSize{521, 257};

std::string InQuotes(const std::string& text) { return "\"" + text + "\""; }

std::string NameOf(const Node& node, std::size_t output) {
  return "output " + InQuotes(node.GetOutplugs()[output].name);
}

/// Evaluates and says when state or outputs are wrong; answers whether they are fine.
bool MustBeFine(Subject& subject, Node& node, const Setup& setup) {
  const Trial trial = Evaluate(subject, node, setup);
  if (!trial.problem.empty()) subject.Fail(trial.problem);
  return trial.problem.empty();
}

/// The setup with one attribute plug carrying something else.
Setup With(const Node& node, Setup setup, std::size_t id, const PlugValue& value) {
  for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
    setup.attributes.push_back(i == id ? value : node.GetAttribute(i)->GetValue());
  }
  setup.about += ", \"" + node.GetAttribute(id)->GetName() + "\" carrying " + Describe(value);
  return setup;
}

/// Every setup that leads a node through other code: sizes around the lengths of vectors in every mode, and each word
/// of a choice.
std::vector<Setup> MakeManySetups(const Node& node) {
  std::vector<Setup> setups;
  for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
    for (const Size size : kVectorSizes) setups.push_back(MakeSetup(size, mode, Samples::kOrdinary));
    for (std::size_t id = 0; id < node.GetNumAttributes(); ++id) {
      for (const PlugValue& word : GetWords(*node.GetAttribute(id))) {
        setups.push_back(With(node, MakeSetup({17, 3}, mode, Samples::kOrdinary), id, word));
      }
    }
  }
  return setups;
}

/// Memory that the process has allocated and not given back.
std::size_t GetUsedBytes() {
  // Where a sanitizer keeps the memory it alone knows.
  using GetBytes = std::size_t (*)();
  static const auto get_bytes =
      reinterpret_cast<GetBytes>(dlsym(RTLD_DEFAULT, "__sanitizer_get_current_allocated_bytes"));
  if (get_bytes != nullptr) return get_bytes();
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

/// Watches the end of a node: its base lets go of the change listener, and with it of this, when it is destroyed.
class NodeWatch {
 public:
  explicit NodeWatch(Node& node) {
    node.SetChangeListener([alive = alive_](Node&) {});
  }
  [[nodiscard]] bool IsAlive() const { return alive_.use_count() > 1; }

 private:
  std::shared_ptr<int> alive_ = std::make_shared<int>(0);
};

bool HasImageOutput(const Node& node) {
  const auto& plugs = node.GetOutplugs();
  return std::any_of(plugs.begin(), plugs.end(), [](const PlugRecord& plug) { return plug.type == PlugType::kImage; });
}

bool Tell(Node& node, std::uint32_t kind) {
  NodeEvent event;
  event.kind = kind;
  return node.OnProcessEvent(event);
}

}  // namespace

void CheckNothingConnected(Subject& subject) {
  const RefPtr<Node> node = subject.MakeNode();
  if (!node) return;
  Setup nothing;
  nothing.about = "nothing connected";
  for (const bool enabled : {true, false}) {
    node->SetEnabled(enabled);
    if (!MustBeFine(subject, *node, nothing)) return;
  }
  // An earlier result must not be needed, nor be in the way.
  node->SetEnabled(true);
  Evaluate(subject, *node, MakeSetup(kOrdinarySize, ColorMode::kValue, Samples::kOrdinary));
  if (!MustBeFine(subject, *node, nothing)) return;
  // Only the first or only the second of two inputs.
  if (node->GetNumRegularInputs() < 2) return;
  for (const std::size_t only : {std::size_t{0}, std::size_t{1}}) {
    Setup setup = MakeSetup(kOrdinarySize, ColorMode::kValue, Samples::kOrdinary);
    setup.about += ", input " + std::to_string(only) + " alone connected";
    for (std::size_t i = 0; i < setup.images.size(); ++i) {
      if (i != only) setup.images[i].Reset();
    }
    if (!MustBeFine(subject, *node, setup)) return;
  }
}

void CheckTinyImages(Subject& subject) {
  const RefPtr<Node> node = subject.MakeNode();
  if (!node) return;
  for (const Size size : kTinySizes) {
    if (!MustBeFine(subject, *node, MakeSetup(size, ColorMode::kValue, Samples::kOrdinary))) return;
  }
}

void CheckEmptyImages(Subject& subject) {
  const RefPtr<Node> node = subject.MakeNode();
  if (!node) return;
  for (const Size size : kEmptySizes) {
    for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
      if (!MustBeFine(subject, *node, MakeSetup(size, mode, Samples::kOrdinary))) return;
    }
  }
}

void CheckColorModes(Subject& subject) {
  const RefPtr<Node> node = subject.MakeNode();
  if (!node) return;
  for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
    if (!MustBeFine(subject, *node, MakeSetup(kOrdinarySize, mode, Samples::kOrdinary))) return;
  }
  for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
    const unsigned other_mode = (mode + 1) % ColorMode::kCount;
    Setup mixed = MakeSetup(kOrdinarySize, mode, Samples::kOrdinary);
    mixed.images[1] = MakeSetup({2, 4}, other_mode, Samples::kOrdinary).images[1];
    mixed.images[1]->SetPin(-1, 5);
    mixed.about += std::string(" and 2 x 4 ") + ColorMode::GetName(other_mode) + " images elsewhere";
    if (!MustBeFine(subject, *node, mixed)) return;
  }
}

void CheckAwkwardSamples(Subject& subject) {
  const RefPtr<Node> node = subject.MakeNode();
  if (!node) return;
  constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  constexpr std::pair<float, float> kRanges[] = {
      {0.0F, 1.0F}, {0.5F, 0.5F}, {1.0F, -1.0F}, {kNan, kNan}, {-kInfinity, kInfinity}};
  for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
    for (const Size size : {Size{1, 1}, Size{3, 2}, Size{17, 3}}) {
      if (!MustBeFine(subject, *node, MakeSetup(size, mode, Samples::kAwkward))) return;
    }
    for (const auto& [low, high] : kRanges) {
      Setup setup = MakeSetup(kOrdinarySize, mode, Samples::kAwkward);
      for (const RefPtr<Image>& image : setup.images) image->SetValueLowHigh(low, high);
      setup.about += " with the range " + Describe(PlugValue(static_cast<double>(low))) + " to " +
                     Describe(PlugValue(static_cast<double>(high)));
      if (!MustBeFine(subject, *node, setup)) return;
    }
  }
}

void CheckAttributeValues(Subject& subject) {
  const RefPtr<Node> node = subject.MakeNode();
  if (!node) return;
  for (std::size_t id = 0; id < node->GetNumAttributes(); ++id) {
    for (const PlugValue& value : GetLimits(*node->GetAttribute(id))) {
      for (const unsigned mode : {ColorMode::kValue, ColorMode::kColor}) {
        if (!MustBeFine(subject, *node, With(*node, MakeSetup(kOrdinarySize, mode, Samples::kOrdinary), id, value))) {
          return;
        }
      }
    }
  }
}

void CheckDisabled(Subject& subject) {
  const RefPtr<Node> node = subject.MakeNode();
  if (!node) return;
  for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
    for (const Samples samples : {Samples::kOrdinary, Samples::kAwkward}) {
      node->SetEnabled(false);
      if (!MustBeFine(subject, *node, MakeSetup(kOrdinarySize, mode, samples))) return;
      // In turn with evaluations that leave something behind.
      node->SetEnabled(true);
      if (!MustBeFine(subject, *node, MakeSetup({3, 2}, mode, Samples::kOrdinary))) return;
    }
  }
}

void CheckOutputs(Subject& subject) {
  const RefPtr<Node> node = subject.MakeNode();
  if (!node) return;
  const auto outputs = static_cast<unsigned>(node->GetOutplugs().size());
  const Setup setup = MakeSetup(kOrdinarySize, ColorMode::kValue, Samples::kOrdinary);
  for (const bool evaluated : {false, true}) {
    if (evaluated && !MustBeFine(subject, *node, setup)) return;
    for (const unsigned index : {outputs, outputs + 1, 1000U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
      subject.At("asking for output " + std::to_string(index) + " of " + std::to_string(outputs));
      const Image* image = node->GetOutputImage(index);
      if (image == nullptr) continue;
      // Whatever it is, it has to be an image.
      const OutputCopy copy = CopyOf(*image);
      if (copy.header.color_mode >= ColorMode::kCount || image->GetRefCount() == 0) {
        subject.Fail("GetOutputImage(" + std::to_string(index) +
                     ") answers something that is not an image of the node's; " +
                     "it has to answer null for an output that the node does not have");
        return;
      }
    }
  }
  for (unsigned output = 0; output < outputs; ++output) {
    const unsigned type = node->GetOutplugs()[output].type;
    if (type == PlugType::kImage) continue;
    subject.At("asking for the value of output " + std::to_string(output));
    const PlugValue value = node->GetOutputValue(output);
    if (value.HasValue() && value.GetType() != type) {
      subject.Fail(NameOf(*node, output) + " delivers a " + PlugType::GetName(value.GetType()) +
                   "; by its plug it is a " + PlugType::GetName(type));
    }
  }

  // The host may keep an image for longer than the node does.
  std::vector<std::pair<unsigned, RefPtr<Image>>> kept;
  std::vector<OutputCopy> copies;
  for (unsigned output = 0; output < outputs; ++output) {
    RefPtr<Image> image(node->GetOutputImage(output));
    if (!image) continue;
    copies.push_back(CopyOf(*image));
    kept.emplace_back(output, std::move(image));
  }
  Evaluate(subject, *node, MakeSetup(kOrdinarySize, ColorMode::kColor, Samples::kOrdinary));
  DropResults(*node);
  for (std::size_t i = 0; i < kept.size(); ++i) {
    if (AreSame(CopyOf(*kept[i].second), copies[i])) continue;
    subject.Fail("an image of " + NameOf(*node, kept[i].first) +
                 " that the host kept is another one after the next evaluation; each evaluation makes new images");
  }
}

void CheckEvents(Subject& subject) {
  const RefPtr<Node> node = subject.MakeNode();
  if (!node) return;
  constexpr std::uint32_t kDrop = NodeEvent::kDropCachedResults;
  // Kinds that no host sends today.
  constexpr std::uint32_t kOtherKinds[] = {0, 1, 10, 12, 64, 255, 0x7FFFFFFF, 0xFFFFFFFF};
  const auto outputs = static_cast<unsigned>(node->GetOutplugs().size());
  subject.At("sending event 11 (drop cached results) to a new node");
  if (!Tell(*node, kDrop) && HasImageOutput(*node)) {
    subject.Fail("event 11 (drop cached results) is not answered with true; a node with images has to obey it");
    return;
  }
  for (const std::uint32_t kind : kOtherKinds) {
    subject.At("sending event " + std::to_string(kind) + " to a new node");
    Tell(*node, kind);
  }
  const Trial trial = Evaluate(subject, *node, MakeSetup(kOrdinarySize, ColorMode::kValue, Samples::kOrdinary));
  for (const std::uint32_t kind : kOtherKinds) {
    subject.At("sending event " + std::to_string(kind) + " to an evaluated node");
    Tell(*node, kind);
    for (unsigned output = 0; output < outputs; ++output) {
      if (!trial.outputs[output].has_image || node->GetOutputImage(output) != nullptr) continue;
      subject.Fail("event " + std::to_string(kind) + " drops " + NameOf(*node, output) +
                   "; only event 11 asks for that, others are ignored");
      return;
    }
  }
  for (int time = 0; time < 2; ++time) {
    subject.At("sending event 11 (drop cached results) to an evaluated node");
    Tell(*node, kDrop);
    for (unsigned output = 0; output < outputs; ++output) {
      if (node->GetOutputImage(output) == nullptr) continue;
      subject.Fail("event 11 (drop cached results) leaves an image at " + NameOf(*node, output) +
                   "; the node has to release every image that it caches");
      return;
    }
  }
}

void CheckGraph(Subject& subject) {
  NodeInterface* descriptor = subject.GetDescriptor();
  if (descriptor == nullptr) return;
  const std::shared_ptr<NodeCatalog> catalog = CreateHostCatalog();
  // Numbers or a name that the host has already are the affair of other checks.
  if (catalog->AddDescriptor(RefPtr<NodeInterface>(descriptor)).IsError()) {
    subject.Skip("its numbers or its class name are taken");
    return;
  }
  Engine engine(catalog);
  subject.At("adding a node to the engine");
  Node* const node = engine.CreateNode(descriptor->GetNodeType());
  if (node == nullptr) {
    subject.Skip("the factory makes no node");
    return;
  }
  for (std::size_t i = 0; i < node->GetInplugs().size(); ++i) {
    const PlugRecord& plug = node->GetInplugs()[i];
    if (plug.type == PlugType::kImage) {
      const unsigned connections = plug.connections == PlugRecord::kAnyNumber ? 2 : 1;
      for (unsigned index = 0; index < connections; ++index) {
        Node* const source = engine.CreateNode(kImageRectangleType);
        source->GetAttribute("frame")->SetFrame(index, 0.0, 5.0, 3.0, false);
        engine.ConnectNodes(source, "image", 0, node, plug.name, index);
      }
      continue;
    }
    if (i < node->GetNumRegularInputs()) continue;
    const Attribute* attribute = node->GetAttribute(i - node->GetNumRegularInputs());
    if (plug.type == PlugType::kNumber) {
      Node* const source = engine.CreateNode(kNumberType);
      source->GetAttribute("value")->SetNumber(attribute->GetValue().GetNumber(), false);
      engine.ConnectNodes(source, "number", 0, node, plug.name, 0);
    } else if (plug.type == PlugType::kFlag) {
      Node* const source = engine.CreateNode(kFlagType);
      source->GetAttribute("value")->SetFlag(attribute->GetValue().GetFlag(), false);
      engine.ConnectNodes(source, "flag", 0, node, plug.name, 0);
    } else if (plug.type == PlugType::kText) {
      Node* const source = engine.CreateNode(kTextType);
      source->GetAttribute("value")->SetString(attribute->GetValue().GetText(), false);
      engine.ConnectNodes(source, "text", 0, node, plug.name, 0);
    }
  }
  std::vector<Engine::Request> requests;
  for (unsigned output = 0; output < std::max<std::size_t>(node->GetOutplugs().size(), 1); ++output) {
    requests.push_back({node, output});
  }
  // A second time with memory given back as soon as it can be, after a change; then the node goes.
  Engine::Options options;
  for (const bool release : {false, true}) {
    options.release_results = release;
    subject.At(release ? "evaluating it in a graph again, disabled" : "evaluating it in a graph");
    node->SetEnabled(!release);
    engine.Evaluate(requests, options);
    if (node->IsInError() && node->GetStateMessage().empty()) {
      subject.Fail(
          "evaluated in a graph the node is in an error state without a message; SetState is given one line "
          "that names the cause");
      return;
    }
  }
  subject.At("deleting it from the graph");
  engine.DeleteNode(node);
}

void CheckInputsUntouched(Subject& subject) {
  const RefPtr<Node> node = subject.MakeNode();
  if (!node) return;
  const std::vector<Setup> setups = MakeManySetups(*node);
  for (const bool enabled : {true, false}) {
    node->SetEnabled(enabled);
    for (const Setup& setup : setups) {
      std::vector<OutputCopy> before;
      for (const RefPtr<Image>& image : setup.images) before.push_back(CopyOf(*image));
      Evaluate(subject, *node, setup);
      for (std::size_t i = 0; i < before.size(); ++i) {
        if (AreSame(CopyOf(*setup.images[i]), before[i])) continue;
        subject.Fail("after evaluating " + setup.about +
                     " an input is changed; inputs belong to other nodes, so a node copies what it changes");
        return;
      }
    }
  }
}

void CheckMemoryBounds(Subject& subject) {
  const RefPtr<Node> node = subject.MakeNode();
  if (!node) return;
  GuardedMemory& memory = subject.GetMemory();
  // First with margins that bear a write and show it to the byte, then with margins that not even bear reading.
  for (const auto margins : {GuardedMemory::Margins::kWatched, GuardedMemory::Margins::kForbidden}) {
    memory.SetMargins(margins);
    memory.TakeDamage();
    for (const bool enabled : {true, false}) {
      node->SetEnabled(enabled);
      for (const Setup& setup : MakeManySetups(*node)) {
        Evaluate(subject, *node, setup);
        const std::string damage = memory.TakeDamage();
        if (damage.empty()) continue;
        memory.SetMargins(GuardedMemory::Margins::kWatched);
        subject.Fail("evaluating " + setup.about + " writes outside an image, " + damage +
                     "; a node writes only the samples of its own output");
        return;
      }
    }
  }
  memory.SetMargins(GuardedMemory::Margins::kWatched);
}

void CheckReferences(Subject& subject) {
  RefPtr<Node> node = subject.MakeNode();
  if (!node) return;
  // Two references more than needed, so that one that is released too often is seen and does no harm.
  constexpr std::uint32_t kHeld = 3;
  for (const bool enabled : {true, false}) {
    const Setup setup = MakeSetup(kOrdinarySize, ColorMode::kValue, Samples::kOrdinary);
    for (const RefPtr<Image>& image : setup.images) {
      for (std::uint32_t i = 1; i < kHeld; ++i) image->AddRef();
    }
    if (!node) node = subject.MakeNode();
    node->SetEnabled(enabled);
    const NodeWatch watch(*node);
    for (int round = 0; round < 2; ++round) Evaluate(subject, *node, setup);
    if (node->GetRefCount() != 1) {
      subject.Fail("after two evaluations the node has " + std::to_string(node->GetRefCount()) +
                   " references and not the host's one; a node takes none of itself");
      return;
    }
    std::vector<std::pair<unsigned, RefPtr<Image>>> outputs;
    for (unsigned output = 0; output < node->GetOutplugs().size(); ++output) {
      RefPtr<Image> image(node->GetOutputImage(output));
      if (!image) continue;
      for (std::uint32_t i = 1; i < kHeld; ++i) image->AddRef();
      outputs.emplace_back(output, std::move(image));
    }
    subject.At("sending event 11 (drop cached results)");
    DropResults(*node);
    subject.At("releasing the node");
    std::vector<std::string> names;
    names.reserve(outputs.size());
    for (const auto& [output, image] : outputs) names.push_back(NameOf(*node, output));
    node.Reset();
    if (watch.IsAlive()) {
      subject.Fail("a node is not destroyed when the host releases it; nothing else may hold a reference to it");
      return;
    }
    const auto judge = [&](const Image& image, const std::string& which) {
      const std::uint32_t count = image.GetRefCount();
      if (count == kHeld) return;
      subject.Fail(which + " has " + std::to_string(count) + " references and not the host's " + std::to_string(kHeld) +
                   " when the node is gone; " +
                   (count > kHeld ? "a node releases what it holds when it goes"
                                  : "a node releases no more references than it took"));
    };
    for (std::size_t i = 0; i < outputs.size(); ++i) {
      // What is handed through from an input is judged there.
      const bool is_input = std::any_of(setup.images.begin(), setup.images.end(), [&](const RefPtr<Image>& image) {
        return image.Get() == outputs[i].second.Get();
      });
      if (!is_input) judge(*outputs[i].second, "an image of " + names[i]);
      for (std::uint32_t k = 1; k < kHeld && outputs[i].second->GetRefCount() > 1; ++k) outputs[i].second->Release();
    }
    outputs.clear();
    for (const RefPtr<Image>& image : setup.images) {
      judge(*image, "an input image");
      for (std::uint32_t k = 1; k < kHeld && image->GetRefCount() > 1; ++k) image->Release();
    }
    if (subject.HasFailed()) return;
  }
}

void CheckLeaks(Subject& subject) {
  if (subject.GetDescriptor() == nullptr) return;
  const auto get_descriptor = subject.GetEntryPoints().get_descriptor;
  const Setup setup = MakeSetup(kOrdinarySize, ColorMode::kValue, Samples::kOrdinary);
  SetNumThreads(1);
  const auto round = [&] {
    const RefPtr<NodeInterface> descriptor(get_descriptor(subject.GetIndex()));
    if (!descriptor || descriptor->GetNodeFactory() == nullptr) return;
    const RefPtr<Node> node(descriptor->GetNodeFactory()->CreateNode());
    if (!node) return;
    Evaluate(subject, *node, setup, false);
    Evaluate(subject, *node, setup, false);
    DropResults(*node);
    Evaluate(subject, *node, setup, false);
  };
  const auto count_images = [&](int rounds) {
    const std::size_t before = subject.GetMemory().GetNumBlocks();
    for (int i = 0; i < rounds; ++i) round();
    return static_cast<std::ptrdiff_t>(subject.GetMemory().GetNumBlocks() - before);
  };
  subject.At("making a node, evaluating it three times and releasing it, again and again");
  // What a library sets up once is not a leak.
  constexpr int kRounds = 32;
  count_images(kRounds);
  const std::ptrdiff_t images = count_images(kRounds);
  if (images >= kRounds) {
    subject.Fail(std::to_string(kRounds) +
                 " rounds of making a node, evaluating it three times and releasing it leave " +
                 std::to_string(images) + " images behind; a node releases the images that it made");
  } else {
    // Growth in each of several batches, at least one small object per round: allocators keep some memory themselves.
    constexpr int kBatches = 4;
    constexpr std::size_t kSmallest = 16;
    std::size_t least = std::numeric_limits<std::size_t>::max();
    for (int batch = 0; batch < kBatches && least >= kSmallest * kRounds; ++batch) {
      const std::size_t before = GetUsedBytes();
      for (int i = 0; i < kRounds; ++i) round();
      const std::size_t after = GetUsedBytes();
      least = std::min(least, after > before ? after - before : 0);
    }
    if (least >= kSmallest * kRounds) {
      subject.Fail("each round of making a node, evaluating it three times and releasing it leaves about " +
                   std::to_string(least / kRounds) + " bytes behind; a node gives back all that it allocates");
    }
  }
  SetNumThreads(0);
}

void CheckRepeatable(Subject& subject) {
  const RefPtr<Node> node = subject.MakeNode();
  if (!node) return;
  GuardedMemory& memory = subject.GetMemory();
  constexpr float kFirstFill = 0.75F;
  constexpr float kOtherFill = -3.5F;
  std::vector<Setup> setups = MakeManySetups(*node);
  setups.push_back(MakeSetup({17, 3}, ColorMode::kColor, Samples::kAwkward));
  for (const Setup& setup : setups) {
    memory.SetFill(kFirstFill);
    const Trial first = Evaluate(subject, *node, CopyOf(setup));
    // Other contents of fresh memory show samples that were never written.
    memory.SetFill(kOtherFill);
    std::string difference = FindDifference(*node, first, Evaluate(subject, *node, CopyOf(setup)));
    if (difference.empty()) {
      // What was evaluated before must not matter, nor which of the nodes does it.
      Evaluate(subject, *node, MakeSetup(kOrdinarySize, ColorMode::kSigned, Samples::kAwkward));
      difference = FindDifference(*node, first, Evaluate(subject, *node, CopyOf(setup)));
    }
    if (difference.empty()) {
      const RefPtr<Node> other = subject.MakeNode();
      if (other) difference = FindDifference(*node, first, Evaluate(subject, *other, CopyOf(setup)));
    }
    memory.SetFill(kFirstFill);
    if (difference.empty()) continue;
    subject.Fail("evaluated twice with the same " + setup.about + ", " + difference +
                 "; a result follows from the inputs alone, and every sample has to be written");
    return;
  }
}

void CheckThreads(Subject& subject) {
  const RefPtr<Node> node = subject.MakeNode();
  if (!node) return;
  for (const unsigned mode : {ColorMode::kValue, ColorMode::kColor}) {
    const Setup setup = MakeSetup(kLargeSize, mode, Samples::kAwkward);
    const auto run = [&](std::size_t threads) {
      // Its own images each time: what an image knows of its range must not carry over from the run before.
      const Setup own = CopyOf(setup);
      SetNumThreads(threads);
      return Evaluate(subject, *node, own);
    };
    const Trial first = run(1);
    for (const std::size_t threads : {std::size_t{2}, std::size_t{5}}) {
      const std::string difference = FindDifference(*node, first, run(threads));
      if (difference.empty()) continue;
      SetNumThreads(0);
      subject.Fail("evaluated with 1 and with " + std::to_string(threads) + " threads, " + difference +
                   "; the number of threads must not change a result");
      return;
    }
  }
  SetNumThreads(0);
}

}  // namespace ScEng
