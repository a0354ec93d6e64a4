// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Decoding/ReadAhead.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <ctime>
#include <exception>
#include <iterator>
#include <utility>

#include "Host/Files/Descriptor.h"

namespace ScEng {
namespace {

std::int64_t ToNanoseconds(const timespec& time) { return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec; }

std::int64_t GetNow() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return ToNanoseconds(now);
}

}  // namespace

ReadAhead& ReadAhead::Get() {
  static ReadAhead& ahead = *new ReadAhead;
  return ahead;
}

void ReadAhead::Expect(std::vector<std::filesystem::path> files, std::size_t most) {
  std::list<Begun> dropped;
  const std::lock_guard lock(mutex_);
  expected_.assign(std::make_move_iterator(files.begin()), std::make_move_iterator(files.end()));
  most_ = most;
  dropped.swap(begun_);
}

ReadAhead::FileState ReadAhead::ToState(const struct stat& status) {
  return {status.st_dev, status.st_ino, status.st_size, ToNanoseconds(status.st_mtim), ToNanoseconds(status.st_ctim)};
}

bool ReadAhead::Examine(int descriptor, FileState& state) {
  // Larger files take far longer to decode than to ask for.
  constexpr std::int64_t kMostBytes = std::int64_t{1} << 20;
  // Clocks of file systems are coarse: one more change within this time may leave the times as they are.
  constexpr std::int64_t kSettled = 100'000'000;
  struct stat status {};
  if (descriptor < 0 || fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return false;
  state = ToState(status);
  const std::int64_t newest = std::max(state.modified, state.changed);
  return state.bytes > 0 && state.bytes <= kMostBytes && newest < GetNow() - kSettled;
}

bool ReadAhead::TakeNext(Files::iterator& file) {
  const std::lock_guard lock(mutex_);
  if (expected_.empty() || begun_.size() + being_begun_.size() >= most_) return false;
  file = expected_.begin();
  being_begun_.splice(being_begun_.end(), expected_, file);
  return true;
}

void ReadAhead::Begin(const CodecRow& codec, std::unique_ptr<HelperProcess>& process, Begun& begun) {
  const Descriptor opened(open(begun.file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!Examine(opened.Get(), begun.state)) return;
  const std::vector<Recognition> recognitions = Recognize(begun.file, opened.Get());
  if (recognitions.empty() || recognitions.front().codec != &codec || !process->IsUsable()) return;
  begun.codec = &codec;
  begun.format = recognitions.front().format;
  auto opening = std::make_unique<FileOpening>(codec, std::move(process), begun.file, begun.format);
  if (!opening->Begin().IsError()) begun.opening = std::move(opening);
}

void ReadAhead::Continue(const CodecRow& codec, std::unique_ptr<HelperProcess>& process) noexcept {
  Files::iterator file;
  if (process == nullptr || !TakeNext(file)) return;
  std::list<Begun> added;
  try {
    Begun begun;
    begun.file = *file;
    Begin(codec, process, begun);
    if (begun.opening != nullptr) added.push_back(std::move(begun));
  } catch (const std::exception&) {
    // For want of memory. The file is then read when it is asked for.
  }
  {
    const std::lock_guard lock(mutex_);
    being_begun_.erase(file);
    if (!added.empty()) added.front().taken = taken_;
    begun_.splice(begun_.end(), added);
  }
  changed_.notify_all();
}

std::unique_ptr<FileOpening> ReadAhead::Take(const CodecRow& codec, const std::filesystem::path& file,
                                             const std::string& format) {
  // What was skipped by so many others will not be asked for any more.
  constexpr std::uint64_t kForgotten = 256;
  constexpr std::size_t kNear = 64;
  std::list<Begun> found;
  std::list<Begun> dropped;
  {
    std::unique_lock lock(mutex_);
    ++taken_;
    changed_.wait(lock, [&] { return std::ranges::find(being_begun_, file) == being_begun_.end(); });
    for (auto begun = begun_.begin(); begun != begun_.end();) {
      const auto next = std::next(begun);
      if (begun->codec == &codec && begun->file == file && begun->format == format) {
        found.splice(found.end(), begun_, begun);
      } else if (taken_ - begun->taken > kForgotten) {
        dropped.splice(dropped.end(), begun_, begun);
      }
      begun = next;
    }
    if (found.empty()) {
      const auto end = std::next(expected_.begin(), static_cast<std::ptrdiff_t>(std::min(expected_.size(), kNear)));
      const auto expected = std::find(expected_.begin(), end, file);
      if (expected != end) expected_.erase(expected);
      return nullptr;
    }
  }
  struct stat status {};
  const bool is_same = stat(file.c_str(), &status) == 0 && ToState(status) == found.front().state;
  return is_same ? std::move(found.front().opening) : nullptr;
}

}  // namespace ScEng
