// Capture of the library's diagnostic lines, with "ActivateKOVALogger" set for the process.
#include <KOVAMappingServices/KOVAMappingServices.h>

#include <gtest/gtest.h>

#include <iostream>
#include <stdexcept>
#include <string>

#include "Documents.h"
#include "LibraryLog.h"
#include "tests/support/StdoutCapture.h"

namespace kova::tool {
namespace {

std::vector<std::pair<std::string, std::string>> Pairs(const std::vector<LogEntry>& entries) {
  std::vector<std::pair<std::string, std::string>> pairs;
  for (const LogEntry& entry : entries) pairs.emplace_back(entry.context, entry.message);
  return pairs;
}

TEST(ToolLibraryLog, KeepsEachLineWholeAndLeavesOutBulkyText) {
  ASSERT_TRUE(KOVALogger::IsActive());
  kova::test::StdoutCapture terminal;
  std::vector<LogEntry> entries;
  {
    LibraryLogCapture capture(false);
    KOVALogger::log("KOVA JSON EMPTY OR INVALID", "");
    // A message with its own lines, one of them looking like a line of the log.
    KOVALogger::log("first\n[PrdKOVALog]second", "KOVASynchroStampServices");
    KOVALogger::log("{\n    \"version\": 12\n}", "Input Mapping Table JSON String");
    KOVALogger::log("DECOMPRESSED STRING:", "");
    KOVALogger::log("[PrdKOVALog][UNVALUATED MANDATORY FIELD]not a line", "");
    KOVALogger::log("IsLocal", "UNVALUATED MANDATORY FIELD");
    KOVALogger::log("{ version:12\n}\n", "MappingTable at the end of parsing");
    KOVALogger::log("", "KOVASynchroStampServices");
    entries = capture.Entries();
  }
  EXPECT_EQ(terminal.Stop(), "");
  EXPECT_EQ(Pairs(entries), (std::vector<std::pair<std::string, std::string>>{
                                {"", "KOVA JSON EMPTY OR INVALID"},
                                {"KOVASynchroStampServices", "first\n[PrdKOVALog]second"},
                                {"", "DECOMPRESSED STRING:"},
                                {"UNVALUATED MANDATORY FIELD", "IsLocal"},
                                {"KOVASynchroStampServices", ""},
                            }));
}

TEST(ToolLibraryLog, GivesFailureMessagesInReadableForm) {
  LibraryLogCapture capture(false);
  KOVALogger::log("UNCOMPRESSED SIZE IS: ", "");
  KOVALogger::log("IS: ", "");
  KOVALogger::log("DECOMPRESSION", "");
  KOVALogger::log("ZANZ_E_BADDATA", "");
  KOVALogger::log("kOVAId", "UNVALUATED MANDATORY FIELD");
  KOVALogger::log("Entering ComputeKOVASynchroStamp from Map", "KOVASynchroStampServices");
  EXPECT_EQ(capture.FailureMessages(),
            (std::vector<std::string>{"DECOMPRESSION", "ZANZ_E_BADDATA", "UNVALUATED MANDATORY FIELD kOVAId"}));
  EXPECT_EQ(capture.LastMessage("KOVASynchroStampServices"), "Entering ComputeKOVASynchroStamp from Map");
  EXPECT_EQ(capture.LastMessage("elsewhere"), std::nullopt);
}

TEST(ToolLibraryLog, PassesTheLinesOnWhenAskedTo) {
  kova::test::StdoutCapture terminal;
  {
    LibraryLogCapture capture(true);
    KOVALogger::log("two\nlines", "CTX");
    EXPECT_EQ(capture.LastMessage("CTX"), "two\nlines");
  }
  EXPECT_EQ(terminal.Stop(), "[PrdKOVALog][CTX]two\nlines\n");
}

TEST(ToolLibraryLog, GivesStandardOutputBackAlsoAfterAnException) {
  std::streambuf* const before = std::cout.rdbuf();
  try {
    LibraryLogCapture capture(false);
    EXPECT_NE(std::cout.rdbuf(), before);
    throw std::runtime_error("stop");
  } catch (const std::runtime_error&) {
  }
  EXPECT_EQ(std::cout.rdbuf(), before);
}

TEST(ToolLibraryLog, ReportsTheReadersMessagesAndStatus) {
  kova::test::StdoutCapture terminal;
  DocumentRead missing = ReadDocument(
      R"({"version": 11, "References": [{"kOVAId": "R1", "PlexoId": "P1", "IsLocal": false, "KOVASynchroStamp": "V2:AB",
          "Instances": [{"kOVAId": "I1", "PlexoId": "P2"}]}]})");
  EXPECT_FALSE(missing.Ok());
  EXPECT_EQ(missing.ErrorText(),
            "error 0x80004005: UNVALUATED MANDATORY FIELD IsLocal; UNVALUATED MANDATORY FIELD KOVASynchroStamp; "
            "UNVALUATED MANDATORY FIELD RefId");
  EXPECT_TRUE(missing.table.GetReferences().empty());

  DocumentRead malformed = ReadDocument(R"({"version": 12, "References": [)");
  EXPECT_EQ(malformed.ErrorText(), "error 0x8007000D: invalid data (malformed JSON or base64)");

  DocumentRead huge = ReadDocument("V12:3000000000:eJwDAAAAAAE=");
  EXPECT_EQ(huge.ErrorText(), "error: the envelope's size field is out of range (above 2147483647)");

  DocumentRead good = ReadDocument(R"({"version": 7, "References": []})");
  EXPECT_TRUE(good.Ok());
  EXPECT_EQ(RecordedVersion(good.table), 7);
  EXPECT_EQ(RootId(good.table), std::nullopt);
  EXPECT_EQ(terminal.Stop(), "");
}

}  // namespace
}  // namespace kova::tool
