// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>

#include "Host/Util/Api.h"

/// Splits [begin, end) into pieces of `chunk` entries, the last one of what remains, calls `body(from, to)` for each
/// and returns when all are done. An empty range, or one that ends before it begins, calls nothing.
///
/// A chunk of -1 stands for one piece per thread or so: count / threads + 1 entries. Throws `std::invalid_argument` for
/// any other chunk below 1.
///
/// The pieces are tasks of a `ThreadPool` of its own, handed to it in order, with one thread per core, but no more than
/// `ScEng::GetNumThreads`; the caller waits. Which thread takes which piece is not fixed, so `body` must write
/// only what belongs to its piece. An exception thrown by `body` reaches the caller, as it was thrown, after every
/// piece has run; when several throw, the first of them to do so. Pieces
/// that are left when the evaluation they work for is to stop are not run, and the caller receives `Canceled`.
HOST_UTIL_API void ParallelFor(int begin, int end, int chunk, const std::function<void(int from, int to)>& body);
