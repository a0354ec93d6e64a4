// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Util/ParallelRows.h"
#include "Tests/Support/ImageTesting.h"

/// What the tests of the host's libraries share.
namespace Testing {

/// A folder of its own for one test, removed with everything in it.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "value-test-").string() + std::string(6, 'X');
    if (mkdtemp(name.data()) == nullptr) std::abort();
    path_ = name;
  }
  ~TemporaryFolder() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  [[nodiscard]] const std::filesystem::path& Path() const { return path_; }
  [[nodiscard]] std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

  /// The names of everything in the folder, hidden files included, in alphabetical order.
  [[nodiscard]] std::vector<std::string> List() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
  }

 private:
  std::filesystem::path path_;
};

/// Makes a folder the working directory for one scope.
class WorkingFolder {
 public:
  explicit WorkingFolder(const std::filesystem::path& folder) : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(folder);
  }
  ~WorkingFolder() {
    std::error_code error;
    std::filesystem::current_path(before_, error);
  }
  WorkingFolder(const WorkingFolder&) = delete;
  WorkingFolder& operator=(const WorkingFolder&) = delete;

 private:
  std::filesystem::path before_;
};

inline void WriteText(const std::filesystem::path& file, std::string_view text) {
  std::ofstream stream(file, std::ios::binary);
  stream.write(text.data(), static_cast<std::streamsize>(text.size()));
}

inline std::string ReadText(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// Sets the number of the host's threads for one scope.
class ThreadsScope {
 public:
  explicit ThreadsScope(std::size_t threads) { ScEng::SetNumThreads(threads); }
  ~ThreadsScope() { ScEng::SetNumThreads(0); }
  ThreadsScope(const ThreadsScope&) = delete;
  ThreadsScope& operator=(const ThreadsScope&) = delete;
};

/// An image with given samples, row by row, and a fresh header.
inline std::unique_ptr<Image> MakeUniqueImage(int size_x, int size_y, unsigned mode,
                                              const std::vector<float>& samples) {
  auto image = std::make_unique<Image>(size_x, size_y, mode, nullptr);
  if (samples.size() != image->GetNumSamples()) std::abort();
  std::copy(samples.begin(), samples.end(), image->GetArray());
  return image;
}

/// Passes when all samples are the same by `AreSame`; else names the first that differs.
inline testing::AssertionResult SameSamples(const std::vector<float>& expected, const std::vector<float>& actual) {
  if (expected.size() != actual.size()) {
    return testing::AssertionFailure() << actual.size() << " samples instead of " << expected.size();
  }
  for (std::size_t i = 0; i < expected.size(); ++i) {
    if (AreSame(expected[i], actual[i])) continue;
    return testing::AssertionFailure() << "sample " << i << " is " << actual[i] << " instead of " << expected[i];
  }
  return testing::AssertionSuccess();
}

inline testing::AssertionResult Contains(const std::string& text, const std::string& part) {
  if (text.find(part) != std::string::npos) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "\"" << text << "\" does not contain \"" << part << "\"";
}

}  // namespace Testing
