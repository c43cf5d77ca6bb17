// Huge pages for large buffers about to be filled (internal; also compiled into the C library).
#ifndef KOVA_PLATFORM_HUGEPAGES_H_
#define KOVA_PLATFORM_HUGEPAGES_H_

#include <cstddef>

namespace kova::json {

// Tells the system that the pages of a large buffer about to be filled may be backed by huge
// pages, which saves most of the page faults of its first use. Only whole pages inside the
// buffer are concerned; without support for it, nothing happens.
void AdviseHugePages(void* buffer, std::size_t bytes) noexcept;

}  // namespace kova::json

#endif  // KOVA_PLATFORM_HUGEPAGES_H_
