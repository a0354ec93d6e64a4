// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/RunningCall.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "Host/Tools/Engine.h"
#include "Host/Tools/Guard.h"
#include "Host/Tools/NodeLibrary.h"
#include "Tests/Support/TestNodes.h"

namespace {

using ScEng::FindLibraryOf;
using ScEng::RunningCall;
using ScEng::RunningScope;

TEST(RunningCall, IsWhatTheScopesSay) {
  EXPECT_EQ(RunningCall::Find().node, nullptr);
  {
    const RunningScope loading({"loading it", nullptr, "/x/Foo.so"});
    EXPECT_STREQ(RunningCall::Find().operation, "loading it");
    {
      const RunningScope asking({"GetName", nullptr, nullptr});
      EXPECT_STREQ(RunningCall::Find().operation, "GetName");
      EXPECT_STREQ(RunningCall::Find().library, "/x/Foo.so");
    }
    // A node of the host's own, evaluated meanwhile, is not of that library.
    const RunningScope evaluating({"Evaluate", "reader", nullptr});
    EXPECT_STREQ(RunningCall::Find().node, "reader");
    EXPECT_EQ(RunningCall::Find().library, nullptr);
  }
  EXPECT_EQ(RunningCall::Find().operation, nullptr);
  EXPECT_EQ(RunningCall::Find().library, nullptr);
}

TEST(RunningCall, HelpersWorkForTheOnlyNodeThatIsEvaluated) {
  const auto find_elsewhere = [] {
    std::string node;
    std::thread([&] {
      const RunningCall call = RunningCall::Find();
      node = call.node != nullptr ? call.node : "none";
    }).join();
    return node;
  };
  EXPECT_EQ(find_elsewhere(), "none");
  const RunningScope first({"Evaluate", "first", nullptr});
  EXPECT_EQ(find_elsewhere(), "first");
  // Of two it could be either.
  std::thread([&] {
    const RunningScope second({"Evaluate", "second", nullptr});
    EXPECT_EQ(find_elsewhere(), "none");
  }).join();
}

TEST(RunningCall, AForkedProcessEvaluatesWhatItsOwnThreadDoes) {
  const auto find = [] {
    const RunningCall call = RunningCall::Find();
    return std::string(call.node != nullptr ? call.node : "none");
  };
  const auto find_elsewhere = [&] {
    std::string found;
    std::thread([&] { found = find(); }).join();
    return found;
  };
  const auto fork_and_check = [](const std::function<bool()>& check) {
    const pid_t child = fork();
    if (child == 0) _exit(check() ? 0 : 1);
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  };
  std::thread([&] {
    const RunningScope other({"Evaluate", "other", nullptr});
    std::thread([&] {
      fork_and_check([&] { return find() == "none" && find_elsewhere() == "none"; });
      std::optional<RunningScope> own;
      own.emplace(RunningCall{"Evaluate", "own", nullptr});
      EXPECT_EQ(find_elsewhere(), "none");
      fork_and_check([&] {
        if (find() != "own" || find_elsewhere() != "own") return false;
        own.reset();
        return find_elsewhere() == "none";
      });
    }).join();
  }).join();
}

TEST(RunningCall, AThreadThatHelpsNobodyRunsOnlyItsOwn) {
  const RunningScope evaluation({"Evaluate", "first", nullptr});
  std::thread([] {
    EXPECT_STREQ(RunningCall::Find().node, "first");
    RunningCall::HelpNobody();
    EXPECT_EQ(RunningCall::Find().node, nullptr);
    EXPECT_EQ(RunningCall::Find().operation, nullptr);
    const RunningScope own({"GetName", "second", nullptr});
    EXPECT_STREQ(RunningCall::Find().node, "second");
  }).join();
  EXPECT_STREQ(RunningCall::Find().node, "first");
}

TEST(RunningCall, AThrowingCallLeavesNothingBehind) {
  EXPECT_TRUE(ScEng::CallGuarded("GetName", [] {
                EXPECT_STREQ(RunningCall::Find().operation, "GetName");
                throw 1;
              }).IsError());
  EXPECT_EQ(RunningCall::Find().operation, nullptr);
}

TEST(FindLibraryOf, KnowsCodeAndNodesOfALoadedLibrary) {
  const auto file = std::filesystem::path(VALUE_TEST_LIBRARIES) / "TinyLibrary.so";
  ScEng::Status status;
  auto library = ScEng::NodeLibrary::Load(file, status);
  ASSERT_NE(library, nullptr) << status.GetMessage();
  void* const handle = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
  const void* const entry = dlsym(handle, "GetNodeInterface");
  dlclose(handle);
  EXPECT_STREQ(FindLibraryOf(entry), library->GetFile().c_str());
  {
    const ScEng::RefPtr<Node> node(library->GetDescriptors()[0]->GetNodeFactory()->CreateNode());
    EXPECT_STREQ(FindLibraryOf(*node), library->GetFile().c_str());
  }
  const int here = 0;
  EXPECT_EQ(FindLibraryOf(&here), nullptr);
  EXPECT_EQ(FindLibraryOf(static_cast<const void*>(nullptr)), nullptr);
  library.reset();
  EXPECT_EQ(FindLibraryOf(entry), nullptr);
}

}  // namespace
