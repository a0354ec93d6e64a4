// SPDX-License-Identifier: Apache-2.0
#include "Host/Testing/TestSession.h"

#include <iterator>
#include <system_error>
#include <utility>

namespace ScEng {

TestSession& TestSession::Get() {
  static TestSession session;
  return session;
}

void TestSession::Start(Options options) {
  options_ = std::move(options);
  reports_.clear();
}

std::filesystem::path TestSession::FindReference(const std::string& directory, const std::string& name) const {
  if (options_.reference.empty()) return {};
  const std::filesystem::path whole(directory);
  for (auto first = whole.begin();; ++first) {
    std::filesystem::path file = options_.reference;
    for (auto part = first; part != whole.end(); ++part) file /= *part;
    file /= name + ".exr";
    std::error_code error;
    if (std::filesystem::is_regular_file(file, error)) return file;
    if (first == whole.end()) return {};
  }
}

void TestSession::BeginTest(std::string title, std::string directory) {
  reports_.push_back({std::move(title), std::move(directory), {}});
}

void TestSession::AddCase(TestCaseReport report) {
  if (reports_.empty()) BeginTest({}, {});
  reports_.back().cases.push_back(std::move(report));
}

}  // namespace ScEng
