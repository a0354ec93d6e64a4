// SPDX-License-Identifier: Apache-2.0
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

#include "Host/Editing/BackgroundEvaluator.h"

namespace ScEng {

class BackgroundRun::Implementation {
 public:
  Implementation(const EditSession& session, std::function<void()> notify) : notify_(std::move(notify)) {
    const Status status = session.GetDocument().SaveText(text_);
    if (status.IsError()) report_.findings.AddError(status.GetMessage());
    working_ = std::thread([this, catalog = session.GetCatalog(), folder = session.GetDocument().GetFolder()] {
      if (report_.findings.errors.empty()) Work(catalog, folder);
      {
        const std::lock_guard lock(mutex_);
        progress_.is_finished = true;
      }
      notify_();
    });
  }
  ~Implementation() {
    cancellation_.Request();
    working_.join();
  }
  Implementation(const Implementation&) = delete;
  Implementation& operator=(const Implementation&) = delete;

  Cancellation cancellation_;
  std::mutex mutex_;
  Progress progress_;
  RunReport report_;

 private:
  void Work(const std::shared_ptr<const NodeCatalog>& catalog, const std::filesystem::path& folder) {
    try {
      GraphDocument document(catalog);
      // Unknown types and what else is wrong become errors of the run, in the words of a document that is loaded.
      document.LoadText(text_, folder, "the document", report_.findings);
      if (report_.findings.errors.empty()) document.CheckComplete(report_.findings);
      if (!report_.findings.errors.empty()) {
        report_.failure = RunFailure::kNode;
        return;
      }
      Engine::Options options;
      options.cancellation = &cancellation_;
      const auto tell = [this](const std::string& id, std::size_t done, std::size_t total) {
        {
          const std::lock_guard lock(mutex_);
          progress_ = {id, done, total, false};
        }
        notify_();
      };
      report_ = document.Run(tell, options);
    } catch (const std::exception& error) {
      report_.findings.AddError(std::string("the run failed: ") + error.what());
      report_.failure = RunFailure::kNode;
    }
  }

  std::function<void()> notify_;
  std::string text_;
  std::thread working_;
};

BackgroundRun::BackgroundRun(const EditSession& session, std::function<void()> notify)
    : implementation_(std::make_unique<Implementation>(session, std::move(notify))) {}

BackgroundRun::~BackgroundRun() = default;

void BackgroundRun::Cancel() { implementation_->cancellation_.Request(); }

BackgroundRun::Progress BackgroundRun::GetProgress() const {
  const std::lock_guard lock(implementation_->mutex_);
  return implementation_->progress_;
}

const RunReport& BackgroundRun::GetReport() const { return implementation_->report_; }

}  // namespace ScEng
