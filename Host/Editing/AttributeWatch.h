// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Host/Documents/DocumentEdits.h"
#include "Host/Editing/Transaction.h"
#include "Host/Tools/Node.h"

namespace ScEng {

/// Follows the attributes and the enabled flag of one node, and hands on what somebody else changes of them.
class AttributeWatch : public NodeObserver {
 public:
  /// Asks `is_own` at each change whether it is one of the session itself. `take` receives the edits of any other
  /// change, which has been made, with a name for it; it may end the watch.
  AttributeWatch(GraphDocument& document, Node& node, std::function<bool()> is_own,
                 std::function<void(const std::string& name, Edits edits)> take);
  ~AttributeWatch() override;

  void OnNodeChanged(Node& node) override;
  void OnNodeDestroyed(Node& node) override;

 private:
  [[nodiscard]] std::vector<AttributeState> ReadStates(const std::string& id) const;

  GraphDocument& document_;
  /// Null when it is gone.
  Node* node_;
  std::function<bool()> is_own_;
  std::function<void(const std::string& name, Edits edits)> take_;
  std::vector<AttributeState> states_;
  bool is_enabled_ = true;
};

}  // namespace ScEng
