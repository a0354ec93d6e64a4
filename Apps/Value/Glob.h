// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// A file that a pattern has found.
struct GlobFile {
  std::filesystem::path file;
  /// Its folder below the part of the pattern that has no wildcards; where no folder of the pattern has any, the name
  /// of its folder.
  std::filesystem::path folder;
};

/// The files, folders not among them, that a pattern matches, in the order of the bytes of their names. `*` and `?`
/// stand for characters within a name, `[` begins a class, `\` takes the next character as it is, and `**` as a whole
/// name stands for any number of folders. What begins with a dot is only found by a name that begins with one, and `**`
/// does not follow links. A file that has exactly the name of the pattern is the only one found.
///
/// Takes time in proportion to the entries of the folders that it looks into.
std::vector<GlobFile> FindFiles(const std::string& pattern);
