// Log lines of the envelope operations, in processes where "ActivateKOVALogger" is set. The suite
// EnvelopeLog runs at document version 12; EnvelopeLogRollBack in a process where
// "RollBackMappingVersion" is also set (version 11).
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include "tests/env/EnvelopeTestUtil.h"
#include "tests/support/StdoutCapture.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using kova::test::AdvancedLabel;
using kova::test::Base64Decode;
using kova::test::Base64Encode;
using kova::test::LogLines;
using kova::test::PayloadOf;
using kova::test::RandomBytes;

constexpr std::string_view kUncompressed = "UNCOMPRESSED SIZE IS: ";
constexpr std::string_view kCompressed = "COMPRESSED SIZE IS: ";

struct Written {
  HRESULT status;
  std::string envelope;
  std::string log;
};

Written Write(const std::string& document) {
  ZANUnicodeString out;
  kova::test::StdoutCapture capture;
  const HRESULT status = KOVAMappingParser::CompressMTWithPrefix(ZANUnicodeString(document), out);
  return {status, out.ConvertToChar(), capture.Stop()};
}

struct Opened {
  HRESULT status;
  std::string text;
  std::string log;
};

Opened Open(const std::string& input) {
  ZANUnicodeString text(input);
  kova::test::StdoutCapture capture;
  const HRESULT status = KOVAMappingParser::TryDecompressMT(text);
  return {status, text.ConvertToChar(), capture.Stop()};
}

// The lines of a successful write: both size lines, then the envelope. The compressed length is
// that of the payload as it decodes.
std::string ExpectedWriteLog(const std::string& document, const std::string& envelope) {
  const std::optional<std::string> stream = Base64Decode(PayloadOf(envelope));
  EXPECT_TRUE(stream.has_value());
  return LogLines({AdvancedLabel(kUncompressed, document.size()),
                   AdvancedLabel(kCompressed, stream ? stream->size() : 0), "COMPRESSED STRING:", envelope});
}

TEST(EnvelopeLog, FiveByteTextLogsTheLabelFromPositionFive) {
  const Written written = Write("hello");
  ASSERT_EQ(written.status, S_OK);
  ASSERT_EQ(written.envelope.substr(0, 6), "V12:5:");
  const std::size_t compressed = Base64Decode(PayloadOf(written.envelope))->size();
  // "UNCOMPRESSED SIZE IS: " from position 5 (the sixth character, "P").
  EXPECT_EQ(written.log,
            "[PrdKOVALog]PRESSED SIZE IS: \n"
            "[PrdKOVALog]" +
                AdvancedLabel(kCompressed, compressed) +
                "\n"
                "[PrdKOVALog]COMPRESSED STRING:\n"
                "[PrdKOVALog]" +
                written.envelope + "\n");
}

TEST(EnvelopeLog, SizeLinesAroundTheEndsOfTheLabels) {
  for (const std::size_t size : {0u, 1u, 19u, 20u, 21u, 22u, 23u, 200u}) {
    const std::string document(size, 'd');
    const Written written = Write(document);
    ASSERT_EQ(written.status, S_OK);
    EXPECT_EQ(written.log, ExpectedWriteLog(document, written.envelope)) << size;
  }
  // Past the end of the label the line is the bare tag.
  const Written longer = Write(std::string(23, 'd'));
  EXPECT_EQ(kova::test::SplitLines(longer.log).at(0), "[PrdKOVALog]");
  const Written exact = Write(std::string(22, 'd'));
  EXPECT_EQ(kova::test::SplitLines(exact.log).at(0), "[PrdKOVALog]");
  const Written empty = Write("");
  EXPECT_EQ(kova::test::SplitLines(empty.log).at(0), "[PrdKOVALog]UNCOMPRESSED SIZE IS: ");
}

TEST(EnvelopeLog, IncompressibleTextShowsAnEmptyCompressedSizeLine) {
  const std::string document = Base64Encode(RandomBytes(300, 3));
  const Written written = Write(document);
  ASSERT_EQ(written.status, S_OK);
  EXPECT_EQ(written.log, LogLines({"", "", "COMPRESSED STRING:", written.envelope}));
}

TEST(EnvelopeLog, OpeningLogsTheDecompressedText) {
  const std::string document = "{\"version\":12,\n \"references\":[]}";
  const Written written = Write(document);
  const Opened opened = Open(written.envelope);
  EXPECT_EQ(opened.status, S_OK);
  EXPECT_EQ(opened.text, document);
  EXPECT_EQ(opened.log, "[PrdKOVALog]DECOMPRESSED STRING:\n[PrdKOVALog]" + document + "\n");
}

TEST(EnvelopeLog, SizeTooSmallLogsDecompressionThenInsufficientBuffer) {
  const std::string payload = PayloadOf(Write("a document longer than ten bytes").envelope);
  const Opened opened = Open("V12:10:" + payload);
  EXPECT_EQ(opened.status, ZANZ_E_INSUFFICIENTBUFFER);
  EXPECT_EQ(opened.text, payload);
  EXPECT_EQ(opened.log, LogLines({"DECOMPRESSION", "ZANZ_E_INSUFFICIENTBUFFER"}));
}

TEST(EnvelopeLog, BadStreamLogsDecompressionThenBadData) {
  const std::string payload = Base64Encode(RandomBytes(40, 4));
  const Opened opened = Open("V12:100:" + payload);
  EXPECT_EQ(opened.status, ZANZ_E_BADDATA);
  EXPECT_EQ(opened.text, payload);
  EXPECT_EQ(opened.log, LogLines({"DECOMPRESSION", "ZANZ_E_BADDATA"}));
}

TEST(EnvelopeLog, FailuresBeforeDecompressionLogNothing) {
  const Opened plain = Open("{\"version\":12}");
  EXPECT_EQ(plain.status, E_FAIL);
  EXPECT_EQ(plain.log, "");
  const Opened zero = Open("V12:0:xyz");
  EXPECT_EQ(zero.status, E_FAIL);
  EXPECT_EQ(zero.text, "xyz");
  EXPECT_EQ(zero.log, "");
  const Opened notBase64 = Open("V12:5:!!!!");
  EXPECT_EQ(notBase64.status, static_cast<HRESULT>(0x8007000Du));
  EXPECT_EQ(notBase64.log, "");
}

TEST(EnvelopeLog, RoundTripLogsBothSides) {
  const std::string document = "\xC3\xA9t\xC3\xA9 \xE2\x82\xAC";
  const Written written = Write(document);
  EXPECT_EQ(written.envelope.substr(0, 4), "V12:");
  EXPECT_EQ(written.log, ExpectedWriteLog(document, written.envelope));
  const Opened opened = Open(written.envelope);
  EXPECT_EQ(opened.text, document);
  EXPECT_EQ(opened.log, LogLines({"DECOMPRESSED STRING:", document}));
}

TEST(EnvelopeLogRollBack, PrefixCarriesVersion11) {
  const std::string document = "{\"version\":11,\"references\":[]}";
  const Written written = Write(document);
  ASSERT_EQ(written.status, S_OK);
  const std::string prefix = "V11:" + std::to_string(document.size()) + ":";
  EXPECT_EQ(written.envelope.substr(0, prefix.size()), prefix);
  EXPECT_EQ(written.log, ExpectedWriteLog(document, written.envelope));
  const Opened opened = Open(written.envelope);
  EXPECT_EQ(opened.status, S_OK);
  EXPECT_EQ(opened.text, document);
  EXPECT_EQ(opened.log, LogLines({"DECOMPRESSED STRING:", document}));
}

TEST(EnvelopeLogRollBack, Version12EnvelopesStillOpen) {
  const Opened opened = Open(kova::test::MakeEnvelope("12", "5", kova::test::StoredZlibStream("hello")));
  EXPECT_EQ(opened.status, S_OK);
  EXPECT_EQ(opened.text, "hello");
}

}  // namespace
