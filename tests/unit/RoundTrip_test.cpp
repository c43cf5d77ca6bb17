// Tables written as documents and read back keep every field of every object, in order.
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <gtest/gtest.h>

#include "tests/support/TableGenerator.h"

namespace {

TEST(RoundTrip, HundredsOfGeneratedTablesReadBackUnchanged) {
  int objects = 0;
  int refused = 0;
  for (std::uint32_t seed = 1; seed <= 400; ++seed) {
    kova::test::GeneratedTable generated = kova::test::GenerateTable(seed);
    refused += generated.refusedReferences + generated.refusedInstances;
    const ZANUnicodeString document = KOVAMappingParser::TranslateToString(generated.table);
    KOVAMappingTable readBack;
    ASSERT_EQ(KOVAMappingParser::TranslateToMappingTable(document, ZANBaseUnknown(), readBack), S_OK)
        << "seed " << seed << ": " << document;
    EXPECT_EQ(KOVAPrivateAccess::GetPrivate(readBack)->GetVersion(), KOVAMappingPrivateTable::GetCurrentVersion());
    ASSERT_EQ(kova::test::DescribeContent(readBack), kova::test::DescribeContent(generated.table)) << "seed " << seed;
    // Written again, the document is the same text.
    EXPECT_EQ(KOVAMappingParser::TranslateToString(readBack), document) << "seed " << seed;
    objects += static_cast<int>(readBack.GetContent().size());
  }
  // The generator really exercises the identity rules and fills tables.
  EXPECT_GT(refused, 100);
  EXPECT_GT(objects, 2000);
}

}  // namespace
