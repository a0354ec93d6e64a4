// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/PictureEncoder.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <utility>

#include "Host/Files/Codecs/CodecTable.h"
#include "Host/Files/Codecs/ColorProfile.h"

namespace ScEng {
namespace {

/// How many channels a format stores for those of a plan.
int ChooseChannels(const WritePlan& plan, const std::vector<int>& channels) {
  const int wanted = static_cast<int>(plan.channels.size());
  const auto has = [&](int count) { return std::find(channels.begin(), channels.end(), count) != channels.end(); };
  if (has(wanted)) return wanted;
  if (wanted == 2 && plan.opacity_channel == 1 && has(4)) return 4;
  return has(3) ? 3 : channels.back();
}

}  // namespace

PictureEncoder::PictureEncoder(const WritePlan& plan, std::vector<int> channels, std::vector<std::string>& notes)
    : plan_(plan),
      channels_(ChooseChannels(plan, channels)),
      sample_bytes_(plan.type == StoredType::kHalf ? sizeof(float) : GetSize(plan.type)) {
  plan_.metadata.icc = SuitProfile(plan.metadata.icc, channels_, notes);
  const bool is_pair = plan.channels.size() == 2 && plan.opacity_channel != 1;
  if (is_pair && channels_ == 3) notes.emplace_back("the format holds no pairs of channels; red and green hold them");
}

int PictureEncoder::GetOpacityChannel() const {
  if (plan_.opacity_channel < 0) return -1;
  return channels_ == static_cast<int>(plan_.channels.size()) ? plan_.opacity_channel : channels_ == 4 ? 3 : -1;
}

std::size_t PictureEncoder::GetRowBytes() const {
  return static_cast<std::size_t>(plan_.size_x) * static_cast<std::size_t>(channels_) * sample_bytes_;
}

void PictureEncoder::Spread(const unsigned char* from, std::size_t pixels) {
  // Which channel of the plan each stored one is; -1 stands for zero.
  std::array<int, 4> sources{0, 0, 0, 0};
  if (plan_.channels.size() == 2) sources = channels_ == 4 ? std::array{0, 0, 0, 1} : std::array{0, 1, -1, -1};
  const auto given = plan_.channels.size() * sample_bytes_;
  const auto stored = static_cast<std::size_t>(channels_);
  spread_.assign(pixels * stored * sample_bytes_, 0);
  for (std::size_t i = 0; i < pixels; ++i) {
    for (std::size_t c = 0; c < stored; ++c) {
      if (sources[c] < 0) continue;
      std::memcpy(&spread_[(i * stored + c) * sample_bytes_],
                  from + i * given + static_cast<std::size_t>(sources[c]) * sample_bytes_, sample_bytes_);
    }
  }
}

Status PictureEncoder::WriteRows(int row_begin, int row_end, const void* samples) {
  if (row_begin != next_row_ || row_end > plan_.size_y) return Status::Error("its rows came out of order");
  next_row_ = row_end;
  if (channels_ == static_cast<int>(plan_.channels.size())) return PutRows(row_begin, row_end, samples);
  const auto pixels = static_cast<std::size_t>(row_end - row_begin) * static_cast<std::size_t>(plan_.size_x);
  Spread(static_cast<const unsigned char*>(samples), pixels);
  return PutRows(row_begin, row_end, spread_.data());
}

Status PictureEncoder::Finish() {
  if (next_row_ != plan_.size_y) return Status::Error("rows are missing");
  return Close();
}

ImageMetadata TakeWhatIsHeld(const ImageMetadata& metadata, std::string_view format, std::vector<std::string>& notes) {
  const FormatRow* row = FindFormatRow(format);
  if (row == nullptr) return metadata;
  ImageMetadata held = metadata;
  std::string left_out;
  const auto check = [&](bool is_held, auto& value, bool is_there, const char* what) {
    if (is_held || !is_there) return;
    value = {};
    left_out += (left_out.empty() ? "" : ", ") + std::string(what);
  };
  const FormatMetadata& holds = row->metadata;
  check(holds.georeference, held.georeference, held.georeference.has_value(), "coordinate system");
  check(holds.icc, held.icc, !held.icc.empty(), "color profile");
  check(holds.exif, held.exif, !held.exif.empty(), "EXIF");
  check(holds.xmp, held.xmp, !held.xmp.empty(), "XMP");
  check(holds.iptc, held.iptc, !held.iptc.empty(), "IPTC");
  const bool has_texts = std::any_of(held.entries.begin(), held.entries.end(), [](const MetadataEntry& entry) {
    return std::holds_alternative<std::string>(entry.value);
  });
  check(holds.texts, held.entries, has_texts, "texts");
  check(holds.nodata, held.nodata, held.nodata.has_value(), "nodata value");
  if (!left_out.empty()) notes.push_back("these metadata are not stored by this format: " + left_out);
  return held;
}

}  // namespace ScEng
