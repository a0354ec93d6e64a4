// SPDX-License-Identifier: Apache-2.0
#include "Host/Editing/Background/Mirror.h"

#include <optional>
#include <set>

#include "Host/Documents/PlugName.h"
#include "Host/Tools/Guard.h"
#include "Host/Util/EvaluationScope.h"

namespace ScEng {
namespace {

std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t from = 0; from < text.size();) {
    const std::size_t end = std::min(text.find('\n', from), text.size());
    lines.push_back(text.substr(from, end - from));
    from = end + 1;
  }
  return lines;
}

std::shared_ptr<const ViewImage> MakeThumbnail(const Node& node, int size) {
  if (size <= 0) return nullptr;
  for (unsigned outplug = 0; outplug < node.GetOutplugs().size(); ++outplug) {
    if (node.GetOutplugs()[outplug].type != PlugType::kImage) continue;
    const Image* image = AskGuarded<Image*>("GetOutputImage", nullptr, [&] { return node.GetOutputImage(outplug); });
    if (image != nullptr) return ViewImage::MakeSmall(*image, size);
  }
  return nullptr;
}

}  // namespace

Mirror::Mirror(std::shared_ptr<const NodeCatalog> catalog, Listener listener)
    : document_(catalog), preview_(std::move(catalog), document_), listener_(std::move(listener)) {
  document_.AddObserver(this);
}

Mirror::~Mirror() { document_.RemoveObserver(this); }

void Mirror::OnNodeAdded(const std::string& id) { Forget(id); }

void Mirror::OnNodeRemoved(const std::string& id) { Forget(id); }

void Mirror::Forget(const std::string& id) {
  told_.erase(id);
  const auto is_of_node = [&](const auto& copy) { return GetNodeOfPlug(copy.first) == id; };
  std::erase_if(copies_, is_of_node);
  std::erase_if(copies_before_, is_of_node);
}

void Mirror::Apply(const std::vector<MirrorChange>& changes) {
  for (const MirrorChange& change : changes) {
    // A library that fails here shows it again, and in its place, when the node is evaluated.
    static_cast<void>(CallGuarded("a node type", [&] { change(document_); }));
  }
  preview_.Apply(changes);
}

void Mirror::ReadAgain(const std::vector<std::string>& ids) {
  for (const std::string& id : ids) {
    if (Node* node = document_.FindNode(id)) node->NotifyChanged();
  }
}

void Mirror::SetThumbnailSize(int size) {
  if (thumbnail_size_ == size) return;
  thumbnail_size_ = size;
  told_.clear();
}

std::shared_ptr<ShownResult> Mirror::EvaluatePreview(const ShownPlugs& shown, const Cancellation& cancellation) {
  if (shown.plug.empty()) return nullptr;
  Engine::Options options = MakeOptions(cancellation);
  // How far the whole evaluation is, is not known yet.
  options.on_evaluated = [this](Node& node, std::size_t, std::size_t) { TellOf(node.GetLabel(), node); };
  return preview_.Evaluate(shown, options);
}

std::shared_ptr<ShownResult> Mirror::EvaluateShown(const ShownPlugs& shown, const Cancellation& cancellation) {
  auto result = std::make_shared<ShownResult>();
  result->shown = shown;
  copies_before_ = std::exchange(copies_, {});
  if (shown.plug.empty()) return result;
  unsigned outplug = 0;
  Node* node = FindOutput(shown.plug, outplug, result->message);
  if (node == nullptr) return result;
  const RunReport report = document_.Evaluate(*node, outplug, MakeOptions(cancellation));
  TellOfAll();
  if (report.canceled) return nullptr;
  try {
    if (!node->IsInError()) result->image = Copy(shown.plug, *node, outplug, cancellation);
    if (!result->image) {
      const auto& errors = report.findings.errors;
      result->message = errors.empty() ? DescribeMissingImage(*node) : errors.front();
    }
  } catch (const Canceled&) {
    return nullptr;
  } catch (const std::bad_alloc&) {
    result->image = nullptr;
    result->message = "There is not enough memory to show this image.";
  }
  try {
    if (shown.with_inputs) AddInputs(*node, *result, cancellation);
    if (!shown.second.empty() && !AddSecond(*result, cancellation)) return nullptr;
  } catch (const Canceled&) {
    return nullptr;
  } catch (const std::bad_alloc&) {
    // The image itself is more than those beside it.
    result->inputs.clear();
    result->second = nullptr;
  }
  copies_before_.clear();
  return result;
}

bool Mirror::EvaluateRest(const Cancellation& cancellation) {
  std::set<std::string> feeding;
  for (const DocumentConnection& connection : document_.GetConnections()) {
    feeding.insert(GetNodeOfPlug(connection.from));
  }
  // What feeds nothing needs everything else between them.
  for (const std::string& id : std::vector<std::string>(document_.GetIds())) {
    Node* node = document_.FindNode(id);
    if (node == nullptr || feeding.contains(id)) continue;
    for (unsigned outplug = 0; outplug < node->GetOutplugs().size(); ++outplug) {
      const Engine::Options options = MakeOptions(cancellation);
      if (document_.GetEngine().Evaluate({{node, outplug}}, options) == Engine::Outcome::kCanceled) return false;
    }
  }
  TellOfAll();
  return true;
}

Engine::Options Mirror::MakeOptions(const Cancellation& cancellation) {
  Engine::Options options;
  options.cancellation = &cancellation;
  options.on_evaluated = [this](Node& node, std::size_t done, std::size_t total) {
    TellOf(node.GetLabel(), node);
    listener_.on_progress({node.GetLabel(), 1.0, done, total});
  };
  options.on_progress = [this](Node& node, double fraction) {
    listener_.on_progress({node.GetLabel(), fraction, 0, 0});
  };
  return options;
}

void Mirror::TellOf(const std::string& id, Node& node) {
  const Engine::NodeStatistics statistics = document_.GetEngine().GetStatistics(&node);
  const bool is_blocked = document_.GetEngine().IsBlocked(&node);
  const Told now{statistics.evaluations, node.GetState(), node.GetStateMessage(), is_blocked};
  const auto [known, is_new] = told_.try_emplace(id);
  Told& before = known->second;
  const bool is_same = before.evaluations == now.evaluations && before.state == now.state &&
                       before.message == now.message && before.is_blocked == now.is_blocked;
  if (is_same) return;
  before = now;
  NodeFacts facts;
  facts.id = id;
  facts.seconds = statistics.seconds;
  facts.bytes_held = statistics.bytes_held;
  facts.is_in_error = node.IsInError();
  facts.is_blocked = is_blocked;
  facts.messages = SplitLines(node.GetStateMessage());
  if (!facts.is_in_error && !is_blocked) facts.thumbnail = MakeThumbnail(node, thumbnail_size_);
  listener_.on_facts(std::move(facts));
}

void Mirror::TellOfAll() {
  for (const std::string& id : document_.GetIds()) {
    if (Node* node = document_.FindNode(id)) TellOf(id, *node);
  }
}

std::shared_ptr<const ViewImage> Mirror::Copy(const std::string& plug, Node& node, unsigned outplug,
                                              const Cancellation& cancellation) {
  const Image* image = document_.GetEngine().GetOutputImage(&node, outplug);
  if (image == nullptr) return nullptr;
  const Shown source{image, document_.GetEngine().GetStatistics(&node).evaluations, nullptr};
  for (const auto* copies : {&copies_, &copies_before_}) {
    const auto copy = copies->find(plug);
    const bool is_current =
        copy != copies->end() && copy->second.image == source.image && copy->second.evaluations == source.evaluations;
    if (is_current) return (copies_[plug] = Shown(copy->second)).copy;
  }
  const EvaluationScope scope(&cancellation);
  auto copy = ViewImage::Make(*image);
  copies_[plug] = {source.image, source.evaluations, copy};
  return copy;
}

Node* Mirror::FindOutput(const std::string& plug, unsigned& outplug, std::string& message) const {
  const std::string id = GetNodeOfPlug(plug);
  const std::string name = GetNameOfPlug(plug);
  Node* node = document_.FindNode(id);
  if (node == nullptr) {
    message = document_.IsPlaceholder(id) ? "The type of this node is unknown here." : "This node does not exist.";
    return nullptr;
  }
  const int index = node->GetOutplugIndex(name);
  if (index < 0) {
    message = "The node has no output \"" + name + "\".";
    return nullptr;
  }
  outplug = static_cast<unsigned>(index);
  if (node->GetOutplugs()[outplug].type == PlugType::kImage) return node;
  message = "This output is no image.";
  return nullptr;
}

std::string Mirror::DescribeMissingImage(const Node& node) {
  for (unsigned i = 0; i < node.GetNumRegularInputs(); ++i) {
    const std::string inplug = node.GetInplugName(i);
    if (!document_.GetEngine().IsConnected(&node, inplug)) {
      return "Nothing is connected to the input \"" + inplug + "\" of this node.";
    }
  }
  return "The node has no image to show.";
}

void Mirror::AddInputs(const Node& node, ShownResult& result, const Cancellation& cancellation) {
  const std::string id = node.GetLabel();
  for (const DocumentConnection& connection : document_.GetConnections()) {
    if (GetNodeOfPlug(connection.to) != id) continue;
    unsigned outplug = 0;
    std::string message;
    Node* from = FindOutput(connection.from, outplug, message);
    if (from == nullptr || from->IsInError()) continue;
    if (auto image = Copy(connection.from, *from, outplug, cancellation)) {
      result.inputs.push_back({GetNameOfPlug(connection.to), connection.from, std::move(image)});
    }
  }
}

bool Mirror::AddSecond(ShownResult& result, const Cancellation& cancellation) {
  unsigned outplug = 0;
  std::string message;
  Node* node = FindOutput(result.shown.second, outplug, message);
  if (node == nullptr) return true;
  const RunReport report = document_.Evaluate(*node, outplug, MakeOptions(cancellation));
  TellOfAll();
  if (report.canceled) return false;
  if (!node->IsInError()) result.second = Copy(result.shown.second, *node, outplug, cancellation);
  return true;
}

}  // namespace ScEng
