#include "WriteGate.h"

#include <pybind11/pybind11.h>

#include <atomic>
#include <condition_variable>
#include <mutex>

namespace kova::python {

namespace {

std::atomic<int> gWrites{0};
std::mutex gMutex;
std::condition_variable gDone;

}  // namespace

WriteGate::Writing::Writing() { gWrites.fetch_add(1, std::memory_order_acq_rel); }

WriteGate::Writing::~Writing() {
  {
    std::lock_guard<std::mutex> lock(gMutex);
    gWrites.fetch_sub(1, std::memory_order_acq_rel);
  }
  gDone.notify_all();
}

void WriteGate::BeforeChange() {
  // A write that starts while this thread waits starts with the GIL, which this thread takes back
  // before it changes anything: look again then.
  while (gWrites.load(std::memory_order_acquire) != 0) {
    pybind11::gil_scoped_release released;
    std::unique_lock<std::mutex> lock(gMutex);
    gDone.wait(lock, [] { return gWrites.load(std::memory_order_acquire) == 0; });
  }
}

}  // namespace kova::python
