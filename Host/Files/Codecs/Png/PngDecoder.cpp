// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Png/PngDecoder.h"

#include "Host/Files/Codecs/Png/PngChunks.h"
#include "Host/Files/Codecs/Png/PngMetadata.h"

namespace ScEng::Png {

Status PngDecoder::Open() {
  if (const Status status = Restart(); status.IsError()) return status;
  header_ = reader_->GetHeader();
  Describe();
  return {};
}

void PngDecoder::Describe() {
  ChunkList list = ReadChunks(reader_->GetDescriptor());
  packed_size_ = list.packed_size;
  description_.format = "png";
  description_.notes = std::move(list.notes);
  FilePart part;
  part.size_x = static_cast<int>(header_.size_x);
  part.size_y = static_cast<int>(header_.size_y);
  FileChannel channel;
  channel.samples.type = header_.bits == 16 ? StoredType::kUint16 : StoredType::kUint8;
  part.channels.assign(static_cast<std::size_t>(header_.channels), channel);
  part.opacity_channel = header_.has_opacity ? header_.channels - 1 : -1;
  part.reads_regions = !header_.is_interlaced;
  part.compression = "zip";
  ReadMetadata(list.chunks, part, description_.notes);
  if (list.is_animation) description_.notes.emplace_back("the file is an animation, of which the still image is read");
  description_.parts.push_back(std::move(part));
}

Status PngDecoder::Restart() {
  reader_ = std::make_unique<PixelReader>(file_);
  Status status = reader_->ReadHeader();
  if (!status.IsError() && !description_.parts.empty() && reader_->GetHeader() != header_) {
    status = Status::Error("the file changed while it was read");
  }
  if (status.IsError()) reader_.reset();
  return status;
}

/// Refuses what so few packed bytes cannot be the pixels of, before there is memory for them.
Status PngDecoder::CheckSize() const {
  // The most that the compression can make of a byte, rounded up.
  constexpr std::uint64_t kMostFromOne = 1040;
  const std::uint64_t most = (packed_size_ + 64) * kMostFromOne;
  // Fewer bits for a sample may be stored than are decoded, and opacity is not stored with a palette.
  const std::uint64_t least_row = header_.size_x / 8;
  if (least_row > most)
    return Status::Error("the file is shortened: 0 of " + std::to_string(header_.size_y) + " rows are there");
  if (header_.is_interlaced && least_row > most / header_.size_y) {
    return Status::Error("the file is shortened: it has not all of its passes");
  }
  return {};
}

Status PngDecoder::Read(const ReadRequest& request, const ReadTarget& target) {
  if (const Status status = CheckSize(); status.IsError()) return status;
  const Status status = header_.is_interlaced ? ReadInterlaced(request, target) : ReadRows(request, target);
  if (status.IsError()) reader_.reset();
  return status;
}

Status PngDecoder::ReadRows(const ReadRequest& request, const ReadTarget& target) {
  const auto row_begin = static_cast<std::uint32_t>(request.row_begin);
  const auto row_end = static_cast<std::uint32_t>(request.row_end);
  if (reader_ == nullptr || reader_->GetNextRow() > row_begin) {
    if (const Status status = Restart(); status.IsError()) return status;
  }
  pixels_.resize(header_.GetRowSize());
  while (reader_->GetNextRow() < row_end) {
    const std::uint32_t y = reader_->GetNextRow();
    if (const Status status = reader_->ReadRow(pixels_.data()); status.IsError()) return status;
    if (y >= row_begin) Deliver(pixels_.data(), static_cast<int>(y), request, target);
  }
  return {};
}

Status PngDecoder::ReadInterlaced(const ReadRequest& request, const ReadTarget& target) {
  const std::size_t row_size = header_.GetRowSize();
  if (!has_all_rows_) {
    if (reader_ == nullptr) {
      if (const Status status = Restart(); status.IsError()) return status;
    }
    pixels_.assign(row_size * header_.size_y, 0);
    if (const Status status = reader_->ReadPasses(pixels_.data()); status.IsError()) return status;
    has_all_rows_ = true;
  }
  for (int y = request.row_begin; y < request.row_end; ++y) {
    Deliver(pixels_.data() + static_cast<std::size_t>(y) * row_size, y, request, target);
  }
  return {};
}

void PngDecoder::Deliver(const std::uint8_t* row, int y, const ReadRequest& request, const ReadTarget& target) const {
  const FilePart& part = description_.parts.front();
  const std::size_t sample_size = header_.bits == 16 ? 2 : 1;
  const std::size_t pixel_size = sample_size * part.channels.size();
  const auto count = static_cast<std::size_t>(request.column_end - request.column_begin);
  const std::uint8_t* first = row + static_cast<std::size_t>(request.column_begin) * pixel_size;
  float* to = target.samples + static_cast<std::size_t>(y - request.row_begin) * target.row_stride;
  for (std::size_t c = 0; c < request.channels.size(); ++c) {
    const std::size_t channel = request.channels[c];
    DecodeSamples(first + channel * sample_size, pixel_size, part.channels[channel].samples, request.scale, to + c,
                  target.pixel_stride, count);
  }
}

}  // namespace ScEng::Png
