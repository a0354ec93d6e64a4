// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Rasters/TiffBlocks.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <limits>

namespace ScEng {
namespace {

int SwallowMessage(TIFF*, void*, const char*, const char*, va_list) { return 1; }

/// The state of an inflation, released at its end.
class Inflation {
 public:
  Inflation() { is_open_ = inflateInit(&stream_) == Z_OK; }
  ~Inflation() {
    if (is_open_) inflateEnd(&stream_);
  }
  Inflation(const Inflation&) = delete;
  Inflation& operator=(const Inflation&) = delete;

  [[nodiscard]] bool IsOpen() const { return is_open_; }
  z_stream& GetStream() { return stream_; }

 private:
  z_stream stream_{};
  bool is_open_ = false;
};

}  // namespace

std::unique_ptr<TiffBlocks> TiffBlocks::Open(const std::string& path, int directory, int size_x, int size_y) {
  std::unique_ptr<TiffBlocks> blocks(new TiffBlocks);
  const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(TIFFOpenOptionsAlloc(),
                                                                                 &TIFFOpenOptionsFree);
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), SwallowMessage, nullptr);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), SwallowMessage, nullptr);
  // Without a mapping of the file, which would end the process where the file shrinks, and with block tables read
  // where they are needed.
  blocks->tiff_.reset(TIFFOpenExt(path.c_str(), "rmO", options.get()));
  TIFF* tiff = blocks->tiff_.get();
  if (tiff == nullptr || TIFFSetDirectory(tiff, static_cast<tdir_t>(directory)) == 0) return nullptr;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
  TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
  if (width != static_cast<std::uint32_t>(size_x) || height != static_cast<std::uint32_t>(size_y)) return nullptr;
  blocks->size_x_ = size_x;
  blocks->size_y_ = size_y;
  std::error_code error;
  blocks->file_size_ = std::filesystem::file_size(path, error);
  blocks->file_.open(path, std::ios::binary);
  if (error || !blocks->file_) return nullptr;
  blocks->ReadLayout();
  return blocks;
}

void TiffBlocks::ReadLayout() {
  TIFF* tiff = tiff_.get();
  std::uint32_t block_x = 0;
  std::uint32_t block_y = 0;
  const bool is_tiled = TIFFIsTiled(tiff) != 0;
  if (is_tiled) {
    TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &block_x);
    TIFFGetField(tiff, TIFFTAG_TILELENGTH, &block_y);
  } else {
    block_x = static_cast<std::uint32_t>(size_x_);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &block_y);
  }
  const auto limit = [](std::uint32_t number, int most) {
    return static_cast<int>(std::clamp<std::uint32_t>(number, 1, static_cast<std::uint32_t>(most)));
  };
  // A tile may be larger than the image; only where it lies counts here.
  block_x_ = limit(block_x, std::numeric_limits<int>::max());
  block_y_ = is_tiled ? limit(block_y, std::numeric_limits<int>::max()) : limit(block_y, size_y_);
  std::uint16_t samples = 1;
  std::uint16_t planar = PLANARCONFIG_CONTIG;
  std::uint16_t compression = COMPRESSION_NONE;
  std::uint16_t fill_order = FILLORDER_MSB2LSB;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &samples);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &planar);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_COMPRESSION, &compression);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_FILLORDER, &fill_order);
  planes_ = planar == PLANARCONFIG_SEPARATE ? samples : 1;
  const auto count = [](int size, int block) { return static_cast<std::uint32_t>((size - 1) / block + 1); };
  blocks_of_row_ = count(size_x_, block_x_);
  blocks_of_plane_ = blocks_of_row_ * count(size_y_, block_y_);
  block_bytes_ = is_tiled ? TIFFTileSize64(tiff) : TIFFVStripSize64(tiff, static_cast<std::uint32_t>(block_y_));
  is_tiled_ = is_tiled;
  coding_ = GetBlockCoding(compression);
  std::uint16_t meaning = PHOTOMETRIC_MINISBLACK;
  TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &meaning);
  if (planes_ > 1 && meaning == PHOTOMETRIC_YCBCR) {
    std::uint16_t across = 1;
    std::uint16_t down = 1;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_YCBCRSUBSAMPLING, &across, &down);
    thinning_ = {std::max<std::uint32_t>(across, 1), std::max<std::uint32_t>(down, 1)};
  }
  is_deflated_ = (compression == COMPRESSION_ADOBE_DEFLATE || compression == COMPRESSION_DEFLATE) &&
                 fill_order == FILLORDER_MSB2LSB;
}

std::uint32_t TiffBlocks::GetIndex(int column, int row, int band) const {
  const std::uint32_t plane = planes_ > 1 ? static_cast<std::uint32_t>(band) : 0;
  return plane * blocks_of_plane_ + static_cast<std::uint32_t>(row / block_y_) * blocks_of_row_ +
         static_cast<std::uint32_t>(column / block_x_);
}

bool TiffBlocks::Inflates(std::uint64_t offset, std::uint64_t size) {
  Inflation inflation;
  if (!inflation.IsOpen()) return false;
  constexpr std::size_t kPiece = 1 << 16;
  std::vector<char> from(kPiece);
  std::vector<unsigned char> to(kPiece);
  file_.clear();
  file_.seekg(static_cast<std::streamoff>(offset));
  z_stream& stream = inflation.GetStream();
  int result = Z_OK;
  while (result == Z_OK && size > 0) {
    const std::size_t piece = static_cast<std::size_t>(std::min<std::uint64_t>(size, kPiece));
    if (!file_.read(from.data(), static_cast<std::streamsize>(piece))) return false;
    size -= piece;
    stream.next_in = reinterpret_cast<Bytef*>(from.data());
    stream.avail_in = static_cast<uInt>(piece);
    // Until the output is not filled any more: then all of the input is taken.
    do {
      stream.next_out = to.data();
      stream.avail_out = static_cast<uInt>(kPiece);
      result = inflate(&stream, Z_NO_FLUSH);
      if (stream.total_out > block_bytes_) return false;
    } while (result == Z_OK && stream.avail_out == 0);
    if (result == Z_BUF_ERROR) result = Z_OK;
  }
  return result == Z_STREAM_END;
}

TiffBlocks::BlockState TiffBlocks::Look(std::uint32_t index) {
  const std::uint64_t offset = TIFFGetStrileOffset(tiff_.get(), index);
  const std::uint64_t size = TIFFGetStrileByteCount(tiff_.get(), index);
  if (offset == 0 || size == 0) return BlockState::kFine;
  if (offset > file_size_ || size > file_size_ - offset) return BlockState::kMissing;
  return !is_deflated_ || Inflates(offset, size) ? BlockState::kFine : BlockState::kDamaged;
}

std::string TiffBlocks::FindSizeProblem(int band, std::int64_t column, std::int64_t row) {
  if (coding_ == BlockCoding::kOther) return {};
  const std::uint32_t index = GetIndex(static_cast<int>(column), static_cast<int>(row), band);
  const std::uint64_t offset = TIFFGetStrileOffset(tiff_.get(), index);
  const std::uint64_t size = TIFFGetStrileByteCount(tiff_.get(), index);
  if (offset == 0 || size == 0) return {};
  BlockSize needed{static_cast<std::uint32_t>(std::min<std::int64_t>(block_x_, size_x_ - column)),
                   static_cast<std::uint32_t>(std::min<std::int64_t>(block_y_, size_y_ - row))};
  if (band > 0) {
    needed.width = (needed.width - 1) / thinning_.width + 1;
    needed.height = (needed.height - 1) / thinning_.height + 1;
  }
  const std::string problem = FindCodedSizeProblem(file_, offset, size, coding_, needed);
  if (problem.empty()) return {};
  return (is_tiled_ ? "its tile " : "its strip ") + std::to_string(index) + ' ' + problem;
}

Status TiffBlocks::Check(const std::vector<int>& bands, int column_begin, int column_end, int row_begin, int row_end) {
  const auto first = [](int at, int block) { return at / block * block; };
  for (const int band : bands) {
    for (std::int64_t row = first(row_begin, block_y_); row < row_end; row += block_y_) {
      for (std::int64_t column = first(column_begin, block_x_); column < column_end; column += block_x_) {
        const std::uint32_t index = GetIndex(static_cast<int>(column), static_cast<int>(row), band);
        if (!seen_.insert(index).second) continue;
        const BlockState state = Look(index);
        const std::string problem = state == BlockState::kFine ? FindSizeProblem(band, column, row) : std::string();
        if (state == BlockState::kFine && problem.empty()) continue;
        seen_.erase(index);
        if (!problem.empty()) return Status::Error(problem);
        if (state == BlockState::kMissing) {
          return MakeShortenedError(static_cast<int>(row));
        }
        return Status::Error("the file is damaged: the block of samples at column " + std::to_string(column) +
                             ", row " + std::to_string(row) + " cannot be decompressed or has a wrong checksum");
      }
    }
  }
  return {};
}

Status TiffBlocks::MakeShortenedError(int missing_row) {
  // A file may claim so many blocks that looking at each takes minutes.
  constexpr std::int64_t kMostLooks = 1'000'000;
  const std::int64_t looks = (std::int64_t{missing_row} / block_y_ + 1) * blocks_of_row_ * planes_;
  const bool counts = looks <= kMostLooks;
  const std::string rows = "of " + std::to_string(size_y_) + " rows";
  if (!counts)
    return Status::Error("the file is shortened: row " + std::to_string(missing_row) + ' ' + rows + " is not there");
  return Status::Error("the file is shortened: " + std::to_string(CountRows()) + ' ' + rows + " are there");
}

int TiffBlocks::CountRows() {
  for (std::int64_t row = 0; row < size_y_; row += block_y_) {
    for (int plane = 0; plane < planes_; ++plane) {
      const std::uint32_t begin = GetIndex(0, static_cast<int>(row), plane);
      for (std::uint32_t index = begin; index < begin + blocks_of_row_; ++index) {
        const std::uint64_t offset = TIFFGetStrileOffset(tiff_.get(), index);
        const std::uint64_t size = TIFFGetStrileByteCount(tiff_.get(), index);
        if (offset != 0 && (offset > file_size_ || size > file_size_ - offset)) return static_cast<int>(row);
      }
    }
  }
  return size_y_;
}

}  // namespace ScEng
