// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/Glob.h"

#include <fnmatch.h>

#include <algorithm>
#include <cstddef>
#include <set>
#include <system_error>
#include <utility>

namespace {

namespace fs = std::filesystem;

constexpr const char* kAnyFolders = "**";

bool HasWildcard(const std::string& name) { return name.find_first_of("*?[\\") != std::string::npos; }

/// The parts of a pattern between slashes, empty ones left out.
std::vector<std::string> Split(const std::string& pattern) {
  std::vector<std::string> names;
  for (std::size_t from = 0; from < pattern.size();) {
    const std::size_t end = std::min(pattern.find('/', from), pattern.size());
    if (end > from) names.push_back(pattern.substr(from, end - from));
    from = end + 1;
  }
  return names;
}

/// What the folder holds; nothing where it cannot be read.
std::vector<fs::directory_entry> List(const fs::path& folder) {
  std::vector<fs::directory_entry> entries;
  std::error_code error;
  fs::directory_iterator iterator(folder.empty() ? fs::path(".") : folder, error);
  for (; !error && iterator != fs::directory_iterator(); iterator.increment(error)) entries.push_back(*iterator);
  return entries;
}

class Search {
 public:
  explicit Search(std::vector<std::string> names) : names_(std::move(names)) {}

  void Run(const fs::path& start) { Visit(start, 0); }
  [[nodiscard]] const std::set<fs::path>& GetFiles() const { return files_; }

 private:
  void Visit(const fs::path& folder, std::size_t place) {
    // Two ways may lead here where the pattern has several "**".
    if (!seen_.insert({folder, place}).second) return;
    if (names_[place] == kAnyFolders) {
      VisitAnyFolders(folder, place);
      return;
    }
    const bool is_last = place + 1 == names_.size();
    if (!HasWildcard(names_[place])) {
      Take(folder / names_[place], place, is_last);
      return;
    }
    for (const fs::directory_entry& entry : List(folder)) {
      const std::string name = entry.path().filename().string();
      if (fnmatch(names_[place].c_str(), name.c_str(), FNM_PERIOD) == 0) Take(folder / name, place, is_last);
    }
  }

  void VisitAnyFolders(const fs::path& folder, std::size_t place) {
    const bool is_last = place + 1 == names_.size();
    if (!is_last) Visit(folder, place + 1);
    for (const fs::directory_entry& entry : List(folder)) {
      const fs::path name = entry.path().filename();
      if (name.string().front() == '.') continue;
      std::error_code error;
      if (fs::is_directory(entry.symlink_status(error))) {
        Visit(folder / name, place);
      } else if (is_last) {
        Take(folder / name, place, true);
      }
    }
  }

  void Take(const fs::path& path, std::size_t place, bool is_last) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) return;
    if (!is_last) {
      if (fs::is_directory(status)) Visit(path, place + 1);
    } else if (!fs::is_directory(status)) {
      files_.insert(path);
    }
  }

  std::vector<std::string> names_;
  std::set<std::pair<fs::path, std::size_t>> seen_;
  std::set<fs::path> files_;
};

fs::path GetFolderName(const fs::path& file) { return fs::absolute(file).lexically_normal().parent_path().filename(); }

}  // namespace

std::vector<GlobFile> FindFiles(const std::string& pattern) {
  std::error_code error;
  const fs::file_status status = fs::status(pattern, error);
  if (fs::exists(status) && !fs::is_directory(status)) return {{pattern, GetFolderName(pattern)}};

  std::vector<std::string> names = Split(pattern);
  if (names.empty() || pattern.back() == '/') return {};
  const auto first = std::find_if(names.begin(), names.end(), HasWildcard);
  fs::path start = pattern.front() == '/' ? "/" : "";
  for (auto name = names.begin(); name != first; ++name) start /= *name;
  const std::vector<std::string> rest(first, names.end());
  if (rest.empty()) return {};
  Search search(rest);
  search.Run(start);
  std::vector<GlobFile> files;
  for (const fs::path& file : search.GetFiles()) {
    const fs::path below = file.lexically_relative(start.empty() ? fs::path(".") : start).parent_path();
    files.push_back({file, rest.size() > 1 ? below : GetFolderName(file)});
  }
  std::sort(files.begin(), files.end(),
            [](const GlobFile& a, const GlobFile& b) { return a.file.native() < b.file.native(); });
  return files;
}
