// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>

/// Remembers node libraries that passed their examination, by what is in the file and by the version of the program:
/// in $XDG_CACHE_HOME/value/plugins, else in ~/.cache/value/plugins. Where that cannot be read or written, nothing is
/// remembered, which is not an error.
class ExaminedPlugins {
 public:
  /// Reads the library.
  explicit ExaminedPlugins(const std::filesystem::path& library);

  [[nodiscard]] bool HasPassed() const;
  void NotePassed() const;

 private:
  /// Empty where nothing can be remembered.
  std::filesystem::path record_;
};
