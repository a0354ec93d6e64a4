// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace Testing {

inline testing::AssertionResult Contains(const std::string& text, const std::string& part) {
  if (text.find(part) != std::string::npos) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "\"" << text << "\" does not contain \"" << part << "\"";
}

/// What a node's state says where its result is too large.
inline constexpr const char* kOversize = "Output image is larger than maximum image size.";

}  // namespace Testing
