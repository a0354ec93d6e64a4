// SPDX-License-Identifier: Apache-2.0
#include "Host/Editing/Background/PreviewMirror.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <set>
#include <utility>

#include "Host/Documents/DocumentEdits.h"
#include "Host/Documents/PlugName.h"
#include "Host/Tools/Guard.h"
#include "Host/Util/EvaluationScope.h"
#include "Host/Util/ParallelRows.h"
#include "Host/Viewing/ReduceImage.h"

namespace ScEng {
namespace {

void CopyDocument(GraphDocument& from, GraphDocument& to) {
  DocumentEdits source(from);
  DocumentEdits copy(to);
  copy.SetFolder(from.GetFolder());
  for (const std::string& id : from.GetIds()) {
    static_cast<void>(copy.InsertNode(id, *source.CopyNode(id), to.GetIds().size()));
  }
  for (const DocumentConnection& connection : from.GetConnections()) {
    static_cast<void>(copy.InsertConnection(copy.GetNumConnections(), {connection, false}));
  }
}

/// The index of an output of a node; the node is null where it does not exist.
std::pair<Node*, unsigned> FindOutput(const GraphDocument& document, const std::string& plug) {
  Node* node = document.FindNode(GetNodeOfPlug(plug));
  const int index = node == nullptr ? -1 : node->GetOutplugIndex(GetNameOfPlug(plug));
  if (index < 0) return {nullptr, 0};
  return {node, static_cast<unsigned>(index)};
}

ImagePtr Multiply(const Image& image, float factor) {
  auto product = MakeRef<Image>(image);
  float* const samples = product->GetArray();
  constexpr std::size_t kGrain = std::size_t{1} << 16;
  ParallelRows(product->GetNumSamples(), kGrain, [&](std::size_t from, std::size_t to) {
    for (std::size_t i = from; i < to; ++i) samples[i] *= factor;
  });
  product->SetValueLowHigh(image.GetValueLow() * factor, image.GetValueHigh() * factor);
  return product;
}

/// Whether but few samples lie between the lowest and the highest one: those at edges, of which reducing makes more.
bool IsMask(const Image& image) {
  const SampleRange range = image.GetSampleRange();
  if (range.IsEmpty()) return true;
  constexpr float kNear = 0.02F;
  constexpr double kMostBetween = 0.2;
  const float near = (range.high - range.low) * kNear;
  const float* const samples = image.GetConstArray();
  const auto between = std::count_if(samples, samples + image.GetNumSamples(), [&](float sample) {
    return sample > range.low + near && sample < range.high - near;
  });
  return static_cast<double>(between) <= kMostBetween * static_cast<double>(image.GetNumSamples());
}

}  // namespace

PreviewMirror::PreviewMirror(std::shared_ptr<const NodeCatalog> catalog, GraphDocument& document)
    : catalog_(std::move(catalog)), whole_(document) {}

void PreviewMirror::Apply(const std::vector<MirrorChange>& changes) {
  if (changes.empty() || document_ == nullptr) return;
  // Names may change: nothing stands in for anything that is no longer there.
  for (const auto& [plug, source] : sources_) static_cast<void>(document_->SetSource(plug, {}));
  for (const auto& [plug, image] : scaled_) static_cast<void>(document_->SetSource(plug, {}));
  scaled_.clear();
  for (const MirrorChange& change : changes) {
    static_cast<void>(CallGuarded("a node type", [&] { change(*document_); }));
  }
  // The rest is put in its place again.
  for (auto source = sources_.begin(); source != sources_.end();) {
    const bool is_there = !document_->SetSource(source->first, source->second.reduced).IsError();
    source = is_there ? std::next(source) : sources_.erase(source);
  }
}

std::shared_ptr<ShownResult> PreviewMirror::Evaluate(const ShownPlugs& shown, const Engine::Options& options) {
  try {
    Round round{MakePreviewPlan(whole_, GetNodeOfPlug(shown.plug)), 0, options};
    if (!round.plan.is_possible || !FindSources(round) || round.halvings == 0) return nullptr;
    if (document_ == nullptr) {
      document_ = std::make_unique<GraphDocument>(catalog_);
      static_cast<void>(CallGuarded("a node type", [&] { CopyDocument(whole_, *document_); }));
    }
    const EvaluationScope scope(options.cancellation);
    ReplaceSources(round);
    SetLengths(round);
    for (const PreviewPlan::Scaled& node : round.plan.scaled) {
      if (!Scale(node, round)) return nullptr;
    }
    if (!EvaluateOutput(shown.plug, options.cancellation)) return nullptr;
    auto result = std::make_shared<ShownResult>();
    result->shown = shown;
    result->image = MakeView(shown.plug, round.halvings);
    if (result->image == nullptr) return nullptr;
    if (shown.with_inputs) AddInputs(*result, round.halvings);
    return result;
  } catch (const Canceled&) {
    return nullptr;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

bool PreviewMirror::FindSources(Round& round) {
  std::vector<Engine::Request> requests;
  for (const PreviewPlan::Source& source : round.plan.sources) {
    requests.push_back({whole_.FindNode(source.id), source.outplug});
  }
  if (whole_.GetEngine().Evaluate(requests, round.options) == Engine::Outcome::kCanceled) return false;
  int longest_side = 0;
  std::int64_t pixels = 0;
  for (const Engine::Request& request : requests) {
    const Image* image = whole_.GetEngine().GetOutputImage(request.node, request.outplug);
    if (image == nullptr || request.node->IsInError()) return false;
    longest_side = std::max({longest_side, image->GetSizeX(), image->GetSizeY()});
    pixels += std::int64_t{image->GetSizeX()} * image->GetSizeY();
  }
  round.halvings = ChooseHalvings(round.plan, longest_side, pixels);
  return true;
}

void PreviewMirror::ReplaceSources(const Round& round) {
  std::set<std::string> wanted;
  for (const PreviewPlan::Source& source : round.plan.sources) {
    Node* node = whole_.FindNode(source.id);
    const std::string plug = source.id + "." + node->GetOutplugName(source.outplug);
    wanted.insert(plug);
    const Image* image = whole_.GetEngine().GetOutputImage(node, source.outplug);
    const std::size_t evaluations = whole_.GetEngine().GetStatistics(node).evaluations;
    Reduced& known = sources_[plug];
    const bool is_current =
        known.image == image && known.evaluations == evaluations && known.halvings == round.halvings && known.reduced;
    if (is_current) continue;
    known = {image, evaluations, round.halvings, image->GetImageHeader(), ReduceImage(*image, round.halvings)};
    static_cast<void>(document_->SetSource(plug, known.reduced));
  }
  std::erase_if(sources_, [&](const auto& source) {
    if (wanted.contains(source.first)) return false;
    static_cast<void>(document_->SetSource(source.first, {}));
    return true;
  });
}

void PreviewMirror::SetLengths(const Round& round) {
  DocumentEdits edits(*document_);
  for (const PreviewPlan::Length& length : round.plan.lengths) {
    auto state = edits.GetAttribute(length.id, length.attribute);
    const double reduced = std::ldexp(length.value_px, -round.halvings);
    if (!state || state->value.GetNumber() == reduced) continue;
    state->value = PlugValue(reduced);
    static_cast<void>(edits.SetAttribute(length.id, length.attribute, *state));
  }
}

bool PreviewMirror::TakesMasks(const std::string& id, const Round& round) {
  for (const DocumentConnection& connection : document_->GetConnections()) {
    if (GetNodeOfPlug(connection.to) != id) continue;
    const auto [node, outplug] = FindOutput(*document_, connection.from);
    if (node == nullptr || !EvaluateOutput(connection.from, round.options.cancellation)) return false;
    const Image* image = document_->GetEngine().GetOutputImage(node, outplug);
    if (image != nullptr && !IsMask(*image)) return false;
  }
  return true;
}

bool PreviewMirror::Scale(const PreviewPlan::Scaled& scaled, const Round& round) {
  if (scaled.scaling == Scaling::kSameOfMasks) return TakesMasks(scaled.id, round);
  const Node* node = document_->FindNode(scaled.id);
  const float factor = std::ldexp(1.0F, scaled.scaling == Scaling::kLengths ? round.halvings : -round.halvings);
  for (unsigned outplug = 0; outplug < node->GetOutplugs().size(); ++outplug) {
    if (node->GetOutplugs()[outplug].type != PlugType::kImage) continue;
    const std::string plug = scaled.id + "." + node->GetOutplugName(outplug);
    // What it made before stands in its own way.
    if (scaled_.erase(plug) > 0) static_cast<void>(document_->SetSource(plug, {}));
    if (!EvaluateOutput(plug, round.options.cancellation)) return false;
    const Image* image = document_->GetEngine().GetOutputImage(document_->FindNode(scaled.id), outplug);
    if (image == nullptr) return false;
    ImagePtr product = Multiply(*image, factor);
    if (document_->SetSource(plug, product).IsError()) return false;
    scaled_.emplace(plug, std::move(product));
  }
  return true;
}

bool PreviewMirror::EvaluateOutput(const std::string& plug, const Cancellation* cancellation) {
  const auto [node, outplug] = FindOutput(*document_, plug);
  if (node == nullptr) return false;
  Engine::Options options;
  options.cancellation = cancellation;
  const bool is_complete = document_->GetEngine().Evaluate({{node, outplug}}, options) == Engine::Outcome::kComplete;
  const bool stands_in = sources_.contains(plug);
  return is_complete && (stands_in || (!node->IsInError() && !document_->GetEngine().IsBlocked(node)));
}

std::shared_ptr<const ViewImage> PreviewMirror::MakeView(const std::string& plug, int halvings) const {
  const auto [node, outplug] = FindOutput(*document_, plug);
  const Image* image = node == nullptr ? nullptr : document_->GetEngine().GetOutputImage(node, outplug);
  if (image == nullptr) return nullptr;
  return ViewImage::MakePreview(*image, halvings, FindHeader(*image, halvings));
}

ImageHeader PreviewMirror::FindHeader(const Image& reduced, int halvings) const {
  ImageHeader header = reduced.GetImageHeader();
  const auto place_as = [&](const ImageHeader& whole) {
    header.size_x = whole.size_x;
    header.size_y = whole.size_y;
    header.pin_x = whole.pin_x;
    header.pin_y = whole.pin_y;
    header.pivot_x = whole.pivot_x;
    header.pivot_y = whole.pivot_y;
    return header;
  };
  // Most nodes leave an image where it is, so that its size to the pixel is known.
  for (const auto& [plug, source] : sources_) {
    if (source.reduced->GetBox() == reduced.GetBox()) return place_as(source.header);
  }
  const Box2I box = reduced.GetBox();
  const int factor = 1 << halvings;
  ImageHeader whole;
  whole.size_x = reduced.GetSizeX() * factor;
  whole.size_y = reduced.GetSizeY() * factor;
  whole.pin_x = static_cast<int>(box.left * factor);
  whole.pin_y = static_cast<int>(box.top * factor);
  return place_as(whole);
}

void PreviewMirror::AddInputs(ShownResult& result, int halvings) const {
  const std::string id = GetNodeOfPlug(result.shown.plug);
  for (const DocumentConnection& connection : document_->GetConnections()) {
    if (GetNodeOfPlug(connection.to) != id) continue;
    auto image = MakeView(connection.from, halvings);
    if (image != nullptr) result.inputs.push_back({GetNameOfPlug(connection.to), connection.from, std::move(image)});
  }
}

}  // namespace ScEng
