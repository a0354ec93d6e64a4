// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/Samples.h"

#include <mutex>
#include <unordered_map>

#include "Host/Util/Forks.h"

namespace ValuePython {
namespace {

/// What is lent at the moment. An image gives its samples back by their address alone, and does not say which of their
/// owners it had. That does not matter: as long as one of them is kept, so is the memory.
class Lendings {
 public:
  /// Never destroyed, since threads may hold images when the process ends.
  static Lendings& Get() {
    static auto* const lendings = new Lendings;
    return *lendings;
  }

  void Add(const Samples& samples) {
    const std::lock_guard lock(mutex_);
    owners_.emplace(samples.get(), samples);
  }

  /// An owner of what is lent; null for what is not.
  Samples Find(const float* address) {
    const std::lock_guard lock(mutex_);
    const auto found = owners_.find(address);
    return found == owners_.end() ? nullptr : found->second;
  }

  /// Answers the owner, so that it goes when the lock is free again: that may run code of Python.
  Samples Remove(const float* address) {
    const std::lock_guard lock(mutex_);
    const auto found = owners_.find(address);
    Samples owner = std::move(found->second);
    owners_.erase(found);
    return owner;
  }

 private:
  Lendings() { ScEng::HoldWhileForking(mutex_); }

  std::mutex mutex_;
  std::unordered_multimap<const float*, Samples> owners_;
};

void TakeBack(float* samples, std::size_t) noexcept { Lendings::Get().Remove(samples); }

}  // namespace

ScEng::SampleBuffer Lend(const Samples& samples, std::size_t bytes) {
  Lendings::Get().Add(samples);
  // The host has no image of constant samples; nobody writes into those of an input.
  return {const_cast<float*>(samples.get()), ScEng::FreeSamples{bytes, &TakeBack}};
}

Samples FindOwner(const Image& image) { return Lendings::Get().Find(image.GetConstArray()); }

}  // namespace ValuePython
