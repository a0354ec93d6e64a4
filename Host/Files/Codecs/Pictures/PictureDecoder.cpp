// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/PictureDecoder.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <string_view>
#include <utility>

#include "Host/Files/Codecs/Pictures/MetadataBlocks.h"
#include "Host/Files/Codecs/Pictures/PartDescription.h"
#include "Host/Files/Codecs/Pictures/SizeCheck.h"
#include "Host/Files/Codecs/Pictures/TiffPages.h"

namespace ScEng {
namespace {

constexpr std::size_t kMostParts = 1000;
constexpr int kRowsAtOnce = 64;
constexpr std::size_t kBytesAtOnce = std::size_t{16} << 20;
constexpr std::array<unsigned char, 2> kFillings{0x55, 0xAA};

bool HasBlocks(std::string_view format) {
  constexpr std::array kFormats{"tiff", "webp", "jpeg2000", "psd", "heif"};
  return std::find(kFormats.begin(), kFormats.end(), format) != kFormats.end();
}

/// Formats whose readers may leave a row as it was and call that good. They are decoded twice, into rows that were
/// filled differently before: what differs afterwards is not in the file.
bool LeavesRowsUnset(std::string_view format) {
  constexpr std::array kSound{"tiff", "webp", "jpeg2000", "fits", "dpx"};
  return std::find(kSound.begin(), kSound.end(), format) == kSound.end();
}

/// Whether the header of a Targa counts bits of opacity; the library of formats takes any fourth byte for it.
bool HasTargaOpacity(const std::filesystem::path& file) {
  constexpr std::size_t kFlagsAt = 17;
  constexpr int kOpacityBits = 0xF;
  std::ifstream stream(file, std::ios::binary);
  stream.seekg(kFlagsAt);
  return (stream.get() & kOpacityBits) != 0;
}

void RemoveOpacity(FilePart& part) {
  if (part.channels.size() != 4) return;
  part.channels.pop_back();
  part.opacity_channel = -1;
  part.is_multiplied = false;
}

std::string SayDamaged(int row, int rows) {
  return "its data are damaged: " + std::to_string(row) + " of " + std::to_string(rows) + " rows can be read";
}

}  // namespace

std::unique_ptr<PictureDecoder> PictureDecoder::Open(const std::filesystem::path& file, const std::string& format,
                                                     Status& status) {
  std::string problem;
  std::unique_ptr<PictureDecoder> decoder(new PictureDecoder);
  auto input = format.empty() ? PictureInput::Find(file, problem) : PictureInput::Open(file, format, problem);
  if (!input) {
    status = Status::Error(problem);
    return nullptr;
  }
  decoder->file_ = file;
  decoder->description_.format = input->GetFormat();
  if (LeavesRowsUnset(input->GetFormat())) {
    auto twin = PictureInput::Open(file, input->GetFormat(), problem);
    if (!twin) {
      status = Status::Error(problem);
      return nullptr;
    }
    decoder->inputs_.push_back(std::move(twin));
  }
  decoder->inputs_.push_back(std::move(input));
  decoder->rows_.resize(decoder->inputs_.size());
  decoder->ListParts();
  return decoder;
}

void PictureDecoder::ListParts() {
  PictureInput& input = *inputs_.back();
  const std::string& format = description_.format;
  std::vector<TiffPage> pages;
  if (format == "tiff") pages = ListTiffPages(file_, kMostParts);
  for (int subimage = 0; input.Seek(subimage); ++subimage) {
    if (description_.parts.size() == kMostParts) {
      description_.notes.push_back("only the first " + std::to_string(kMostParts) + " parts are read");
      break;
    }
    const auto page = static_cast<std::size_t>(subimage);
    // A smaller copy of another page is no image of its own.
    if (page > 0 && page < pages.size() && pages[page].is_reduced) continue;
    FilePart part = DescribePart(format, input.GetSpec(), HasBlocks(format));
    if (page < pages.size()) ApplyTiffPage(pages[page], part);
    if (format == "targa" && !HasTargaOpacity(file_)) RemoveOpacity(part);
    if (part.problem.empty()) part.problem = FindShortness(file_, format, input.GetSpec());
    const bool is_own = page < pages.size() && part.problem.empty() && pages[page].samples &&
                        pages[page].samples->channels == part.channels.size();
    own_samples_.push_back(is_own ? pages[page].samples : std::nullopt);
    description_.parts.push_back(std::move(part));
    subimages_.push_back(subimage);
  }
  // After a search beyond the last part some readers do not find the first one again.
  if (std::string problem; format != "tiff") {
    if (auto fresh = PictureInput::Open(file_, format, problem)) inputs_.back() = std::move(fresh);
  } else {
    input.ClearError();
  }
  if (HasBlocks(format) && !description_.parts.empty()) {
    FilePart& first = description_.parts.front();
    const int orientation = ReadBlocks(file_, format != "tiff", first.metadata, description_.notes);
    // Of a HEIF the library turns the rows itself, and of a TIFF the page's own directory tells.
    if (format == "webp" || format == "psd") first.orientation = orientation;
  }
  is_checked_.assign(description_.parts.size(), false);
}

Status PictureDecoder::Begin(std::size_t part) {
  for (const auto& input : inputs_) {
    if (!input->Seek(subimages_[part])) return Status::Error("its part " + std::to_string(part) + " cannot be read");
  }
  if (description_.format == "tiff" && !is_checked_[part]) {
    const Status status = CheckTiffPage(file_, static_cast<std::uint32_t>(subimages_[part]));
    if (status.IsError()) return status;
    is_checked_[part] = true;
  }
  const OIIO::ImageSpec& spec = inputs_.back()->GetSpec();
  const FilePart& known = description_.parts[part];
  const bool is_same = spec.width == known.size_x && spec.height == known.size_y &&
                       static_cast<std::size_t>(spec.nchannels) >= known.channels.size();
  if (!is_same) return Status::Error("the file changed while it was read");
  if (own_samples_[part] && (!own_rows_ || own_part_ != part)) {
    own_part_ = part;
    own_rows_ = TiffRows::Open(file_, static_cast<std::uint32_t>(subimages_[part]), *own_samples_[part]);
    if (!own_rows_ || !own_rows_->HasSize(known.size_x, known.size_y)) return Status::Error("its directory is damaged");
  }
  return {};
}

int PictureDecoder::RowsAtOnce() const {
  const OIIO::ImageSpec& spec = inputs_.back()->GetSpec();
  if (spec.tile_width > 0) return spec.tile_height;
  const std::size_t row_bytes = std::max<std::size_t>(spec.scanline_bytes(true), 1);
  const auto most = static_cast<int>(std::clamp<std::size_t>(kBytesAtOnce / row_bytes, 1, kRowsAtOnce));
  // Whole strips are decoded by all threads and without being started anew.
  const int strip = spec.get_int_attribute("tiff:RowsPerStrip", 1);
  if (strip > most) {
    return static_cast<std::size_t>(strip) <= 4 * kBytesAtOnce / row_bytes && strip <= spec.height ? strip : most;
  }
  return strip > 1 ? most / strip * strip : most;
}

Status PictureDecoder::ReadChunk(std::size_t part, int begin, int end) {
  if (own_samples_[part]) return own_rows_->Read(begin, end, rows_.front());
  const OIIO::ImageSpec& spec = inputs_.back()->GetSpec();
  const std::size_t size = static_cast<std::size_t>(end - begin) * spec.scanline_bytes(true);
  for (std::size_t i = 0; i < inputs_.size(); ++i) {
    rows_[i].resize(size);
    std::fill(rows_[i].begin(), rows_[i].end(), kFillings[i]);
    const Status status = inputs_[i]->ReadRows(begin, end, rows_[i]);
    if (status.IsError()) return status;
  }
  if (inputs_.size() == 2 && rows_[0] != rows_[1]) return Status::Error(SayDamaged(begin, spec.height));
  return {};
}

Status PictureDecoder::Read(const ReadRequest& request, const ReadTarget& target) {
  const FilePart& part = description_.parts.at(request.part);
  if (!part.problem.empty()) return Status::Error(part.problem);
  Status status = Begin(request.part);
  const OIIO::ImageSpec& spec = inputs_.back()->GetSpec();
  const auto& own = own_samples_[request.part];
  const std::size_t own_bytes = own ? GetSize(own->type) : 0;
  const std::size_t pixel_bytes = own ? own->channels * own_bytes : spec.pixel_bytes(true);
  const std::size_t row_bytes = own ? static_cast<std::size_t>(spec.width) * pixel_bytes : spec.scanline_bytes(true);
  const int chunk = RowsAtOnce();
  const auto columns = static_cast<std::size_t>(request.column_end - request.column_begin);
  // Chunks begin at multiples of their height, so that strips and tiles are decoded once.
  for (int begin = request.row_begin / chunk * chunk; begin < request.row_end && !status.IsError(); begin += chunk) {
    const int end = std::min(begin + chunk, spec.height);
    status = ReadChunk(request.part, begin, end);
    for (int row = std::max(begin, request.row_begin); !status.IsError() && row < std::min(end, request.row_end);
         ++row) {
      const unsigned char* from = rows_.front().data() + static_cast<std::size_t>(row - begin) * row_bytes +
                                  static_cast<std::size_t>(request.column_begin) * pixel_bytes;
      float* to = target.samples + static_cast<std::size_t>(row - request.row_begin) * target.row_stride;
      for (std::size_t i = 0; i < request.channels.size(); ++i) {
        const std::size_t channel = request.channels[i];
        const std::size_t at = own ? channel * own_bytes : spec.pixel_bytes(0, static_cast<int>(channel), true);
        DecodeSamples(from + at, pixel_bytes, part.channels.at(channel).samples,
                      own ? own->GetNumbers(channel) : SampleNumbers(), request.scale, to + i, target.pixel_stride,
                      columns);
      }
    }
  }
  return status;
}

}  // namespace ScEng
