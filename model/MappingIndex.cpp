#include "model/MappingIndex.h"

namespace kova::model {

namespace {

// Relaxed: a table and its objects are used by one thread at a time, so every change that matters to
// an index happens on the thread that reads the epoch. Other threads' increments only make indexes
// look stale, which is always safe.
std::atomic<std::uint64_t> identityEpoch{1};
std::atomic<std::uint64_t> instanceVectorsEpoch{1};

}  // namespace

std::uint64_t IdentityEpoch() noexcept { return identityEpoch.load(std::memory_order_relaxed); }
void BumpIdentityEpoch() noexcept { identityEpoch.fetch_add(1, std::memory_order_relaxed); }
std::uint64_t InstanceVectorsEpoch() noexcept { return instanceVectorsEpoch.load(std::memory_order_relaxed); }
void BumpInstanceVectorsEpoch() noexcept { instanceVectorsEpoch.fetch_add(1, std::memory_order_relaxed); }

}  // namespace kova::model
