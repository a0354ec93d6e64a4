// SPDX-License-Identifier: Apache-2.0
#include "Host/Editing/BackgroundEvaluator.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <utility>

#include "Host/Editing/Background/Mirror.h"
#include "Host/Editing/Background/SessionFollower.h"
#include "Host/Util/Log.h"

namespace ScEng {
namespace {

using Clock = std::chrono::steady_clock;

/// What has begun is given this long before a change cancels it, so that short evaluations come to their end while
/// somebody drags a slider.
constexpr std::chrono::milliseconds kGrace(60);
/// A preview is shown this long after it was asked for: of what is there before, nobody needs one.
constexpr std::chrono::milliseconds kPatience(90);

}  // namespace

/// Two threads stand behind it: one evaluates, the other does what is due at a time.
class BackgroundEvaluator::Implementation {
 public:
  Implementation(EditSession& session, std::function<void()> notify)
      : notify_(std::move(notify)),
        mirror_(std::make_unique<Mirror>(session.GetCatalog(), MakeListener())),
        follower_(session, [this](MirrorChange change) { Take(std::move(change)); }),
        evaluating_([this] { Work(); }),
        timekeeping_([this] { KeepTime(); }) {}

  ~Implementation() {
    {
      const std::lock_guard lock(mutex_);
      is_ending_ = true;
      cancellation_.Request();
    }
    changed_.notify_all();
    evaluating_.join();
    timekeeping_.join();
  }
  Implementation(const Implementation&) = delete;
  Implementation& operator=(const Implementation&) = delete;

  /// Changes what is asked for, and starts anew.
  template <class Change>
  void Ask(const Change& change) {
    {
      const std::lock_guard lock(mutex_);
      change();
      if (!is_pending_) asked_at_ = Clock::now();
      is_pending_ = true;
      is_paused_ = false;
    }
    changed_.notify_all();
  }

  void Take(MirrorChange change) {
    Ask([&] { changes_.push_back(std::move(change)); });
  }

  void Cancel() {
    const std::lock_guard lock(mutex_);
    is_paused_ = true;
    cancellation_.Request();
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::condition_variable idle_;

  // ---- What is asked for ----
  std::vector<MirrorChange> changes_;
  std::vector<std::string> read_again_;
  ShownPlugs shown_;
  bool evaluates_all_ = true;
  int thumbnail_size_ = 0;

  // ---- What has become of it ----
  std::shared_ptr<const ShownResult> result_;
  std::vector<NodeFacts> facts_;
  std::unordered_map<std::string, std::size_t> places_of_facts_;
  EvaluationProgress progress_;

  [[nodiscard]] bool IsIdle() const { return !is_working_ && (!is_pending_ || is_paused_); }

 private:
  Mirror::Listener MakeListener() {
    return {.on_facts = [this](NodeFacts facts) { Publish(std::move(facts)); },
            .on_progress =
                [this](const EvaluationProgress& progress) {
                  {
                    const std::lock_guard lock(mutex_);
                    if (progress.total == 0) {
                      progress_.id = progress.id;
                      progress_.fraction = progress.fraction;
                    } else {
                      progress_ = progress;
                    }
                  }
                  notify_();
                }};
  }

  void Publish(NodeFacts facts) {
    const std::lock_guard lock(mutex_);
    const auto [place, is_new] = places_of_facts_.try_emplace(facts.id, facts_.size());
    if (is_new) {
      facts_.push_back(std::move(facts));
    } else {
      facts_[place->second] = std::move(facts);
    }
  }

  void Work() {
    std::unique_lock lock(mutex_);
    for (;;) {
      changed_.wait(lock, [this] { return is_ending_ || (is_pending_ && !is_paused_); });
      if (is_ending_) break;
      is_working_ = true;
      begun_at_ = Clock::now();
      cancellation_.Reset();
      is_pending_ = false;
      const Round round{std::exchange(changes_, {}),
                        std::exchange(read_again_, {}),
                        shown_,
                        evaluates_all_,
                        thumbnail_size_,
                        asked_at_};
      lock.unlock();
      const bool is_done = Evaluate(round);
      lock.lock();
      is_working_ = false;
      progress_ = {};
      // A pause in the middle: what is left is made when it ends.
      if (!is_done && !is_pending_) is_pending_ = true;
      if (IsIdle()) idle_.notify_all();
      lock.unlock();
      notify_();
      lock.lock();
    }
    lock.unlock();
    // The nodes end on the thread that they lived on.
    mirror_.reset();
  }

  /// What one round of the evaluating thread has to do.
  struct Round {
    std::vector<MirrorChange> changes;
    std::vector<std::string> read_again;
    ShownPlugs shown;
    bool evaluates_all = true;
    int thumbnail_size = 0;
    Clock::time_point asked_at;
  };

  bool Evaluate(const Round& round) {
    try {
      mirror_->Apply(round.changes);
      mirror_->ReadAgain(round.read_again);
      mirror_->SetThumbnailSize(round.thumbnail_size);
      if (auto preview = mirror_->EvaluatePreview(round.shown, cancellation_)) Hold(std::move(preview), round.asked_at);
      const std::shared_ptr<ShownResult> result = mirror_->EvaluateShown(round.shown, cancellation_);
      if (result == nullptr) {
        PublishHeld();
        return false;
      }
      result->seconds = GetSecondsSince(round.asked_at);
      {
        const std::lock_guard lock(mutex_);
        held_ = nullptr;
        result_ = result;
      }
      notify_();
      return !round.evaluates_all || mirror_->EvaluateRest(cancellation_);
    } catch (const std::exception& error) {
      // Memory for the tables themselves, for example. The next change tries again.
      Log::Error("the evaluation in the background failed: %s", error.what());
      return true;
    }
  }

  static double GetSecondsSince(Clock::time_point begin) {
    return std::chrono::duration<double>(Clock::now() - begin).count();
  }

  /// Keeps a preview until it is due.
  void Hold(std::shared_ptr<ShownResult> preview, Clock::time_point asked_at) {
    preview->seconds = GetSecondsSince(asked_at);
    {
      const std::lock_guard lock(mutex_);
      held_ = std::move(preview);
      held_until_ = asked_at + kPatience;
    }
    changed_.notify_all();
  }

  /// Hands out the preview that is kept, if there is one.
  void PublishHeld() {
    {
      const std::lock_guard lock(mutex_);
      if (held_ == nullptr) return;
      result_ = std::exchange(held_, nullptr);
    }
    notify_();
  }

  /// Does what is due at a time: cancels what has had its time, and shows previews.
  void KeepTime() {
    std::unique_lock lock(mutex_);
    while (!is_ending_) {
      const bool cancels = is_pending_ && is_working_;
      const Clock::time_point now = Clock::now();
      if (held_ != nullptr && now >= held_until_) {
        lock.unlock();
        PublishHeld();
        lock.lock();
        continue;
      }
      if (cancels && now >= begun_at_ + kGrace) {
        cancellation_.Request();
        // Until the other thread has seen it.
        changed_.wait_for(lock, kGrace, [this] { return is_ending_ || !is_working_; });
        continue;
      }
      // Whatever comes to be due by what happens meanwhile is told.
      if (cancels || held_ != nullptr) {
        const Clock::time_point due = std::min(cancels ? begun_at_ + kGrace : Clock::time_point::max(),
                                               held_ != nullptr ? held_until_ : Clock::time_point::max());
        changed_.wait_until(lock, due);
      } else {
        changed_.wait(lock);
      }
    }
  }

  std::function<void()> notify_;
  Cancellation cancellation_;
  bool is_ending_ = false;
  bool is_pending_ = false;
  bool is_paused_ = false;
  bool is_working_ = false;
  Clock::time_point asked_at_;
  Clock::time_point begun_at_;
  /// The preview of the round that goes on, until it is due or the image itself is there.
  std::shared_ptr<const ShownResult> held_;
  Clock::time_point held_until_;
  std::unique_ptr<Mirror> mirror_;
  SessionFollower follower_;
  std::thread evaluating_;
  std::thread timekeeping_;
};

BackgroundEvaluator::BackgroundEvaluator(EditSession& session, std::function<void()> notify)
    : implementation_(std::make_unique<Implementation>(session, std::move(notify))) {}

BackgroundEvaluator::~BackgroundEvaluator() = default;

void BackgroundEvaluator::Show(const ShownPlugs& shown) {
  Implementation& state = *implementation_;
  {
    const std::lock_guard lock(state.mutex_);
    if (state.shown_ == shown) return;
  }
  state.Ask([&] { state.shown_ = shown; });
}

void BackgroundEvaluator::SetEvaluatesAll(bool all) {
  implementation_->Ask([&] { implementation_->evaluates_all_ = all; });
}

void BackgroundEvaluator::SetThumbnailSize(int size) {
  implementation_->Ask([&] { implementation_->thumbnail_size_ = size; });
}

void BackgroundEvaluator::ReadAgain(const std::vector<std::string>& ids) {
  Implementation& state = *implementation_;
  state.Ask([&] { state.read_again_.insert(state.read_again_.end(), ids.begin(), ids.end()); });
}

void BackgroundEvaluator::Cancel() { implementation_->Cancel(); }

void BackgroundEvaluator::Resume() {
  implementation_->Ask([] {});
}

std::shared_ptr<const ShownResult> BackgroundEvaluator::TakeResult() {
  const std::lock_guard lock(implementation_->mutex_);
  return std::exchange(implementation_->result_, nullptr);
}

std::vector<NodeFacts> BackgroundEvaluator::TakeFacts() {
  const std::lock_guard lock(implementation_->mutex_);
  implementation_->places_of_facts_.clear();
  return std::exchange(implementation_->facts_, {});
}

EvaluationProgress BackgroundEvaluator::GetProgress() const {
  const std::lock_guard lock(implementation_->mutex_);
  return implementation_->progress_;
}

bool BackgroundEvaluator::IsIdle() const {
  const std::lock_guard lock(implementation_->mutex_);
  return implementation_->IsIdle();
}

bool BackgroundEvaluator::WaitUntilIdle(double seconds) {
  std::unique_lock lock(implementation_->mutex_);
  return implementation_->idle_.wait_for(lock, std::chrono::duration<double>(seconds),
                                         [this] { return implementation_->IsIdle(); });
}

}  // namespace ScEng
