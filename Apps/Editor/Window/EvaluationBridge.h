// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <atomic>
#include <memory>
#include <vector>

#include "Host/Editing/BackgroundEvaluator.h"

/// Brings what the evaluation in the background tells to the thread of the window, as signals.
class EvaluationBridge : public QObject {
  Q_OBJECT

 public:
  /// The session outlives this.
  explicit EvaluationBridge(ScEng::EditSession& session, QObject* parent = nullptr);
  ~EvaluationBridge() override;

  [[nodiscard]] ScEng::BackgroundEvaluator& GetEvaluator() { return *evaluator_; }

 signals:
  void ResultReady(const std::shared_ptr<const ScEng::ShownResult>& result);
  void FactsReady(const std::vector<ScEng::NodeFacts>& facts);
  void ProgressChanged(const ScEng::EvaluationProgress& progress, bool is_idle);

 private:
  void Take();

  /// Whether `Take` is on its way, so that the queue of events never fills with it.
  std::atomic<bool> is_announced_ = false;
  std::unique_ptr<ScEng::BackgroundEvaluator> evaluator_;
};
