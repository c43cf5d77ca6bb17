// The tool's reading of documents: the library's failure reasons reach its messages through the
// diagnostics capture, whether or not "ActivateKOVALogger" is set, and the standard output carries
// the library's lines only when it is.
#include <KOVAMappingServices/KOVAMappingServices.h>

#include <gtest/gtest.h>

#include <string>

#include "Documents.h"
#include "tests/support/StdoutCapture.h"

namespace kova::tool {
namespace {

void ExpectTheReadersMessagesAndStatus() {
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

  DocumentRead version = ReadDocument(R"({"version": 13, "References": []})");
  EXPECT_EQ(version.ErrorText(), "error 0x80004005: UNSUPPORTED VERSION ( version > 11 )");

  DocumentRead good = ReadDocument(R"({"version": 7, "References": []})");
  EXPECT_TRUE(good.Ok());
  EXPECT_EQ(RecordedVersion(good.table), 7);
  EXPECT_EQ(RootId(good.table), std::nullopt);
}

TEST(ToolDocumentsLogOff, ReportsTheReadersMessagesAndPrintsNothing) {
  kova::test::StdoutCapture terminal;
  ExpectTheReadersMessagesAndStatus();
  EXPECT_EQ(terminal.Stop(), "");
}

TEST(ToolDocumentsLogOn, ReportsTheReadersMessagesAndPrintsTheLibrarysLines) {
  kova::test::StdoutCapture terminal;
  ExpectTheReadersMessagesAndStatus();
  const std::string printed = terminal.Stop();
  EXPECT_NE(printed.find("[PrdKOVALog][UNVALUATED MANDATORY FIELD]RefId\n"), std::string::npos);
  EXPECT_NE(printed.find("[PrdKOVALog][Input Mapping Table JSON String]"), std::string::npos);
  EXPECT_NE(printed.find("[PrdKOVALog]UNSUPPORTED VERSION ( version > 11 )\n"), std::string::npos);
}

}  // namespace
}  // namespace kova::tool
