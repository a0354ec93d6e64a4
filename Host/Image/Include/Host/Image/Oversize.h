// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <new>
#include <stdexcept>

namespace ScEng {

/// What a node's state says when its result would exceed the largest image size or cannot be allocated.
inline constexpr const char* kOversizeMessage = "Output image is larger than maximum image size.";

/// What `make` returns, a pointer to something; null where that ends in one of the two exceptions with which an image
/// refuses to be made: `std::length_error` for its size, `std::bad_alloc` for its samples. Any other reaches the
/// caller.
template <class Make>
auto NullIfOversize(const Make& make) -> decltype(make()) {
  try {
    return make();
  } catch (const std::length_error&) {
    return nullptr;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace ScEng
