// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/SignalCleanup.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "Host/Files/ImageFile.h"
#include "Tests/Support/FailingCalls.h"
#include "Tests/Support/SavingTesting.h"

namespace {

using ScEng::CleanUpOnSignals;
using ScEng::WriteWholeFile;
using Testing::FailingCalls;
using Testing::MakeContent;
using Testing::ReadText;
using Testing::TemporaryFolder;
using Testing::WriteText;

const std::string kOld = MakeContent(100'000, 'o');
const std::string kNew = MakeContent(400'000, 'n');

/// A process whose parent is gone does not go on for ever.
void EndSometime() { alarm(60); }

/// A process that tells when it has begun.
class Child {
 public:
  template <typename Work>
  explicit Child(Work work) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    process_ = fork();
    if (process_ == 0) {
      EndSometime();
      close(ends[0]);
      work([&] { EXPECT_EQ(write(ends[1], "b", 1), 1); });
      _exit(0);
    }
    close(ends[1]);
    char begun = 0;
    EXPECT_EQ(read(ends[0], &begun, 1), 1);
    close(ends[0]);
  }

  void Send(int signal) const { kill(process_, signal); }

  /// The status of the process that has ended.
  [[nodiscard]] int Wait() const {
    int status = 0;
    EXPECT_EQ(waitpid(process_, &status, 0), process_);
    return status;
  }

 private:
  pid_t process_;
};

void ExpectEndedBy(int signal, int status) {
  EXPECT_TRUE(WIFSIGNALED(status)) << status;
  EXPECT_EQ(WTERMSIG(status), signal);
}

void SaveForever(const std::filesystem::path& file) {
  const FailingCalls without_flushing({});
  for (bool is_new = true;; is_new = !is_new) {
    if (WriteWholeFile(file, is_new ? kNew : kOld).IsError()) _exit(1);
  }
}

TEST(SignalCleanup, LeavesWholeFilesAndNothingElse) {
  std::mt19937 random(7);
  std::uniform_int_distribution<int> microseconds(0, 4000);
  constexpr int kRounds = 40;
  for (int i = 0; i < kRounds; ++i) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
      const TemporaryFolder folder;
      for (const char* name : {"a", "b", "linked"}) WriteText(folder / name, kOld);
      std::filesystem::create_hard_link(folder / "linked", folder / "other");
      const Child child([&](auto begin) {
        CleanUpOnSignals();
        std::vector<std::thread> threads;
        for (const char* name : {"a", "b", "linked"}) threads.emplace_back(SaveForever, folder / name);
        begin();
        for (std::thread& thread : threads) thread.join();
      });
      std::this_thread::sleep_for(std::chrono::microseconds(microseconds(random)));
      child.Send(signal);
      ExpectEndedBy(signal, child.Wait());
      EXPECT_EQ(folder.List(), (std::vector<std::string>{"a", "b", "linked", "other"}));
      for (const char* name : {"a", "b", "linked", "other"}) {
        const std::string now = ReadText(folder / name);
        EXPECT_TRUE(now == kOld || now == kNew) << name;
      }
    }
  }
}

TEST(SignalCleanup, WorksInTheOnlyThread) {
  for (int i = 0; i < 40; ++i) {
    const TemporaryFolder folder;
    WriteText(folder / "a", kOld);
    if (i % 2 == 0) std::filesystem::create_hard_link(folder / "a", folder / "b");
    const auto before = folder.List();
    const Child child([&](auto begin) {
      CleanUpOnSignals();
      begin();
      SaveForever(folder / "a");
    });
    std::this_thread::sleep_for(std::chrono::microseconds(100 * i));
    child.Send(SIGTERM);
    ExpectEndedBy(SIGTERM, child.Wait());
    EXPECT_EQ(folder.List(), before);
    const std::string now = ReadText(folder / "a");
    EXPECT_TRUE(now == kOld || now == kNew);
  }
}

TEST(SignalCleanup, EndsWithAnExitCodeWhereAskedTo) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const Child child([](auto begin) {
      CleanUpOnSignals(nullptr, ScEng::SignalEnd::kWithExitCode);
      begin();
      for (;;) pause();
    });
    child.Send(signal);
    const int status = child.Wait();
    EXPECT_TRUE(WIFEXITED(status)) << status;
    EXPECT_EQ(WEXITSTATUS(status), 128 + signal);
  }
}

TEST(SignalCleanup, IgnoredSignalsStayIgnored) {
  const Child child([](auto begin) {
    std::signal(SIGHUP, SIG_IGN);
    CleanUpOnSignals();
    begin();
    for (;;) pause();
  });
  child.Send(SIGHUP);
  child.Send(SIGTERM);
  ExpectEndedBy(SIGTERM, child.Wait());
}

volatile std::sig_atomic_t asked_to_stop = 0;

TEST(SignalCleanup, AHookCanLetTheProgramStopByItself) {
  const Child child([](auto begin) {
    CleanUpOnSignals([](int signal) {
      asked_to_stop = signal;
      return true;
    });
    begin();
    while (asked_to_stop == 0) poll(nullptr, 0, 1);
    _exit(asked_to_stop == SIGTERM ? 7 : 8);
  });
  child.Send(SIGTERM);
  const int status = child.Wait();
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 7);
}

TEST(SignalCleanup, AHookCanEndTheProcess) {
  const Child child([](auto begin) {
    CleanUpOnSignals([](int) { return false; });
    begin();
    for (;;) pause();
  });
  child.Send(SIGINT);
  ExpectEndedBy(SIGINT, child.Wait());
}

TEST(SignalCleanup, AForkedProcessLeavesItsParentsFiles) {
  const TemporaryFolder folder;
  const Child child([&](auto begin) {
    CleanUpOnSignals([](int) { return true; });
    std::atomic<bool> is_done = false;
    std::thread saving([&] {
      const FailingCalls without_flushing({});
      while (!is_done) {
        if (WriteWholeFile(folder / "a", kNew).IsError()) _exit(1);
      }
    });
    begin();
    for (int i = 0; i < 100; ++i) {
      const pid_t grandchild = fork();
      // The hook is for the process that set it.
      if (grandchild == 0) {
        EndSometime();
        for (;;) pause();
      }
      kill(grandchild, SIGTERM);
      int status = 0;
      if (waitpid(grandchild, &status, 0) != grandchild || !WIFSIGNALED(status)) _exit(2);
    }
    is_done = true;
    saving.join();
  });
  const int status = child.Wait();
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  EXPECT_EQ(folder.List(), std::vector<std::string>{"a"});
}

}  // namespace
