// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <linux/filter.h>

#include <cstdint>
#include <initializer_list>
#include <vector>

namespace ScEng {

/// Writes a program of the system's filter of calls. Each rule ends the program for the calls that it is about; the
/// first rule about a call counts.
class FilterProgram {
 public:
  /// Begins with the check that calls are those of the processor that this is built for.
  FilterProgram();

  /// The call with this number has the answer `action`, one of SECCOMP_RET_*.
  void Answer(long call, std::uint32_t action);
  /// The answer depends on the lower half of an argument, after `mask`: `action` where it is one of `values`, otherwise
  /// `other`.
  void AnswerByArgument(long call, unsigned argument, std::uint32_t mask, std::initializer_list<std::uint32_t> values,
                        std::uint32_t action, std::uint32_t other);
  /// The same where the whole argument is zero.
  void AnswerIfZero(long call, unsigned argument, std::uint32_t action, std::uint32_t other);
  /// Mappings of memory that are any of `protection`, or all of `flags`, have the answer `refusal`; others are allowed.
  void AnswerMapping(std::uint32_t protection, std::uint32_t flags, std::uint32_t refusal);
  /// All other calls.
  void AnswerOthers(std::uint32_t action);

  /// Puts the filter in force for all threads of the process; false where the system does not do that.
  [[nodiscard]] bool Install();

 private:
  void Add(unsigned code, std::uint32_t operand, unsigned if_true = 0, unsigned if_false = 0);
  /// What follows, `length` instructions, is skipped for all other calls.
  void AddCallCheck(long call, std::size_t length);

  std::vector<sock_filter> program_;
};

}  // namespace ScEng
