// Work done by threads of their own on items given one by one, the results handed back in the order
// the items were given: the engine of audits (kova-mapping audit, kovamapping.audit). The caller of
// Next is one of the threads of work: with one thread asked for, the pool starts none and the
// caller does all the work, in order, with no hand-over between threads.
//
// At most `window` items are outstanding (given and not yet taken back), so a run over a million
// documents holds a bounded number of items and results, and no more open files than threads.
// Submit and Next are called by one consumer thread; the work function runs on the pool's threads
// and on the consumer's, and must not throw. Destroying the pool stops its threads after the items they are working on.
// A thread that cannot be started makes the constructor throw std::system_error.
#ifndef KOVA_TOOLS_KOVA_MAPPING_ORDEREDPOOL_H_
#define KOVA_TOOLS_KOVA_MAPPING_ORDEREDPOOL_H_

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace kova::tool {

template <class Item, class Result>
class OrderedPool {
 public:
  OrderedPool(std::size_t threads, std::size_t window, std::function<Result(const Item&)> work)
      : work_(std::move(work)), window_(std::max<std::size_t>(window, 1)) {
    // The caller of Next is one of the threads of work: the pool starts the others.
    const std::size_t others = std::max<std::size_t>(threads, 1) - 1;
    threads_.reserve(others);
    try {
      for (std::size_t i = 0; i < others; ++i) threads_.emplace_back([this] { Work(); });
    } catch (...) {
      // A thread the system cannot start: stop those started, and say so (std::system_error).
      Stop();
      throw;
    }
  }

  ~OrderedPool() { Stop(); }

  OrderedPool(const OrderedPool&) = delete;
  OrderedPool& operator=(const OrderedPool&) = delete;

  // Whether another item may be given now (fewer than window outstanding).
  bool HasRoom() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return slots_.size() < window_;
  }

  // Gives an item; call only when HasRoom().
  void Submit(Item item) {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      slots_.emplace_back();
      waiting_.emplace_back(given_++, std::move(item));
    }
    wake_.notify_one();
  }

  // The items given and not yet taken back.
  std::size_t Outstanding() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return slots_.size();
  }

  // The result of the oldest outstanding item; nothing when none is outstanding. While it is not
  // ready, the caller works on the items not started yet rather than wait.
  std::optional<Result> Next() {
    std::unique_lock<std::mutex> lock(mutex_);
    if (slots_.empty()) return std::nullopt;
    while (!slots_.front().has_value()) {
      if (waiting_.empty()) {
        done_.wait(lock, [this] { return slots_.front().has_value() || !waiting_.empty(); });
        continue;
      }
      std::pair<std::size_t, Item> job = std::move(waiting_.front());
      waiting_.pop_front();
      lock.unlock();
      Result result = work_(job.second);
      lock.lock();
      slots_[job.first - taken_] = std::move(result);
    }
    Result result = std::move(*slots_.front());
    slots_.pop_front();
    ++taken_;
    return result;
  }

 private:
  void Stop() {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      stop_ = true;
    }
    wake_.notify_all();
    for (std::thread& thread : threads_) thread.join();
    threads_.clear();
  }

  void Work() {
    for (;;) {
      std::pair<std::size_t, Item> job;
      {
        std::unique_lock<std::mutex> lock(mutex_);
        wake_.wait(lock, [this] { return stop_ || !waiting_.empty(); });
        if (stop_) return;
        job = std::move(waiting_.front());
        waiting_.pop_front();
      }
      Result result = work_(job.second);
      {
        std::lock_guard<std::mutex> lock(mutex_);
        slots_[job.first - taken_] = std::move(result);
      }
      done_.notify_all();
    }
  }

  std::function<Result(const Item&)> work_;
  const std::size_t window_;
  mutable std::mutex mutex_;
  std::condition_variable wake_;                      // an item is waiting, or the pool stops
  std::condition_variable done_;                      // a result is in
  std::deque<std::pair<std::size_t, Item>> waiting_;  // items not started, with their number
  std::deque<std::optional<Result>> slots_;           // outstanding items' results, oldest first
  std::size_t given_ = 0;                             // items given so far
  std::size_t taken_ = 0;                             // results taken back so far
  bool stop_ = false;
  std::vector<std::thread> threads_;  // last: started once everything else is ready
};

}  // namespace kova::tool

#endif  // KOVA_TOOLS_KOVA_MAPPING_ORDEREDPOOL_H_
