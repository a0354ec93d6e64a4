// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/Engine.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <queue>
#include <stdexcept>
#include <unordered_map>
#include <utility>

#include "Host/Image/Image.h"
#include "Host/Image/ImageMetadata.h"
#include "Host/Image/Oversize.h"
#include "Host/Image/PendingImage.h"
#include "Host/Image/SampleMemoryScope.h"
#include "Host/Tools/AcyclicGraph.h"
#include "Host/Tools/Guard.h"
#include "Host/Tools/NodeRecord.h"
#include "Host/Tools/RunningCall.h"
#include "Host/Tools/TypeGuard.h"
#include "Host/Util/EvaluationScope.h"
#include "Host/Util/Log.h"

namespace {

using ScEng::AcyclicGraph;
using ScEng::ImageMetadata;
using ScEng::RefPtr;
using ScEng::Status;

struct Vertex;

struct Connection : AcyclicGraph::Edge {
  Connection(Vertex& starts_at, unsigned starts_at_outplug, Vertex& ends_at, unsigned ends_at_inplug,
             unsigned ends_at_index);
  [[nodiscard]] Vertex& From() const;
  [[nodiscard]] Vertex& To() const;

  unsigned outplug;
  unsigned inplug;
  unsigned index;
};

/// A node and what the engine keeps about it.
struct Vertex : AcyclicGraph::Vertex {
  RefPtr<Node> node;
  // By input plug and index: the order in which a node receives them.
  std::map<std::pair<unsigned, unsigned>, Connection> inputs;
  // Something that the result depends on has changed. Everything downstream of a dirty vertex is dirty too.
  bool dirty = true;
  bool blocked = false;
  // Which outputs hold the result of the last evaluation (one entry also for a node without outputs).
  std::vector<bool> valid;
  // Images that stand in for outputs; empty where none ever did.
  std::vector<ImagePtr> overrides;
  Engine::NodeStatistics statistics;

  // ---- Of the evaluation that is running, whose number they carry ----
  std::uint64_t evaluation = 0;
  bool visited = false;
  bool needed = false;
  std::vector<bool> wanted;
  // Connections and requests that still need this node's results.
  std::size_t uses = 0;
  // The last one that was found to need them.
  Vertex* user = nullptr;
  // The one that is evaluated next.
  Vertex* next = nullptr;
  // Whether its image, which is pending, is computed from more than one.
  bool holds_several = false;
  bool requested = false;

  [[nodiscard]] Image* GetOverride(unsigned outplug) const {
    return outplug < overrides.size() ? overrides[outplug].Get() : nullptr;
  }
};

Connection::Connection(Vertex& starts_at, unsigned starts_at_outplug, Vertex& ends_at, unsigned ends_at_inplug,
                       unsigned ends_at_index)
    : Edge(starts_at, ends_at), outplug(starts_at_outplug), inplug(ends_at_inplug), index(ends_at_index) {}
Vertex& Connection::From() const { return static_cast<Vertex&>(*from); }
Vertex& Connection::To() const { return static_cast<Vertex&>(*to); }

const Connection& AsConnection(const AcyclicGraph::Edge* edge) { return *static_cast<const Connection*>(edge); }

/// Calls an operation of a node. An exception becomes the node's error state.
template <class Result, class Function>
Result CallNode(Node& node, const char* operation, Result fallback, const Function& function) {
  Status status;
  Result result = ScEng::CallGuarded(operation, status, std::move(fallback), function);
  if (status.IsError()) node.SetState(0, Node::State::kError, status.GetMessage());
  return result;
}

void Tell(Node& node, std::uint32_t kind) {
  NodeEvent event;
  event.kind = kind;
  CallNode(node, "OnProcessEvent", false, [&] { return node.OnProcessEvent(event); });
}

Image* GetOwnImage(Node& node, unsigned outplug) {
  return CallNode<Image*>(node, "GetOutputImage", nullptr, [&] { return node.GetOutputImage(outplug); });
}

std::string NameOf(Node& node) {
  return CallNode(node, "GetName", std::string("a node"), [&] { return node.GetName(); });
}

/// The bytes of the samples of some images, of each one once. A pending image has none.
std::size_t CountBytes(std::vector<const Image*> images) {
  std::sort(images.begin(), images.end());
  images.erase(std::unique(images.begin(), images.end()), images.end());
  std::size_t bytes = 0;
  for (const Image* image : images) {
    if (image != nullptr && !ScEng::IsPending(*image)) bytes += image->GetNumSamples() * sizeof(float);
  }
  return bytes;
}

/// The bytes of all samples that a node's outputs hold.
std::size_t CountBytes(Node& node) {
  std::vector<const Image*> images;
  for (unsigned outplug = 0; outplug < node.GetOutplugs().size(); ++outplug) {
    images.push_back(GetOwnImage(node, outplug));
  }
  return CountBytes(std::move(images));
}

/// The same of what it is given.
std::size_t CountBytes(const std::vector<PlugValue>& inputs) {
  std::vector<const Image*> images;
  for (const PlugValue& input : inputs) images.push_back(input.GetImage());
  return CountBytes(std::move(images));
}

/// What the images that a node makes of `inputs` carry: the metadata of the first image that has any, and opacity
/// unless all images came from files without.
std::shared_ptr<const ImageMetadata> CombineMetadata(const std::vector<const Image*>& inputs) {
  std::shared_ptr<const ImageMetadata> first;
  bool has_opacity = false;
  bool is_of_files = true;
  for (const Image* image : inputs) {
    const auto& metadata = image->GetMetadata();
    const bool is_known = metadata != nullptr && metadata->had_opacity.has_value();
    has_opacity = has_opacity || (is_known && *metadata->had_opacity);
    is_of_files = is_of_files && is_known;
    if (metadata && (!first || (first->IsEmpty() && !metadata->IsEmpty()))) first = metadata;
  }
  std::optional<bool> had_opacity;
  if (has_opacity || is_of_files) had_opacity = has_opacity;
  if (!first || first->had_opacity == had_opacity) return first;
  auto combined = std::make_shared<ImageMetadata>(*first);
  combined->had_opacity = had_opacity;
  return combined;
}

/// Hands on what the input images carry to the images that a node has made of them.
void HandOnMetadata(Node& node, const std::vector<PlugValue>& inputs) {
  std::vector<const Image*> images;
  for (const PlugValue& input : inputs) {
    if (const Image* image = input.GetImage()) images.push_back(image);
  }
  if (images.empty()) return;
  const auto metadata = CombineMetadata(images);
  for (unsigned outplug = 0; outplug < node.GetOutplugs().size(); ++outplug) {
    Image* image = GetOwnImage(node, outplug);
    const bool is_input = std::find(images.begin(), images.end(), image) != images.end();
    if (image != nullptr && !is_input) image->SetMetadata(metadata);
  }
}

/// Ends an evaluation at a node that was stopped.
struct Stopped {};

}  // namespace

class Engine::Graph {
 public:
  ~Graph() {
    while (!vertices_.empty()) Delete(vertices_.begin()->first);
  }

  Node* Add(Node* node, Status& status) {
    auto vertex = std::make_unique<Vertex>();
    vertex->node.Reset(node);
    vertex->valid.assign(std::max<std::size_t>(node->GetOutplugs().size(), 1), false);
    Vertex* raw = vertex.get();
    vertices_.emplace(node, std::move(vertex));
    order_.Add(*raw);
    node->SetChangeListener([raw](Node&) { MarkDirty(*raw); });
    const Status added = ScEng::CallGuarded("OnAdded", [&] { node->OnAdded(); });
    if (!added.IsError()) return node;
    // It has not joined, so it does not leave either.
    status = added;
    node->SetChangeListener(nullptr);
    order_.Remove(*raw);
    vertices_.erase(node);
    return nullptr;
  }

  bool Delete(const Node* node) {
    Vertex* vertex = Find(node);
    if (vertex == nullptr) return false;
    while (!vertex->inputs.empty()) Disconnect(vertex->inputs.begin()->second);
    while (!vertex->out.empty()) Disconnect(AsConnection(vertex->out.back()));
    vertex->node->SetChangeListener(nullptr);
    const Status removed = ScEng::CallGuarded("OnRemoved", [&] { vertex->node->OnRemoved(); });
    if (removed.IsError()) Log::Error("%s: %s", NameOf(*vertex->node).c_str(), removed.GetMessage().c_str());
    order_.Remove(*vertex);
    vertices_.erase(node);
    return true;
  }

  [[nodiscard]] Vertex* Find(const Node* node) const {
    const auto found = vertices_.find(node);
    return found == vertices_.end() ? nullptr : found->second.get();
  }

  [[nodiscard]] std::vector<Node*> GetNodes() const {
    std::vector<Node*> nodes;
    nodes.reserve(vertices_.size());
    for (const auto& [node, vertex] : vertices_) nodes.push_back(vertex->node.Get());
    return nodes;
  }

  Status Connect(Vertex& from, unsigned from_outplug, Vertex& to, unsigned to_inplug, unsigned to_index) {
    const PlugRecord& inplug = to.node->GetInplugs()[to_inplug];
    const PlugRecord& outplug = from.node->GetOutplugs()[from_outplug];
    if (inplug.type != outplug.type) {
      return Status::Error(std::string("an output of kind ") + PlugType::GetName(outplug.type) +
                           " cannot feed an input of kind " + PlugType::GetName(inplug.type));
    }
    const bool takes_many = inplug.connections == PlugRecord::kAnyNumber;
    if (!takes_many && to_index != 0) {
      return Status::Error("input \"" + inplug.name + "\" takes one connection, so its index is 0, not " +
                           std::to_string(to_index));
    }
    const auto [place, is_free] =
        to.inputs.try_emplace({to_inplug, to_index}, from, from_outplug, to, to_inplug, to_index);
    if (!is_free) {
      return Status::Error("input \"" + inplug.name + "\" is connected already" +
                           (takes_many ? " at index " + std::to_string(to_index) : ""));
    }
    if (!order_.Connect(place->second)) {
      to.inputs.erase(place);
      return Status::Error("it would close a cycle");
    }
    MarkDirty(to);
    TellSource(place->second, from.node.Get());
    return {};
  }

  bool Disconnect(Vertex& from, unsigned outplug, Vertex& to, unsigned inplug, unsigned index) {
    const auto found = to.inputs.find({inplug, index});
    if (found == to.inputs.end() || &found->second.From() != &from || found->second.outplug != outplug) return false;
    Disconnect(found->second);
    return true;
  }

  void SetOverride(Vertex& vertex, unsigned outplug, const ImagePtr& image) {
    if (vertex.overrides.empty()) {
      if (!image) return;
      vertex.overrides.resize(vertex.valid.size());
    }
    ImagePtr& place = vertex.overrides[outplug];
    if (!image && !place) return;
    place = image;
    for (const AcyclicGraph::Edge* output : vertex.out) {
      if (AsConnection(output).outplug == outplug) MarkDirty(AsConnection(output).To());
    }
  }

  Outcome Evaluate(const std::vector<Request>& requests, const Options& options) {
    const ScEng::SampleMemoryScope memory;
    const std::vector<Vertex*> order = Plan(requests);
    for (std::size_t i = 1; i < order.size(); ++i) order[i - 1]->next = order[i];
    std::size_t done = 0;
    const auto release_waiting = [&](std::size_t count) {
      if (!options.release_results) return;
      for (std::size_t i = 0; i < std::min(count, order.size()); ++i) ReleaseAll(*order[i]);
    };
    try {
      for (Vertex* vertex : order) {
        EvaluateVertex(*vertex, options);
        if (options.release_results) {
          for (const auto& [place, input] : vertex->inputs) {
            if (input.From().GetOverride(input.outplug) == nullptr) ReleaseUse(input.From());
          }
        }
        ++done;
        if (options.on_evaluated) options.on_evaluated(*vertex->node, done, order.size());
        if (options.release_results && vertex->requested) ReleaseUse(*vertex);
      }
    } catch (const Stopped&) {
      release_waiting(done);
      return Outcome::kCanceled;
    } catch (...) {
      // No pending image outlives its evaluation, also where one of the functions of the options ends it.
      release_waiting(done + 1);
      throw;
    }
    return Outcome::kComplete;
  }

 private:
  void Disconnect(const Connection& connection) {
    Vertex& to = connection.To();
    const auto place = to.inputs.find({connection.inplug, connection.index});
    order_.Disconnect(place->second);
    MarkDirty(to);
    TellSource(connection, nullptr);
    to.inputs.erase(place);
  }

  /// Tells a node what feeds the plug of one of its attributes now.
  static void TellSource(const Connection& connection, const Node* from) {
    Node& node = *connection.To().node;
    const std::size_t inputs = node.GetNumRegularInputs();
    if (connection.inplug < inputs) return;
    node.SetAttributeSource(static_cast<unsigned>(connection.inplug - inputs), from, connection.outplug);
  }

  static void MarkDirty(Vertex& start) {
    // Everything downstream of a dirty vertex is dirty already. A new vertex is dirty from the start, so that building
    // a graph costs nothing here.
    if (start.dirty) return;
    std::vector<Vertex*> pending{&start};
    while (!pending.empty()) {
      Vertex& vertex = *pending.back();
      pending.pop_back();
      vertex.dirty = true;
      for (const AcyclicGraph::Edge* output : vertex.out) {
        Vertex& to = AsConnection(output).To();
        if (!to.dirty) pending.push_back(&to);
      }
    }
  }

  static bool IsUpToDate(const Vertex& vertex) {
    if (vertex.dirty) return false;
    for (std::size_t i = 0; i < vertex.wanted.size(); ++i) {
      if (vertex.wanted[i] && !vertex.valid[i]) return false;
    }
    return true;
  }

  /// Makes a vertex ready for the plan, unless it is.
  void Enter(Vertex& vertex) const {
    if (vertex.evaluation == evaluation_) return;
    vertex.evaluation = evaluation_;
    vertex.visited = false;
    vertex.needed = false;
    vertex.requested = false;
    vertex.uses = 0;
    vertex.user = nullptr;
    vertex.next = nullptr;
    vertex.holds_several = false;
    vertex.wanted.assign(vertex.valid.size(), false);
  }

  /// The vertices that have to be evaluated, each after everything that it depends on. Looks only at these and at what
  /// feeds them.
  std::vector<Vertex*> Plan(const std::vector<Request>& requests) {
    ++evaluation_;
    // The latest vertex comes first: then whether it is up to date can be decided, since all that can want something of
    // it has been looked at.
    const auto comes_later = [](const Vertex* a, const Vertex* b) { return AcyclicGraph::IsBefore(*a, *b); };
    std::priority_queue<Vertex*, std::vector<Vertex*>, decltype(comes_later)> candidates(comes_later);
    const auto want = [&](Vertex& vertex, unsigned outplug) {
      if (!std::exchange(vertex.visited, true)) candidates.push(&vertex);
      vertex.wanted[outplug] = true;
    };
    std::vector<Vertex*> roots;
    for (const Request& request : requests) {
      Vertex* vertex = Find(request.node);
      if (vertex == nullptr || request.outplug >= vertex->valid.size()) continue;
      Enter(*vertex);
      if (vertex->GetOverride(request.outplug) != nullptr) continue;
      want(*vertex, request.outplug);
      if (!std::exchange(vertex->requested, true)) ++vertex->uses;
      roots.push_back(vertex);
    }
    while (!candidates.empty()) {
      Vertex& vertex = *candidates.top();
      candidates.pop();
      if (IsUpToDate(vertex)) continue;
      vertex.needed = true;
      for (const auto& [place, input] : vertex.inputs) {
        Vertex& from = input.From();
        if (from.GetOverride(input.outplug) != nullptr) continue;
        Enter(from);
        want(from, input.outplug);
        ++from.uses;
        from.user = &vertex;
      }
    }
    return CollectNeeded(roots);
  }

  /// What is needed, every vertex after what it depends on, and as late as that allows, so that few results wait to be
  /// used. No recursion: graphs may be deep.
  std::vector<Vertex*> CollectNeeded(const std::vector<Vertex*>& roots) const {
    std::vector<Vertex*> post_order;
    std::vector<std::pair<Vertex*, decltype(Vertex::inputs)::const_iterator>> stack;
    const auto enter = [&](Vertex& vertex) {
      if (vertex.evaluation != evaluation_ || !std::exchange(vertex.needed, false)) return;
      stack.emplace_back(&vertex, vertex.inputs.cbegin());
    };
    for (Vertex* root : roots) {
      enter(*root);
      while (!stack.empty()) {
        auto& [vertex, next] = stack.back();
        if (next == vertex->inputs.cend()) {
          post_order.push_back(vertex);
          stack.pop_back();
          continue;
        }
        enter((next++)->second.From());
      }
    }
    return post_order;
  }

  static bool IsFailed(const Connection& input) {
    const Vertex& from = input.From();
    return from.GetOverride(input.outplug) == nullptr && (from.blocked || from.node->IsInError());
  }

  static bool HasFailedInput(const Vertex& vertex) {
    return std::any_of(vertex.inputs.begin(), vertex.inputs.end(),
                       [](const auto& input) { return IsFailed(input.second); });
  }

  static std::vector<PlugValue> GatherInputs(Vertex& vertex) {
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

  static PlugValue ReadOutput(const Vertex& vertex, unsigned outplug) {
    if (const Image* image = vertex.GetOverride(outplug)) return PlugValue(image);
    Node& node = *vertex.node;
    if (node.GetOutplugs()[outplug].type != PlugType::kImage) {
      return CallNode(node, "GetOutputValue", PlugValue(), [&] { return node.GetOutputValue(outplug); });
    }
    const Image* image = GetOwnImage(node, outplug);
    return image != nullptr ? PlugValue(image) : PlugValue();
  }

  /// Whether a node's passes may be joined with those of others; see `NodeRecord::joins`.
  static bool Joins(const Node& node) {
    const NodeRecord* const record = node.GetRecord();
    return record != nullptr && record->joins && node.IsEnabled() && node.GetOutplugs().size() == 1;
  }

  /// Whether a node reads of its inputs the samples at the same place alone, as its attributes are set.
  static bool ReadsNoRange(Node& node) {
    std::vector<PlugValue> inputs(node.GetNumRegularInputs());
    for (unsigned input = 0; input < inputs.size(); ++input) node.SetRegularInputEntries(input, 1);
    for (std::size_t id = 0; id < node.GetNumAttributes(); ++id) inputs.push_back(node.GetAttribute(id)->GetValue());
    const Reach reach = CallNode(node, "GetReach", Reach(), [&] { return node.GetReach(inputs); });
    return reach == Reach::Samples();
  }

  /// Whether a pending image of the vertex would be computed from more than one image.
  static bool HoldsSeveral(const Vertex& vertex) {
    const std::size_t regular_inputs = vertex.node->GetNumRegularInputs();
    std::size_t images = 0;
    for (const auto& [place, input] : vertex.inputs) {
      if (place.first >= regular_inputs) continue;
      ++images;
      if (input.From().holds_several && input.From().evaluation == vertex.evaluation) return true;
    }
    return images > 1;
  }

  /// Whether the image that a node makes may be a pending one: it is for one other node alone, which computes with it
  /// and no more. Where times are asked for, each node takes its own.
  static bool MayBePending(Vertex& vertex, const Options& options) {
    if (!options.release_results || options.on_timed || vertex.uses != 1 || vertex.requested) return false;
    if (!Joins(*vertex.node) || !Joins(*vertex.user->node) || !ReadsNoRange(*vertex.user->node)) return false;
    vertex.holds_several = HoldsSeveral(vertex);
    // Images are not held in place of a single one while others are made.
    return !vertex.holds_several || vertex.next == vertex.user;
  }

  /// Throws `Stopped`.
  static void EvaluateVertex(Vertex& vertex, const Options& options) {
    if (options.cancellation != nullptr && options.cancellation->IsRequested()) throw Stopped();
    Node& node = *vertex.node;
    const bool was_dirty = vertex.dirty;
    vertex.blocked = HasFailedInput(vertex);
    node.SetState(0, Node::State::kIdle, {});
    std::vector<PlugValue> inputs;
    if (!vertex.blocked) {
      inputs = GatherInputs(vertex);
      // An output may have failed only now that it was read.
      vertex.blocked = HasFailedInput(vertex);
    }
    // Only now: what was thrown so far leaves the node to be evaluated.
    vertex.dirty = false;
    // A node with several outputs computes each at its own request, so an old one could pass for a new one. A node with
    // one output keeps it: some show their last result while they are disabled.
    if (vertex.blocked || (was_dirty && vertex.valid.size() > 1)) Tell(node, NodeEvent::kDropCachedResults);
    if (was_dirty) vertex.valid.assign(vertex.valid.size(), false);
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
        Tell(node, NodeEvent::kDropCachedResults);
        vertex.valid.assign(vertex.valid.size(), false);
        vertex.dirty = was_dirty;
        node.SetState(0, Node::State::kIdle, {});
        throw Stopped();
      }
      vertex.valid[outplug] = true;
      HandOnMetadata(node, inputs);
      // Some nodes make all their outputs at once.
      for (unsigned other = 0; other < node.GetOutplugs().size(); ++other) {
        if (GetOwnImage(node, other) != nullptr) vertex.valid[other] = true;
      }
    }
    const auto ended = std::chrono::steady_clock::now();
    vertex.statistics.seconds = std::chrono::duration<double>(ended - begun).count();
    ++vertex.statistics.evaluations;
    vertex.statistics.bytes_made = CountBytes(node);
    // An error stands until something changes; it is not tried again for each output.
    if (node.IsInError()) vertex.valid.assign(vertex.valid.size(), true);
    if (node.GetState() == Node::State::kIdle) node.SetState(0, Node::State::kReady, {});
    if (options.on_timed) options.on_timed(node, {begun, ended, CountBytes(inputs), vertex.statistics.bytes_made});
  }

  /// False where the evaluation was stopped, whatever the node made of that.
  static bool EvaluateOutput(Node& node, unsigned outplug, const std::vector<PlugValue>& inputs, bool may_be_pending,
                             const Options& options) {
    std::optional<ScEng::EvaluationScope> scope;
    if (options.cancellation != nullptr || options.on_progress) {
      ScEng::EvaluationScope::Progress progress;
      if (options.on_progress) progress = [&](double fraction) { options.on_progress(node, fraction); };
      scope.emplace(options.cancellation, std::move(progress));
    }
    const std::string label = CallNode(node, "GetName", std::string("a node"), [&] { return node.GetLabel(); });
    const ScEng::RunningScope running({"Evaluate", label.c_str(), ScEng::FindLibraryOf(node)});
    const ScEng::PendingScope pending(may_be_pending);
    bool failed = true;
    try {
      node.Evaluate(outplug, inputs);
      failed = false;
    } catch (const ScEng::Canceled&) {
      return false;
    } catch (const std::length_error&) {
      node.SetState(outplug, Node::State::kError, ScEng::kOversizeMessage);
    } catch (const std::bad_alloc&) {
      node.SetState(outplug, Node::State::kError, ScEng::kOversizeMessage);
    } catch (const std::exception& error) {
      node.SetState(outplug, Node::State::kError, error.what());
    } catch (...) {
      node.SetState(outplug, Node::State::kError, "The node failed with an exception of unknown type.");
    }
    if (scope && scope->WasStopped()) return false;
    if (failed) Tell(node, NodeEvent::kDropCachedResults);
    return true;
  }

  static void ReleaseUse(Vertex& vertex) {
    if (vertex.uses == 0 || --vertex.uses > 0) return;
    Drop(vertex);
  }

  /// Releases what still waited to be used.
  static void ReleaseAll(Vertex& vertex) {
    if (std::exchange(vertex.uses, 0) > 0) Drop(vertex);
  }

  static void Drop(Vertex& vertex) {
    Tell(*vertex.node, NodeEvent::kDropCachedResults);
    vertex.valid.assign(vertex.valid.size(), false);
  }

  AcyclicGraph order_;
  std::unordered_map<const Node*, std::unique_ptr<Vertex>> vertices_;
  std::uint64_t evaluation_ = 0;
};

Engine* Engine::Get() {
  static Engine engine;
  return &engine;
}

Engine::Engine() : Engine(nullptr) {}

Engine::Engine(std::shared_ptr<const ScEng::NodeCatalog> catalog) { SetCatalog(std::move(catalog)); }

Engine::~Engine() = default;

void Engine::SetCatalog(std::shared_ptr<const ScEng::NodeCatalog> catalog) {
  // The nodes go before the library that their code is in.
  graph_ = std::make_unique<Graph>();
  catalog_ = catalog ? std::move(catalog) : std::make_shared<const ScEng::NodeCatalog>();
}

const ScEng::NodeCatalog& Engine::GetCatalog() const { return *catalog_; }

Node* Engine::CreateNode(const NodeType& type, Status& status) {
  const NodeInterface* descriptor = catalog_->Find(type);
  if (descriptor == nullptr) {
    status = Status::Error("the catalogue has no node type " + type.ToString());
    return nullptr;
  }
  const RefPtr<Node> node = ScEng::CreateNode(*descriptor, status);
  if (!node) return nullptr;
  const ScEng::RunningScope running({nullptr, nullptr, ScEng::FindLibraryOf(*descriptor)});
  Status added;
  Node* const joined = graph_->Add(node.Get(), added);
  if (added.IsError()) status = ScEng::NameType(*descriptor, added);
  return joined;
}

Node* Engine::CreateNode(const NodeType& type) {
  Status status;
  return CreateNode(type, status);
}

bool Engine::DeleteNode(Node* node) { return graph_->Delete(node); }

std::vector<Node*> Engine::GetNodes() const { return graph_->GetNodes(); }

Status Engine::Connect(Node* from, const std::string& from_plug, unsigned from_index, Node* to,
                       const std::string& to_plug, unsigned to_index) {
  Vertex* from_vertex = graph_->Find(from);
  Vertex* to_vertex = graph_->Find(to);
  if (from_vertex == nullptr || to_vertex == nullptr) return Status::Error("a node is not of this graph");
  const int outplug = from->GetOutplugIndex(from_plug);
  const int inplug = to->GetInplugIndex(to_plug);
  if (outplug < 0) return Status::Error(NameOf(*from) + " has no output \"" + from_plug + "\"");
  if (inplug < 0) return Status::Error(NameOf(*to) + " has no input or attribute \"" + to_plug + "\"");
  if (from_index != 0) return Status::Error("an output has the one index 0, not " + std::to_string(from_index));
  return graph_->Connect(*from_vertex, static_cast<unsigned>(outplug), *to_vertex, static_cast<unsigned>(inplug),
                         to_index);
}

bool Engine::ConnectNodes(Node* from, const std::string& from_plug, unsigned from_index, Node* to,
                          const std::string& to_plug, unsigned to_index) {
  return !Connect(from, from_plug, from_index, to, to_plug, to_index).IsError();
}

bool Engine::DisconnectNodes(Node* from, const std::string& from_plug, unsigned from_index, Node* to,
                             const std::string& to_plug, unsigned to_index) {
  Vertex* from_vertex = graph_->Find(from);
  Vertex* to_vertex = graph_->Find(to);
  if (from_vertex == nullptr || to_vertex == nullptr || from_index != 0) return false;
  const int outplug = from->GetOutplugIndex(from_plug);
  const int inplug = to->GetInplugIndex(to_plug);
  if (outplug < 0 || inplug < 0) return false;
  return graph_->Disconnect(*from_vertex, static_cast<unsigned>(outplug), *to_vertex, static_cast<unsigned>(inplug),
                            to_index);
}

bool Engine::IsConnected(const Node* node, const std::string& inplug) const {
  const Vertex* vertex = graph_->Find(node);
  if (vertex == nullptr) return false;
  const int index = node->GetInplugIndex(inplug);
  if (index < 0) return false;
  const auto first = vertex->inputs.lower_bound({static_cast<unsigned>(index), 0});
  return first != vertex->inputs.end() && first->second.inplug == static_cast<unsigned>(index);
}

Engine::Outcome Engine::Evaluate(const std::vector<Request>& requests, const Options& options) {
  return graph_->Evaluate(requests, options);
}

bool Engine::SetOutputOverride(Node* node, unsigned outplug, const ImagePtr& image) {
  Vertex* vertex = graph_->Find(node);
  if (vertex == nullptr || outplug >= node->GetOutplugs().size()) return false;
  if (node->GetOutplugs()[outplug].type != PlugType::kImage) return false;
  graph_->SetOverride(*vertex, outplug, image);
  return true;
}

Image* Engine::GetOutputImage(Node* node, unsigned outplug) const {
  const Vertex* vertex = graph_->Find(node);
  if (vertex == nullptr) return nullptr;
  if (Image* image = vertex->GetOverride(outplug)) return image;
  Image* image = GetOwnImage(*node, outplug);
  return image != nullptr && !ScEng::IsPending(*image) ? image : nullptr;
}

Engine::NodeStatistics Engine::GetStatistics(Node* node) const {
  const Vertex* vertex = graph_->Find(node);
  if (vertex == nullptr) return {};
  NodeStatistics statistics = vertex->statistics;
  statistics.bytes_held = CountBytes(*node);
  return statistics;
}

bool Engine::IsBlocked(const Node* node) const {
  const Vertex* vertex = graph_->Find(node);
  return vertex != nullptr && vertex->blocked;
}
