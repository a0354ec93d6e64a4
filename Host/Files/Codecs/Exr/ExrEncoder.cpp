// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Exr/ExrEncoder.h"

#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfHeader.h>

#include <algorithm>
#include <limits>
#include <set>

#include "Host/Files/Codecs/Exr/ExrMetadata.h"
#include "Host/Files/Codecs/Exr/ExrThreads.h"

namespace ScEng::Exr {
namespace {

constexpr const char* kUsualCompression = "zip";

/// The number of a compression by its name; an error that names them all where there is no such one.
Status FindCompression(const std::string& name, Imf::Compression& compression) {
  const auto* row = std::find_if(std::begin(kCompressions), std::end(kCompressions), [&](const CompressionRow& known) {
    return known.name == (name.empty() ? kUsualCompression : name);
  });
  if (row == std::end(kCompressions)) {
    std::string names;
    for (const CompressionRow& known : kCompressions) names += (names.empty() ? "" : ", ") + std::string(known.name);
    return Status::Error("OpenEXR has no compression \"" + name + "\"; there are " + names);
  }
  compression = static_cast<Imf::Compression>(row - std::begin(kCompressions));
  return {};
}

Status CheckPlan(const WritePlan& plan) {
  // The library keeps places in numbers of 32 bits, with room for sums of two.
  constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max() / 2;
  if (plan.type != StoredType::kFloat && plan.type != StoredType::kHalf) {
    return Status::Error("OpenEXR is written with samples of the types float and half");
  }
  if (plan.channels.empty() || plan.size_x < 1 || plan.size_y < 1) {
    return Status::Error("OpenEXR holds no image without pixels or channels");
  }
  for (const auto& [corner, size] : {std::pair(plan.corner_x, plan.size_x), std::pair(plan.corner_y, plan.size_y)}) {
    const std::int64_t end = std::int64_t{corner} + size;
    if (corner < -kMost || end > kMost || size > kMost) {
      return Status::Error("OpenEXR holds no image that lies " + std::to_string(kMost) + " pixels from the origin");
    }
  }
  std::set<std::string> names;
  for (const std::string& name : plan.channels) {
    const bool is_name = !name.empty() && name.size() <= 255 && name.find('\0') == std::string::npos;
    if (!is_name) return Status::Error("OpenEXR holds channels with names of 1 to 255 bytes");
    if (!names.insert(name).second) return Status::Error("there are two channels \"" + name + "\"");
  }
  return {};
}

Imath::Box2i GetDisplayWindow(const WritePlan& plan, const Imath::Box2i& data_window) {
  constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max() / 2;
  const auto& window = plan.metadata.display_window;
  const auto fits = [](std::int64_t begin, std::int64_t end) { return begin < end && begin >= -kMost && end <= kMost; };
  if (!window || !fits(window->left, window->right) || !fits(window->top, window->bottom)) return data_window;
  return {{static_cast<int>(window->left), static_cast<int>(window->top)},
          {static_cast<int>(window->right - 1), static_cast<int>(window->bottom - 1)}};
}

}  // namespace

Status CheckCompression(const std::string& compression) {
  Imf::Compression found{};
  return FindCompression(compression, found);
}

Status ExrEncoder::MakeError(const std::exception& exception) const {
  // What the stream knows is the cause of what the library says.
  if (stream_ != nullptr && stream_->GetStatus().IsError()) return stream_->GetStatus();
  const auto* system_error = dynamic_cast<const std::system_error*>(&exception);
  return Status::Error(system_error != nullptr ? system_error->code().message() : exception.what());
}

Status ExrEncoder::Begin(const std::filesystem::path& path, const WritePlan& plan, std::vector<std::string>& notes) {
  Imf::Compression compression{};
  if (Status status = CheckPlan(plan); status.IsError()) return status;
  if (Status status = FindCompression(plan.compression, compression); status.IsError()) return status;
  channels_ = plan.channels;
  is_half_ = plan.type == StoredType::kHalf;
  size_x_ = plan.size_x;
  size_y_ = plan.size_y;
  corner_x_ = plan.corner_x;
  corner_y_ = plan.corner_y;
  ShareThreads();
  try {
    const Imath::Box2i data_window({corner_x_, corner_y_}, {corner_x_ + size_x_ - 1, corner_y_ + size_y_ - 1});
    Imf::Header header(GetDisplayWindow(plan, data_window), data_window);
    header.compression() = compression;
    for (const std::string& name : channels_) {
      header.channels().insert(name, Imf::Channel(is_half_ ? Imf::HALF : Imf::FLOAT));
    }
    WriteMetadata(plan, header, notes);
    stream_ = std::make_unique<OutputStream>(path);
    file_ = std::make_unique<Imf::OutputFile>(*stream_, header);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& exception) {
    return MakeError(exception);
  }
  return {};
}

Status ExrEncoder::WriteRows(int row_begin, int row_end, const void* samples) {
  const auto rows = static_cast<std::size_t>(row_end - row_begin);
  const std::size_t row_samples = static_cast<std::size_t>(size_x_) * channels_.size();
  const void* from = samples;
  if (is_half_) {
    const auto* floats = static_cast<const float*>(samples);
    halves_.resize(rows * row_samples);
    std::transform(floats, floats + halves_.size(), halves_.begin(), [](float value) { return Imath::half(value); });
    from = halves_.data();
  }
  const std::size_t sample_size = is_half_ ? sizeof(Imath::half) : sizeof(float);
  const Imath::Box2i window({corner_x_, corner_y_ + row_begin}, {corner_x_ + size_x_ - 1, corner_y_ + row_end - 1});
  try {
    Imf::FrameBuffer buffer;
    for (std::size_t c = 0; c < channels_.size(); ++c) {
      const void* first = static_cast<const char*>(from) + c * sample_size;
      buffer.insert(channels_[c], Imf::Slice::Make(is_half_ ? Imf::HALF : Imf::FLOAT, first, window,
                                                   channels_.size() * sample_size, row_samples * sample_size));
    }
    file_->setFrameBuffer(buffer);
    file_->writePixels(row_end - row_begin);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& exception) {
    return MakeError(exception);
  }
  rows_written_ += row_end - row_begin;
  return stream_->GetStatus();
}

Status ExrEncoder::Finish() {
  // The table of rows is written by the destructor, which hides errors; the stream remembers them.
  file_.reset();
  Status status = stream_->Close();
  if (!status.IsError() && rows_written_ != size_y_) {
    return Status::Error("only " + std::to_string(rows_written_) + " of " + std::to_string(size_y_) +
                         " rows were written");
  }
  return status;
}

}  // namespace ScEng::Exr
