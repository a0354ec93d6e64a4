// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/Jobs.h"

#include <cstddef>
#include <latch>
#include <system_error>
#include <vector>

#include "Apps/Value/CrashStack.h"

std::size_t RunJobs(std::size_t count, const std::function<void()>& work,
                    const std::function<std::thread(const std::function<void()>&)>& start) {
  std::latch counted(1);
  std::latch may_work(1);
  std::size_t used = 0;
  std::vector<std::thread> threads;
  threads.reserve(count);
  bool refused = false;
  try {
    while (threads.size() + 1 < count) {
      threads.push_back(start([&, index = threads.size()] {
        counted.wait();
        if (index >= used) return;
        may_work.wait();
        const CrashStack stack;
        work();
      }));
    }
  } catch (const std::system_error&) {
    refused = true;
  }
  used = refused ? threads.size() / 2 : threads.size();
  counted.count_down();
  // The stack of a thread is freed when it is joined.
  for (; threads.size() > used; threads.pop_back()) threads.back().join();
  may_work.count_down();
  work();
  for (std::thread& thread : threads) thread.join();
  return used + 1;
}
