// Writing mapping tables as documents of the current version (switches unset: version 12, plain).
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <gtest/gtest.h>

#include "tests/support/StdoutCapture.h"
#include "tests/support/TestData.h"

namespace {

ZANUnicodeString Write(KOVAMappingTable& table) { return KOVAMappingParser::TranslateToString(table); }

TEST(DocumentWriter, EmptyTableGivesVersionAndAnEmptyReferencesArray) {
  KOVAMappingTable table;
  EXPECT_EQ(Write(table), "{\"version\":12,\"References\":[]}");
}

TEST(DocumentWriter, VersionIsTheCurrentOneWhateverTheTableRecorded) {
  KOVAMappingTable table;
  KOVAPrivateAccess::GetPrivate(table)->SetVersion(7);
  EXPECT_EQ(Write(table), "{\"version\":12,\"References\":[]}");
}

TEST(DocumentWriter, ReferenceWithoutInstancesHasNoInstancesKey) {
  KOVAMappingTable table;
  KOVAMappingReference reference("R1", "P1", "V2:AB", "null", false);
  ASSERT_EQ(table.AddReference(reference), S_OK);
  EXPECT_EQ(Write(table),
            "{\"version\":12,\"References\":[{\"IsLocal\":false,\"PlexoId\":\"P1\",\"kOVAId\":\"R1\","
            "\"KOVASynchroStamp\":\"V2:AB\"}]}");
}

TEST(DocumentWriter, InstancesAreWrittenInTheReferenceOrderWithTheirKeysInOrder) {
  KOVAMappingTable table;
  KOVAMappingReference reference("R1", "P1", "AB", "ref data", false);
  ASSERT_EQ(table.AddReference(reference), S_OK);
  ASSERT_EQ(reference.AddInstance(KOVAMappingInstance("I2", "P3", "V0:CD", "R1", "null", true)), S_OK);
  ASSERT_EQ(reference.AddInstance(KOVAMappingInstance("I1", "P2", "V9:EF", "R9", "inst data", false)), S_OK);
  EXPECT_EQ(Write(table),
            "{\"version\":12,\"References\":[{\"CustomData\":\"ref data\",\"IsLocal\":false,\"PlexoId\":\"P1\","
            "\"kOVAId\":\"R1\",\"KOVASynchroStamp\":\"V3:AB\",\"Instances\":["
            "{\"kOVAId\":\"I2\",\"PlexoId\":\"P3\",\"IsLocal\":true,\"RefId\":\"R1\",\"KOVASynchroStamp\":\"V0:CD\"},"
            "{\"kOVAId\":\"I1\",\"PlexoId\":\"P2\",\"IsLocal\":false,\"RefId\":\"R9\",\"CustomData\":\"inst data\","
            "\"KOVASynchroStamp\":\"V9:EF\"}]}]}");
}

TEST(DocumentWriter, NullCustomDataAndEmptyStampAreLeftOutButEmptyCustomDataIsWritten) {
  KOVAMappingTable table;
  KOVAMappingReference reference("R1", "P1", "", "", true);
  ASSERT_EQ(table.AddReference(reference), S_OK);
  ASSERT_EQ(reference.AddInstance(KOVAMappingInstance("I1", "P2", "", "R1", "null", false)), S_OK);
  EXPECT_EQ(
      Write(table),
      "{\"version\":12,\"References\":[{\"CustomData\":\"\",\"IsLocal\":true,\"PlexoId\":\"P1\",\"kOVAId\":\"R1\","
      "\"Instances\":[{\"kOVAId\":\"I1\",\"PlexoId\":\"P2\",\"IsLocal\":false,\"RefId\":\"R1\"}]}]}");
}

TEST(DocumentWriter, StampVersionIsWrittenAsStoredEvenWhenOdd) {
  KOVAMappingTable table;
  KOVAMappingReference reference("R1", "P1", "AB", "null", false);
  KOVAPrivateAccess::GetPrivate(reference)->SetKSSVersion(-1);
  ASSERT_EQ(table.AddReference(reference), S_OK);
  EXPECT_EQ(Write(table),
            "{\"version\":12,\"References\":[{\"IsLocal\":false,\"PlexoId\":\"P1\",\"kOVAId\":\"R1\","
            "\"KOVASynchroStamp\":\"V-1:AB\"}]}");
}

TEST(DocumentWriter, TextIsRawUtf8WithJsonEscapes) {
  KOVAMappingTable table;
  KOVAMappingReference reference("R\xC3\xA9\"\\\n", "P\xE2\x82\xAC\t", "AB", "\x01", false);
  ASSERT_EQ(table.AddReference(reference), S_OK);
  EXPECT_EQ(Write(table),
            "{\"version\":12,\"References\":[{\"CustomData\":\"\\u0001\",\"IsLocal\":false,"
            "\"PlexoId\":\"P\xE2\x82\xAC\\t\",\"kOVAId\":\"R\xC3\xA9\\\"\\\\\\n\",\"KOVASynchroStamp\":\"V3:AB\"}]}");
}

TEST(DocumentWriter, WriterLeavesTheTableUnchanged) {
  KOVAMappingTable table;
  KOVAMappingReference reference("R1", "P1", "V2:AB", "null", false);
  ASSERT_EQ(table.AddReference(reference), S_OK);
  KOVAPrivateAccess::GetPrivate(table)->SetVersion(8);
  Write(table);
  EXPECT_EQ(KOVAPrivateAccess::GetPrivate(table)->GetVersion(), 8);
  EXPECT_EQ(table.GetReferences().size(), 1u);
  EXPECT_EQ(KOVAPrivateAccess::GetPrivate(reference)->GetKSSVersion(), 2);
}

TEST(DocumentWriter, AbsentAndNullCustomDataReadTheSameAndBothComeBackAbsent) {
  const ZANUnicodeString document(
      "{\"version\":11,\"References\":[{\"kOVAId\":\"A\",\"PlexoId\":\"PA\",\"IsLocal\":false,"
      "\"KOVASynchroStamp\":\"V1:s\"},{\"kOVAId\":\"B\",\"PlexoId\":\"PB\",\"IsLocal\":true,"
      "\"KOVASynchroStamp\":\"V1:t\",\"CustomData\":\"null\"}]}");
  KOVAMappingTable table;
  ASSERT_EQ(KOVAMappingParser::TranslateToMappingTable(document, ZANBaseUnknown(), table), S_OK);
  EXPECT_EQ(table.GetReferences()[0].GetCustomData(), "null");
  EXPECT_EQ(table.GetReferences()[1].GetCustomData(), "null");
  EXPECT_EQ(Write(table),
            "{\"version\":12,\"References\":[{\"IsLocal\":false,\"PlexoId\":\"PA\",\"kOVAId\":\"A\","
            "\"KOVASynchroStamp\":\"V1:s\"},{\"IsLocal\":true,\"PlexoId\":\"PB\",\"kOVAId\":\"B\","
            "\"KOVASynchroStamp\":\"V1:t\"}]}");
}

TEST(DocumentWriter, VersionSixDocumentIsWrittenBackWithEmptyCustomData) {
  KOVAMappingTable table;
  const ZANUnicodeString document(
      "{\"version\":6,\"References\":{\"R1\":{\"PlexoId\":\"P1\",\"KOVASynchroStamp\":\"V1:s\"}},"
      "\"RefInstances\":{\"I1\":{\"PlexoId\":\"PI\",\"RefId\":\"R1\",\"KOVASynchroStamp\":\"V2:t\"}}}");
  ASSERT_EQ(KOVAMappingParser::TranslateToMappingTable(document, ZANBaseUnknown(), table), S_OK);
  EXPECT_EQ(
      Write(table),
      "{\"version\":12,\"References\":[{\"CustomData\":\"\",\"IsLocal\":false,\"PlexoId\":\"P1\",\"kOVAId\":\"R1\","
      "\"KOVASynchroStamp\":\"V1:s\",\"Instances\":[{\"kOVAId\":\"I1\",\"PlexoId\":\"PI\",\"IsLocal\":false,"
      "\"RefId\":\"R1\",\"CustomData\":\"\",\"KOVASynchroStamp\":\"V2:t\"}]}]}");
}

TEST(DocumentReader, EnvelopedDocumentReadsLikeThePlainOne) {
  const ZANUnicodeString plain(kova::test::ReadDataFile("documents/v7_valid.json"));
  ZANUnicodeString envelope;
  ASSERT_EQ(KOVAMappingParser::CompressMTWithPrefix(plain, envelope), S_OK);
  ASSERT_EQ(envelope.View().substr(0, 4), "V12:");
  KOVAMappingTable fromPlain;
  KOVAMappingTable fromEnvelope;
  ASSERT_EQ(KOVAMappingParser::TranslateToMappingTable(plain, ZANBaseUnknown(), fromPlain), S_OK);
  ASSERT_EQ(KOVAMappingParser::TranslateToMappingTable(envelope, ZANBaseUnknown(), fromEnvelope), S_OK);
  EXPECT_EQ(Write(fromEnvelope), Write(fromPlain));
  EXPECT_EQ(fromEnvelope.GetContent().size(), 6u);
}

TEST(DocumentReader, EnvelopeThatFailsToOpenReachesTheParserWithoutItsPrefix) {
  // The "V1:23:" run inside a value is taken for an envelope prefix: the first six characters are
  // removed, the rest is no base64, and the parser then refuses what is left.
  const ZANUnicodeString text("{\"version\":12,\"References\":[],\"x\":\"V1:23:\"}");
  KOVAMappingTable table;
  EXPECT_EQ(KOVAMappingParser::TranslateToMappingTable(text, ZANBaseUnknown(), table), ZAN_E_INVALIDDATA);
  EXPECT_TRUE(table.GetReferences().empty());
}

TEST(DocumentReader, NothingIsLoggedWhenTheLogIsOff) {
  kova::test::StdoutCapture capture;
  KOVAMappingTable table;
  const HRESULT status =
      KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString("{\"version\":13}"), ZANBaseUnknown(), table);
  const std::string output = capture.Stop();
  EXPECT_EQ(status, E_FAIL);
  EXPECT_EQ(output, "");
}

}  // namespace
