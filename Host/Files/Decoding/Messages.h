// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Host/Files/Codecs/StoredSamples.h"
#include "Host/Files/Decoding/ByteArchive.h"

// What a program and the process that decodes for it say to each other.
//
// On the first socket the program asks and the process answers, one question at a time. On the second one the process
// asks for files, which it cannot open itself, while the program waits for its answer on the first.

namespace ScEng {

/// The descriptors of the sockets in the process that decodes.
inline constexpr int kControlSocket = 3;
inline constexpr int kBrokerSocket = 4;

/// Profiles and blocks of metadata travel in descriptions.
inline constexpr std::uint64_t kMostDescriptionBytes = std::uint64_t{64} << 20;
/// The largest body of a message: a description and a few samples.
inline constexpr std::uint64_t kMostBodyBytes = kMostDescriptionBytes + (std::uint64_t{1} << 20);

enum class MessageKind : std::uint32_t {
  /// The process is ready: HelperState.
  kReady = 1,
  /// The process cannot decode at all: a text.
  kUnable,
  /// Asks to open a file: OpenQuestion, with a descriptor of the file.
  kOpen,
  /// The file is open: OpenAnswer.
  kOpened,
  /// Asks for samples: ReadQuestion, with the descriptor of the memory for them.
  kRead,
  /// The samples are there.
  kDone,
  /// The file is no longer needed; has no answer.
  kClose,
  /// The file cannot be read: a text.
  kFailed,
  /// The file needs more memory than it may.
  kOutOfMemory,
};

struct MessageHeader {
  static constexpr std::uint32_t kMark = 0x56444331;

  std::uint32_t mark = kMark;
  MessageKind kind = MessageKind::kReady;
  std::uint64_t body_bytes = 0;
};

struct Message {
  MessageKind kind = MessageKind::kReady;
  Bytes body;
};

/// The process when it is ready and before it has seen a file.
struct HelperState {
  std::uint64_t address_bytes = 0;
  std::uint64_t data_bytes = 0;
  bool is_confined = false;
};

struct OpenQuestion {
  std::string file;
  std::string format;
};

struct OpenAnswer {
  /// The description.
  Bytes description;
  /// The samples of the whole first part where they are few, so that most small files take one question: all channels
  /// in their order, dense, as `SampleScale::kAuto` has them.
  std::vector<float> samples;
};

/// The most samples that come along with a description.
inline constexpr std::uint64_t kMostSamplesAhead = std::uint64_t{16} << 10;

struct ReadQuestion {
  std::uint64_t part = 0;
  std::vector<std::uint64_t> channels;
  std::int32_t column_begin = 0;
  std::int32_t column_end = 0;
  std::int32_t row_begin = 0;
  std::int32_t row_end = 0;
  SampleScale scale = SampleScale::kAuto;
  /// The memory as a whole, and where in it the samples go, in floats.
  std::uint64_t memory_bytes = 0;
  std::uint64_t offset = 0;
  std::uint64_t pixel_stride = 0;
  std::uint64_t row_stride = 0;
};

template <class Archive, Is<HelperState> Value>
void Fields(Archive& archive, Value& value) {
  archive(value.address_bytes, value.data_bytes, value.is_confined);
}

template <class Archive, Is<OpenQuestion> Value>
void Fields(Archive& archive, Value& value) {
  archive(value.file, value.format);
}

template <class Archive, Is<OpenAnswer> Value>
void Fields(Archive& archive, Value& value) {
  archive(value.description, value.samples);
}

template <class Archive, Is<ReadQuestion> Value>
void Fields(Archive& archive, Value& value) {
  archive(value.part, value.channels, value.column_begin, value.column_end, value.row_begin, value.row_end, value.scale,
          value.memory_bytes, value.offset, value.pixel_stride, value.row_stride);
}

/// The bytes of a structure, for the body of a message.
template <class Structure>
Bytes MakeBody(const Structure& structure) {
  Bytes bytes;
  ByteWriter writer(bytes);
  writer(structure);
  return bytes;
}

/// The structure in the body of a message; false where it holds another.
template <class Structure>
[[nodiscard]] bool ParseBody(const Bytes& body, Structure& structure) {
  ByteReader reader(body);
  reader(structure);
  return reader.IsDone();
}

/// What the process wants to know of a path on the second socket.
enum class FileQuestionKind : std::uint32_t {
  /// A descriptor to read from.
  kOpen = 1,
  /// The same of a folder, or nothing.
  kOpenFolder,
  kStatus,
};

struct FileQuestion {
  FileQuestionKind kind = FileQuestionKind::kOpen;
  /// Ends with a zero byte; only the part up to that is sent.
  char path[PATH_MAX] = {};
};

/// The answer; a descriptor comes along where one was asked for and there is no error.
struct FileAnswer {
  /// As in errno, 0 for none.
  std::int32_t error = 0;
  struct stat status = {};
};

/// Sends to a process, which may have ended, and waits as long as that takes. `descriptor` goes along unless it is -1.
[[nodiscard]] bool SendMessage(int socket, MessageKind kind, const Bytes& body, int descriptor = -1);

/// Waits for a message; false where the other side has ended or sends what is none. The descriptor that came along is
/// the caller's to close, -1 where there was none.
[[nodiscard]] bool ReceiveMessage(int socket, Message& message, int& descriptor);

/// Sends or receives once, with the descriptor that goes or came along, -1 for none; what `sendmsg` and `recvmsg`
/// answer. Safe in signal handlers.
ssize_t SendWithDescriptor(int socket, const void* bytes, std::size_t size, int descriptor, int flags) noexcept;
ssize_t ReceiveWithDescriptor(int socket, void* bytes, std::size_t size, int& descriptor, int flags) noexcept;

}  // namespace ScEng
