// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/Log.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using Entry = std::pair<Log::Level, std::string>;

/// Collects what is logged and puts the log back as it was.
class LogTest : public testing::Test {
 protected:
  void SetUp() override {
    Log::SetLevel(Log::Level::kInfo);
    Log::SetSink([this](Log::Level level, const std::string& text) { entries_.emplace_back(level, text); });
  }
  void TearDown() override {
    Log::SetSink(nullptr);
    Log::SetLevel(Log::Level::kWarning);
  }

  std::vector<Entry> entries_;
};

TEST_F(LogTest, FormatsLikePrintf) {
  Log::Info("%s has %d of %.2f, %5u|%-4s|%c", "node", -7, 0.125, 42U, "ab", 'z');
  ASSERT_EQ(entries_.size(), 1U);
  EXPECT_EQ(entries_[0].first, Log::Level::kInfo);
  EXPECT_EQ(entries_[0].second, "node has -7 of 0.12,    42|ab  |z");
}

TEST_F(LogTest, TakesPercentSignsAndBracesAsTheyStand) {
  Log::Warning("100%% of {} and {0}");
  Log::Warning("%s", "%d {}");
  ASSERT_EQ(entries_.size(), 2U);
  EXPECT_EQ(entries_[0].second, "100% of {} and {0}");
  EXPECT_EQ(entries_[1].second, "%d {}");
}

TEST_F(LogTest, KeepsLongMessagesWhole) {
  const std::string text(5000, 'x');
  Log::Info("<%s>", text.c_str());
  ASSERT_EQ(entries_.size(), 1U);
  EXPECT_EQ(entries_[0].second, "<" + text + ">");
}

TEST_F(LogTest, TellsTheLevels) {
  Log::Info("a");
  Log::Warning("b");
  Log::Error("c");
  const std::vector<Entry> expected{{Log::Level::kInfo, "a"}, {Log::Level::kWarning, "b"}, {Log::Level::kError, "c"}};
  EXPECT_EQ(entries_, expected);
}

TEST_F(LogTest, PrintsOnlyWhereItIsTo) {
  testing::internal::CaptureStderr();
  Log::Warning("printed");
  Log::SetPrints(false);
  Log::Warning("kept");
  Log::SetPrints(true);
  Log::Error("again");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "warning: printed\nerror: again\n");
  EXPECT_EQ(entries_.size(), 3U);
}

TEST_F(LogTest, DropsWhatIsBelowTheLevel) {
  Log::SetLevel(Log::Level::kError);
  Log::Info("a");
  Log::Warning("b");
  Log::Error("c");
  ASSERT_EQ(entries_.size(), 1U);
  EXPECT_EQ(entries_[0].second, "c");
  Log::SetLevel(Log::Level::kOff);
  Log::Error("d");
  EXPECT_EQ(entries_.size(), 1U);
}

TEST_F(LogTest, StopsForwardingWithoutASink) {
  Log::SetSink(nullptr);
  Log::Error("nobody listens");
  EXPECT_TRUE(entries_.empty());
}

TEST_F(LogTest, CallsTheSinkOncePerMessageFromManyThreads) {
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 8; ++thread) {
    threads.emplace_back([thread] {
      for (int i = 0; i < 20; ++i) Log::Info("%d", thread);
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::vector<int> counts(8, 0);
  for (const Entry& entry : entries_) ++counts.at(static_cast<std::size_t>(std::stoi(entry.second)));
  EXPECT_EQ(counts, std::vector<int>(8, 20));
}

}  // namespace
