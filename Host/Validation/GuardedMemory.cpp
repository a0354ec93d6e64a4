// SPDX-License-Identifier: Apache-2.0
#include "Host/Validation/GuardedMemory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <new>

namespace ScEng {
namespace {

constexpr std::uint8_t kPattern = 0xD3;
constexpr std::size_t kMarginPages = 4;

std::size_t GetPageSize() {
  static const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return size;
}

std::size_t RoundUp(std::size_t number, std::size_t step) { return (number + step - 1) / step * step; }

/// The first byte in [from, to) that does not hold the pattern; `to` where all do.
const std::uint8_t* FindWritten(const std::uint8_t* from, const std::uint8_t* to) {
  return std::find_if(from, to, [](std::uint8_t byte) { return byte != kPattern; });
}

/// The last such byte; null where all hold the pattern.
const std::uint8_t* FindLastWritten(const std::uint8_t* from, const std::uint8_t* to) {
  for (const std::uint8_t* byte = to; byte != from;) {
    if (*--byte != kPattern) return byte;
  }
  return nullptr;
}

/// Appends to a text of fixed size, as a signal handler can.
class FixedText {
 public:
  FixedText(char* text, std::size_t size) : next_(text), end_(text + size) {}
  void Add(const char* words) {
    for (; *words != '\0' && next_ != end_; ++words) *next_++ = *words;
  }
  void Add(std::size_t number) {
    const auto result = std::to_chars(next_, end_, number);
    if (result.ec == std::errc()) next_ = result.ptr;
  }
  [[nodiscard]] const char* GetEnd() const { return next_; }

 private:
  char* next_;
  char* end_;
};

}  // namespace

float* GuardedMemory::Allocate(std::size_t bytes) {
  const std::size_t page = GetPageSize();
  const std::size_t margin = kMarginPages * page;
  const std::size_t aligned = RoundUp(bytes, kAlignment);
  const std::size_t inner = RoundUp(aligned, page);
  Block block;
  block.mapped = margin + inner + margin;
  block.bytes = bytes;
  if (block.mapped < bytes) throw std::bad_alloc();
  void* mapping = mmap(nullptr, block.mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapping == MAP_FAILED) throw std::bad_alloc();
  block.mapping = static_cast<std::uint8_t*>(mapping);
  block.samples = block.mapping + margin + inner - aligned;

  const std::lock_guard lock(mutex_);
  block.margins = margins_;
  if (block.margins == Margins::kForbidden) {
    std::fill(block.mapping + margin, block.samples, kPattern);
    std::fill(block.samples + bytes, block.samples + aligned, kPattern);
    mprotect(block.mapping, margin, PROT_NONE);
    mprotect(block.mapping + margin + inner, margin, PROT_NONE);
  } else {
    std::fill(block.mapping, block.samples, kPattern);
    std::fill(block.samples + bytes, block.mapping + block.mapped, kPattern);
  }
  auto* samples = reinterpret_cast<float*>(block.samples);
  std::fill_n(samples, bytes / sizeof(float), fill_);
  blocks_.push_back(block);
  return samples;
}

void GuardedMemory::Release(float* samples, std::size_t) noexcept {
  const std::lock_guard lock(mutex_);
  const auto found = std::find_if(blocks_.begin(), blocks_.end(), [&](const Block& block) {
    return block.samples == reinterpret_cast<std::uint8_t*>(samples);
  });
  if (found == blocks_.end()) return;
  if (damage_.empty()) damage_ = Inspect(*found);
  munmap(found->mapping, found->mapped);
  *found = blocks_.back();
  blocks_.pop_back();
}

void GuardedMemory::SetMargins(Margins margins) {
  const std::lock_guard lock(mutex_);
  margins_ = margins;
}

void GuardedMemory::SetFill(float fill) {
  const std::lock_guard lock(mutex_);
  fill_ = fill;
}

std::size_t GuardedMemory::GetNumBlocks() const {
  const std::lock_guard lock(mutex_);
  return blocks_.size();
}

std::string GuardedMemory::Inspect(const Block& block) {
  const std::size_t margin = block.margins == Margins::kForbidden ? kMarginPages * GetPageSize() : 0;
  std::uint8_t* const from = block.mapping + margin;
  std::uint8_t* const to = block.mapping + block.mapped - margin;
  const std::uint8_t* const end = block.samples + block.bytes;
  const std::string samples = " the " + std::to_string(block.bytes) + " bytes of samples";
  std::string damage;
  if (const std::uint8_t* before = FindLastWritten(from, block.samples)) {
    damage = std::to_string(block.samples - before) + " bytes before" + samples;
  } else if (const std::uint8_t* behind = FindWritten(end, to); behind != to) {
    damage = (behind == end ? "directly behind" : std::to_string(behind - end) + " bytes behind the end of") + samples;
  }
  if (!damage.empty()) {
    std::fill(from, block.samples, kPattern);
    std::fill(block.samples + block.bytes, to, kPattern);
  }
  return damage;
}

std::string GuardedMemory::TakeDamage() {
  const std::lock_guard lock(mutex_);
  std::string damage;
  damage.swap(damage_);
  for (const Block& block : blocks_) {
    std::string found = Inspect(block);
    if (damage.empty()) damage = std::move(found);
  }
  return damage;
}

std::size_t GuardedMemory::Locate(const void* address, char* text, std::size_t size) const noexcept {
  const auto* byte = static_cast<const std::uint8_t*>(address);
  for (const Block& block : blocks_) {
    if (byte < block.mapping || byte >= block.mapping + block.mapped) continue;
    const std::uint8_t* end = block.samples + block.bytes;
    FixedText words(text, size);
    if (byte < block.samples) {
      words.Add(static_cast<std::size_t>(block.samples - byte));
      words.Add(" bytes before the ");
    } else if (byte == end) {
      words.Add("directly behind the ");
    } else {
      words.Add(static_cast<std::size_t>(byte < end ? byte - block.samples : byte - end));
      words.Add(byte < end ? " bytes into the " : " bytes behind the end of the ");
    }
    words.Add(block.bytes);
    words.Add(" bytes of samples of an image");
    return static_cast<std::size_t>(words.GetEnd() - text);
  }
  return 0;
}

}  // namespace ScEng
