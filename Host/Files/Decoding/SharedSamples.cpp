// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Decoding/SharedSamples.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <limits>
#include <new>

namespace ScEng {

SharedSamples::SharedSamples(std::size_t bytes) : bytes_(std::max<std::size_t>(bytes, 1)) {
  if (bytes_ > static_cast<std::size_t>(std::numeric_limits<off_t>::max())) throw std::bad_alloc();
  descriptor_ = memfd_create("value-samples", MFD_CLOEXEC | MFD_ALLOW_SEALING);
  if (descriptor_ < 0) throw std::bad_alloc();
  // With a size that cannot shrink, no other process can take pages away from under this one.
  void* memory = MAP_FAILED;
  if (ftruncate(descriptor_, static_cast<off_t>(bytes_)) == 0 &&
      fcntl(descriptor_, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) == 0) {
    memory = mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor_, 0);
  }
  if (memory == MAP_FAILED) {
    Close();
    throw std::bad_alloc();
  }
  samples_ = static_cast<float*>(memory);
}

SharedSamples::~SharedSamples() { Close(); }

SharedSamples::SharedSamples(SharedSamples&& other) noexcept
    : samples_(std::exchange(other.samples_, nullptr)),
      bytes_(std::exchange(other.bytes_, 0)),
      descriptor_(std::exchange(other.descriptor_, -1)) {}

SharedSamples& SharedSamples::operator=(SharedSamples&& other) noexcept {
  std::swap(samples_, other.samples_);
  std::swap(bytes_, other.bytes_);
  std::swap(descriptor_, other.descriptor_);
  return *this;
}

float* SharedSamples::Release() {
  float* const samples = std::exchange(samples_, nullptr);
  Close();
  return samples;
}

void SharedSamples::Unmap(float* samples, std::size_t bytes) noexcept {
  if (samples != nullptr) munmap(samples, bytes);
}

void SharedSamples::Close() noexcept {
  Unmap(samples_, bytes_);
  samples_ = nullptr;
  if (descriptor_ >= 0) close(descriptor_);
  descriptor_ = -1;
}

}  // namespace ScEng
