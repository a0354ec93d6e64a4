// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <string>

/// A text that ends as a sentence does.
std::string EndSentence(std::string text);

/// What the help and the manual say of an option: its description, and what only its declaration knows (words, bounds,
/// whether it may be given again), unless the description says it already.
std::string DescribeOption(const CLI::Option& option);
