// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Saving/TemporaryFile.h"

#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>

namespace ScEng {
namespace {

/// Empty, with errno set, where the system has no random number.
std::string MakeRandomName() {
  std::uint64_t number = 0;
  if (Retry([&] { return getrandom(&number, sizeof number, 0); }) != ssize_t{sizeof number}) return {};
  char name[32];
  std::snprintf(name, sizeof name, ".value-%016llx.part", static_cast<unsigned long long>(number));
  return name;
}

}  // namespace

TemporaryFile::~TemporaryFile() {
  if (registered_ == nullptr) return;
  unlinkat(folder_, name_.c_str(), 0);
  ForgetTemporary(registered_);
}

ErrorNumber TemporaryFile::Create(mode_t mode) {
  constexpr int kMostNames = 100;
  for (int i = 0; i < kMostNames; ++i) {
    name_ = MakeRandomName();
    if (name_.empty()) return errno;
    const SignalDelay delay;
    registered_ = RegisterTemporary(folder_, name_.c_str());
    const int made =
        Retry([&] { return openat(folder_, name_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode); });
    const ErrorNumber failure = made < 0 ? errno : 0;
    file_.Reset(made);
    if (failure == 0) return 0;
    // The file of that name, if there is one, is not this one.
    Keep();
    if (failure != EEXIST) return failure;
  }
  return EEXIST;
}

ErrorNumber TemporaryFile::RenameTo(const std::string& name) {
  // A handler in another thread may have removed the file; then this waits for the end instead of telling an error.
  const SignalDelay delay;
  if (renameat(folder_, name_.c_str(), folder_, name.c_str()) != 0) return errno;
  Keep();
  return 0;
}

void TemporaryFile::Keep() {
  if (registered_ != nullptr) ForgetTemporary(registered_);
  registered_ = nullptr;
}

}  // namespace ScEng
