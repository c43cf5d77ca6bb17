// The value text of an attribute (stamps/ParmValueToString).
#include "stamps/ParmValueToString.h"

#include <KOVAMappingServices/ZANKnowledge.h>

#include <gtest/gtest.h>

#include <cfenv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <locale>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using kova::stamps::ParmValueToString;

std::string ValueText(const ZANIKnwParm_var& parm, int n = -1) { return ParmValueToString(parm, n).ConvertToChar(); }

ZANIType_var Type(const char* name) {
  ZANIType_var type = ZANKnwBuilder::FindType(name);
  EXPECT_FALSE(type.IsNull()) << name;
  return type;
}

// ---------------------------------------------------------------------------------------------
// One test per documented case

TEST(ParmValueToString, BooleanTrueIsUpperCaseTRUE) { EXPECT_EQ(ValueText(ZANKnwBuilder::MakeBooleanParm(1)), "TRUE"); }

TEST(ParmValueToString, BooleanFalseIsUpperCaseFALSE) {
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeBooleanParm(0)), "FALSE");
}

TEST(ParmValueToString, RealTwoPointFiveIsWrittenAsIs) {
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeRealParm(2.5)), "2.5");
}

TEST(ParmValueToString, RealThreeGetsOneDecimal) { EXPECT_EQ(ValueText(ZANKnwBuilder::MakeRealParm(3.0)), "3.0"); }

TEST(ParmValueToString, RealsDifferingAfterTheFirstDecimalGiveTheSameText) {
  const std::string a = ValueText(ZANKnwBuilder::MakeRealParm(2.51));
  const std::string b = ValueText(ZANKnwBuilder::MakeRealParm(2.54));
  EXPECT_EQ(a, "2.5");
  EXPECT_EQ(b, "2.5");
}

TEST(ParmValueToString, IntegerMinusFortyTwo) { EXPECT_EQ(ValueText(ZANKnwBuilder::MakeIntegerParm(-42)), "-42"); }

TEST(ParmValueToString, TimeOneSecondAfterTheEpochIsOneThousand) {
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeTimeParm(ZANTime(1))), "1000");
}

TEST(ParmValueToString, ListOfThreeIntegersIsJoinedByBel) {
  const ZANIList_var list = ZANKnwBuilder::MakeList(
      {ZANKnwBuilder::MakeIntegerParm(1), ZANKnwBuilder::MakeIntegerParm(2), ZANKnwBuilder::MakeIntegerParm(3)});
  const ZANUnicodeString text = ParmValueToString(ZANKnwBuilder::MakeListParm(list), -1);
  EXPECT_EQ(text.ConvertToChar(), std::string("1\a2\a3"));
  EXPECT_EQ(text.GetLengthInChar(), 5);
}

TEST(ParmValueToString, OneElementListHasNoSeparator) {
  const ZANIList_var list = ZANKnwBuilder::MakeList({ZANKnwBuilder::MakeStringParm("only")});
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeListParm(list)), "only");
}

TEST(ParmValueToString, EmptyListGivesTheEmptyText) {
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeListParm(ZANKnwBuilder::MakeList({}))), "");
}

TEST(ParmValueToString, ListOfListsGivesTheEmptyText) {
  const ZANIList_var inner = ZANKnwBuilder::MakeList({ZANKnwBuilder::MakeIntegerParm(1)});
  const ZANIList_var outer = ZANKnwBuilder::MakeList({ZANKnwBuilder::MakeListParm(inner)});
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeListParm(outer)), "");
}

TEST(ParmValueToString, UnrecognisedTypeGivesTheEmptyText) {
  const ZANIType_var gadget = ZANKnwBuilder::CreateType("ValueTextTestGadget", nullptr);
  // The value could be read as a string, but the type decides.
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeStringParm("hidden", true, gadget)), "");
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeStringParm("hidden", true, Type("GRDReference"))), "");
}

// ---------------------------------------------------------------------------------------------
// Further cases

TEST(ParmValueToString, StringIsWrittenAsItIs) {
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeStringParm("A1 \xC3\xA9")), "A1 \xC3\xA9");
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeStringParm("")), "");
}

TEST(ParmValueToString, IntegerExtremesAndZero) {
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeIntegerParm(0)), "0");
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeIntegerParm(std::numeric_limits<std::int32_t>::max())), "2147483647");
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeIntegerParm(std::numeric_limits<std::int32_t>::min())), "-2147483648");
}

TEST(ParmValueToString, RealRoundingAndSign) {
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeRealParm(-0.04)), "-0.0");
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeRealParm(2.96)), "3.0");
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeRealParm(1234567.25)), "1234567.2");  // ties as printf: to even
}

TEST(ParmValueToString, BooleanAnyNonZeroIsTRUE) { EXPECT_EQ(ValueText(ZANKnwBuilder::MakeBooleanParm(-3)), "TRUE"); }

TEST(ParmValueToString, TimeIsMillisecondsInSixtyFourBits) {
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeTimeParm(ZANTime(0))), "0");
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeTimeParm(ZANTime(-2))), "-2000");
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeTimeParm(ZANTime(1700000000))), "1700000000000");
  // Beyond the 64-bit range of milliseconds the product wraps around.
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeTimeParm(ZANTime(std::numeric_limits<std::int64_t>::max()))), "-1000");
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeTimeParm(ZANTime(std::numeric_limits<std::int64_t>::min()))), "0");
}

TEST(ParmValueToString, EnumerationValuesAreIntegers) {
  const ZANIType_var color = ZANKnwBuilder::CreateType("ValueTextTestColor", Type("Enumeration"));
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeEnumParm(3, true, color)), "3");
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeEnumParm(-1)), "-1");
}

TEST(ParmValueToString, DerivedTypesUseTheirAncestorsText) {
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeRealParm(7.25, true, Type("Length"))), "7.2");
  const ZANIType_var partNumber = ZANKnwBuilder::CreateType("ValueTextTestPartNumber", Type("String"));
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeStringParm("PN-1", true, partNumber)), "PN-1");
  const ZANIType_var stamped = ZANKnwBuilder::CreateType("ValueTextTestStampedTime", Type("Time"));
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeTimeParm(ZANTime(2), true, stamped)), "2000");
  const ZANIType_var sizes = ZANKnwBuilder::CreateType("ValueTextTestSizes", Type("List"));
  const ZANIList_var list =
      ZANKnwBuilder::MakeList({ZANKnwBuilder::MakeBooleanParm(1), ZANKnwBuilder::MakeBooleanParm(0)});
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeListParm(list, true, sizes)), "TRUE\aFALSE");
}

// A type implemented by a host, answering several tests at once, to check which test wins.
class HostType final : public ZANComponent, public ZANIType {
 public:
  HostType(bool isString, bool isInteger, bool isReal, bool isBoolean, std::vector<ZANIType_var> kinds)
      : string_(isString), integer_(isInteger), real_(isReal), boolean_(isBoolean), kinds_(std::move(kinds)) {}
  ZANUnicodeString GetName() const override { return "HostType"; }
  ZANIType_var GetParent() const override { return nullptr; }
  bool IsaKindOf(const ZANIType_var& other) const override {
    if (other.Get() == this) return true;
    for (const ZANIType_var& kind : kinds_) {
      if (kind->IsaKindOf(other)) return true;
    }
    return false;
  }
  ZANKnw::Boolean IsString() const override { return string_ ? 1 : 0; }
  ZANKnw::Boolean IsInteger() const override { return integer_ ? 1 : 0; }
  ZANKnw::Boolean IsReal() const override { return real_ ? 1 : 0; }
  ZANKnw::Boolean IsBoolean() const override { return boolean_ ? 1 : 0; }

 private:
  bool string_, integer_, real_, boolean_;
  std::vector<ZANIType_var> kinds_;
};

ZANIType_var MakeHostType(bool isString, bool isInteger, bool isReal, bool isBoolean,
                          std::vector<ZANIType_var> kinds = {}) {
  return ZANIType_var(std::make_shared<HostType>(isString, isInteger, isReal, isBoolean, std::move(kinds)));
}

TEST(ParmValueToString, StringTestComesBeforeInteger) {
  const ZANIType_var type = MakeHostType(true, true, false, false);
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeParm(type, ZANKnwBuilder::MakeStringValue("s"), true)), "s");
}

TEST(ParmValueToString, IntegerTestComesBeforeReal) {
  const ZANIType_var type = MakeHostType(false, true, true, false);
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeParm(type, ZANKnwBuilder::MakeRealValue(2.7), true)), "2");
}

TEST(ParmValueToString, RealTestComesBeforeBoolean) {
  const ZANIType_var type = MakeHostType(false, false, true, true);
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeParm(type, ZANKnwBuilder::MakeBooleanValue(1), true)), "1.0");
}

TEST(ParmValueToString, BooleanTestComesBeforeTime) {
  const ZANIType_var type = MakeHostType(false, false, false, true, {Type("Time")});
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeParm(type, ZANKnwBuilder::MakeIntegerValue(0), true)), "FALSE");
}

TEST(ParmValueToString, TimeTestComesBeforeEnumeration) {
  const ZANIType_var type = MakeHostType(false, false, false, false, {Type("Enumeration"), Type("Time")});
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeParm(type, ZANKnwBuilder::MakeTimeValue(ZANTime(3)), true)), "3000");
}

TEST(ParmValueToString, EnumerationTestComesBeforeList) {
  const ZANIType_var type = MakeHostType(false, false, false, false, {Type("List"), Type("Enumeration")});
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeParm(type, ZANKnwBuilder::MakeIntegerValue(6), true)), "6");
}

TEST(ParmValueToString, TheTypeDecidesHowTheValueIsRead) {
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeParm(Type("Real"), ZANKnwBuilder::MakeIntegerValue(4), true)), "4.0");
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeParm(Type("Boolean"), ZANKnwBuilder::MakeIntegerValue(4), true)), "TRUE");
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeParm(Type("String"), ZANKnwBuilder::MakeIntegerValue(4), true)), "");
}

TEST(ParmValueToString, UnsetParametersStillHaveAValueText) {
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeIntegerParm(9, false)), "9");
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeUnsetParm(Type("Real"))), "0.0");
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeUnsetParm(Type("String"))), "");
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeUnsetParm(Type("List"))), "");
}

TEST(ParmValueToString, TheIntegerArgumentHasNoEffect) {
  const ZANIKnwParm_var parm = ZANKnwBuilder::MakeRealParm(2.5);
  EXPECT_EQ(ValueText(parm, 0), "2.5");
  EXPECT_EQ(ValueText(parm, 7), "2.5");
  EXPECT_EQ(ValueText(parm, std::numeric_limits<int>::min()), "2.5");
}

TEST(ParmValueToString, ParameterWithoutTypeGivesTheEmptyText) {
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeParm(nullptr, ZANKnwBuilder::MakeStringValue("x"), true)), "");
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeParm(nullptr, nullptr, true)), "");
}

TEST(ParmValueToString, ListElementsAllUseTheFirstElementsText) {
  const ZANIList_var list = ZANKnwBuilder::MakeList(
      {ZANKnwBuilder::MakeIntegerParm(1), ZANKnwBuilder::MakeRealParm(2.7), ZANKnwBuilder::MakeStringParm("x")});
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeListParm(list)), "1\a2\a0");
  const ZANIList_var reals =
      ZANKnwBuilder::MakeList({ZANKnwBuilder::MakeRealParm(2.7), ZANKnwBuilder::MakeIntegerParm(1)});
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeListParm(reals)), "2.7\a1.0");
}

TEST(ParmValueToString, ListWithANullOrNonParameterElementGivesTheEmptyText) {
  const ZANIKnwParm_var one = ZANKnwBuilder::MakeIntegerParm(1);
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeListParm(ZANKnwBuilder::MakeList({one, nullptr}))), "");
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeListParm(ZANKnwBuilder::MakeList({nullptr, one}))), "");
  const ZANBaseUnknown_var object = ZANKnwBuilder::MakeObject(Type("GRDReference"));
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeListParm(ZANKnwBuilder::MakeList({one, object}))), "");
}

TEST(ParmValueToString, ListWhoseFirstElementHasNoTypeOrAnUnrecognisedTypeGivesTheEmptyText) {
  const ZANIKnwParm_var untyped = ZANKnwBuilder::MakeParm(nullptr, ZANKnwBuilder::MakeIntegerValue(1), true);
  const ZANIKnwParm_var one = ZANKnwBuilder::MakeIntegerParm(1);
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeListParm(ZANKnwBuilder::MakeList({untyped, one}))), "");
  const ZANIKnwParm_var reference = ZANKnwBuilder::MakeUnsetParm(Type("GRDReference"));
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeListParm(ZANKnwBuilder::MakeList({reference, one}))), "");
}

TEST(ParmValueToString, ListValueThatIsNotAListGivesTheEmptyText) {
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeParm(Type("List"), ZANKnwBuilder::MakeObjectValue(nullptr), true)), "");
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeParm(Type("List"), ZANKnwBuilder::MakeIntegerValue(3), true)), "");
  const ZANBaseUnknown_var object = ZANKnwBuilder::MakeObject(Type("GRDReference"));
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeParm(Type("List"), ZANKnwBuilder::MakeObjectValue(object), true)), "");
}

TEST(ParmValueToString, NullParameterRaisesTheNullHandleError) {
  try {
    (void)ParmValueToString(nullptr, -1);
    FAIL() << "no exception";
  } catch (const ZANNullVarError& error) {
    EXPECT_EQ(error.HandleName(), "ZANIKnwParm_var");
  }
}

TEST(ParmValueToString, NullValueOfARecognisedTypeRaisesTheNullHandleError) {
  for (const char* name : {"String", "Integer", "Real", "Boolean", "Time", "Enumeration", "List"}) {
    try {
      (void)ParmValueToString(ZANKnwBuilder::MakeParm(Type(name), nullptr, true), -1);
      ADD_FAILURE() << "no exception for " << name;
    } catch (const ZANNullVarError& error) {
      EXPECT_EQ(error.HandleName(), "ZANIKnwValue_var") << name;
    }
  }
}

TEST(ParmValueToString, NullValueOfAListElementRaisesTheNullHandleError) {
  const ZANIKnwParm_var broken = ZANKnwBuilder::MakeParm(Type("Integer"), nullptr, true);
  const ZANIList_var list = ZANKnwBuilder::MakeList({ZANKnwBuilder::MakeIntegerParm(1), broken});
  EXPECT_THROW((void)ParmValueToString(ZANKnwBuilder::MakeListParm(list), -1), ZANNullVarError);
}

TEST(ParmValueToString, NullValueOfAnUnrecognisedTypeIsNotRead) {
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeParm(Type("GRDEntity"), nullptr, true)), "");
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// The value texts are written without printf or streams when the result is known to be the same:
// these compare them with printf and streams themselves, in the conditions that change those.

namespace value_text_against_printf {

std::string Printf1(double value) {
  char text[512];
  const int n = std::snprintf(text, sizeof text, "%.1f", value);
  return n < 0 ? std::string() : std::string(text, static_cast<std::size_t>(n));
}

std::vector<double> RealSamples() {
  std::vector<double> values = {0.0,
                                -0.0,
                                0.05,
                                0.15,
                                0.25,
                                0.35,
                                -0.25,
                                0.95,
                                9.95,
                                1234567.25,
                                2.5e-320,
                                -1e-5,
                                1e15 + 0.5,
                                1e22,
                                1e300,
                                -1e308,
                                std::numeric_limits<double>::max(),
                                std::numeric_limits<double>::lowest(),
                                std::numeric_limits<double>::min(),
                                std::numeric_limits<double>::denorm_min(),
                                std::numeric_limits<double>::infinity(),
                                -std::numeric_limits<double>::infinity(),
                                std::numeric_limits<double>::quiet_NaN(),
                                -std::numeric_limits<double>::quiet_NaN()};
  std::mt19937_64 random(20261122);
  std::uniform_real_distribution<double> around(-1000.0, 1000.0);
  for (int i = 0; i < 5000; ++i) values.push_back(around(random));
  for (int i = 0; i < 5000; ++i) {  // any bit pattern: all exponents, NaNs with payloads
    const std::uint64_t bits = random();
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    values.push_back(value);
  }
  for (int i = -200; i <= 200; ++i) values.push_back(i * 0.05);  // ties in decimal, near ties in binary
  return values;
}

class RoundingMode {
 public:
  explicit RoundingMode(int mode) : saved_(std::fegetround()) { std::fesetround(mode); }
  ~RoundingMode() { std::fesetround(saved_); }
  RoundingMode(const RoundingMode&) = delete;
  RoundingMode& operator=(const RoundingMode&) = delete;

 private:
  int saved_;
};

TEST(ParmValueToString, RealTextIsPrintfsOneDecimalForAnyDouble) {
  for (const double value : RealSamples()) {
    ASSERT_EQ(ValueText(ZANKnwBuilder::MakeRealParm(value)), Printf1(value)) << value;
  }
}

TEST(ParmValueToString, RealTextFollowsPrintfInEveryRoundingMode) {
  for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
    const RoundingMode rounding(mode);
    int differences = 0;  // the mode must matter somewhere for the test to show anything
    for (const double value : RealSamples()) {
      const std::string expected = Printf1(value);
      ASSERT_EQ(ValueText(ZANKnwBuilder::MakeRealParm(value)), expected) << value << " mode " << mode;
      char nearest[512];
      {
        const RoundingMode back(FE_TONEAREST);
        std::snprintf(nearest, sizeof nearest, "%.1f", value);
      }
      if (expected != nearest) ++differences;
    }
    EXPECT_GT(differences, 0) << "mode " << mode;
  }
}

TEST(ParmValueToString, IntegerTextIsPrintfsDecimalText) {
  std::mt19937 random(7);
  for (int i = 0; i < 5000; ++i) {
    const auto value = static_cast<std::int32_t>(random());
    char expected[32];
    std::snprintf(expected, sizeof expected, "%d", value);
    ASSERT_EQ(ValueText(ZANKnwBuilder::MakeIntegerParm(value)), expected);
  }
}

// A global locale that groups thousands: time texts are then written as a stream of that locale
// writes them.
struct GroupingPunct : std::numpunct<char> {
  char do_thousands_sep() const override { return '\''; }
  std::string do_grouping() const override { return "\3"; }
};

class GlobalLocale {
 public:
  explicit GlobalLocale(const std::locale& locale) : saved_(std::locale::global(locale)) {}
  ~GlobalLocale() { std::locale::global(saved_); }
  GlobalLocale(const GlobalLocale&) = delete;
  GlobalLocale& operator=(const GlobalLocale&) = delete;

 private:
  std::locale saved_;
};

TEST(ParmValueToString, TimeTextIsAStreamsTextInTheGlobalLocale) {
  const std::vector<std::int64_t> seconds = {0,
                                             1,
                                             -2,
                                             999,
                                             1700000000,
                                             -1700000000,
                                             std::numeric_limits<std::int64_t>::max(),
                                             std::numeric_limits<std::int64_t>::min()};
  for (const bool grouping : {false, true}) {
    const GlobalLocale locale(grouping ? std::locale(std::locale::classic(), new GroupingPunct)
                                       : std::locale::classic());
    for (const std::int64_t s : seconds) {
      std::ostringstream stream;
      stream << static_cast<std::int64_t>(static_cast<std::uint64_t>(s) * std::uint64_t{1000});
      ASSERT_EQ(ValueText(ZANKnwBuilder::MakeTimeParm(ZANTime(s))), stream.str()) << s;
    }
  }
  // The grouping locale did change the text.
  const GlobalLocale locale(std::locale(std::locale::classic(), new GroupingPunct));
  EXPECT_EQ(ValueText(ZANKnwBuilder::MakeTimeParm(ZANTime(1700000000))), "1'700'000'000'000");
}

TEST(ParmValueToString, AppendedTextIsTheReturnedTextAfterWhatWasThere) {
  const ZANIType_var integer = Type("Integer");
  const ZANIList_var withNull = ZANKnwBuilder::MakeList({ZANKnwBuilder::MakeIntegerParm(1), nullptr});
  const ZANIList_var three = ZANKnwBuilder::MakeList(
      {ZANKnwBuilder::MakeIntegerParm(4), ZANKnwBuilder::MakeIntegerParm(5), ZANKnwBuilder::MakeIntegerParm(6)});
  const std::vector<ZANIKnwParm_var> parms = {
      ZANKnwBuilder::MakeStringParm("text"),    ZANKnwBuilder::MakeRealParm(2.25),
      ZANKnwBuilder::MakeIntegerParm(-7),       ZANKnwBuilder::MakeBooleanParm(1),
      ZANKnwBuilder::MakeTimeParm(ZANTime(12)), ZANKnwBuilder::MakeListParm(three),
      ZANKnwBuilder::MakeListParm(withNull),    ZANKnwBuilder::MakeUnsetParm(integer)};
  for (const ZANIKnwParm_var& parm : parms) {
    std::string out = "before:";
    kova::stamps::AppendParmValueText(out, parm);
    EXPECT_EQ(out, "before:" + ValueText(parm));
  }
  std::string out = "before:";
  kova::stamps::AppendParmValueText(out, ZANKnwBuilder::MakeListParm(withNull));
  EXPECT_EQ(out, "before:");  // a list with a null element leaves nothing behind
}

}  // namespace value_text_against_printf
