// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Host/Editing/BackgroundEvaluator.h"
#include "Tests/Support/EditTesting.h"

namespace {

using ScEng::BackgroundRun;

class BackgroundRunTest : public Testing::EditSessionTest {
 protected:
  void SetUp() override {
    EditSessionTest::SetUp();
    ASSERT_FALSE(session_->RemoveNodes({"x"}).IsError());
  }

  std::unique_ptr<BackgroundRun> Start() {
    return std::make_unique<BackgroundRun>(*session_, [this] {
      const std::lock_guard lock(mutex_);
      noticed_.notify_all();
    });
  }
  void WaitFor(const BackgroundRun& run) {
    std::unique_lock lock(mutex_);
    noticed_.wait(lock, [&] { return run.GetProgress().is_finished; });
  }

  std::mutex mutex_;
  std::condition_variable noticed_;
};

TEST_F(BackgroundRunTest, WritesTheDocumentAsItWas) {
  const auto run = Start();
  // What comes later does not concern it.
  ASSERT_FALSE(session_->SetAttribute("n.value", "0.5").IsError());
  WaitFor(*run);
  const ScEng::RunReport& report = run->GetReport();
  EXPECT_TRUE(report.findings.errors.empty()) << report.findings.errors[0];
  ASSERT_EQ(report.written.size(), 2U);
  std::vector<std::string> notes;
  ScEng::Status status;
  const ImagePtr image = ScEng::ReadImageFile(folder_ / "b.exr", {}, status, notes);
  ASSERT_TRUE(image) << status.GetMessage();
  EXPECT_EQ(image->GetConstArray()[0], 1.0F);
  EXPECT_TRUE(std::filesystem::exists(folder_ / "d.exr"));
}

TEST_F(BackgroundRunTest, TellsWhatIsMissing) {
  ASSERT_FALSE(session_->AddNode({{10, 16, 5}, "reader", {}}).IsError());
  ASSERT_FALSE(session_->Reconnect({"reader.image", "b.image", 0}).IsError());
  const auto run = Start();
  WaitFor(*run);
  ASSERT_FALSE(run->GetReport().findings.errors.empty());
  EXPECT_TRUE(Testing::Contains(run->GetReport().findings.errors[0], "reader"));
  EXPECT_FALSE(std::filesystem::exists(folder_ / "b.exr"));
}

TEST_F(BackgroundRunTest, LeavesNothingHalfWrittenWhenItIsStopped) {
  ASSERT_FALSE(session_->SetAttribute("a.frame", "0,0,2000,2000").IsError());
  auto run = Start();
  run->Cancel();
  WaitFor(*run);
  run.reset();
  for (const auto& entry : std::filesystem::directory_iterator(folder_.Path())) {
    const std::string name = entry.path().filename().string();
    // Whole files may be there; their temporary forms are not.
    const bool is_known = name == "b.exr" || name == "d.exr" || name == "graph.json" || name == "state" ||
                          name.find("journal") != std::string::npos;
    EXPECT_TRUE(is_known) << name;
  }
}

}  // namespace
