// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/StandardOutput.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <system_error>
#include <vector>

#include "Apps/Value/StandardInput.h"
#include "Host/Files/ImageFile.h"
#include "Host/Files/ImageFormats.h"
#include "Host/Tools/NodeLibrary.h"

namespace {

using ScEng::Status;

/// The endings of the formats that can be written, without their dots.
std::vector<std::string> ListEndings() {
  std::vector<std::string> endings = ScEng::ListWrittenEndings();
  for (std::string& ending : endings) ending.erase(0, 1);
  return endings;
}

}  // namespace

std::string StandardOutput::NameIn(std::string text) const {
  const std::string path = "\"" + file_.string() + "\"";
  const std::size_t at = file_.empty() ? std::string::npos : text.find(path);
  if (at != std::string::npos) text.replace(at, path.size(), "standard output");
  return text;
}

StandardOutput::~StandardOutput() { RemoveFolder(); }

void StandardOutput::RemoveFolder() const {
  std::error_code error;
  if (!folder_.empty()) std::filesystem::remove_all(folder_, error);
}

void StandardOutput::Declare(CLI::App& app) {
  app.add_option("--format", format_, "The format of the image that goes to standard output: exr, png, tif and so on")
      ->type_name("EXT");
}

Status StandardOutput::FindImage(const std::string& written, const Reporter& reporter, std::filesystem::path& path) {
  path = ScEng::MakePath(written);
  if (written != kStandardStream) return {};
  if (!file_.empty()) return Status::Error("\"-\" is given twice; standard output takes one image");
  if (reporter.IsJson()) return Status::Error("standard output takes the image or the answer of --json, not both");
  if (format_.empty()) return Status::Error("the image for standard output needs a format, such as --format png");
  if (isatty(STDOUT_FILENO) == 1) {
    return Status::Error("standard output is a terminal, which shows no image; pipe it on, or add \"> FILE\"");
  }
  std::string ending = format_;
  ending.erase(0, ending.find_first_not_of('.'));
  const std::vector<std::string> endings = ListEndings();
  if (std::find(endings.begin(), endings.end(), ending) == endings.end()) {
    const std::string closest = ScEng::FindClosest(ending, endings);
    return Status::Error("--format " + format_ + ": no image format that can be written has this ending; " +
                         (closest.empty() ? "exr, tif, png and hdr do" : "the closest is " + closest));
  }
  const char* const named = std::getenv("TMPDIR");
  std::error_code error;
  const std::filesystem::path temporary = named != nullptr ? named : std::filesystem::temp_directory_path(error);
  std::string folder = (temporary / "value-XXXXXX").string();
  if (error || mkdtemp(folder.data()) == nullptr) {
    has_failed_ = true;
    return Status::Error("no folder for the image on its way to standard output can be made in \"" +
                         std::filesystem::path(folder).parent_path().string() + "\", which TMPDIR names: " +
                         (error ? error.message() : std::generic_category().message(errno)));
  }
  folder_ = folder;
  file_ = folder_ / ("standard output." + ending);
  path = file_;
  return {};
}

Status StandardOutput::CheckFormat() const {
  if (format_.empty() || !file_.empty()) return {};
  return Status::Error("--format " + format_ +
                       " is for an image on standard output; the ending of a file names its format");
}

Status StandardOutput::Deliver(Reporter& reporter) const {
  std::error_code error;
  if (file_.empty() || !std::filesystem::exists(file_, error)) return {};
  std::ifstream stream(file_, std::ios::binary);
  // Whoever reads may be slow, and this program may be ended meanwhile.
  RemoveFolder();
  std::vector<char> bytes(std::size_t{1} << 20U);
  while (stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size())) || stream.gcount() > 0) {
    reporter.WriteBytes({bytes.data(), static_cast<std::size_t>(stream.gcount())});
  }
  return stream.eof() ? Status() : Status::Error("the image could not be read again from \"" + file_.string() + "\"");
}
