// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace ScEng {

/// "blur", or "3 nodes".
std::string NameNodes(const std::vector<std::string>& ids);

}  // namespace ScEng
