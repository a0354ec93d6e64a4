// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "Host/Files/Codecs/CodecTable.h"

// What the tests of the codec of pictures share.

namespace ScEng {

/// A folder that goes with the test.
class TestFolder {
 public:
  TestFolder() {
    std::string path = (std::filesystem::temp_directory_path() / "PicturesXXXXXX").string();
    path_ = mkdtemp(path.data());
  }
  ~TestFolder() { std::filesystem::remove_all(path_); }
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;
  [[nodiscard]] std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

inline const ImageCodec& GetPictures() {
  std::string problem;
  const ImageCodec* codec = LoadCodec(*FindCodecRow("pictures"), problem);
  if (codec == nullptr) throw std::runtime_error(problem);
  return *codec;
}

inline std::string ReadFile(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

inline void WriteFile(const std::filesystem::path& file, const std::string& bytes) {
  std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
}

/// A part of a file with all its channels, or why it could not be read.
struct ReadPicture {
  FileDescription description;
  std::vector<float> samples;
  std::string problem;
};

constexpr float kSentinel = -98765.0F;

inline ReadPicture ReadPart(const std::filesystem::path& file, const std::string& format, std::size_t index = 0,
                            SampleScale scale = SampleScale::kStored) {
  ReadPicture read;
  Status status;
  const auto decoder = GetPictures().Open(file, format, status);
  if (!decoder) {
    read.problem = status.GetMessage();
    return read;
  }
  read.description = decoder->GetDescription();
  if (index >= read.description.parts.size()) {
    read.problem = "no such part";
    return read;
  }
  const FilePart& part = read.description.parts[index];
  // Damaged headers may declare anything.
  constexpr std::size_t kMost = std::size_t{1} << 24;
  const std::size_t row = static_cast<std::size_t>(part.size_x) * part.channels.size();
  if (!part.problem.empty() || row * static_cast<std::size_t>(part.size_y) > kMost) {
    read.problem = part.problem.empty() ? "too large" : part.problem;
    return read;
  }
  ReadRequest request;
  request.part = index;
  request.column_end = part.size_x;
  request.row_end = part.size_y;
  request.scale = scale;
  for (std::size_t c = 0; c < part.channels.size(); ++c) request.channels.push_back(c);
  read.samples.assign(row * static_cast<std::size_t>(part.size_y), kSentinel);
  status = decoder->Read(request, {read.samples.data(), part.channels.size(), row});
  if (status.IsError()) read.problem = status.GetMessage();
  return read;
}

/// A plan for a picture of a size, with names of channels as the host gives them.
inline WritePlan MakePlan(int size_x, int size_y, int channels, StoredType type) {
  WritePlan plan;
  plan.size_x = size_x;
  plan.size_y = size_y;
  plan.type = type;
  if (channels < 3) plan.channels = {"Y", "A"};
  if (channels >= 3) plan.channels = {"R", "G", "B", "A"};
  plan.channels.resize(static_cast<std::size_t>(channels));
  plan.opacity_channel = channels % 2 == 0 ? channels - 1 : -1;
  return plan;
}

/// The bytes of samples of a plan from whole numbers: integers as they are, floats as eighths of them.
inline std::vector<unsigned char> PackSamples(const WritePlan& plan, const std::vector<int>& numbers) {
  std::vector<unsigned char> bytes;
  const auto put = [&](const auto& number) {
    const auto* begin = reinterpret_cast<const unsigned char*>(&number);
    bytes.insert(bytes.end(), begin, begin + sizeof number);
  };
  for (const int number : numbers) {
    switch (plan.type) {
      case StoredType::kUint8: put(static_cast<std::uint8_t>(number)); break;
      case StoredType::kUint16: put(static_cast<std::uint16_t>(number)); break;
      case StoredType::kInt16: put(static_cast<std::int16_t>(number)); break;
      default: put(static_cast<float>(number) / 8.0F); break;
    }
  }
  return bytes;
}

/// Writes a file in pieces of several rows; the answer is the problem, empty for none.
inline std::string WritePicture(const std::filesystem::path& file, const std::string& format, const WritePlan& plan,
                                const std::vector<unsigned char>& samples, std::vector<std::string>* notes = nullptr) {
  std::vector<std::string> own_notes;
  Status status;
  const auto encoder = GetPictures().Create(file, format, plan, notes == nullptr ? own_notes : *notes, status);
  if (!encoder) return status.GetMessage();
  constexpr int kPiece = 7;
  const std::size_t row = samples.size() / static_cast<std::size_t>(plan.size_y);
  for (int y = 0; y < plan.size_y; y += kPiece) {
    const int end = std::min(y + kPiece, plan.size_y);
    status = encoder->WriteRows(y, end, samples.data() + static_cast<std::size_t>(y) * row);
    if (status.IsError()) return status.GetMessage();
  }
  return encoder->Finish().GetMessage();
}

}  // namespace ScEng
