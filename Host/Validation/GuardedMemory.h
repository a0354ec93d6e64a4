// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "Host/Image/SampleAllocator.h"

namespace ScEng {

/// Memory for samples that notices what does not belong to an image: writes beside it, and images that stay.
///
/// Every block has a margin of whole pages on both sides. A watched margin holds a pattern, so that a write into it
/// does no harm and is found afterwards, to the byte. A forbidden one cannot be touched at all, so that reading past an
/// image ends the process; `Locate` then tells what was hit. The samples end where the margin behind them starts, but
/// for what their alignment of 64 bytes leaves over, which is watched in either case.
class GuardedMemory final : public SampleAllocator {
 public:
  enum class Margins { kWatched, kForbidden };

  static constexpr std::size_t kAlignment = 64;

  GuardedMemory() = default;
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;

  float* Allocate(std::size_t bytes) override;
  void Release(float* samples, std::size_t bytes) noexcept override;

  /// Of the blocks allocated from now on.
  void SetMargins(Margins margins);
  /// What fresh samples hold. Two evaluations with different fills differ in every sample that was never written.
  void SetFill(float fill);

  /// Blocks in use: one per image.
  [[nodiscard]] std::size_t GetNumBlocks() const;

  /// Where something was written beside a block since the last call, released blocks included: "12 bytes behind the 24
  /// bytes of samples"; empty where nothing was. The pattern is put back.
  std::string TakeDamage();

  /// For a signal handler: writes a text such as "8 bytes behind the 24 bytes of samples of an image" about an address
  /// in or beside a block to `text`, and answers its length; 0 for any other address. Takes no lock and no memory.
  std::size_t Locate(const void* address, char* text, std::size_t size) const noexcept;

 private:
  struct Block {
    std::uint8_t* mapping = nullptr;
    std::size_t mapped = 0;
    std::uint8_t* samples = nullptr;
    std::size_t bytes = 0;
    Margins margins = Margins::kWatched;
  };

  static std::string Inspect(const Block& block);

  mutable std::mutex mutex_;
  std::vector<Block> blocks_;
  std::string damage_;
  Margins margins_ = Margins::kWatched;
  float fill_ = 0.75F;
};

}  // namespace ScEng
