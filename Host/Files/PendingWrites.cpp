// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/PendingWrites.h"

#include <utility>

namespace ScEng {
namespace {

thread_local PendingWrites* current = nullptr;

}  // namespace

PendingWrites::PendingWrites(std::string compression,
                             std::function<bool(const std::filesystem::path&, const std::string&)> waits)
    : compression_(std::move(compression)), waits_(std::move(waits)) {}
PendingWrites::~PendingWrites() = default;

PendingWrites::Scope::Scope(PendingWrites& writes) : before_(std::exchange(current, &writes)) {}
PendingWrites::Scope::~Scope() { current = before_; }

PendingWrites* PendingWrites::GetCurrent() { return current; }

bool PendingWrites::Take(Write write) {
  if (!waits_(write.file, write.layer)) return false;
  writes_.push_back(std::move(write));
  return true;
}

std::vector<PendingWrites::Write> PendingWrites::Release() { return std::exchange(writes_, {}); }

void PendingWrites::Tell(const WrittenFile& written) { written_.push_back(written); }

}  // namespace ScEng
