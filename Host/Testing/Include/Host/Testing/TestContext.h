// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <string>

#include "Host/Testing/Api.h"
#include "Host/Tools/Node.h"

/// A self-test of a node type while it runs.
///
/// A test makes one with its directory and title, calls `InitializeTest` and `InitTimer`, builds a graph on
/// `Engine::Get()`, and has each of its cases rendered: it sets `case_name` and calls `DoTest`. Everything that is said
/// goes to standard output, a line each. What the cases are compared with is the session's affair (`TestSession`).
class HOST_TESTING_API TestContext {
 public:
  /// `directory` is where the images go, relative to the working directory; it may end in a slash. `title` is the line
  /// that announces the test.
  TestContext(std::string directory, std::string title);

  std::string directory;
  std::string title;
  /// How far a case may be from its reference image: the mean and the largest absolute difference of its samples.
  float mean_tolerance = 0.005F;
  float largest_tolerance = 0.01F;
  /// The name of the case that the next `DoTest` renders, and of its files.
  std::string case_name;

  /// Announces the test and creates its directory. Where that fails, so will every case, with the reason.
  void InitializeTest() const;

  /// Starts the clock that `GetSeconds` reads.
  void InitTimer();
  /// The time since `InitTimer`.
  [[nodiscard]] double GetSeconds() const;

  /// Renders output `outplug` of a node of `Engine::Get()`, writes it as `<directory>/<case_name>.exr` (float samples,
  /// with the whole header) and as `.png` (8 bit, the declared range from black to white), and prints a line with the
  /// case, the time of the evaluation and the verdict.
  ///
  /// The case passes, and the answer is true, when the node ends without an error and has an output, both files could
  /// be written, and the written image agrees with its reference where the session has one: in size and mode, and in
  /// its samples within the tolerances. `rendering` numbers several renderings of one case: other than 0, it is added
  /// to the name, as in `name-2`.
  bool DoTest(Node* node, unsigned outplug, unsigned rendering);

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};
