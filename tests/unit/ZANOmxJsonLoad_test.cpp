// Loading JSON text: what loads, what is refused, and what a refused load leaves behind.
#include <KOVAMappingServices/ZANOmxJson.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

// prefix followed by the decimal form of n.
std::string Numbered(const char* prefix, long long n) {
  std::string text(prefix);
  text += std::to_string(n);
  return text;
}

HRESULT Load(ZANOmxJsonObject& object, const std::string& text) {
  return object.LoadFromString(text.data(), text.size());
}

std::string Text(const ZANOmxJsonObject& object) { return object.ToString().ConvertToChar(); }

// A document whose content a refused load must leave in place.
ZANOmxJsonObject Sentinel() {
  ZANOmxJsonObject object;
  const std::string text = R"({"kept":true})";
  EXPECT_EQ(Load(object, text), S_OK);
  return object;
}

TEST(ZANOmxJsonLoad, EmptyAndBlankTextsLoadAsEmptyObject) {
  for (const std::string& text : {std::string(), std::string(" "), std::string(" \t\r\n  \n")}) {
    ZANOmxJsonObject object = Sentinel();
    EXPECT_EQ(Load(object, text), S_OK) << "text: [" << text << "]";
    EXPECT_TRUE(object.IsValidJsonObject());
    EXPECT_TRUE(object.IsEmpty());
    EXPECT_FALSE(object.Has("kept"));
    EXPECT_EQ(Text(object), "{}");
  }
}

TEST(ZANOmxJsonLoad, NullPointerTexts) {
  ZANOmxJsonObject object = Sentinel();
  EXPECT_EQ(object.LoadFromString(nullptr, 0), S_OK);
  EXPECT_TRUE(object.IsEmpty());
  EXPECT_TRUE(object.IsValidJsonObject());

  ZANOmxJsonObject other = Sentinel();
  EXPECT_EQ(other.LoadFromString(nullptr, 5), ZAN_E_INVALIDARG);
  EXPECT_TRUE(other.Has("kept"));
}

TEST(ZANOmxJsonLoad, FormFeedAndVerticalTabAreNotBlanks) {
  for (const std::string& text : {std::string("\f"), std::string("\v"), std::string("{}\f")}) {
    ZANOmxJsonObject object = Sentinel();
    EXPECT_EQ(Load(object, text), ZAN_E_INVALIDDATA);
    EXPECT_TRUE(object.Has("kept"));
  }
}

TEST(ZANOmxJsonLoad, OneLeadingByteOrderMarkIsSkipped) {
  ZANOmxJsonObject object;
  ASSERT_EQ(Load(object, "\xEF\xBB\xBF{\"a\":1}"), S_OK);
  int a = 0;
  EXPECT_EQ(object.GetInteger("a", a), S_OK);
  EXPECT_EQ(a, 1);

  ZANOmxJsonObject blank = Sentinel();
  EXPECT_EQ(Load(blank, "\xEF\xBB\xBF"), S_OK);
  EXPECT_TRUE(blank.IsEmpty());
  EXPECT_TRUE(blank.IsValidJsonObject());

  ZANOmxJsonObject blank2 = Sentinel();
  EXPECT_EQ(Load(blank2, "\xEF\xBB\xBF \r\n"), S_OK);
  EXPECT_TRUE(blank2.IsEmpty());
}

TEST(ZANOmxJsonLoad, OnlyOneByteOrderMarkAndOnlyAtTheStart) {
  for (const std::string& text : {std::string("\xEF\xBB\xBF\xEF\xBB\xBF{}"), std::string(" \xEF\xBB\xBF{}"),
                                  std::string("{}\xEF\xBB\xBF"), std::string("\xEF\xBB{}")}) {
    ZANOmxJsonObject object = Sentinel();
    EXPECT_EQ(Load(object, text), ZAN_E_INVALIDDATA) << text;
    EXPECT_TRUE(object.Has("kept"));
  }
}

TEST(ZANOmxJsonLoad, RootMayBeAnyValue) {
  struct Case {
    std::string text;
    std::string written;
  };
  const Case cases[] = {
      {"[1,2]", "[1,2]"},
      {" \"s\" ", "\"s\""},
      {"42", "42"},
      {"true", "true"},
      {"false", "false"},
      {"null", "null"},
      {"-0", "-0"},
      {" 1e400 ", "1e400"},
      {"-12.50E+3", "-12.50E+3"},
      {"[]", "[]"},
      {"\"\\u00e9\"", "\"\xC3\xA9\""},
  };
  for (const Case& c : cases) {
    ZANOmxJsonObject object;
    ASSERT_EQ(Load(object, c.text), S_OK) << c.text;
    EXPECT_FALSE(object.IsValidJsonObject()) << c.text;
    EXPECT_TRUE(object.IsEmpty()) << c.text;
    EXPECT_FALSE(object.Has("a"));
    EXPECT_EQ(Text(object), c.written);
    EXPECT_EQ(object.PutInteger("a", 1), ZAN_E_TYPEMISMATCH);
    std::vector<ZANUnicodeString> keys{ZANUnicodeString("untouched")};
    EXPECT_EQ(object.GetKeys(keys), ZAN_E_TYPEMISMATCH);
    ASSERT_EQ(keys.size(), 1u);
    EXPECT_EQ(keys[0], ZANUnicodeString("untouched"));
  }
}

TEST(ZANOmxJsonLoad, ObjectRootIsAValidJsonObject) {
  ZANOmxJsonObject object;
  ASSERT_EQ(Load(object, " { \"a\" : [ 1 , { } ] } "), S_OK);
  EXPECT_TRUE(object.IsValidJsonObject());
  EXPECT_FALSE(object.IsEmpty());
  EXPECT_EQ(Text(object), R"({"a":[1,{}]})");
}

TEST(ZANOmxJsonLoad, LoadReplacesTheContentOfTheHandleOnly) {
  ZANOmxJsonObject object = Sentinel();
  ZANOmxJsonObject earlier = object;
  ASSERT_EQ(Load(object, R"({"b":2})"), S_OK);
  EXPECT_FALSE(object.Has("kept"));
  EXPECT_TRUE(object.Has("b"));
  // Another handle onto the former document still sees it.
  EXPECT_TRUE(earlier.Has("kept"));
}

TEST(ZANOmxJsonLoad, LoadsFromUnicodeString) {
  ZANOmxJsonObject object;
  ASSERT_EQ(object.LoadFromString(ZANUnicodeString("{\"k\":\"\xE2\x82\xAC\"}")), S_OK);
  ZANUnicodeString value;
  ASSERT_EQ(object.GetString("k", value), S_OK);
  EXPECT_EQ(value.ConvertToChar(), "\xE2\x82\xAC");
}

// Malformed texts, each refused with ZAN_E_INVALIDDATA.
const std::vector<std::string>& MalformedTexts() {
  static const std::vector<std::string> texts = {
      // structure
      "{",
      "}",
      "[",
      "]",
      "[1,]",
      "[,1]",
      "{\"a\":1,}",
      "{,}",
      "{\"a\" 1}",
      "{\"a\":}",
      "{a:1}",
      "{1:1}",
      "[1 2]",
      "{\"a\":1 \"b\":2}",
      "[\"a\"",
      "'a'",
      "[1]]",
      "{}}",
      "{\"a\":[1}",
      "[{]}",
      ",",
      ":",
      // trailing content
      "{} x",
      "[1] 2",
      "1 2",
      "\"a\" \"b\"",
      "{}{}",
      "[][]",
      "true false",
      "null,",
      // invalid UTF-8, in and out of strings
      "[\"\xC3\"]",
      "[\"\xFF\"]",
      "[\"\xC0\xAF\"]",
      "[\"\xED\xA0\x80\"]",
      "[\"\xF4\x90\x80\x80\"]",
      "[1]\xFF",
      "{\"\x80\":1}",
      // lone or misordered surrogate escapes
      "[\"\\ud800\"]",
      "[\"\\udc00\"]",
      "[\"\\ud800x\"]",
      "[\"\\ud800\\u0041\"]",
      "[\"\\udbff\\udbff\"]",
      "[\"\\udc00\\ud800\"]",
      "{\"\\udfff\":1}",
      // escapes
      "[\"\\x\"]",
      "[\"\\u12\"]",
      "[\"\\u12G4\"]",
      "[\"\\\"]",
      "[\"\\U0041\"]",
      "[\"\\'\"]",
      // not numbers of JSON
      "[NaN]",
      "[Infinity]",
      "[-Infinity]",
      "NaN",
      "Infinity",
      "[nan]",
      // malformed numbers
      "[01]",
      "[-01]",
      "[00]",
      "[1.]",
      "[+1]",
      "[.5]",
      "[1e]",
      "[1e+]",
      "[1E-]",
      "[-]",
      "[0x10]",
      "[1.5.2]",
      "[--1]",
      "[1.e5]",
      "01",
      "1.",
      "+1",
      "-",
      "[1e5.5]",
      "[2.]",
      // literals
      "[tru]",
      "[truex]",
      "[nul]",
      "[True]",
      "[nulll]",
      "[fals]",
      "[falsey]",
      "nul",
      // a literal alone with letters after it
      "nulll",
      "truee",
      "falsey",
      "\n \n\tnulll\r\n ",
      "true1",
      // unescaped control characters in strings
      "[\"a\x01b\"]",
      "[\"a\tb\"]",
      "[\"a\nb\"]",
      "[\"\x1F\"]",
      "{\"a\rb\":1}",
      std::string("[\"a\0b\"]", 7),
      // other bytes outside strings
      std::string("[1]\0", 4),
      "[1,#]",
      "/* c */ {}",
  };
  return texts;
}

TEST(ZANOmxJsonLoad, MalformedTextsAreRefusedAndLeaveTheObjectAsItWas) {
  for (const std::string& text : MalformedTexts()) {
    ZANOmxJsonObject object = Sentinel();
    EXPECT_EQ(Load(object, text), ZAN_E_INVALIDDATA) << "text: " << text;
    EXPECT_EQ(Text(object), R"({"kept":true})") << "text: " << text;
  }
}

TEST(ZANOmxJsonLoad, MalformedTextsAreRefusedAfterAHugeNumber) {
  // A number beyond the double range comes first, so that the whole text is read by the walk
  // that keeps number texts; it must refuse the same texts.
  for (const std::string& text : MalformedTexts()) {
    for (const std::string& wrapped : {"[1e400," + text + "]", "{\"n\":1e400,\"v\":" + text + "}"}) {
      ZANOmxJsonObject object = Sentinel();
      EXPECT_EQ(Load(object, wrapped), ZAN_E_INVALIDDATA) << "text: " << wrapped;
      EXPECT_TRUE(object.Has("kept"));
    }
  }
}

TEST(ZANOmxJsonLoad, MalformedTextsAreRefusedInADocumentWithReals) {
  for (const std::string& text : MalformedTexts()) {
    const std::string wrapped = "[0.5,-0," + text + "]";
    ZANOmxJsonObject object = Sentinel();
    EXPECT_EQ(Load(object, wrapped), ZAN_E_INVALIDDATA) << "text: " << wrapped;
    EXPECT_TRUE(object.Has("kept"));
  }
}

TEST(ZANOmxJsonLoad, NumberRootsWithContentAfterThemAreRefused) {
  for (const char* text : {"1e400 2", "1e400 x", "-0 1", "-0 -0", "1.5 [", "1e400]", "1e400,", "0.5 \"a\"",
                           "1e400 \xEF\xBB\xBF", "01 ", "-0.0 {}", "1e400 1e400"}) {
    ZANOmxJsonObject object = Sentinel();
    EXPECT_EQ(Load(object, text), ZAN_E_INVALIDDATA) << text;
    EXPECT_TRUE(object.Has("kept"));
  }
}

TEST(ZANOmxJsonLoad, SurrogatePairsAndEscapesDecode) {
  // With and without a real number in the document (the two ways a document is read).
  for (const std::string& extra : {std::string(), std::string(",\"r\":1.5")}) {
    ZANOmxJsonObject object;
    const std::string text = R"({"s":"\ud83d\ude00 \u00e9\u20AC \"\\\/\b\f\n\r\t","\u006b":1)" + extra + "}";
    ASSERT_EQ(Load(object, text), S_OK) << text;
    ZANUnicodeString s;
    ASSERT_EQ(object.GetString("s", s), S_OK);
    EXPECT_EQ(s.ConvertToChar(), "\xF0\x9F\x98\x80 \xC3\xA9\xE2\x82\xAC \"\\/\b\f\n\r\t");
    int k = 0;
    EXPECT_EQ(object.GetInteger("k", k), S_OK);
    EXPECT_EQ(k, 1);
  }
}

TEST(ZANOmxJsonLoad, RawUtf8TextLoads) {
  ZANOmxJsonObject object;
  ASSERT_EQ(Load(object, "{\"cl\xC3\xA9\":\"\xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x98\x80\"}"), S_OK);
  ZANUnicodeString s;
  ASSERT_EQ(object.GetString(ZANUnicodeString("cl\xC3\xA9"), s), S_OK);
  EXPECT_EQ(s.ConvertToChar(), "\xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x98\x80");
}

TEST(ZANOmxJsonLoad, NulCharacterInStringsAndKeys) {
  for (const std::string& extra : {std::string(), std::string(",\"r\":1.5")}) {
    ZANOmxJsonObject object;
    ASSERT_EQ(Load(object, R"({"a\u0000b":"x\u0000y")" + extra + "}"), S_OK);
    const ZANUnicodeString key(std::string("a\0b", 3));
    ZANUnicodeString value;
    ASSERT_EQ(object.GetString(key, value), S_OK);
    EXPECT_EQ(value.ConvertToChar(), std::string("x\0y", 3));
    EXPECT_FALSE(object.Has("a"));
    std::vector<ZANUnicodeString> keys;
    ASSERT_EQ(object.GetKeys(keys), S_OK);
    EXPECT_EQ(keys[0].ConvertToChar(), std::string("a\0b", 3));
  }
}

TEST(ZANOmxJsonLoad, DuplicateKeysLastValueWinsAtTheFirstPosition) {
  for (const std::string& extra : {std::string(), std::string(",\"r\":1.5")}) {
    ZANOmxJsonObject object;
    ASSERT_EQ(Load(object, R"({"a":1,"b":{"x":1},"c":3,"a":"last","b":[2])" + extra + "}"), S_OK);
    std::vector<ZANUnicodeString> keys;
    ASSERT_EQ(object.GetKeys(keys), S_OK);
    ASSERT_GE(keys.size(), 3u);
    EXPECT_EQ(keys[0], ZANUnicodeString("a"));
    EXPECT_EQ(keys[1], ZANUnicodeString("b"));
    EXPECT_EQ(keys[2], ZANUnicodeString("c"));
    EXPECT_EQ(keys.size(), extra.empty() ? 3u : 4u);
    ZANUnicodeString a;
    EXPECT_EQ(object.GetString("a", a), S_OK);
    EXPECT_EQ(a, ZANUnicodeString("last"));
    EXPECT_EQ(Text(object), std::string(R"({"a":"last","b":[2],"c":3)") + extra + "}");
  }
}

TEST(ZANOmxJsonLoad, DuplicateKeysInALargeObject) {
  // Enough members for the object to be indexed.
  std::string text = "{";
  for (int i = 0; i < 40; ++i) text += Numbered("\"k", i) + Numbered("\":", i) + ",";
  text += "\"k5\":\"five\",\"k39\":{\"x\":true},\"k0\":-1}";
  ZANOmxJsonObject object;
  ASSERT_EQ(Load(object, text), S_OK);
  std::vector<ZANUnicodeString> keys;
  ASSERT_EQ(object.GetKeys(keys), S_OK);
  ASSERT_EQ(keys.size(), 40u);
  for (int i = 0; i < 40; ++i) EXPECT_EQ(keys[i], ZANUnicodeString(Numbered("k", i).c_str()));
  ZANUnicodeString five;
  EXPECT_EQ(object.GetString("k5", five), S_OK);
  EXPECT_EQ(five, ZANUnicodeString("five"));
  int k0 = 0;
  EXPECT_EQ(object.GetInteger("k0", k0), S_OK);
  EXPECT_EQ(k0, -1);
  ZANOmxJsonObject k39;
  EXPECT_EQ(object.GetJsonObject("k39", k39), S_OK);
  EXPECT_TRUE(k39.Has("x"));
  int k20 = 0;
  EXPECT_EQ(object.GetInteger("k20", k20), S_OK);
  EXPECT_EQ(k20, 20);
}

TEST(ZANOmxJsonLoad, NumbersOfAnySizeLoadWithTheirText) {
  const std::string thousandDigits = "9" + std::string(999, '7');
  const std::string numbers[] = {thousandDigits,
                                 "-" + thousandDigits,
                                 "1e400",
                                 "-1e400",
                                 "1e-400",
                                 "-0",
                                 "1E+2",
                                 "0.000",
                                 "18446744073709551615",
                                 "18446744073709551616",
                                 "-9223372036854775808",
                                 "-9223372036854775809",
                                 "123456789.123456789e-5"};
  for (const std::string& n : numbers) {
    ZANOmxJsonObject object;
    ASSERT_EQ(Load(object, "{\"n\":" + n + "}"), S_OK) << n;
    ZANUnicodeString text;
    ASSERT_EQ(object.GetNumberText("n", text), S_OK);
    EXPECT_EQ(text.ConvertToChar(), n);
    EXPECT_EQ(Text(object), "{\"n\":" + n + "}");
  }
}

TEST(ZANOmxJsonLoad, NegativeZeroKeepsItsSignNextToOtherZeros) {
  // Texts with "-0" inside strings too, and plain zeros: only the number token -0 is written "-0".
  ZANOmxJsonObject object;
  ASSERT_EQ(Load(object, R"({"s":"a-0,b","z":0,"m":-0,"l":[0,-0 ,-0]})"), S_OK);
  EXPECT_EQ(Text(object), R"({"s":"a-0,b","z":0,"m":-0,"l":[0,-0,-0]})");
  ZANOmxJsonObject plain;
  ASSERT_EQ(Load(plain, R"({"s":"a-0,b","z":0,"d":"-0"})"), S_OK);
  EXPECT_EQ(Text(plain), R"({"s":"a-0,b","z":0,"d":"-0"})");
}

TEST(ZANOmxJsonLoad, TextsBeyondTheReusedBuffersLoad) {
  // More than a mebibyte of text, with and without a real number.
  for (const std::string& extra : {std::string(), std::string(",\"r\":2.5")}) {
    std::string text = "{\"items\":[";
    const int count = 40000;
    for (int i = 0; i < count; ++i) {
      if (i != 0) text += ',';
      text += Numbered("{\"id\":", i) + Numbered(",\"name\":\"item number ", i) + "\"}";
    }
    text += "]" + extra + "}";
    ASSERT_GT(text.size(), std::size_t{1} << 20);
    ZANOmxJsonObject object;
    ASSERT_EQ(Load(object, text), S_OK);
    ZANOmxJsonArray items;
    ASSERT_EQ(object.GetJsonArray("items", items), S_OK);
    ASSERT_EQ(items.Length(), count);
    for (int i : {1, 777, count}) {
      ZANOmxJsonObject item;
      ASSERT_EQ(items.GetJsonObject(i, item), S_OK);
      int id = -1;
      EXPECT_EQ(item.GetInteger("id", id), S_OK);
      EXPECT_EQ(id, i - 1);
      ZANUnicodeString name;
      EXPECT_EQ(item.GetString("name", name), S_OK);
      EXPECT_EQ(name.ConvertToChar(), Numbered("item number ", i - 1));
    }
    EXPECT_EQ(Text(object), text);
  }
}

TEST(ZANOmxJsonLoad, OneDocumentIsReadFromSeveralThreadsAtOnce) {
  std::string text = "{";
  for (int i = 0; i < 100; ++i) text += Numbered(i == 0 ? "\"k" : ",\"k", i) + Numbered("\":{\"v\":", i) + "}";
  text += "}";
  ZANOmxJsonObject object;
  ASSERT_EQ(Load(object, text), S_OK);
  constexpr int kThreads = 4;
  std::vector<int> failures(kThreads, 0);
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &failures, &object, &text] {
      for (int round = 0; round < 50; ++round) {
        for (int i = 0; i < 100; ++i) {
          ZANOmxJsonObject member;
          int v = -1;
          if (object.GetJsonObject(Numbered("k", i).c_str(), member) != S_OK || member.GetInteger("v", v) != S_OK ||
              v != i) {
            ++failures[t];
          }
        }
        if (object.ToString().ConvertToChar() != text) ++failures[t];
      }
    });
  }
  for (std::thread& th : threads) th.join();
  for (int t = 0; t < kThreads; ++t) EXPECT_EQ(failures[t], 0) << "thread " << t;
}

TEST(ZANOmxJsonLoad, DistinctDocumentsLoadOnSeveralThreadsAtOnce) {
  constexpr int kThreads = 4;
  std::vector<int> failures(kThreads, 0);
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &failures] {
      for (int round = 0; round < 200; ++round) {
        const std::string big = round % 50 == 0 ? std::string(1 << 20, ' ') : std::string();
        const std::string real = round % 3 == 0 ? ",\"r\":0.5" : "";
        const std::string text = Numbered("{\"thread\":", t)
                                     .append(Numbered(",\"round\":", round))
                                     .append(Numbered(",\"name\":\"t", t))
                                     .append("\"")
                                     .append(real)
                                     .append("}")
                                     .append(big);
        ZANOmxJsonObject object;
        int thread = -1;
        int r = -1;
        ZANUnicodeString name;
        if (object.LoadFromString(text.data(), text.size()) != S_OK || object.GetInteger("thread", thread) != S_OK ||
            object.GetInteger("round", r) != S_OK || object.GetString("name", name) != S_OK || thread != t ||
            r != round || name.ConvertToChar() != Numbered("t", t)) {
          ++failures[t];
        }
      }
    });
  }
  for (std::thread& th : threads) th.join();
  for (int t = 0; t < kThreads; ++t) EXPECT_EQ(failures[t], 0) << "thread " << t;
}

}  // namespace
