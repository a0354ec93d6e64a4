// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Apps/Value/ProfileRecord.h"
#include "Host/Documents/GraphDocument.h"

/// Records what one run of a document takes. Used by one thread.
class ProfileRecorder {
 public:
  ProfileRecorder(ScEng::GraphDocument& document, std::string name);

  /// Runs the document as `GraphDocument::Run` does.
  ScEng::RunReport Run(const ScEng::GraphDocument::Progress& progress, Engine::Options options);
  [[nodiscard]] const RunRecord& GetRecord() const { return record_; }

 private:
  void AddNode(Node& node, const Engine::NodeTiming& timing);
  /// Takes the stages that have come in since the last node and began before `until`: the run wrote those files.
  void CollectWrites(ProfileSpan::Clock::time_point until);
  /// Says which outputs each file is of.
  void NameWrites(const ScEng::RunReport& report);

  ScEng::GraphDocument& document_;
  RunRecord record_;
  std::vector<FileRecord> stages_;
};
