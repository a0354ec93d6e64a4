// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Host/Editing/Background/PreviewMirror.h"
#include "Host/Editing/Background/SessionFollower.h"
#include "Host/Editing/BackgroundEvaluator.h"
#include "Host/Util/Cancellation.h"

namespace ScEng {

/// A copy of a document that is being edited, and its evaluation. All on one thread.
class Mirror : private DocumentObserver {
 public:
  /// Who is told while an evaluation goes on.
  struct Listener {
    std::function<void(NodeFacts facts)> on_facts;
    std::function<void(const EvaluationProgress& progress)> on_progress;
  };

  Mirror(std::shared_ptr<const NodeCatalog> catalog, Listener listener);
  ~Mirror() override;

  void Apply(const std::vector<MirrorChange>& changes);
  void ReadAgain(const std::vector<std::string>& ids);
  /// Tells of all nodes again, with thumbnails of this size.
  void SetThumbnailSize(int size);

  /// Evaluates what is shown on reduced images; null where there is no such preview, or it was stopped.
  std::shared_ptr<ShownResult> EvaluatePreview(const ShownPlugs& shown, const Cancellation& cancellation);
  /// Evaluates what is shown. Null where it was stopped.
  std::shared_ptr<ShownResult> EvaluateShown(const ShownPlugs& shown, const Cancellation& cancellation);
  /// Evaluates every other node that has outputs; false where it was stopped.
  bool EvaluateRest(const Cancellation& cancellation);

 private:
  /// What was told of a node last.
  struct Told {
    std::size_t evaluations = 0;
    Node::State state = Node::State::kIdle;
    std::string message;
    bool is_blocked = false;
  };
  /// A copy of an image, and what it was made of.
  struct Shown {
    const Image* image = nullptr;
    std::size_t evaluations = 0;
    std::shared_ptr<const ViewImage> copy;
  };

  void OnNodeAdded(const std::string& id) override;
  void OnNodeRemoved(const std::string& id) override;
  /// What is known of a node that goes says nothing of another one of that name.
  void Forget(const std::string& id);

  Engine::Options MakeOptions(const Cancellation& cancellation);
  /// Tells of a node if there is something new.
  void TellOf(const std::string& id, Node& node);
  void TellOfAll();
  std::shared_ptr<const ViewImage> Copy(const std::string& plug, Node& node, unsigned outplug,
                                        const Cancellation& cancellation);
  /// The node and the index of an output, "id.plug"; null and an error where there is none.
  Node* FindOutput(const std::string& plug, unsigned& outplug, std::string& message) const;
  /// Why a node that is well has no image.
  [[nodiscard]] std::string DescribeMissingImage(const Node& node);
  void AddInputs(const Node& node, ShownResult& result, const Cancellation& cancellation);
  /// False where it was stopped.
  bool AddSecond(ShownResult& result, const Cancellation& cancellation);

  GraphDocument document_;
  PreviewMirror preview_;
  Listener listener_;
  int thumbnail_size_ = 0;
  std::unordered_map<std::string, Told> told_;
  std::map<std::string, Shown> copies_;
  std::map<std::string, Shown> copies_before_;
};

}  // namespace ScEng
