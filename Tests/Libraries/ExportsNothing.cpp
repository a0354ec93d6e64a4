// SPDX-License-Identifier: Apache-2.0
// A library that is not a node library.

namespace {
[[maybe_unused]] int nothing = 0;
}
