// Diagnostic lines and the text dumps of instances, references and tables.
#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAMappingTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <gtest/gtest.h>

#include "tests/support/StdoutCapture.h"

namespace {

using kova::test::StdoutCapture;

TEST(LoggerLine, ContextInBracketsThenTheMessage) {
  StdoutCapture capture;
  KOVALogger::log("message", "Context");
  EXPECT_EQ(capture.Stop(), "[PrdKOVALog][Context]message\n");
}

TEST(LoggerLine, EmptyContextGivesTheTagDirectlyFollowedByTheMessage) {
  StdoutCapture capture;
  KOVALogger::log("COMPRESSION FAILED", "");
  EXPECT_EQ(capture.Stop(), "[PrdKOVALog]COMPRESSION FAILED\n");
}

TEST(LoggerLine, EmptyMessageGivesTheBracketedContextAlone) {
  StdoutCapture capture;
  KOVALogger::log("", "X");
  EXPECT_EQ(capture.Stop(), "[PrdKOVALog][X]\n");
}

TEST(LoggerLine, NonAsciiTextIsWrittenAsUtf8) {
  StdoutCapture capture;
  KOVALogger::log("caf\xC3\xA9", "\xE2\x82\xAC");
  EXPECT_EQ(capture.Stop(), "[PrdKOVALog][\xE2\x82\xAC]caf\xC3\xA9\n");
}

TEST(LoggerDump, InstanceLine) {
  KOVAMappingInstance instance("17", "4A2F", "9C1E", "5", "custom data is not shown", false);
  EXPECT_EQ(KOVALogger::ToString(instance),
            "{ kOVAId: 17 PlexoId: 4A2F IsLocal: false RefId: 5 KOVASynchroStamp: V3:9C1E }\n");
}

TEST(LoggerDump, ObjectDumpShowsTheStoredVersionAndTheStrippedStamp) {
  KOVAMappingInstance fresh;
  EXPECT_EQ(KOVALogger::ToString(fresh), "{ kOVAId:  PlexoId:  IsLocal: false RefId:  KOVASynchroStamp: V3: }\n");
  KOVAMappingInstance versioned("I", "P", "V7:abc", "R", "", true);
  EXPECT_EQ(KOVALogger::ToString(versioned),
            "{ kOVAId: I PlexoId: P IsLocal: true RefId: R KOVASynchroStamp: V7:abc }\n");
  KOVAPrivateAccess::GetPrivate(versioned)->SetKSSVersion(-1);
  EXPECT_EQ(KOVALogger::ToString(versioned),
            "{ kOVAId: I PlexoId: P IsLocal: true RefId: R KOVASynchroStamp: V-1:abc }\n");
}

TEST(LoggerDump, ReferenceWithoutInstancesIsOneLine) {
  KOVAMappingReference reference("R1", "P1", "AB", "null", true);
  EXPECT_EQ(KOVALogger::ToString(reference), "{ kOVAId: R1 PlexoId: P1 IsLocal: true KOVASynchroStamp: V3:AB }\n");
}

TEST(LoggerDump, ReferenceWithInstances) {
  KOVAMappingReference reference("R1", "P1", "AB", "null", false);
  ASSERT_EQ(reference.AddInstance(KOVAMappingInstance("I1", "P2", "CD", "R1", "null", false)), S_OK);
  ASSERT_EQ(reference.AddInstance(KOVAMappingInstance("I2", "P3", "V1:EF", "R1", "null", true)), S_OK);
  EXPECT_EQ(KOVALogger::ToString(reference),
            "{ kOVAId: R1 PlexoId: P1 IsLocal: false KOVASynchroStamp: V3:AB }\n"
            "\t\tInstances:[\n"
            "\t\t{ kOVAId: I1 PlexoId: P2 IsLocal: false RefId: R1 KOVASynchroStamp: V3:CD }\n"
            "\t\t{ kOVAId: I2 PlexoId: P3 IsLocal: true RefId: R1 KOVASynchroStamp: V1:EF }\n"
            "\t\t]\n");
}

TEST(LoggerDump, EmptyTableIsFourLines) {
  KOVAMappingTable table;
  KOVAPrivateAccess::GetPrivate(table)->SetVersion(12);
  EXPECT_EQ(KOVALogger::ToString(table), "{ version:12\n\tReferences:[\n\t]\n}\n");
}

TEST(LoggerDump, TableOfOneReferenceWithOneInstanceIsEightLines) {
  KOVAMappingTable table;
  KOVAPrivateAccess::GetPrivate(table)->SetVersion(12);
  KOVAMappingReference reference("R1", "P1", "AB", "null", false);
  ASSERT_EQ(table.AddReference(reference), S_OK);
  KOVAMappingInstance instance("I1", "P2", "CD", "R1", "null", false);
  ASSERT_EQ(table.AddInstance(instance, reference), S_OK);
  const std::string dump = KOVALogger::ToString(table).ConvertToChar();
  const std::vector<std::string> lines = kova::test::SplitLines(dump);
  ASSERT_EQ(lines.size(), 8u);
  EXPECT_EQ(lines[0], "{ version:12");
  EXPECT_EQ(lines[1], "\tReferences:[");
  EXPECT_EQ(lines[2], "\t{ kOVAId: R1 PlexoId: P1 IsLocal: false KOVASynchroStamp: V3:AB }");
  EXPECT_EQ(lines[3], "\t\tInstances:[");
  EXPECT_EQ(lines[4], "\t\t{ kOVAId: I1 PlexoId: P2 IsLocal: false RefId: R1 KOVASynchroStamp: V3:CD }");
  EXPECT_EQ(lines[5], "\t\t]");
  EXPECT_EQ(lines[6], "\t]");
  EXPECT_EQ(lines[7], "}");
  EXPECT_EQ(dump.back(), '\n');
}

TEST(LoggerDump, TableShowsItsRecordedVersion) {
  KOVAMappingTable table;
  KOVAPrivateAccess::GetPrivate(table)->SetVersion(-5);
  KOVAMappingReference local("L", "PL", "x", "null", true);
  ASSERT_EQ(table.AddReference(local), S_OK);
  EXPECT_EQ(KOVALogger::ToString(table),
            "{ version:-5\n\tReferences:[\n"
            "\t{ kOVAId: L PlexoId: PL IsLocal: true KOVASynchroStamp: V3:x }\n"
            "\t]\n}\n");
}

TEST(LoggerSwitch, IsActiveIsOffWithoutTheVariable) {
  // The unit tests run with "ActivateKOVALogger" unset.
  EXPECT_FALSE(KOVALogger::IsActive());
}

}  // namespace
