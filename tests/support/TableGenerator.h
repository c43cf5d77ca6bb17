// Seeded random mapping tables for round-trip tests.
#ifndef KOVA_TESTS_SUPPORT_TABLEGENERATOR_H_
#define KOVA_TESTS_SUPPORT_TABLEGENERATOR_H_

#include <KOVAMappingServices/KOVAMappingTable.h>

#include <cstdint>
#include <string>

namespace kova::test {

struct GeneratedTable {
  KOVAMappingTable table;
  int refusedReferences = 0;  // insertions refused by the either-id rule or the root rule
  int refusedInstances = 0;
};

// A table of up to maxReferences references (at most one not local) with up to maxInstances
// instances each. Ids mix ASCII, non-ASCII, JSON-escaped characters and U+0000 and often collide;
// stamps are never empty and carry versions 0 to 9; custom data is "null", empty or a text.
GeneratedTable GenerateTable(std::uint32_t seed, int maxReferences = 8, int maxInstances = 6);

// Every field of every object, in table order, one line each: what a round trip must keep.
std::string DescribeContent(KOVAMappingTable& table);

}  // namespace kova::test

#endif  // KOVA_TESTS_SUPPORT_TABLEGENERATOR_H_
