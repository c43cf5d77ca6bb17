// Damaged streams: the decompression service and the envelope answer exactly as zlib's uncompress
// does, on tens of thousands of streams damaged in every way (bits flipped, cut short, bytes
// appended or overwritten) and opened into targets smaller than, equal to and larger than their
// text. Every expectation comes from zlib itself; the library is only called to be checked.
#include <KOVAMappingServices/KOVALogCapture.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/ZANSysCompression.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include "tests/env/EnvelopeTestUtil.h"
#include "tests/support/ZlibReference.h"

#include <zlib.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using kova::test::AsBytes;
using kova::test::Base64Encode;
using kova::test::StatusOfZlib;
using kova::test::ZlibCompress;
using kova::test::ZlibOutcome;
using kova::test::ZlibUncompress;

// A mapping document of about size bytes: references with identifiers, stamps, some non-ASCII
// custom data and instances, drawn from seed.
std::string Document(std::size_t size, std::uint32_t seed) {
  std::mt19937 rng(seed);
  const auto number = [&rng](std::uint32_t below) { return std::to_string(rng() % below); };
  std::string out = "{\"version\":12,\"references\":[";
  while (out.size() < size) {
    out += "{\"kOVAId\":\"K-" + number(100000) + "\",\"PlexoId\":\"P" + number(1000000) + "\",\"ksStamp\":\"V2_" +
           number(1u << 30) + "\"";
    if (rng() % 3 == 0) out += ",\"customData\":\"caf\xC3\xA9 \xE2\x82\xAC" + number(1000) + "\"";
    out += ",\"instances\":[";
    for (std::uint32_t i = rng() % 4; i > 0; --i) {
      out += "{\"kOVAId\":\"I-" + number(100000) + "\",\"refId\":\"R" + number(500) + "\"}";
      if (i > 1) out += ",";
    }
    out += "]},";
  }
  out += "{}]}";
  // Small documents are cut to their size: what matters is the bytes, not the JSON.
  if (size < 64) out.resize(size);
  return out;
}

std::string ServiceCompress(const std::string& data) {
  std::string out(ZANSysCompressBound(data.size()), '\0');
  std::uint64_t length = out.size();
  EXPECT_EQ(ZANSysCompress(AsBytes(data), data.size(), reinterpret_cast<unsigned char*>(out.data()), length), S_OK);
  out.resize(length);
  return out;
}

// The name the envelope logs for a failed decompression.
std::string NameOf(int zlibResult) {
  switch (zlibResult) {
    case Z_MEM_ERROR: return "ZANZ_E_OUTOFMEMORY";
    case Z_BUF_ERROR: return "ZANZ_E_INSUFFICIENTBUFFER";
    default: return "ZANZ_E_BADDATA";
  }
}

// Documents from one byte to a few hundred kilobytes, each compressed one way: zlib at levels 6,
// 1, 9 and 0 (stored blocks), and the service's own compression.
struct Sample {
  std::string document;
  std::string stream;
};

std::vector<Sample> Samples() {
  const std::vector<std::size_t> sizes = {1,     2,     5,     17,    40,    63,     100,    180,   300,  512,
                                          777,   1000,  1500,  2300,  3000,  4096,   5500,   7000,  9000, 12000,
                                          20000, 33000, 47000, 65000, 80000, 150000, 260000, 400000};
  std::vector<Sample> samples;
  std::uint32_t seed = 1000;
  for (const std::size_t size : sizes) {
    const std::string document = Document(size, ++seed);
    const int variant = static_cast<int>(seed % 5);
    std::string stream;
    switch (variant) {
      case 0: stream = ServiceCompress(document); break;
      case 1: stream = ZlibCompress(document, 1); break;
      case 2: stream = ZlibCompress(document, 9); break;
      case 3: stream = size <= 20000 ? ZlibCompress(document, 0) : ZlibCompress(document, 6); break;
      default: stream = ZlibCompress(document, 6); break;
    }
    samples.push_back({document, stream});
  }
  return samples;
}

// Damage of every kind, drawn from rng.
std::string Damage(const std::string& stream, std::mt19937& rng) {
  std::string out = stream;
  const auto at = [&rng](std::size_t size) { return size == 0 ? std::size_t{0} : rng() % size; };
  const auto flip = [&](std::string& s, std::size_t where) {
    if (!s.empty()) s[where] = static_cast<char>(s[where] ^ (1u << (rng() % 8)));
  };
  const auto randomBytes = [&rng](std::size_t n) {
    std::string bytes(n, '\0');
    for (char& c : bytes) c = static_cast<char>(rng() & 0xFFu);
    return bytes;
  };
  switch (rng() % 12) {
    case 0:  // intact
      break;
    case 1:
    case 2:  // one bit anywhere
      flip(out, at(out.size()));
      break;
    case 3:  // one bit in the header or the checksum
      flip(out, rng() % 2 == 0 ? at(std::min<std::size_t>(out.size(), 2))
                               : out.size() - 1 - at(std::min<std::size_t>(out.size(), 4)));
      break;
    case 4:  // several bits
      for (std::uint32_t n = 2 + rng() % 6; n > 0; --n) flip(out, at(out.size()));
      break;
    case 5:  // cut anywhere
      out.resize(at(out.size()));
      break;
    case 6: {  // cut in the header, at the end of the compressed data or in the checksum
      const std::size_t keep[] = {0, 1, 2, 3};
      out.resize(rng() % 2 == 0 ? keep[rng() % 4] : out.size() - 1 - std::min<std::size_t>(out.size() - 1, rng() % 6));
      break;
    }
    case 7:  // bytes after the stream
      out += randomBytes(1 + rng() % 32);
      break;
    case 8:  // cut, then other bytes in place of the end
      out.resize(at(out.size()));
      out += randomBytes(1 + rng() % 16);
      break;
    case 9: {  // a run of bytes overwritten, with zeros or at random
      const std::size_t from = at(out.size());
      const std::size_t n = std::min<std::size_t>(out.size() - from, 1 + rng() % 8);
      const bool zeros = rng() % 2 == 0;
      for (std::size_t i = 0; i < n; ++i) out[from + i] = zeros ? '\0' : static_cast<char>(rng() & 0xFFu);
      break;
    }
    case 10:  // one bit, then bytes after the stream
      flip(out, at(out.size()));
      out += randomBytes(1 + rng() % 8);
      break;
    default:  // one bit, then cut
      flip(out, at(out.size()));
      out.resize(out.size() - std::min<std::size_t>(out.size(), rng() % 8));
      break;
  }
  return out;
}

// A capacity around the real size n: below, at or above it, and the extremes.
std::size_t Capacity(std::size_t n, std::mt19937& rng) {
  switch (rng() % 10) {
    case 0: return rng() % 8 == 0 ? 0 : 1;
    case 1: return n == 0 ? 0 : n - 1;
    case 2:
    case 3: return n;
    case 4: return n + 1;
    case 5: return n + 1 + rng() % 1000;
    case 6: return n / 2;
    case 7: return n == 0 ? 0 : rng() % n;
    case 8: return 2 * n + 3;
    default: return n > 10 ? n - 1 - rng() % std::min<std::size_t>(n - 1, 64) : n;
  }
}

// How many cases a sample gets: many for small documents, fewer for large ones.
int CasesFor(std::size_t size) {
  if (size <= 12000) return 1000;
  if (size <= 100000) return 400;
  return 100;
}

TEST(EnvelopeDamage, ServiceAnswersAsZlibUncompress) {
  const std::vector<Sample> samples = Samples();
  std::mt19937 rng(20240601);
  std::map<int, int> seen;
  int cases = 0;
  int mismatches = 0;
  for (std::size_t s = 0; s < samples.size(); ++s) {
    const Sample& sample = samples[s];
    for (int c = CasesFor(sample.document.size()); c > 0; --c) {
      const std::string damaged = Damage(sample.stream, rng);
      const std::size_t capacity = Capacity(sample.document.size(), rng);
      const ZlibOutcome expected = ZlibUncompress(damaged, capacity);
      ++seen[expected.result];
      ++cases;

      std::vector<unsigned char> target(std::max<std::size_t>(capacity, 1));
      std::uint64_t length = capacity;
      const HRESULT status = ZANSysUncompress(AsBytes(damaged), damaged.size(), target.data(), length);
      const std::string produced(reinterpret_cast<const char*>(target.data()),
                                 std::min<std::uint64_t>(length, capacity));
      const bool agrees =
          status == StatusOfZlib(expected.result) &&
          (expected.result == Z_OK ? length == expected.bytes.size() && produced == expected.bytes : length == 0);
      if (!agrees && ++mismatches <= 10) {
        ADD_FAILURE() << "sample " << s << " (" << sample.document.size() << " bytes), case " << c << ": stream of "
                      << damaged.size() << " bytes into " << capacity << ": zlib " << expected.result << " ("
                      << expected.bytes.size() << " bytes), service 0x" << std::hex
                      << static_cast<std::uint32_t>(status) << std::dec << " (" << length << " bytes)";
      }
    }
  }
  EXPECT_EQ(mismatches, 0);
  EXPECT_GE(cases, 20000);
  EXPECT_GE(seen[Z_OK], 100);
  EXPECT_GE(seen[Z_BUF_ERROR], 100);
  EXPECT_GE(seen[Z_DATA_ERROR], 100);
  std::printf("service: %d cases, Z_OK %d, Z_BUF_ERROR %d, Z_DATA_ERROR %d\n", cases, seen[Z_OK], seen[Z_BUF_ERROR],
              seen[Z_DATA_ERROR]);
}

// What an envelope's prefix declares, read as the envelope reader reads it: the digits from
// position 4 of the prefix, so that after a one-digit version the first size digit is skipped.
// Nothing when no digit is left there.
std::optional<std::uint64_t> DeclaredSize(const std::string& version, const std::string& sizeText) {
  const std::string prefix = "V" + version + ":" + sizeText + ":";
  std::uint64_t value = 0;
  bool digits = false;
  for (std::size_t i = 4; i < prefix.size() && prefix[i] >= '0' && prefix[i] <= '9'; ++i) {
    value = value * 10 + static_cast<std::uint64_t>(prefix[i] - '0');
    digits = true;
  }
  if (!digits) return std::nullopt;
  return value;
}

struct Line {
  std::string message;
  bool reason;
  bool operator==(const Line&) const = default;
};

TEST(EnvelopeDamage, EnvelopeStatusAndLinesFollowZlibUncompress) {
  const std::vector<Sample> samples = Samples();
  std::mt19937 rng(777);
  std::map<int, int> seen;
  int cases = 0;
  int withoutDecompression = 0;
  int mismatches = 0;
  for (std::size_t s = 0; s < samples.size(); ++s) {
    const Sample& sample = samples[s];
    const std::size_t n = sample.document.size();
    for (int c = CasesFor(n) / 3; c > 0; --c) {
      const std::string damaged = Damage(sample.stream, rng);
      const std::string payload = Base64Encode(damaged);
      // A two-digit version declares the capacity itself. A one-digit version loses the first size
      // digit: written with an extra leading digit it declares the capacity, written plainly it
      // declares the real size without its first digit (nothing at all for a one-digit size).
      std::string version = "12";
      std::string sizeText = std::to_string(Capacity(n, rng));
      switch (rng() % 4) {
        case 0:
          version = "9";
          sizeText.insert(0, std::to_string(1 + rng() % 9));
          break;
        case 1:
          version = "9";
          sizeText = std::to_string(n);
          break;
        default: break;
      }
      const std::string envelope =
          std::string("V").append(version).append(":").append(sizeText).append(":").append(payload);
      const std::optional<std::uint64_t> declared = DeclaredSize(version, sizeText);
      ++cases;

      ZANUnicodeString text(envelope);
      KOVALogCapture capture(KOVALogCapture::Wants::kEverything);
      HRESULT status = S_OK;
      bool threw = false;
      try {
        status = KOVAMappingParser::TryDecompressMT(text);
      } catch (const std::invalid_argument&) {
        threw = true;
      }
      std::vector<Line> lines;
      for (const KOVALogLine& line : capture.Lines()) {
        EXPECT_EQ(line.context, "");
        lines.push_back({line.message, line.reason});
      }

      // The expectation, from the prefix and zlib alone.
      bool expectThrow = false;
      HRESULT expectedStatus = E_FAIL;
      std::string expectedText = payload;
      std::vector<Line> expectedLines;
      if (!declared) {
        expectThrow = true;  // no digit to read a size from: the text is left as it was
        expectedText = envelope;
        ++withoutDecompression;
      } else if (*declared == 0) {
        ++withoutDecompression;  // a size of 0 is no envelope: nothing is opened, nothing logged
      } else {
        const ZlibOutcome zlib = ZlibUncompress(damaged, static_cast<std::size_t>(*declared));
        ++seen[zlib.result];
        expectedStatus = StatusOfZlib(zlib.result);
        if (zlib.result == Z_OK) {
          expectedText = zlib.bytes;
          expectedLines = {{"DECOMPRESSED STRING:", false}, {zlib.bytes, false}};
        } else {
          expectedLines = {{"DECOMPRESSION", true}, {NameOf(zlib.result), true}};
        }
      }

      const bool agrees = threw == expectThrow && (threw || status == expectedStatus) && lines == expectedLines &&
                          text.ConvertToChar() == expectedText;
      if (!agrees && ++mismatches <= 10) {
        ADD_FAILURE() << "sample " << s << " (" << n << " bytes), case " << c << ": prefix V" << version << ":"
                      << sizeText << ": stream of " << damaged.size() << " bytes: expected status 0x" << std::hex
                      << static_cast<std::uint32_t>(expectedStatus) << ", got 0x" << static_cast<std::uint32_t>(status)
                      << std::dec << (threw ? " (threw)" : "") << "; " << lines.size() << " lines, expected "
                      << expectedLines.size();
      }
    }
  }
  EXPECT_EQ(mismatches, 0);
  EXPECT_GE(cases, 7000);
  EXPECT_GE(seen[Z_OK], 100);
  EXPECT_GE(seen[Z_BUF_ERROR], 100);
  EXPECT_GE(seen[Z_DATA_ERROR], 100);
  EXPECT_GE(withoutDecompression, 10);
  std::printf("envelope: %d cases, Z_OK %d, Z_BUF_ERROR %d, Z_DATA_ERROR %d, not opened %d\n", cases, seen[Z_OK],
              seen[Z_BUF_ERROR], seen[Z_DATA_ERROR], withoutDecompression);
}

}  // namespace
