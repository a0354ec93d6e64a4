// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/PathProblem.h"

namespace ScEng {

std::string FindPathProblem(const std::filesystem::path& path) {
  if (path.empty()) return "it has no name";
  if (path.native().find('\0') != std::string::npos) return "its name holds a NUL character";
  return {};
}

}  // namespace ScEng
