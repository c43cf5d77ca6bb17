// First use of the dictionaries from several threads at once. Each suite runs alone in its own
// process, so the calls below are the process's first:
//   DictionaryFirstUse   the type and parameter dictionaries themselves
//   StampFirstUse        the stamp computation (DONOTUSE_ENABLEKSSGEN set), whose first calls
//                        obtain and keep both dictionaries
#include <KOVAMappingServices/KOVASynchroStampServices.h>
#include <KOVAMappingServices/ZANKnowledge.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/env/StampObjects.h"
#include "tests/support/RunTogether.h"

namespace {

constexpr int kThreads = 8;

TEST(DictionaryFirstUse, EveryThreadGetsTheOneDictionaryOfEachKind) {
  std::vector<const ZANITypeDictionary*> types(kThreads, nullptr);
  std::vector<const ZANIParmDictionary*> parms(kThreads, nullptr);
  std::vector<const ZANIType*> timeTypes(kThreads, nullptr);
  kova::test::RunTogether(kThreads, [&](int i) {
    // Half the threads start with the parameter dictionary, which itself needs the type dictionary.
    if (i % 2 == 0) {
      types[i] = ZANGlobalFunctions::GetTypeDictionary().Get();
      parms[i] = ZANKnwGlobalFunctions::GetParmDictionary().Get();
    } else {
      parms[i] = ZANKnwGlobalFunctions::GetParmDictionary().Get();
      types[i] = ZANGlobalFunctions::GetTypeDictionary().Get();
    }
    timeTypes[i] = parms[i]->GetTimeType().Get();
  });
  ASSERT_NE(types[0], nullptr);
  ASSERT_NE(parms[0], nullptr);
  for (int i = 1; i < kThreads; ++i) {
    EXPECT_EQ(types[i], types[0]) << i;
    EXPECT_EQ(parms[i], parms[0]) << i;
  }
  // The parameter dictionary hands out the one type dictionary's types.
  ZANIType_var time;
  ASSERT_EQ(ZANGlobalFunctions::GetTypeDictionary()->FindType("Time", time), S_OK);
  for (int i = 0; i < kThreads; ++i) EXPECT_EQ(timeTypes[i], time.Get()) << i;
}

TEST(StampFirstUse, ConcurrentFirstStampsAgree) {
  // Objects and maps are built before the threads start, and so is the type dictionary they need;
  // the stamp computation's own first uses happen in the threads.
  const ZANBaseUnknown_var object = kova::test::WorkedExampleObject();
  const auto worked = kova::test::WorkedExampleAttributes();
  const auto everyKind = kova::test::EveryKindAttributes();
  std::vector<std::string> stamps(kThreads);
  std::vector<HRESULT> statuses(kThreads, E_FAIL);
  kova::test::RunTogether(kThreads, [&](int i) {
    ZANUnicodeString stamp;
    switch (i % 3) {
      case 0:
        statuses[i] =
            KOVASynchroStampServices::ComputeKOVASynchroStamp(object, kova::test::WorkedExampleNames(), stamp);
        break;
      case 1: statuses[i] = KOVASynchroStampServices::ComputeKOVASynchroStamp(worked, stamp); break;
      default: statuses[i] = KOVASynchroStampServices::ComputeKOVASynchroStamp(everyKind, stamp); break;
    }
    stamps[i] = stamp.ConvertToChar();
  });
  for (int i = 0; i < kThreads; ++i) {
    EXPECT_EQ(statuses[i], S_OK) << i;
    EXPECT_EQ(stamps[i], i % 3 == 2 ? kova::test::kEveryKindStamp : kova::test::kWorkedExampleStamp) << i;
  }
}

}  // namespace
