// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/SizeCheck.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <vector>

namespace ScEng {
namespace {

using Bytes = std::vector<unsigned char>;

Bytes ReadBytes(const std::filesystem::path& file, std::uint64_t offset, std::size_t size) {
  std::ifstream stream(file, std::ios::binary);
  stream.seekg(static_cast<std::streamoff>(offset));
  Bytes bytes(size);
  stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
  bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(stream.gcount(), 0)));
  return bytes;
}

std::uint32_t Big32(const Bytes& bytes, std::size_t at) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < 4; ++i) number = (number << 8) | bytes[at + i];
  return number;
}

/// Every row of every channel has an offset and a length in tables after the header.
bool HoldsPackedSgi(const std::filesystem::path& file, std::uint64_t file_size, std::uint64_t rows) {
  constexpr std::size_t kHeader = 512;
  const Bytes tables = ReadBytes(file, kHeader, rows * 8);
  if (tables.size() < rows * 8) return false;
  for (std::size_t i = 0; i < rows; ++i) {
    const std::uint64_t offset = Big32(tables, i * 4);
    const std::uint64_t length = Big32(tables, (rows + i) * 4);
    if (length == 0 || offset < kHeader + rows * 8 || offset + length > file_size) return false;
  }
  return true;
}

bool HoldsSgi(const std::filesystem::path& file, std::uint64_t file_size, const OIIO::ImageSpec& spec) {
  constexpr std::uint64_t kHeader = 512;
  const Bytes header = ReadBytes(file, 0, 4);
  if (header.size() < 4) return false;
  const bool is_packed = header[2] == 1;
  const auto rows = static_cast<std::uint64_t>(spec.height) * static_cast<std::uint64_t>(spec.nchannels);
  if (is_packed) return rows <= file_size / 8 && HoldsPackedSgi(file, file_size, rows);
  return file_size >= kHeader && spec.image_bytes(true) <= file_size - kHeader;
}

/// The most that a byte of the file can stand for, of formats that repeat runs of bytes or store them as they are.
std::uint64_t GetLargestGain(std::string_view format) {
  constexpr std::array kRuns{"targa", "bmp", "iff", "rla", "softimage", "psd"};
  if (format == "fits") return 1;
  if (format == "cineon" || format == "dpx") return 128;
  return std::find(kRuns.begin(), kRuns.end(), format) != kRuns.end() ? 1024 : 0;
}

}  // namespace

std::string FindShortness(const std::filesystem::path& file, std::string_view format, const OIIO::ImageSpec& spec) {
  const std::uint64_t file_size = std::filesystem::file_size(file);
  const std::uint64_t gain = GetLargestGain(format);
  const bool fits = gain == 0 || spec.image_bytes(true) / gain <= file_size;
  if (fits && (format != "sgi" || HoldsSgi(file, file_size, spec))) return {};
  return "the file is shortened: its " + std::to_string(file_size) + " bytes do not hold " +
         std::to_string(spec.width) + " x " + std::to_string(spec.height) + " pixels";
}

}  // namespace ScEng
