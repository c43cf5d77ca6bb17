// A plain driver for profilers (callgrind, perf): generates one document and runs one operation on
// it a given number of times, with nothing else in the process.
//
//   kova_bench_profile <read|write|decompress> <shape 0|1> <objects> [runs]
//   kova_bench_profile stamp <runs>   (the stamp benchmark's 20 attributes; needs DONOTUSE_ENABLEKSSGEN)
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingTable.h>
#include <KOVAMappingServices/KOVASynchroStampServices.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "BenchDocuments.h"
#include "StampAttributes.h"

int main(int argc, char** argv) {
  if (argc == 3 && std::strcmp(argv[1], "stamp") == 0) {
    const auto attributes = kova::bench::TwentyAttributes();
    const int runs = std::atoi(argv[2]);
    std::size_t sink = 0;
    ZANUnicodeString stamp;
    for (int i = 0; i < runs; ++i) {
      if (KOVASynchroStampServices::ComputeKOVASynchroStamp(attributes, stamp) != S_OK) return 1;
      sink += stamp.GetLengthInByte();
    }
    std::printf("%zu %s\n", sink, stamp.CastToCharPtr());
    return 0;
  }
  if (argc < 4) {
    std::fprintf(stderr, "usage: %s <read|write|decompress> <shape 0|1> <objects> [runs]\n", argv[0]);
    return 2;
  }
  const char* op = argv[1];
  const kova::bench::Shape shape = kova::bench::ShapeNumbered(std::atoll(argv[2]));
  const auto objects = static_cast<std::size_t>(std::atol(argv[3]));
  const int runs = argc > 4 ? std::atoi(argv[4]) : 1;
  const kova::bench::GeneratedDocument doc = kova::bench::MakeBenchDocument(shape, objects);
  const ZANUnicodeString text = ZANUnicodeString::FromValidUTF8(doc.text);
  std::size_t sink = 0;
  if (std::strcmp(op, "read") == 0) {
    for (int i = 0; i < runs; ++i) {
      KOVAMappingTable table;
      if (KOVAMappingParser::TranslateToMappingTable(text, ZANBaseUnknown(), table) != S_OK) return 1;
    }
  } else if (std::strcmp(op, "write") == 0) {
    KOVAMappingTable table;
    if (KOVAMappingParser::TranslateToMappingTable(text, ZANBaseUnknown(), table) != S_OK) return 1;
    for (int i = 0; i < runs; ++i) {
      sink += KOVAMappingParser::TranslateToString(table).GetLengthInByte();
    }
  } else if (std::strcmp(op, "decompress") == 0) {
    ZANUnicodeString envelope;
    if (KOVAMappingParser::CompressMTWithPrefix(text, envelope) != S_OK) return 1;
    for (int i = 0; i < runs; ++i) {
      ZANUnicodeString copy = envelope;
      if (ZANFailed(KOVAMappingParser::TryDecompressMT(copy))) return 1;
      sink += copy.GetLengthInByte();
    }
  } else {
    return 2;
  }
  std::printf("%zu\n", sink);
  return 0;
}
