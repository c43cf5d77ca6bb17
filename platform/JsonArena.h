// Bump allocator that owns the memory of one JSON document (internal).
//
// Every node, member array, string and key of a document lives in its arena, so that a
// document of hundreds of thousands of values costs a few large allocations instead of one per
// value, and so that destroying a document is a walk over its chunks, whatever the shape of
// the tree. Memory is only given back when the arena goes away.
#ifndef KOVA_PLATFORM_JSONARENA_H_
#define KOVA_PLATFORM_JSONARENA_H_

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace kova::json {

class Arena {
 public:
  Arena() = default;
  Arena(const Arena&) = delete;
  Arena& operator=(const Arena&) = delete;
  ~Arena();

  // Room for bytes bytes aligned on align (a power of two, at most alignof(std::max_align_t)).
  // Throws std::bad_alloc when memory is exhausted.
  void* Allocate(std::size_t bytes, std::size_t align) {
    const std::size_t padding = Padding(cur_, align);
    if (cur_ != nullptr && padding + bytes <= FreeSize()) {
      char* at = cur_ + padding;
      cur_ = at + bytes;
      return at;
    }
    return AllocateSlow(bytes, align);
  }

  template <typename T>
  T* AllocateArray(std::size_t count) {
    return static_cast<T*>(Allocate(sizeof(T) * count, alignof(T)));
  }

  // A copy of text in the arena. The empty text gives a pointer to a static empty string, so
  // that text pointers are never null.
  const char* CopyText(std::string_view text) {
    if (text.empty()) return "";
    char* to = static_cast<char*>(Allocate(text.size(), 1));
    std::memcpy(to, text.data(), text.size());
    return to;
  }

  // Free space of the current chunk, and a way to take the first bytes of it after writing
  // into it directly (used to unescape strings in place).
  char* FreeBegin() const noexcept { return cur_; }
  std::size_t FreeSize() const noexcept { return static_cast<std::size_t>(end_ - cur_); }
  void Commit(std::size_t bytes) noexcept { cur_ += bytes; }
  // Makes sure the current chunk has at least bytes free bytes.
  void Reserve(std::size_t bytes);

  // Size of the next chunk to allocate, for callers that know how much they are about to store.
  void SizeHint(std::size_t bytes) noexcept;

  // Total size of the chunks held.
  std::size_t Footprint() const noexcept { return footprint_; }

 private:
  struct Chunk {
    Chunk* next;
    std::size_t size;
  };

  // The bytes to skip from p to the next address aligned on align (a power of two). Aligned
  // pointers are p moved on by it, so that they keep pointing into p's chunk.
  static std::size_t Padding(const char* p, std::size_t align) noexcept {
    return static_cast<std::size_t>((std::uintptr_t{0} - reinterpret_cast<std::uintptr_t>(p)) & (align - 1));
  }

  void* AllocateSlow(std::size_t bytes, std::size_t align);
  void NewChunk(std::size_t minimum);

  Chunk* head_ = nullptr;
  char* cur_ = nullptr;
  char* end_ = nullptr;
  std::size_t nextSize_ = 512;
  std::size_t footprint_ = 0;
};

}  // namespace kova::json

#endif  // KOVA_PLATFORM_JSONARENA_H_
