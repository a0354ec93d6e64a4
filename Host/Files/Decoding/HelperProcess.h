// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "Host/Files/Codecs/CodecTable.h"
#include "Host/Files/Decoding/FileBroker.h"
#include "Host/Files/Decoding/Messages.h"
#include "Host/Util/Status.h"

namespace ScEng {

/// A process that decodes, of one codec. Not for two threads at once. What comes from it is not trusted.
class HelperProcess {
 public:
  using Clock = std::chrono::steady_clock;

  /// Starts one and waits until it is ready; null and the reason where that fails.
  [[nodiscard]] static std::unique_ptr<HelperProcess> Start(const CodecRow& codec, std::string& problem);
  /// Ends the process.
  ~HelperProcess();
  HelperProcess(const HelperProcess&) = delete;
  HelperProcess& operator=(const HelperProcess&) = delete;

  /// Whether it can be asked: it was started by this process, has not ended and waits for a question.
  [[nodiscard]] bool IsUsable();
  /// Whether what an earlier file left behind may be the reason why it has ended.
  [[nodiscard]] bool MayHaveEndedForAnEarlierFile() const { return ended_by_itself_ && questions_ > 1; }
  /// Ends the process because it answers what makes no sense, and says so.
  [[nodiscard]] Status EndForNonsense();
  [[nodiscard]] bool IsConfined() const { return state_.is_confined; }
  [[nodiscard]] pid_t GetId() const { return id_; }
  /// The files that it may open.
  [[nodiscard]] FileBroker& GetBroker() { return broker_; }

  /// A question and its limits.
  struct Question {
    MessageKind kind = MessageKind::kOpen;
    Bytes body;
    /// Goes along; -1 for none.
    int descriptor = -1;
    std::chrono::milliseconds time{0};
    /// The most bytes that the process may allocate for it, and the bytes of files and samples that it may map besides.
    std::uint64_t memory = 0;
    std::uint64_t mapped = 0;
    /// The largest body of an answer.
    std::uint64_t most_answer_bytes = kMostBodyBytes;
  };

  /// Asks, answers what the process asks meanwhile, and waits for its answer. On an error, which says in a clause what
  /// became of the process, it has been ended. So it has where the evaluation that asks is stopped meanwhile
  /// (`Canceled`).
  [[nodiscard]] Status Ask(const Question& question, Message& answer);
  /// The two halves of `Ask`; what the process asks meanwhile is answered, and its time runs, from the second on.
  [[nodiscard]] Status Send(const Question& question);
  [[nodiscard]] Status Await(const Question& question, Message& answer);
  /// Tells what has no answer; false where the process has ended.
  [[nodiscard]] bool Tell(MessageKind kind);

 private:
  HelperProcess() = default;

  enum class Event : std::uint8_t { kAnswer, kEnded, kTimeout, kNonsense, kFlood };

  [[nodiscard]] std::string Spawn(const CodecRow& codec);
  [[nodiscard]] bool SetLimits(const Question& question) const;
  [[nodiscard]] Event SendQuestion(const Question& question, Clock::time_point deadline);
  /// What an exchange answers; where it is stopped by `Canceled`, the process is ended.
  template <class Exchange>
  [[nodiscard]] Event EndIfCanceled(const Exchange& exchange);
  /// Ends the process where its answer did not come, and says why.
  [[nodiscard]] Status Conclude(Event event, const Question& question, const Message& answer);
  [[nodiscard]] Event ReceiveAnswer(Clock::time_point deadline, std::uint64_t most, Message& answer);
  [[nodiscard]] Event ReceiveExactly(std::uint8_t* to, std::size_t size, Clock::time_point deadline);
  [[nodiscard]] Event WaitForControl(short events, Clock::time_point deadline);
  [[nodiscard]] bool AnswerFileQuestion() const;
  /// Answers what was asked before an answer that has come; false where it makes no sense.
  [[nodiscard]] bool AnswerLateFileQuestions() const;
  /// Waits a moment for the end of a process that has closed its socket.
  void AwaitEnd() const;
  /// Ends the process; how it had ended before this, as a clause.
  std::string End();

  pid_t id_ = -1;
  pid_t owner_ = -1;
  int control_ = -1;
  int broker_socket_ = -1;
  HelperState state_;
  std::uint64_t questions_ = 0;
  bool ended_by_itself_ = false;
  FileBroker broker_;
};

}  // namespace ScEng
