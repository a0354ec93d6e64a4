// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/LoadProblem.h"

#include <dlfcn.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace ScEng {
namespace {

/// What every library begins with.
constexpr char kElf[] = {'\x7f', 'E', 'L', 'F'};

bool IsElf(const std::filesystem::path& file) {
  char start[sizeof kElf] = {};
  std::ifstream(file, std::ios::binary).read(start, sizeof start);
  return std::equal(std::begin(start), std::end(start), std::begin(kElf));
}

}  // namespace

std::string DescribeLoadProblem(const std::filesystem::path& file) {
  const char* const reason = dlerror();
  if (!IsElf(file)) return "it is not a shared library, as its content is not in the format ELF";
  return reason != nullptr ? reason : "unknown";
}

}  // namespace ScEng
