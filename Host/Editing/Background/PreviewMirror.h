// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Host/Documents/GraphDocument.h"
#include "Host/Editing/Background/PreviewPlan.h"
#include "Host/Editing/Background/SessionFollower.h"
#include "Host/Editing/BackgroundEvaluator.h"
#include "Host/Util/Cancellation.h"

namespace ScEng {

/// A second copy of a document, evaluated on reduced images, so that there is something to see while the images
/// themselves are computed. Lengths in pixels are reduced with the images, and what is measured in pixels is put right
/// afterwards. All on the thread of the document that it follows.
class PreviewMirror {
 public:
  /// Becomes a copy of `document` when it is first needed. Images and attributes come from there; it outlives this.
  PreviewMirror(std::shared_ptr<const NodeCatalog> catalog, GraphDocument& document);

  /// Follows changes that the document has seen.
  void Apply(const std::vector<MirrorChange>& changes);

  /// Previews what is shown, an output "id.plug" that the document has. Null where there is no preview of it, or none
  /// is worth it, or it was stopped. `options` are for what is evaluated of the document itself: its sources.
  std::shared_ptr<ShownResult> Evaluate(const ShownPlugs& shown, const Engine::Options& options);

 private:
  /// An image that stands in for what a source makes.
  struct Reduced {
    const Image* image = nullptr;
    std::size_t evaluations = 0;
    int halvings = 0;
    ImageHeader header;
    ImagePtr reduced;
  };
  /// What one evaluation is about.
  struct Round {
    PreviewPlan plan;
    int halvings = 0;
    const Engine::Options& options;
  };

  /// The sources' images, evaluated if need be; false where one has none.
  bool FindSources(Round& round);
  void ReplaceSources(const Round& round);
  void SetLengths(const Round& round);
  /// Evaluates a node on reduced images and puts its samples right; false where they are not those of a preview.
  bool Scale(const PreviewPlan::Scaled& node, const Round& round);
  /// Whether all images that a node takes are masks.
  bool TakesMasks(const std::string& id, const Round& round);
  bool EvaluateOutput(const std::string& plug, const Cancellation* cancellation);
  std::shared_ptr<const ViewImage> MakeView(const std::string& plug, int halvings) const;
  /// The header of the image that a reduced one stands for.
  [[nodiscard]] ImageHeader FindHeader(const Image& reduced, int halvings) const;
  void AddInputs(ShownResult& result, int halvings) const;

  std::shared_ptr<const NodeCatalog> catalog_;
  GraphDocument& whole_;
  std::unique_ptr<GraphDocument> document_;
  /// By "id.plug".
  std::map<std::string, Reduced> sources_;
  std::map<std::string, ImagePtr> scaled_;
};

}  // namespace ScEng
