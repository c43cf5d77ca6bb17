#include <KOVAMappingServices/ZANSysCompression.h>

#include "tests/env/EnvelopeTestUtil.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace {

using kova::test::Adler32;
using kova::test::Bytes;
using kova::test::RandomBytes;
using kova::test::RandomText;
using kova::test::StoredZlibStream;

const unsigned char* In(const std::string& s) { return reinterpret_cast<const unsigned char*>(s.data()); }

struct Outcome {
  HRESULT status;
  std::string bytes;
};

Outcome Compress(const std::string& data, std::uint64_t capacity) {
  std::string target(capacity, '\0');
  std::uint64_t length = capacity;
  const HRESULT status = ZANSysCompress(In(data), data.size(), reinterpret_cast<unsigned char*>(target.data()), length);
  EXPECT_LE(length, capacity);
  target.resize(length);
  return {status, target};
}

Outcome Compress(const std::string& data) { return Compress(data, ZANSysCompressBound(data.size())); }

Outcome Uncompress(const std::string& stream, std::uint64_t capacity) {
  std::string target(capacity, '\0');
  std::uint64_t length = capacity;
  const HRESULT status =
      ZANSysUncompress(In(stream), stream.size(), reinterpret_cast<unsigned char*>(target.data()), length);
  EXPECT_LE(length, capacity);
  target.resize(length);
  return {status, target};
}

std::uint32_t BigEndian32(const std::string& s, std::size_t at) {
  std::uint32_t v = 0;
  for (std::size_t i = 0; i < 4; ++i) v = (v << 8) | static_cast<unsigned char>(s[at + i]);
  return v;
}

std::vector<std::string> SampleData() {
  return {std::string(),
          "a",
          "hello",
          std::string(1, '\0'),
          R"({"version":12,"references":[{"kOVAId":"A-1","PlexoId":"P-1"}]})",
          std::string(100000, 'x'),
          RandomBytes(70000, 1),
          RandomText(300000, "{}[]\":,abcdefghij0123456789", 2),
          "\xC3\xA9t\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80"};
}

TEST(ZANSysCompression, BoundCoversEveryLengthAndIsAtLeastTheLength) {
  std::uint64_t previous = 0;
  for (const std::uint64_t n : {0ull, 1ull, 5ull, 1000ull, 65535ull, 65536ull, 1000000ull, 1ull << 31}) {
    const std::uint64_t bound = ZANSysCompressBound(n);
    EXPECT_GE(bound, n);
    EXPECT_GE(bound, previous);
    previous = bound;
  }
}

TEST(ZANSysCompression, BoundOfAnImpossibleLengthIsTheLargestNumber) {
  EXPECT_EQ(ZANSysCompressBound(std::numeric_limits<std::uint64_t>::max()), std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(ZANSysCompressBound(std::numeric_limits<std::uint64_t>::max() / 2 + 1),
            std::numeric_limits<std::uint64_t>::max());
}

TEST(ZANSysCompression, RoundTripsEverySample) {
  for (const std::string& data : SampleData()) {
    const Outcome compressed = Compress(data);
    ASSERT_EQ(compressed.status, S_OK) << data.size();
    const Outcome back = Uncompress(compressed.bytes, data.size());
    EXPECT_EQ(back.status, S_OK);
    EXPECT_EQ(back.bytes, data);
  }
}

TEST(ZANSysCompression, WritesAZlibStream) {
  for (const std::string& data : SampleData()) {
    const Outcome compressed = Compress(data);
    ASSERT_EQ(compressed.status, S_OK);
    ASSERT_GE(compressed.bytes.size(), 6u);
    const auto cmf = static_cast<unsigned char>(compressed.bytes[0]);
    const auto flg = static_cast<unsigned char>(compressed.bytes[1]);
    EXPECT_EQ(cmf & 0x0Fu, 8u) << "deflate method";
    EXPECT_LE(cmf >> 4, 7u) << "window of at most 32 KB";
    EXPECT_EQ((cmf * 256u + flg) % 31u, 0u) << "header check";
    EXPECT_EQ(flg & 0x20u, 0u) << "no preset dictionary";
    EXPECT_EQ(BigEndian32(compressed.bytes, compressed.bytes.size() - 4), Adler32(data)) << "Adler-32 trailer";
  }
}

TEST(ZANSysCompression, CompressesRedundantText) {
  const std::string data(100000, 'x');
  const Outcome compressed = Compress(data);
  ASSERT_EQ(compressed.status, S_OK);
  EXPECT_LT(compressed.bytes.size(), 1000u);
}

TEST(ZANSysCompression, TooSmallCompressionTargetIsInsufficientBuffer) {
  const std::string data = RandomBytes(5000, 3);
  const Outcome exact = Compress(data);
  ASSERT_EQ(exact.status, S_OK);
  for (const std::uint64_t capacity : {std::uint64_t{0}, std::uint64_t{1}, std::uint64_t{10}, std::uint64_t{4000}}) {
    const Outcome small = Compress(data, capacity);
    EXPECT_EQ(small.status, ZANZ_E_INSUFFICIENTBUFFER) << capacity;
    EXPECT_TRUE(small.bytes.empty()) << "the length is 0 after a failure";
  }
}

TEST(ZANSysCompression, OpensHandMadeStoredStreams) {
  for (const std::string& data : {std::string(), std::string("abc"), RandomBytes(65535, 4), RandomBytes(200000, 5)}) {
    const Outcome back = Uncompress(StoredZlibStream(data), data.size());
    EXPECT_EQ(back.status, S_OK) << data.size();
    EXPECT_EQ(back.bytes, data);
  }
}

// Streams written by zlib's compress at the default level (zlib 1.2.13, python3 -c
// "import zlib; print(zlib.compress(b'...').hex())").
TEST(ZANSysCompression, OpensStreamsWrittenByZlib) {
  EXPECT_EQ(Uncompress(Bytes({0x78, 0x9c, 0x4b, 0x04, 0x00, 0x00, 0x62, 0x00, 0x62}), 1).bytes, "a");
  EXPECT_EQ(Uncompress(Bytes({0x78, 0x9c, 0xcb, 0x48, 0xcd, 0xc9, 0xc9, 0x07, 0x00, 0x06, 0x2c, 0x02, 0x15}), 5).bytes,
            "hello");
  EXPECT_EQ(Uncompress(Bytes({0x78, 0x9c, 0x03, 0x00, 0x00, 0x00, 0x00, 0x01}), 0).status, S_OK);
}

TEST(ZANSysCompression, ShorterOutputThanTheCapacitySucceedsWithItsLength) {
  const std::string data = "a mapping document";
  const Outcome back = Uncompress(Compress(data).bytes, 1000);
  EXPECT_EQ(back.status, S_OK);
  EXPECT_EQ(back.bytes, data);
}

TEST(ZANSysCompression, TooSmallDecompressionTargetIsInsufficientBuffer) {
  const std::string data = RandomText(10000, "abcdef", 6);
  const std::string stream = Compress(data).bytes;
  EXPECT_EQ(Uncompress(stream, data.size()).status, S_OK);
  for (const std::uint64_t capacity : {std::uint64_t{1}, std::uint64_t{data.size() - 1}}) {
    const Outcome back = Uncompress(stream, capacity);
    EXPECT_EQ(back.status, ZANZ_E_INSUFFICIENTBUFFER) << capacity;
    EXPECT_TRUE(back.bytes.empty());
  }
  // With no room at all, zlib's uncompress calls a stream of more than one byte bad data.
  const Outcome none = Uncompress(stream, 0);
  EXPECT_EQ(none.status, ZANZ_E_BADDATA);
  EXPECT_TRUE(none.bytes.empty());
}

TEST(ZANSysCompression, CorruptStreamsAreBadData) {
  const std::string data = RandomText(2000, "abcdefghij", 7);
  const std::string stream = Compress(data).bytes;
  ASSERT_EQ(Uncompress(stream, data.size()).status, S_OK);

  std::string badAdler = stream;
  badAdler.back() = static_cast<char>(badAdler.back() ^ 1);
  std::string badCheck = stream;
  badCheck[1] = static_cast<char>(badCheck[1] ^ 1);
  std::string badMethod = stream;
  badMethod[0] = 0x77;                                              // method 7
  std::string dictionary = Bytes({0x78, 0xBB}) + stream.substr(2);  // FDICT set, header check kept
  ASSERT_EQ((0x78u * 256u + 0xBBu) % 31u, 0u);

  for (const std::string& bad : {std::string(), std::string("x"), stream.substr(0, 5),
                                 stream.substr(0, stream.size() / 2), stream.substr(0, stream.size() - 1), badAdler,
                                 badCheck, badMethod, dictionary, RandomBytes(3000, 8), std::string(64, '\0')}) {
    const Outcome back = Uncompress(bad, data.size() + 100);
    EXPECT_EQ(back.status, ZANZ_E_BADDATA) << bad.size();
    EXPECT_TRUE(back.bytes.empty());
  }
}

TEST(ZANSysCompression, BytesAfterTheEndOfTheStreamAreIgnored) {
  const std::string data = "trailing bytes follow";
  const Outcome back = Uncompress(Compress(data).bytes + "garbage after the stream", 100);
  EXPECT_EQ(back.status, S_OK);
  EXPECT_EQ(back.bytes, data);
}

TEST(ZANSysCompression, NullPointersWithLengthsAreRefused) {
  unsigned char buffer[64] = {};
  std::uint64_t length = sizeof buffer;
  EXPECT_EQ(ZANSysCompress(nullptr, 10, buffer, length), ZAN_E_INVALIDARG);
  EXPECT_EQ(length, 0u);
  length = 64;
  EXPECT_EQ(ZANSysCompress(buffer, 10, nullptr, length), ZAN_E_INVALIDARG);
  EXPECT_EQ(length, 0u);
  length = 64;
  EXPECT_EQ(ZANSysUncompress(nullptr, 10, buffer, length), ZAN_E_INVALIDARG);
  EXPECT_EQ(length, 0u);
  length = 64;
  EXPECT_EQ(ZANSysUncompress(buffer, 10, nullptr, length), ZAN_E_INVALIDARG);
  EXPECT_EQ(length, 0u);
}

TEST(ZANSysCompression, EmptyBuffersMayBeNull) {
  unsigned char target[64];
  std::uint64_t length = sizeof target;
  ASSERT_EQ(ZANSysCompress(nullptr, 0, target, length), S_OK);
  const std::string stream(reinterpret_cast<const char*>(target), length);
  std::uint64_t produced = 0;
  EXPECT_EQ(ZANSysUncompress(In(stream), stream.size(), nullptr, produced), S_OK);
  EXPECT_EQ(produced, 0u);
  length = 0;
  EXPECT_EQ(ZANSysCompress(nullptr, 0, nullptr, length), ZANZ_E_INSUFFICIENTBUFFER);
  length = 0;
  EXPECT_EQ(ZANSysUncompress(nullptr, 0, nullptr, length), ZANZ_E_BADDATA);
}

TEST(ZANSysCompression, ThreadsCompressAndDecompressAtTheSameTime) {
  constexpr int kThreads = 4;
  std::vector<int> failures(kThreads, 0);
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &failures] {
      for (int i = 0; i < 40; ++i) {
        const std::string data = RandomText(20000 + static_cast<std::size_t>(i) * 37, "abcdefgh0123",
                                            static_cast<std::uint32_t>(t * 1000 + i));
        std::string target(ZANSysCompressBound(data.size()), '\0');
        std::uint64_t length = target.size();
        if (ZANSysCompress(In(data), data.size(), reinterpret_cast<unsigned char*>(target.data()), length) != S_OK) {
          ++failures[static_cast<std::size_t>(t)];
          continue;
        }
        std::string back(data.size(), '\0');
        std::uint64_t produced = back.size();
        if (ZANSysUncompress(reinterpret_cast<const unsigned char*>(target.data()), length,
                             reinterpret_cast<unsigned char*>(back.data()), produced) != S_OK ||
            produced != data.size() || back != data) {
          ++failures[static_cast<std::size_t>(t)];
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (int t = 0; t < kThreads; ++t) EXPECT_EQ(failures[static_cast<std::size_t>(t)], 0) << "thread " << t;
}

}  // namespace
