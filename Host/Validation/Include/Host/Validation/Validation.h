// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "Host/Util/Status.h"
#include "Host/Validation/Api.h"

/// Checks a node library for everything that a host relies on.
///
/// The library is loaded and used in a child process, never in the calling one, so a library that crashes, hangs or
/// ends the process costs a failed check and a fresh child. The calling program gives the child its code: it calls
/// `RunValidationChild` when it is started with the command that it handed to `ValidateLibrary`.
namespace ScEng {

/// One of the checks, which always run in the same order.
struct CheckInfo {
  /// Short and stable, such as "awkward-samples".
  std::string name;
  /// What is looked at, in a few words.
  std::string about;
  /// Whether it looks at the node types one by one; otherwise at the library as a whole.
  bool of_nodes = false;
};

/// All checks in their order.
HOST_VALIDATION_API const std::vector<CheckInfo>& GetChecks();

/// What a check has to say: what is wrong and what would be right, or why something was left out.
struct CheckFinding {
  /// The class name of the node type that it is about; empty for the library as a whole.
  std::string node;
  std::string text;
};

enum class CheckResult {
  kPassed,
  kFailed,
  /// Something that it needs is missing, or a node type was left out; nothing that was looked at was wrong.
  kSkipped
};

struct CheckReport {
  CheckInfo check;
  CheckResult result = CheckResult::kPassed;
  /// What is wrong, one entry per node type where the check is of node types.
  std::vector<CheckFinding> failures;
  /// What could not be looked at.
  std::vector<CheckFinding> skips;
  /// How many node types were looked at.
  std::size_t nodes = 0;
};

struct HOST_VALIDATION_API ValidationReport {
  enum class Outcome {
    /// The file is not there; there are no checks.
    kNoSuchFile,
    /// The file is no library that the system's loader takes; there are no checks.
    kNotALibrary,
    /// It ended the process or hung while it was loaded, or lacks an entry point; the other checks are skipped.
    kNotANodeLibrary,
    /// The checks ran.
    kChecked,
    /// The child process could not be started or understood; there may be checks.
    kNoChild,
  };
  Outcome outcome = Outcome::kChecked;
  /// Says why there are no checks; fine otherwise.
  Status status;
  /// As the library object tells it; empty where it does not.
  std::string library_name;
  /// The class names of the node types, in index order.
  std::vector<std::string> nodes;
  std::vector<CheckReport> checks;

  [[nodiscard]] std::size_t Count(CheckResult result) const;
};

struct ValidationOptions {
  std::filesystem::path library;
  /// The program and the arguments that make it call `RunValidationChild`. One argument is added at the end: the
  /// channel, for that call.
  std::vector<std::string> child_command;
  /// How long one check may take with one node type before it counts as hanging.
  std::chrono::milliseconds timeout{30000};
  /// How long all checks may take together. The check that is running then fails, and the others are left out.
  std::chrono::milliseconds total_timeout{1800000};
  /// Called after each check.
  std::function<void(const CheckReport&)> on_check;
};

/// Runs all checks. Starts child processes and waits for them; the library is never loaded in the calling process.
HOST_VALIDATION_API ValidationReport ValidateLibrary(const ValidationOptions& options);

/// The child's part: obeys the validating process over `channel` until that closes it, then ends the process. Returns
/// an exit code only when `channel` is none.
HOST_VALIDATION_API int RunValidationChild(const std::filesystem::path& library, const std::string& channel);

}  // namespace ScEng
