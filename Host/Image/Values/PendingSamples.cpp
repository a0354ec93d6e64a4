// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/Values/PendingSamples.h"

#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <mutex>
#include <utility>

#include "Host/Image/PendingImage.h"
#include "Host/Image/SampleRange.h"
#include "Host/Util/Forks.h"
#include "Host/Util/ParallelReduce.h"
#include "Host/Util/ParallelRows.h"

namespace ScEng {
namespace {

// What one operation has made is in the first cache level when the next one reads it.
constexpr std::size_t kRunSamples = 2048;

// Each image of a chain has a list of all operations before it, so that a chain of any length takes time in proportion
// to it only if that list has an end. What a pass saves beyond is little.
constexpr std::size_t kMostStages = 32;

// Enough samples in one piece that handing it to a thread pays.
constexpr std::size_t kGrain = std::size_t{1} << 16;

constinit thread_local bool is_scope_on = false;

/// The addresses that pending images have in place of those of samples. They say which images are pending, and no
/// memory is there, so that nobody reads from them or writes to them unnoticed.
class Places {
 public:
  Places() {
    HoldWhileForking(mutex_);
    void* const memory = mmap(nullptr, kBytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED) return;
    first_ = static_cast<float*>(memory);
    begin_ = reinterpret_cast<std::uintptr_t>(memory);
    for (std::size_t i = kPlaces; i > 0; --i) free_[num_free_++] = i - 1;
  }

  /// Null where all are taken.
  float* Take(std::unique_ptr<PendingSamples>& samples) {
    const std::lock_guard lock(mutex_);
    if (num_free_ == 0) return nullptr;
    const std::size_t place = free_[--num_free_];
    samples_[place] = std::move(samples);
    return first_ + place * (kDistance / sizeof(float));
  }

  void GiveBack(const float* address) noexcept {
    const std::size_t place = FindPlace(address);
    // The samples may hold the last reference to an image: their end is not under the lock.
    const std::unique_ptr<PendingSamples> samples = std::move(samples_[place]);
    const std::lock_guard lock(mutex_);
    free_[num_free_++] = place;
  }

  [[nodiscard]] const PendingSamples* Find(const float* address) const {
    const std::size_t place = FindPlace(address);
    return place < kPlaces ? samples_[place].get() : nullptr;
  }

 private:
  // Enough for every image between two nodes of wide graphs; what gets no place is computed at once.
  static constexpr std::size_t kPlaces = 1024;
  // Samples are aligned to as many bytes.
  static constexpr std::size_t kDistance = 64;
  static constexpr std::size_t kBytes = kPlaces * kDistance;

  /// `kPlaces` or more for any other address.
  [[nodiscard]] std::size_t FindPlace(const float* address) const {
    return (reinterpret_cast<std::uintptr_t>(address) - begin_) / kDistance;
  }

  std::mutex mutex_;
  // Null, which no image's samples lie next to, where there are no addresses to be had.
  std::uintptr_t begin_ = 0;
  float* first_ = nullptr;
  std::array<std::unique_ptr<PendingSamples>, kPlaces> samples_;
  std::array<std::size_t, kPlaces> free_{};
  std::size_t num_free_ = 0;
};

// Never destroyed: images may outlive every static object.
Places& GetPlaces() {
  static Places& places = *new Places;
  return places;
}

void ReleasePlace(float* address, std::size_t) noexcept { GetPlaces().GiveBack(address); }

}  // namespace

PendingScope::PendingScope(bool is_on) : outer_(std::exchange(is_scope_on, is_on)) {}
PendingScope::~PendingScope() { is_scope_on = outer_; }
bool PendingScope::IsOn() { return is_scope_on; }

bool IsPending(const Image& image) { return PendingSamples::Find(image) != nullptr; }

ImagePtr Settle(const Image& image) {
  const PendingSamples* const pending = PendingSamples::Find(image);
  if (pending == nullptr) return nullptr;
  const PendingScope off(false);
  auto settled = MakeRef<Image>(image.GetImageHeader(), nullptr);
  float* const samples = settled->GetArray();
  ParallelRows(settled->GetNumSamples(), kGrain, [&](std::size_t from, std::size_t to) {
    pending->Compute(pending->GetSource() + from, samples + from, to - from);
  });
  return settled;
}

ImagePtr MakeWhole(const Image& image) {
  ImagePtr whole = Settle(image);
  if (!whole) return nullptr;
  if (std::isnan(image.GetValueLow())) {
    const float* const samples = whole->GetConstArray();
    const auto range = ParallelReduce<SampleRange>(
        whole->GetNumSamples(), kGrain,
        [&](std::size_t from, std::size_t to) { return MeasureFiniteRange(samples + from, to - from); });
    whole->SetValueLowHigh(range.IsEmpty() ? 0.0F : range.low, range.IsEmpty() ? 0.0F : range.high);
  }
  whole->SetMetadata(image.GetMetadata());
  return whole;
}

const float* FetchSamples(const Image& image, std::size_t first, std::size_t count, float* buffer) {
  const PendingSamples* const pending = PendingSamples::Find(image);
  if (pending == nullptr) return image.GetConstArray() + first;
  pending->Compute(pending->GetSource() + first, buffer, count);
  return buffer;
}

const PendingSamples* PendingSamples::Find(const Image& image) { return GetPlaces().Find(image.GetConstArray()); }

std::unique_ptr<Image> PendingSamples::MakeImage(const ImageHeader& header, const std::vector<const Image*>& images,
                                                 const ValueOperation& operation, const ValueOperationLoops& loops) {
  if (loops.one == nullptr || loops.two == nullptr || loops.copy == nullptr) return nullptr;
  const PendingSamples* const before = Find(*images.front());
  const std::size_t own = std::max<std::size_t>(images.size() - 1, 1);
  if (own + (before != nullptr ? before->stages_.size() : 0) > kMostStages) return nullptr;
  for (std::size_t i = 0; i < images.size(); ++i) {
    // An image that nobody counts may go while the pending one still needs it.
    if (images[i]->GetRefCount() == 0 || (i > 0 && IsPending(*images[i]))) return nullptr;
  }
  auto pending = std::make_unique<PendingSamples>();
  pending->source_ = before != nullptr ? before->source_ : ImagePtr(const_cast<Image*>(images.front()));
  if (before != nullptr) pending->stages_ = before->stages_;
  if (images.size() == 1) pending->AddStage(operation, loops, nullptr);
  for (std::size_t i = 1; i < images.size(); ++i) pending->AddStage(operation, loops, images[i]);
  float* const address = GetPlaces().Take(pending);
  if (address == nullptr) return nullptr;
  auto image = std::make_unique<Image>(header, SampleBuffer(address, FreeSamples{0, ReleasePlace}));
  constexpr float kUnknown = std::numeric_limits<float>::quiet_NaN();
  image->SetValueLowHigh(kUnknown, kUnknown);
  return image;
}

void PendingSamples::AddStage(const ValueOperation& operation, const ValueOperationLoops& loops, const Image* second) {
  auto stage = std::make_shared<Stage>();
  stage->operation.reset(loops.copy(operation));
  stage->one = loops.one;
  stage->two = loops.two;
  stage->second = ImagePtr(const_cast<Image*>(second));
  stages_.push_back(std::move(stage));
}

void PendingSamples::Compute(const float* from, float* to, std::size_t count) const {
  alignas(64) std::array<float, kRunSamples> between;
  std::ptrdiff_t place = from - GetSource();
  while (count > 0) {
    const std::size_t run = std::min(count, kRunSamples);
    const float* values = GetSource() + place;
    for (std::size_t i = 0; i < stages_.size(); ++i) {
      const Stage& stage = *stages_[i];
      // In turn, so that the last one writes to where the samples belong.
      float* const made = (stages_.size() - i) % 2 == 1 ? to : between.data();
      if (stage.second) {
        stage.two(*stage.operation, values, stage.second->GetConstArray() + place, made, run);
      } else {
        stage.one(*stage.operation, values, made, run);
      }
      values = made;
    }
    place += static_cast<std::ptrdiff_t>(run);
    to += run;
    count -= run;
  }
}

}  // namespace ScEng
