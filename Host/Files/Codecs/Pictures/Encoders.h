// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Host/Files/Codecs/Codec.h"

// How each format is packed; see `ImageCodec::CheckCompression`.
namespace ScEng {

Status CheckTiffCompression(const std::string& compression);
Status CheckJpegCompression(const std::string& compression);
Status CheckWebpCompression(const std::string& compression);
Status CheckJpeg2000Compression(const std::string& compression);

}  // namespace ScEng

// The encoders of this module. Each begins a file, or answers null and an error.

namespace ScEng {

std::unique_ptr<ImageEncoder> CreateTiff(const std::filesystem::path& path, const WritePlan& plan,
                                         std::vector<std::string>& notes, Status& status);
std::unique_ptr<ImageEncoder> CreateJpeg(const std::filesystem::path& path, const WritePlan& plan,
                                         std::vector<std::string>& notes, Status& status);
std::unique_ptr<ImageEncoder> CreateWebp(const std::filesystem::path& path, const WritePlan& plan,
                                         std::vector<std::string>& notes, Status& status);
std::unique_ptr<ImageEncoder> CreateJpeg2000(const std::filesystem::path& path, const WritePlan& plan,
                                             std::vector<std::string>& notes, Status& status);
std::unique_ptr<ImageEncoder> CreatePnm(const std::filesystem::path& path, const WritePlan& plan,
                                        std::vector<std::string>& notes, Status& status);
std::unique_ptr<ImageEncoder> CreateSgi(const std::filesystem::path& path, const WritePlan& plan,
                                        std::vector<std::string>& notes, Status& status);
std::unique_ptr<ImageEncoder> CreateBmp(const std::filesystem::path& path, const WritePlan& plan,
                                        std::vector<std::string>& notes, Status& status);
/// What the library of formats writes: HDR, BMP without opacity, Targa and DPX.
std::unique_ptr<ImageEncoder> CreatePlain(const std::filesystem::path& path, const std::string& format,
                                          const WritePlan& plan, std::vector<std::string>& notes, Status& status);

}  // namespace ScEng
