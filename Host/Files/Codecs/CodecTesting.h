// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <numeric>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Host/Files/Codecs/CodecTable.h"

// What the tests of codecs share: files, whole reads and writes, and damage.

namespace ScEng::Testing {

using Bytes = std::vector<std::uint8_t>;

inline const ImageCodec& GetCodec(const char* name) {
  std::string problem;
  const ImageCodec* codec = LoadCodec(*FindCodecRow(name), problem);
  if (codec == nullptr) throw std::runtime_error(problem);
  return *codec;
}

/// A folder for the files of one test.
class TestFolder {
 public:
  TestFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "codec-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for tests");
    folder_ = name;
  }
  ~TestFolder() { std::filesystem::remove_all(folder_); }
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;

  [[nodiscard]] std::filesystem::path operator/(const std::string& name) const { return folder_ / name; }

  [[nodiscard]] std::filesystem::path Save(const std::string& name, const Bytes& bytes) const {
    std::ofstream(folder_ / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return folder_ / name;
  }

 private:
  std::filesystem::path folder_;
};

inline Bytes LoadBytes(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// What a program prints.
inline std::string Run(const std::string& command) {
  std::FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("cannot run " + command);
  std::string text;
  char piece[4096];
  for (std::size_t size = 0; (size = std::fread(piece, 1, sizeof piece, pipe)) > 0;) text.append(piece, size);
  pclose(pipe);
  return text;
}

/// A NaN that no file of these tests holds: where it is left, nothing was written.
inline const auto kUnset = std::bit_cast<float>(0x7FABABABU);

inline bool IsUnset(float sample) { return std::bit_cast<std::uint32_t>(sample) == 0x7FABABABU; }

struct Pixels {
  Status status;
  std::vector<float> samples;
};

/// Rows of a part with all its channels.
inline Pixels ReadRows(ImageDecoder& decoder, std::size_t part_index, int row_begin, int row_end,
                       SampleScale scale = SampleScale::kStored) {
  const FilePart& part = decoder.GetDescription().parts.at(part_index);
  ReadRequest request;
  request.part = part_index;
  request.channels.resize(part.channels.size());
  std::iota(request.channels.begin(), request.channels.end(), std::size_t{0});
  request.column_end = part.size_x;
  request.row_begin = row_begin;
  request.row_end = row_end;
  request.scale = scale;
  Pixels pixels;
  const std::size_t row = static_cast<std::size_t>(part.size_x) * part.channels.size();
  pixels.samples.assign(row * static_cast<std::size_t>(row_end - row_begin), kUnset);
  try {
    pixels.status = decoder.Read(request, {pixels.samples.data(), part.channels.size(), row});
  } catch (const std::exception& exception) {
    pixels.status = Status::Error(exception.what());
  }
  return pixels;
}

inline Pixels ReadPart(ImageDecoder& decoder, std::size_t part = 0, SampleScale scale = SampleScale::kStored) {
  return ReadRows(decoder, part, 0, decoder.GetDescription().parts.at(part).size_y, scale);
}

/// The error of opening a file or of reading its first part; empty where both are fine.
inline std::string GetProblem(const ImageCodec& codec, const std::filesystem::path& file) {
  Status status;
  const auto decoder = codec.Open(file, "", status);
  if (decoder == nullptr) return status.GetMessage();
  return ReadPart(*decoder).status.GetMessage();
}

/// Writes a file of rows in the type of the plan; the error, or nothing.
inline std::string WriteFile(const ImageCodec& codec, const std::filesystem::path& file, const WritePlan& plan,
                             const void* samples, std::vector<std::string>* notes = nullptr) {
  std::vector<std::string> own_notes;
  Status status;
  const auto encoder = codec.Create(file, "", plan, notes != nullptr ? *notes : own_notes, status);
  if (encoder == nullptr) return status.GetMessage();
  status = encoder->WriteRows(0, plan.size_y, samples);
  if (!status.IsError()) status = encoder->Finish();
  return status.GetMessage();
}

/// Damages a file in one to three places: bytes are changed, cut out or put in.
inline Bytes Damage(Bytes bytes, std::mt19937& random) {
  const auto below = [&](std::size_t most) {
    return static_cast<std::size_t>(random() % std::max<std::size_t>(most, 1));
  };
  for (std::size_t i = 0, times = 1 + below(3); i < times && !bytes.empty(); ++i) {
    const auto place = bytes.begin() + static_cast<std::ptrdiff_t>(below(bytes.size()));
    const auto rest = static_cast<std::size_t>(bytes.end() - place);
    switch (below(4)) {
      case 0: *place ^= static_cast<std::uint8_t>(1U << below(8)); break;
      case 1: *place = static_cast<std::uint8_t>(random()); break;
      case 2: bytes.erase(place, place + static_cast<std::ptrdiff_t>(1 + below(rest))); break;
      default: bytes.insert(place, 1 + below(16), static_cast<std::uint8_t>(random())); break;
    }
  }
  return bytes;
}

/// Reads damaged files: each is an error of one line or samples that are all set.
inline void ExpectDamageIsHarmless(const ImageCodec& codec, const Bytes& good, int times, std::uint32_t seed) {
  constexpr std::int64_t kMostPixels = 1 << 22;
  const TestFolder folder;
  std::mt19937 random(seed);
  for (int i = 0; i < times; ++i) {
    const auto file = folder.Save("damaged", Damage(good, random));
    Status status;
    std::unique_ptr<ImageDecoder> decoder;
    try {
      decoder = codec.Open(file, "", status);
    } catch (const std::exception& exception) {
      status = Status::Error(exception.what());
    }
    if (decoder == nullptr) {
      EXPECT_FALSE(status.GetMessage().empty()) << i;
      continue;
    }
    for (std::size_t part = 0; part < decoder->GetDescription().parts.size(); ++part) {
      const FilePart& described = decoder->GetDescription().parts[part];
      if (!described.problem.empty() || std::int64_t{described.size_x} * described.size_y > kMostPixels) continue;
      const Pixels pixels = ReadPart(*decoder, part);
      if (pixels.status.IsError()) {
        EXPECT_FALSE(pixels.status.GetMessage().empty()) << i;
      } else {
        EXPECT_EQ(std::count_if(pixels.samples.begin(), pixels.samples.end(), IsUnset), 0) << i;
      }
    }
  }
}

}  // namespace ScEng::Testing
