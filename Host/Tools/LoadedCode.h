// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>

namespace ScEng {

/// Notes where in memory a loaded library lies, until it is let go, so that an address tells whose it is. `handle` is
/// that of `dlopen`. Of more libraries than anyone loads the last are not noted.
class LoadedCode {
 public:
  LoadedCode() = default;
  ~LoadedCode();
  LoadedCode(const LoadedCode&) = delete;
  LoadedCode& operator=(const LoadedCode&) = delete;

  void Note(void* handle, const std::filesystem::path& file);

 private:
  int place_ = -1;
};

}  // namespace ScEng
