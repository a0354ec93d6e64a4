// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/Files/Codecs/Codec.h"
#include "Host/Files/Codecs/Png/PngChunks.h"

namespace ScEng::Png {

/// A keyword that PNG recommends, and the name that the formats share for it.
struct KeywordRow {
  const char* keyword;
  const char* name;
};
inline constexpr KeywordRow kKeywords[] = {
    {"Title", "DocumentName"}, {"Description", "ImageDescription"}, {"Author", "Artist"},  {"Copyright", "Copyright"},
    {"Software", "Software"},  {"Creation Time", "DateTime"},       {"Comment", "Comment"}};

inline constexpr const char* kXmpKeyword = "XML:com.adobe.xmp";
inline constexpr const char* kOpaquePrefix = "png:";

/// A chunk that is carried as it is, and how long it has to be; 0 where that differs.
struct OpaqueRow {
  const char* type;
  std::size_t size;
};
inline constexpr OpaqueRow kOpaqueChunks[] = {{"gAMA", 4},  {"cHRM", 32}, {"sRGB", 1}, {"cICP", 4},
                                              {"mDCV", 24}, {"cLLI", 8},  {"sCAL", 0}};

/// Puts what the chunks say into the metadata and the orientation of the part; what is damaged is told in `notes`.
void ReadMetadata(const std::vector<Chunk>& chunks, FilePart& part, std::vector<std::string>& notes);

/// The chunks that hold the metadata of a plan, in an order that PNG allows before the pixels; what PNG cannot hold is
/// told in `notes`.
std::vector<Chunk> MakeChunks(const WritePlan& plan, std::vector<std::string>& notes);

}  // namespace ScEng::Png
