#include <KOVAMappingServices/ZANUnicodeString.h>

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(ZANUnicodeString, DefaultIsEmpty) {
  const ZANUnicodeString s;
  EXPECT_TRUE(s.IsEmpty());
  EXPECT_EQ(s.GetLengthInChar(), 0);
  EXPECT_STREQ(s.CastToCharPtr(), "");
}

TEST(ZANUnicodeString, NarrowFormIsUtf8AndLengthCountsCodePoints) {
  const ZANUnicodeString s(
      "Gr\xC3\xBC\xC3\x9F"
      "e \xE2\x82\xAC \xF0\x9F\x98\x80");  // Grüße € 😀
  EXPECT_EQ(s.GetLengthInChar(), 9);
  EXPECT_EQ(s.GetLengthInByte(), 16u);
  EXPECT_EQ(s.ConvertToChar(),
            "Gr\xC3\xBC\xC3\x9F"
            "e \xE2\x82\xAC \xF0\x9F\x98\x80");
}

TEST(ZANUnicodeString, InvalidBytesBecomeReplacementCharacters) {
  // A lone continuation byte, a truncated 3-byte sequence before an ASCII letter, an overlong
  // encoding of '/', and an encoded surrogate.
  EXPECT_EQ(ZANUnicodeString("a\x80"
                             "b")
                .ConvertToChar(),
            "a\xEF\xBF\xBD"
            "b");
  EXPECT_EQ(ZANUnicodeString("\xE2\x82"
                             "x")
                .ConvertToChar(),
            "\xEF\xBF\xBD"
            "x");
  EXPECT_EQ(ZANUnicodeString("\xC0\xAF").ConvertToChar(), "\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(ZANUnicodeString("\xED\xA0\x80").ConvertToChar(), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(ZANUnicodeString("\xF4\x90\x80\x80").GetLengthInChar(), 4);
  EXPECT_EQ(ZANUnicodeString("\xFF").GetLengthInChar(), 1);
}

TEST(ZANUnicodeString, OrderIsCodePointOrder) {
  EXPECT_LT(ZANUnicodeString("A"), ZANUnicodeString("B"));
  EXPECT_LT(ZANUnicodeString("Z"), ZANUnicodeString("a"));
  EXPECT_LT(ZANUnicodeString("z"), ZANUnicodeString("\xC3\xA9"));                     // U+00E9
  EXPECT_LT(ZANUnicodeString("\xEF\xBF\xBD"), ZANUnicodeString("\xF0\x9F\x98\x80"));  // U+FFFD < U+1F600
  EXPECT_LT(ZANUnicodeString("ab"), ZANUnicodeString("abc"));
  EXPECT_FALSE(ZANUnicodeString("abc") < ZANUnicodeString("abc"));
}

TEST(ZANUnicodeString, NulCharacterIsCountedButEndsTheCharPointer) {
  const std::string bytes("a\0b", 3);
  const ZANUnicodeString s(bytes);
  EXPECT_EQ(s.GetLengthInChar(), 3);
  EXPECT_STREQ(s.CastToCharPtr(), "a");
}

TEST(ZANUnicodeString, SubStringCountsCodePoints) {
  const ZANUnicodeString s(
      "\xC3\xA9t\xC3\xA9"
      "42");  // été42
  EXPECT_EQ(s.SubString(1, 2).ConvertToChar(), "t\xC3\xA9");
  EXPECT_EQ(s.SubString(3, 100).ConvertToChar(), "42");
  EXPECT_EQ(s.SubString(5, 1).ConvertToChar(), "");
  EXPECT_EQ(s.SubString(0, 0).ConvertToChar(), "");
}

TEST(ZANUnicodeString, ConvertToUtf8ReportsLengthThenWrites) {
  const ZANUnicodeString s("x\xC3\xA9");
  std::size_t length = 0;
  EXPECT_EQ(s.ConvertToUTF8(nullptr, length), S_OK);
  EXPECT_EQ(length, 3u);
  std::string buffer(length + 1, '?');
  EXPECT_EQ(s.ConvertToUTF8(buffer.data(), length), S_OK);
  EXPECT_EQ(buffer, std::string("x\xC3\xA9\0", 4));
}

TEST(ZANUnicodeString, BuildFromNumUsesPrintfFormats) {
  ZANUnicodeString s;
  EXPECT_EQ(s.BuildFromNum(-42, "%d"), S_OK);
  EXPECT_EQ(s, "-42");
  EXPECT_EQ(s.BuildFromNum(2.5, "%.1f"), S_OK);
  EXPECT_EQ(s, "2.5");
  EXPECT_EQ(s.BuildFromNum(3.0, "%.1f"), S_OK);
  EXPECT_EQ(s, "3.0");
  EXPECT_EQ(s.BuildFromNum(0.25, "%.1f"), S_OK);  // printf rounds the binary value half to even
  EXPECT_EQ(s, "0.2");
  EXPECT_EQ(s.BuildFromNum(18446744073709551615ull, "%I64u"), S_OK);
  EXPECT_EQ(s, "18446744073709551615");
}

TEST(ZANUnicodeString, BuildFromNumRefusesAFormatThatDoesNotFitTheNumber) {
  ZANUnicodeString s("kept");
  EXPECT_TRUE(ZANFailed(s.BuildFromNum(1.5, "%d")));
  EXPECT_TRUE(ZANFailed(s.BuildFromNum(1, "%s")));
  EXPECT_TRUE(ZANFailed(s.BuildFromNum(1, "%d%d")));
  EXPECT_EQ(s, "kept");
}

TEST(ZANUnicodeString, Concatenation) {
  ZANUnicodeString s("V");
  s += "12";
  const ZANUnicodeString t = s + ":" + ZANUnicodeString("abc");
  EXPECT_EQ(t, "V12:abc");
  EXPECT_EQ(t.GetLengthInChar(), 7);
}

}  // namespace
