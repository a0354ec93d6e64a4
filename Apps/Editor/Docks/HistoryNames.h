// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <string>

/// The name of a step of the history in the user's language. Steps that the editor has named itself, and those that are
/// not known, stay as they are.
QString TranslateStep(const std::string& name);
