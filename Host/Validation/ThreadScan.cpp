// SPDX-License-Identifier: Apache-2.0
#include "Host/Validation/ThreadScan.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>
#include <vector>

namespace ScEng {
namespace {

/// Where the stack of a waiting thread ends, from the system's line about it, whose last two numbers are the pointer to
/// the stack and that to the code; 0 where the thread does not wait.
std::uintptr_t FindStack(const std::filesystem::path& task) {
  std::ifstream file(task / "syscall");
  std::vector<std::string> words;
  for (std::string word; file >> word;) words.push_back(word);
  if (words.size() < 3) return 0;
  std::uintptr_t stack = 0;
  std::istringstream(words[words.size() - 2]) >> std::hex >> stack;
  return stack;
}

/// Whether a stack holds an address of the range.
bool Holds(std::uintptr_t stack, const AddressRange& range) {
  constexpr std::size_t kMostBytes = std::size_t{256} << 10U;
  std::array<std::uintptr_t, 512> words{};
  const int memory = open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
  bool holds = false;
  for (std::size_t done = 0; stack != 0 && done < kMostBytes && !holds; done += sizeof(words)) {
    // Reading in this way fails where the memory of the stack ends.
    const ssize_t got = pread(memory, words.data(), sizeof(words), static_cast<off_t>(stack + done));
    if (got <= 0) break;
    const auto end = words.begin() + got / static_cast<ssize_t>(sizeof(words[0]));
    holds = std::any_of(words.begin(), end, [&](std::uintptr_t word) { return range.Contains(word); });
  }
  if (memory >= 0) close(memory);
  return holds;
}

}  // namespace

std::set<std::string> FindThreadsIn(const AddressRange& range) {
  std::set<std::string> threads;
  const std::string own = std::to_string(gettid());
  std::error_code error;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task", error)) {
    const std::string number = task.path().filename().string();
    if (number != own && Holds(FindStack(task.path()), range)) threads.insert(number);
  }
  return threads;
}

}  // namespace ScEng
