// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

namespace ScEng {

/// Reads the bytes of a file in their order with little memory. What lies beyond the end reads as zero and is told by
/// `IsAtEnd`.
class FileBytes {
 public:
  explicit FileBytes(const std::filesystem::path& file);

  [[nodiscard]] std::uint64_t GetSize() const { return size_; }
  [[nodiscard]] std::uint64_t GetOffset() const { return buffer_offset_ + at_; }
  /// Whether a byte was asked for that the file does not have.
  [[nodiscard]] bool IsAtEnd() const { return is_at_end_; }
  void GoTo(std::uint64_t offset);
  void Skip(std::uint64_t count) { GoTo(GetOffset() + count); }
  std::uint8_t Next() { return at_ < buffer_.size() || Refill() ? buffer_[at_++] : std::uint8_t{0}; }
  std::uint64_t Big(std::size_t size);
  std::uint64_t Little(std::size_t size);

 private:
  bool Refill();

  std::ifstream stream_;
  std::uint64_t size_;
  std::vector<std::uint8_t> buffer_;
  std::uint64_t buffer_offset_ = 0;
  std::size_t at_ = 0;
  bool is_at_end_ = false;
};

}  // namespace ScEng
