// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/AddressRange.h"

#include <link.h>

#include <algorithm>
#include <cstddef>

namespace ScEng {
namespace {

struct Search {
  std::uintptr_t wanted = 0;
  AddressRange found;
};

int LookAtFile(dl_phdr_info* info, std::size_t, void* data) {
  auto& search = *static_cast<Search*>(data);
  AddressRange range{UINTPTR_MAX, 0};
  for (int i = 0; i < info->dlpi_phnum; ++i) {
    const ElfW(Phdr)& segment = info->dlpi_phdr[i];
    if (segment.p_type != PT_LOAD) continue;
    const std::uintptr_t begin = info->dlpi_addr + segment.p_vaddr;
    range.begin = std::min(range.begin, begin);
    range.end = std::max<std::uintptr_t>(range.end, begin + segment.p_memsz);
  }
  if (!range.Contains(search.wanted)) return 0;
  search.found = range;
  return 1;
}

}  // namespace

AddressRange AddressRange::FindOf(const void* address) {
  Search search;
  search.wanted = reinterpret_cast<std::uintptr_t>(address);
  dl_iterate_phdr(LookAtFile, &search);
  return search.found;
}

}  // namespace ScEng
