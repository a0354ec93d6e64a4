// SPDX-License-Identifier: Apache-2.0
//
// Every call that a save makes fails once, in every way, or is the last one before the process is killed.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <random>
#include <set>
#include <string>
#include <thread>

#include "Host/Files/ImageFile.h"
#include "Tests/Support/FailingCalls.h"
#include "Tests/Support/SavingTesting.h"

namespace {

using ScEng::Status;
using ScEng::WriteWholeFile;
using Testing::CallPlan;
using Testing::Contains;
using Testing::FailingCalls;
using Testing::FolderContent;
using Testing::MakeContent;
using Testing::ReadText;
using Testing::TemporaryFolder;
using Testing::WriteText;

const std::string kOld = MakeContent(100'000, 'o');
const std::string kNew = MakeContent(150'000, 'n');
constexpr mode_t kOldMode = 0640;

/// Where a file is saved.
enum class Scene { kNewFile, kOldFile, kLink, kTwoNames };
constexpr Scene kScenes[] = {Scene::kNewFile, Scene::kOldFile, Scene::kLink, Scene::kTwoNames};

/// A folder with what there is before a save, and the save.
class SavePlace {
 public:
  explicit SavePlace(Scene scene) : scene_(scene) {
    if (scene == Scene::kNewFile) return;
    WriteText(folder_ / "file", kOld);
    chmod((folder_ / "file").c_str(), kOldMode);
    if (scene == Scene::kLink) std::filesystem::create_symlink("file", folder_ / "link");
    if (scene == Scene::kTwoNames) std::filesystem::create_hard_link(folder_ / "file", folder_ / "other");
    before_ = folder_.List();
  }

  [[nodiscard]] Status Save() const { return WriteWholeFile(GetTarget(), kNew); }
  [[nodiscard]] const TemporaryFolder& GetFolder() const { return folder_; }
  [[nodiscard]] std::filesystem::path GetTarget() const { return folder_ / (scene_ == Scene::kLink ? "link" : "file"); }

  void ExpectNew() const {
    EXPECT_EQ(folder_.List(), scene_ == Scene::kNewFile ? std::vector<std::string>{"file"} : before_);
    ExpectContent(kNew);
  }

  void ExpectOld() const {
    EXPECT_EQ(folder_.List(), before_);
    if (scene_ != Scene::kNewFile) ExpectContent(kOld);
  }

  /// The new file, or what there was, and perhaps a temporary file.
  void ExpectOldOrNew() const {
    const FolderContent content(folder_);
    if (scene_ == Scene::kNewFile && content.files.empty()) return;
    EXPECT_TRUE(ReadText(GetTarget()) == kOld || ReadText(GetTarget()) == kNew);
    EXPECT_EQ(content.files, scene_ == Scene::kNewFile ? std::vector<std::string>{"file"} : before_);
  }

 private:
  void ExpectContent(const std::string& content) const {
    EXPECT_TRUE(ReadText(folder_ / "file") == content);
    if (scene_ == Scene::kNewFile) return;
    struct stat now {};
    ASSERT_EQ(stat((folder_ / "file").c_str(), &now), 0);
    EXPECT_EQ(now.st_mode & 07777, kOldMode);
    if (scene_ == Scene::kLink) {
      EXPECT_TRUE(std::filesystem::is_symlink(folder_ / "link"));
    }
    if (scene_ == Scene::kTwoNames) {
      EXPECT_TRUE(std::filesystem::equivalent(folder_ / "file", folder_ / "other"));
    }
  }

  Scene scene_;
  TemporaryFolder folder_;
  std::vector<std::string> before_;
};

/// Saves once for each call that a save makes and has the plan's fate befall that call. Returns the functions that met
/// it.
template <typename Check>
std::set<std::string> SweepCalls(Scene scene, CallPlan plan, Check check) {
  std::set<std::string> functions;
  constexpr int kMostCalls = 200;
  for (plan.call = 1; plan.call < kMostCalls; ++plan.call) {
    const SavePlace place(scene);
    std::string failed;
    Status status;
    {
      const FailingCalls calls(plan);
      status = place.Save();
      failed = calls.GetFailed();
    }
    SCOPED_TRACE("scene " + std::to_string(static_cast<int>(scene)) + ", call " + std::to_string(plan.call) + " (" +
                 failed + "), " + std::strerror(plan.error));
    check(place, status);
    if (failed.empty()) return functions;
    functions.insert(failed);
  }
  ADD_FAILURE() << "a save makes more than " << kMostCalls << " calls";
  return functions;
}

void ExpectOneLine(const SavePlace& place, const Status& status) {
  EXPECT_TRUE(Contains(status.GetMessage(), "cannot write \"" + place.GetTarget().string() + "\": "));
  EXPECT_EQ(status.GetMessage().find('\n'), std::string::npos);
}

void ExpectToldTruly(const SavePlace& place, const Status& status) {
  if (!status.IsError()) return place.ExpectNew();
  ExpectOneLine(place, status);
  place.ExpectOld();
}

TEST(FailingSave, EveryCallThatFailsOnceIsToldAndLeavesTheOldFile) {
  std::set<std::string> functions;
  for (const int error : {EIO, ENOSPC, EDQUOT, EACCES, EPERM, ENOMEM, EFBIG, EBUSY, EEXIST, EINVAL, EROFS, EMFILE}) {
    CallPlan plan;
    plan.error = error;
    for (const Scene scene : kScenes) functions.merge(SweepCalls(scene, plan, ExpectToldTruly));
  }
  for (const char* function :
       {"memfd_create", "open", "openat", "getrandom", "pread", "pwrite", "fsync", "ftruncate", "fallocate", "fstat",
        "fstatat", "faccessat", "fchmod", "llistxattr", "fremovexattr", "flock", "close", "renameat"}) {
    EXPECT_TRUE(functions.count(function) == 1) << function;
  }
}

TEST(FailingSave, CausesThatDoNotPassAreTold) {
  // A full disk stays full: where the old content cannot be put back, the message says where it is.
  for (const int error : {EIO, ENOSPC, EDQUOT, EROFS}) {
    CallPlan plan;
    plan.error = error;
    plan.lasts = true;
    for (const Scene scene : kScenes) {
      SweepCalls(scene, plan, [](const SavePlace& place, const Status& status) {
        const FolderContent content(place.GetFolder());
        if (content.leftovers.empty()) return ExpectToldTruly(place, status);
        ExpectOneLine(place, status);
        ASSERT_EQ(content.leftovers.size(), 1U);
        const auto kept = place.GetFolder() / content.leftovers[0];
        EXPECT_TRUE(Contains(status.GetMessage(), "; its old content is in \"" + kept.string() + "\""));
        EXPECT_TRUE(ReadText(kept) == kOld);
      });
    }
  }
}

TEST(FailingSave, WhatMayCostContentIsNeverASuccess) {
  for (const char* function :
       {"memfd_create", "fstatat", "openat", "fstat", "pread", "pwrite", "ftruncate", "fsync", "close", "renameat"}) {
    const SavePlace place(Scene::kOldFile);
    CallPlan plan;
    plan.call = 1;
    plan.function = function;
    plan.error = EDQUOT;
    Status status;
    {
      const FailingCalls calls(plan);
      status = place.Save();
      EXPECT_EQ(calls.GetFailed(), function);
    }
    EXPECT_TRUE(status.IsError()) << function;
    ExpectToldTruly(place, status);
  }
}

TEST(FailingSave, OnlyAFileWithSeveralNamesCanNeedItsCopy) {
  for (const Scene scene : {Scene::kNewFile, Scene::kOldFile, Scene::kLink}) {
    CallPlan plan;
    plan.error = ENOSPC;
    plan.lasts = true;
    SweepCalls(scene, plan, ExpectToldTruly);
  }
}

TEST(FailingSave, InterruptedCallsAreRepeated) {
  for (const char* function :
       {"open", "openat", "pread", "pwrite", "fsync", "ftruncate", "fallocate", "getrandom", "close", "flock"}) {
    for (const Scene scene : kScenes) {
      CallPlan plan;
      plan.error = EINTR;
      plan.function = function;
      SweepCalls(scene, plan, [&](const SavePlace& place, const Status& status) {
        EXPECT_FALSE(status.IsError()) << function << ": " << status.GetMessage();
        place.ExpectNew();
      });
    }
  }
}

TEST(FailingSave, ShortReadsAndWritesGoOn) {
  CallPlan plan;
  plan.fate = CallPlan::Fate::kIsShort;
  for (const bool lasts : {false, true}) {
    plan.lasts = lasts;
    for (const Scene scene : kScenes) {
      SweepCalls(scene, plan, [](const SavePlace& place, const Status& status) {
        EXPECT_FALSE(status.IsError()) << status.GetMessage();
        place.ExpectNew();
      });
    }
  }
}

TEST(FailingSave, ANameThatIsTakenGivesWayToAnother) {
  for (const Scene scene : kScenes) {
    const SavePlace place(scene);
    CallPlan plan;
    plan.function = "openat";
    plan.error = EEXIST;
    // A file with two names is opened itself before a temporary file is made.
    plan.call = scene == Scene::kTwoNames ? 2 : 1;
    Status status;
    {
      const FailingCalls calls(plan);
      status = place.Save();
      EXPECT_EQ(calls.GetFailed(), "openat");
    }
    EXPECT_FALSE(status.IsError()) << status.GetMessage();
    place.ExpectNew();
  }
}

TEST(FailingSave, WhatCannotBeRenamedOverIsRewritten) {
  const SavePlace place(Scene::kOldFile);
  const auto inode = [&] {
    struct stat now {};
    EXPECT_EQ(stat(place.GetTarget().c_str(), &now), 0);
    return now.st_ino;
  };
  const ino_t before = inode();
  CallPlan plan;
  plan.call = 1;
  plan.function = "renameat";
  plan.error = EBUSY;
  {
    const FailingCalls calls(plan);
    const Status status = place.Save();
    EXPECT_FALSE(status.IsError()) << status.GetMessage();
  }
  place.ExpectNew();
  EXPECT_EQ(inode(), before);
}

// ---- Killed processes ----

int RunChild(const auto& work) {
  const pid_t child = fork();
  if (child == 0) {
    work();
    _exit(0);
  }
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  return status;
}

/// One name shows old or new content; with two names, the old content is in the copy where neither is there.
void ExpectSurvived(const SavePlace& place, Scene scene) {
  const FolderContent content(place.GetFolder());
  EXPECT_LE(content.leftovers.size(), 1U);
  if (scene == Scene::kTwoNames && content.leftovers.size() == 1) {
    const std::string now = ReadText(place.GetTarget());
    if (now != kOld && now != kNew) {
      EXPECT_TRUE(ReadText(place.GetFolder() / content.leftovers[0]) == kOld);
    }
    return;
  }
  place.ExpectOldOrNew();
}

TEST(KilledSave, IsOldOrNewWhicheverCallWasTheLast) {
  for (const Scene scene : kScenes) {
    CallPlan plan;
    plan.fate = CallPlan::Fate::kKills;
    bool was_killed = true;
    for (plan.call = 1; was_killed; ++plan.call) {
      SCOPED_TRACE("scene " + std::to_string(static_cast<int>(scene)) + ", call " + std::to_string(plan.call));
      const SavePlace place(scene);
      const int status = RunChild([&] {
        const FailingCalls calls(plan);
        if (place.Save().IsError()) _exit(1);
      });
      was_killed = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
      ASSERT_TRUE(was_killed || (WIFEXITED(status) && WEXITSTATUS(status) == 0));
      ExpectSurvived(place, scene);
      // What was left behind is in nobody's way.
      EXPECT_FALSE(place.Save().IsError());
      EXPECT_TRUE(ReadText(place.GetTarget()) == kNew);
    }
    EXPECT_GT(plan.call, 12);
  }
}

TEST(KilledSave, IsWholeAfterKillsAtRandomInstants) {
  const SavePlace place(Scene::kOldFile);
  std::mt19937 random(20240607);
  std::uniform_int_distribution<int> microseconds(0, 3000);
  int kills = 0;
  for (; kills < 500 && !testing::Test::HasFailure(); ++kills) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      // A process whose parent is gone does not go on for ever.
      alarm(60);
      const FailingCalls without_flushing({});
      for (bool is_new = true;; is_new = !is_new) {
        if (WriteWholeFile(place.GetTarget(), is_new ? kNew : kOld).IsError()) _exit(1);
      }
    }
    std::this_thread::sleep_for(std::chrono::microseconds(microseconds(random)));
    kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status));
    place.ExpectOldOrNew();
  }
  EXPECT_EQ(kills, 500);
  EXPECT_FALSE(place.Save().IsError());
  EXPECT_TRUE(ReadText(place.GetTarget()) == kNew);
}

}  // namespace
