// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Decoding/Program/FilterProgram.h"

#include <linux/audit.h>
#include <linux/seccomp.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstddef>

namespace ScEng {
namespace {

#if defined(__x86_64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_AARCH64;
#else
constexpr std::uint32_t kArchitecture = 0;
#endif

constexpr std::uint32_t OffsetOfArgument(unsigned argument, bool is_upper_half) {
  // Both processors have the lower half first.
  return static_cast<std::uint32_t>(offsetof(seccomp_data, args) + argument * sizeof(std::uint64_t) +
                                    (is_upper_half ? sizeof(std::uint32_t) : 0));
}

}  // namespace

FilterProgram::FilterProgram() {
  Add(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, arch));
  Add(BPF_JMP | BPF_JEQ | BPF_K, kArchitecture, 1, 0);
  Add(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS);
  Add(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr));
}

void FilterProgram::Add(unsigned code, std::uint32_t operand, unsigned if_true, unsigned if_false) {
  program_.push_back({static_cast<std::uint16_t>(code), static_cast<std::uint8_t>(if_true),
                      static_cast<std::uint8_t>(if_false), operand});
}

void FilterProgram::AddCallCheck(long call, std::size_t length) {
  Add(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call), 0, static_cast<unsigned>(length));
}

void FilterProgram::Answer(long call, std::uint32_t action) {
  AddCallCheck(call, 1);
  Add(BPF_RET | BPF_K, action);
}

void FilterProgram::AnswerByArgument(long call, unsigned argument, std::uint32_t mask,
                                     std::initializer_list<std::uint32_t> values, std::uint32_t action,
                                     std::uint32_t other) {
  AddCallCheck(call, 2 + 2 * values.size() + 1);
  Add(BPF_LD | BPF_W | BPF_ABS, OffsetOfArgument(argument, false));
  Add(BPF_ALU | BPF_AND | BPF_K, mask);
  for (const std::uint32_t value : values) {
    Add(BPF_JMP | BPF_JEQ | BPF_K, value, 0, 1);
    Add(BPF_RET | BPF_K, action);
  }
  Add(BPF_RET | BPF_K, other);
}

void FilterProgram::AnswerIfZero(long call, unsigned argument, std::uint32_t action, std::uint32_t other) {
  AddCallCheck(call, 6);
  Add(BPF_LD | BPF_W | BPF_ABS, OffsetOfArgument(argument, false));
  Add(BPF_JMP | BPF_JEQ | BPF_K, 0, 0, 3);
  Add(BPF_LD | BPF_W | BPF_ABS, OffsetOfArgument(argument, true));
  Add(BPF_JMP | BPF_JEQ | BPF_K, 0, 0, 1);
  Add(BPF_RET | BPF_K, action);
  Add(BPF_RET | BPF_K, other);
}

void FilterProgram::AnswerMapping(std::uint32_t protection, std::uint32_t flags, std::uint32_t refusal) {
  AddCallCheck(SYS_mmap, 8);
  Add(BPF_LD | BPF_W | BPF_ABS, OffsetOfArgument(2, false));
  Add(BPF_ALU | BPF_AND | BPF_K, protection);
  Add(BPF_JMP | BPF_JEQ | BPF_K, 0, 0, 4);
  Add(BPF_LD | BPF_W | BPF_ABS, OffsetOfArgument(3, false));
  Add(BPF_ALU | BPF_AND | BPF_K, flags);
  Add(BPF_JMP | BPF_JEQ | BPF_K, flags, 1, 0);
  Add(BPF_RET | BPF_K, SECCOMP_RET_ALLOW);
  Add(BPF_RET | BPF_K, refusal);
}

void FilterProgram::AnswerOthers(std::uint32_t action) { Add(BPF_RET | BPF_K, action); }

bool FilterProgram::Install() {
  if (kArchitecture == 0) return false;
  const sock_fprog program{static_cast<unsigned short>(program_.size()), program_.data()};
  return syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_TSYNC, &program) == 0;
}

}  // namespace ScEng
