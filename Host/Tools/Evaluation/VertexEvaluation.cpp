// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/Evaluation/VertexEvaluation.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <exception>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Image/Oversize.h"
#include "Host/Image/PendingImage.h"
#include "Host/Tools/Evaluation/JoinedPasses.h"
#include "Host/Tools/Evaluation/NodeCalls.h"
#include "Host/Tools/Evaluation/NodeImages.h"
#include "Host/Tools/PlugValue.h"
#include "Host/Tools/RunningCall.h"
#include "Host/Util/EvaluationScope.h"

namespace ScEng {
namespace {

bool IsFailed(const NodeConnection& input) {
  const NodeVertex& from = input.From();
  return from.GetOverride(input.outplug) == nullptr && (from.blocked || from.node->IsInError());
}

bool HasFailedInput(const NodeVertex& vertex) {
  return std::any_of(vertex.inputs.begin(), vertex.inputs.end(),
                     [](const auto& input) { return IsFailed(input.second); });
}

PlugValue ReadOutput(const NodeVertex& vertex, unsigned outplug) {
  if (const Image* image = vertex.GetOverride(outplug)) return PlugValue(image);
  Node& node = *vertex.node;
  if (node.GetOutplugs()[outplug].type != PlugType::kImage) {
    return CallNode(node, "GetOutputValue", PlugValue(), [&] { return node.GetOutputValue(outplug); });
  }
  const Image* image = GetOwnImage(node, outplug);
  return image != nullptr ? PlugValue(image) : PlugValue();
}

std::vector<PlugValue> GatherInputs(NodeVertex& vertex) {
  Node& node = *vertex.node;
  const auto regular_inputs = static_cast<unsigned>(node.GetNumRegularInputs());
  const auto inplugs = static_cast<unsigned>(node.GetInplugs().size());
  std::vector<PlugValue> values;
  auto input = vertex.inputs.begin();
  for (unsigned inplug = 0; inplug < inplugs; ++inplug) {
    const std::size_t before = values.size();
    bool connected = false;
    for (; input != vertex.inputs.end() && input->second.inplug == inplug; ++input) {
      values.push_back(ReadOutput(input->second.From(), input->second.outplug));
      connected = true;
    }
    if (!connected) {
      const bool is_attribute = inplug >= regular_inputs;
      values.push_back(is_attribute ? node.GetAttribute(inplug - regular_inputs)->GetValue() : PlugValue());
    }
    if (inplug < regular_inputs) {
      node.SetRegularInputEntries(inplug, static_cast<unsigned>(values.size() - before));
    }
  }
  return values;
}

/// What a node is given.
struct Inputs {
  std::vector<PlugValue> values;
  // Images that stand in for pending ones.
  std::vector<ImagePtr> settled;
};

/// False where the evaluation was stopped, whatever the node made of that.
bool EvaluateOutput(Node& node, unsigned outplug, Inputs& inputs, bool may_be_pending, const Engine::Options& options) {
  std::optional<EvaluationScope> scope;
  if (options.cancellation != nullptr || options.on_progress) {
    EvaluationScope::Progress progress;
    if (options.on_progress) progress = [&](double fraction) { options.on_progress(node, fraction); };
    scope.emplace(options.cancellation, std::move(progress));
  }
  const std::string label = CallNode(node, "GetName", std::string("a node"), [&] { return node.GetLabel(); });
  const RunningScope running({"Evaluate", label.c_str(), FindLibraryOf(node)});
  const PendingScope pending(may_be_pending);
  bool failed = true;
  try {
    SettleInputs(node, inputs.values, inputs.settled);
    node.Evaluate(outplug, inputs.values);
    failed = false;
  } catch (const Canceled&) {
    return false;
  } catch (const std::length_error&) {
    node.SetState(outplug, Node::State::kError, kOversizeMessage);
  } catch (const std::bad_alloc&) {
    node.SetState(outplug, Node::State::kError, kOversizeMessage);
  } catch (const std::exception& error) {
    node.SetState(outplug, Node::State::kError, error.what());
  } catch (...) {
    node.SetState(outplug, Node::State::kError, "The node failed with an exception of unknown type.");
  }
  if (scope && scope->WasStopped()) return false;
  if (failed) Tell(node, NodeEvent::kDropCachedResults);
  return true;
}

}  // namespace

void EvaluateVertex(NodeVertex& vertex, const Engine::Options& options) {
  if (options.cancellation != nullptr && options.cancellation->IsRequested()) throw Stopped();
  Node& node = *vertex.node;
  const bool was_dirty = vertex.dirty;
  vertex.blocked = HasFailedInput(vertex);
  node.SetState(0, Node::State::kIdle, {});
  Inputs inputs;
  if (!vertex.blocked) {
    inputs.values = GatherInputs(vertex);
    // An output may have failed only now that it was read.
    vertex.blocked = HasFailedInput(vertex);
  }
  // Only now: what was thrown so far leaves the node to be evaluated.
  vertex.dirty = false;
  // A node with several outputs computes each at its own request, so an old one could pass for a new one. A node with
  // one output keeps it: some show their last result while they are disabled.
  if (vertex.blocked || (was_dirty && vertex.valid.size() > 1)) Tell(node, NodeEvent::kDropCachedResults);
  // Of an image that is pending this evaluation may need the samples.
  if (was_dirty || vertex.is_pending) vertex.valid.assign(vertex.valid.size(), false);
  vertex.is_pending = false;
  if (vertex.blocked) {
    vertex.valid.assign(vertex.valid.size(), true);
    return;
  }

  const bool may_be_pending = MayBePending(vertex, options);
  const auto begun = std::chrono::steady_clock::now();
  for (unsigned outplug = 0; outplug < vertex.wanted.size() && !node.IsInError(); ++outplug) {
    if (!vertex.wanted[outplug] || vertex.valid[outplug]) continue;
    const bool is_to_stop = options.cancellation != nullptr && options.cancellation->IsRequested();
    if (is_to_stop || !EvaluateOutput(node, outplug, inputs, may_be_pending, options)) {
      // No partial or earlier result stays. Where the node was up to date but for this output, what depends on the
      // others still is.
      DropResults(vertex);
      vertex.dirty = was_dirty;
      node.SetState(0, Node::State::kIdle, {});
      throw Stopped();
    }
    vertex.valid[outplug] = true;
    HandOnMetadata(node, inputs.values);
    // Some nodes make all their outputs at once.
    for (unsigned other = 0; other < node.GetOutplugs().size(); ++other) {
      if (GetOwnImage(node, other) != nullptr) vertex.valid[other] = true;
    }
  }
  vertex.is_pending = may_be_pending && HoldsPending(node);
  const auto ended = std::chrono::steady_clock::now();
  vertex.statistics.seconds = std::chrono::duration<double>(ended - begun).count();
  ++vertex.statistics.evaluations;
  vertex.statistics.bytes_made = CountBytes(node);
  // An error stands until something changes; it is not tried again for each output.
  if (node.IsInError()) vertex.valid.assign(vertex.valid.size(), true);
  if (node.GetState() == Node::State::kIdle) node.SetState(0, Node::State::kReady, {});
  if (options.on_timed) options.on_timed(node, {begun, ended, CountBytes(inputs.values), vertex.statistics.bytes_made});
}

}  // namespace ScEng
