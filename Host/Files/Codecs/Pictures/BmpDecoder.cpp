// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstring>
#include <fstream>
#include <utility>

#include "Host/Files/Codecs/Pictures/BmpHeader.h"
#include "Host/Files/Codecs/Pictures/BmpRuns.h"
#include "Host/Files/Codecs/Pictures/WholeDecoder.h"

namespace ScEng {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// Reads a BMP row by row; one that is packed in runs is unpacked when its samples are first asked for.
class BmpDecoder final : public ImageDecoder {
 public:
  BmpDecoder(const std::filesystem::path& file, BmpHeader header)
      : stream_(file, std::ios::binary),
        file_size_(std::filesystem::file_size(file)),
        header_(std::move(header)),
        is_gray_(std::all_of(header_.palette.begin(), header_.palette.end(),
                             [](const auto& color) { return color[0] == color[1] && color[1] == color[2]; })) {
    Describe();
  }

  [[nodiscard]] const FileDescription& GetDescription() const override { return description_; }

  /// Why the file cannot hold the picture; empty where it can.
  [[nodiscard]] std::string FindShortness() const {
    // No code of a run stands for more pixels, by far.
    constexpr std::uint64_t kMostPixelsOfByte = 1024;
    const std::uint64_t there = file_size_ - std::min(file_size_, header_.data);
    const auto rows = static_cast<std::uint64_t>(header_.size_y);
    if (header_.packing != BmpPacking::kNone) {
      const std::uint64_t pixels = rows * static_cast<std::uint64_t>(header_.size_x);
      return pixels / kMostPixelsOfByte <= there ? "" : SayShort(0);
    }
    // The last row may lack what fills it up.
    const std::uint64_t row = header_.GetRowBytes();
    const std::uint64_t last = (static_cast<std::uint64_t>(header_.size_x) * header_.pixel_bits + 7) / 8;
    return there >= (rows - 1) * row + last ? "" : SayShort(there / row);
  }

  Status Read(const ReadRequest& request, const ReadTarget& target) override {
    const FilePart& part = description_.parts.at(request.part);
    const std::size_t size = GetSize(part.channels.front().samples.type);
    const std::size_t pixel_bytes = size * part.channels.size();
    const auto columns = static_cast<std::size_t>(request.column_end - request.column_begin);
    for (int row = request.row_begin; row < request.row_end; ++row) {
      if (const Status status = ReadRow(row); status.IsError()) return status;
      float* to = target.samples + static_cast<std::size_t>(row - request.row_begin) * target.row_stride;
      const std::uint8_t* from = samples_.data() + static_cast<std::size_t>(request.column_begin) * pixel_bytes;
      for (std::size_t i = 0; i < request.channels.size(); ++i) {
        const std::size_t channel = request.channels[i];
        DecodeSamples(from + channel * size, pixel_bytes, part.channels.at(channel).samples, numbers_.at(channel),
                      request.scale, to + i, target.pixel_stride, columns);
      }
    }
    return {};
  }

 private:
  void Describe() {
    FilePart part;
    part.size_x = header_.size_x;
    part.size_y = header_.size_y;
    part.reads_regions = header_.packing == BmpPacking::kNone;
    part.compression = part.reads_regions ? "" : "rle";
    const std::size_t channels = header_.IsIndexed() ? (is_gray_ ? 1 : 3) : header_.HasOpacity() ? 4 : 3;
    FileChannel channel;
    channel.samples.type = StoredType::kUint8;
    numbers_.resize(channels);
    for (std::size_t c = 0; c < channels && !header_.IsIndexed(); ++c) {
      numbers_[c].largest = GetLargestOf(header_.fields.at(c).bits);
      if (header_.fields.at(c).bits > 8) channel.samples.type = StoredType::kUint16;
    }
    part.channels.assign(channels, channel);
    part.opacity_channel = channels == 4 ? 3 : -1;
    const auto [x, y] = header_.pixels_per_meter;
    if (x > 0 && y > 0) {
      part.metadata.resolution = {static_cast<float>(x) / 100.0F, static_cast<float>(y) / 100.0F};
      part.metadata.resolution_unit = "cm";
    }
    description_ = {"bmp", {std::move(part)}, {}};
  }

  [[nodiscard]] std::string SayShort(std::uint64_t rows) const {
    return "the file is shortened: " + std::to_string(rows) + " of " + std::to_string(header_.size_y) +
           " rows are there";
  }

  /// Reads bytes of the file into memory of that size; false where the file does not hold them.
  bool ReadBytes(std::uint64_t at, Bytes& bytes) {
    stream_.clear();
    stream_.seekg(static_cast<std::streamoff>(at));
    stream_.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return static_cast<std::size_t>(stream_.gcount()) == bytes.size();
  }

  Status Unpack() {
    Bytes packed(static_cast<std::size_t>(file_size_ - std::min(file_size_, header_.data)));
    if (!ReadBytes(header_.data, packed)) return Status::Error("it cannot be read");
    return UnpackBmpRuns(packed, header_, indices_);
  }

  /// Reads a row, counted from the upper one, into the samples.
  Status ReadRow(int row) {
    const auto stored_row = static_cast<std::uint64_t>(header_.is_bottom_up ? header_.size_y - 1 - row : row);
    const auto width = static_cast<std::size_t>(header_.size_x);
    if (header_.packing != BmpPacking::kNone) {
      if (indices_.empty()) {
        if (const Status status = Unpack(); status.IsError()) {
          indices_.clear();
          return status;
        }
      }
      return PutColors(indices_.data() + stored_row * width, 8);
    }
    row_.assign((width * header_.pixel_bits + 7) / 8, 0);
    if (!ReadBytes(header_.data + stored_row * header_.GetRowBytes(), row_)) return Status::Error(SayShort(stored_row));
    if (header_.IsIndexed()) return PutColors(row_.data(), header_.pixel_bits);
    PutFields();
    return {};
  }

  Status PutColors(const std::uint8_t* from, unsigned bits) {
    const auto width = static_cast<std::size_t>(header_.size_x);
    const std::size_t channels = numbers_.size();
    samples_.resize(width * channels);
    for (std::size_t x = 0; x < width; ++x) {
      const std::size_t bit = x * bits;
      const std::size_t index = from[bit / 8] >> (8 - bits - bit % 8) & GetLargestOf(bits);
      if (index >= header_.palette.size()) {
        return Status::Error("its data are damaged: a pixel has color " + std::to_string(index) + " of " +
                             std::to_string(header_.palette.size()));
      }
      std::memcpy(samples_.data() + x * channels, header_.palette[index].data(), channels);
    }
    return {};
  }

  void PutFields() {
    const std::size_t pixel_bytes = header_.pixel_bits / 8;
    const std::size_t channels = numbers_.size();
    const std::size_t size = GetSize(description_.parts.front().channels.front().samples.type);
    const auto width = static_cast<std::size_t>(header_.size_x);
    samples_.resize(width * channels * size);
    for (std::size_t x = 0; x < width; ++x) {
      std::uint32_t pixel = 0;
      for (std::size_t i = pixel_bytes; i > 0; --i) pixel = pixel << 8 | row_[x * pixel_bytes + i - 1];
      for (std::size_t c = 0; c < channels; ++c) {
        const auto number = static_cast<std::uint16_t>(pixel >> header_.fields[c].shift & numbers_[c].largest);
        const auto byte = static_cast<std::uint8_t>(number);
        std::memcpy(samples_.data() + (x * channels + c) * size,
                    size == 1 ? static_cast<const void*>(&byte) : static_cast<const void*>(&number), size);
      }
    }
  }

  std::ifstream stream_;
  std::uint64_t file_size_;
  BmpHeader header_;
  bool is_gray_;
  FileDescription description_;
  std::vector<SampleNumbers> numbers_;
  Bytes indices_;
  Bytes row_;
  Bytes samples_;
};

}  // namespace

std::unique_ptr<ImageDecoder> OpenBmp(const std::filesystem::path& file, Status& status) {
  std::string problem;
  BmpHeader header = ReadBmpHeader(file, problem);
  std::unique_ptr<BmpDecoder> decoder;
  if (problem.empty()) {
    decoder = std::make_unique<BmpDecoder>(file, std::move(header));
    problem = decoder->FindShortness();
  }
  if (problem.empty()) return decoder;
  status = Status::Error(problem);
  return nullptr;
}

}  // namespace ScEng
