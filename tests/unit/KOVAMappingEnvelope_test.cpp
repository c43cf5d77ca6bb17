// The compressed envelope through its public operations, with every switch unset (no log lines,
// document version 12).
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include "tests/env/EnvelopeTestUtil.h"
#include "tests/support/StdoutCapture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <random>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using kova::test::Base64Decode;
using kova::test::Base64Encode;
using kova::test::DropCodePoints;
using kova::test::MakeEnvelope;
using kova::test::PayloadOf;
using kova::test::RandomBytes;
using kova::test::RandomText;
using kova::test::StoredZlibStream;

struct Opened {
  HRESULT status;
  std::string text;
};

Opened Open(const std::string& input) {
  ZANUnicodeString text(input);
  const HRESULT status = KOVAMappingParser::TryDecompressMT(text);
  return {status, text.ConvertToChar()};
}

std::string Envelope(const std::string& document) {
  ZANUnicodeString out;
  EXPECT_EQ(KOVAMappingParser::CompressMTWithPrefix(ZANUnicodeString(document), out), S_OK);
  return out.ConvertToChar();
}

const std::string kJson = R"({"version":12,"references":[{"kOVAId":"R-1","PlexoId":"P-1","KSS":"V3:abc="},)"
                          R"({"kOVAId":"R-2","PlexoId":"P-2","instances":[{"kOVAId":"I-1","PlexoId":"PI-1"}]}]})";
const std::string kUnicode = "{\"name\":\"\xC3\xA9t\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xE4\xB8\xAD\xE6\x96\x87\"}";

// ---------------------------------------------------------------------------------------------
// Writing

TEST(KOVAMappingEnvelope, EnvelopeIsVersionUtf8SizeAndBase64Payload) {
  for (const std::string& document : {kJson, kUnicode, std::string("x"), std::string(5000, 'a')}) {
    const std::string envelope = Envelope(document);
    const std::string prefix = "V12:" + std::to_string(document.size()) + ":";
    ASSERT_EQ(envelope.substr(0, prefix.size()), prefix);
    const std::string payload = envelope.substr(prefix.size());
    EXPECT_EQ(payload, PayloadOf(envelope));
    EXPECT_TRUE(Base64Decode(payload).has_value()) << "strict base64, no line breaks: " << payload;
  }
}

TEST(KOVAMappingEnvelope, SizeFieldCountsUtf8BytesNotCharacters) {
  const std::string envelope = Envelope(kUnicode);
  EXPECT_EQ(envelope.substr(0, envelope.find(':', 4) + 1), "V12:" + std::to_string(kUnicode.size()) + ":");
  EXPECT_NE(static_cast<int>(kUnicode.size()), ZANUnicodeString(kUnicode).GetLengthInChar());
}

TEST(KOVAMappingEnvelope, EmptyTextGivesSizeZeroWhichDoesNotOpen) {
  const std::string envelope = Envelope("");
  ASSERT_EQ(envelope.substr(0, 6), "V12:0:");
  const std::string payload = envelope.substr(6);
  EXPECT_FALSE(payload.empty());
  const Opened opened = Open(envelope);
  EXPECT_EQ(opened.status, E_FAIL);
  EXPECT_EQ(opened.text, payload);
}

TEST(KOVAMappingEnvelope, LogsNothingWhenTheLoggerIsOff) {
  kova::test::StdoutCapture capture;
  const std::string envelope = Envelope(kJson);
  EXPECT_EQ(Open(envelope).status, S_OK);
  EXPECT_EQ(Open("V12:3:" + PayloadOf(envelope)).status, ZANZ_E_INSUFFICIENTBUFFER);
  EXPECT_EQ(Open("V12:40:" + Base64Encode(RandomBytes(30, 1))).status, ZANZ_E_BADDATA);
  EXPECT_EQ(Open(kJson).status, E_FAIL);
  EXPECT_EQ(capture.Stop(), "");
}

// ---------------------------------------------------------------------------------------------
// Round trips

TEST(KOVAMappingEnvelope, RoundTripGivesBackExactlyTheText) {
  std::string withNul = "before";
  withNul.push_back('\0');
  withNul += "after";
  for (const std::string& document :
       {kJson, kUnicode, std::string("a"), std::string("line one\nline two\r\n\ttab"), withNul,
        RandomText(100000, "{}[]\":,abcXYZ0123456789 ", 11), std::string("V12:5:looks like a prefix")}) {
    const std::string envelope = Envelope(document);
    const Opened opened = Open(envelope);
    EXPECT_EQ(opened.status, S_OK) << document.substr(0, 40);
    EXPECT_EQ(opened.text, document);
  }
}

TEST(KOVAMappingEnvelope, UnicodeTextRoundTrips) {
  std::string text;
  for (int i = 0; i < 2000; ++i) text += "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xE4\xB8\xAD" + std::to_string(i);
  const Opened opened = Open(Envelope(text));
  EXPECT_EQ(opened.status, S_OK);
  EXPECT_EQ(opened.text, text);
  EXPECT_EQ(ZANUnicodeString(opened.text).GetLengthInChar(), ZANUnicodeString(text).GetLengthInChar());
}

TEST(KOVAMappingEnvelope, LargeDocumentRoundTrips) {
  std::string document = "{\"version\":12,\"references\":[";
  for (int i = 0; i < 60000; ++i) {
    if (i != 0) document += ",";
    document += "{\"kOVAId\":\"K" + std::to_string(i) + "\",\"PlexoId\":\"P" + std::to_string(i * 7) +
                "\",\"KSS\":\"V3:" + std::to_string(i % 97) + "\"}";
  }
  document += "]}";
  const std::string envelope = Envelope(document);
  EXPECT_LT(envelope.size(), document.size() / 2);
  const Opened opened = Open(envelope);
  EXPECT_EQ(opened.status, S_OK);
  EXPECT_TRUE(opened.text == document);
}

TEST(KOVAMappingEnvelope, OpensAHandMadeEnvelope) {
  const Opened opened = Open(MakeEnvelope("12", "11", StoredZlibStream("hello world")));
  EXPECT_EQ(opened.status, S_OK);
  EXPECT_EQ(opened.text, "hello world");
}

TEST(KOVAMappingEnvelope, DecompressedBytesThatAreNotUtf8BecomeReplacementCharacters) {
  const Opened opened = Open(MakeEnvelope("12", "3", StoredZlibStream("a\xFFz")));
  EXPECT_EQ(opened.status, S_OK);
  EXPECT_EQ(opened.text, "a\xEF\xBF\xBDz");
}

// A declared size close to what the payload can hold is opened straight into the result's string,
// a much larger one into a separate buffer: every declaration that leaves room for the text gives
// the same text, whatever the ratio of the document's compression.
TEST(KOVAMappingEnvelope, EveryRoomyDeclaredSizeGivesTheSameText) {
  std::string repetitive = "{\"a\":\"";
  repetitive.append(200000, 'x');
  repetitive += "\"}";
  for (const std::string& document : {repetitive, RandomText(50000, "{}[]\":,abcXYZ0123456789 ", 5), kUnicode}) {
    const std::string payload = PayloadOf(Envelope(document));
    const std::size_t compressed = Base64Decode(payload).value_or(std::string()).size();
    ASSERT_GT(compressed, 0u);
    for (const std::uint64_t size :
         {std::uint64_t{document.size()}, std::uint64_t{document.size() + 1}, std::uint64_t{16 * compressed},
          std::uint64_t{16 * compressed + 16}, std::uint64_t{2147483647}}) {
      if (size < document.size()) continue;
      const Opened opened = Open("V12:" + std::to_string(size) + ":" + payload);
      EXPECT_EQ(opened.status, S_OK) << "size " << size;
      EXPECT_TRUE(opened.text == document) << "size " << size;
    }
  }
}

TEST(KOVAMappingEnvelope, BytesThatAreNotUtf8AreReplacedWhateverTheDeclaredSize) {
  for (const char* size : {"3", "4", "100000"}) {
    const Opened opened = Open(MakeEnvelope("12", size, StoredZlibStream("a\xFFz")));
    EXPECT_EQ(opened.status, S_OK) << size;
    EXPECT_EQ(opened.text, "a\xEF\xBF\xBDz") << size;
  }
}

TEST(KOVAMappingEnvelope, DeclaredSizeLargerThanTheTextOpensToTheRealText) {
  const Opened opened = Open("V12:1000:" + PayloadOf(Envelope(kJson)));
  EXPECT_EQ(opened.status, S_OK);
  EXPECT_EQ(opened.text, kJson);
}

TEST(KOVAMappingEnvelope, LargestDeclaredSizeStillOpens) {
  const Opened opened = Open("V12:2147483647:" + PayloadOf(Envelope(kJson)));
  EXPECT_EQ(opened.status, S_OK);
  EXPECT_EQ(opened.text, kJson);
}

TEST(KOVAMappingEnvelope, PayloadIsReadUpToAnEmbeddedNul) {
  std::string input = "V12:5:" + PayloadOf(Envelope("hello"));
  input.push_back('\0');
  input += "!!";
  const Opened opened = Open(input);
  EXPECT_EQ(opened.status, S_OK);
  EXPECT_EQ(opened.text, "hello");
}

// ---------------------------------------------------------------------------------------------
// Texts that are not envelopes, and envelopes that do not open

TEST(KOVAMappingEnvelope, TextWithoutPrefixIsLeftUnchanged) {
  for (const std::string& text :
       {kJson, kUnicode, std::string(), std::string("V"), std::string("V12"), std::string("V12:"), std::string("V12:5"),
        std::string("V12::abc"), std::string("V:5:abc"), std::string("v12:5:abc"), std::string("W12:5:abc"),
        std::string("V1 2:5:abc"), std::string("V12:-5:abc"), std::string("V12:+5:abc"), std::string("V\xC3\xA9:5:abc"),
        std::string("V\xD9\xA1\xD9\xA2:5:abc"), std::string("{\"a\":\"V12:5\"}")}) {
    const Opened opened = Open(text);
    EXPECT_EQ(opened.status, E_FAIL) << text;
    EXPECT_EQ(opened.text, text);
  }
}

TEST(KOVAMappingEnvelope, SizeZeroFailsWithThePrefixRemoved) {
  EXPECT_EQ(Open("V12:0:xyz").status, E_FAIL);
  EXPECT_EQ(Open("V12:0:xyz").text, "xyz");
  EXPECT_EQ(Open("V12:0000:xyz").text, "xyz");
  EXPECT_EQ(Open("V12:0000:xyz").status, E_FAIL);
  const Opened inside = Open("abc V12:0:xyz");
  EXPECT_EQ(inside.status, E_FAIL);
  EXPECT_EQ(inside.text, "2:0:xyz");  // "abc V1" goes
}

TEST(KOVAMappingEnvelope, PayloadThatIsNotBase64FailsWithTheConverterStatus) {
  for (const std::string& payload :
       {std::string("!!!!"), std::string("abc"), std::string("ab=c"), std::string("a b c d")}) {
    const Opened opened = Open("V12:5:" + payload);
    EXPECT_EQ(opened.status, static_cast<HRESULT>(0x8007000Du)) << payload;
    EXPECT_EQ(opened.text, payload);
  }
}

TEST(KOVAMappingEnvelope, EmptyPayloadIsBadData) {
  const Opened opened = Open("V12:5:");
  EXPECT_EQ(opened.status, ZANZ_E_BADDATA);
  EXPECT_EQ(opened.text, "");
}

TEST(KOVAMappingEnvelope, SizeSmallerThanTheTextIsInsufficientBuffer) {
  const std::string payload = PayloadOf(Envelope(kJson));
  for (const std::size_t declared : {std::size_t{1}, std::size_t{50}, kJson.size() - 1}) {
    const Opened opened = Open("V12:" + std::to_string(declared) + ":" + payload);
    EXPECT_EQ(opened.status, ZANZ_E_INSUFFICIENTBUFFER) << declared;
    EXPECT_EQ(opened.text, payload);
  }
  EXPECT_EQ(Open("V12:" + std::to_string(kJson.size()) + ":" + payload).status, S_OK);
}

TEST(KOVAMappingEnvelope, PayloadThatIsNotAZlibStreamIsBadData) {
  const std::string payload = PayloadOf(Envelope(kJson));
  const std::string stream = *Base64Decode(payload);
  std::string badAdler = stream;
  badAdler.back() = static_cast<char>(badAdler.back() ^ 0x10);
  for (const std::string& bad : {RandomBytes(60, 2), stream.substr(0, stream.size() / 2), badAdler}) {
    const std::string encoded = Base64Encode(bad);
    const Opened opened = Open("V12:1000:" + encoded);
    EXPECT_EQ(opened.status, ZANZ_E_BADDATA);
    EXPECT_EQ(opened.text, encoded);
  }
}

TEST(KOVAMappingEnvelope, SizeBeyondTheLargestIntThrowsOutOfRangeAndKeepsThePrefix) {
  const std::string payload = PayloadOf(Envelope(kJson));
  for (const std::string& size :
       {std::string("2147483648"), std::string("4294967296"), std::string("99999999999999999999999999")}) {
    ZANUnicodeString text(std::string("V12:").append(size).append(":").append(payload));
    const ZANUnicodeString before = text;
    EXPECT_THROW(KOVAMappingParser::TryDecompressMT(text), std::out_of_range) << size;
    EXPECT_EQ(text, before);
  }
}

TEST(KOVAMappingEnvelope, SizeWindowWithoutLeadingDigitsThrowsInvalidArgument) {
  // The size is read from position 4 of the prefix up to its last ":": empty for V1:2:, starting
  // with ":" for a three-digit version.
  for (const std::string& input : {std::string("V1:2:abcd"), std::string("V123:45:abcd"), std::string("V100:2345:abcd"),
                                   std::string("x V1:2: y")}) {
    ZANUnicodeString text(input);
    EXPECT_THROW(KOVAMappingParser::TryDecompressMT(text), std::invalid_argument) << input;
    EXPECT_EQ(text.ConvertToChar(), input);
  }
}

// The size read is pinned by two payloads: one whose text is exactly the size opens, one byte more
// does not fit.
void ExpectSizeRead(const std::string& prefix, std::size_t size) {
  const std::string fits(size, 'f');
  const std::string tooLong(size + 1, 't');
  const Opened opened = Open(prefix + PayloadOf(Envelope(fits)));
  EXPECT_EQ(opened.status, S_OK) << prefix;
  EXPECT_EQ(opened.text, fits) << prefix;
  const std::string tooLongPayload = PayloadOf(Envelope(tooLong));
  const Opened failed = Open(prefix + tooLongPayload);
  EXPECT_EQ(failed.status, ZANZ_E_INSUFFICIENTBUFFER) << prefix;
  EXPECT_EQ(failed.text, tooLongPayload) << prefix;
}

TEST(KOVAMappingEnvelope, SizeIsReadFromTheFixedPositionOfATwoDigitVersion) {
  ExpectSizeRead("V12:1234:", 1234);
  ExpectSizeRead("V11:7:", 7);
  ExpectSizeRead("V99:000042:", 42);
  ExpectSizeRead("V9:1234:", 234);
  ExpectSizeRead("V1:23:", 3);
  ExpectSizeRead("V12:3:", 3);
  ExpectSizeRead("V1234:5:", 4);
  ExpectSizeRead("V12345:6:", 45);
}

TEST(KOVAMappingEnvelope, OneDigitVersionCanHideAnOutOfRangeSize) {
  // With V9: the window drops the first size digit: 12147483648 reads as 2147483648.
  ZANUnicodeString text("V9:12147483648:abcd");
  EXPECT_THROW(KOVAMappingParser::TryDecompressMT(text), std::out_of_range);
  EXPECT_EQ(text.ConvertToChar(), "V9:12147483648:abcd");
}

TEST(KOVAMappingEnvelope, RunInsidePlainJsonIsTakenForAnEnvelope) {
  const std::string json = R"({"a":"V1:23:xyz"})";
  const Opened opened = Open(json);
  EXPECT_EQ(opened.status, static_cast<HRESULT>(0x8007000Du));
  EXPECT_EQ(opened.text, R"(V1:23:xyz"})");
  EXPECT_EQ(opened.text, json.substr(6));
}

TEST(KOVAMappingEnvelope, TheFirstCharactersAreRemovedWhereverThePrefixIs) {
  const std::string payload = PayloadOf(Envelope("hello"));
  // Six characters go: "ab" and "V12:".
  const Opened ascii = Open("abV12:5:" + payload);
  EXPECT_EQ(ascii.status, static_cast<HRESULT>(0x8007000Du));
  EXPECT_EQ(ascii.text, "5:" + payload);
  // Characters, not bytes: three two-byte characters and "V12".
  const std::string accented = "\xC3\xA9\xC3\xA9\xC3\xA9V12:5:" + payload;
  const Opened unicode = Open(accented);
  EXPECT_EQ(unicode.status, static_cast<HRESULT>(0x8007000Du));
  EXPECT_EQ(unicode.text, ":5:" + payload);
  EXPECT_EQ(unicode.text, DropCodePoints(accented, 6));
}

TEST(KOVAMappingEnvelope, TheLeftmostPrefixIsTheOneRead) {
  const std::string payload = PayloadOf(Envelope("hello"));
  // The first run declares 0: E_FAIL, although a correct envelope follows.
  const Opened first = Open("V12:0:V12:5:" + payload);
  EXPECT_EQ(first.status, E_FAIL);
  EXPECT_EQ(first.text, "V12:5:" + payload);
  // An incomplete run before the envelope does not count; still the first six characters go.
  const Opened incomplete = Open("V12:V12:5:" + payload);
  EXPECT_EQ(incomplete.status, static_cast<HRESULT>(0x8007000Du));
  EXPECT_EQ(incomplete.text, "2:5:" + payload);
}

// ---------------------------------------------------------------------------------------------
// Large and hostile inputs

TEST(KOVAMappingEnvelope, DeclaredTwoGigabytesDoesNotTouchTwoGigabytes) {
  // Four megabytes of zeros compress to a few kilobytes; the prefix declares 2,000,000,000.
  const std::string zeros(4u << 20, '0');
  const std::string stream = *Base64Decode(PayloadOf(Envelope(zeros)));
  ASSERT_LT(stream.size(), 64u * 1024u);
  const std::string truncated = Base64Encode(stream.substr(0, stream.size() / 2));

  const std::uint64_t residentBefore = kova::test::ProcStatusBytes("VmRSS");
  ASSERT_GT(residentBefore, 0u) << "/proc/self/status is readable";
  const Opened broken = Open("V12:2000000000:" + truncated);
  const std::uint64_t peak = kova::test::ProcStatusBytes("VmHWM");

  EXPECT_EQ(broken.status, ZANZ_E_BADDATA);
  EXPECT_EQ(broken.text, truncated);
  // Whatever the process peaked at before, touching the declared size would have put the peak
  // about two gigabytes above the current resident size.
  EXPECT_LT(peak, residentBefore + (1ull << 30)) << "peak " << peak << ", resident before " << residentBefore;

  const Opened whole = Open("V12:2000000000:" + PayloadOf(Envelope(zeros)));
  EXPECT_EQ(whole.status, S_OK);
  EXPECT_TRUE(whole.text == zeros);
  EXPECT_LT(kova::test::ProcStatusBytes("VmHWM"), residentBefore + (1ull << 30));
}

TEST(KOVAMappingEnvelope, LongDigitRunsAreSearchedWithoutRecursion) {
  const std::string payload = PayloadOf(Envelope("hello"));
  // Five million zeros before the size digit: the window reads 000...05, that is 5.
  const std::string zeros(5000000, '0');
  const Opened padded = Open("V1:" + zeros + "5:" + payload);
  EXPECT_EQ(padded.status, S_OK);
  EXPECT_EQ(padded.text, "hello");
  // A five-million-digit version: the window starts inside it and is out of range.
  ZANUnicodeString longVersion("V" + std::string(5000000, '7') + ":1:" + payload);
  EXPECT_THROW(KOVAMappingParser::TryDecompressMT(longVersion), std::out_of_range);
  // No final ":" after long runs: no envelope.
  const std::string unfinished = "V" + std::string(3000000, '1') + ":" + std::string(3000000, '2');
  EXPECT_EQ(Open(unfinished).status, E_FAIL);
}

TEST(KOVAMappingEnvelope, SearchIsLinearOnNearMisses) {
  std::string text;
  for (int i = 0; text.size() < (16u << 20); ++i) text += "V1:2V34:5x:V" + std::to_string(i) + "::V:1:";
  const auto start = std::chrono::steady_clock::now();
  const Opened opened = Open(text);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  EXPECT_EQ(opened.status, E_FAIL);
  EXPECT_TRUE(opened.text == text);
  EXPECT_LT(seconds, 10.0);
}

// ---------------------------------------------------------------------------------------------
// The search against std::regex: the prefix is V\d+:\d+: searched anywhere (ECMAScript); the size is
// std::stoi of the window at position 4 running to the prefix's last ":"; the first characters of
// the text go, as many as the prefix is long.

enum class Kind { kNoEnvelope, kInvalidArgument, kOutOfRange, kZeroSize, kOpened };

struct Expected {
  Kind kind;
  std::string text;
};

Expected Model(const std::string& input) {
  static const std::regex pattern("V\\d+:\\d+:", std::regex::ECMAScript);
  std::smatch match;
  if (!std::regex_search(input, match, pattern)) return {Kind::kNoEnvelope, input};
  const std::string prefix = match.str();
  int size = 0;
  try {
    size = std::stoi(prefix.substr(4, prefix.size() - 5));
  } catch (const std::invalid_argument&) {
    return {Kind::kInvalidArgument, input};
  } catch (const std::out_of_range&) {
    return {Kind::kOutOfRange, input};
  }
  return {size == 0 ? Kind::kZeroSize : Kind::kOpened, DropCodePoints(input, prefix.size())};
}

// Empty when the library does what the model says.
std::string Compare(const std::string& input) {
  const Expected expected = Model(input);
  ZANUnicodeString text(input);
  HRESULT status = S_OK;
  Kind kind = Kind::kOpened;
  try {
    status = KOVAMappingParser::TryDecompressMT(text);
    if (status == E_FAIL) kind = text.ConvertToChar() == input ? Kind::kNoEnvelope : Kind::kZeroSize;
  } catch (const std::invalid_argument&) {
    kind = Kind::kInvalidArgument;
  } catch (const std::out_of_range&) {
    kind = Kind::kOutOfRange;
  }
  if (kind != expected.kind) return "kind differs for \"" + input + "\"";
  if (text.ConvertToChar() != expected.text)
    return "text differs for \"" + input + "\": \"" + text.ConvertToChar() + "\"";
  if (kind == Kind::kOpened && ZANSucceeded(status)) return "unexpected success for \"" + input + "\"";
  return {};
}

void CompareAll(const std::vector<std::string>& inputs) {
  std::vector<std::string> mismatches;
  for (const std::string& input : inputs) {
    std::string difference = Compare(input);
    if (!difference.empty() && mismatches.size() < 10) mismatches.push_back(std::move(difference));
  }
  std::string report;
  for (const std::string& m : mismatches) report += m + "\n";
  EXPECT_TRUE(mismatches.empty()) << report;
}

// Every sequence of up to maxLength tokens.
std::vector<std::string> AllSequences(const std::vector<std::string>& tokens, std::size_t maxLength) {
  std::vector<std::string> out{""};
  std::vector<std::string> layer{""};
  for (std::size_t length = 1; length <= maxLength; ++length) {
    std::vector<std::string> next;
    for (const std::string& s : layer)
      for (const std::string& t : tokens) next.push_back(s + t);
    out.insert(out.end(), next.begin(), next.end());
    layer = std::move(next);
  }
  return out;
}

TEST(KOVAMappingEnvelope, BehavesAsTheRegexModelOnEveryShortSequence) {
  const std::vector<std::string> sequences = AllSequences({"V", "1", "0", ":", "a", "\xC3\xA9"}, 6);
  ASSERT_EQ(sequences.size(), 55987u);
  CompareAll(sequences);
}

TEST(KOVAMappingEnvelope, BehavesAsTheRegexModelOnRandomTexts) {
  const std::vector<std::string> tokens = {"V", "V",  "V",    "1",         "2", "9", "0",        "0",
                                           ":", ":",  ":",    "a",         "v", "=", "\xC3\xA9", "\xE2\x82\xAC",
                                           " ", "12", "V12:", "2147483648"};
  std::mt19937 rng(20240601);
  std::uniform_int_distribution<std::size_t> pickToken(0, tokens.size() - 1);
  std::uniform_int_distribution<int> pickLength(0, 30);
  std::vector<std::string> inputs;
  for (int i = 0; i < 30000; ++i) {
    std::string s;
    const int length = pickLength(rng);
    for (int j = 0; j < length; ++j) s += tokens[pickToken(rng)];
    inputs.push_back(std::move(s));
  }
  CompareAll(inputs);
}

TEST(KOVAMappingEnvelope, BehavesAsTheRegexModelOnChosenTexts) {
  CompareAll({"V1:2:",
              "V12:3:",
              "V123:4:",
              "V1234:5:",
              "V12:34:",
              "VV12:3:",
              "V1:V12:3:",
              "V12:3V45:6:",
              "V12:3:4:",
              "V12::3:",
              "V:12:3:",
              ":V12:3:",
              "V12:0:",
              "V12:00:x",
              "V12:2147483647:x",
              "V12:2147483648:x",
              "V12:02147483647:x",
              "V12:-1:x",
              "V0:0:",
              "V00:00:",
              "x\xC3\xA9V12:3:yyyy",
              "\xF0\x9F\x98\x80V12:4:abcd",
              "V12:3:\xC3\xA9",
              std::string("V\xC3\xA9") + "12:3:",  // apart: "\xA912" would be one escape
              "V12\xC3\xA9:3:",
              "V12:3\xC3\xA9:",
              "V99999999999:1:",
              "V1:99999999999:",
              "V12:1:V12:0:",
              "{\"a\":\"V1:23:xyz\"}"});
}

}  // namespace
