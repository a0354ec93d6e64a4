// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Host/Documents/GraphDocument.h"
#include "Host/Tools/Scaling.h"

namespace ScEng {

/// How an output of a document can be previewed: on which images, which attributes follow, and whose results.
struct PreviewPlan {
  /// An image that comes from nowhere else in the document, "id.plug": a file, for example.
  struct Source {
    std::string id;
    unsigned outplug = 0;
  };
  /// A node whose samples change with the size of pixels.
  struct Scaled {
    std::string id;
    Scaling scaling = Scaling::kSame;
  };
  /// A number in pixels: the attribute of a node, by its index.
  struct Length {
    std::string id;
    std::size_t attribute = 0;
    double value_px = 0.0;
    /// What it must not come below, where less would be another picture.
    double least_px = 0.0;
  };

  /// Whether the output can be previewed at all.
  bool is_possible = false;
  std::vector<Source> sources;
  /// From the sources on: each after those that it depends on.
  std::vector<Scaled> scaled;
  std::vector<Length> lengths;
};

/// Looks at what an output needs. Every node must say that it follows images that are reduced.
PreviewPlan MakePreviewPlan(const GraphDocument& document, const std::string& id);

/// How often images of which the largest has so many pixels along its longer side, and all of them together so many,
/// are halved for a preview that is drawn at once: 0 where no preview is worth it, or a length would become too short.
int ChooseHalvings(const PreviewPlan& plan, int longest_side, std::int64_t pixels);

}  // namespace ScEng
