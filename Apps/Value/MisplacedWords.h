// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "Apps/Value/Arguments.h"

/// What a file is by the ending of its name.
enum class FileKind { kDocument, kImage, kLibrary };

std::optional<FileKind> FindFileKind(const std::string& word);
inline bool HasKindOfFile(const std::string& word) { return FindFileKind(word).has_value(); }

/// "a graph document; "value run graph.json" evaluates it".
std::string DescribeFile(FileKind kind, const std::string& word);

/// Whether a command takes words of all kinds, as a search does.
bool TakesAnyWords(const CLI::App& command);

/// What is wrong with a word behind a command, and what would be right; nothing where no error is found. `taken` words
/// stand before it.
std::optional<std::string> CheckWord(const CLI::App& command, const std::vector<Argument>& arguments, std::size_t place,
                                     std::size_t taken);

/// The same of a file that an option names.
std::optional<std::string> CheckFileOfOption(const CLI::App& command, const Argument& argument,
                                             const std::string& file);

/// A file behind "-i FILE..." that is more likely meant to be written; empty where there is none.
std::string FindUnmarkedOutput(const std::vector<Argument>& arguments);
