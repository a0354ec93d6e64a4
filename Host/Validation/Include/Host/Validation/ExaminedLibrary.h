// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>

#include "Host/Validation/Api.h"

namespace ScEng {

/// Remembers node libraries that passed their examination, by what is in the file and by the version of the host: in
/// $XDG_CACHE_HOME/value/plugins, else in ~/.cache/value/plugins. Where that cannot be read or written, nothing is
/// remembered, which is not an error.
class HOST_VALIDATION_API ExaminedLibrary {
 public:
  /// `hash` is the SHA-256 of the file in hexadecimal digits; nothing is remembered of an empty one.
  explicit ExaminedLibrary(const std::string& hash);

  [[nodiscard]] bool HasPassed() const;
  void NotePassed() const;

 private:
  /// Empty where nothing can be remembered.
  std::filesystem::path record_;
};

}  // namespace ScEng
