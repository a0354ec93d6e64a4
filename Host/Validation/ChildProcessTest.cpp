// SPDX-License-Identifier: Apache-2.0
#include "Host/Validation/ChildProcess.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <chrono>
#include <csignal>
#include <string>

namespace {

using ScEng::ChildProcess;
using Event = ChildProcess::Event;

/// Starts a shell. Its script finds the socket's descriptor in $socket.
void StartScript(ChildProcess& child, const std::string& script) {
  const ScEng::Status status = child.Start({"/bin/bash", "-c", "socket=${1%,*}; " + script, "bash"});
  ASSERT_FALSE(status.IsError()) << status.GetMessage();
}

ChildProcess::Clock::time_point In(std::chrono::milliseconds time) { return ChildProcess::Clock::now() + time; }

constexpr std::chrono::seconds kLong{60};

TEST(ChildProcess, SpeaksInLines) {
  ChildProcess child;
  StartScript(child, "read -u $socket word; echo \"got $word\" >&$socket; echo two >&$socket");
  child.Send("hello");
  std::string line;
  ASSERT_EQ(child.ReadLine(line, In(kLong)), Event::kLine);
  EXPECT_EQ(line, "got hello");
  ASSERT_EQ(child.ReadLine(line, In(kLong)), Event::kLine);
  EXPECT_EQ(line, "two");
  EXPECT_EQ(child.ReadLine(line, In(kLong)), Event::kEnded);
  EXPECT_EQ(child.GetEnd(), "ended with exit code 0");
  EXPECT_FALSE(child.IsRunning());
}

TEST(ChildProcess, TellsTheExitCodeAndTheLastWords) {
  ChildProcess child;
  StartScript(child, "echo first; echo '  what went wrong' >&2; exit 7");
  std::string line;
  EXPECT_EQ(child.ReadLine(line, In(kLong)), Event::kEnded);
  EXPECT_EQ(child.GetEnd(), "ended with exit code 7");
  EXPECT_EQ(child.GetLastWords(), "what went wrong");
}

TEST(ChildProcess, TellsTheSignal) {
  ChildProcess child;
  StartScript(child, "kill -SEGV $$");
  std::string line;
  EXPECT_EQ(child.ReadLine(line, In(kLong)), Event::kEnded);
  EXPECT_EQ(child.GetEnd(), "was ended by signal 11 (segmentation fault)");
}

TEST(ChildProcess, PrefersTheLineThatNamesTheCause) {
  ChildProcess child;
  StartScript(child, "echo '==7==ERROR: a tool says why'; echo 'and more'; exit 1");
  std::string line;
  EXPECT_EQ(child.ReadLine(line, In(kLong)), Event::kEnded);
  EXPECT_EQ(child.GetLastWords(), "==7==ERROR: a tool says why");
}

TEST(ChildProcess, IsNotBlockedByWhatItPrints) {
  ChildProcess child;
  StartScript(child, "for i in {1..20000}; do echo a line of some length that nobody reads; done; echo done >&$socket");
  std::string line;
  ASSERT_EQ(child.ReadLine(line, In(kLong)), Event::kLine);
  EXPECT_EQ(line, "done");
}

TEST(ChildProcess, IsEndedAfterATimeoutWithWhatItStarted) {
  ChildProcess child;
  StartScript(child, "sleep 600 & echo $! >&$socket; wait");
  std::string line;
  ASSERT_EQ(child.ReadLine(line, In(kLong)), Event::kLine);
  const pid_t grandchild = std::stoi(line);
  EXPECT_EQ(child.ReadLine(line, In(std::chrono::milliseconds(50))), Event::kTimeout);
  EXPECT_TRUE(child.IsRunning());
  child.Stop();
  EXPECT_FALSE(child.IsRunning());
  // The one that it started belongs to the system now, which may take a moment to bury it.
  const auto deadline = In(kLong);
  while (kill(grandchild, 0) == 0 && ChildProcess::Clock::now() < deadline) {
    std::string state;
    if (FILE* file = std::fopen(("/proc/" + line + "/stat").c_str(), "r")) {
      char text[256] = {};
      if (std::fgets(text, sizeof(text), file) != nullptr) state = text;
      std::fclose(file);
    }
    if (state.find(") Z") != std::string::npos) break;
  }
  EXPECT_LT(ChildProcess::Clock::now(), deadline);
}

TEST(ChildProcess, MeetsTheDeadlineAlthoughItPrintsWithoutEnd) {
  ChildProcess child;
  StartScript(child, "yes");
  std::string line;
  EXPECT_EQ(child.ReadLine(line, In(std::chrono::milliseconds(200))), Event::kTimeout);
  EXPECT_EQ(child.GetLastWords(), "y");
}

TEST(ChildProcess, IsStartedAgain) {
  ChildProcess child;
  std::string line;
  for (const char* word : {"one", "two"}) {
    StartScript(child, std::string("echo ") + word + " >&$socket; sleep 600");
    ASSERT_EQ(child.ReadLine(line, In(kLong)), Event::kLine);
    EXPECT_EQ(line, word);
  }
}

TEST(ChildProcess, EndsWithCode127WhereThereIsNoSuchProgram) {
  ChildProcess child;
  ASSERT_FALSE(child.Start({"/no/such/program"}).IsError());
  std::string line;
  EXPECT_EQ(child.ReadLine(line, In(kLong)), Event::kEnded);
  EXPECT_EQ(child.GetEnd(), "ended with exit code 127");
}

}  // namespace
