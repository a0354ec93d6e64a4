// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Host/Testing/Api.h"
#include "Host/Testing/ImageComparison.h"

namespace ScEng {

/// How one case of a self-test went.
struct TestCaseReport {
  std::string name;
  /// The image that was written, or would have been.
  std::filesystem::path file;
  /// How long its node and what it depends on took.
  double seconds = 0.0;
  bool passed = false;
  /// Why it did not pass; empty where it did.
  std::string problem;
  /// Whether the cause is a file that could not be read or written.
  bool is_file_problem = false;
  /// How far it is from its reference image, where there is one.
  std::optional<ImageDifference> difference;
};

/// How one self-test went, as far as the host knows: the test's own verdict is its answer.
struct TestReport {
  std::string title;
  std::string directory;
  std::vector<TestCaseReport> cases;
};

/// What the self-tests of this process compare with and where they find their inputs, and what came of them.
///
/// Self-tests reach it through `TestContext` alone. For one thread at a time.
class HOST_TESTING_API TestSession {
 public:
  struct Options {
    /// A folder with reference images; empty for none. It may hold what an earlier session wrote, or only the lower
    /// folders of it: see `FindReference`.
    std::filesystem::path reference;
    /// Where a relative path to read is looked up that the working directory does not have; empty for nowhere.
    std::filesystem::path inputs;
  };

  /// The session of this process.
  static TestSession& Get();

  /// Starts anew: forgets the reports.
  void Start(Options options);

  [[nodiscard]] const Options& GetOptions() const { return options_; }
  [[nodiscard]] const std::vector<TestReport>& GetReports() const { return reports_; }

  /// The reference image of a case: `<reference>/<directory>/<name>.exr`, else the same with the first, the first two,
  /// ... folders of `directory` left out. Empty when there is none.
  [[nodiscard]] std::filesystem::path FindReference(const std::string& directory, const std::string& name) const;

  /// For `TestContext`.
  void BeginTest(std::string title, std::string directory);
  void AddCase(TestCaseReport report);

 private:
  TestSession() = default;

  Options options_;
  std::vector<TestReport> reports_;
};

}  // namespace ScEng
