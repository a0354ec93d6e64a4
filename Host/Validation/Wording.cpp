// SPDX-License-Identifier: Apache-2.0
#include "Host/Validation/Wording.h"

namespace ScEng {

std::string FormatSeconds(std::chrono::milliseconds time) {
  const auto count = time.count();
  std::string text = std::to_string(count / 1000);
  if (count % 1000 != 0) {
    std::string rest = std::to_string(1000 + count % 1000).substr(1);
    rest.erase(rest.find_last_not_of('0') + 1);
    text += "." + rest;
  }
  return text + " s";
}

std::string While(const std::string& at) { return at.empty() ? "" : " while " + at; }

}  // namespace ScEng
