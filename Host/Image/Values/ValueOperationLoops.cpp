// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/Values/ValueOperationLoops.h"

#include <mutex>
#include <shared_mutex>
#include <unordered_map>

namespace ScEng {
namespace {

// Keyed by the address of the type information, not by the class name: two libraries may each have a class of one name
// with different formulas, and each has type information of its own.
struct Registry {
  std::shared_mutex mutex;
  std::unordered_map<const std::type_info*, ValueOperationLoops> loops;
};

// Never destroyed: libraries take their loops back while the process winds up.
Registry& GetRegistry() {
  static Registry& registry = *new Registry;
  return registry;
}

}  // namespace

void RegisterValueOperationLoops(const std::type_info& type, const ValueOperationLoops& loops) {
  const std::unique_lock lock(GetRegistry().mutex);
  GetRegistry().loops.insert_or_assign(&type, loops);
}

void UnregisterValueOperationLoops(const std::type_info& type) {
  const std::unique_lock lock(GetRegistry().mutex);
  GetRegistry().loops.erase(&type);
}

std::optional<ValueOperationLoops> FindValueOperationLoops(const std::type_info& type) {
  const std::shared_lock lock(GetRegistry().mutex);
  const auto found = GetRegistry().loops.find(&type);
  if (found == GetRegistry().loops.end()) return std::nullopt;
  return found->second;
}

bool HasValueOperationLoops(const std::type_info& type) { return FindValueOperationLoops(type).has_value(); }

}  // namespace ScEng
