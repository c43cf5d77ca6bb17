#include "platform/HugePages.h"

#include <cstdint>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace kova::json {

void AdviseHugePages(void* buffer, std::size_t bytes) noexcept {
#if defined(__linux__)
  constexpr std::uintptr_t kPage = 4096;
  constexpr std::uintptr_t kHugePage = std::uintptr_t{2} << 20;
  const auto address = reinterpret_cast<std::uintptr_t>(buffer);
  const auto begin = (address + kPage - 1) & ~(kPage - 1);
  const auto end = (address + bytes) & ~(kPage - 1);
  // The pages are named by buffer moved on to them, not by an address made from an integer.
  if (end >= begin + kHugePage) madvise(static_cast<char*>(buffer) + (begin - address), end - begin, MADV_HUGEPAGE);
#else
  (void)buffer;
  (void)bytes;
#endif
}

}  // namespace kova::json
