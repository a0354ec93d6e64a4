// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <filesystem>
#include <istream>
#include <optional>
#include <string>

namespace ScEng {

/// The header of a picture of the PNM family, whose kinds are named by a letter after a "P".
struct PnmHeader {
  char kind = '5';
  int channels = 1;
  int size_x = 0;
  int size_y = 0;
  /// The number that stands for 1; floats have none.
  int largest = 1;
  bool is_big_endian = true;
  std::streamoff data = 0;

  [[nodiscard]] bool IsBitmap() const { return kind == '1' || kind == '4'; }
  [[nodiscard]] bool IsText() const { return kind >= '1' && kind <= '3'; }
  [[nodiscard]] bool IsFloat() const { return kind == 'f' || kind == 'F'; }
  [[nodiscard]] std::uint64_t GetRowSamples() const {
    return static_cast<std::uint64_t>(size_x) * static_cast<std::uint64_t>(channels);
  }
};

/// A number after white space and comments, each of which goes from a hash to the end of its line. The one character
/// after it is taken.
std::optional<int> ReadPnmNumber(std::istream& stream);

/// Where the header cannot be used, `problem` is the clause that says why.
PnmHeader ReadPnmHeader(const std::filesystem::path& file, std::string& problem);

}  // namespace ScEng
