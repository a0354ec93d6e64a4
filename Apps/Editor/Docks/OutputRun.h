// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>

#include "Host/Editing/BackgroundEvaluator.h"
#include "Host/Editing/EditSession.h"

/// Writing everything that a document writes, while a window goes on.
class OutputRun {
 public:
  OutputRun() = default;
  OutputRun(const OutputRun&) = delete;
  OutputRun& operator=(const OutputRun&) = delete;
  /// Cancels and waits.
  virtual ~OutputRun();

  virtual void Cancel() = 0;
  [[nodiscard]] virtual ScEng::BackgroundRun::Progress GetProgress() const = 0;
  /// Only when it is finished.
  [[nodiscard]] virtual const ScEng::RunReport& GetReport() const = 0;
};

/// Starts a run. `notify` is called on any thread.
using OutputRunStarter =
    std::function<std::unique_ptr<OutputRun>(const ScEng::EditSession& session, std::function<void()> notify)>;

/// Starts one by `ScEng::BackgroundRun`.
std::unique_ptr<OutputRun> StartBackgroundRun(const ScEng::EditSession& session, std::function<void()> notify);
