// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <span>
#include <string_view>

// What the manual says beyond what the commands declare of themselves. In texts, names of options stand between
// backquotes.

struct ManualEntry {
  const char* name;
  const char* text;
};

/// The codes that the program ends with.
std::span<const ManualEntry> GetExitCodes();
std::span<const ManualEntry> GetEnvironment();
std::span<const ManualEntry> GetFiles();

/// What one command does, in paragraphs; none for a command that its own help explains. The empty name stands for the
/// program itself.
std::span<const char* const> GetManualText(std::string_view command);

/// How the arguments of a command are written, where its declaration does not tell; empty otherwise.
std::string_view GetSynopsis(std::string_view command);
