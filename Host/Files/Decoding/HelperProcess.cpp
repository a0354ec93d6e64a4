// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Decoding/HelperProcess.h"

#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <utility>

#include "Host/Files/Decoding/DescriptionBytes.h"
#include "Host/Files/Decoding/HelperLimits.h"
#include "Host/Files/Decoding/SpawnDecoder.h"
#include "Host/Util/Cancellation.h"

namespace ScEng {
namespace {

constexpr std::size_t kMostReasonBytes = 250;
constexpr std::uint64_t kMebibyte = std::uint64_t{1} << 20;

#if defined(__SANITIZE_ADDRESS__)
// The sanitizer maps terabytes for itself.
constexpr bool kLimitsMemory = false;
#elif defined(__has_feature)
constexpr bool kLimitsMemory = !__has_feature(address_sanitizer);
#else
constexpr bool kLimitsMemory = true;
#endif

bool SetSoftLimit(pid_t process, __rlimit_resource resource, std::uint64_t value) {
  rlimit limit{};
  if (prlimit(process, resource, nullptr, &limit) != 0) return false;
  limit.rlim_cur = std::min<rlim_t>(value, limit.rlim_max);
  return prlimit(process, resource, &limit, nullptr) == 0;
}

std::string DescribeEnd(int status) {
  if (WIFEXITED(status))
    return "its decoder ended without an answer (exit code " + std::to_string(WEXITSTATUS(status)) + ")";
  const int signal = WTERMSIG(status);
  if (signal == SIGSYS) return "its decoder was stopped because it tried what reading a file never needs";
  if (signal == SIGKILL) return "its decoder was killed (signal 9), perhaps because the system ran out of memory";
  return "its decoder crashed (signal " + std::to_string(signal) + ")";
}

}  // namespace

std::unique_ptr<HelperProcess> HelperProcess::Start(const CodecRow& codec, std::string& problem) {
  std::unique_ptr<HelperProcess> process(new HelperProcess);
  problem = process->Spawn(codec);
  if (!problem.empty()) return nullptr;
  Message message;
  constexpr std::chrono::seconds kStartTime(60);
  const Event event = process->ReceiveAnswer(Clock::now() + kStartTime, kMostBodyBytes, message);
  if (event == Event::kTimeout) {
    problem = "it was not ready in time";
  } else if (event != Event::kAnswer) {
    process->AwaitEnd();
    problem = process->End();
  } else if (message.kind == MessageKind::kUnable) {
    problem =
        MakePrintable({reinterpret_cast<const char*>(message.body.data()), message.body.size()}, kMostReasonBytes);
  } else if (message.kind != MessageKind::kReady || !ParseBody(message.body, process->state_)) {
    problem = "it is of another version";
  }
  return problem.empty() ? std::move(process) : nullptr;
}

HelperProcess::~HelperProcess() { static_cast<void>(End()); }

std::string HelperProcess::Spawn(const CodecRow& codec) {
  owner_ = getpid();
  SpawnedDecoder spawned;
  const std::string problem = SpawnDecoder(codec, spawned);
  id_ = spawned.id;
  control_ = spawned.control;
  broker_socket_ = spawned.broker;
  return problem;
}

std::string HelperProcess::End() {
  const std::string nothing_known = "its decoder ended without an answer";
  // After a fork without a new program the process is another one's child.
  const pid_t id = owner_ == getpid() ? std::exchange(id_, -1) : -1;
  int status = 0;
  const bool has_ended = id > 0 && waitpid(id, &status, WNOHANG) == id;
  if (control_ >= 0) close(std::exchange(control_, -1));
  if (broker_socket_ >= 0) close(std::exchange(broker_socket_, -1));
  if (has_ended) return DescribeEnd(status);
  if (id <= 0) return nothing_known;
  kill(id, SIGKILL);
  while (waitpid(id, nullptr, 0) < 0 && errno == EINTR) {
  }
  return nothing_known;
}

void HelperProcess::AwaitEnd() const {
  constexpr int kTries = 100;
  constexpr int kMilliseconds = 10;
  for (int i = 0; i < kTries; ++i) {
    siginfo_t info{};
    const int result = waitid(P_PID, static_cast<id_t>(id_), &info, WEXITED | WNOHANG | WNOWAIT);
    if (result != 0 || info.si_pid != 0) return;
    poll(nullptr, 0, kMilliseconds);
  }
}

bool HelperProcess::IsUsable() {
  if (id_ <= 0 || owner_ != getpid()) return false;
  int status = 0;
  const pid_t ended = waitpid(id_, &status, WNOHANG);
  if (ended != 0) {
    id_ = -1;
    return false;
  }
  // An answer that nobody asked for would be taken for that to the next question.
  char byte = 0;
  return recv(control_, &byte, 1, MSG_PEEK | MSG_DONTWAIT) < 0 && errno == EAGAIN;
}

bool HelperProcess::SetLimits(const Question& question) const {
  if (!kLimitsMemory) return true;
  const HelperLimits limits = GetHelperLimits();
  return SetSoftLimit(id_, RLIMIT_AS, state_.address_bytes + limits.most_memory + question.mapped) &&
         SetSoftLimit(id_, RLIMIT_DATA, state_.data_bytes + question.memory);
}

bool HelperProcess::Tell(MessageKind kind) { return SendMessage(control_, kind, {}); }

Status HelperProcess::Ask(const Question& question, Message& answer) {
  const Status sent = Send(question);
  return sent.IsError() ? sent : Await(question, answer);
}

Status HelperProcess::Send(const Question& question) {
  if (id_ <= 0) return Status::Error("its decoder has ended");
  ++questions_;
  if (!SetLimits(question)) {
    const std::string reason = std::strerror(errno);
    return Status::Error(IsUsable() ? "the memory of its decoder cannot be limited: " + reason : End());
  }
  return Conclude(EndIfCanceled([&] { return SendQuestion(question, Clock::now() + question.time); }), question, {});
}

Status HelperProcess::Await(const Question& question, Message& answer) {
  const auto receive = [&] { return ReceiveAnswer(Clock::now() + question.time, question.most_answer_bytes, answer); };
  Event event = EndIfCanceled(receive);
  if (event == Event::kAnswer && !AnswerLateFileQuestions()) event = Event::kNonsense;
  return Conclude(event, question, answer);
}

template <class Exchange>
HelperProcess::Event HelperProcess::EndIfCanceled(const Exchange& exchange) {
  try {
    return exchange();
  } catch (const Canceled&) {
    // It would go on, and its answer would be taken for that to the next question.
    static_cast<void>(End());
    throw;
  }
}

Status HelperProcess::Conclude(Event event, const Question& question, const Message& answer) {
  const std::string by_hand = "; --in-process reads it without limits";
  if (event == Event::kAnswer && answer.kind != MessageKind::kOutOfMemory) return {};
  if (event == Event::kAnswer) {
    // What it holds by now would be missing for the next file.
    static_cast<void>(End());
    return Status::Error("it needs more memory than such a file should (limit " +
                         std::to_string(question.memory / kMebibyte) + " MiB)" + by_hand);
  }
  if (event == Event::kEnded) {
    ended_by_itself_ = true;
    AwaitEnd();
    return Status::Error(End());
  }
  if (event == Event::kNonsense) return EndForNonsense();
  static_cast<void>(End());
  if (event == Event::kTimeout) {
    const auto milliseconds = question.time.count();
    const std::string time =
        milliseconds % 1000 == 0 ? std::to_string(milliseconds / 1000) + " s" : std::to_string(milliseconds) + " ms";
    return Status::Error("decoding took longer than " + time + by_hand);
  }
  return Status::Error("its decoder answered far more than it was asked for");
}

Status HelperProcess::EndForNonsense() {
  ended_by_itself_ = true;
  static_cast<void>(End());
  return Status::Error("its decoder gave an answer that makes no sense");
}

HelperProcess::Event HelperProcess::SendQuestion(const Question& question, Clock::time_point deadline) {
  MessageHeader header;
  header.kind = question.kind;
  header.body_bytes = question.body.size();
  Bytes bytes(sizeof header);
  std::memcpy(bytes.data(), &header, sizeof header);
  bytes.insert(bytes.end(), question.body.begin(), question.body.end());
  int descriptor = question.descriptor;
  for (std::size_t sent = 0; sent < bytes.size();) {
    const ssize_t piece =
        SendWithDescriptor(control_, bytes.data() + sent, bytes.size() - sent, descriptor, MSG_DONTWAIT);
    if (piece > 0) {
      sent += static_cast<std::size_t>(piece);
      descriptor = -1;
    } else if (errno != EAGAIN && errno != EINTR) {
      return Event::kEnded;
    } else if (const Event event = WaitForControl(POLLOUT, deadline); event != Event::kAnswer) {
      return event;
    }
  }
  return Event::kAnswer;
}

HelperProcess::Event HelperProcess::ReceiveAnswer(Clock::time_point deadline, std::uint64_t most, Message& answer) {
  MessageHeader header;
  Event event = ReceiveExactly(reinterpret_cast<std::uint8_t*>(&header), sizeof header, deadline);
  if (event != Event::kAnswer) return event;
  if (header.mark != MessageHeader::kMark) return Event::kNonsense;
  if (header.body_bytes > most) return Event::kFlood;
  answer.kind = header.kind;
  answer.body.clear();
  // Memory follows what has come, not what was announced.
  constexpr std::size_t kPiece = std::size_t{1} << 20;
  while (event == Event::kAnswer && answer.body.size() < header.body_bytes) {
    const std::size_t begin = answer.body.size();
    const std::size_t size = std::min<std::size_t>(header.body_bytes - begin, std::max(kPiece, begin));
    answer.body.resize(begin + size);
    event = ReceiveExactly(answer.body.data() + begin, size, deadline);
  }
  return event;
}

HelperProcess::Event HelperProcess::ReceiveExactly(std::uint8_t* to, std::size_t size, Clock::time_point deadline) {
  while (size > 0) {
    // Without room for descriptors, the system closes what may come along.
    const ssize_t got = recv(control_, to, size, MSG_DONTWAIT);
    if (got > 0) {
      to += got;
      size -= static_cast<std::size_t>(got);
      continue;
    }
    if (got == 0 || (errno != EAGAIN && errno != EINTR)) return Event::kEnded;
    if (const Event event = WaitForControl(POLLIN, deadline); event != Event::kAnswer) return event;
  }
  return Event::kAnswer;
}

HelperProcess::Event HelperProcess::WaitForControl(short events, Clock::time_point deadline) {
  // A request to stop the evaluation, which nothing wakes this thread for, is noticed within some milliseconds.
  const long long longest = IsCancellable() ? 10 : 60'000;
  for (;;) {
    PollCancellation();
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) return Event::kTimeout;
    pollfd watched[] = {{control_, events, 0}, {broker_socket_, POLLIN, 0}};
    // One wait too many is cheaper than a deadline that no int holds.
    const int ready = poll(watched, 2, static_cast<int>(std::min<long long>(left, longest)));
    if (ready < 0 && errno != EINTR) return Event::kEnded;
    if (ready <= 0) continue;
    if ((watched[1].revents & POLLIN) != 0 && !AnswerFileQuestion()) return Event::kNonsense;
    if (watched[0].revents != 0) return Event::kAnswer;
    if ((watched[1].revents & (POLLHUP | POLLERR)) != 0 && (watched[1].revents & POLLIN) == 0) return Event::kEnded;
  }
}

bool HelperProcess::AnswerLateFileQuestions() const {
  constexpr int kMost = 100;
  for (int i = 0; i < kMost; ++i) {
    char byte = 0;
    if (recv(broker_socket_, &byte, 1, MSG_PEEK | MSG_DONTWAIT) <= 0) return true;
    if (!AnswerFileQuestion()) return false;
  }
  return false;
}

bool HelperProcess::AnswerFileQuestion() const {
  FileQuestion question;
  const ssize_t got = recv(broker_socket_, &question, sizeof question, MSG_DONTWAIT | MSG_TRUNC);
  if (got < 0) return errno == EAGAIN || errno == EINTR;
  // The other side has closed the socket, which the control socket tells as well.
  if (got == 0) return true;
  if (static_cast<std::size_t>(got) <= offsetof(FileQuestion, path) ||
      static_cast<std::size_t>(got) > sizeof question ||
      question.path[static_cast<std::size_t>(got) - offsetof(FileQuestion, path) - 1] != '\0') {
    return false;
  }
  int descriptor = -1;
  const FileAnswer answer = broker_.Answer(question, descriptor);
  const ssize_t sent = SendWithDescriptor(broker_socket_, &answer, sizeof answer, descriptor, MSG_DONTWAIT);
  if (descriptor >= 0) close(descriptor);
  return sent == sizeof answer || errno == EPIPE || errno == ECONNRESET;
}

}  // namespace ScEng
