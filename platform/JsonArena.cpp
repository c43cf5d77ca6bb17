#include "platform/JsonArena.h"

#include <algorithm>
#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace kova::json {

namespace {

// Chunks grow geometrically up to this size; larger requests get a chunk of their own size.
constexpr std::size_t kMaxChunkSize = std::size_t{8} << 20;
constexpr std::size_t kHeaderSize = 2 * alignof(std::max_align_t);

#if defined(__linux__)
// Chunks of at least this size are mapped directly, aligned on it, and offered to the kernel
// for huge pages: a large document then costs a few page faults instead of thousands.
constexpr std::size_t kHugePage = std::size_t{2} << 20;

void* MapHuge(std::size_t size) {
  const std::size_t span = size + kHugePage;
  void* mapped = mmap(nullptr, span, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapped == MAP_FAILED) throw std::bad_alloc();
  const auto base = reinterpret_cast<std::uintptr_t>(mapped);
  const std::size_t head = ((base + kHugePage - 1) & ~(kHugePage - 1)) - base;
  char* start = static_cast<char*>(mapped) + head;
  const std::size_t tail = span - head - size;
  if (head != 0) munmap(mapped, head);
  if (tail != 0) munmap(start + size, tail);
  madvise(start, size, MADV_HUGEPAGE);
  return start;
}
#endif

void* AllocateChunk(std::size_t& size) {
#if defined(__linux__)
  if (size >= kHugePage) {
    size = (size + kHugePage - 1) & ~(kHugePage - 1);
    return MapHuge(size);
  }
#endif
  return ::operator new(size);
}

void FreeChunk(void* chunk, std::size_t size) noexcept {
#if defined(__linux__)
  if (size >= kHugePage) {
    munmap(chunk, size);
    return;
  }
#endif
  (void)size;
  ::operator delete(chunk);
}

}  // namespace

Arena::~Arena() {
  Chunk* chunk = head_;
  while (chunk != nullptr) {
    Chunk* next = chunk->next;
    FreeChunk(chunk, chunk->size);
    chunk = next;
  }
}

void Arena::NewChunk(std::size_t minimum) {
  std::size_t size = std::max(minimum + kHeaderSize, nextSize_);
  void* memory = AllocateChunk(size);
  Chunk* chunk = static_cast<Chunk*>(memory);
  chunk->next = head_;
  chunk->size = size;
  head_ = chunk;
  cur_ = static_cast<char*>(memory) + kHeaderSize;
  end_ = static_cast<char*>(memory) + size;
  footprint_ += size;
  nextSize_ = std::min(nextSize_ * 2, kMaxChunkSize);
}

void* Arena::AllocateSlow(std::size_t bytes, std::size_t align) {
  NewChunk(bytes + align);
  char* at = cur_ + Padding(cur_, align);
  cur_ = at + bytes;
  return at;
}

void Arena::Reserve(std::size_t bytes) {
  if (cur_ == nullptr || FreeSize() < bytes) NewChunk(bytes);
}

void Arena::SizeHint(std::size_t bytes) noexcept { nextSize_ = std::clamp(bytes, nextSize_, kMaxChunkSize); }

}  // namespace kova::json
