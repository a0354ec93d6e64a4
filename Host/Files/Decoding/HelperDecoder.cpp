// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Decoding/HelperDecoder.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

#include "Host/Files/Decoding/DescriptionBytes.h"
#include "Host/Files/Decoding/FileOpening.h"
#include "Host/Files/Decoding/HelperLimits.h"
#include "Host/Files/Decoding/HelperPool.h"
#include "Host/Files/Decoding/HelperProcess.h"
#include "Host/Files/Decoding/ReadAhead.h"
#include "Host/Files/Decoding/ReadBounds.h"
#include "Host/Files/Decoding/SpawnDecoder.h"

namespace ScEng {
namespace {

// Fewer bytes than these are sent faster than memory for them is set up on both sides.
constexpr std::size_t kMostInlineBytes = std::size_t{64} << 10;
constexpr std::uint64_t kMostReplyBytes = std::uint64_t{64} << 10;

/// The bytes of a part as the file declares them, decoded and in its own types.
std::uint64_t GetDeclaredBytes(const FilePart& part) {
  std::uint64_t pixel_bytes = 0;
  for (const FileChannel& channel : part.channels) pixel_bytes += GetSize(channel.samples.type);
  const auto pixels = static_cast<std::uint64_t>(part.size_x) * static_cast<std::uint64_t>(part.size_y);
  std::uint64_t bytes = 0;
  return __builtin_mul_overflow(pixels, pixel_bytes, &bytes) ? UINT64_MAX : bytes;
}

void CopyRows(const float* from, const ReadRequest& request, const ReadTarget& target) {
  const std::size_t channels = request.channels.size();
  const auto columns = static_cast<std::size_t>(request.column_end - request.column_begin);
  const auto rows = static_cast<std::size_t>(request.row_end - request.row_begin);
  for (std::size_t row = 0; row < rows; ++row) {
    float* const to = target.samples + row * target.row_stride;
    if (target.pixel_stride == channels) {
      std::memcpy(to, from + row * columns * channels, columns * channels * sizeof(float));
      continue;
    }
    for (std::size_t column = 0; column < columns; ++column) {
      const float* const pixel = from + (row * columns + column) * channels;
      std::copy(pixel, pixel + channels, to + column * target.pixel_stride);
    }
  }
}

/// Dense rows and pixels.
HelperDecoder::SharedTarget DenseTarget(const ReadRequest& request) {
  const std::size_t channels = request.channels.size();
  return {0, channels, channels * static_cast<std::size_t>(request.column_end - request.column_begin)};
}

}  // namespace

HelperDecoder::HelperDecoder(const CodecRow& codec, std::unique_ptr<HelperProcess> process, FileDescription description,
                             std::vector<float> samples, std::uint64_t file_bytes)
    : codec_(codec),
      process_(std::move(process)),
      description_(std::move(description)),
      ahead_(std::move(samples)),
      file_bytes_(file_bytes) {}

HelperDecoder::~HelperDecoder() {
  ReadAhead::Get().Continue(codec_, process_);
  if (process_ != nullptr) GiveBack(codec_, std::move(process_));
}

bool HelperDecoder::IsConfined() const { return process_->IsConfined(); }

Status HelperDecoder::Ask(const ReadRequest& request, const SharedTarget& target, std::uint64_t memory_bytes,
                          int descriptor, std::uint64_t inline_bytes, std::vector<std::uint8_t>& samples) {
  const FilePart& part = description_.parts[request.part];
  ReadQuestion wanted;
  wanted.part = request.part;
  wanted.channels.assign(request.channels.begin(), request.channels.end());
  wanted.column_begin = request.column_begin;
  wanted.column_end = request.column_end;
  wanted.row_begin = request.row_begin;
  wanted.row_end = request.row_end;
  wanted.scale = request.scale;
  wanted.memory_bytes = memory_bytes;
  wanted.offset = target.offset;
  wanted.pixel_stride = target.pixel_stride;
  wanted.row_stride = target.row_stride;

  const HelperLimits limits = GetHelperLimits();
  HelperProcess::Question question;
  question.kind = MessageKind::kRead;
  question.body = MakeBody(wanted);
  question.descriptor = descriptor;
  question.time = limits.time;
  question.memory = GetAllowedMemory(limits, file_bytes_, GetDeclaredBytes(part)) + inline_bytes;
  question.mapped = memory_bytes + file_bytes_ + inline_bytes;
  question.most_answer_bytes = std::max<std::uint64_t>(inline_bytes, kMostReplyBytes);

  Message answer;
  const Status asked = process_->Ask(question, answer);
  if (asked.IsError()) return asked;
  if (answer.kind == MessageKind::kFailed) return Status::Error(TextOf(answer));
  if (answer.kind != MessageKind::kDone || answer.body.size() != inline_bytes) return process_->EndForNonsense();
  samples = std::move(answer.body);
  return {};
}

Status HelperDecoder::ReadInline(const ReadRequest& request, const ReadTarget& target) {
  const SharedTarget dense = DenseTarget(request);
  const std::uint64_t bytes = CountFloats(request) * sizeof(float);
  std::vector<std::uint8_t> samples;
  const Status asked = Ask(request, dense, bytes, -1, bytes, samples);
  if (asked.IsError()) return asked;
  std::vector<float> floats(samples.size() / sizeof(float));
  std::memcpy(floats.data(), samples.data(), samples.size());
  CopyRows(floats.data(), request, target);
  return {};
}

bool HelperDecoder::TakeFromAhead(const ReadRequest& request, const ReadTarget& target) const {
  if (ahead_.empty() || request.part != 0 || request.scale != SampleScale::kAuto) return false;
  const FilePart& part = description_.parts.front();
  const std::size_t pixel = part.channels.size();
  const std::size_t row = pixel * static_cast<std::size_t>(part.size_x);
  for (int y = request.row_begin; y < request.row_end; ++y) {
    float* to = target.samples + static_cast<std::size_t>(y - request.row_begin) * target.row_stride;
    const float* from = ahead_.data() + static_cast<std::size_t>(y) * row;
    for (int x = request.column_begin; x < request.column_end; ++x, to += target.pixel_stride) {
      const float* const samples = from + static_cast<std::size_t>(x) * pixel;
      for (std::size_t c = 0; c < request.channels.size(); ++c) to[c] = samples[request.channels[c]];
    }
  }
  return true;
}

Status HelperDecoder::Read(const ReadRequest& request, const ReadTarget& target) {
  const Status checked = CheckRequest(description_, request);
  if (checked.IsError()) return checked;
  if (TakeFromAhead(request, target)) return {};
  const std::size_t bytes = CountFloats(request) * sizeof(float);
  if (bytes <= kMostInlineBytes) return ReadInline(request, target);
  std::optional<SharedSamples> memory;
  try {
    memory.emplace(bytes);
  } catch (const std::bad_alloc&) {
    // The largest file that this process may write bounds shared memory, but not what is sent.
    return ReadInline(request, target);
  }
  const Status read = Read(request, *memory, DenseTarget(request));
  if (!read.IsError()) CopyRows(memory->GetSamples(), request, target);
  return read;
}

SampleBuffer HelperDecoder::ReadShared(const ReadRequest& request, std::size_t pixel_stride, Status& status) {
  status = CheckRequest(description_, request);
  if (status.IsError()) return {};
  const std::size_t row_stride = pixel_stride * static_cast<std::size_t>(request.column_end - request.column_begin);
  const std::size_t floats = row_stride * static_cast<std::size_t>(request.row_end - request.row_begin);
  std::optional<SharedSamples> memory;
  try {
    memory.emplace(floats * sizeof(float));
  } catch (const std::bad_alloc&) {
    return {};
  }
  status = Read(request, *memory, {0, pixel_stride, row_stride});
  if (status.IsError()) return {};
  const std::size_t bytes = memory->GetBytes();
  return {memory->Release(), FreeSamples{bytes, &SharedSamples::Unmap}};
}

Status HelperDecoder::Read(const ReadRequest& request, SharedSamples& memory, const SharedTarget& target) {
  const Status checked = CheckRequest(description_, request);
  if (checked.IsError()) return checked;
  if (!FitsInto(request, target.offset, target.pixel_stride, target.row_stride, memory.GetBytes() / sizeof(float))) {
    return Status::Error("the memory for its samples is too small");
  }
  std::vector<std::uint8_t> nothing;
  return Ask(request, target, memory.GetBytes(), memory.GetDescriptor(), 0, nothing);
}

HelperReport CheckHelper(const CodecRow& codec) {
  HelperReport report;
  report.program = GetDecoderProgram();
  std::unique_ptr<HelperProcess> process = HelperPool::Get().Take(codec, report.problem);
  if (process == nullptr) return report;
  report.is_confined = process->IsConfined();
  HelperPool::Get().Keep(codec, std::move(process));
  return report;
}

void EndIdleHelpers() {
  ReadAhead::Get().Expect({}, 0);
  HelperPool::Get().Clear();
}

namespace {

/// Asks a process to open a file; null where there is no process.
std::unique_ptr<FileOpening> BeginOpening(std::unique_ptr<HelperProcess> process, const CodecRow& codec,
                                          const std::filesystem::path& file, const std::string& format,
                                          Status& status) {
  if (process == nullptr) return nullptr;
  auto opening = std::make_unique<FileOpening>(codec, std::move(process), file, format);
  status = opening->Begin();
  return opening;
}

/// The path that the process is given. It cannot follow "..", since the folders on the way are closed to it.
std::filesystem::path MakeDirect(const std::filesystem::path& file) {
  std::error_code error;
  std::filesystem::path absolute = std::filesystem::absolute(file, error);
  if (std::find(absolute.begin(), absolute.end(), "..") == absolute.end()) return absolute;
  const std::filesystem::path folder = std::filesystem::canonical(absolute.parent_path(), error);
  return error ? absolute : folder / absolute.filename();
}

}  // namespace

void ExpectInHelper(std::vector<std::filesystem::path> files, std::size_t most) {
  std::transform(files.begin(), files.end(), files.begin(), MakeDirect);
  ReadAhead::Get().Expect(std::move(files), most);
}

std::unique_ptr<HelperDecoder> OpenInHelper(const CodecRow& codec, const std::filesystem::path& file,
                                            const std::string& format, Status& status) {
  const std::filesystem::path absolute = MakeDirect(file);
  std::string problem;
  std::unique_ptr<HelperDecoder> decoder;
  std::unique_ptr<FileOpening> opening = ReadAhead::Get().Take(codec, absolute, format);
  if (opening == nullptr)
    opening = BeginOpening(HelperPool::Get().Take(codec, problem), codec, absolute, format, status);
  if (opening != nullptr && !status.IsError()) decoder = opening->Finish(status);
  if (decoder == nullptr && opening != nullptr && opening->MayHaveEndedForAnEarlierFile()) {
    status = {};
    opening = BeginOpening(HelperProcess::Start(codec, problem), codec, absolute, format, status);
    if (opening != nullptr && !status.IsError()) decoder = opening->Finish(status);
  }
  if (!problem.empty()) status = Status::Error("its decoder could not be started: " + problem);
  return decoder;
}

}  // namespace ScEng
