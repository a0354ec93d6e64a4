// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Host/Editing/Api.h"
#include "Host/Editing/EditSession.h"
#include "Host/Viewing/ViewImage.h"

namespace ScEng {

/// How a node fared in the last evaluation that it was part of.
struct NodeFacts {
  std::string id;
  /// Wall time of its last evaluation, in seconds.
  double seconds = 0.0;
  /// Bytes of the samples that its outputs hold.
  std::size_t bytes_held = 0;
  bool is_in_error = false;
  /// It was not evaluated, because a node that it depends on failed.
  bool is_blocked = false;
  /// What it has to say: its error, or its notes, a line each.
  std::vector<std::string> messages;
  /// The image of its first image output, small; null where there is none.
  std::shared_ptr<const ViewImage> thumbnail;
};

/// What is to be shown.
struct ShownPlugs {
  /// "id.plug", empty for nothing.
  std::string plug;
  /// Whether the images that feed the node are wanted too.
  bool with_inputs = false;
  /// Another image that is wanted beside it, "id.plug"; empty for none.
  std::string second = {};

  friend bool operator==(const ShownPlugs&, const ShownPlugs&) = default;
};

/// An image that feeds the node that is shown.
struct ShownInput {
  /// The name of the input of the node that is shown.
  std::string inplug;
  /// Where it comes from, "id.plug".
  std::string from;
  std::shared_ptr<const ViewImage> image;
};

/// What has become of what is shown. Its images are previews (`ViewImage::IsPreview`) as long as the images themselves
/// are being computed.
struct ShownResult {
  ShownPlugs shown;
  /// Null where there is none; `message` says why.
  std::shared_ptr<const ViewImage> image;
  std::vector<ShownInput> inputs;
  /// Null where none was asked for, or there is none.
  std::shared_ptr<const ViewImage> second;
  std::string message;
  /// Wall time from the change that asked for it, in seconds.
  double seconds = 0.0;
};

/// Where an evaluation stands.
struct EvaluationProgress {
  /// The node that is being evaluated, and the share of its work that is done; empty and 1 when everything is done.
  std::string id;
  double fraction = 1.0;
  std::size_t done = 0;
  std::size_t total = 0;
};

/// Evaluates the document of a session on a thread of its own, again after every change, newest wins.
///
/// The thread has a copy of the document, which follows the session's changes one by one, so that only what a change
/// concerns is evaluated anew. A change cancels the evaluation that goes on. Nothing here waits for a node but the
/// destructor, which cancels first.
///
/// Where images are large and every node that what is shown depends on follows reduced images (`NodeRecord::scaling`),
/// these are evaluated first. The preview is handed out when the image itself takes longer than a moment, and while one
/// change follows the other.
///
/// Used on the thread of the session, but for `notify`.
class HOST_EDITING_API BackgroundEvaluator {
 public:
  /// `notify` is called on the evaluating thread whenever there is something new to take; it must neither wait nor
  /// throw. The session outlives this.
  BackgroundEvaluator(EditSession& session, std::function<void()> notify);
  ~BackgroundEvaluator();
  BackgroundEvaluator(const BackgroundEvaluator&) = delete;
  BackgroundEvaluator& operator=(const BackgroundEvaluator&) = delete;

  /// What is to be shown from now on; evaluated first.
  void Show(const ShownPlugs& shown);
  /// Whether nodes that do not feed what is shown are evaluated afterwards, for their thumbnails, errors and notes.
  void SetEvaluatesAll(bool all);
  /// Width and height that thumbnails fit into, in pixels; 0 for none.
  void SetThumbnailSize(int size);
  /// Files that readers read have changed: they are read again.
  void ReadAgain(const std::vector<std::string>& ids);
  /// Stops what goes on and evaluates nothing until `Resume`, or the next change.
  void Cancel();
  void Resume();

  /// The newest result of what is shown, if it was not taken before.
  [[nodiscard]] std::shared_ptr<const ShownResult> TakeResult();
  /// The facts of the nodes that were evaluated since this was last asked.
  [[nodiscard]] std::vector<NodeFacts> TakeFacts();
  [[nodiscard]] EvaluationProgress GetProgress() const;
  /// Whether everything that is asked for is done.
  [[nodiscard]] bool IsIdle() const;
  /// Waits until it is, for tests and programs without windows; false when `seconds` have passed before.
  bool WaitUntilIdle(double seconds);

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

/// One run of a document as it is now: every output and enabled writer, on a thread of its own. What is edited
/// meanwhile does not concern it.
class HOST_EDITING_API BackgroundRun {
 public:
  struct Progress {
    std::string id;
    std::size_t done = 0;
    std::size_t total = 0;
    bool is_finished = false;
  };

  /// Starts at once, with the session's document as it is. `notify` as above.
  BackgroundRun(const EditSession& session, std::function<void()> notify);
  /// Cancels and waits.
  ~BackgroundRun();
  BackgroundRun(const BackgroundRun&) = delete;
  BackgroundRun& operator=(const BackgroundRun&) = delete;

  void Cancel();
  [[nodiscard]] Progress GetProgress() const;
  /// What became of it. Only when it is finished.
  [[nodiscard]] const RunReport& GetReport() const;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace ScEng
