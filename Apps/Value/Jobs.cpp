// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/Jobs.h"

#include <system_error>
#include <vector>

std::size_t RunJobs(std::size_t count, const std::function<void()>& work,
                    const std::function<std::thread(const std::function<void()>&)>& start) {
  std::vector<std::thread> threads;
  threads.reserve(count);
  try {
    while (threads.size() + 1 < count) threads.push_back(start(work));
  } catch (const std::system_error&) {
    // The work goes on with fewer.
  }
  work();
  for (std::thread& thread : threads) thread.join();
  return threads.size() + 1;
}
