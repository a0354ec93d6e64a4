// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/CrashStack.h"

#include <gtest/gtest.h>

#include <csignal>
#include <thread>

namespace {

stack_t FindPresent() {
  stack_t present{};
  EXPECT_EQ(sigaltstack(nullptr, &present), 0);
  return present;
}

bool IsThere() { return (FindPresent().ss_flags & SS_DISABLE) == 0; }

TEST(CrashStack, IsThereAsLongAsTheObject) {
  std::thread([] {
    const bool before = IsThere();
    {
      const CrashStack stack;
      EXPECT_TRUE(IsThere());
      EXPECT_GE(FindPresent().ss_size, static_cast<std::size_t>(MINSIGSTKSZ));
    }
    EXPECT_EQ(IsThere(), before);
  }).join();
}

TEST(CrashStack, LeavesOneThatIsThereAlone) {
  std::thread([] {
    const CrashStack outer;
    const stack_t before = FindPresent();
    {
      const CrashStack inner;
      EXPECT_EQ(FindPresent().ss_sp, before.ss_sp);
    }
    EXPECT_EQ(FindPresent().ss_sp, before.ss_sp);
    EXPECT_TRUE(IsThere());
  }).join();
}

}  // namespace
