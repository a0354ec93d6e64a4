// SPDX-License-Identifier: Apache-2.0
#include <cstdint>
#include <initializer_list>

#include "Host/Files/Codecs/Pictures/Encoders.h"
#include "Host/Files/Codecs/Pictures/PictureEncoder.h"
#include "Host/Files/Codecs/Pictures/WatchedFile.h"

namespace ScEng {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::uint32_t kFileHeader = 14;
// The shortest header that tells what is opacity and that all readers know.
constexpr std::uint32_t kHeader = 108;
constexpr std::uint32_t kData = kFileHeader + kHeader;

void PutLittle(Bytes& bytes, std::uint32_t number, int size) {
  for (int i = 0; i < size; ++i) bytes.push_back(static_cast<unsigned char>(number >> (8 * i)));
}

/// BMP of four channels, which the library of formats writes without saying that the fourth is opacity.
class BmpEncoder final : public PictureEncoder {
 public:
  BmpEncoder(const std::filesystem::path& path, const WritePlan& plan, std::vector<std::string>& notes)
      : PictureEncoder(plan, {4}, notes), file_(path) {
    constexpr std::uint32_t kMasks = 3;
    constexpr std::uint32_t kSrgb = 0x73524742;
    const auto size = static_cast<std::uint32_t>(plan.size_y) * static_cast<std::uint32_t>(GetRowBytes());
    Bytes header{'B', 'M'};
    for (const std::uint32_t number : {kData + size, 0U, kData, kHeader, static_cast<std::uint32_t>(plan.size_x),
                                       static_cast<std::uint32_t>(plan.size_y)}) {
      PutLittle(header, number, 4);
    }
    PutLittle(header, 1, 2);
    PutLittle(header, 32, 2);
    for (const std::uint32_t number : {kMasks, size, 0U, 0U, 0U, 0U, 0xFF0000U, 0xFF00U, 0xFFU, 0xFF000000U, kSrgb}) {
      PutLittle(header, number, 4);
    }
    header.resize(kData);
    file_.write(header.data(), header.size());
  }

 private:
  Status PutRows(int begin, int end, const void* samples) override {
    const auto* from = static_cast<const unsigned char*>(samples);
    Bytes bytes(GetRowBytes());
    for (int row = begin; row < end; ++row, from += bytes.size()) {
      for (std::size_t i = 0; i < bytes.size(); i += 4) {
        bytes[i] = from[i + 2];
        bytes[i + 1] = from[i + 1];
        bytes[i + 2] = from[i];
        bytes[i + 3] = from[i + 3];
      }
      const auto place = static_cast<std::size_t>(GetPlan().size_y - 1 - row) * bytes.size();
      if (file_.pwrite(bytes.data(), bytes.size(), static_cast<int64_t>(kData + place)) != bytes.size()) {
        return Status::Error("it cannot be written");
      }
    }
    return {};
  }
  Status Close() override { return file_.Finish() ? Status() : Status::Error("it cannot be written"); }

  CheckedFile file_;
};

}  // namespace

std::unique_ptr<ImageEncoder> CreateBmp(const std::filesystem::path& path, const WritePlan& plan,
                                        std::vector<std::string>& notes, Status& status) {
  if (plan.opacity_channel < 0) return CreatePlain(path, "bmp", plan, notes, status);
  constexpr std::uint64_t kMost = 0x7FFFFFFF;
  if (static_cast<std::uint64_t>(plan.size_x) * static_cast<std::uint64_t>(plan.size_y) > kMost / 4) {
    status = Status::Error("BMP holds up to 2 GiB of pixels");
    return nullptr;
  }
  return std::make_unique<BmpEncoder>(path, plan, notes);
}

}  // namespace ScEng
