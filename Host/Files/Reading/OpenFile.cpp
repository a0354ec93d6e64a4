// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Reading/OpenFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <new>
#include <system_error>

#include "Host/Files/Codecs/CodecTable.h"
#include "Host/Files/DecodeOptions.h"
#include "Host/Files/Decoding/HelperDecoder.h"
#include "Host/Files/Descriptor.h"
#include "Host/Files/PathProblem.h"
#include "Host/Util/Cancellation.h"

namespace ScEng {
namespace {

/// Why an open file cannot be read, `error` being why it could not be opened; empty where it can.
std::string FindProblem(const Descriptor& file, ErrorNumber error) {
  if (error == ENOENT || error == ENOTDIR) return "there is no such file";
  if (error != 0) return std::generic_category().message(error);
  struct stat state {};
  if (fstat(file.Get(), &state) != 0) return std::generic_category().message(errno);
  if (S_ISDIR(state.st_mode)) return "it is a folder";
  if (!S_ISREG(state.st_mode)) return "it is not a regular file";
  return state.st_size == 0 ? "the file is empty" : "";
}

std::unique_ptr<ImageDecoder> OpenWith(const Recognition& recognition, const std::filesystem::path& file,
                                       std::string& problem) {
  try {
    Status status;
    std::unique_ptr<ImageDecoder> decoder;
    if (GetDecodePlace() == DecodePlace::kHelper) {
      decoder = OpenInHelper(*recognition.codec, file, recognition.format, status);
    } else if (const ImageCodec* codec = LoadCodec(*recognition.codec, problem)) {
      decoder = codec->Open(file, recognition.format, status);
    }
    if (status.IsError()) problem = status.GetMessage();
    return decoder;
  } catch (const Canceled&) {
    // The evaluation that reads is asked to stop.
    throw;
  } catch (const std::bad_alloc&) {
    problem = "there is not enough memory for it";
  } catch (const std::exception& thrown) {
    problem = thrown.what();
  }
  return nullptr;
}

}  // namespace

std::unique_ptr<ImageDecoder> OpenImageFile(const std::filesystem::path& file, std::string& problem) {
  problem = FindPathProblem(file);
  if (!problem.empty()) return nullptr;
  // Opening a pipe that nobody writes into would wait.
  const Descriptor descriptor(open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  problem = FindProblem(descriptor, descriptor.IsOpen() ? 0 : errno);
  if (!problem.empty()) return nullptr;
  const auto recognitions = Recognize(file, descriptor.Get());
  for (const Recognition& recognition : recognitions) {
    std::string reason;
    auto decoder = OpenWith(recognition, file, reason);
    if (decoder != nullptr) return decoder;
    if (problem.empty()) problem = reason;
  }
  if (recognitions.front().format.empty()) problem = "it is in no image format that can be read";
  return nullptr;
}

}  // namespace ScEng
