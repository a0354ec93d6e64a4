// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Exr/ExrDecoder.h"

#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfInputPart.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "Host/Files/Codecs/Exr/ExrMetadata.h"
#include "Host/Files/Codecs/Exr/ExrThreads.h"

namespace ScEng::Exr {
namespace {

constexpr std::size_t kBlockBytes = std::size_t{16} << 20;

StoredType ToStored(PixelType type) {
  switch (type) {
    case PixelType::kUint: return StoredType::kUint32;
    case PixelType::kHalf: return StoredType::kHalf;
    case PixelType::kFloat: break;
  }
  return StoredType::kFloat;
}

bool IsOpacity(std::string_view name) { return name == "A" || name.ends_with(".A"); }

std::string Join(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

}  // namespace

Status ExrDecoder::Open(const std::filesystem::path& file) {
  file_.reset(std::fopen(file.c_str(), "rbe"));
  if (file_ == nullptr) return Status::Error(std::generic_category().message(errno));
  if (Status status = ReadFileHeader(file_.get(), header_); status.IsError()) return status;
  description_.format = "openexr";
  for (const PartHeader& part : header_.parts) description_.parts.push_back(DescribePart(part));
  return {};
}

FilePart ExrDecoder::DescribePart(const PartHeader& header) {
  FilePart part;
  part.name = header.name;
  part.size_x = static_cast<int>(header.data_window.GetWidth());
  part.size_y = static_cast<int>(header.data_window.GetHeight());
  part.corner_x = header.data_window.left;
  part.corner_y = header.data_window.top;
  std::vector<std::string> small;
  for (const HeaderChannel& channel : header.channels) {
    if (channel.IsSubsampled()) {
      small.push_back(channel.name);
      continue;
    }
    FileChannel& described = part.channels.emplace_back();
    described.name = channel.name;
    described.samples.type = ToStored(channel.type);
    part.is_multiplied = part.is_multiplied || IsOpacity(channel.name);
  }
  if (header.type == PartType::kDeep) {
    part.problem = "it holds deep samples, which have no single value per pixel";
  } else if (header.type == PartType::kUnknown) {
    part.problem = "it is of a type that is not known here";
  } else {
    if (header.compression != 0) part.compression = kCompressions[header.compression].name;
    if (!small.empty() && part.channels.empty()) part.problem = "all of its channels are stored at a lower resolution";
    if (!small.empty() && !part.channels.empty()) {
      description_.notes.push_back("channels that are stored at a lower resolution are left out: " + Join(small));
    }
  }
  ReadMetadata(header, part);
  return part;
}

std::vector<ExrDecoder::WantedChannel> ExrDecoder::ListWanted(const ReadRequest& request) const {
  const FilePart& part = description_.parts[request.part];
  std::vector<WantedChannel> wanted;
  for (std::size_t place = 0; place < request.channels.size(); ++place) {
    const FileChannel& channel = part.channels[request.channels[place]];
    auto found = std::find_if(wanted.begin(), wanted.end(),
                              [&](const WantedChannel& other) { return other.name == channel.name.c_str(); });
    if (found == wanted.end()) {
      // Half samples are handed out by the library as floats, which is exact.
      const bool is_whole = channel.samples.type == StoredType::kUint32;
      wanted.push_back({channel.name.c_str(), is_whole ? StoredType::kUint32 : StoredType::kFloat, {}});
      found = wanted.end() - 1;
    }
    found->places.push_back(place);
  }
  return wanted;
}

Status ExrDecoder::OpenPixels() {
  if (pixels_ != nullptr) return {};
  ShareThreads();
  try {
    stream_ = std::make_unique<InputStream>(file_.get());
    pixels_ = std::make_unique<Imf::MultiPartInputFile>(*stream_);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {
    return Status::Error("the file is damaged: its header makes no sense");
  }
  const bool is_same = static_cast<std::size_t>(pixels_->parts()) == header_.parts.size();
  return is_same ? Status() : Status::Error("the file changed while it was read");
}

Status ExrDecoder::Read(const ReadRequest& request, const ReadTarget& target) {
  const FilePart& part = description_.parts[request.part];
  if (!part.problem.empty()) return Status::Error(part.problem);
  if (checked_part_ != request.part) {
    chunks_ = std::make_unique<ChunkTable>(file_.get(), header_, request.part);
    checked_part_ = request.part;
  }
  const std::vector<WantedChannel> wanted = ListWanted(request);
  const std::int64_t rows_in_chunk = header_.parts[request.part].GetRowsInChunk();
  const std::size_t row_bytes = std::max<std::size_t>(wanted.size(), 1) * static_cast<std::size_t>(part.size_x) * 4;
  const auto chunks_at_once =
      std::max<std::int64_t>(static_cast<std::int64_t>(kBlockBytes / row_bytes) / rows_in_chunk, 1);
  for (std::int64_t row = request.row_begin; row < request.row_end;) {
    // Blocks end where chunks do, so that none is unpacked twice.
    const std::int64_t block_end = (row / rows_in_chunk + chunks_at_once) * rows_in_chunk;
    const std::int64_t end = std::min<std::int64_t>(request.row_end, block_end);
    Status status = ReadBlock(request, wanted, static_cast<int>(row), static_cast<int>(end), target);
    if (status.IsError()) return status;
    row = end;
  }
  return {};
}

Status ExrDecoder::ReadBlock(const ReadRequest& request, const std::vector<WantedChannel>& wanted, int row_begin,
                             int row_end, const ReadTarget& target) {
  if (Status status = chunks_->CheckRows(row_begin, row_end); status.IsError()) return status;
  if (Status status = OpenPixels(); status.IsError()) return status;
  const FilePart& part = description_.parts[request.part];
  const auto width = static_cast<std::size_t>(part.size_x);
  const std::size_t plane = width * static_cast<std::size_t>(row_end - row_begin);
  block_.assign(plane * wanted.size(), 0);
  const Imath::Box2i window({part.corner_x, part.corner_y + row_begin},
                            {part.corner_x + part.size_x - 1, part.corner_y + row_end - 1});
  try {
    Imf::FrameBuffer buffer;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
      const auto type = wanted[i].type == StoredType::kUint32 ? Imf::UINT : Imf::FLOAT;
      buffer.insert(wanted[i].name,
                    Imf::Slice::Make(type, block_.data() + i * plane, window, sizeof(float), width * sizeof(float)));
    }
    Imf::InputPart pixels(*pixels_, static_cast<int>(request.part));
    pixels.setFrameBuffer(buffer);
    pixels.readPixels(window.min.y, window.max.y);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {
    return ChunkTable::MakeDamageError(row_begin, row_end);
  }
  Deliver(request, wanted, row_begin, row_end, target);
  return {};
}

void ExrDecoder::Deliver(const ReadRequest& request, const std::vector<WantedChannel>& wanted, int row_begin,
                         int row_end, const ReadTarget& target) const {
  const auto width = static_cast<std::size_t>(description_.parts[request.part].size_x);
  const auto count = static_cast<std::size_t>(request.column_end - request.column_begin);
  const auto rows = static_cast<std::size_t>(row_end - row_begin);
  const auto skipped = static_cast<std::size_t>(row_begin - request.row_begin);
  constexpr std::size_t kGrain = 65536;
  ParallelRows(rows, std::max<std::size_t>(kGrain / std::max<std::size_t>(count, 1), 1),
               [&](std::size_t from, std::size_t to) {
                 for (std::size_t row = from; row < to; ++row) {
                   float* row_target = target.samples + (skipped + row) * target.row_stride;
                   for (std::size_t i = 0; i < wanted.size(); ++i) {
                     StoredSamples stored;
                     stored.type = wanted[i].type;
                     const std::uint32_t* samples =
                         block_.data() + (i * rows + row) * width + static_cast<std::size_t>(request.column_begin);
                     for (const std::size_t place : wanted[i].places) {
                       DecodeSamples(samples, sizeof(float), stored, request.scale, row_target + place,
                                     target.pixel_stride, count);
                     }
                   }
                 }
               });
}

}  // namespace ScEng::Exr
