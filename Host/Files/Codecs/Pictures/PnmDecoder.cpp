// SPDX-License-Identifier: Apache-2.0
#include <bit>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <optional>

#include "Host/Files/Codecs/Pictures/WholeDecoder.h"

namespace ScEng {
namespace {

struct PnmHeader {
  int channels = 1;
  int size_x = 0;
  int size_y = 0;
  int largest = 0;
  std::streamoff data = 0;
};

/// A number after white space and comments, each of which goes from a hash to the end of its line.
std::optional<int> ReadNumber(std::istream& stream) {
  constexpr int kMost = 1 << 30;
  int c = stream.get();
  while (c == '#' || std::isspace(c) != 0) {
    if (c == '#') {
      while (c != '\n' && c != EOF) c = stream.get();
    } else {
      c = stream.get();
    }
  }
  if (std::isdigit(c) == 0) return std::nullopt;
  int number = 0;
  while (std::isdigit(c) != 0) {
    if (number > kMost / 10) return std::nullopt;
    number = number * 10 + (c - '0');
    c = stream.get();
  }
  // The one character after a number is white space, and after the last one the data begin.
  return std::isspace(c) != 0 ? std::optional(number) : std::nullopt;
}

std::optional<PnmHeader> ReadHeader(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  const int mark = stream.get();
  const int kind = stream.get();
  if (mark != 'P' || (kind != '5' && kind != '6')) return std::nullopt;
  const auto size_x = ReadNumber(stream);
  const auto size_y = size_x ? ReadNumber(stream) : std::nullopt;
  const auto largest = size_y ? ReadNumber(stream) : std::nullopt;
  if (!largest || *size_x < 1 || *size_y < 1) return std::nullopt;
  return PnmHeader{kind == '6' ? 3 : 1, *size_x, *size_y, *largest, stream.tellg()};
}

Status ReadData(const std::filesystem::path& file, const PnmHeader& header, std::vector<unsigned char>& samples) {
  const std::uint64_t row = std::uint64_t{static_cast<unsigned>(header.size_x)} *
                            static_cast<unsigned>(header.channels) * (header.largest > 255 ? 2U : 1U);
  const std::uint64_t there = std::filesystem::file_size(file) - static_cast<std::uint64_t>(header.data);
  if (there / row < static_cast<std::uint64_t>(header.size_y)) {
    return Status::Error("the file is shortened: " + std::to_string(there / row) + " of " +
                         std::to_string(header.size_y) + " rows are there");
  }
  std::ifstream stream(file, std::ios::binary);
  stream.seekg(header.data);
  samples.resize(row * static_cast<std::uint64_t>(header.size_y));
  stream.read(reinterpret_cast<char*>(samples.data()), static_cast<std::streamsize>(samples.size()));
  if (static_cast<std::size_t>(stream.gcount()) != samples.size()) return Status::Error("it cannot be read");
  if (header.largest > 255 && std::endian::native == std::endian::little) {
    for (std::size_t i = 0; i + 1 < samples.size(); i += 2) std::swap(samples[i], samples[i + 1]);
  }
  return {};
}

}  // namespace

std::unique_ptr<ImageDecoder> OpenPnm(const std::filesystem::path& file, Status&) {
  const auto header = ReadHeader(file);
  if (!header || (header->largest != 255 && header->largest != 65535)) return nullptr;
  FilePart part;
  part.size_x = header->size_x;
  part.size_y = header->size_y;
  part.reads_regions = false;
  FileChannel channel;
  channel.samples.type = header->largest == 255 ? StoredType::kUint8 : StoredType::kUint16;
  part.channels.assign(static_cast<std::size_t>(header->channels), channel);
  FileDescription description{"pnm", {part}, {}};
  return std::make_unique<WholeDecoder>(std::move(description), [file, header](std::vector<unsigned char>& samples) {
    return ReadData(file, *header, samples);
  });
}

}  // namespace ScEng
