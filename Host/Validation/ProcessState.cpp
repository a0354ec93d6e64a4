// SPDX-License-Identifier: Apache-2.0
#include "Host/Validation/ProcessState.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cfenv>
#include <charconv>
#include <clocale>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <system_error>

namespace ScEng {
namespace {

#if defined(__SSE2__)
// The other bits tell which exceptions there were, and which trap.
constexpr std::uint64_t kFlushToZero = 0x8000;
constexpr std::uint64_t kDenormalsAreZero = 0x0040;
constexpr std::uint64_t kControlBits = 0xFFC0;
std::uint64_t GetControl() { return __builtin_ia32_stmxcsr() & kControlBits; }
void SetControl(std::uint64_t control) {
  const std::uint64_t flags = __builtin_ia32_stmxcsr() & ~kControlBits;
  __builtin_ia32_ldmxcsr(static_cast<unsigned>(flags | control));
}
#elif defined(__aarch64__)
constexpr std::uint64_t kFlushToZero = std::uint64_t{1} << 24U;
constexpr std::uint64_t kDenormalsAreZero = 0;
std::uint64_t GetControl() {
  std::uint64_t control = 0;
  asm volatile("mrs %0, fpcr" : "=r"(control));
  return control;
}
void SetControl(std::uint64_t control) { asm volatile("msr fpcr, %0" : : "r"(control)); }
#else
constexpr std::uint64_t kFlushToZero = 0;
constexpr std::uint64_t kDenormalsAreZero = 0;
std::uint64_t GetControl() { return 0; }
void SetControl(std::uint64_t) {}
#endif

const char* NameRounding(int rounding) {
  switch (rounding) {
    case FE_UPWARD: return "upward";
    case FE_DOWNWARD: return "downward";
    case FE_TOWARDZERO: return "toward zero";
    default: return "to nearest";
  }
}

std::string InQuotes(const std::string& text) { return "\"" + text + "\""; }

std::map<int, std::pair<dev_t, ino_t>> ListDescriptors() {
  std::map<int, std::pair<dev_t, ino_t>> descriptors;
  std::error_code error;
  std::vector<int> numbers;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd", error)) {
    const std::string name = entry.path().filename().string();
    int number = -1;
    std::from_chars(name.data(), name.data() + name.size(), number);
    numbers.push_back(number);
  }
  for (const int number : numbers) {
    struct stat file {};
    // The descriptor of the listing itself is gone by now.
    if (fstat(number, &file) == 0) descriptors[number] = {file.st_dev, file.st_ino};
  }
  return descriptors;
}

std::string DescribeDescriptor(int number) {
  constexpr const char* kStreams[] = {" (standard input)", " (standard output)", " (standard error)"};
  return "descriptor " + std::to_string(number) + (number <= 2 ? kStreams[number] : "");
}

bool IsSameHandler(const struct sigaction& first, const struct sigaction& second) {
  // The C library sets this flag by itself.
  constexpr unsigned kRestorer = 0x04000000;
  const auto flags_of = [](const struct sigaction& action) {
    return static_cast<unsigned>(action.sa_flags) & ~kRestorer;
  };
  // Both kinds of handler share their place.
  return first.sa_handler == second.sa_handler && flags_of(first) == flags_of(second);
}

}  // namespace

FloatingPointMode FloatingPointMode::Get() { return {std::fegetround(), fegetexcept(), GetControl()}; }

void FloatingPointMode::Restore() const {
  std::fesetround(rounding);
  fedisableexcept(FE_ALL_EXCEPT);
  std::feclearexcept(FE_ALL_EXCEPT);
  feenableexcept(trapped);
  SetControl(control);
}

std::string FloatingPointMode::FindChange(const FloatingPointMode& later) const {
  if (later.rounding != rounding) return std::string("numbers are rounded ") + NameRounding(later.rounding);
  if (later.trapped != trapped) return "a floating-point exception, such as a division by zero, raises a signal";
  const std::uint64_t changed = control ^ later.control;
  if ((changed & (kFlushToZero | kDenormalsAreZero)) != 0) return "denormal numbers are taken for zero";
  return changed != 0 ? "the floating-point unit has other control bits" : "";
}

ProcessState ProcessState::Get() {
  ProcessState state;
  state.descriptors = ListDescriptors();
  std::error_code error;
  state.folder = std::filesystem::current_path(error).string();
  for (int signal = 1; signal < NSIG; ++signal) {
    sigaction(signal, nullptr, &state.handlers[static_cast<std::size_t>(signal)]);
  }
  if (const char* locale = std::setlocale(LC_ALL, nullptr)) state.locale = locale;
  state.mask = umask(0);
  umask(state.mask);
  return state;
}

void ProcessState::Restore() const {
  std::error_code error;
  std::filesystem::current_path(folder, error);
  for (int signal = 1; signal < NSIG; ++signal) {
    sigaction(signal, &handlers[static_cast<std::size_t>(signal)], nullptr);
  }
  static_cast<void>(std::setlocale(LC_ALL, locale.c_str()));
  umask(mask);
}

std::vector<std::string> ProcessState::FindChanges(const ProcessState& later) const {
  std::vector<std::string> changes;
  for (const auto& [number, file] : descriptors) {
    const auto found = later.descriptors.find(number);
    if (found == later.descriptors.end()) {
      changes.push_back(DescribeDescriptor(number) + " is closed");
    } else if (found->second != file) {
      changes.push_back(DescribeDescriptor(number) + " is another file");
    }
  }
  if (later.folder != folder) {
    changes.push_back("the working directory is " + InQuotes(later.folder) + " and was " + InQuotes(folder));
  }
  for (int signal = 1; signal < NSIG; ++signal) {
    const auto at = static_cast<std::size_t>(signal);
    if (IsSameHandler(handlers[at], later.handlers[at])) continue;
    const char* name = sigabbrev_np(signal);
    changes.push_back("signal " + (name != nullptr ? "SIG" + std::string(name) : std::to_string(signal)) +
                      " is handled in another way");
  }
  if (later.locale != locale) {
    changes.push_back("the locale is " + InQuotes(later.locale) + " and was " + InQuotes(locale));
  }
  if (later.mask != mask) changes.emplace_back("the mask of new files (umask) is another one");
  return changes;
}

OutputCatcher::OutputCatcher() : caught_(memfd_create("output", MFD_CLOEXEC)) {
  std::cout.flush();
  static_cast<void>(std::fflush(stdout));
  own_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (caught_ >= 0) dup2(caught_, STDOUT_FILENO);
}

OutputCatcher::~OutputCatcher() {
  std::cout.flush();
  static_cast<void>(std::fflush(stdout));
  if (own_ >= 0) {
    dup2(own_, STDOUT_FILENO);
    close(own_);
  }
  if (caught_ >= 0) close(caught_);
}

std::string OutputCatcher::Take() {
  std::cout.flush();
  static_cast<void>(std::fflush(stdout));
  char text[200];
  const ssize_t got = pread(caught_, text, sizeof(text), taken_);
  if (got <= 0) return {};
  taken_ = lseek(caught_, 0, SEEK_END);
  const std::string caught(text, static_cast<std::size_t>(got));
  const std::size_t begin = std::min(caught.find_first_not_of("\n\r\t "), caught.size());
  const std::string line = caught.substr(begin, caught.find('\n', begin) - begin);
  return line.empty() ? "blanks" : line;
}

}  // namespace ScEng
