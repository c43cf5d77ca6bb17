// Exchange with zlib: what the library writes opens with zlib's uncompress, and zlib streams of
// every level, window size, strategy and flush pattern open with the library.
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/ZANSysCompression.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include "tests/env/EnvelopeTestUtil.h"
#include "tests/support/ZlibReference.h"

#include <zlib.h>

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace {

using kova::test::AsBytes;
using kova::test::Base64Decode;
using kova::test::Base64Encode;
using kova::test::PayloadOf;
using kova::test::RandomBytes;
using kova::test::RandomText;
using kova::test::StatusOfZlib;
using kova::test::ZlibCompress;
using kova::test::ZlibUncompress;

std::vector<std::string> Documents() {
  std::string big = "{\"version\":12,\"references\":[";
  for (int i = 0; i < 20000; ++i)
    big += "{\"kOVAId\":\"K" + std::to_string(i) + "\",\"PlexoId\":\"P" + std::to_string(i) + "\"},";
  big += "{}]}";
  return {"x", "{\"version\":12,\"references\":[]}", "\xC3\xA9t\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80", big,
          RandomText(200000, "abcdefghijklmnopqrstuvwxyz{}\":,0123456789", 1)};
}

// A zlib stream made with deflate's own parameters, flushing every flushEvery bytes with flush.
std::string ZlibDeflate(const std::string& data, int level, int windowBits, int memLevel, int strategy, int flush,
                        std::size_t flushEvery) {
  z_stream z{};
  EXPECT_EQ(deflateInit2(&z, level, Z_DEFLATED, windowBits, memLevel, strategy), Z_OK);
  std::string out;
  std::size_t at = 0;
  char buffer[16384];
  for (;;) {
    const std::size_t n = std::min(flushEvery, data.size() - at);
    const bool last = at + n == data.size();
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data() + at));
    z.avail_in = static_cast<uInt>(n);
    const int mode = last ? Z_FINISH : flush;
    int result = Z_OK;
    do {
      z.next_out = reinterpret_cast<Bytef*>(buffer);
      z.avail_out = sizeof buffer;
      result = deflate(&z, mode);
      out.append(buffer, sizeof buffer - z.avail_out);
    } while (z.avail_out == 0 || (last && result != Z_STREAM_END));
    at += n;
    if (last) break;
  }
  deflateEnd(&z);
  return out;
}

struct Opened {
  HRESULT status;
  std::string bytes;
};

Opened ServiceUncompress(const std::string& stream, std::size_t capacity) {
  std::string out(capacity, '\0');
  std::uint64_t length = capacity;
  const HRESULT status =
      ZANSysUncompress(AsBytes(stream), stream.size(), reinterpret_cast<unsigned char*>(out.data()), length);
  out.resize(length);
  return {status, out};
}

TEST(EnvelopeZlib, EnvelopeOpensWithZlibUncompress) {
  for (const std::string& document : Documents()) {
    ZANUnicodeString envelope;
    ASSERT_EQ(KOVAMappingParser::CompressMTWithPrefix(ZANUnicodeString(document), envelope), S_OK);
    const std::string prefix = "V12:" + std::to_string(document.size()) + ":";
    ASSERT_EQ(envelope.ConvertToChar().substr(0, prefix.size()), prefix);
    const std::optional<std::string> stream = Base64Decode(PayloadOf(envelope.ConvertToChar()));
    ASSERT_TRUE(stream.has_value());
    const kova::test::ZlibOutcome opened = ZlibUncompress(*stream, document.size());
    EXPECT_EQ(opened.result, Z_OK);
    EXPECT_TRUE(opened.bytes == document) << document.size();
  }
}

TEST(EnvelopeZlib, ZlibPayloadOpensAsAnEnvelope) {
  for (const std::string& document : Documents()) {
    for (const int level : {Z_DEFAULT_COMPRESSION, 0, 1, 9}) {
      ZANUnicodeString text("V12:" + std::to_string(document.size()) + ":" +
                            Base64Encode(ZlibCompress(document, level)));
      EXPECT_EQ(KOVAMappingParser::TryDecompressMT(text), S_OK) << level;
      EXPECT_TRUE(text.ConvertToChar() == document) << document.size() << " at level " << level;
    }
  }
}

TEST(EnvelopeZlib, ServiceOutputOpensWithZlib) {
  for (const std::string& data :
       {std::string(), std::string(1, '\0'), RandomBytes(100000, 2), std::string(300000, 'z')}) {
    std::string stream(ZANSysCompressBound(data.size()), '\0');
    std::uint64_t length = stream.size();
    ASSERT_EQ(ZANSysCompress(AsBytes(data), data.size(), reinterpret_cast<unsigned char*>(stream.data()), length),
              S_OK);
    stream.resize(length);
    EXPECT_LE(length, compressBound(data.size()) + 64) << "comparable to zlib's own bound";
    const kova::test::ZlibOutcome opened = ZlibUncompress(stream, data.size());
    EXPECT_EQ(opened.result, Z_OK);
    EXPECT_TRUE(opened.bytes == data);
  }
}

TEST(EnvelopeZlib, ServiceOpensEveryKindOfZlibStream) {
  const std::string data = RandomText(150000, "abcabcabd{}\":,01", 3) + std::string(50000, 'q') + RandomBytes(30000, 4);
  int streams = 0;
  for (const int level : {0, 1, 2, 6, 9}) {
    for (const int windowBits : {9, 10, 12, 15}) {
      for (const int memLevel : {1, 8, 9}) {
        for (const int strategy : {Z_DEFAULT_STRATEGY, Z_FILTERED, Z_HUFFMAN_ONLY, Z_RLE, Z_FIXED}) {
          const std::string stream = ZlibDeflate(data, level, windowBits, memLevel, strategy, Z_NO_FLUSH, data.size());
          const Opened opened = ServiceUncompress(stream, data.size());
          EXPECT_EQ(opened.status, S_OK) << level << " " << windowBits << " " << memLevel << " " << strategy;
          EXPECT_TRUE(opened.bytes == data);
          ++streams;
        }
      }
    }
  }
  EXPECT_EQ(streams, 300);
  for (const int flush : {Z_SYNC_FLUSH, Z_FULL_FLUSH, Z_PARTIAL_FLUSH, Z_BLOCK}) {
    for (const std::size_t every : {std::size_t{1000}, std::size_t{65536}}) {
      const std::string stream = ZlibDeflate(data, 6, 15, 8, Z_DEFAULT_STRATEGY, flush, every);
      const Opened opened = ServiceUncompress(stream, data.size());
      EXPECT_EQ(opened.status, S_OK) << flush << " every " << every;
      EXPECT_TRUE(opened.bytes == data);
    }
  }
}

TEST(EnvelopeZlib, AgreesWithZlibOnDamagedStreams) {
  const std::string data = RandomText(3000, "abcdefgh{}:,", 5);
  const std::string stream = ZlibCompress(data, Z_DEFAULT_COMPRESSION);
  int failures = 0;
  for (std::size_t at = 0; at < stream.size(); ++at) {
    for (int bit = 0; bit < 8; ++bit) {
      std::string damaged = stream;
      damaged[at] = static_cast<char>(damaged[at] ^ (1 << bit));
      const kova::test::ZlibOutcome zlib = ZlibUncompress(damaged, data.size() + 1000);
      const Opened opened = ServiceUncompress(damaged, data.size() + 1000);
      EXPECT_EQ(opened.status, StatusOfZlib(zlib.result)) << "byte " << at << " bit " << bit;
      if (zlib.result == Z_OK && opened.status == S_OK) {
        EXPECT_TRUE(zlib.bytes == opened.bytes);
      }
      if (zlib.result != Z_OK) ++failures;
    }
  }
  EXPECT_GT(failures, 100);
  // Cut short anywhere: both refuse. With room to spare in the target it is bad data for both; with
  // a target that the text fills exactly, the service names the failure as zlib does.
  for (std::size_t keep = 0; keep < stream.size(); ++keep) {
    const std::string cut = stream.substr(0, keep);
    EXPECT_EQ(ZlibUncompress(cut, data.size() + 1000).result, Z_DATA_ERROR) << keep;
    EXPECT_EQ(ServiceUncompress(cut, data.size() + 1000).status, ZANZ_E_BADDATA) << keep;
    EXPECT_NE(ZlibUncompress(cut, data.size()).result, Z_OK) << keep;
    EXPECT_EQ(ServiceUncompress(cut, data.size()).status, StatusOfZlib(ZlibUncompress(cut, data.size()).result))
        << keep;
  }
  // Target one byte short: zlib's buffer error, the service's insufficient buffer.
  EXPECT_EQ(ZlibUncompress(stream, data.size() - 1).result, Z_BUF_ERROR);
  EXPECT_EQ(ServiceUncompress(stream, data.size() - 1).status, ZANZ_E_INSUFFICIENTBUFFER);
}

TEST(EnvelopeZlib, ZlibBombWithTwoGigabytesDeclaredFailsWithoutTouchingThem) {
  // 64 MB of zeros made by zlib at level 9: a payload of about 64 KB.
  const std::string zeros(64u << 20, '\0');
  const std::string stream = ZlibCompress(zeros, 9);
  ASSERT_LT(stream.size(), 128u * 1024u);
  const std::string truncated = Base64Encode(stream.substr(0, stream.size() - 8));

  const std::uint64_t residentBefore = kova::test::ProcStatusBytes("VmRSS");
  const auto start = std::chrono::steady_clock::now();
  ZANUnicodeString text("V12:2000000000:" + truncated);
  EXPECT_EQ(KOVAMappingParser::TryDecompressMT(text), ZANZ_E_BADDATA);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  EXPECT_EQ(text.ConvertToChar(), truncated);
  EXPECT_LT(seconds, 10.0);
  EXPECT_LT(kova::test::ProcStatusBytes("VmHWM"), residentBefore + (1ull << 30));

  // Declared smaller than the bomb: refused at the declared size.
  ZANUnicodeString small("V12:1000000:" + Base64Encode(stream));
  EXPECT_EQ(KOVAMappingParser::TryDecompressMT(small), ZANZ_E_INSUFFICIENTBUFFER);
}

}  // namespace
