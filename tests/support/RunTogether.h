// Races for tests of first uses and concurrent work.
#ifndef KOVA_TESTS_SUPPORT_RUNTOGETHER_H_
#define KOVA_TESTS_SUPPORT_RUNTOGETHER_H_

#include <latch>
#include <thread>
#include <vector>

namespace kova::test {

// Runs body(i) for i from 0 to threads - 1, each on its own thread, all released at once so that
// the calls race; returns when every thread has finished.
template <class Body>
void RunTogether(int threads, Body body) {
  std::latch start(threads);
  std::vector<std::thread> running;
  running.reserve(static_cast<std::size_t>(threads));
  for (int i = 0; i < threads; ++i) {
    running.emplace_back([&start, &body, i] {
      start.arrive_and_wait();
      body(i);
    });
  }
  for (std::thread& thread : running) thread.join();
}

}  // namespace kova::test

#endif  // KOVA_TESTS_SUPPORT_RUNTOGETHER_H_
