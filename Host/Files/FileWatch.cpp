// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/FileWatch.h"

#include <utility>

namespace ScEng {
namespace {

thread_local const FileWatch* current = nullptr;

}  // namespace

const char* GetName(FileWork work) {
  switch (work) {
    case FileWork::kOpen: return "open";
    case FileWork::kDecode: return "decode";
    case FileWork::kEncode: return "encode";
    case FileWork::kSave: break;
  }
  return "save";
}

FileWatch::FileWatch(Listener listener) : listener_(std::move(listener)), outer_(std::exchange(current, this)) {}
FileWatch::~FileWatch() { current = outer_; }

const FileWatch* FileWatch::GetCurrent() { return current; }

void FileWatch::Tell(const Event& event) const {
  for (const FileWatch* watch = this; watch != nullptr; watch = watch->outer_) watch->listener_(event);
}

}  // namespace ScEng
