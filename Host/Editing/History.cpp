// SPDX-License-Identifier: Apache-2.0
#include "Host/Editing/History.h"

#include <utility>

namespace ScEng {

void History::BeginGesture() { gesture_ = ++last_gesture_; }

bool History::CanMerge(const Edits& edits) const {
  // What is saved must stay a place of the history.
  if (gesture_ == 0 || place_ == 0 || place_ != steps_.size() || saved_ == place_) return false;
  const Step& last = steps_.back();
  if (last.gesture != gesture_ || last.edits.size() != edits.size()) return false;
  for (std::size_t i = 0; i < edits.size(); ++i) {
    if (!last.edits[i]->CanTakeIn(*edits[i])) return false;
  }
  return true;
}

void History::Add(const std::string& name, Edits edits) {
  if (CanMerge(edits)) {
    for (std::size_t i = 0; i < edits.size(); ++i) steps_.back().edits[i]->TakeIn(*edits[i]);
    return;
  }
  steps_.resize(place_);
  names_.resize(place_);
  if (saved_ && *saved_ > place_) saved_.reset();
  steps_.push_back({std::move(edits), gesture_});
  names_.push_back(name);
  ++place_;
}

Status History::GoTo(GraphDocument& document, std::size_t place) {
  if (place > steps_.size()) {
    return Status::Error("there is no place " + std::to_string(place) + " in the history; it has " +
                         std::to_string(steps_.size()) + " commands");
  }
  // What is done after this is a step of its own.
  if (place != place_ && gesture_ != 0) BeginGesture();
  while (place_ != place) {
    const bool is_undone = place_ > place;
    const std::size_t step = is_undone ? place_ - 1 : place_;
    const Status status = is_undone ? UndoEdits(document, steps_[step].edits) : RedoEdits(document, steps_[step].edits);
    if (status.IsError()) {
      return Status::Error((is_undone ? "cannot undo \"" : "cannot redo \"") + names_[step] +
                           "\": " + status.GetMessage());
    }
    place_ = is_undone ? step : step + 1;
  }
  return {};
}

void History::Clear() {
  steps_.clear();
  names_.clear();
  place_ = 0;
  saved_.reset();
}

}  // namespace ScEng
