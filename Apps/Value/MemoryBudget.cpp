// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/MemoryBudget.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace {

/// The number that a file holds alone, as those of control groups do; the largest where it holds none.
std::uint64_t ReadNumber(const std::filesystem::path& file) {
  std::uint64_t number = 0;
  return std::ifstream(file) >> number ? number : UINT64_MAX;
}

/// The lowest limit of this process's control group and those around it.
std::uint64_t FindGroupLimit() {
  const std::filesystem::path root = "/sys/fs/cgroup";
  std::uint64_t least = ReadNumber(root / "memory/memory.limit_in_bytes");
  std::ifstream groups("/proc/self/cgroup");
  for (std::string line; std::getline(groups, line);) {
    constexpr std::string_view kUnified = "0::/";
    if (!line.starts_with(kUnified)) continue;
    std::filesystem::path group = root / line.substr(kUnified.size());
    for (; group.native().size() >= root.native().size(); group = group.parent_path()) {
      least = std::min(least, ReadNumber(group / "memory.max"));
      if (group == root) break;
    }
  }
  return least;
}

}  // namespace

std::uint64_t MemoryBudget::FindDefault() {
  std::uint64_t most = static_cast<std::uint64_t>(std::max(sysconf(_SC_PHYS_PAGES), 1L)) *
                       static_cast<std::uint64_t>(std::max(sysconf(_SC_PAGESIZE), 1L));
  most = std::min(most, FindGroupLimit());
  rlimit limit{};
  if (getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY) most = std::min(most, limit.rlim_cur);
  return most / 2;
}

MemoryBudget::Share::Share(MemoryBudget& budget, std::uint64_t bytes)
    : budget_(budget), bytes_(std::min(bytes, budget.bytes_)) {
  std::unique_lock lock(budget_.mutex_);
  budget_.released_.wait(lock, [&] { return budget_.holders_ == 0 || budget_.taken_ <= budget_.bytes_ - bytes_; });
  budget_.taken_ += bytes_;
  ++budget_.holders_;
}

MemoryBudget::Share::~Share() {
  {
    const std::lock_guard lock(budget_.mutex_);
    budget_.taken_ -= bytes_;
    --budget_.holders_;
  }
  budget_.released_.notify_all();
}
