// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/ImageFile.h"

#include <unistd.h>

#include <algorithm>
#include <system_error>

#include "Host/Files/AtomicFile.h"
#include "Host/Files/Codecs/ImageCodecs.h"
#include "Host/Files/FileErrors.h"
#include "Host/Files/ImageFormats.h"
#include "Host/Util/HostModule.h"

namespace ScEng {
namespace {

HostModule MakeModule() { return {"HostCodecs", "the module of image formats"}; }

/// The module of image formats, and why there is none where there is none.
struct LoadedCodecs {
  const ImageCodecs* codecs = nullptr;
  std::string problem;

  LoadedCodecs() {
    HostModule module = MakeModule();
    const auto get_codecs = module.Load<decltype(&GetImageCodecs)>("GetImageCodecs");
    if (get_codecs != nullptr) codecs = get_codecs();
    problem = module.GetProblem();
  }
};

const LoadedCodecs& GetCodecs() {
  static const LoadedCodecs loaded;
  return loaded;
}

}  // namespace

ImageFormatsReport FindImageFormats() {
  const HostModule module = MakeModule();
  return {module.GetFile(), module.GetProblem()};
}

const char* GetName(SampleType type) {
  switch (type) {
    case SampleType::kFloat: return "float";
    case SampleType::kHalf: return "half";
    case SampleType::kUint16: return "uint16";
    case SampleType::kUint8: break;
  }
  return "uint8";
}

std::optional<SampleType> FindSampleType(std::string_view name) {
  for (const SampleType type : {SampleType::kFloat, SampleType::kHalf, SampleType::kUint16, SampleType::kUint8}) {
    if (name == GetName(type)) return type;
  }
  return std::nullopt;
}

std::filesystem::path MakePath(const std::string& written, const std::filesystem::path& folder) {
  std::string path = written;
  std::replace(path.begin(), path.end(), '\\', '/');
  return folder / path;
}

ImagePtr ReadImageFile(const std::filesystem::path& file, ReadMode mode, Status& status,
                       std::vector<std::string>& notes) {
  std::error_code error;
  if (std::filesystem::is_directory(file, error)) {
    status = MakeReadError(file, "it is a folder");
    return nullptr;
  }
  if (!std::filesystem::exists(file, error)) {
    status = MakeReadError(file, "there is no such file");
    return nullptr;
  }
  if (GetCodecs().codecs == nullptr) {
    status = MakeReadError(file, GetCodecs().problem);
    return nullptr;
  }
  return GetCodecs().codecs->decode(file, mode, status, notes);
}

void LoadImageFormats() { static_cast<void>(GetCodecs()); }

Status WriteImageFile(const Image& image, const std::filesystem::path& file, SampleType type,
                      std::vector<std::string>& notes) {
  if (image.GetNumSamples() == 0) return MakeWriteError(file, "the image has no pixels");
  if (GetCodecs().codecs == nullptr) return MakeWriteError(file, GetCodecs().problem);
  const MemoryFile memory;
  if (!memory.IsOpen()) return MakeWriteError(file, "no memory file could be made to encode it in");
  const Status encoded = GetCodecs().codecs->encode(image, file, memory.GetPath(), type, notes);
  return encoded.IsError() ? encoded : ReplaceFile(file, memory.GetDescriptor());
}

Status WriteWholeFile(const std::filesystem::path& file, std::string_view bytes) {
  const MemoryFile memory;
  if (!memory.IsOpen()) return MakeWriteError(file, "no memory file could be made");
  while (!bytes.empty()) {
    const ssize_t put = write(memory.GetDescriptor(), bytes.data(), bytes.size());
    if (put < 0) return MakeWriteError(file, "no memory for its bytes");
    bytes.remove_prefix(static_cast<std::size_t>(put));
  }
  return ReplaceFile(file, memory.GetDescriptor());
}

}  // namespace ScEng
