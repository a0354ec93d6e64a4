// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/WholeDecoder.h"

namespace ScEng {

Status WholeDecoder::Read(const ReadRequest& request, const ReadTarget& target) {
  const FilePart& part = description_.parts.at(request.part);
  if (samples_.empty()) {
    std::vector<unsigned char> samples;
    if (Status status = decode_(samples); status.IsError()) return status;
    samples_ = std::move(samples);
  }
  const std::size_t sample_bytes = GetSize(part.channels.front().samples.type);
  const std::size_t pixel_bytes = part.channels.size() * sample_bytes;
  const auto columns = static_cast<std::size_t>(request.column_end - request.column_begin);
  for (int row = request.row_begin; row < request.row_end; ++row) {
    const std::size_t first = static_cast<std::size_t>(row) * static_cast<std::size_t>(part.size_x) +
                              static_cast<std::size_t>(request.column_begin);
    float* to = target.samples + static_cast<std::size_t>(row - request.row_begin) * target.row_stride;
    for (std::size_t i = 0; i < request.channels.size(); ++i) {
      const std::size_t channel = request.channels[i];
      DecodeSamples(samples_.data() + first * pixel_bytes + channel * sample_bytes, pixel_bytes,
                    part.channels.at(channel).samples, channel < numbers_.size() ? numbers_[channel] : SampleNumbers(),
                    request.scale, to + i, target.pixel_stride, columns);
    }
  }
  return {};
}

}  // namespace ScEng
