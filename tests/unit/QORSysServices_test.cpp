#include <KOVAMappingServices/QORSysServices.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <optional>
#include <random>
#include <string>

#include "tests/env/EnvelopeTestUtil.h"

namespace {

// Expected values come from: printf %s TEXT | openssl dgst -sha256 -binary | base64
std::string DigestBase64(const std::string& text) {
  unsigned char* digest = nullptr;
  std::int32_t digestLength = 0;
  EXPECT_EQ(QORSysHash_Digest(0, text.data(), static_cast<std::int32_t>(text.size()), &digest, &digestLength), S_OK);
  EXPECT_EQ(digestLength, 32);
  char* b64 = nullptr;
  EXPECT_EQ(QORSysConverter::ConvertToBase64(digest, static_cast<std::uint64_t>(digestLength), b64), S_OK);
  std::string result(b64);
  std::free(digest);
  std::free(b64);
  return result;
}

std::string Decode(const char* text, HRESULT expected = S_OK) {
  unsigned char* bytes = nullptr;
  std::uint64_t length = 77;
  EXPECT_EQ(QORSysConverter::ConvertFromBase64(text, bytes, length), expected) << text;
  if (expected != S_OK) {
    EXPECT_EQ(bytes, nullptr);
    EXPECT_EQ(length, 77u);
    return {};
  }
  std::string result(reinterpret_cast<char*>(bytes), length);
  std::free(bytes);
  return result;
}

TEST(QORSysHash, SelectorZeroIsSha256) {
  EXPECT_EQ(DigestBase64(""), "47DEQpj8HBSa+/TImW+5JCeuQeRkm5NMpJWZG3hSuFU=");
  EXPECT_EQ(DigestBase64("cestamp"), "cHVVv64BBOMfat0AxK0UNt7mdnbhWMECuobH5+Jokws=");
}

TEST(QORSysHash, OtherSelectorsFail) {
  unsigned char* digest = nullptr;
  std::int32_t digestLength = 0;
  EXPECT_TRUE(ZANFailed(QORSysHash_Digest(1, "a", 1, &digest, &digestLength)));
  EXPECT_TRUE(ZANFailed(QORSysHash_Digest(-1, "a", 1, &digest, &digestLength)));
  EXPECT_EQ(digest, nullptr);
  EXPECT_EQ(digestLength, 0);
}

TEST(QORSysConverter, EncodesWithPaddingAndNoLineBreaks) {
  char* text = nullptr;
  const unsigned char ab[] = {'a', 'b'};
  ASSERT_EQ(QORSysConverter::ConvertToBase64(ab, 2, text), S_OK);
  EXPECT_STREQ(text, "YWI=");
  std::free(text);
  std::string big(1000, 'x');
  ASSERT_EQ(QORSysConverter::ConvertToBase64(reinterpret_cast<const unsigned char*>(big.data()), big.size(), text),
            S_OK);
  EXPECT_EQ(std::strlen(text), 1336u);
  EXPECT_EQ(std::strchr(text, '\n'), nullptr);
  std::free(text);
  ASSERT_EQ(QORSysConverter::ConvertToBase64(nullptr, 0, text), S_OK);
  EXPECT_STREQ(text, "");
  std::free(text);
}

TEST(QORSysConverter, RoundTripsEveryByteValueAndLength) {
  std::string bytes;
  for (int i = 0; i < 256; ++i) bytes.push_back(static_cast<char>(i));
  for (std::size_t n = 0; n <= bytes.size(); n += 37) {
    char* text = nullptr;
    ASSERT_EQ(QORSysConverter::ConvertToBase64(reinterpret_cast<const unsigned char*>(bytes.data()), n, text), S_OK);
    EXPECT_EQ(Decode(text), bytes.substr(0, n));
    std::free(text);
  }
}

TEST(QORSysConverter, DecodesPaddedText) {
  EXPECT_EQ(Decode("YWI="), "ab");
  EXPECT_EQ(Decode("YQ=="), "a");
  EXPECT_EQ(Decode("YWJj"), "abc");
  EXPECT_EQ(Decode(""), "");
}

TEST(QORSysConverter, RejectsWhatIsNotBase64) {
  Decode("YWI", ZAN_E_INVALIDDATA);    // length not a multiple of four
  Decode("YW=I", ZAN_E_INVALIDDATA);   // padding inside
  Decode("Y===", ZAN_E_INVALIDDATA);   // too much padding
  Decode("YW I", ZAN_E_INVALIDDATA);   // blank
  Decode("YWI\n", ZAN_E_INVALIDDATA);  // line break
  Decode("YW-_", ZAN_E_INVALIDDATA);   // URL-safe alphabet
  Decode("{\"a\":1}", ZAN_E_INVALIDDATA);
  Decode("YQ==YQ==", ZAN_E_INVALIDDATA);  // data after padding
}

// The decoder checks the text while decoding it. Against the test's own strict decoder, which
// looks each character up in the alphabet and decodes group by group (no OpenSSL, nothing of the
// library's): same status, same bytes, for encodings of random bytes and for each of them with one
// character replaced by every byte value, '=' included.
struct Decoded {
  HRESULT status = S_OK;
  std::string bytes;
  bool operator==(const Decoded&) const = default;
};

Decoded ReferenceDecode(const std::string& text) {
  const std::optional<std::string> bytes = kova::test::Base64Decode(text);
  return bytes ? Decoded{S_OK, *bytes} : Decoded{ZAN_E_INVALIDDATA, {}};
}

Decoded LibraryDecode(const std::string& text) {
  unsigned char* bytes = nullptr;
  std::uint64_t length = 0;
  Decoded result;
  result.status = QORSysConverter::ConvertFromBase64(text.data(), text.size(), bytes, length);
  if (result.status == S_OK) {
    result.bytes.assign(reinterpret_cast<char*>(bytes), static_cast<std::size_t>(length));
    std::free(bytes);
  }
  return result;
}

TEST(QORSysConverter, DecodingMatchesAnIndependentDecoder) {
  std::mt19937 random(4242);
  std::size_t accepted = 0;
  std::size_t refused = 0;
  for (std::size_t size = 0; size < 40; ++size) {
    for (int sample = 0; sample < 3; ++sample) {
      std::string bytes(size, '\0');
      for (char& b : bytes) b = static_cast<char>(random());
      const std::string text = kova::test::Base64Encode(bytes);
      ASSERT_EQ(LibraryDecode(text), (Decoded{S_OK, bytes}));
      for (std::size_t position = 0; position < text.size(); ++position) {
        for (int value = 0; value < 256; ++value) {
          std::string changed = text;
          changed[position] = static_cast<char>(value);
          const Decoded expected = ReferenceDecode(changed);
          ASSERT_EQ(LibraryDecode(changed), expected) << changed << " at " << position;
          (expected.status == S_OK ? accepted : refused) += 1;
        }
      }
    }
  }
  // Both outcomes were met many times, trailing bits beyond the last byte among the accepted.
  EXPECT_GT(accepted, 10000u);
  EXPECT_GT(refused, 10000u);
  EXPECT_EQ(LibraryDecode("YR=="), ReferenceDecode("YR=="));
  EXPECT_EQ(LibraryDecode("YR=="), (Decoded{S_OK, "a"}));
}

}  // namespace
