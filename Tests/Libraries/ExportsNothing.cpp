// SPDX-License-Identifier: Apache-2.0
// A library that is none of nodes.

namespace {
[[maybe_unused]] int nothing = 0;
}
