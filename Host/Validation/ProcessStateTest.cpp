// SPDX-License-Identifier: Apache-2.0
#include "Host/Validation/ProcessState.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cfenv>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

namespace {

using ScEng::FloatingPointMode;
using ScEng::OutputCatcher;
using ScEng::ProcessState;

/// What `change` changes of the mode, which is then as it was.
template <class Change>
std::string ChangeOfMode(const Change& change) {
  const FloatingPointMode before = FloatingPointMode::Get();
  change();
  const std::string text = before.FindChange(FloatingPointMode::Get());
  before.Restore();
  EXPECT_EQ(before.FindChange(FloatingPointMode::Get()), "");
  return text;
}

/// What `change` changes of the process, which is then as it was, but for descriptors.
template <class Change>
std::vector<std::string> ChangesOfProcess(const Change& change) {
  const ProcessState before = ProcessState::Get();
  change();
  std::vector<std::string> changes = before.FindChanges(ProcessState::Get());
  before.Restore();
  return changes;
}

TEST(FloatingPointMode, SeesEveryRounding) {
  EXPECT_EQ(ChangeOfMode([] {}), "");
  EXPECT_EQ(ChangeOfMode([] { std::fesetround(FE_UPWARD); }), "numbers are rounded upward");
  EXPECT_EQ(ChangeOfMode([] { std::fesetround(FE_DOWNWARD); }), "numbers are rounded downward");
  EXPECT_EQ(ChangeOfMode([] { std::fesetround(FE_TOWARDZERO); }), "numbers are rounded toward zero");
}

TEST(FloatingPointMode, IgnoresExceptionsThatHaveHappened) {
  EXPECT_EQ(ChangeOfMode([] { std::feraiseexcept(FE_DIVBYZERO | FE_INEXACT); }), "");
}

#if defined(__SSE2__)
TEST(FloatingPointMode, SeesTrapsAndLostDenormals) {
  EXPECT_EQ(ChangeOfMode([] { feenableexcept(FE_DIVBYZERO); }),
            "a floating-point exception, such as a division by zero, raises a signal");
  EXPECT_EQ(ChangeOfMode([] { __builtin_ia32_ldmxcsr(__builtin_ia32_stmxcsr() | 0x8000U); }),
            "denormal numbers are taken for zero");
  EXPECT_EQ(ChangeOfMode([] { __builtin_ia32_ldmxcsr(__builtin_ia32_stmxcsr() | 0x0040U); }),
            "denormal numbers are taken for zero");
}
#endif

TEST(ProcessState, SeesWhatALibraryMayNotChange) {
  using Changes = std::vector<std::string>;
  EXPECT_EQ(ChangesOfProcess([] {}), Changes());
  const std::string folder = ProcessState::Get().folder;
  EXPECT_EQ(ChangesOfProcess([] { EXPECT_EQ(chdir("/"), 0); }),
            Changes({"the working directory is \"/\" and was \"" + folder + "\""}));
  EXPECT_EQ(ChangesOfProcess([] { std::signal(SIGUSR1, SIG_IGN); }),
            Changes({"signal SIGUSR1 is handled in another way"}));
  EXPECT_EQ(ChangesOfProcess([] { umask(umask(0) ^ 077U); }),
            Changes({"the mask of new files (umask) is another one"}));
  const std::string locale = ProcessState::Get().locale;
  EXPECT_EQ(ChangesOfProcess([] { std::setlocale(LC_ALL, "C.UTF-8"); }),
            Changes({"the locale is \"C.UTF-8\" and was \"" + locale + "\""}));
  EXPECT_EQ(ProcessState::Get().folder, folder);
  EXPECT_EQ(ProcessState::Get().locale, locale);
}

TEST(ProcessState, SeesDescriptorsThatAreClosedOrReplaced) {
  const int kept = open("/dev/null", O_RDONLY);
  const std::string name = "descriptor " + std::to_string(kept);
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  EXPECT_EQ(ChangesOfProcess([&] { EXPECT_EQ(dup2(ends[0], kept), kept); }),
            std::vector<std::string>({name + " is another file"}));
  EXPECT_EQ(ChangesOfProcess([&] { close(kept); }), std::vector<std::string>({name + " is closed"}));
  int opened = -1;
  EXPECT_EQ(ChangesOfProcess([&] { opened = open("/dev/null", O_RDONLY); }), std::vector<std::string>());
  for (const int descriptor : {opened, ends[0], ends[1]}) close(descriptor);
}

TEST(OutputCatcher, CatchesWhatIsWrittenInWhateverWay) {
  OutputCatcher output;
  EXPECT_EQ(output.Take(), "");
  std::printf("one\n");
  EXPECT_EQ(output.Take(), "one");
  std::cout << "two\nthree\n";
  EXPECT_EQ(output.Take(), "two");
  EXPECT_EQ(write(STDOUT_FILENO, "four", 4), 4);
  EXPECT_EQ(output.Take(), "four");
  EXPECT_EQ(output.Take(), "");
  std::cout << "\n\n";
  EXPECT_EQ(output.Take(), "blanks");
}

}  // namespace
