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
  const auto begin = (reinterpret_cast<std::uintptr_t>(buffer) + kPage - 1) & ~(kPage - 1);
  const auto end = (reinterpret_cast<std::uintptr_t>(buffer) + bytes) & ~(kPage - 1);
  if (end >= begin + kHugePage) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
#else
  (void)buffer;
  (void)bytes;
#endif
}

}  // namespace kova::json
