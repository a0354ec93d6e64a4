// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/PictureInput.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

#include "Host/Files/Codecs/Pictures/FormatChecks.h"
#include "Host/Files/Codecs/Pictures/TiffPages.h"

namespace ScEng {
namespace {

/// Formats whose reader asks for more than it needs, so that a question beyond the end means nothing.
bool ReadsAhead(std::string_view format) { return format == "jpeg2000" || format == "pnm" || format == "hdr"; }

OIIO::ImageSpec MakeConfig() {
  OIIO::ImageSpec config;
  config.attribute("oiio:UnassociatedAlpha", 1);
  return config;
}

}  // namespace

std::string MakeClause(std::string_view message) {
  constexpr std::size_t kMost = 160;
  std::string clause;
  for (const char c : message.substr(0, message.find('\n'))) {
    clause += std::iscntrl(static_cast<unsigned char>(c)) != 0 ? ' ' : c;
  }
  if (clause.size() > kMost) clause.resize(kMost);
  while (!clause.empty() && (clause.back() == '.' || clause.back() == ' ')) clause.pop_back();
  return clause.empty() ? "its data are damaged" : clause;
}

PictureInput::~PictureInput() { ClearError(); }

void PictureInput::ClearError() {
  if (input_ && input_->has_error()) static_cast<void>(input_->geterror());
}

std::unique_ptr<PictureInput> PictureInput::Open(const std::filesystem::path& file, const std::string& format,
                                                 std::string& problem) {
  std::unique_ptr<PictureInput> opened(new PictureInput);
  opened->input_ = OIIO::ImageInput::create(format);
  if (!opened->input_) {
    static_cast<void>(OIIO::geterror());
    problem = "the installed OpenImageIO does not read " + format;
    return nullptr;
  }
  problem = format == "tiff" ? FindTiffTypeProblem(file) : FindDamage(file, format);
  if (!problem.empty()) return nullptr;
  opened->format_ = format;
  opened->file_ = std::make_unique<WatchedFile>(file);
  // Without the file's own ending, which may belong to another format.
  if (opened->input_->supports("ioproxy") != 0 && opened->file_->opened()) {
    opened->sees_end_ = !ReadsAhead(format) && opened->input_->set_ioproxy(opened->file_.get());
  }
  OIIO::ImageSpec spec;
  if (!opened->input_->open(file.string(), spec, MakeConfig())) {
    const bool is_short = opened->sees_end_ && opened->file_->WasReadPastEnd();
    const std::string message = opened->input_->geterror();
    problem = is_short                                           ? "the file is shortened: it ends within its header"
              : message.find(file.string()) == std::string::npos ? MakeClause(message)
                                                                 : "its header is damaged";
    return nullptr;
  }
  return opened;
}

std::unique_ptr<PictureInput> PictureInput::Find(const std::filesystem::path& file, std::string& problem) {
  // In the order in which their own checks are strict; Targa takes almost anything and comes last. Films, volumes and
  // what else the library knows are not asked.
  constexpr std::array kFormats{"rla", "heif", "zfile", "iff", "targa"};
  for (const char* format : kFormats) {
    if (auto opened = Open(file, format, problem)) return opened;
  }
  problem = "its format is not known";
  return nullptr;
}

Status PictureInput::ReadRows(int begin, int end, std::vector<unsigned char>& to) {
  const OIIO::ImageSpec& spec = input_->spec();
  const int subimage = input_->current_subimage();
  bool ok = false;
  if (spec.tile_width > 0) {
    // The function for native tiles leaves gaps where the last tile of a row reaches beyond the image.
    ok = input_->read_tiles(subimage, 0, spec.x, spec.x + spec.width, spec.y + begin, spec.y + end, spec.z, spec.z + 1,
                            0, spec.nchannels, OIIO::TypeDesc::UNKNOWN, to.data());
  } else {
    ok = input_->read_native_scanlines(subimage, 0, spec.y + begin, spec.y + end, spec.z, to.data());
  }
  const bool is_short = sees_end_ && file_->WasReadPastEnd();
  if (ok && !input_->has_error() && !is_short) return {};
  return Status::Error(Explain(begin));
}

std::string PictureInput::Explain(int begin) const {
  std::string message = input_->geterror();
  std::transform(message.begin(), message.end(), message.begin(), [](unsigned char c) { return std::tolower(c); });
  const auto says = [&](const char* words) { return message.find(words) != std::string::npos; };
  const std::string rows = std::to_string(begin) + " of " + std::to_string(input_->spec().height) + " rows";
  if ((sees_end_ && file_->WasReadPastEnd()) || says("end of file") || says("eof") || says("truncated") ||
      says("read error") || says("short")) {
    return "the file is shortened: " + rows + " are there";
  }
  return "its data are damaged: " + rows + " can be read";
}

}  // namespace ScEng
