// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/LoadedCode.h"

#include <dlfcn.h>
#include <link.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "Host/Tools/Node.h"
#include "Host/Tools/RunningCall.h"
#include "Host/Util/AddressRange.h"

namespace ScEng {
namespace {

/// Places are taken and given back, never moved, so that a signal handler can walk them at any time.
struct Place {
  std::atomic<bool> is_taken{false};
  std::atomic<std::uintptr_t> begin{0};
  // 0 while the place holds nothing.
  std::atomic<std::uintptr_t> end{0};
  const std::string* file = nullptr;
};

constexpr std::size_t kMostLibraries = 256;

// Without a destructor: libraries may be let go when static objects are gone already.
constinit std::array<Place, kMostLibraries> places;

}  // namespace

void LoadedCode::Note(void* handle, const std::filesystem::path& file) {
  link_map* map = nullptr;
  if (dlinfo(handle, RTLD_DI_LINKMAP, static_cast<void*>(&map)) != 0 || map == nullptr) return;
  // The dynamic section is a part of the file in memory.
  const AddressRange range = AddressRange::FindOf(map->l_ld);
  if (range.end == 0) return;
  for (std::size_t i = 0; i < places.size(); ++i) {
    if (places[i].is_taken.exchange(true)) continue;
    delete std::exchange(places[i].file, new std::string(file.string()));
    places[i].begin = range.begin;
    places[i].end = range.end;
    place_ = static_cast<int>(i);
    return;
  }
}

LoadedCode::~LoadedCode() {
  if (place_ < 0) return;
  Place& place = places[static_cast<std::size_t>(place_)];
  place.end = 0;
  place.is_taken = false;
}

const char* FindLibraryOf(const void* address) {
  const auto at = reinterpret_cast<std::uintptr_t>(address);
  for (const Place& place : places) {
    if (at < place.end && at >= place.begin) return place.file->c_str();
  }
  return nullptr;
}

const char* FindLibraryOf(const Node& node) {
  // The table of virtual operations lies in the library that defines the class.
  return FindLibraryOf(*reinterpret_cast<const void* const*>(&node));
}

}  // namespace ScEng
