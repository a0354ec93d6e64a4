// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/Guard.h"

#include <algorithm>
#include <cctype>
#include <exception>

namespace ScEng {

std::string DescribeHandledException() {
  std::string text = "it is of unknown type";
  try {
    throw;
  } catch (const std::exception& error) {
    if (const char* said = error.what()) text = said;
  } catch (...) {
    // Nothing is known of it.
  }
  std::replace_if(
      text.begin(), text.end(), [](unsigned char letter) { return std::iscntrl(letter) != 0; }, ' ');
  return text;
}

}  // namespace ScEng
