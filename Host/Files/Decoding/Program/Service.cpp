// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Decoding/Program/Service.h"

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <exception>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Host/Files/Decoding/DescriptionBytes.h"
#include "Host/Files/Decoding/Messages.h"
#include "Host/Files/Decoding/Program/FileTrap.h"
#include "Host/Files/Decoding/ReadBounds.h"

namespace ScEng {
namespace {

/// Memory of the other side, for as long as one question takes.
class MappedMemory {
 public:
  MappedMemory(int descriptor, std::size_t bytes) : bytes_(bytes) {
    void* const memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    if (memory == MAP_FAILED) throw std::bad_alloc();
    samples_ = static_cast<float*>(memory);
  }
  ~MappedMemory() { munmap(samples_, bytes_); }
  MappedMemory(const MappedMemory&) = delete;
  MappedMemory& operator=(const MappedMemory&) = delete;

  [[nodiscard]] float* GetSamples() const { return samples_; }

 private:
  float* samples_ = nullptr;
  std::size_t bytes_;
};

class Service {
 public:
  explicit Service(const ImageCodec& codec) : codec_(codec) {}

  /// Answers one question; false where the other side has gone.
  bool Serve() {
    Message question;
    int descriptor = -1;
    if (!ReceiveMessage(kControlSocket, question, descriptor)) return false;
    const bool goes_on = Answer(question, descriptor);
    // An opened file keeps its descriptor.
    if (descriptor >= 0 && question.kind != MessageKind::kOpen) close(descriptor);
    return goes_on;
  }

 private:
  bool Answer(const Message& question, int descriptor) {
    Message answer;
    try {
      switch (question.kind) {
        case MessageKind::kOpen: answer = Open(question, descriptor); break;
        case MessageKind::kRead: answer = Read(question, descriptor); break;
        case MessageKind::kClose: Close(); return true;
        default: return false;
      }
    } catch (const std::bad_alloc&) {
      answer = {MessageKind::kOutOfMemory, {}};
    } catch (const std::exception& exception) {
      answer = Fail(exception.what());
    }
    return SendMessage(kControlSocket, answer.kind, answer.body);
  }

  static Message Fail(const std::string& reason) {
    constexpr std::size_t kMostBytes = 1024;
    const std::string_view kept = std::string_view(reason).substr(0, kMostBytes);
    return {MessageKind::kFailed, Bytes(kept.begin(), kept.end())};
  }

  Message Open(const Message& message, int descriptor) {
    Close();
    OpenQuestion question;
    const bool is_good = ParseBody(message.body, question);
    HandFile(is_good ? question.file.c_str() : nullptr, descriptor);
    if (!is_good) return Fail("the question for its file is damaged");
    Status status;
    decoder_ = codec_.Open(question.file, question.format, status);
    if (decoder_ == nullptr) return Fail(status.GetMessage());
    OpenAnswer answer;
    answer.description = ToBytes(decoder_->GetDescription());
    if (answer.description.size() <= kMostDescriptionBytes) {
      answer.samples = ReadAhead();
      return {MessageKind::kOpened, MakeBody(answer)};
    }
    decoder_.reset();
    return Fail("what it says beside its samples takes more than " + std::to_string(kMostDescriptionBytes >> 20) +
                " MiB");
  }

  /// All samples of the first part where they are few; none where they cannot be read, which is told when they are
  /// asked for.
  std::vector<float> ReadAhead() {
    const FileDescription& description = decoder_->GetDescription();
    if (description.parts.empty()) return {};
    const ReadRequest request = RequestAll(description.parts.front(), 0);
    if (CheckRequest(description, request).IsError() || CountFloats(request) > kMostSamplesAhead) return {};
    std::vector<float> samples(CountFloats(request));
    const std::size_t channels = request.channels.size();
    try {
      const ReadTarget target{samples.data(), channels, channels * static_cast<std::size_t>(request.column_end)};
      if (!decoder_->Read(request, target).IsError()) return samples;
    } catch (const std::exception&) {
      return {};
    }
    return {};
  }

  Message Read(const Message& message, int descriptor) {
    ReadQuestion question;
    if (!ParseBody(message.body, question) || decoder_ == nullptr) return Fail("the question for samples is damaged");
    ReadRequest request;
    request.part = question.part;
    request.channels.assign(question.channels.begin(), question.channels.end());
    request.column_begin = question.column_begin;
    request.column_end = question.column_end;
    request.row_begin = question.row_begin;
    request.row_end = question.row_end;
    request.scale = question.scale;
    const Status checked = CheckRequest(decoder_->GetDescription(), request);
    if (checked.IsError()) return Fail(checked.GetMessage());
    if (!FitsInto(request, question.offset, question.pixel_stride, question.row_stride,
                  question.memory_bytes / sizeof(float))) {
      return Fail("the memory for its samples is too small");
    }
    return descriptor >= 0 ? ReadShared(request, question, descriptor) : ReadInline(request, question);
  }

  Message ReadShared(const ReadRequest& request, const ReadQuestion& question, int descriptor) {
    const MappedMemory memory(descriptor, question.memory_bytes);
    const ReadTarget target{memory.GetSamples() + question.offset, question.pixel_stride, question.row_stride};
    const Status read = decoder_->Read(request, target);
    if (read.IsError()) return Fail(read.GetMessage());
    return {MessageKind::kDone, {}};
  }

  Message ReadInline(const ReadRequest& request, const ReadQuestion& question) {
    Bytes samples(question.memory_bytes);
    // The memory of a new vector is aligned for every number.
    auto* const floats = reinterpret_cast<float*>(samples.data());
    const Status read = decoder_->Read(request, {floats + question.offset, question.pixel_stride, question.row_stride});
    if (read.IsError()) return Fail(read.GetMessage());
    return {MessageKind::kDone, std::move(samples)};
  }

  void Close() {
    decoder_.reset();
    HandFile(nullptr, -1);
    // What the allocator keeps of a large file would be missing from the limit of the next one.
    constexpr std::size_t kMostKept = std::size_t{64} << 20;
    if (mallinfo2().fordblks > kMostKept) malloc_trim(0);
  }

  const ImageCodec& codec_;
  std::unique_ptr<ImageDecoder> decoder_;
};

}  // namespace

void ServeFiles(const ImageCodec& codec) {
  Service service(codec);
  while (service.Serve()) {
  }
}

}  // namespace ScEng
