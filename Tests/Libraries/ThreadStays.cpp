// SPDX-License-Identifier: Apache-2.0
// A node library with a thread that goes on when the library is let go.

#include <chrono>
#include <thread>

#include "Tests/Libraries/ImageParts.h"

namespace {

struct StartsThread {
  StartsThread() {
    std::thread([] {
      for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
    }).detach();
  }
} starts_thread;

}  // namespace

ONE_NODE_LIBRARY(ImagePartsDescriptor<ImagePartsNode>)
