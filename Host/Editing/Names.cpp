// SPDX-License-Identifier: Apache-2.0
#include "Host/Editing/Names.h"

namespace ScEng {

std::string NameNodes(const std::vector<std::string>& ids) {
  return ids.size() == 1 ? ids.front() : std::to_string(ids.size()) + " nodes";
}

}  // namespace ScEng
