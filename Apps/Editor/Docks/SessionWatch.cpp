// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/SessionWatch.h"

SessionWatch::SessionWatch(ScEng::EditSession& session, QObject* parent, int delay)
    : QObject(parent), session_(session) {
  timer_.setSingleShot(true);
  timer_.setInterval(delay);
  connect(&timer_, &QTimer::timeout, this, &SessionWatch::Changed);
  session_.AddObserver(this);
}

SessionWatch::~SessionWatch() { session_.RemoveObserver(this); }

void SessionWatch::OnNodeAdded(const std::string&) { Start(); }
void SessionWatch::OnNodeRemoved(const std::string&) { Start(); }
void SessionWatch::OnNodeRenamed(const std::string& before, const std::string& now) {
  emit NodeRenamed(before, now);
  Start();
}
void SessionWatch::OnNodeChanged(const std::string&) { Start(); }
void SessionWatch::OnAttributeChanged(const std::string&, const std::string&) { Start(); }
void SessionWatch::OnOrderChanged() { Start(); }
void SessionWatch::OnConnectionAdded(const ScEng::DocumentConnection&) { Start(); }
void SessionWatch::OnConnectionRemoved(const ScEng::DocumentConnection&) { Start(); }
void SessionWatch::OnOutputsChanged() { Start(); }
void SessionWatch::OnHistoryChanged() { Start(); }

void SessionWatch::Start() {
  // A timer that runs is not started again, so that changes without a pause are shown all the same.
  if (!timer_.isActive()) timer_.start();
}
