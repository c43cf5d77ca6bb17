// Heap bytes per object of a table read from a generated document, once read and once its look-up
// indexes are in use, measured with the C library's allocator statistics. Public API only, so
// that the same program measures any version of the library.
//
//   kova_bench_index_memory <shape 0|1> <objects>
// prints: shape objects read_bytes_per_object indexed_bytes_per_object
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingTable.h>

#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "BenchDocuments.h"

namespace {

std::size_t HeapInUse() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;  // small blocks, and the large ones mapped on their own
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: %s <shape 0|1> <objects>\n", argv[0]);
    return 2;
  }
  const int shapeNumber = std::atoi(argv[1]);
  const auto objects = static_cast<std::size_t>(std::strtoull(argv[2], nullptr, 10));
  const kova::bench::GeneratedDocument doc =
      kova::bench::MakeBenchDocument(kova::bench::ShapeNumbered(shapeNumber), objects);
  const ZANUnicodeString text = ZANUnicodeString::FromValidUTF8(doc.text);
  // One read first, its table dropped: what the reader keeps for the thread (the parser's buffers)
  // is then in place and not counted below.
  {
    KOVAMappingTable warm;
    if (KOVAMappingParser::TranslateToMappingTable(text, ZANBaseUnknown(), warm) != S_OK) {
      std::fprintf(stderr, "reading failed\n");
      return 1;
    }
  }
  const std::size_t before = HeapInUse();
  KOVAMappingTable table;
  if (KOVAMappingParser::TranslateToMappingTable(text, ZANBaseUnknown(), table) != S_OK) {
    std::fprintf(stderr, "reading failed\n");
    return 1;
  }
  const std::size_t read = HeapInUse();
  // Enough look-ups of both kinds that every index of the table is made.
  KOVAMappingInstance instance;
  KOVAMappingReference reference;
  for (int i = 0; i < 16; ++i) {
    table.GetInstanceFromKOVAId(ZANUnicodeString::FromValidUTF8(doc.instanceKovaIds.front()), instance);
    table.GetReferenceFromPlexoId(ZANUnicodeString::FromValidUTF8(doc.referencePlexoIds.back()), reference);
  }
  const std::size_t indexed = HeapInUse();
  const double count = static_cast<double>(doc.objects);
  std::printf("%d %zu %.1f %.1f\n", shapeNumber, doc.objects, static_cast<double>(read - before) / count,
              static_cast<double>(indexed - before) / count);
  return 0;
}
