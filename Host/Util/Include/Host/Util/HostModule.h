// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>

#include "Host/Util/Api.h"

namespace ScEng {

/// A part of the host that is loaded when it is first needed: a library that lies beside the host's own libraries, or
/// in the folder "value" there, and has one entry point with C linkage. Once loaded it stays to the end of the process,
/// since the libraries that such a module brings along are not made to be unloaded.
class HOST_UTIL_API HostModule {
 public:
  /// `name` is that of the library, for example "HostCodecPng"; `title` says in messages what it is, for example "the
  /// module of the codec png".
  HostModule(const std::string& name, std::string title);

  /// Where the file is, or would be.
  [[nodiscard]] const std::filesystem::path& GetFile() const { return file_; }
  /// Why the module is not there or could not be loaded, in one line; empty where nothing is wrong so far.
  [[nodiscard]] const std::string& GetProblem() const { return problem_; }

  /// Loads the module and answers the address of its entry point; null, with the reason in `GetProblem`, where that
  /// fails. `Function` is a pointer to a function.
  template <class Function>
  [[nodiscard]] Function Load(const char* entry_point) {
    return reinterpret_cast<Function>(LoadAddress(entry_point));
  }

 private:
  void* LoadAddress(const char* entry_point);

  std::string title_;
  std::filesystem::path file_;
  std::string problem_;
};

/// Where a program of the host is, or would be: beside the host's libraries in a folder of builds, in an installation
/// at the path `from_libraries` from their folder. Empty where that is unknown.
HOST_UTIL_API std::filesystem::path FindHostProgram(const std::string& name,
                                                    const std::filesystem::path& from_libraries);

}  // namespace ScEng
