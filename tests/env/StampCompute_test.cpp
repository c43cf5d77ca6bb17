// KOVASynchroStampServices::ComputeKOVASynchroStamp, both forms, in processes whose environment
// had the stamp switch and the logger switch set or not at load:
//   StampEnabled         DONOTUSE_ENABLEKSSGEN
//   StampDisabled        nothing
//   StampDisabledLogged  ActivateKOVALogger
//   StampLogged          ActivateKOVALogger DONOTUSE_ENABLEKSSGEN
#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVASynchroStampServices.h>
#include <KOVAMappingServices/QORSysServices.h>
#include <KOVAMappingServices/ZANKnowledge.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <list>
#include <map>
#include <string>
#include <vector>

#include "tests/env/StampObjects.h"
#include "tests/support/StdoutCapture.h"

namespace {

using kova::test::StandardType;
using kova::test::StdoutCapture;
using kova::test::WorkedExampleAttributes;
using kova::test::WorkedExampleNames;
using kova::test::WorkedExampleObject;

constexpr HRESULT kEFail = static_cast<HRESULT>(0x80004005u);
const char* const kUntouched = "untouched";
const std::string kLine = "[PrdKOVALog][KOVASynchroStampServices]";

struct Result {
  HRESULT status = S_OK;
  std::string stamp;
};

Result FromObject(const ZANBaseUnknown_var& object, const std::list<ZANUnicodeString>& names) {
  ZANUnicodeString stamp = kUntouched;
  const HRESULT status = KOVASynchroStampServices::ComputeKOVASynchroStamp(object, names, stamp);
  return {status, stamp.ConvertToChar()};
}

Result FromMap(const std::map<ZANUnicodeString, ZANIKnwParm_var>& attributes) {
  ZANUnicodeString stamp = kUntouched;
  const HRESULT status = KOVASynchroStampServices::ComputeKOVASynchroStamp(attributes, stamp);
  return {status, stamp.ConvertToChar()};
}

void ExpectStamp(const Result& result, const char* expected) {
  EXPECT_EQ(result.status, S_OK);
  EXPECT_EQ(result.stamp, expected);
}

void ExpectRefused(const Result& result) {
  EXPECT_EQ(result.status, kEFail);
  EXPECT_EQ(result.stamp, kUntouched);
}

// =============================================================================================
// Switch set, logger off

TEST(StampEnabled, SwitchAndLoggerAreAsRegistered) {
  ASSERT_NE(std::getenv("DONOTUSE_ENABLEKSSGEN"), nullptr);
  ASSERT_FALSE(KOVALogger::IsActive());
}

TEST(StampEnabled, WorkedExampleFromObject) {
  ExpectStamp(FromObject(WorkedExampleObject(), WorkedExampleNames()), kova::test::kWorkedExampleStamp);
}

TEST(StampEnabled, WorkedExampleFromMap) {
  ExpectStamp(FromMap(WorkedExampleAttributes()), kova::test::kWorkedExampleStamp);
}

TEST(StampEnabled, EmptyMapGivesTheStampOfTheEmptyText) { ExpectStamp(FromMap({}), kova::test::kEmptyTextStamp); }

TEST(StampEnabled, EmptyNameListGivesTheStampOfTheEmptyText) {
  ExpectStamp(FromObject(WorkedExampleObject(), {}), kova::test::kEmptyTextStamp);
}

TEST(StampEnabled, InstanceThatIsNotAKnowledgeObjectGivesTheStampOfTheEmptyText) {
  const ZANBaseUnknown_var instanceOnly = ZANKnwBuilder::MakeObject(
      StandardType("GRDReference"), WorkedExampleAttributes(), ZANKnwObjectFacets::InstanceOnly);
  ExpectStamp(FromObject(instanceOnly, WorkedExampleNames()), kova::test::kEmptyTextStamp);
}

TEST(StampEnabled, MapOfUnsetAAndSevenBGivesItsStampText) {
  // Stamp text a:UNSET:b:SET:7
  ExpectStamp(
      FromMap({{"b", ZANKnwBuilder::MakeIntegerParm(7)}, {"a", ZANKnwBuilder::MakeUnsetParm(StandardType("Integer"))}}),
      kova::test::kUnsetAThenSevenBStamp);
}

TEST(StampEnabled, NamesInAnyOrderGiveTheStampOfTheSortedNames) {
  std::vector<std::string> names{"Mass", "Name", "Rev"};
  int orders = 0;
  do {
    const std::list<ZANUnicodeString> given{ZANUnicodeString(names[0]), ZANUnicodeString(names[1]),
                                            ZANUnicodeString(names[2])};
    ExpectStamp(FromObject(WorkedExampleObject(), given), kova::test::kWorkedExampleStamp);
    ++orders;
  } while (std::next_permutation(names.begin(), names.end()));
  EXPECT_EQ(orders, 6);
}

TEST(StampEnabled, ObjectOfTypeGRDInstanceIsRefused) {
  ExpectRefused(FromObject(WorkedExampleObject("GRDInstance"), WorkedExampleNames()));
}

TEST(StampEnabled, ObjectOfAKindOfGRDInstanceIsRefused) {
  const ZANIType_var occurrence = ZANKnwBuilder::CreateType("StampTestOccurrence", StandardType("GRDInstance"));
  ExpectRefused(FromObject(ZANKnwBuilder::MakeObject(occurrence, WorkedExampleAttributes()), WorkedExampleNames()));
}

TEST(StampEnabled, ObjectOfTypeGRDRepInstanceIsRefused) {
  ExpectRefused(FromObject(WorkedExampleObject("GRDRepInstance"), WorkedExampleNames()));
}

TEST(StampEnabled, ObjectOfAKindOfGRDRepInstanceIsRefused) {
  const ZANIType_var shape = ZANKnwBuilder::CreateType("StampTestShapeOccurrence", StandardType("GRDRepInstance"));
  ExpectRefused(FromObject(ZANKnwBuilder::MakeObject(shape, WorkedExampleAttributes()), WorkedExampleNames()));
}

TEST(StampEnabled, RealsDifferingAfterTheFirstDecimalGiveTheSameStamp) {
  // Stamp text Mass:SET:2.5 for both.
  ExpectStamp(FromMap({{"Mass", ZANKnwBuilder::MakeRealParm(2.51)}}), kova::test::kMassTwoPointFiveStamp);
  ExpectStamp(FromMap({{"Mass", ZANKnwBuilder::MakeRealParm(2.54)}}), kova::test::kMassTwoPointFiveStamp);
  const ZANBaseUnknown_var object =
      ZANKnwBuilder::MakeObject(StandardType("GRDReference"), {{"Mass", ZANKnwBuilder::MakeRealParm(2.46)}});
  ExpectStamp(FromObject(object, {"Mass"}), kova::test::kMassTwoPointFiveStamp);
}

TEST(StampEnabled, StampCarriesNoPrefix) {
  const Result result = FromMap(WorkedExampleAttributes());
  ASSERT_EQ(result.status, S_OK);
  EXPECT_NE(result.stamp.rfind("V0KSS:", 0), 0u);
  EXPECT_FALSE(result.stamp.size() > 1 && result.stamp[0] == 'V' && result.stamp.find(':') != std::string::npos);
  // Nothing but the base64 of a 32-byte digest.
  EXPECT_EQ(result.stamp.size(), 44u);
  unsigned char* bytes = nullptr;
  std::uint64_t length = 0;
  ASSERT_EQ(QORSysConverter::ConvertFromBase64(result.stamp.c_str(), bytes, length), S_OK);
  EXPECT_EQ(length, 32u);
  std::free(bytes);
}

TEST(StampEnabled, UnsetValueIsNotPartOfTheStamp) {
  std::map<ZANUnicodeString, ZANIKnwParm_var> attributes = WorkedExampleAttributes();
  attributes["Rev"] = ZANKnwBuilder::MakeStringParm("B", false);
  ExpectStamp(FromMap(attributes), kova::test::kWorkedExampleStamp);
}

TEST(StampEnabled, EveryKindOfValue) {
  ExpectStamp(FromMap(kova::test::EveryKindAttributes()), kova::test::kEveryKindStamp);
  const ZANBaseUnknown_var object =
      ZANKnwBuilder::MakeObject(StandardType("GRDRepReference"), kova::test::EveryKindAttributes());
  ExpectStamp(FromObject(object, {"T", "S", "R", "L", "I", "E", "B"}), kova::test::kEveryKindStamp);
}

TEST(StampEnabled, NamesAreOrderedByCodePoint) {
  // Stamp text B:UNSET:a:UNSET: ("B" before "a").
  const ZANIKnwParm_var unset = ZANKnwBuilder::MakeUnsetParm(StandardType("String"));
  ExpectStamp(FromMap({{"a", unset}, {"B", unset}}), kova::test::kUpperBeforeLowerStamp);
  const ZANBaseUnknown_var object =
      ZANKnwBuilder::MakeObject(StandardType("GRDReference"), {{"a", unset}, {"B", unset}});
  ExpectStamp(FromObject(object, {"a", "B"}), kova::test::kUpperBeforeLowerStamp);
}

TEST(StampEnabled, NonAsciiTextIsDigestedOverItsCharacterCount) {
  // 'Name:SET:Größe': 14 characters, 16 bytes; the digest covers the first 14 bytes.
  ExpectStamp(FromMap({{"Name", ZANKnwBuilder::MakeStringParm("Gr\xC3\xB6\xC3\x9F"
                                                              "e")}}),
              kova::test::kNonAsciiStamp);
}

TEST(StampEnabled, DuplicateNamesAreKept) {
  ExpectStamp(FromObject(WorkedExampleObject(), {"Rev", "Mass", "Name", "Mass"}), kova::test::kDuplicateMassStamp);
}

TEST(StampEnabled, MissingNameShiftsTheValuesOntoTheRequestedNames) {
  // Requested Mass, Missing, Name; the object returns Mass and Name, paired by position:
  // stamp text Mass:SET:2.5Missing:SET:A1.
  ExpectStamp(FromObject(WorkedExampleObject(), {"Name", "Missing", "Mass"}), kova::test::kShiftedByMissingNameStamp);
}

TEST(StampEnabled, OnlyMissingNamesGiveTheStampOfTheEmptyText) {
  ExpectStamp(FromObject(WorkedExampleObject(), {"Nope", "Nada"}), kova::test::kEmptyTextStamp);
}

TEST(StampEnabled, HostTypesDerivedFromAReferenceAreStamped) {
  const ZANIType_var bracket = ZANKnwBuilder::CreateType("StampTestBracket", StandardType("GRDReference"));
  ExpectStamp(FromObject(ZANKnwBuilder::MakeObject(bracket, WorkedExampleAttributes()), WorkedExampleNames()),
              kova::test::kWorkedExampleStamp);
  const ZANIType_var loose = ZANKnwBuilder::CreateType("StampTestLoose", nullptr);
  ExpectStamp(FromObject(ZANKnwBuilder::MakeObject(loose, WorkedExampleAttributes()), WorkedExampleNames()),
              kova::test::kWorkedExampleStamp);
}

TEST(StampEnabled, InstanceWithoutATypeFails) {
  ExpectRefused(FromObject(ZANKnwBuilder::MakeObject(nullptr, WorkedExampleAttributes()), WorkedExampleNames()));
}

TEST(StampEnabled, ObjectThatIsNotAnInstanceRaisesTheNullHandleError) {
  const ZANBaseUnknown_var knowledgeOnly =
      ZANKnwBuilder::MakeObject(nullptr, WorkedExampleAttributes(), ZANKnwObjectFacets::KnowledgeObjectOnly);
  ZANUnicodeString stamp = kUntouched;
  try {
    (void)KOVASynchroStampServices::ComputeKOVASynchroStamp(knowledgeOnly, WorkedExampleNames(), stamp);
    FAIL() << "no exception";
  } catch (const ZANNullVarError& error) {
    EXPECT_EQ(error.HandleName(), "ZANIInstance_var");
  }
  EXPECT_EQ(stamp.ConvertToChar(), kUntouched);
  const ZANBaseUnknown_var parameter = ZANKnwBuilder::MakeIntegerParm(1);
  EXPECT_THROW((void)KOVASynchroStampServices::ComputeKOVASynchroStamp(parameter, {}, stamp), ZANNullVarError);
}

TEST(StampEnabled, NullObjectRaisesTheNullHandleError) {
  ZANUnicodeString stamp = kUntouched;
  EXPECT_THROW((void)KOVASynchroStampServices::ComputeKOVASynchroStamp(ZANBaseUnknown_var(), {"Mass"}, stamp),
               ZANNullVarError);
  EXPECT_EQ(stamp.ConvertToChar(), kUntouched);
}

TEST(StampEnabled, NullParameterReturnedForAnObjectRaisesTheNullHandleError) {
  std::map<ZANUnicodeString, ZANIKnwParm_var> attributes = WorkedExampleAttributes();
  attributes["Gap"] = nullptr;
  const ZANBaseUnknown_var object = ZANKnwBuilder::MakeObject(StandardType("GRDReference"), attributes);
  ZANUnicodeString stamp = kUntouched;
  try {
    (void)KOVASynchroStampServices::ComputeKOVASynchroStamp(object, {"Mass", "Gap"}, stamp);
    FAIL() << "no exception";
  } catch (const ZANNullVarError& error) {
    EXPECT_EQ(error.HandleName(), "ZANIKnwParm_var");
  }
  EXPECT_EQ(stamp.ConvertToChar(), kUntouched);
}

TEST(StampEnabled, NullParameterInTheMapFails) {
  std::map<ZANUnicodeString, ZANIKnwParm_var> attributes = WorkedExampleAttributes();
  attributes["Gap"] = nullptr;
  ExpectRefused(FromMap(attributes));
  ExpectRefused(FromMap({{"Only", nullptr}}));
}

TEST(StampEnabled, NullValueObjectRaisesTheNullHandleError) {
  const ZANIKnwParm_var broken = ZANKnwBuilder::MakeParm(StandardType("Real"), nullptr, true);
  ZANUnicodeString stamp = kUntouched;
  EXPECT_THROW((void)KOVASynchroStampServices::ComputeKOVASynchroStamp({{"Mass", broken}}, stamp), ZANNullVarError);
  EXPECT_EQ(stamp.ConvertToChar(), kUntouched);
  // Not set: the value is not read for the stamp text.
  const ZANIKnwParm_var unsetBroken = ZANKnwBuilder::MakeParm(StandardType("Real"), nullptr, false);
  ExpectStamp(FromMap({{"b", ZANKnwBuilder::MakeIntegerParm(7)}, {"a", unsetBroken}}),
              kova::test::kUnsetAThenSevenBStamp);
}

TEST(StampEnabled, NothingIsLoggedWhenTheLoggerIsOff) {
  StdoutCapture capture;
  (void)FromObject(WorkedExampleObject(), WorkedExampleNames());
  (void)FromMap(WorkedExampleAttributes());
  EXPECT_EQ(capture.Stop(), "");
}

// =============================================================================================
// Switch unset: both forms refuse at once, whatever the input, and log nothing.

void ExpectBothFormsRefuseEverything() {
  StdoutCapture capture;
  ExpectRefused(FromObject(WorkedExampleObject(), WorkedExampleNames()));
  ExpectRefused(FromObject(WorkedExampleObject(), {}));
  ExpectRefused(FromObject(WorkedExampleObject("GRDInstance"), WorkedExampleNames()));
  // Not even the handle checks are reached.
  ExpectRefused(FromObject(ZANBaseUnknown_var(), WorkedExampleNames()));
  ExpectRefused(FromObject(ZANKnwBuilder::MakeObject(nullptr, {}, ZANKnwObjectFacets::KnowledgeObjectOnly), {"Mass"}));
  ExpectRefused(FromMap(WorkedExampleAttributes()));
  ExpectRefused(FromMap({}));
  ExpectRefused(FromMap({{"Gap", nullptr}}));
  EXPECT_EQ(capture.Stop(), "");
}

TEST(StampDisabled, SwitchAndLoggerAreAsRegistered) {
  ASSERT_EQ(std::getenv("DONOTUSE_ENABLEKSSGEN"), nullptr);
  ASSERT_FALSE(KOVALogger::IsActive());
}

TEST(StampDisabled, BothFormsReturnEFailAndLeaveTheStamp) { ExpectBothFormsRefuseEverything(); }

TEST(StampDisabledLogged, SwitchAndLoggerAreAsRegistered) {
  ASSERT_EQ(std::getenv("DONOTUSE_ENABLEKSSGEN"), nullptr);
  ASSERT_TRUE(KOVALogger::IsActive());
}

TEST(StampDisabledLogged, BothFormsReturnEFailAndLogNothing) { ExpectBothFormsRefuseEverything(); }

// =============================================================================================
// Switch set, logger on: log lines compared whole.

TEST(StampLogged, SwitchAndLoggerAreAsRegistered) {
  ASSERT_NE(std::getenv("DONOTUSE_ENABLEKSSGEN"), nullptr);
  ASSERT_TRUE(KOVALogger::IsActive());
}

TEST(StampLogged, ObjectFormLogsEntryEachValueAndTheStampText) {
  StdoutCapture capture;
  const Result result = FromObject(WorkedExampleObject(), {"Rev", "Name", "Mass"});
  const std::vector<std::string> lines = kova::test::SplitLines(capture.Stop());
  ExpectStamp(result, kova::test::kWorkedExampleStamp);
  const std::vector<std::string> expected{
      kLine + "Entering ComputeKOVASynchroStamp from attributes",
      kLine + "Mass - 2.5",
      kLine + "Name - A1",
      kLine + "Rev - ",
      kLine + "Mass:SET:2.5Name:SET:A1Rev:UNSET:",
  };
  EXPECT_EQ(lines, expected);
}

TEST(StampLogged, MapFormLogsEntryEachValueAndTheStampText) {
  std::map<ZANUnicodeString, ZANIKnwParm_var> attributes = WorkedExampleAttributes();
  attributes["Rev"] = ZANKnwBuilder::MakeStringParm("B", false);  // logged, not stamped
  StdoutCapture capture;
  const Result result = FromMap(attributes);
  const std::vector<std::string> lines = kova::test::SplitLines(capture.Stop());
  ExpectStamp(result, kova::test::kWorkedExampleStamp);
  const std::vector<std::string> expected{
      kLine + "Entering ComputeKOVASynchroStamp from Map", kLine + "Mass - 2.5", kLine + "Name - A1", kLine + "Rev - B",
      kLine + "Mass:SET:2.5Name:SET:A1Rev:UNSET:",
  };
  EXPECT_EQ(lines, expected);
}

TEST(StampLogged, ListValuesAreLoggedWithTheirSeparator) {
  StdoutCapture capture;
  const Result result = FromMap(kova::test::EveryKindAttributes());
  const std::vector<std::string> lines = kova::test::SplitLines(capture.Stop());
  ExpectStamp(result, kova::test::kEveryKindStamp);
  const std::vector<std::string> expected{
      kLine + "Entering ComputeKOVASynchroStamp from Map",
      kLine + "B - TRUE",
      kLine + "E - 2",
      kLine + "I - -42",
      kLine + "L - 1\a2\a3",
      kLine + "R - 3.0",
      kLine + "S - x",
      kLine + "T - 1000",
      kLine + "B:SET:TRUEE:SET:2I:SET:-42L:SET:1\a2\a3R:SET:3.0S:SET:xT:SET:1000",
  };
  EXPECT_EQ(lines, expected);
}

TEST(StampLogged, ObjectFormLogsTheRequestedNamesPairedByPosition) {
  StdoutCapture capture;
  const Result result = FromObject(WorkedExampleObject(), {"Name", "Missing", "Mass"});
  const std::vector<std::string> lines = kova::test::SplitLines(capture.Stop());
  ExpectStamp(result, kova::test::kShiftedByMissingNameStamp);
  const std::vector<std::string> expected{
      kLine + "Entering ComputeKOVASynchroStamp from attributes",
      kLine + "Mass - 2.5",
      kLine + "Missing - A1",
      kLine + "Mass:SET:2.5Missing:SET:A1",
  };
  EXPECT_EQ(lines, expected);
}

TEST(StampLogged, EmptyInputsLogAnEmptyStampText) {
  StdoutCapture capture;
  ExpectStamp(FromMap({}), kova::test::kEmptyTextStamp);
  ExpectStamp(FromObject(WorkedExampleObject(), {}), kova::test::kEmptyTextStamp);
  const std::vector<std::string> lines = kova::test::SplitLines(capture.Stop());
  const std::vector<std::string> expected{
      kLine + "Entering ComputeKOVASynchroStamp from Map",
      kLine,
      kLine + "Entering ComputeKOVASynchroStamp from attributes",
      kLine,
  };
  EXPECT_EQ(lines, expected);
}

TEST(StampLogged, RefusedObjectLogsOnlyTheEntry) {
  StdoutCapture capture;
  ExpectRefused(FromObject(WorkedExampleObject("GRDInstance"), WorkedExampleNames()));
  ExpectRefused(FromObject(WorkedExampleObject("GRDRepInstance"), WorkedExampleNames()));
  ExpectRefused(FromObject(ZANKnwBuilder::MakeObject(nullptr, WorkedExampleAttributes()), WorkedExampleNames()));
  const std::vector<std::string> lines = kova::test::SplitLines(capture.Stop());
  const std::vector<std::string> expected(3, kLine + "Entering ComputeKOVASynchroStamp from attributes");
  EXPECT_EQ(lines, expected);
}

TEST(StampLogged, NullParameterInTheMapRaisesWhileItsLineIsWritten) {
  std::map<ZANUnicodeString, ZANIKnwParm_var> attributes{{"a", ZANKnwBuilder::MakeIntegerParm(1)}, {"b", nullptr}};
  ZANUnicodeString stamp = kUntouched;
  StdoutCapture capture;
  EXPECT_THROW((void)KOVASynchroStampServices::ComputeKOVASynchroStamp(attributes, stamp), ZANNullVarError);
  const std::vector<std::string> lines = kova::test::SplitLines(capture.Stop());
  EXPECT_EQ(stamp.ConvertToChar(), kUntouched);
  const std::vector<std::string> expected{
      kLine + "Entering ComputeKOVASynchroStamp from Map",
      kLine + "a - 1",
  };
  EXPECT_EQ(lines, expected);
}

TEST(StampLogged, NullParameterOfAnObjectRaisesWhileItsLineIsWritten) {
  std::map<ZANUnicodeString, ZANIKnwParm_var> attributes = WorkedExampleAttributes();
  attributes["Gap"] = nullptr;
  const ZANBaseUnknown_var object = ZANKnwBuilder::MakeObject(StandardType("GRDReference"), attributes);
  ZANUnicodeString stamp = kUntouched;
  StdoutCapture capture;
  EXPECT_THROW((void)KOVASynchroStampServices::ComputeKOVASynchroStamp(object, {"Mass", "Gap"}, stamp),
               ZANNullVarError);
  const std::vector<std::string> lines = kova::test::SplitLines(capture.Stop());
  EXPECT_EQ(stamp.ConvertToChar(), kUntouched);
  const std::vector<std::string> expected{
      kLine + "Entering ComputeKOVASynchroStamp from attributes",
  };
  EXPECT_EQ(lines, expected);
}

}  // namespace
