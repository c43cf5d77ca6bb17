#include "platform/JsonArena.h"

#include <algorithm>
#include <new>

namespace kova::json {

namespace {

// Chunks grow geometrically up to this size; larger requests get a chunk of their own size.
constexpr std::size_t kMaxChunkSize = std::size_t{8} << 20;
constexpr std::size_t kHeaderSize = 2 * alignof(std::max_align_t);

}  // namespace

Arena::~Arena() {
  Chunk* chunk = head_;
  while (chunk != nullptr) {
    Chunk* next = chunk->next;
    ::operator delete(static_cast<void*>(chunk));
    chunk = next;
  }
}

void Arena::NewChunk(std::size_t minimum) {
  const std::size_t size = std::max(minimum + kHeaderSize, nextSize_);
  void* memory = ::operator new(size);
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
  const std::uintptr_t at = (reinterpret_cast<std::uintptr_t>(cur_) + (align - 1)) & ~(align - 1);
  cur_ = reinterpret_cast<char*>(at + bytes);
  return reinterpret_cast<void*>(at);
}

void Arena::Reserve(std::size_t bytes) {
  if (cur_ == nullptr || FreeSize() < bytes) NewChunk(bytes);
}

void Arena::SizeHint(std::size_t bytes) noexcept {
  nextSize_ = std::clamp(bytes, nextSize_, kMaxChunkSize);
}

}  // namespace kova::json
