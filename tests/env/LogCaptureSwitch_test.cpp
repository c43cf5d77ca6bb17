// Captures while "ActivateKOVALogger" is set (and stamp computation allowed): every line still
// reaches the standard output, and a capture that wants everything receives exactly the lines
// printed, in the same order.
#include <KOVAMappingServices/KOVALogCapture.h>
#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingTable.h>
#include <KOVAMappingServices/KOVASynchroStampServices.h>
#include <KOVAMappingServices/ZANKnwBuilder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "tests/support/StdoutCapture.h"

namespace {

using ::testing::ElementsAre;
using Wants = KOVALogCapture::Wants;

HRESULT Read(const std::string& text, KOVAMappingTable& table) {
  return KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString(text), ZANBaseUnknown(), table);
}

// The lines as KOVALogger prints them.
std::string Printed(const KOVALogCapture& capture) {
  std::string text;
  for (const KOVALogLine& line : capture.Lines()) {
    text += "[PrdKOVALog]";
    if (!line.context.empty()) text += "[" + line.context + "]";
    text += line.message + "\n";
  }
  return text;
}

// Reading good, broken and enveloped documents, writing, packing and computing a stamp: every
// kind of line the library emits.
void EveryKindOfLine() {
  const std::string good =
      R"({"version": 12, "References": [{"kOVAId": "R1", "PlexoId": "P1", "IsLocal": false,)"
      R"( "KOVASynchroStamp": "V2:AB", "Instances": [{"kOVAId": "I1", "PlexoId": "P2", "RefId": "R1",)"
      R"( "IsLocal": true, "KOVASynchroStamp": "CD"}]}]})";
  KOVAMappingTable table;
  EXPECT_EQ(Read(good, table), S_OK);
  KOVAMappingTable broken;
  EXPECT_EQ(Read(R"({"version": 8, "References": [{"kOVAId": "R1"}]})", broken), E_FAIL);
  EXPECT_EQ(Read("{}", broken), E_FAIL);
  const ZANUnicodeString written = KOVAMappingParser::TranslateToString(table);
  ZANUnicodeString envelope;
  EXPECT_EQ(KOVAMappingParser::CompressMTWithPrefix(written, envelope), S_OK);
  KOVAMappingTable fromEnvelope;
  EXPECT_EQ(Read(envelope.ConvertToChar(), fromEnvelope), S_OK);
  std::map<ZANUnicodeString, ZANIKnwParm_var> attributes{{"Mass", ZANKnwBuilder::MakeRealParm(2.5)},
                                                         {"Name", ZANKnwBuilder::MakeStringParm("A1")}};
  ZANUnicodeString stamp;
  EXPECT_EQ(KOVASynchroStampServices::ComputeKOVASynchroStamp(attributes, stamp), S_OK);
}

TEST(LogCaptureSwitchSet, AnEverythingCaptureReceivesExactlyWhatIsPrinted) {
  kova::test::StdoutCapture out;
  KOVALogCapture capture(Wants::kEverything);
  EveryKindOfLine();
  const std::string printed = out.Stop();
  EXPECT_GT(capture.Lines().size(), 10u);
  EXPECT_EQ(Printed(capture), printed);
}

TEST(LogCaptureSwitchSet, AReasonsCaptureLeavesThePrintedLinesAsTheyWere) {
  std::string without;
  {
    kova::test::StdoutCapture out;
    EveryKindOfLine();
    without = out.Stop();
  }
  kova::test::StdoutCapture out;
  KOVALogCapture capture;
  EveryKindOfLine();
  EXPECT_EQ(out.Stop(), without);
  EXPECT_THAT(capture.Reasons(), ElementsAre("UNVALUATED MANDATORY FIELD IsLocal", "UNVALUATED MANDATORY FIELD PlexoId",
                                             "KOVA JSON EMPTY OR INVALID"));
}

TEST(LogCaptureSwitchSet, StampServiceLinesAreDetails) {
  KOVALogCapture reasons;
  KOVALogCapture everything(Wants::kEverything);
  std::map<ZANUnicodeString, ZANIKnwParm_var> attributes{{"b", ZANKnwBuilder::MakeIntegerParm(7)}};
  ZANUnicodeString stamp;
  EXPECT_EQ(KOVASynchroStampServices::ComputeKOVASynchroStamp(attributes, stamp), S_OK);
  EXPECT_TRUE(reasons.Lines().empty());
  ASSERT_EQ(everything.Lines().size(), 3u);
  EXPECT_EQ(everything.Lines()[0].context, "KOVASynchroStampServices");
  EXPECT_EQ(everything.Lines()[0].message, "Entering ComputeKOVASynchroStamp from Map");
  EXPECT_EQ(everything.Lines()[2].message, "b:SET:7");
}

}  // namespace
