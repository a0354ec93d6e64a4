// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <mutex>

#include "Host/Util/ParallelRows.h"

namespace ScEng {

/// `ParallelRows` for bodies that find something: `body(from, to)` returns a `Total`, and `Include(const Total&)` joins
/// what two ranges give. An empty range of entries gives `Total()`.
///
/// How the entries are divided, and the order in which totals are joined, are not fixed: `Include` must give the same
/// whatever they are, as the lowest and highest of samples do.
template <class Total, class Body>
Total ParallelReduce(std::size_t count, std::size_t grain, const Body& body) {
  Total all{};
  std::mutex mutex;
  ParallelRows(count, grain, [&](std::size_t from, std::size_t to) {
    const Total part = body(from, to);
    const std::lock_guard lock(mutex);
    all.Include(part);
  });
  return all;
}

}  // namespace ScEng
