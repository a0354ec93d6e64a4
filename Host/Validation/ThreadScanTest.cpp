// SPDX-License-Identifier: Apache-2.0
#include "Host/Validation/ThreadScan.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>

namespace {

using ScEng::AddressRange;
using ScEng::FindThreadsIn;

/// A thread that waits in code of this program until the end of the test.
class WaitingThread {
 public:
  WaitingThread() {
    std::unique_lock lock(mutex_);
    thread_ = std::thread([this] { Wait(); });
    changed_.wait(lock, [this] { return !number_.empty(); });
  }
  ~WaitingThread() {
    {
      const std::lock_guard lock(mutex_);
      is_to_end_ = true;
    }
    changed_.notify_all();
    thread_.join();
  }

  [[nodiscard]] const std::string& GetNumber() const { return number_; }

 private:
  void Wait() {
    std::unique_lock lock(mutex_);
    number_ = std::to_string(gettid());
    changed_.notify_all();
    changed_.wait(lock, [this] { return is_to_end_; });
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::string number_;
  bool is_to_end_ = false;
  std::thread thread_;
};

TEST(FindThreadsIn, SeesAThreadThatWaitsInTheCodeOfAFile) {
  const WaitingThread thread;
  const AddressRange program = AddressRange::FindOf(reinterpret_cast<const void*>(&FindThreadsIn));
  // It takes a moment until a thread that is about to wait does.
  bool is_seen = false;
  for (int i = 0; i < 500 && !is_seen; ++i) {
    is_seen = FindThreadsIn(program).contains(thread.GetNumber());
    if (!is_seen) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_TRUE(is_seen);
  EXPECT_TRUE(FindThreadsIn(AddressRange()).empty());
}

}  // namespace
