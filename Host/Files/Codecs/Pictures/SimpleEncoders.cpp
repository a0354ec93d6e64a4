// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "Host/Files/Codecs/Pictures/Encoders.h"
#include "Host/Files/Codecs/Pictures/PictureEncoder.h"
#include "Host/Files/Codecs/Pictures/WatchedFile.h"

// PNM and SGI: a header and the samples, in the order of bytes of neither processor.

namespace ScEng {
namespace {

using Bytes = std::vector<unsigned char>;

void PutBig(Bytes& bytes, std::uint64_t number, int size) {
  for (int shift = (size - 1) * 8; shift >= 0; shift -= 8) bytes.push_back(static_cast<unsigned char>(number >> shift));
}

/// Appends `count` samples, `stride` bytes from one to the next, with the high byte first.
void PutSamples(Bytes& bytes, const unsigned char* from, std::size_t stride, std::size_t count, StoredType type) {
  for (std::size_t i = 0; i < count; ++i, from += stride) {
    if (type == StoredType::kUint8) {
      bytes.push_back(*from);
    } else {
      std::uint16_t sample = 0;
      std::memcpy(&sample, from, sizeof sample);
      PutBig(bytes, sample, 2);
    }
  }
}

Status CloseFile(CheckedFile& file) { return file.Finish() ? Status() : Status::Error("it cannot be written"); }

class PnmEncoder final : public PictureEncoder {
 public:
  PnmEncoder(const std::filesystem::path& path, const WritePlan& plan, std::vector<std::string>& notes)
      : PictureEncoder(plan, {1, 3}, notes), file_(path) {
    const std::string header = std::string(GetNumChannels() == 1 ? "P5" : "P6") + "\n" + std::to_string(plan.size_x) +
                               " " + std::to_string(plan.size_y) + "\n" +
                               (plan.type == StoredType::kUint8 ? "255" : "65535") + "\n";
    file_.write(header.data(), header.size());
  }

 private:
  Status PutRows(int begin, int end, const void* samples) override {
    Bytes bytes;
    const std::size_t size = GetSize(GetPlan().type);
    PutSamples(bytes, static_cast<const unsigned char*>(samples), size,
               static_cast<std::size_t>(end - begin) * GetRowBytes() / size, GetPlan().type);
    return file_.write(bytes.data(), bytes.size()) == bytes.size() ? Status() : Status::Error("it cannot be written");
  }
  Status Close() override { return CloseFile(file_); }

  CheckedFile file_;
};

/// One plane for every channel, from the last row to the first.
class SgiEncoder final : public PictureEncoder {
 public:
  SgiEncoder(const std::filesystem::path& path, const WritePlan& plan, std::vector<std::string>& notes)
      : PictureEncoder(plan, {1, 2, 3, 4}, notes), file_(path) {
    constexpr std::uint64_t kMagic = 474;
    const bool is_wide = plan.type != StoredType::kUint8;
    Bytes header;
    PutBig(header, kMagic, 2);
    PutBig(header, 0, 1);
    PutBig(header, is_wide ? 2 : 1, 1);
    PutBig(header, GetNumChannels() == 1 ? 2 : 3, 2);
    PutBig(header, static_cast<std::uint64_t>(plan.size_x), 2);
    PutBig(header, static_cast<std::uint64_t>(plan.size_y), 2);
    PutBig(header, static_cast<std::uint64_t>(GetNumChannels()), 2);
    PutBig(header, 0, 4);
    PutBig(header, is_wide ? 65535 : 255, 4);
    header.resize(kHeaderSize);
    file_.write(header.data(), header.size());
  }

 private:
  static constexpr std::size_t kHeaderSize = 512;

  Status PutRows(int begin, int end, const void* samples) override {
    const WritePlan& plan = GetPlan();
    const std::size_t size = GetSize(plan.type);
    const auto width = static_cast<std::size_t>(plan.size_x);
    const auto channels = static_cast<std::size_t>(GetNumChannels());
    for (std::size_t c = 0; c < channels; ++c) {
      for (int row = begin; row < end; ++row) {
        Bytes bytes;
        PutSamples(bytes,
                   static_cast<const unsigned char*>(samples) + static_cast<std::size_t>(row - begin) * GetRowBytes() +
                       c * size,
                   channels * size, width, plan.type);
        const std::size_t line =
            c * static_cast<std::size_t>(plan.size_y) + static_cast<std::size_t>(plan.size_y - 1 - row);
        const auto offset = static_cast<int64_t>(kHeaderSize + line * bytes.size());
        if (file_.pwrite(bytes.data(), bytes.size(), offset) != bytes.size()) {
          return Status::Error("it cannot be written");
        }
      }
    }
    return {};
  }
  Status Close() override { return CloseFile(file_); }

  CheckedFile file_;
};

}  // namespace

std::unique_ptr<ImageEncoder> CreatePnm(const std::filesystem::path& path, const WritePlan& plan,
                                        std::vector<std::string>& notes, Status&) {
  return std::make_unique<PnmEncoder>(path, plan, notes);
}

std::unique_ptr<ImageEncoder> CreateSgi(const std::filesystem::path& path, const WritePlan& plan,
                                        std::vector<std::string>& notes, Status& status) {
  constexpr int kMost = 65535;
  if (plan.size_x > kMost || plan.size_y > kMost) {
    status = Status::Error("SGI holds up to 65535 x 65535 pixels");
    return nullptr;
  }
  return std::make_unique<SgiEncoder>(path, plan, notes);
}

}  // namespace ScEng
