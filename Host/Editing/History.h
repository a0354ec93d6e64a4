// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "Host/Editing/Transaction.h"

namespace ScEng {

/// The commands that were done, and those that were undone and can be redone.
class History {
 public:
  [[nodiscard]] std::size_t GetPlace() const { return place_; }
  [[nodiscard]] const std::vector<std::string>& GetNames() const { return names_; }
  [[nodiscard]] bool IsModified() const { return saved_ != place_; }
  void MarkSaved() { saved_ = place_; }
  /// Nowhere in the history is the document the one that was saved.
  void ForgetSaved() { saved_.reset(); }

  void BeginGesture();
  void EndGesture() { gesture_ = 0; }

  /// Takes a command that was done; what had been undone is gone.
  void Add(const std::string& name, Edits edits);
  /// An error where a step cannot be undone or redone; steps until then stay done.
  Status GoTo(GraphDocument& document, std::size_t place);
  /// Forgets all.
  void Clear();

 private:
  struct Step {
    Edits edits;
    /// The gesture that it was made in; 0 for none.
    unsigned gesture = 0;
  };

  [[nodiscard]] bool CanMerge(const Edits& edits) const;

  std::vector<Step> steps_;
  std::vector<std::string> names_;
  std::size_t place_ = 0;
  std::optional<std::size_t> saved_ = 0;
  unsigned gesture_ = 0;
  unsigned last_gesture_ = 0;
};

}  // namespace ScEng
