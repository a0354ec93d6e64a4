// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <bit>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <fstream>

#include "Host/Files/Codecs/Pictures/PnmHeader.h"
#include "Host/Files/Codecs/Pictures/WholeDecoder.h"

namespace ScEng {
namespace {

using Bytes = std::vector<unsigned char>;

StoredType GetType(const PnmHeader& header) {
  if (header.IsFloat()) return StoredType::kFloat;
  return header.largest > 255 ? StoredType::kUint16 : StoredType::kUint8;
}

/// How many bytes a row takes in the file; of texts, the fewest.
std::uint64_t GetRowBytes(const PnmHeader& header) {
  const std::uint64_t samples = header.GetRowSamples();
  if (header.kind == '4') return (samples + 7) / 8;
  return header.IsText() ? samples : samples * GetSize(GetType(header));
}

std::string SayShort(std::uint64_t rows, const PnmHeader& header) {
  return "the file is shortened: " + std::to_string(rows) + " of " + std::to_string(header.size_y) + " rows are there";
}

Status SayTooLarge(int number, const PnmHeader& header) {
  return Status::Error("its data are damaged: a sample is " + std::to_string(number) + ", and the largest is " +
                       std::to_string(header.largest));
}

/// Numbers that are written out; those of bitmaps may stand without blanks between them.
class TextReader {
 public:
  TextReader(const std::filesystem::path& file, const PnmHeader& header)
      : header_(header), stream_(file, std::ios::binary) {
    stream_.seekg(header.data);
  }

  Status Read(Bytes& samples) {
    const std::size_t size = GetSize(GetType(header_));
    const std::uint64_t count = header_.GetRowSamples() * static_cast<std::uint64_t>(header_.size_y);
    samples.resize(count * size);
    for (std::uint64_t i = 0; i < count; ++i) {
      const auto number = header_.IsBitmap() ? ReadDigit() : ReadPnmNumber(stream_);
      if (!number) {
        const std::uint64_t rows = i / header_.GetRowSamples();
        return Status::Error(stream_ ? "its data are damaged: " + std::to_string(rows) + " of " +
                                           std::to_string(header_.size_y) + " rows can be read"
                                     : SayShort(rows, header_));
      }
      if (*number > header_.largest) return SayTooLarge(*number, header_);
      const auto wide = static_cast<std::uint16_t>(*number);
      const auto byte = static_cast<std::uint8_t>(*number);
      std::memcpy(samples.data() + i * size,
                  size == 1 ? static_cast<const void*>(&byte) : static_cast<const void*>(&wide), size);
    }
    return {};
  }

 private:
  std::optional<int> ReadDigit() {
    int c = stream_.get();
    while (std::isspace(c) != 0) c = stream_.get();
    if (c == '0' || c == '1') return c - '0';
    return std::nullopt;
  }

  const PnmHeader& header_;
  std::ifstream stream_;
};

void UnpackBits(const PnmHeader& header, Bytes& samples) {
  const Bytes packed = std::move(samples);
  const auto width = static_cast<std::size_t>(header.size_x);
  const std::size_t row_bytes = (width + 7) / 8;
  samples.resize(width * static_cast<std::size_t>(header.size_y));
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const std::size_t x = i % width;
    samples[i] = static_cast<unsigned char>(packed[i / width * row_bytes + x / 8] >> (7 - x % 8) & 1);
  }
}

/// Rows of floats come from the lowest to the highest.
void TurnRows(const PnmHeader& header, Bytes& samples) {
  const auto row = static_cast<std::ptrdiff_t>(GetRowBytes(header));
  auto upper = samples.begin();
  auto lower = samples.end() - row;
  for (; upper < lower; upper += row, lower -= row) std::swap_ranges(upper, upper + row, lower);
}

void OrderBytes(const PnmHeader& header, Bytes& samples) {
  constexpr bool kNativeIsBig = std::endian::native == std::endian::big;
  if (header.is_big_endian == kNativeIsBig) return;
  const std::size_t size = GetSize(GetType(header));
  for (std::size_t i = 0; size > 1 && i + size <= samples.size(); i += size) {
    std::reverse(samples.data() + i, samples.data() + i + size);
  }
}

Status ReadBinary(const std::filesystem::path& file, const PnmHeader& header, Bytes& samples) {
  std::ifstream stream(file, std::ios::binary);
  stream.seekg(header.data);
  samples.resize(GetRowBytes(header) * static_cast<std::uint64_t>(header.size_y));
  stream.read(reinterpret_cast<char*>(samples.data()), static_cast<std::streamsize>(samples.size()));
  if (static_cast<std::size_t>(stream.gcount()) != samples.size()) return Status::Error("it cannot be read");
  if (header.kind == '4') {
    UnpackBits(header, samples);
    return {};
  }
  OrderBytes(header, samples);
  if (header.IsFloat()) TurnRows(header, samples);
  return {};
}

/// An error where a number is larger than the largest that the header names.
Status CheckNumbers(const PnmHeader& header, const Bytes& samples) {
  if (header.IsFloat() || header.largest == 255 || header.largest == 65535) return {};
  const std::size_t size = GetSize(GetType(header));
  for (std::size_t i = 0; i < samples.size(); i += size) {
    std::uint16_t number = samples[i];
    if (size == 2) std::memcpy(&number, samples.data() + i, size);
    if (number > header.largest) return SayTooLarge(number, header);
  }
  return {};
}

Status ReadSamples(const std::filesystem::path& file, const PnmHeader& header, Bytes& samples) {
  const Status status = header.IsText() ? TextReader(file, header).Read(samples) : ReadBinary(file, header, samples);
  return status.IsError() ? status : CheckNumbers(header, samples);
}

/// Why the file cannot hold its rows; empty where it can.
std::string FindShortness(const std::filesystem::path& file, const PnmHeader& header) {
  const std::uint64_t size = std::filesystem::file_size(file);
  const std::uint64_t there = size - std::min(size, static_cast<std::uint64_t>(header.data));
  const std::uint64_t rows = there / GetRowBytes(header);
  return rows < static_cast<std::uint64_t>(header.size_y) ? SayShort(rows, header) : "";
}

}  // namespace

std::unique_ptr<ImageDecoder> OpenPnm(const std::filesystem::path& file, Status& status) {
  std::string problem;
  const PnmHeader header = ReadPnmHeader(file, problem);
  if (problem.empty()) problem = FindShortness(file, header);
  if (!problem.empty()) {
    status = Status::Error(problem);
    return nullptr;
  }
  FilePart part;
  part.size_x = header.size_x;
  part.size_y = header.size_y;
  part.reads_regions = false;
  FileChannel channel;
  channel.samples.type = GetType(header);
  part.channels.assign(static_cast<std::size_t>(header.channels), channel);
  SampleNumbers numbers;
  // In bitmaps one is black.
  if (!header.IsFloat()) numbers = {static_cast<std::uint64_t>(header.largest), header.IsBitmap()};
  FileDescription description{"pnm", {part}, {}};
  const auto read = [file, header](Bytes& samples) { return ReadSamples(file, header, samples); };
  return std::make_unique<WholeDecoder>(std::move(description), read,
                                        std::vector<SampleNumbers>(part.channels.size(), numbers));
}

}  // namespace ScEng
