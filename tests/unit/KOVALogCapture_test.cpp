// Diagnostic lines taken through the API: what a capture receives, and that the standard output
// stays silent while "ActivateKOVALogger" is not set (as in every unit test).
#include <KOVAMappingServices/KOVALogCapture.h>
#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingTable.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/StdoutCapture.h"
#include "tests/support/TestData.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Wants = KOVALogCapture::Wants;

HRESULT Read(const std::string& text, KOVAMappingTable& table) {
  return KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString(text), ZANBaseUnknown(), table);
}

HRESULT Read(const std::string& text) {
  KOVAMappingTable table;
  return Read(text, table);
}

std::vector<std::pair<std::string, std::string>> ContextsAndMessages(const KOVALogCapture& capture) {
  std::vector<std::pair<std::string, std::string>> lines;
  for (const KOVALogLine& line : capture.Lines()) lines.emplace_back(line.context, line.message);
  return lines;
}

std::vector<std::string> Contexts(const KOVALogCapture& capture) {
  std::vector<std::string> contexts;
  for (const KOVALogLine& line : capture.Lines()) contexts.push_back(line.context);
  return contexts;
}

const char kTwoMissingKeys[] = R"({"version": 12, "References": [{"kOVAId": "R1", "PlexoId": "P1"}]})";
const char kReadable[] = R"({"version": 12, "References": [{"kOVAId": "R1", "PlexoId": "P1", "IsLocal": false,)"
                         R"( "KOVASynchroStamp": "V2:AB"}]})";

// The envelope of text, made with the library's own writer of envelopes.
std::string Envelope(const std::string& text) {
  ZANUnicodeString envelope;
  EXPECT_TRUE(ZANSucceeded(KOVAMappingParser::CompressMTWithPrefix(ZANUnicodeString(text), envelope)));
  return envelope.ConvertToChar();
}

TEST(LogCapture, WithoutCaptureTheLogIsOffAndSilent) {
  EXPECT_FALSE(KOVALogger::IsActive());
  kova::test::StdoutCapture out;
  EXPECT_EQ(Read("{}"), E_FAIL);
  EXPECT_EQ(out.Stop(), "");
}

TEST(LogCapture, ACaptureSwitchesTheLogOnForItsThreadOnly) {
  bool otherThread = true;
  {
    KOVALogCapture capture;
    EXPECT_TRUE(KOVALogger::IsActive());
    std::thread([&] { otherThread = KOVALogger::IsActive(); }).join();
  }
  EXPECT_FALSE(otherThread);
  EXPECT_FALSE(KOVALogger::IsActive());
}

TEST(LogCapture, ReasonsOfARefusedDocumentGoToTheCaptureNotToStandardOutput) {
  kova::test::StdoutCapture out;
  KOVALogCapture capture;
  EXPECT_EQ(Read("{}"), E_FAIL);
  EXPECT_EQ(out.Stop(), "");
  ASSERT_EQ(capture.Lines().size(), 1u);
  EXPECT_EQ(capture.Lines()[0].context, "");
  EXPECT_EQ(capture.Lines()[0].message, "KOVA JSON EMPTY OR INVALID");
  EXPECT_TRUE(capture.Lines()[0].reason);
  EXPECT_THAT(capture.Reasons(), ElementsAre("KOVA JSON EMPTY OR INVALID"));
}

TEST(LogCapture, EveryMissingMandatoryKeyIsAReasonInKeyOrder) {
  KOVALogCapture capture;
  EXPECT_EQ(Read(kTwoMissingKeys), E_FAIL);
  EXPECT_THAT(capture.Reasons(),
              ElementsAre("UNVALUATED MANDATORY FIELD IsLocal", "UNVALUATED MANDATORY FIELD KOVASynchroStamp"));
  EXPECT_THAT(ContextsAndMessages(capture),
              ElementsAre(std::pair<std::string, std::string>("UNVALUATED MANDATORY FIELD", "IsLocal"),
                          std::pair<std::string, std::string>("UNVALUATED MANDATORY FIELD", "KOVASynchroStamp")));
}

TEST(LogCapture, VersionMessagesKeepTheirWords) {
  KOVALogCapture capture;
  EXPECT_EQ(Read(R"({"version": 13, "References": []})"), E_FAIL);
  EXPECT_EQ(Read(R"({"version": 5, "References": []})"), E_FAIL);
  EXPECT_EQ(Read(R"({"version": "12", "References": []})"), ZAN_E_TYPEMISMATCH);
  EXPECT_THAT(capture.Reasons(),
              ElementsAre("UNSUPPORTED VERSION ( version > 11 )", "UNSUPPORTED VERSION ( version < 6 )",
                          "CANNOT READ VERSION ON KOVA JSON"));
}

TEST(LogCapture, AReasonsOnlyCaptureGetsNoDocumentNorDump) {
  KOVALogCapture capture;
  EXPECT_EQ(Read(kReadable), S_OK);
  EXPECT_THAT(capture.Lines(), IsEmpty());
  KOVAMappingTable table;
  EXPECT_EQ(Read(kReadable, table), S_OK);
  EXPECT_FALSE(KOVAMappingParser::TranslateToString(table).IsEmpty());
  EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST(LogCapture, AnEverythingCaptureGetsTheDocumentAndTheDump) {
  KOVALogCapture capture(Wants::kEverything);
  KOVAMappingTable table;
  EXPECT_EQ(Read(kTwoMissingKeys, table), E_FAIL);
  EXPECT_THAT(Contexts(capture), ElementsAre("Input Mapping Table JSON String", "UNVALUATED MANDATORY FIELD",
                                             "UNVALUATED MANDATORY FIELD", "MappingTable at the end of parsing"));
  EXPECT_FALSE(capture.Lines()[0].reason);
  EXPECT_FALSE(capture.Lines()[3].reason);
  EXPECT_EQ(capture.Lines()[3].message, KOVALogger::ToString(table).ConvertToChar());
  // The reasons are the same two lines a reasons-only capture gets.
  EXPECT_EQ(capture.Reasons().size(), 2u);
}

TEST(LogCapture, TheWriterPrintsItsDocumentForAnEverythingCapture) {
  KOVAMappingTable table;
  ASSERT_EQ(Read(kReadable, table), S_OK);
  KOVALogCapture capture(Wants::kEverything);
  const std::string written = KOVAMappingParser::TranslateToString(table).ConvertToChar();
  ASSERT_THAT(Contexts(capture), ElementsAre("JSON generated from MappingTable"));
  // The printed form is indented; the written one is compact, with the same content.
  std::string printed = capture.Lines()[0].message;
  std::erase_if(printed, [](char c) { return c == ' ' || c == '\n' || c == '\t'; });
  std::string compact = written;
  std::erase_if(compact, [](char c) { return c == ' '; });
  EXPECT_EQ(printed, compact);
}

TEST(LogCapture, EnvelopeFailuresAreReasonsItsProgressIsNot) {
  // The declared size is one byte short of the text held.
  const std::string text = kReadable;
  std::string envelope = Envelope(text);
  const std::string size = std::to_string(text.size());
  envelope.replace(envelope.find(size), size.size(), std::to_string(text.size() - 1));

  KOVALogCapture reasons;
  KOVALogCapture everything(Wants::kEverything);
  ZANUnicodeString opened(envelope);
  EXPECT_EQ(KOVAMappingParser::TryDecompressMT(opened), ZANZ_E_INSUFFICIENTBUFFER);
  EXPECT_THAT(reasons.Reasons(), ElementsAre("DECOMPRESSION", "ZANZ_E_INSUFFICIENTBUFFER"));
  EXPECT_EQ(everything.Lines().size(), 2u);

  ZANUnicodeString good(Envelope(text));
  reasons.Clear();
  everything.Clear();
  EXPECT_EQ(KOVAMappingParser::TryDecompressMT(good), S_OK);
  EXPECT_THAT(reasons.Lines(), IsEmpty());
  EXPECT_THAT(ContextsAndMessages(everything),
              ElementsAre(std::pair<std::string, std::string>("", "DECOMPRESSED STRING:"),
                          std::pair<std::string, std::string>("", text)));
  EXPECT_FALSE(everything.Lines()[0].reason);
  EXPECT_FALSE(everything.Lines()[1].reason);
}

TEST(LogCapture, PackingShowsItsProgressToEverythingCapturesOnly) {
  KOVALogCapture reasons;
  KOVALogCapture everything(Wants::kEverything);
  const std::string envelope = Envelope("{}");
  EXPECT_THAT(reasons.Lines(), IsEmpty());
  // Two size lines (the label from the position of the size), the announcement, the envelope.
  ASSERT_EQ(everything.Lines().size(), 4u);
  EXPECT_EQ(everything.Lines()[0].message, std::string("UNCOMPRESSED SIZE IS: ").substr(2));
  EXPECT_EQ(everything.Lines()[2].message, "COMPRESSED STRING:");
  EXPECT_EQ(everything.Lines()[3].message, envelope);
}

TEST(LogCapture, LinesAHostLogsAreReasonsWhenTheirContextIsEmptyOrAMissingKey) {
  kova::test::StdoutCapture out;
  KOVALogCapture reasons;
  KOVALogCapture everything(Wants::kEverything);
  KOVALogger::log("no context", "");
  KOVALogger::log("Key", "UNVALUATED MANDATORY FIELD");
  KOVALogger::log("detail", "Host");
  EXPECT_EQ(out.Stop(), "");
  EXPECT_THAT(reasons.Reasons(), ElementsAre("no context", "UNVALUATED MANDATORY FIELD Key"));
  EXPECT_EQ(everything.Lines().size(), 3u);
}

TEST(LogCapture, NestedCapturesEachReceiveAndMayEndInAnyOrder) {
  auto outer = std::make_unique<KOVALogCapture>(Wants::kEverything);
  auto inner = std::make_unique<KOVALogCapture>();
  EXPECT_EQ(Read("{}"), E_FAIL);
  EXPECT_EQ(outer->Reasons(), inner->Reasons());
  // The outer one ends first: the inner one keeps the thread's log on and keeps receiving.
  outer.reset();
  EXPECT_TRUE(KOVALogger::IsActive());
  EXPECT_EQ(Read("[]"), E_FAIL);
  EXPECT_EQ(inner->Reasons().size(), 2u);
  inner.reset();
  EXPECT_FALSE(KOVALogger::IsActive());
}

class Recorder : public KOVALogSink {
 public:
  void Receive(std::string_view context, std::string_view message, bool reason) override {
    lines.push_back({std::string(context), std::string(message), reason});
    if (readInside) {
      // A call back into the library from inside the sink.
      KOVALogCapture nested;
      nestedStatus = Read(kTwoMissingKeys);
      nestedReasons = nested.Reasons();
    }
  }
  std::vector<KOVALogLine> lines;
  bool readInside = false;
  HRESULT nestedStatus = S_OK;
  std::vector<std::string> nestedReasons;
};

TEST(LogCapture, ASinkReceivesLinesAsTheyAreEmittedAndTheCaptureKeepsNone) {
  Recorder sink;
  KOVALogCapture capture(sink, Wants::kReasons);
  EXPECT_EQ(Read(kTwoMissingKeys), E_FAIL);
  EXPECT_EQ(sink.lines.size(), 2u);
  EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST(LogCapture, ASinkThatCallsTheLibraryIsNotCalledAgainForTheNestedLines) {
  Recorder sink;
  sink.readInside = true;
  KOVALogCapture capture(sink, Wants::kReasons);
  EXPECT_EQ(Read("{}"), E_FAIL);
  // One line of the outer call; the nested call's two lines went to the nested capture only.
  ASSERT_EQ(sink.lines.size(), 1u);
  EXPECT_EQ(sink.lines[0].message, "KOVA JSON EMPTY OR INVALID");
  EXPECT_EQ(sink.nestedStatus, E_FAIL);
  EXPECT_EQ(sink.nestedReasons.size(), 2u);
}

TEST(LogCapture, ThreadsNeverSeeEachOthersLines) {
  std::vector<std::string> first;
  std::vector<std::string> second;
  auto work = [](const char* document, std::vector<std::string>& reasons) {
    KOVALogCapture capture;
    for (int i = 0; i < 50; ++i) Read(document);
    reasons = capture.Reasons();
  };
  std::thread a(work, "{}", std::ref(first));
  std::thread b(work, kTwoMissingKeys, std::ref(second));
  a.join();
  b.join();
  ASSERT_EQ(first.size(), 50u);
  ASSERT_EQ(second.size(), 100u);
  for (const std::string& reason : first) EXPECT_EQ(reason, "KOVA JSON EMPTY OR INVALID");
  for (const std::string& reason : second) EXPECT_EQ(reason.rfind("UNVALUATED MANDATORY FIELD ", 0), 0u);
}

}  // namespace
