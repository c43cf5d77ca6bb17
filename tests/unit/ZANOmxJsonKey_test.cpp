// Keys of JSON objects, made from strings or from character pointers.
#include <KOVAMappingServices/ZANOmxJson.h>

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(ZANOmxKeyString, KeepsTheTextItWasMadeFrom) {
  const ZANOmxKeyString fromLiteral("Instances");
  EXPECT_EQ(fromLiteral.View(), "Instances");
  EXPECT_EQ(fromLiteral.GetString(), ZANUnicodeString("Instances"));

  const ZANOmxKeyString fromString(ZANUnicodeString("cl\xC3\xA9"));
  EXPECT_EQ(fromString.View(), "cl\xC3\xA9");
  EXPECT_EQ(fromString.GetString().ConvertToChar(), "cl\xC3\xA9");

  const ZANOmxKeyString fromNull(static_cast<const char*>(nullptr));
  EXPECT_EQ(fromNull.View(), "");
  EXPECT_TRUE(fromNull.GetString().IsEmpty());
}

TEST(ZANOmxKeyString, StringKeysAreCopied) {
  auto make = [] { return ZANOmxKeyString(ZANUnicodeString(std::string(40, 'k'))); };
  const ZANOmxKeyString key = make();  // the string it was made from is gone
  EXPECT_EQ(key.View(), std::string(40, 'k'));
  const ZANOmxKeyString copy = key;  // NOLINT(performance-unnecessary-copy-initialization): the copy is tested
  EXPECT_EQ(copy.View(), std::string(40, 'k'));
}

TEST(ZANOmxKeyString, IllFormedPointerTextIsStoredAsReplacementCharacters) {
  ZANOmxJsonObject object;
  ASSERT_EQ(object.PutInteger("bad\xFF", 1), S_OK);
  EXPECT_EQ(object.ToString().ConvertToChar(), "{\"bad\xEF\xBF\xBD\":1}");
  // Look-ups compare the bytes as given: the ill-formed text is not the stored key.
  EXPECT_FALSE(object.Has("bad\xFF"));
  EXPECT_TRUE(object.Has("bad\xEF\xBF\xBD"));
  EXPECT_EQ(ZANOmxKeyString("bad\xFF").GetString().ConvertToChar(), "bad\xEF\xBF\xBD");
}

TEST(ZANOmxKeyString, PointerAndStringKeysFindTheSameMembers) {
  ZANOmxJsonObject object;
  ASSERT_EQ(object.PutInteger("\xE2\x82\xAC", 1), S_OK);
  ASSERT_EQ(object.PutInteger(ZANUnicodeString("plain"), 2), S_OK);
  int v = 0;
  ASSERT_EQ(object.GetInteger(ZANUnicodeString("\xE2\x82\xAC"), v), S_OK);
  EXPECT_EQ(v, 1);
  ASSERT_EQ(object.GetInteger("plain", v), S_OK);
  EXPECT_EQ(v, 2);
}

}  // namespace
