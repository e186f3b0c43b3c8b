#ifndef TESTS_THREADS_RELEASED_TOGETHER_H
#define TESTS_THREADS_RELEASED_TOGETHER_H

#include <barrier>
#include <functional>
#include <thread>
#include <vector>

/// Runs `work` in `count` threads that begin at the same moment, and waits for all of them.
inline void RunTogether(int count, const std::function<void(int thread)>& work) {
  std::barrier start(count);
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) {
    threads.emplace_back([&, i] {
      start.arrive_and_wait();
      work(i);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

#endif
