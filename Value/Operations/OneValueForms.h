// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Both forms of an operation of one value, to stand in the public part of its class: the formula is an expression of
/// `value`. The two-value form ignores the second value and goes through the virtual one-value form, so that a subclass
/// which overrides that changes both. A macro and no base between, since every operation derives directly from
/// `ValueOperation`.
#define ONE_VALUE_FORMS(...)                                            \
  float Compute(float first, float) override { return Compute(first); } \
  float Compute(float value) override { return __VA_ARGS__; }
