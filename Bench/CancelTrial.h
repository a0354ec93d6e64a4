// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "Host/Editing/BackgroundEvaluator.h"
#include "Host/Editing/EditSession.h"
#include "Host/Tools/NodeLibrary.h"

namespace Bench {

/// A node type, and the attributes that differ from its defaults.
struct CancelCase {
  std::string name;
  std::string type;
  std::vector<std::pair<std::string, std::string>> attributes;
};

/// A document with a large terrain and something small, on which nodes are evaluated and stopped, one after another.
class CancelTrial {
 public:
  CancelTrial(const std::shared_ptr<const ScEng::NodeCatalog>& catalog, int side);
  ~CancelTrial();
  CancelTrial(const CancelTrial&) = delete;
  CancelTrial& operator=(const CancelTrial&) = delete;

  /// A row of the table: what became of so many attempts to stop it. Empty for a type without an image output.
  std::string Run(const CancelCase& tested, int attempts);

 private:
  /// From the request until the small image is there: on the clock, and what this process had of the processors.
  struct Times {
    double seconds = 0.0;
    double processor_seconds = 0.0;
  };

  static std::string MakeRow(const CancelCase& tested, double whole, int attempts, std::vector<Times> stopped);
  void WriteFiles();
  void AddTested(const CancelCase& tested);
  void SetIfThere(const std::string& id, const std::string& attribute, const std::string& text);
  /// Waits until a result for this has come; false when it has not after `seconds`.
  bool WaitFor(const std::string& plug, double seconds);
  void ShowSmall();
  /// How long the node takes, kLongest at most.
  double MeasureWhole(const std::string& plug, std::string& message);
  /// False when the node was complete before it could be stopped.
  bool Stop(const std::string& plug, double after, Times& times);

  std::filesystem::path folder_;
  int side_;
  std::mutex mutex_;
  std::condition_variable told_;
  bool is_told_ = false;
  std::string message_;
  std::mt19937 random_{7};
  std::unique_ptr<ScEng::EditSession> session_;
  std::unique_ptr<ScEng::BackgroundEvaluator> evaluator_;
};

}  // namespace Bench
