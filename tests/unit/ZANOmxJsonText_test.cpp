// Writing JSON text: compact form, escaping, round trips and the indented form.
#include <KOVAMappingServices/ZANOmxJson.h>

#include <gtest/gtest.h>

#include <string>

namespace {

ZANOmxJsonObject Parse(const std::string& text) {
  ZANOmxJsonObject object;
  EXPECT_EQ(object.LoadFromString(text.data(), text.size()), S_OK) << text;
  return object;
}

std::string Text(const ZANOmxJsonObject& object) { return object.ToString().ConvertToChar(); }

TEST(ZANOmxJsonText, CompactTextKeepsInsertionOrderAndNumberTokens) {
  const std::string text = R"( {
      "zeta" : 1 , "alpha" : [ 1.50 , -0 , 1E+2 , 2e-3 , 123456789012345678901234567890 ] ,
      "mid" : { "b" : null , "a" : true } , "s" : "x y" , "f" : false } )";
  EXPECT_EQ(Text(Parse(text)), R"({"zeta":1,"alpha":[1.50,-0,1E+2,2e-3,123456789012345678901234567890],)"
                               R"("mid":{"b":null,"a":true},"s":"x y","f":false})");
}

TEST(ZANOmxJsonText, OnlyQuoteBackslashAndControlCharactersAreEscaped) {
  ZANOmxJsonObject object;
  std::string raw = "q\" b\\ s/ \b\f\n\r\t";
  raw += '\0';
  raw += "\x01\x1F\x7F \xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80 <>&'";
  ASSERT_EQ(object.PutString("k\"\n", ZANUnicodeString(raw)), S_OK);
  EXPECT_EQ(Text(object),
            "{\"k\\\"\\n\":\"q\\\" b\\\\ s/ \\b\\f\\n\\r\\t\\u0000\\u0001\\u001F\x7F "
            "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80 <>&'\"}");
}

TEST(ZANOmxJsonText, EscapesAtEveryPlaceOfLongStrings) {
  struct Special {
    char c;
    const char* written;
  };
  const Special specials[] = {{'"', "\\\""},       {'\\', "\\\\"},   {'\n', "\\n"}, {'\x01', "\\u0001"},
                              {'\x1F', "\\u001F"}, {'\x7F', "\x7F"}, {' ', " "}};
  for (std::size_t length = 1; length < 48; ++length) {
    for (std::size_t at = 0; at < length; ++at) {
      for (const Special& special : specials) {
        std::string raw(length, 'x');
        raw[at] = special.c;
        raw[length - 1 - at] = raw[length - 1 - at] == 'x' ? '\xC3' : raw[length - 1 - at];
        std::string expected = "[\"";
        for (std::size_t i = 0; i < length; ++i) {
          if (raw[i] == special.c) {
            expected += special.written;
          } else if (raw[i] == '\xC3') {
            expected += "\xC3\xA9";
          } else {
            expected += raw[i];
          }
        }
        expected += "\"]";
        // The lone lead byte stands for the two bytes of U+00E9.
        std::string text;
        for (const char c : raw) {
          if (c == '\xC3') {
            text += "\xC3\xA9";
          } else {
            text += c;
          }
        }
        ZANOmxJsonArray array;
        ASSERT_EQ(array.PutString(ZANUnicodeString(text)), S_OK);
        ASSERT_EQ(array.ToString().ConvertToChar(), expected) << "length " << length << " at " << at;
      }
    }
  }
}

TEST(ZANOmxJsonText, EscapedInputIsWrittenAsRawUtf8) {
  const ZANOmxJsonObject object = Parse(R"({"s":"\u00e9\u4e2d\ud83d\ude00\u0041\/"})");
  EXPECT_EQ(Text(object),
            "{\"s\":\"\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80"
            "A/\"}");
}

TEST(ZANOmxJsonText, RoundTripGivesTheSameDocument) {
  const std::string texts[] = {
      R"({"version":12,"References":[{"IsLocal":false,"PlexoId":"0A1B","kOVAId":"k1",)"
      R"("KOVASynchroStamp":"V2:AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA=","CustomData":"d\u00e9j\u00e0 \"vu\"",)"
      R"("Instances":[{"kOVAId":"i1","PlexoId":"p1","IsLocal":false,"RefId":7,"KOVASynchroStamp":"V2:x"}]}]})",
      R"({"n":[0,-0,1.0,1e400,-1E-7,18446744073709551616],"e":{},"a":[],"z":"\u0000\u001f\\\"","u":"\ud834\udd1e"})",
      R"({"deep":[[[[{"a":[{"b":[null,true,false]}]}]]]]})",
  };
  for (const std::string& text : texts) {
    const ZANOmxJsonObject first = Parse(text);
    const std::string written = Text(first);
    const ZANOmxJsonObject second = Parse(written);
    EXPECT_EQ(Text(second), written);
    EXPECT_EQ(second.PrettyPrint().ConvertToChar(), first.PrettyPrint().ConvertToChar());
  }
}

TEST(ZANOmxJsonText, PrettyPrintIndentsAndReadsBackTheSame) {
  const ZANOmxJsonObject object = Parse(R"({"a":[1,{"b":"c"}],"d":{}})");
  const std::string pretty = object.PrettyPrint().ConvertToChar();
  EXPECT_EQ(pretty,
            "{\n"
            "    \"a\": [\n"
            "        1,\n"
            "        {\n"
            "            \"b\": \"c\"\n"
            "        }\n"
            "    ],\n"
            "    \"d\": {}\n"
            "}");
  EXPECT_EQ(Text(Parse(pretty)), R"({"a":[1,{"b":"c"}],"d":{}})");
}

TEST(ZANOmxJsonText, ArraysWriteTheirElements) {
  ZANOmxJsonArray array;
  ASSERT_EQ(array.PutString(ZANUnicodeString("a\tb")), S_OK);
  ASSERT_EQ(array.PutInteger(0), S_OK);
  EXPECT_EQ(array.ToString().ConvertToChar(), "[\"a\\tb\",0]");
  EXPECT_EQ(array.PrettyPrint().ConvertToChar(), "[\n    \"a\\tb\",\n    0\n]");
}

}  // namespace
