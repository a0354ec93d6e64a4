// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "Host/Editing/EditSession.h"
#include "Host/Editing/Journals.h"
#include "Tests/Support/EditTesting.h"

namespace {

using ScEng::EditSession;
using ScEng::Status;
using Clock = std::chrono::system_clock;

constexpr std::size_t kMost = 1 << 20;

/// What the killed process has done, in memory that outlives it.
struct Record {
  /// How many edits are done; the n-th was done at this time, in microseconds.
  std::atomic<std::size_t> edits;
  std::atomic<std::int64_t> times[kMost];
  /// When `Tick` was done last, 0 before, and the longest time between two of its calls.
  std::atomic<std::int64_t> ticked;
  std::atomic<std::int64_t> longest_gap;
};

std::int64_t Now() {
  return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now().time_since_epoch()).count();
}

/// Edits at random, as fast as a person with ten hands, and keeps the journal as a window does. Never returns.
[[noreturn]] void EditUntilKilled(EditSession& session, unsigned seed, Record& record) {
  std::mt19937 random(seed);
  std::int64_t ticked = Now();
  std::vector<std::string> added;
  while (record.edits < kMost) {
    Status status;
    std::string id;
    switch (random() % 5) {
      case 0:
        status = session.AddNode({Testing::kAdd, "", {}}, &id);
        if (!status.IsError()) added.push_back(id);
        break;
      case 1:
        if (added.empty()) continue;
        status = session.RemoveNodes({added.back()});
        added.pop_back();
        break;
      case 2: status = session.SetAttribute("b.constant", std::to_string(random() % 1000)); break;
      case 3: status = session.SetPositions({{"a", ScEng::Point{static_cast<double>(random() % 1000), 0.0}}}); break;
      default: break;
    }
    // The number of the edit is what is looked for in what was recovered.
    const std::size_t number = record.edits;
    if (status.IsError() || session.SetNote("a", std::to_string(number)).IsError()) _exit(1);
    record.times[number] = Now();
    record.edits = number + 1;
    std::this_thread::sleep_for(std::chrono::milliseconds(random() % 20));
    if (Now() - ticked < 400000) continue;
    record.longest_gap = std::max<std::int64_t>(record.longest_gap, Now() - ticked);
    ticked = Now();
    if (session.Tick(Clock::now()).IsError()) _exit(2);
    record.ticked = ticked;
  }
  _exit(3);
}

class KillsTest : public Testing::EditSessionTest {
 protected:
  void SetUp() override {
    EditSessionTest::SetUp();
    void* memory = mmap(nullptr, sizeof(Record), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    record_ = new (memory) Record;
  }
  void TearDown() override {
    munmap(record_, sizeof(Record));
    EditSessionTest::TearDown();
  }

  Record* record_ = nullptr;
};

// Of a process that is killed at whatever instant, everything is recovered but the edits of its last two seconds. The
// environment variable VALUE_KILLS asks for more than the few kills of every day.
TEST_F(KillsTest, TwoSecondsOfWorkAreLostAtMost) {
  const char* asked = std::getenv("VALUE_KILLS");
  const int kills = asked != nullptr ? std::atoi(asked) : 3;
  std::mt19937 random(2026);
  double most_lost = 0.0;
  for (int kill_number = 0; kill_number < kills; ++kill_number) {
    record_->edits = 0;
    record_->ticked = 0;
    record_->longest_gap = 0;
    const unsigned seed = static_cast<unsigned>(random());
    const pid_t child = fork();
    if (child == 0) EditUntilKilled(*session_, seed, *record_);
    // Before its first journal, however long that takes here, there is nothing to recover.
    while (record_->ticked == 0) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    std::this_thread::sleep_for(std::chrono::milliseconds(random() % 2500));
    ASSERT_EQ(kill(child, SIGKILL), 0);
    const std::int64_t killed = Now();
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the process ended by itself with " << WEXITSTATUS(status);

    std::vector<std::string> notes;
    const auto journals = ScEng::FindJournalsOf(folder_ / "graph.json", notes);
    EXPECT_TRUE(notes.empty()) << notes[0];
    ASSERT_EQ(journals.size(), 1U) << "after kill " << kill_number;
    ScEng::Findings findings;
    const auto recovered = EditSession::Recover(Testing::GetCatalog(), journals[0], folder_ / "state", findings);
    ASSERT_NE(recovered, nullptr) << findings.errors[0];
    const std::size_t kept = std::stoul(recovered->GetDocument().GetNote("a")) + 1;
    const std::size_t made = record_->edits;
    // The last edit may have been done and not been counted yet.
    ASSERT_LE(kept, made + 1);
    if (kept < made) {
      const auto lost = static_cast<double>(record_->times[made - 1] - record_->times[kept]) * 1e-6;
      // On a machine that stands still between two calls, so does the journal.
      const std::int64_t gap = std::max<std::int64_t>(record_->longest_gap, killed - record_->ticked);
      const double late = std::max(0.0, static_cast<double>(gap) * 1e-6 - 0.5);
      EXPECT_LE(lost, 2.0 + late);
      most_lost = std::max(most_lost, lost);
    }
    recovered->Close();
    ScEng::DiscardJournal(journals[0]);
  }
  RecordProperty("kills", kills);
  RecordProperty("most_lost_ms", static_cast<int>(most_lost * 1000.0));
  if (asked != nullptr) std::printf("%d kills, all recovered, at most %.2f s of work lost\n", kills, most_lost);
}

}  // namespace
