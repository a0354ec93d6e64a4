// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdint>
#include <vector>

#include "Host/Files/Codecs/Pictures/FileBytes.h"
#include "Host/Files/Codecs/Pictures/RowChecks.h"

namespace ScEng {
namespace {

constexpr std::uint64_t kPackedRows = 1;

/// How many samples a packed row gives, which takes `length` bytes of the file.
std::uint64_t CountUnpacked(FileBytes& bytes, std::uint64_t length) {
  constexpr std::uint64_t kIsRun = 0x80;
  constexpr std::uint64_t kNothing = 0x80;
  const std::uint64_t end = bytes.GetOffset() + length;
  std::uint64_t unpacked = 0;
  while (bytes.GetOffset() < end && !bytes.IsAtEnd()) {
    const std::uint64_t code = bytes.Big(1);
    if (code == kNothing) continue;
    const std::uint64_t left = end - bytes.GetOffset();
    if (code >= kIsRun) {
      if (left > 0) unpacked += 257 - code;
      bytes.Skip(1);
    } else {
      unpacked += std::min(code + 1, left);
      bytes.Skip(code + 1);
    }
  }
  bytes.GoTo(end);
  return unpacked;
}

/// Checks the packed rows of channels that follow each other, and stays behind them.
std::string FindShortRow(FileBytes& bytes, std::uint64_t channels, std::uint64_t rows, std::uint64_t row_bytes,
                         std::uint64_t length_bytes) {
  const std::uint64_t lengths_at = bytes.GetOffset();
  const std::uint64_t count = channels * rows;
  if (count * length_bytes > bytes.GetSize() - std::min(lengths_at, bytes.GetSize())) return {};
  std::vector<std::uint32_t> lengths(static_cast<std::size_t>(count));
  for (std::uint32_t& length : lengths) length = static_cast<std::uint32_t>(bytes.Big(length_bytes));
  for (std::size_t i = 0; i < lengths.size(); ++i) {
    const std::uint64_t unpacked = CountUnpacked(bytes, lengths[i]);
    // How many rows are there is told by the reader.
    if (bytes.IsAtEnd()) return {};
    if (unpacked < row_bytes) {
      return "row " + std::to_string(i % rows) + " of channel " + std::to_string(i / rows) + " is shortened: it has " +
             std::to_string(unpacked) + " of " + std::to_string(row_bytes) + " bytes";
    }
  }
  return {};
}

}  // namespace

std::string FindPsdDamage(const std::filesystem::path& file) {
  constexpr std::uint64_t kChannelsAt = 12;
  constexpr std::uint64_t kLargeVersion = 2;
  FileBytes bytes(file);
  bytes.Skip(4);
  const bool is_large = bytes.Big(2) == kLargeVersion;
  bytes.GoTo(kChannelsAt);
  const std::uint64_t channels = bytes.Big(2);
  const std::uint64_t rows = bytes.Big(4);
  const std::uint64_t columns = bytes.Big(4);
  const std::uint64_t depth = bytes.Big(2);
  bytes.Skip(2);
  // Colors, resources and layers, each after its length.
  for (const std::size_t length_bytes : {std::size_t{4}, std::size_t{4}, is_large ? std::size_t{8} : std::size_t{4}}) {
    const std::uint64_t length = bytes.Big(length_bytes);
    if (length > bytes.GetSize()) return {};
    bytes.Skip(length);
  }
  const bool is_packed = bytes.Big(2) == kPackedRows;
  if (bytes.IsAtEnd() || !is_packed || rows == 0) return {};
  return FindShortRow(bytes, channels, rows, (columns * depth + 7) / 8, is_large ? 4 : 2);
}

}  // namespace ScEng
