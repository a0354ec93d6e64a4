// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Window/EvaluationBridge.h"

EvaluationBridge::EvaluationBridge(ScEng::EditSession& session, QObject* parent) : QObject(parent) {
  evaluator_ = std::make_unique<ScEng::BackgroundEvaluator>(session, [this] {
    if (!is_announced_.exchange(true))
      QMetaObject::invokeMethod(
          this, [this] { Take(); }, Qt::QueuedConnection);
  });
}

EvaluationBridge::~EvaluationBridge() = default;

void EvaluationBridge::Take() {
  // Before anything is taken: what comes from now on is announced again.
  is_announced_ = false;
  if (const auto facts = evaluator_->TakeFacts(); !facts.empty()) emit FactsReady(facts);
  if (const auto result = evaluator_->TakeResult()) emit ResultReady(result);
  emit ProgressChanged(evaluator_->GetProgress(), evaluator_->IsIdle());
}
