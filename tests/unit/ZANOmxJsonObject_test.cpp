// Reading and changing JSON objects.
#include <KOVAMappingServices/ZANOmxJson.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

// prefix followed by the decimal form of n.
std::string Numbered(const char* prefix, long long n) {
  std::string text(prefix);
  text += std::to_string(n);
  return text;
}

ZANOmxJsonObject Parse(const std::string& text) {
  ZANOmxJsonObject object;
  EXPECT_EQ(object.LoadFromString(text.data(), text.size()), S_OK) << text;
  return object;
}

std::string Text(const ZANOmxJsonObject& object) { return object.ToString().ConvertToChar(); }

TEST(ZANOmxJsonObject, NewObjectIsEmpty) {
  const ZANOmxJsonObject object;
  EXPECT_TRUE(object.IsEmpty());
  EXPECT_TRUE(object.IsValidJsonObject());
  EXPECT_EQ(Text(object), "{}");
  std::vector<ZANUnicodeString> keys{ZANUnicodeString("x")};
  EXPECT_EQ(object.GetKeys(keys), S_OK);
  EXPECT_TRUE(keys.empty());
}

TEST(ZANOmxJsonObject, GetIntegerAcceptsOnlyIntegerTokensThatFit32Bits) {
  const ZANOmxJsonObject object =
      Parse(R"({"max":2147483647,"min":-2147483648,"zero":0,"negzero":-0,"over":2147483648,"under":-2147483649,)"
            R"("real":1.0,"exp":1e2,"EXP":1E+2,"string":"1","bool":true,"null":null,"array":[1],"object":{},)"
            R"("big":9223372036854775807,"huge":)" +
            std::string(1000, '1') + "}");
  int value = 0;
  EXPECT_EQ(object.GetInteger("max", value), S_OK);
  EXPECT_EQ(value, 2147483647);
  EXPECT_EQ(object.GetInteger("min", value), S_OK);
  EXPECT_EQ(value, std::numeric_limits<int>::min());
  value = 5;
  EXPECT_EQ(object.GetInteger("zero", value), S_OK);
  EXPECT_EQ(value, 0);
  value = 5;
  EXPECT_EQ(object.GetInteger("negzero", value), S_OK);
  EXPECT_EQ(value, 0);

  for (const char* key :
       {"over", "under", "real", "exp", "EXP", "string", "bool", "null", "array", "object", "big", "huge"}) {
    value = 77;
    EXPECT_EQ(object.GetInteger(key, value), ZAN_E_TYPEMISMATCH) << key;
    EXPECT_EQ(value, 77) << key;
  }
  value = 77;
  EXPECT_EQ(object.GetInteger("absent", value), ZAN_E_NOTFOUND);
  EXPECT_EQ(value, 77);
}

TEST(ZANOmxJsonObject, GetRealReadsAnyNumber) {
  const ZANOmxJsonObject object =
      Parse(R"({"i":12,"r":0.1,"e":-2.5E-3,"inf":1e400,"ninf":-1e400,"tiny":1e-400,"ntiny":-1e-400,"denorm":5e-324,)"
            R"("big":123456789012345678901234567890,"negzero":-0.0,"s":"1.5","b":false})");
  double value = 0;
  EXPECT_EQ(object.GetReal("i", value), S_OK);
  EXPECT_EQ(value, 12.0);
  EXPECT_EQ(object.GetReal("r", value), S_OK);
  EXPECT_EQ(value, 0.1);
  EXPECT_EQ(object.GetReal("e", value), S_OK);
  EXPECT_EQ(value, -0.0025);
  EXPECT_EQ(object.GetReal("inf", value), S_OK);
  EXPECT_EQ(value, std::numeric_limits<double>::infinity());
  EXPECT_EQ(object.GetReal("ninf", value), S_OK);
  EXPECT_EQ(value, -std::numeric_limits<double>::infinity());
  EXPECT_EQ(object.GetReal("tiny", value), S_OK);
  EXPECT_EQ(value, 0.0);
  EXPECT_FALSE(std::signbit(value));
  EXPECT_EQ(object.GetReal("ntiny", value), S_OK);
  EXPECT_EQ(value, 0.0);
  EXPECT_TRUE(std::signbit(value));
  EXPECT_EQ(object.GetReal("denorm", value), S_OK);
  EXPECT_EQ(value, std::numeric_limits<double>::denorm_min());
  EXPECT_EQ(object.GetReal("big", value), S_OK);
  EXPECT_EQ(value, 123456789012345678901234567890.0);
  EXPECT_EQ(object.GetReal("negzero", value), S_OK);
  EXPECT_TRUE(std::signbit(value));

  value = 3.25;
  EXPECT_EQ(object.GetReal("s", value), ZAN_E_TYPEMISMATCH);
  EXPECT_EQ(object.GetReal("b", value), ZAN_E_TYPEMISMATCH);
  EXPECT_EQ(object.GetReal("absent", value), ZAN_E_NOTFOUND);
  EXPECT_EQ(value, 3.25);
}

TEST(ZANOmxJsonObject, OtherGettersCheckTheType) {
  const ZANOmxJsonObject object = Parse(R"({"s":"text","t":true,"f":false,"n":null,"i":1,"o":{"x":1},"a":[1,2]})");
  ZANUnicodeString s("untouched");
  EXPECT_EQ(object.GetString("i", s), ZAN_E_TYPEMISMATCH);
  EXPECT_EQ(object.GetString("n", s), ZAN_E_TYPEMISMATCH);
  EXPECT_EQ(object.GetString("absent", s), ZAN_E_NOTFOUND);
  EXPECT_EQ(s, ZANUnicodeString("untouched"));
  EXPECT_EQ(object.GetString("s", s), S_OK);
  EXPECT_EQ(s, ZANUnicodeString("text"));

  bool b = false;
  EXPECT_EQ(object.GetBoolean("t", b), S_OK);
  EXPECT_TRUE(b);
  EXPECT_EQ(object.GetBoolean("f", b), S_OK);
  EXPECT_FALSE(b);
  b = true;
  EXPECT_EQ(object.GetBoolean("i", b), ZAN_E_TYPEMISMATCH);
  EXPECT_EQ(object.GetBoolean("s", b), ZAN_E_TYPEMISMATCH);
  EXPECT_EQ(object.GetBoolean("n", b), ZAN_E_TYPEMISMATCH);
  EXPECT_EQ(object.GetBoolean("absent", b), ZAN_E_NOTFOUND);
  EXPECT_TRUE(b);

  ZANOmxJsonObject o = Parse(R"({"before":1})");
  EXPECT_EQ(object.GetJsonObject("a", o), ZAN_E_TYPEMISMATCH);
  EXPECT_EQ(object.GetJsonObject("s", o), ZAN_E_TYPEMISMATCH);
  EXPECT_EQ(object.GetJsonObject("absent", o), ZAN_E_NOTFOUND);
  EXPECT_TRUE(o.Has("before"));
  EXPECT_EQ(object.GetJsonObject("o", o), S_OK);
  EXPECT_EQ(Text(o), R"({"x":1})");

  ZANOmxJsonArray a;
  ASSERT_EQ(a.PutInteger(9), S_OK);
  EXPECT_EQ(object.GetJsonArray("o", a), ZAN_E_TYPEMISMATCH);
  EXPECT_EQ(object.GetJsonArray("absent", a), ZAN_E_NOTFOUND);
  EXPECT_EQ(a.ToString().ConvertToChar(), "[9]");
  EXPECT_EQ(object.GetJsonArray("a", a), S_OK);
  EXPECT_EQ(a.ToString().ConvertToChar(), "[1,2]");

  ZANUnicodeString number("untouched");
  EXPECT_EQ(object.GetNumberText("s", number), ZAN_E_TYPEMISMATCH);
  EXPECT_EQ(object.GetNumberText("absent", number), ZAN_E_NOTFOUND);
  EXPECT_EQ(number, ZANUnicodeString("untouched"));
  EXPECT_EQ(object.GetNumberText("i", number), S_OK);
  EXPECT_EQ(number, ZANUnicodeString("1"));
}

TEST(ZANOmxJsonObject, GetTypeTellsTheKind) {
  const ZANOmxJsonObject object =
      Parse(R"({"n":null,"t":true,"f":false,"i":-7,"negzero":-0,"r":1.5,"e":1e2,"big":4294967296,)"
            R"("s":"x","a":[],"o":{}})");
  struct Case {
    const char* key;
    ZANOmxJsonType type;
  };
  const Case cases[] = {
      {"n", ZANOmxJsonType::Null},    {"t", ZANOmxJsonType::Boolean},       {"f", ZANOmxJsonType::Boolean},
      {"i", ZANOmxJsonType::Integer}, {"negzero", ZANOmxJsonType::Integer}, {"r", ZANOmxJsonType::Real},
      {"e", ZANOmxJsonType::Real},    {"big", ZANOmxJsonType::Real},        {"s", ZANOmxJsonType::String},
      {"a", ZANOmxJsonType::Array},   {"o", ZANOmxJsonType::Object}};
  for (const Case& c : cases) {
    ZANOmxJsonType type = ZANOmxJsonType::Null;
    if (c.type == ZANOmxJsonType::Null) type = ZANOmxJsonType::Object;
    EXPECT_EQ(object.GetType(c.key, type), S_OK) << c.key;
    EXPECT_EQ(type, c.type) << c.key;
  }
  ZANOmxJsonType type = ZANOmxJsonType::Array;
  EXPECT_EQ(object.GetType("absent", type), ZAN_E_NOTFOUND);
  EXPECT_EQ(type, ZANOmxJsonType::Array);
}

TEST(ZANOmxJsonObject, HasIsTrueForAnyValueIncludingNull) {
  const ZANOmxJsonObject object = Parse(R"({"n":null,"z":0,"e":"","f":false})");
  EXPECT_TRUE(object.Has("n"));
  EXPECT_TRUE(object.Has("z"));
  EXPECT_TRUE(object.Has("e"));
  EXPECT_TRUE(object.Has("f"));
  EXPECT_FALSE(object.Has("N"));
  EXPECT_FALSE(object.Has(""));
}

TEST(ZANOmxJsonObject, OptStringFallsBackToTheDefault) {
  const ZANOmxJsonObject object = Parse(R"({"s":"value","i":3,"n":null,"empty":""})");
  const ZANUnicodeString fallback("fallback");
  EXPECT_EQ(object.OptString("s", fallback), ZANUnicodeString("value"));
  EXPECT_EQ(object.OptString("empty", fallback), ZANUnicodeString(""));
  EXPECT_EQ(object.OptString("i", fallback), fallback);
  EXPECT_EQ(object.OptString("n", fallback), fallback);
  EXPECT_EQ(object.OptString("absent", fallback), fallback);
}

TEST(ZANOmxJsonObject, GetKeysInDocumentOrderEachOnce) {
  const ZANOmxJsonObject object = Parse(R"({"z":1,"a":2,"m":3,"a":4,"z":5,"b":6})");
  std::vector<ZANUnicodeString> keys{ZANUnicodeString("stale")};
  ASSERT_EQ(object.GetKeys(keys), S_OK);
  const std::vector<ZANUnicodeString> expected{ZANUnicodeString("z"), ZANUnicodeString("a"), ZANUnicodeString("m"),
                                               ZANUnicodeString("b")};
  EXPECT_EQ(keys, expected);
}

TEST(ZANOmxJsonObject, PutOnAnExistingKeyReplacesInPlace) {
  ZANOmxJsonObject object = Parse(R"({"a":1,"b":2,"c":3})");
  EXPECT_EQ(object.PutString("b", ZANUnicodeString("two")), S_OK);
  EXPECT_EQ(Text(object), R"({"a":1,"b":"two","c":3})");
  EXPECT_EQ(object.PutNull("a"), S_OK);
  EXPECT_EQ(object.PutBoolean("c", true), S_OK);
  EXPECT_EQ(object.PutInteger("d", -4), S_OK);
  EXPECT_EQ(object.PutReal("b", 0.5), S_OK);
  EXPECT_EQ(Text(object), R"({"a":null,"b":0.5,"c":true,"d":-4})");
  ZANOmxJsonArray array;
  ASSERT_EQ(array.PutInteger(1), S_OK);
  EXPECT_EQ(object.PutJsonArray("a", array), S_OK);
  EXPECT_EQ(object.PutJsonObject("c", Parse(R"({"x":"y"})")), S_OK);
  EXPECT_EQ(Text(object), R"({"a":[1],"b":0.5,"c":{"x":"y"},"d":-4})");
}

TEST(ZANOmxJsonObject, PutKeepsPositionsInLargeObjects) {
  ZANOmxJsonObject object;
  const int count = 100;
  for (int i = 0; i < count; ++i) ASSERT_EQ(object.PutInteger(Numbered("k", i).c_str(), i), S_OK);
  ASSERT_EQ(object.PutString("k50", ZANUnicodeString("fifty")), S_OK);
  ASSERT_EQ(object.PutInteger("k0", -1), S_OK);
  std::vector<ZANUnicodeString> keys;
  ASSERT_EQ(object.GetKeys(keys), S_OK);
  ASSERT_EQ(keys.size(), static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) EXPECT_EQ(keys[i].ConvertToChar(), Numbered("k", i));
  int value = 0;
  ASSERT_EQ(object.GetInteger("k0", value), S_OK);
  EXPECT_EQ(value, -1);
  ASSERT_EQ(object.GetInteger("k99", value), S_OK);
  EXPECT_EQ(value, 99);
  ZANUnicodeString fifty;
  ASSERT_EQ(object.GetString("k50", fifty), S_OK);
  EXPECT_EQ(fifty, ZANUnicodeString("fifty"));
  EXPECT_EQ(object.GetInteger("k100", value), ZAN_E_NOTFOUND);
}

TEST(ZANOmxJsonObject, PutRealWritesARealNumber) {
  ZANOmxJsonObject object;
  ASSERT_EQ(object.PutReal("three", 3.0), S_OK);
  ASSERT_EQ(object.PutReal("tenth", 0.1), S_OK);
  ASSERT_EQ(object.PutReal("big", 1e300), S_OK);
  ASSERT_EQ(object.PutReal("neg", -2.5), S_OK);
  int i = 42;
  EXPECT_EQ(object.GetInteger("three", i), ZAN_E_TYPEMISMATCH);
  EXPECT_EQ(i, 42);
  double d = 0;
  ASSERT_EQ(object.GetReal("three", d), S_OK);
  EXPECT_EQ(d, 3.0);
  ASSERT_EQ(object.GetReal("tenth", d), S_OK);
  EXPECT_EQ(d, 0.1);
  ASSERT_EQ(object.GetReal("big", d), S_OK);
  EXPECT_EQ(d, 1e300);
  ZANOmxJsonType type = ZANOmxJsonType::Null;
  ASSERT_EQ(object.GetType("three", type), S_OK);
  EXPECT_EQ(type, ZANOmxJsonType::Real);
  EXPECT_EQ(Text(object), R"({"three":3.0,"tenth":0.1,"big":1e+300,"neg":-2.5})");
}

TEST(ZANOmxJsonObject, PutRealRefusesValuesJsonCannotWrite) {
  ZANOmxJsonObject object = Parse(R"({"r":1})");
  EXPECT_EQ(object.PutReal("r", std::numeric_limits<double>::quiet_NaN()), ZAN_E_INVALIDARG);
  EXPECT_EQ(object.PutReal("r", std::numeric_limits<double>::infinity()), ZAN_E_INVALIDARG);
  EXPECT_EQ(object.PutReal("s", -std::numeric_limits<double>::infinity()), ZAN_E_INVALIDARG);
  EXPECT_EQ(Text(object), R"({"r":1})");
}

TEST(ZANOmxJsonObject, PutIntegerIsReadBack) {
  ZANOmxJsonObject object;
  ASSERT_EQ(object.PutInteger("max", std::numeric_limits<int>::max()), S_OK);
  ASSERT_EQ(object.PutInteger("min", std::numeric_limits<int>::min()), S_OK);
  int value = 0;
  ASSERT_EQ(object.GetInteger("min", value), S_OK);
  EXPECT_EQ(value, std::numeric_limits<int>::min());
  ZANUnicodeString text;
  ASSERT_EQ(object.GetNumberText("max", text), S_OK);
  EXPECT_EQ(text, ZANUnicodeString("2147483647"));
  EXPECT_EQ(Text(object), R"({"max":2147483647,"min":-2147483648})");
}

TEST(ZANOmxJsonObject, PutStoresACopy) {
  ZANOmxJsonObject child = Parse(R"({"x":1,"list":[1,{"deep":true}]})");
  ZANOmxJsonObject parent;
  ASSERT_EQ(parent.PutJsonObject("c", child), S_OK);
  // Changing the argument afterwards does not change the stored value...
  ASSERT_EQ(child.PutInteger("y", 2), S_OK);
  ZANOmxJsonArray list;
  ASSERT_EQ(child.GetJsonArray("list", list), S_OK);
  ASSERT_EQ(list.PutNull(), S_OK);
  EXPECT_EQ(Text(parent), R"({"c":{"x":1,"list":[1,{"deep":true}]}})");
  // ...and changing the stored value does not change the argument.
  ZANOmxJsonObject stored;
  ASSERT_EQ(parent.GetJsonObject("c", stored), S_OK);
  ASSERT_EQ(stored.PutString("x", ZANUnicodeString("changed")), S_OK);
  EXPECT_EQ(Text(child), R"({"x":1,"list":[1,{"deep":true},null],"y":2})");
  EXPECT_EQ(Text(parent), R"({"c":{"x":"changed","list":[1,{"deep":true}]}})");
}

TEST(ZANOmxJsonObject, CopiesOfHandlesShareTheValue) {
  ZANOmxJsonObject a;
  ZANOmxJsonObject b = a;
  ASSERT_EQ(b.PutInteger("x", 1), S_OK);
  EXPECT_TRUE(a.Has("x"));
  ZANOmxJsonObject c;
  c = b;
  ASSERT_EQ(c.PutInteger("y", 2), S_OK);
  EXPECT_TRUE(a.Has("y"));
}

TEST(ZANOmxJsonObject, SubObjectHandlesShareTheValueInsideTheContainer) {
  ZANOmxJsonObject parent = Parse(R"({"a":{"x":1},"b":[]})");
  ZANOmxJsonObject a;
  ASSERT_EQ(parent.GetJsonObject("a", a), S_OK);
  // The container grows (its members move) before the sub-object is changed.
  for (int i = 0; i < 200; ++i) ASSERT_EQ(parent.PutInteger(Numbered("n", i).c_str(), i), S_OK);
  ASSERT_EQ(a.PutInteger("y", 2), S_OK);
  ZANOmxJsonObject again;
  ASSERT_EQ(parent.GetJsonObject("a", again), S_OK);
  EXPECT_EQ(Text(again), R"({"x":1,"y":2})");

  ZANOmxJsonArray b;
  ASSERT_EQ(parent.GetJsonArray("b", b), S_OK);
  ASSERT_EQ(b.PutString(ZANUnicodeString("e")), S_OK);
  ZANOmxJsonArray bAgain;
  ASSERT_EQ(parent.GetJsonArray("b", bAgain), S_OK);
  EXPECT_EQ(bAgain.Length(), 1);
}

TEST(ZANOmxJsonObject, SubObjectHandleKeepsItsDocumentAlive) {
  ZANOmxJsonObject inner;
  {
    ZANOmxJsonObject outer = Parse(R"({"in":{"name":"kept"}})");
    ASSERT_EQ(outer.GetJsonObject("in", inner), S_OK);
  }
  ZANUnicodeString name;
  ASSERT_EQ(inner.GetString("name", name), S_OK);
  EXPECT_EQ(name, ZANUnicodeString("kept"));
}

TEST(ZANOmxJsonObject, ReplacedSubObjectHandleStaysUsable) {
  ZANOmxJsonObject parent = Parse(R"({"a":{"x":1}})");
  ZANOmxJsonObject a;
  ASSERT_EQ(parent.GetJsonObject("a", a), S_OK);
  ASSERT_EQ(parent.PutInteger("a", 5), S_OK);
  ASSERT_EQ(a.PutInteger("y", 2), S_OK);
  EXPECT_EQ(Text(a), R"({"x":1,"y":2})");
  EXPECT_EQ(Text(parent), R"({"a":5})");
}

TEST(ZANOmxJsonObject, PuttingAnObjectIntoItselfStoresASnapshot) {
  ZANOmxJsonObject object = Parse(R"({"v":1})");
  ASSERT_EQ(object.PutJsonObject("self", object), S_OK);
  EXPECT_EQ(Text(object), R"({"v":1,"self":{"v":1}})");
  ASSERT_EQ(object.PutJsonObject("self", object), S_OK);
  EXPECT_EQ(Text(object), R"({"v":1,"self":{"v":1,"self":{"v":1}}})");
  ZANOmxJsonObject self;
  ASSERT_EQ(object.GetJsonObject("self", self), S_OK);
  ASSERT_EQ(object.PutJsonObject("copy", self), S_OK);
  EXPECT_EQ(Text(object), R"({"v":1,"self":{"v":1,"self":{"v":1}},"copy":{"v":1,"self":{"v":1}}})");
}

TEST(ZANOmxJsonObject, PutOfALoadedNonObjectRootCopiesThatValue) {
  ZANOmxJsonObject root;
  ASSERT_EQ(root.LoadFromString(ZANUnicodeString("[1,\"two\"]")), S_OK);
  ZANOmxJsonObject holder;
  ASSERT_EQ(holder.PutJsonObject("v", root), S_OK);
  EXPECT_EQ(Text(holder), R"({"v":[1,"two"]})");
  ZANOmxJsonObject o;
  EXPECT_EQ(holder.GetJsonObject("v", o), ZAN_E_TYPEMISMATCH);
}

TEST(ZANOmxJsonObject, KeysWithNulAndNonAscii) {
  ZANOmxJsonObject object;
  const ZANUnicodeString nulKey(std::string("a\0b", 3));
  ASSERT_EQ(object.PutInteger(nulKey, 1), S_OK);
  ASSERT_EQ(object.PutInteger("a", 2), S_OK);
  ASSERT_EQ(object.PutInteger(ZANUnicodeString("\xC3\xA9"), 3), S_OK);
  int v = 0;
  ASSERT_EQ(object.GetInteger(nulKey, v), S_OK);
  EXPECT_EQ(v, 1);
  ASSERT_EQ(object.GetInteger("a", v), S_OK);
  EXPECT_EQ(v, 2);
  EXPECT_EQ(Text(object), "{\"a\\u0000b\":1,\"a\":2,\"\xC3\xA9\":3}");
}

TEST(ZANOmxJsonObject, ManyMembersAreLookedUpWithoutQuadraticCost) {
  // Shaped like documents that list instances as members of one object: every key is read back
  // through GetKeys and GetJsonObject. Linear look-ups would make this take hours, past the test
  // runner's time limit.
  const int count = 200000;
  std::string text = "{";
  for (int i = 0; i < count; ++i) {
    if (i != 0) text += ',';
    text += Numbered("\"inst", i) + Numbered("\":{\"n\":", i) + "}";
  }
  text += "}";
  ZANOmxJsonObject object = Parse(text);
  std::vector<ZANUnicodeString> keys;
  ASSERT_EQ(object.GetKeys(keys), S_OK);
  ASSERT_EQ(keys.size(), static_cast<std::size_t>(count));
  long long sum = 0;
  for (const ZANUnicodeString& key : keys) {
    ZANOmxJsonObject member;
    ASSERT_EQ(object.GetJsonObject(key, member), S_OK);
    int n = -1;
    ASSERT_EQ(member.GetInteger("n", n), S_OK);
    sum += n;
  }
  EXPECT_EQ(sum, static_cast<long long>(count) * (count - 1) / 2);
}

TEST(ZANOmxJsonObject, ObjectBuiltByPutIsIndexedToo) {
  ZANOmxJsonObject object;
  const int count = 50000;
  for (int i = 0; i < count; ++i) ASSERT_EQ(object.PutInteger(Numbered("k", i).c_str(), i), S_OK);
  for (int i = 0; i < count; i += 997) {
    int v = -1;
    ASSERT_EQ(object.GetInteger(Numbered("k", i).c_str(), v), S_OK);
    EXPECT_EQ(v, i);
  }
  // A copy carries the index along.
  ZANOmxJsonObject holder;
  ASSERT_EQ(holder.PutJsonObject("all", object), S_OK);
  ZANOmxJsonObject all;
  ASSERT_EQ(holder.GetJsonObject("all", all), S_OK);
  int v = -1;
  ASSERT_EQ(all.GetInteger("k49999", v), S_OK);
  EXPECT_EQ(v, 49999);
  ASSERT_EQ(all.PutInteger("k1", -1), S_OK);
  ASSERT_EQ(all.PutInteger("new", 7), S_OK);
  std::vector<ZANUnicodeString> keys;
  ASSERT_EQ(all.GetKeys(keys), S_OK);
  ASSERT_EQ(keys.size(), static_cast<std::size_t>(count + 1));
  EXPECT_EQ(keys[1], ZANUnicodeString("k1"));
  EXPECT_EQ(keys.back(), ZANUnicodeString("new"));
}

TEST(ZANOmxJsonObject, MovedFromHandleBehavesAsAnEmptyObject) {
  ZANOmxJsonObject source = Parse(R"({"a":1})");
  ZANOmxJsonObject target = std::move(source);
  EXPECT_TRUE(target.Has("a"));
  // NOLINTBEGIN(bugprone-use-after-move): the moved-from handle must stay usable
  EXPECT_FALSE(source.Has("a"));
  EXPECT_TRUE(source.IsEmpty());
  EXPECT_EQ(Text(source), "{}");
  EXPECT_EQ(source.PutInteger("b", 2), S_OK);
  EXPECT_EQ(Text(source), R"({"b":2})");
  // NOLINTEND(bugprone-use-after-move)
  EXPECT_EQ(Text(target), R"({"a":1})");
}

}  // namespace
