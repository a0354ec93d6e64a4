// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/WatchedFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace ScEng {

WatchedFile::WatchedFile(const std::filesystem::path& file) : IOProxy(file.string(), IOProxy::Read) {
  descriptor_ = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat about {};
  if (descriptor_ < 0 || fstat(descriptor_, &about) != 0) {
    m_mode = IOProxy::Closed;
    return;
  }
  size_ = static_cast<std::size_t>(about.st_size);
}

WatchedFile::~WatchedFile() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

void WatchedFile::close() { m_pos = 0; }

size_t WatchedFile::read(void* to, size_t size) {
  const size_t got = pread(to, size, m_pos);
  m_pos += static_cast<int64_t>(got);
  return got;
}

size_t WatchedFile::pread(void* to, size_t size, int64_t offset) {
  size_t got = 0;
  while (got < size && offset >= 0) {
    const ssize_t piece =
        ::pread(descriptor_, static_cast<char*>(to) + got, size - got, offset + static_cast<int64_t>(got));
    if (piece < 0 && errno == EINTR) continue;
    if (piece <= 0) break;
    got += static_cast<size_t>(piece);
  }
  if (got < size) past_end_ = true;
  return got;
}

CheckedFile::CheckedFile(const std::filesystem::path& file) : IOProxy(file.string(), IOProxy::Write) {
  descriptor_ = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (descriptor_ < 0) {
    m_mode = IOProxy::Closed;
    failed_ = true;
  }
}

CheckedFile::~CheckedFile() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

size_t CheckedFile::write(const void* from, size_t size) {
  const size_t put = pwrite(from, size, m_pos);
  m_pos += static_cast<int64_t>(put);
  return put;
}

size_t CheckedFile::pwrite(const void* from, size_t size, int64_t offset) {
  size_t put = 0;
  while (put < size) {
    const ssize_t piece =
        ::pwrite(descriptor_, static_cast<const char*>(from) + put, size - put, offset + static_cast<int64_t>(put));
    if (piece < 0 && errno == EINTR) continue;
    if (piece <= 0) break;
    put += static_cast<size_t>(piece);
  }
  if (put < size) failed_ = true;
  size_ = std::max(size_, static_cast<size_t>(offset) + put);
  return put;
}

bool CheckedFile::Finish() {
  if (descriptor_ >= 0 && ::close(descriptor_) != 0) failed_ = true;
  descriptor_ = -1;
  return !failed_;
}

}  // namespace ScEng
