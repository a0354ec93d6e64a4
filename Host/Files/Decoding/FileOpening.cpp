// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Decoding/FileOpening.h"

#include <optional>
#include <system_error>
#include <utility>

#include "Host/Files/Decoding/DescriptionBytes.h"
#include "Host/Files/Decoding/HelperLimits.h"
#include "Host/Files/Decoding/HelperPool.h"
#include "Host/Files/Decoding/ReadBounds.h"
#include "Host/Files/Decoding/SpawnDecoder.h"
#include "Host/Files/Descriptor.h"

namespace ScEng {
namespace {

constexpr std::size_t kMostReasonBytes = 1024;

/// Whether samples that came with a description are those of the whole first part, or none.
bool IsWhole(const FileDescription& description, const std::vector<float>& samples) {
  return samples.empty() || (!description.parts.empty() && description.parts.front().problem.empty() &&
                             CountFloats(RequestAll(description.parts.front(), 0)) == samples.size());
}

}  // namespace

std::string TextOf(const Message& message) {
  const std::string text =
      MakePrintable({reinterpret_cast<const char*>(message.body.data()), message.body.size()}, kMostReasonBytes);
  return text.empty() ? "its decoder gave no reason" : text;
}

void GiveBack(const CodecRow& codec, std::unique_ptr<HelperProcess> process) {
  process->GetBroker().Forbid();
  if (process->IsUsable() && process->Tell(MessageKind::kClose)) HelperPool::Get().Keep(codec, std::move(process));
}

FileOpening::FileOpening(const CodecRow& codec, std::unique_ptr<HelperProcess> process, std::filesystem::path file,
                         std::string format)
    : codec_(codec), process_(std::move(process)), file_(std::move(file)), format_(std::move(format)) {}

FileOpening::~FileOpening() = default;

bool FileOpening::MayHaveEndedForAnEarlierFile() const {
  return process_ != nullptr && process_->MayHaveEndedForAnEarlierFile();
}

Status FileOpening::Begin() {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(file_, error);
  file_bytes_ = error ? 0 : size;
  process_->GetBroker().Allow(file_);

  const HelperLimits limits = GetHelperLimits();
  question_.kind = MessageKind::kOpen;
  question_.body = MakeBody(OpenQuestion{file_.string(), format_});
  const Descriptor opened(process_->GetBroker().Open(file_));
  question_.descriptor = opened.Get();
  question_.time = limits.time;
  question_.memory = GetAllowedMemory(limits, file_bytes_, 0);
  question_.mapped = file_bytes_;
  const Status sent = process_->Send(question_);
  // It is closed from here on, and its number may become another file's.
  question_.descriptor = -1;
  return sent;
}

std::unique_ptr<HelperDecoder> FileOpening::Finish(Status& status) {
  Message answer;
  status = process_->Await(question_, answer);
  if (status.IsError()) return nullptr;
  if (answer.kind == MessageKind::kFailed) {
    status = Status::Error(TextOf(answer));
    GiveBack(codec_, std::move(process_));
    return nullptr;
  }
  OpenAnswer body;
  std::optional<FileDescription> description;
  if (answer.kind == MessageKind::kOpened && ParseBody(answer.body, body))
    description = ToDescription(body.description);
  if (!description || !IsWhole(*description, body.samples)) {
    status = process_->EndForNonsense();
    return nullptr;
  }
  return std::make_unique<HelperDecoder>(codec_, std::move(process_), std::move(*description), std::move(body.samples),
                                         file_bytes_);
}

}  // namespace ScEng
