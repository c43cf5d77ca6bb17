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
    for (const std::string& text : {NestedArrays(1000, inner), NestedObjects(1000, inner),
                                    "{\"x\":" + NestedArrays(999, inner) + "}"}) {
      ZANOmxJsonObject object;
      ASSERT_EQ(Load(object, text), S_OK) << text.substr(0, 20);
      EXPECT_EQ(object.ToString().ConvertToChar(), text);
    }
  }
}

TEST(ZANOmxJsonNesting, HundredThousandLevelsAreRefusedWithoutCrashing) {
  for (const std::string& inner : {std::string("1"), std::string("1.5"), std::string("1e400")}) {
    for (const std::string& text : {NestedArrays(100000, inner), NestedObjects(100000, inner)}) {
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
  EXPECT_EQ(text, expected);

  // The indented form of such a tree falls back to the compact one.
  EXPECT_EQ(root.PrettyPrint().ConvertToChar(), expected);

  ZANOmxJsonObject holder;
  ASSERT_EQ(holder.PutJsonObject("copy", root), S_OK);
  root = ZANOmxJsonObject();  // frees the original tree
  EXPECT_EQ(holder.ToString().ConvertToChar(), "{\"copy\":" + expected + "}");

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
