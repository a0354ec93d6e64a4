// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/Evaluation/NodeImages.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include "Host/Image/Image.h"
#include "Host/Image/ImageMetadata.h"
#include "Host/Image/PendingImage.h"
#include "Host/Tools/Evaluation/NodeCalls.h"

namespace ScEng {
namespace {

std::size_t CountBytes(std::vector<const Image*> images) {
  std::sort(images.begin(), images.end());
  images.erase(std::unique(images.begin(), images.end()), images.end());
  std::size_t bytes = 0;
  for (const Image* image : images) {
    if (image != nullptr && !IsPending(*image)) bytes += image->GetNumSamples() * sizeof(float);
  }
  return bytes;
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

}  // namespace

std::size_t CountBytes(Node& node) {
  std::vector<const Image*> images;
  for (unsigned outplug = 0; outplug < node.GetOutplugs().size(); ++outplug) {
    images.push_back(GetOwnImage(node, outplug));
  }
  return CountBytes(std::move(images));
}

std::size_t CountBytes(const std::vector<PlugValue>& inputs) {
  std::vector<const Image*> images;
  images.reserve(inputs.size());
  for (const PlugValue& input : inputs) images.push_back(input.GetImage());
  return CountBytes(std::move(images));
}

bool HoldsPending(Node& node) {
  const Image* const image = GetOwnImage(node, 0);
  return image != nullptr && IsPending(*image);
}

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

}  // namespace ScEng
