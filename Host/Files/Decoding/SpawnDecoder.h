// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>

#include "Host/Files/Codecs/CodecTable.h"

namespace ScEng {

/// A process that was started to decode, and this side's ends of its two sockets. All are the caller's.
struct SpawnedDecoder {
  pid_t id = -1;
  int control = -1;
  int broker = -1;
};

/// Where the program that decodes lies, or would lie.
std::filesystem::path GetDecoderProgram();

/// Starts it for a codec; the reason where that fails. The process gets nothing of this one but the sockets: no other
/// open files, no terminal, no environment. From any thread.
std::string SpawnDecoder(const CodecRow& codec, SpawnedDecoder& spawned);

}  // namespace ScEng
