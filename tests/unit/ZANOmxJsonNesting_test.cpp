// Deeply nested documents: loaded up to a limit, and never walked with the call stack.
#include <KOVAMappingServices/ZANOmxJson.h>

#include <gtest/gtest.h>

#include <string>

namespace {

std::string NestedArrays(int depth, const std::string& inner) {
  return std::string(static_cast<std::size_t>(depth), '[') + inner + std::string(static_cast<std::size_t>(depth), ']');
}

std::string NestedObjects(int depth, const std::string& inner) {
  std::string text;
  for (int i = 0; i < depth; ++i) text += "{\"a\":";
  text += inner;
  text += std::string(static_cast<std::size_t>(depth), '}');
  return text;
}

HRESULT Load(ZANOmxJsonObject& object, const std::string& text) {
  return object.LoadFromString(text.data(), text.size());
}

TEST(ZANOmxJsonNesting, ThousandLevelsLoadAndWriteBack) {
  // With an integer and with a real inside (the two ways a document is read).
  for (const std::string& inner : {std::string("1"), std::string("1.5")}) {
    for (const std::string& text :
         {NestedArrays(1000, inner), NestedObjects(1000, inner), "{\"x\":" + NestedArrays(999, inner) + "}"}) {
      ZANOmxJsonObject object;
      ASSERT_EQ(Load(object, text), S_OK) << text.substr(0, 20);
      EXPECT_TRUE(object.ToString().ConvertToChar() == text) << text.substr(0, 20);
    }
  }
}

TEST(ZANOmxJsonNesting, TenThousandLevelsAreTheLimit) {
  // Integers only, a real inside, and a huge number first (which has the whole text read by the
  // walk that keeps number texts).
  struct Case {
    std::string before;
    std::string inner;
    std::string after;
  };
  const Case cases[] = {{"", "1", ""}, {"", "1.5", ""}, {"[1e400,", "1", "]"}};
  for (const Case& c : cases) {
    const int levels = c.before.empty() ? 10000 : 9999;  // the wrapping array is one level
    for (const bool objects : {false, true}) {
      const auto text = [&](int depth) {
        return c.before + (objects ? NestedObjects(depth, c.inner) : NestedArrays(depth, c.inner)) + c.after;
      };
      ZANOmxJsonObject object;
      EXPECT_EQ(Load(object, text(levels)), S_OK) << c.before << c.inner << objects;
      EXPECT_TRUE(object.ToString().ConvertToChar() == text(levels));
      EXPECT_EQ(Load(object, text(levels + 1)), ZAN_E_INVALIDDATA) << c.before << c.inner << objects;
      EXPECT_TRUE(object.ToString().ConvertToChar() == text(levels));
    }
  }
}

TEST(ZANOmxJsonNesting, HundredThousandLevelsAreRefusedWithoutCrashing) {
  for (const std::string& inner : {std::string("1"), std::string("1.5"), std::string("1e400")}) {
    for (const std::string& text :
         {NestedArrays(100000, inner), NestedObjects(100000, inner), "[1e400," + NestedArrays(100000, inner) + "]",
          "{\"n\":1e400,\"v\":" + NestedObjects(100000, inner) + "}"}) {
      ZANOmxJsonObject object;
      ASSERT_EQ(object.PutInteger("kept", 1), S_OK);
      EXPECT_EQ(Load(object, text), ZAN_E_INVALIDDATA);
      EXPECT_EQ(object.ToString().ConvertToChar(), R"({"kept":1})");
    }
  }
}

TEST(ZANOmxJsonNesting, UnbalancedDeepTextIsRefused) {
  for (const std::string& text : {std::string(100000, '['), std::string(5000, '[') + std::string(4999, ']'),
                                  std::string(5000, '[') + "1.5" + std::string(4999, ']')}) {
    ZANOmxJsonObject object;
    EXPECT_EQ(Load(object, text), ZAN_E_INVALIDDATA);
    EXPECT_TRUE(object.IsValidJsonObject());
    EXPECT_TRUE(object.IsEmpty());
  }
}

TEST(ZANOmxJsonNesting, DeepTreesBuiltByHandlesAreWrittenCopiedAndFreed) {
  // Deeper than loading accepts: writing, copying and freeing must not recurse.
  const int depth = 100000;
  ZANOmxJsonObject root;
  ZANOmxJsonObject level = root;
  for (int i = 0; i < depth; ++i) {
    ASSERT_EQ(level.PutJsonObject("a", ZANOmxJsonObject()), S_OK);
    ZANOmxJsonObject next;
    ASSERT_EQ(level.GetJsonObject("a", next), S_OK);
    level = next;
  }
  ASSERT_EQ(level.PutInteger("leaf", 7), S_OK);
  level = ZANOmxJsonObject();

  const std::string expected = NestedObjects(depth, "{\"leaf\":7}");
  const std::string text = root.ToString().ConvertToChar();
  EXPECT_TRUE(text == expected);

  // The indented form of such a tree falls back to the compact one.
  EXPECT_TRUE(root.PrettyPrint().ConvertToChar() == expected);

  ZANOmxJsonObject holder;
  ASSERT_EQ(holder.PutJsonObject("copy", root), S_OK);
  root = ZANOmxJsonObject();  // frees the original tree
  EXPECT_TRUE(holder.ToString().ConvertToChar() == "{\"copy\":" + expected + "}");

  ZANOmxJsonObject reloaded;
  EXPECT_EQ(Load(reloaded, text), ZAN_E_INVALIDDATA);
}

TEST(ZANOmxJsonNesting, ModeratelyDeepTreesArePrettyPrinted) {
  ZANOmxJsonObject object;
  const std::string text = NestedArrays(3, "1");
  ASSERT_EQ(Load(object, "{\"x\":" + text + "}"), S_OK);
  EXPECT_EQ(object.PrettyPrint().ConvertToChar(),
            "{\n"
            "    \"x\": [\n"
            "        [\n"
            "            [\n"
            "                1\n"
            "            ]\n"
            "        ]\n"
            "    ]\n"
            "}");
}

}  // namespace
