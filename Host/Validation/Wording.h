// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <string>

namespace ScEng {

/// "10 s", "0.25 s".
std::string FormatSeconds(std::chrono::milliseconds time);

/// " while loading it"; empty where it is not known what the child was at.
std::string While(const std::string& at);

}  // namespace ScEng
