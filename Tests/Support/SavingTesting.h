// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Tests/Support/HostTesting.h"

/// Old and new contents of files, and what a folder holds besides them.
namespace Testing {

/// Text of a size that takes several reads and writes, and that looks different everywhere.
inline std::string MakeContent(std::size_t size, char seed) {
  std::string text(size, '\0');
  for (std::size_t i = 0; i < size; ++i)
    text[i] = static_cast<char>('a' + (i * i / 7 + i + static_cast<unsigned char>(seed)) % 26);
  return text;
}

inline bool IsLeftover(const std::string& name) {
  return name.size() == 28 && name.rfind(".value-", 0) == 0 && name.substr(23) == ".part";
}

/// The files of a folder without what killed saves left behind, and those.
struct FolderContent {
  std::vector<std::string> files;
  std::vector<std::string> leftovers;

  explicit FolderContent(const TemporaryFolder& folder) {
    for (const std::string& name : folder.List()) (IsLeftover(name) ? leftovers : files).push_back(name);
  }
};

}  // namespace Testing
