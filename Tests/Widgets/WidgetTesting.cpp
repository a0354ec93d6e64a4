// SPDX-License-Identifier: Apache-2.0
#include "Tests/Widgets/WidgetTesting.h"

#include <gtest/gtest.h>

namespace {

/// The application of all tests of a process. It is made when the first test runs, so that tests can be listed without
/// a display.
class ApplicationEnvironment : public testing::Environment {
 public:
  void SetUp() override {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    application_ = std::make_unique<QApplication>(count_, arguments_);
  }
  void TearDown() override { application_.reset(); }

 private:
  int count_ = 1;
  char name_[6] = "tests";
  char* arguments_[2] = {name_, nullptr};
  std::unique_ptr<QApplication> application_;
};

[[maybe_unused]] const testing::Environment* const environment =
    testing::AddGlobalTestEnvironment(new ApplicationEnvironment);

}  // namespace
