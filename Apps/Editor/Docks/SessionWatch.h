// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QTimer>
#include <string>

#include "Host/Editing/EditSession.h"

/// Tells a dock once that a document has changed, after all that one command does has been done: the dock may then give
/// commands of its own, which an observer may not.
class SessionWatch : public QObject, private ScEng::EditObserver {
  Q_OBJECT

 public:
  /// Both outlive this. `delay` is in milliseconds; changes within it are told together.
  SessionWatch(ScEng::EditSession& session, QObject* parent, int delay = 0);
  ~SessionWatch() override;

 signals:
  void Changed();
  /// Told at once, so that ids that somebody keeps can follow. No commands may be given.
  void NodeRenamed(const std::string& before, const std::string& now);

 private:
  void OnNodeAdded(const std::string& id) override;
  void OnNodeRemoved(const std::string& id) override;
  void OnNodeRenamed(const std::string& before, const std::string& now) override;
  void OnNodeChanged(const std::string& id) override;
  void OnAttributeChanged(const std::string& id, const std::string& attribute) override;
  void OnOrderChanged() override;
  void OnConnectionAdded(const ScEng::DocumentConnection& connection) override;
  void OnConnectionRemoved(const ScEng::DocumentConnection& connection) override;
  void OnOutputsChanged() override;
  void OnHistoryChanged() override;

  void Start();

  ScEng::EditSession& session_;
  QTimer timer_;
};
