// Reading and changing JSON arrays.
#include <KOVAMappingServices/ZANOmxJson.h>

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

ZANOmxJsonArray ArrayOf(const std::string& text) {
  ZANOmxJsonObject holder;
  const std::string wrapped = "{\"a\":" + text + "}";
  EXPECT_EQ(holder.LoadFromString(wrapped.data(), wrapped.size()), S_OK) << wrapped;
  ZANOmxJsonArray array;
  EXPECT_EQ(holder.GetJsonArray("a", array), S_OK);
  return array;
}

std::string Text(const ZANOmxJsonArray& array) { return array.ToString().ConvertToChar(); }

TEST(ZANOmxJsonArray, NewArrayIsEmpty) {
  const ZANOmxJsonArray array;
  EXPECT_EQ(array.Length(), 0);
  EXPECT_EQ(Text(array), "[]");
  ZANOmxJsonType type = ZANOmxJsonType::Object;
  EXPECT_EQ(array.GetType(1, type), ZAN_E_NOTFOUND);
  EXPECT_EQ(type, ZANOmxJsonType::Object);
}

TEST(ZANOmxJsonArray, ElementsAreNumberedFromOne) {
  const ZANOmxJsonArray array = ArrayOf(R"([10,"s",true,null,2.5,{"k":1},[7],-0])");
  ASSERT_EQ(array.Length(), 8);
  int i = 0;
  ASSERT_EQ(array.GetInteger(1, i), S_OK);
  EXPECT_EQ(i, 10);
  ZANUnicodeString s;
  ASSERT_EQ(array.GetString(2, s), S_OK);
  EXPECT_EQ(s, ZANUnicodeString("s"));
  bool b = false;
  ASSERT_EQ(array.GetBoolean(3, b), S_OK);
  EXPECT_TRUE(b);
  ZANOmxJsonType type = ZANOmxJsonType::Object;
  ASSERT_EQ(array.GetType(4, type), S_OK);
  EXPECT_EQ(type, ZANOmxJsonType::Null);
  double d = 0;
  ASSERT_EQ(array.GetReal(5, d), S_OK);
  EXPECT_EQ(d, 2.5);
  ZANOmxJsonObject o;
  ASSERT_EQ(array.GetJsonObject(6, o), S_OK);
  EXPECT_TRUE(o.Has("k"));
  ZANOmxJsonArray inner;
  ASSERT_EQ(array.GetJsonArray(7, inner), S_OK);
  EXPECT_EQ(Text(inner), "[7]");
  ZANUnicodeString number;
  ASSERT_EQ(array.GetNumberText(8, number), S_OK);
  EXPECT_EQ(number, ZANUnicodeString("-0"));
  ASSERT_EQ(array.GetInteger(8, i), S_OK);
  EXPECT_EQ(i, 0);
}

TEST(ZANOmxJsonArray, IndicesOutsideOneToLengthAreNotFound) {
  const ZANOmxJsonArray array = ArrayOf("[1,2,3]");
  for (const int index : {0, -1, 4, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    int i = 99;
    EXPECT_EQ(array.GetInteger(index, i), ZAN_E_NOTFOUND) << index;
    EXPECT_EQ(i, 99);
    double d = 9.5;
    EXPECT_EQ(array.GetReal(index, d), ZAN_E_NOTFOUND);
    EXPECT_EQ(d, 9.5);
    ZANUnicodeString s("untouched");
    EXPECT_EQ(array.GetString(index, s), ZAN_E_NOTFOUND);
    EXPECT_EQ(array.GetNumberText(index, s), ZAN_E_NOTFOUND);
    EXPECT_EQ(s, ZANUnicodeString("untouched"));
    bool b = true;
    EXPECT_EQ(array.GetBoolean(index, b), ZAN_E_NOTFOUND);
    EXPECT_TRUE(b);
    ZANOmxJsonType type = ZANOmxJsonType::Object;
    EXPECT_EQ(array.GetType(index, type), ZAN_E_NOTFOUND);
    EXPECT_EQ(type, ZANOmxJsonType::Object);
    ZANOmxJsonObject o;
    EXPECT_EQ(array.GetJsonObject(index, o), ZAN_E_NOTFOUND);
    ZANOmxJsonArray a;
    EXPECT_EQ(array.GetJsonArray(index, a), ZAN_E_NOTFOUND);
  }
}

TEST(ZANOmxJsonArray, GettersCheckTheType) {
  const ZANOmxJsonArray array = ArrayOf(R"(["1",1.5,2147483648,{},[]])");
  int i = 5;
  EXPECT_EQ(array.GetInteger(1, i), ZAN_E_TYPEMISMATCH);
  EXPECT_EQ(array.GetInteger(2, i), ZAN_E_TYPEMISMATCH);
  EXPECT_EQ(array.GetInteger(3, i), ZAN_E_TYPEMISMATCH);
  EXPECT_EQ(i, 5);
  ZANUnicodeString s("untouched");
  EXPECT_EQ(array.GetString(2, s), ZAN_E_TYPEMISMATCH);
  EXPECT_EQ(s, ZANUnicodeString("untouched"));
  bool b = false;
  EXPECT_EQ(array.GetBoolean(1, b), ZAN_E_TYPEMISMATCH);
  ZANOmxJsonObject o;
  EXPECT_EQ(array.GetJsonObject(5, o), ZAN_E_TYPEMISMATCH);
  ZANOmxJsonArray a;
  EXPECT_EQ(array.GetJsonArray(4, a), ZAN_E_TYPEMISMATCH);
  double d = 0;
  ASSERT_EQ(array.GetReal(3, d), S_OK);
  EXPECT_EQ(d, 2147483648.0);
}

TEST(ZANOmxJsonArray, PutAppendsCopies) {
  ZANOmxJsonArray array;
  ZANOmxJsonObject object;
  ASSERT_EQ(object.PutInteger("x", 1), S_OK);
  ZANOmxJsonArray inner;
  ASSERT_EQ(inner.PutString(ZANUnicodeString("i")), S_OK);
  ASSERT_EQ(array.PutJsonObject(object), S_OK);
  ASSERT_EQ(array.PutJsonArray(inner), S_OK);
  ASSERT_EQ(array.PutString(ZANUnicodeString("s")), S_OK);
  ASSERT_EQ(array.PutInteger(-3), S_OK);
  ASSERT_EQ(array.PutReal(0.25), S_OK);
  ASSERT_EQ(array.PutBoolean(false), S_OK);
  ASSERT_EQ(array.PutNull(), S_OK);
  EXPECT_EQ(array.PutReal(std::numeric_limits<double>::quiet_NaN()), ZAN_E_INVALIDARG);
  ASSERT_EQ(array.Length(), 7);
  ASSERT_EQ(object.PutInteger("y", 2), S_OK);
  ASSERT_EQ(inner.PutNull(), S_OK);
  EXPECT_EQ(Text(array), R"([{"x":1},["i"],"s",-3,0.25,false,null])");
}

TEST(ZANOmxJsonArray, PuttingAnArrayIntoItselfStoresASnapshot) {
  ZANOmxJsonArray array;
  ASSERT_EQ(array.PutInteger(1), S_OK);
  ASSERT_EQ(array.PutJsonArray(array), S_OK);
  ASSERT_EQ(array.PutJsonArray(array), S_OK);
  EXPECT_EQ(Text(array), "[1,[1],[1,[1]]]");
}

TEST(ZANOmxJsonArray, ElementHandlesShareTheValueInsideTheArray) {
  ZANOmxJsonArray array = ArrayOf(R"([{"a":1}])");
  ZANOmxJsonObject first;
  ASSERT_EQ(array.GetJsonObject(1, first), S_OK);
  for (int i = 0; i < 100; ++i) ASSERT_EQ(array.PutInteger(i), S_OK);
  ASSERT_EQ(first.PutInteger("b", 2), S_OK);
  ZANOmxJsonObject again;
  ASSERT_EQ(array.GetJsonObject(1, again), S_OK);
  EXPECT_EQ(again.ToString().ConvertToChar(), R"({"a":1,"b":2})");
  ZANOmxJsonArray shared = array;
  ASSERT_EQ(shared.PutNull(), S_OK);
  EXPECT_EQ(array.Length(), 102);
}

TEST(ZANOmxJsonArray, MovedFromHandleBehavesAsAnEmptyArray) {
  ZANOmxJsonArray source = ArrayOf("[1]");
  ZANOmxJsonArray target = std::move(source);
  EXPECT_EQ(target.Length(), 1);
  // NOLINTBEGIN(bugprone-use-after-move): the moved-from handle must stay usable
  EXPECT_EQ(source.Length(), 0);
  EXPECT_EQ(Text(source), "[]");
  EXPECT_EQ(source.PutInteger(4), S_OK);
  EXPECT_EQ(Text(source), "[4]");
  // NOLINTEND(bugprone-use-after-move)
}

}  // namespace
