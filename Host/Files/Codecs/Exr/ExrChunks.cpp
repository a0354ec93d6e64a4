// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Exr/ExrChunks.h"

#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <string_view>

#include "Host/Util/ParallelRows.h"

namespace ScEng::Exr {
namespace {

constexpr std::size_t kMostChunkHeader = 24;

/// How many bytes a zlib stream unpacks to, counted up to one more than `most`; 0 where it is damaged.
std::size_t CountInflated(const Bytes& packed, std::size_t most) {
  constexpr std::size_t kPiece = 65536;
  thread_local std::array<std::uint8_t, kPiece> piece;
  z_stream stream{};
  if (inflateInit(&stream) != Z_OK) return 0;
  stream.next_in = const_cast<Bytef*>(packed.data());
  stream.avail_in = static_cast<uInt>(packed.size());
  std::size_t size = 0;
  int state = Z_OK;
  while (state == Z_OK && size <= most) {
    stream.next_out = piece.data();
    stream.avail_out = kPiece;
    state = inflate(&stream, Z_NO_FLUSH);
    size += kPiece - stream.avail_out;
  }
  inflateEnd(&stream);
  return state == Z_STREAM_END ? size : 0;
}

/// The same for runs: a count and a byte that is repeated once more than that, or a negative count and as many bytes.
std::size_t CountRuns(const Bytes& packed) {
  std::size_t size = 0;
  std::size_t at = 0;
  while (at < packed.size()) {
    const int count = static_cast<std::int8_t>(packed[at]);
    const auto bytes = static_cast<std::size_t>(count < 0 ? -count : count + 1);
    at += count < 0 ? bytes + 1 : 2;
    size += bytes;
  }
  return at == packed.size() ? size : 0;
}

/// How many multiples of a step there are from the first to the last number.
std::int64_t CountMultiples(std::int64_t first, std::int64_t last, std::int64_t step) {
  const auto floor_of = [step](std::int64_t number) { return (number >= 0 ? number : number - step + 1) / step; };
  return floor_of(last) - floor_of(first - 1);
}

}  // namespace

ChunkTable::ChunkTable(std::FILE* file, const FileHeader& header, std::size_t part)
    : file_(file), header_(header), part_(header.parts[part]), part_index_(part) {
  const std::int64_t rows_in_chunk = part_.GetRowsInChunk();
  rows_ = static_cast<std::size_t>((part_.data_window.GetHeight() + rows_in_chunk - 1) / rows_in_chunk);
  if (part_.type == PartType::kTiles) {
    columns_ = static_cast<std::size_t>((part_.data_window.GetWidth() + part_.tile_width - 1) / part_.tile_width);
  }
  ReadTable();
}

bool ChunkTable::ReadAt(std::uint64_t position, void* to, std::size_t size) const {
  if (position > header_.size || size > header_.size - position) return false;
  auto* bytes = static_cast<std::uint8_t*>(to);
  while (size > 0) {
    const ssize_t piece = pread(fileno(file_), bytes, size, static_cast<off_t>(position));
    if (piece < 0 && errno == EINTR) continue;
    if (piece <= 0) return false;
    bytes += piece;
    position += static_cast<std::uint64_t>(piece);
    size -= static_cast<std::size_t>(piece);
  }
  return true;
}

void ChunkTable::ReadTable() {
  Bytes bytes(rows_ * columns_ * 8);
  if (!ReadAt(part_.table_position, bytes.data(), bytes.size())) bytes.assign(bytes.size(), 0);
  offsets_.resize(rows_ * columns_);
  for (std::size_t i = 0; i < offsets_.size(); ++i) offsets_[i] = GetNumber(bytes.data() + i * 8, 8);
  const bool is_complete = std::find(offsets_.begin(), offsets_.end(), 0U) == offsets_.end();
  if (!is_complete && !header_.is_multipart && part_.type == PartType::kScanLines) FindChunks();
}

/// A program that was stopped while it wrote leaves rows, but no table of them.
void ChunkTable::FindChunks() {
  const std::int64_t rows_in_chunk = part_.GetRowsInChunk();
  std::uint64_t position = part_.table_position + part_.chunk_count * 8;
  std::array<std::uint8_t, 8> head{};
  while (ReadAt(position, head.data(), head.size())) {
    const std::int64_t row = std::int64_t{GetInt(head.data())} - part_.data_window.top;
    const std::uint64_t size = GetNumber(head.data() + 4, 4);
    if (row < 0 || row % rows_in_chunk != 0 || row / rows_in_chunk >= static_cast<std::int64_t>(rows_)) break;
    offsets_[static_cast<std::size_t>(row / rows_in_chunk)] = position;
    position += head.size() + size;
  }
}

std::optional<ChunkTable::Chunk> ChunkTable::FindChunk(std::size_t index) const {
  const bool is_tile = part_.type == PartType::kTiles;
  const std::size_t part_bytes = header_.is_multipart ? 4 : 0;
  const std::size_t header_size = part_bytes + (is_tile ? 20 : 8);
  std::array<std::uint8_t, kMostChunkHeader> head{};
  if (offsets_[index] == 0 || !ReadAt(offsets_[index], head.data(), header_size)) return std::nullopt;
  if (header_.is_multipart && GetNumber(head.data(), 4) != part_index_) return std::nullopt;
  const std::uint8_t* place = head.data() + part_bytes;
  if (is_tile) {
    const bool is_here = GetNumber(place, 4) == index % columns_ && GetNumber(place + 4, 4) == index / columns_ &&
                         GetNumber(place + 8, 8) == 0;
    if (!is_here) return std::nullopt;
  } else {
    const std::int64_t row = part_.data_window.top + static_cast<std::int64_t>(index) * part_.GetRowsInChunk();
    if (GetInt(place) != row) return std::nullopt;
  }
  const std::uint64_t size = GetNumber(head.data() + header_size - 4, 4);
  const std::uint64_t position = offsets_[index] + header_size;
  if (size == 0 || size > header_.size - position) return std::nullopt;
  return Chunk{position, static_cast<std::size_t>(size)};
}

/// How many bytes the pixels of a chunk take when they are not packed.
std::size_t ChunkTable::GetFullSize(std::size_t index) const {
  const Box& window = part_.data_window;
  const bool is_tile = part_.type == PartType::kTiles;
  const std::int64_t left =
      window.left + (is_tile ? static_cast<std::int64_t>(index % columns_) * part_.tile_width : 0);
  const std::int64_t top = window.top + static_cast<std::int64_t>(index / columns_) * part_.GetRowsInChunk();
  const std::int64_t right = is_tile ? std::min<std::int64_t>(window.right, left + part_.tile_width - 1) : window.right;
  const std::int64_t bottom = std::min<std::int64_t>(window.bottom, top + part_.GetRowsInChunk() - 1);
  std::int64_t size = 0;
  for (const HeaderChannel& channel : part_.channels) {
    const std::int64_t sample = channel.type == PixelType::kHalf ? 2 : 4;
    size += sample * CountMultiples(left, right, channel.step_x) * CountMultiples(top, bottom, channel.step_y);
  }
  return static_cast<std::size_t>(size);
}

bool ChunkTable::IsWhole(std::size_t index) const {
  const auto chunk = FindChunk(index);
  if (!chunk) return false;
  const std::size_t full_size = GetFullSize(index);
  const std::string_view compression = kCompressions[part_.compression].name;
  if (chunk->size == full_size) return true;
  if (chunk->size > full_size || compression == "none") return false;
  const bool is_rle = compression == "rle";
  // The other ways of packing notice themselves that something is missing.
  if (!is_rle && compression != "zip" && compression != "zips") return true;
  Bytes packed(chunk->size);
  if (!ReadAt(chunk->position, packed.data(), packed.size())) return false;
  return (is_rle ? CountRuns(packed) : CountInflated(packed, full_size)) == full_size;
}

std::int64_t ChunkTable::CountRows() const {
  const std::int64_t rows_in_chunk = part_.GetRowsInChunk();
  const std::int64_t height = part_.data_window.GetHeight();
  std::int64_t rows = 0;
  for (std::size_t row = 0; row < rows_; ++row) {
    bool is_there = true;
    for (std::size_t column = 0; is_there && column < columns_; ++column) {
      is_there = FindChunk(row * columns_ + column).has_value();
    }
    if (is_there) rows += std::min(rows_in_chunk, height - static_cast<std::int64_t>(row) * rows_in_chunk);
  }
  return rows;
}

Status ChunkTable::MakeDamageError(std::int64_t row_begin, std::int64_t row_end) {
  return Status::Error("the file is damaged: rows " + std::to_string(row_begin) + " to " + std::to_string(row_end - 1) +
                       " cannot be unpacked");
}

Status ChunkTable::CheckRows(int row_begin, int row_end) const {
  const auto rows_in_chunk = static_cast<std::size_t>(part_.GetRowsInChunk());
  const std::size_t begin = static_cast<std::size_t>(row_begin) / rows_in_chunk * columns_;
  const std::size_t end = ((static_cast<std::size_t>(row_end) - 1) / rows_in_chunk + 1) * columns_;
  for (std::size_t i = begin; i < end; ++i) {
    if (!FindChunk(i)) {
      return Status::Error("the file is shortened: " + std::to_string(CountRows()) + " of " +
                           std::to_string(part_.data_window.GetHeight()) + " rows are there");
    }
  }
  std::atomic<std::size_t> first_damaged{end};
  ParallelRows(end - begin, 1, [&](std::size_t from, std::size_t to) {
    for (std::size_t i = begin + from; i < begin + to; ++i) {
      if (IsWhole(i)) continue;
      std::size_t least = first_damaged;
      while (i < least && !first_damaged.compare_exchange_weak(least, i)) {
      }
      return;
    }
  });
  if (first_damaged == end) return {};
  const auto row = static_cast<std::int64_t>(first_damaged / columns_ * rows_in_chunk);
  return MakeDamageError(row, std::min(row + static_cast<std::int64_t>(rows_in_chunk), part_.data_window.GetHeight()));
}

}  // namespace ScEng::Exr
