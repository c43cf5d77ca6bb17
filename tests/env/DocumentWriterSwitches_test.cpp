// The writer under the switches read at load: roll-back version and compression.
#include <KOVAGenerator/Table.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "tests/support/TableContent.h"

namespace {

KOVAMappingTable OneReference() {
  KOVAMappingTable table;
  KOVAMappingReference reference("R1", "P1", "V2:AB", "null", false);
  table.AddReference(reference);
  return table;
}

TEST(WriterRolledBack, WritesVersionEleven) {
  KOVAMappingTable table = OneReference();
  EXPECT_EQ(KOVAMappingParser::TranslateToString(table),
            "{\"version\":11,\"References\":[{\"IsLocal\":false,\"PlexoId\":\"P1\",\"kOVAId\":\"R1\","
            "\"KOVASynchroStamp\":\"V2:AB\"}]}");
  // Changing the variable after load changes nothing.
  ASSERT_EQ(unsetenv("RollBackMappingVersion"), 0);
  EXPECT_EQ(KOVAMappingParser::TranslateToString(table).View().substr(0, 13), "{\"version\":11");
}

TEST(WriterRolledBackAndCompressed, EnvelopeCarriesVersionEleven) {
  KOVAMappingTable table = OneReference();
  const ZANUnicodeString envelope = KOVAMappingParser::TranslateToString(table);
  const std::string plain =
      "{\"version\":11,\"References\":[{\"IsLocal\":false,\"PlexoId\":\"P1\",\"kOVAId\":\"R1\","
      "\"KOVASynchroStamp\":\"V2:AB\"}]}";
  EXPECT_EQ(envelope.View().substr(0, 4 + std::to_string(plain.size()).size() + 1),
            "V11:" + std::to_string(plain.size()) + ":");
  ZANUnicodeString opened = envelope;
  ASSERT_EQ(KOVAMappingParser::TryDecompressMT(opened), S_OK);
  EXPECT_EQ(opened, ZANUnicodeString(plain));
}

TEST(WriterCompressed, WritesTheEnvelopeOfThePlainDocument) {
  KOVAMappingTable table = OneReference();
  const ZANUnicodeString envelope = KOVAMappingParser::TranslateToString(table);
  const std::string plain =
      "{\"version\":12,\"References\":[{\"IsLocal\":false,\"PlexoId\":\"P1\",\"kOVAId\":\"R1\","
      "\"KOVASynchroStamp\":\"V2:AB\"}]}";
  EXPECT_EQ(envelope.View().substr(0, 8), "V12:" + std::to_string(plain.size()) + ":");
  ZANUnicodeString opened = envelope;
  ASSERT_EQ(KOVAMappingParser::TryDecompressMT(opened), S_OK);
  EXPECT_EQ(opened, ZANUnicodeString(plain));
}

TEST(WriterCompressed, GeneratedTablesRoundTripThroughTheEnvelope) {
  int objects = 0;
  for (std::uint32_t seed = 1000; seed < 1300; ++seed) {
    kova::generator::GeneratedTable generated = kova::generator::BuildTable(kova::generator::HostileTable(seed, 8, 6));
    const ZANUnicodeString envelope = KOVAMappingParser::TranslateToString(generated.table);
    ASSERT_EQ(envelope.View().substr(0, 4), "V12:") << "seed " << seed;
    KOVAMappingTable readBack;
    ASSERT_EQ(KOVAMappingParser::TranslateToMappingTable(envelope, ZANBaseUnknown(), readBack), S_OK) << seed;
    ASSERT_EQ(kova::test::DescribeContent(readBack), kova::test::DescribeContent(generated.table)) << seed;
    objects += static_cast<int>(readBack.GetContent().size());
  }
  EXPECT_GT(objects, 1500);
}

}  // namespace
