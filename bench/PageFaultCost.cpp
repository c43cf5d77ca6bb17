// What fresh memory costs on this machine: the time to touch newly mapped memory, one write per
// 4 KiB page, with the kernel's default pages and with transparent huge pages asked for. Large
// tables and documents are mostly fresh memory, so this cost bounds how their reading scales.
//
//   kova_bench_page_faults [MiB]   (256 by default)
//
// Prints one line: "fresh_4k_page_us <x> huge_page_per_4k_us <y>", each the median of five
// rounds, in microseconds per 4 KiB.
#include <sys/mman.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

constexpr std::size_t kPage = 4096;

// Microseconds per 4 KiB to map size bytes and write one byte in each 4 KiB; -1 when the memory
// cannot be mapped.
double TouchCost(std::size_t size, bool huge) {
  void* mapped = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapped == MAP_FAILED) return -1;
  auto* bytes = static_cast<volatile char*>(mapped);
  if (huge) madvise(mapped, size, MADV_HUGEPAGE);
  const auto start = std::chrono::steady_clock::now();
  for (std::size_t i = 0; i < size; i += kPage) bytes[i] = 1;
  const auto stop = std::chrono::steady_clock::now();
  munmap(mapped, size);
  return std::chrono::duration<double, std::micro>(stop - start).count() / static_cast<double>(size / kPage);
}

double Median(bool huge, std::size_t size) {
  std::vector<double> rounds;
  for (int i = 0; i < 5; ++i) rounds.push_back(TouchCost(size, huge));
  std::sort(rounds.begin(), rounds.end());
  return rounds[rounds.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  const long mib = argc > 1 ? std::atol(argv[1]) : 256;
  if (mib <= 0) {
    std::fprintf(stderr, "usage: %s [MiB]\n", argv[0]);
    return 2;
  }
  const std::size_t size = static_cast<std::size_t>(mib) << 20;
  const double small = Median(false, size);
  const double huge = Median(true, size);
  if (small < 0 || huge < 0) {
    std::fprintf(stderr, "%s: cannot map %ld MiB\n", argv[0], mib);
    return 1;
  }
  std::printf("fresh_4k_page_us %.3f huge_page_per_4k_us %.3f\n", small, huge);
  return 0;
}
