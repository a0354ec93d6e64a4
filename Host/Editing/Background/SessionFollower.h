// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <unordered_map>

#include "Host/Editing/EditSession.h"

namespace ScEng {

/// One change of a document, to be made to a copy of it, on another thread: it holds everything that it needs.
using MirrorChange = std::function<void(GraphDocument& copy)>;

/// Follows what is edited, as far as it can change a result, and hands it on as changes for a copy: first those that
/// make an empty document the same, then each as it happens.
class SessionFollower : public EditObserver {
 public:
  /// `take` is called on the thread of the session, which outlives this.
  SessionFollower(EditSession& session, std::function<void(MirrorChange change)> take);
  ~SessionFollower() override;

  void OnNodeAdded(const std::string& id) override;
  void OnNodeRemoved(const std::string& id) override;
  void OnNodeRenamed(const std::string& before, const std::string& now) override;
  void OnNodeChanged(const std::string& id) override;
  void OnAttributeChanged(const std::string& id, const std::string& attribute) override;
  void OnConnectionAdded(const DocumentConnection& connection) override;
  void OnConnectionRemoved(const DocumentConnection& connection) override;
  void OnHistoryChanged() override;

 private:
  void FollowFolder();

  EditSession& session_;
  std::function<void(MirrorChange change)> take_;
  std::filesystem::path folder_;
  /// Positions and notes are told in the same way as the enabled flag, and change no result.
  std::unordered_map<std::string, bool> enabled_;
};

}  // namespace ScEng
