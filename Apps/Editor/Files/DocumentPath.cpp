// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Files/DocumentPath.h"

#include <system_error>

namespace fs = std::filesystem;

std::string MakeDocumentPath(const fs::path& file, const fs::path& folder) {
  std::error_code error;
  const fs::path absolute = fs::absolute(file, error).lexically_normal();
  const fs::path base = (folder.empty() ? fs::current_path(error) : fs::absolute(folder, error)).lexically_normal();
  const fs::path relative = absolute.lexically_relative(base);
  if (relative.empty()) return absolute.string();
  // One step up is beside the folder; further up, the path would say more of the machine than of the document.
  int steps_up = 0;
  for (const fs::path& part : relative) steps_up += part == ".." ? 1 : 0;
  return steps_up <= 1 ? relative.generic_string() : absolute.string();
}
