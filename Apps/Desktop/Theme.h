// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// Gives the application the style and the colors of a theme: "light", "dark", or that of the desktop when empty.
/// Answers whether it is the dark one.
bool ApplyTheme(const std::string& theme);
