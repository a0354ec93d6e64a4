// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Exr/ExrStream.h"

#include <sys/types.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace ScEng::Exr {

bool InputStream::read(char bytes[], int count) {
  const auto wanted = static_cast<std::size_t>(std::max(count, 0));
  if (std::fread(bytes, 1, wanted, file_) != wanted) throw std::runtime_error("the file is shortened");
  const int next = std::getc(file_);
  if (next == EOF) return false;
  std::ungetc(next, file_);
  return true;
}

std::uint64_t InputStream::tellg() { return static_cast<std::uint64_t>(ftello(file_)); }

void InputStream::seekg(std::uint64_t position) {
  if (fseeko(file_, static_cast<off_t>(position), SEEK_SET) != 0) {
    throw std::system_error(errno, std::generic_category());
  }
}

void InputStream::clear() { std::clearerr(file_); }

OutputStream::OutputStream(const std::filesystem::path& file) : OStream(""), file_(std::fopen(file.c_str(), "wbe")) {
  Check(file_ != nullptr);
}

void OutputStream::Check(bool is_fine) {
  if (!is_fine && error_ == 0) error_ = errno;
  if (error_ != 0) throw std::system_error(error_, std::generic_category());
}

void OutputStream::write(const char bytes[], int count) {
  const auto wanted = static_cast<std::size_t>(std::max(count, 0));
  Check(error_ == 0 && std::fwrite(bytes, 1, wanted, file_.get()) == wanted);
  position_ += wanted;
}

std::uint64_t OutputStream::tellp() { return position_; }

void OutputStream::seekp(std::uint64_t position) {
  Check(error_ == 0 && fseeko(file_.get(), static_cast<off_t>(position), SEEK_SET) == 0);
  position_ = position;
}

Status OutputStream::GetStatus() const {
  return error_ == 0 ? Status() : Status::Error(std::generic_category().message(error_));
}

Status OutputStream::Close() {
  if (file_ != nullptr && std::fclose(file_.release()) != 0 && error_ == 0) error_ = errno;
  return GetStatus();
}

bool MemoryInput::read(char to[], int count) {
  const auto wanted = static_cast<std::size_t>(std::max(count, 0));
  if (position_ > bytes_.size() || wanted > bytes_.size() - position_) throw std::runtime_error("a value is too short");
  std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(position_), wanted, to);
  position_ += wanted;
  return position_ < bytes_.size();
}

}  // namespace ScEng::Exr
