// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/ParallelFor.h"

#include <algorithm>
#include <boost/exception_ptr.hpp>
#include <cstdint>
#include <exception>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

#include "Host/Util/ThreadPool.h"

namespace {

/// Brings the first exception of the tasks to the thread that waits for them.
class FirstException {
 public:
  /// To be called in a handler.
  void KeepCurrent() {
    // Boost copies an exception by the nearest standard type that it knows, and so would cut a derived one short. In
    // this envelope it travels whole.
    const boost::exception_ptr current = boost::copy_exception(Envelope{std::current_exception()});
    const std::lock_guard lock(mutex_);
    if (!first_) first_ = current;
  }

  void RethrowIfAny() const {
    if (!first_) return;
    try {
      boost::rethrow_exception(first_);
    } catch (const Envelope& envelope) {
      std::rethrow_exception(envelope.content);
    }
  }

 private:
  struct Envelope {
    std::exception_ptr content;
  };

  std::mutex mutex_;
  boost::exception_ptr first_;
};

}  // namespace

void ParallelFor(int begin, int end, int chunk, const std::function<void(int from, int to)>& body) {
  if (chunk < 1 && chunk != -1) {
    throw std::invalid_argument("ParallelFor: a chunk has 1 entry at least, or is -1; " + std::to_string(chunk) +
                                " is neither.");
  }
  if (end <= begin) return;
  FirstException exception;
  {
    // The number of cores is 0 where it is not known.
    ThreadPool pool(std::max(1U, std::thread::hardware_concurrency()));
    const auto threads = static_cast<std::int64_t>(pool.GetNumThreads());
    // A range of integers may have more entries than an integer can count.
    const std::int64_t count = std::int64_t{end} - begin;
    const std::int64_t step = chunk == -1 ? count / threads + 1 : chunk;
    for (std::int64_t from = begin; from < end; from += step) {
      const std::int64_t to = std::min<std::int64_t>(end, from + step);
      pool.AddTask([&body, &exception, from, to] {
        try {
          body(static_cast<int>(from), static_cast<int>(to));
        } catch (...) {
          exception.KeepCurrent();
        }
      });
    }
    pool.Wait();
  }
  exception.RethrowIfAny();
}
