// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/JpegDecoder.h"

#include <jerror.h>

#include <algorithm>
#include <string>

#include "Host/Files/Codecs/Pictures/MetadataBlocks.h"

namespace ScEng {
namespace {

// More scans than any encoder makes; each decodes the whole picture again.
constexpr int kMostScans = 500;
constexpr long kMostMemory = 4L << 30;

void CountScans(j_common_ptr jpeg) {
  if (!jpeg->is_decompressor) return;
  if (reinterpret_cast<j_decompress_ptr>(jpeg)->input_scan_number > kMostScans) ERREXIT(jpeg, JERR_BAD_PROGRESSION);
}

/// Resolution as the file's own header has it, which counts where there is no EXIF block.
void ReadDensity(const jpeg_decompress_struct& jpeg, ImageMetadata& metadata) {
  if (jpeg.saw_JFIF_marker == FALSE || jpeg.X_density == 0 || jpeg.Y_density == 0) return;
  // One by one without a unit says nothing.
  if (jpeg.density_unit == 0 && jpeg.X_density == jpeg.Y_density) return;
  metadata.resolution = {static_cast<double>(jpeg.X_density), static_cast<double>(jpeg.Y_density)};
  metadata.resolution_unit = jpeg.density_unit == 1 ? "in" : jpeg.density_unit == 2 ? "cm" : "";
}

}  // namespace

std::unique_ptr<JpegDecoder> JpegDecoder::Open(const std::filesystem::path& file, Status& status) {
  std::unique_ptr<JpegDecoder> decoder(new JpegDecoder);
  decoder->file_ = file;
  decoder->stream_ = std::fopen(file.c_str(), "rbe");
  if (decoder->stream_ == nullptr) {
    status = Status::Error("it cannot be opened");
    return nullptr;
  }
  if (!decoder->ReadHeader()) {
    status = Status::Error(decoder->Explain());
    return nullptr;
  }
  decoder->Describe();
  return decoder;
}

JpegDecoder::~JpegDecoder() {
  jpeg_destroy_decompress(&jpeg_);
  if (stream_ != nullptr) std::fclose(stream_);
}

bool JpegDecoder::ReadHeader() {
  PrepareJpegErrors(errors_);
  jpeg_.err = &errors_;
  if (setjmp(errors_.escape) != 0) return false;
  jpeg_create_decompress(&jpeg_);
  jpeg_.mem->max_memory_to_use = kMostMemory;
  jpeg_stdio_src(&jpeg_, stream_);
  jpeg_save_markers(&jpeg_, JPEG_APP0 + 1, 12);
  jpeg_read_header(&jpeg_, TRUE);
  return true;
}

bool JpegDecoder::Start() {
  progress_.progress_monitor = CountScans;
  jpeg_.progress = &progress_;
  if (setjmp(errors_.escape) != 0) return false;
  jpeg_.dct_method = JDCT_ISLOW;
  jpeg_start_decompress(&jpeg_);
  return true;
}

bool JpegDecoder::ReadRow(JSAMPROW row) {
  if (setjmp(errors_.escape) != 0) return false;
  return jpeg_read_scanlines(&jpeg_, &row, 1) == 1;
}

bool JpegDecoder::Finish() {
  if (setjmp(errors_.escape) != 0) return false;
  return jpeg_finish_decompress(&jpeg_) != FALSE;
}

void JpegDecoder::Describe() {
  description_.format = "jpeg";
  FilePart part;
  part.size_x = static_cast<int>(jpeg_.image_width);
  part.size_y = static_cast<int>(jpeg_.image_height);
  part.reads_regions = false;
  part.compression = "jpeg";
  FileChannel channel;
  channel.samples.type = StoredType::kUint8;
  part.channels.assign(jpeg_.num_components == 1 ? 1 : 3, channel);
  if (jpeg_.num_components != 1 && jpeg_.num_components != 3 && jpeg_.num_components != 4) {
    part.problem = "it has " + std::to_string(jpeg_.num_components) + " channels; one, three or four are read";
  }
  ReadDensity(jpeg_, part.metadata);
  part.orientation = ReadBlocks(file_, true, part.metadata, description_.notes);
  description_.parts.push_back(std::move(part));
}

Status JpegDecoder::Restart() {
  if (is_started_) {
    jpeg_destroy_decompress(&jpeg_);
    std::rewind(stream_);
    if (!ReadHeader()) return Status::Error(Explain());
  }
  const FilePart& part = description_.parts.front();
  if (static_cast<int>(jpeg_.image_width) != part.size_x || static_cast<int>(jpeg_.image_height) != part.size_y) {
    return Status::Error("the file changed while it was read");
  }
  if (jpeg_.num_components == 3) jpeg_.out_color_space = JCS_RGB;
  if (jpeg_.num_components == 4) jpeg_.out_color_space = JCS_CMYK;
  if (jpeg_.num_components == 1) jpeg_.out_color_space = JCS_GRAYSCALE;
  is_started_ = true;
  next_row_ = 0;
  if (!Start()) return Status::Error(Explain());
  row_.assign(static_cast<std::size_t>(jpeg_.output_width) * static_cast<std::size_t>(jpeg_.output_components), 0);
  return {};
}

void JpegDecoder::ConvertInk() {
  if (jpeg_.output_components != 4) return;
  const bool is_inverted = jpeg_.saw_Adobe_marker != FALSE;
  for (std::size_t i = 0, j = 0; i + 4 <= row_.size(); i += 4, j += 3) {
    const int black = is_inverted ? row_[i + 3] : 255 - row_[i + 3];
    for (std::size_t c = 0; c < 3; ++c) {
      const int light = is_inverted ? row_[i + c] : 255 - row_[i + c];
      row_[j + c] = static_cast<JSAMPLE>((light * black + 127) / 255);
    }
  }
}

Status JpegDecoder::Read(const ReadRequest& request, const ReadTarget& target) {
  const FilePart& part = description_.parts.at(request.part);
  if (!part.problem.empty()) return Status::Error(part.problem);
  if (!is_started_ || request.row_begin < next_row_) {
    if (const Status status = Restart(); status.IsError()) {
      next_row_ = part.size_y + 1;
      return status;
    }
  }
  const std::size_t pixel = part.channels.size();
  const auto columns = static_cast<std::size_t>(request.column_end - request.column_begin);
  while (next_row_ < request.row_end) {
    if (!ReadRow(row_.data())) {
      const Status status = Status::Error(Explain());
      next_row_ = part.size_y + 1;
      return status;
    }
    const int row = next_row_++;
    if (row < request.row_begin) continue;
    ConvertInk();
    float* to = target.samples + static_cast<std::size_t>(row - request.row_begin) * target.row_stride;
    for (std::size_t i = 0; i < request.channels.size(); ++i) {
      const std::size_t channel = request.channels[i];
      DecodeSamples(row_.data() + static_cast<std::size_t>(request.column_begin) * pixel + channel, pixel,
                    part.channels.at(channel).samples, request.scale, to + i, target.pixel_stride, columns);
    }
  }
  if (next_row_ < part.size_y) return {};
  // Only behind the last row does it show whether the data end as they should.
  const bool is_whole = Finish();
  next_row_ = part.size_y + 1;
  return is_whole ? Status() : Status::Error(Explain());
}

std::string JpegDecoder::Explain() const {
  const std::string rows =
      std::to_string(is_started_ ? next_row_ : 0) + " of " + std::to_string(jpeg_.image_height) + " rows";
  switch (errors_.code) {
    case JERR_INPUT_EMPTY:
    case JERR_INPUT_EOF: return "the file is shortened: it ends within its header";
    case JWRN_JPEG_EOF: return "the file is shortened: " + rows + " are there";
    case JERR_BAD_PRECISION: return "its samples have another precision than 8 bits, which is not read";
    case JERR_SOF_UNSUPPORTED:
    case JERR_ARITH_NOTIMPL:
    case JERR_NOT_COMPILED: return "it is a kind of JPEG that is not read (lossless or hierarchical)";
    case JERR_OUT_OF_MEMORY:
    case JERR_NO_BACKING_STORE: return "there is not enough memory for it";
    default: return is_started_ ? "its data are damaged: " + rows + " can be read" : "its header is damaged";
  }
}

}  // namespace ScEng
