// Many threads at once, each with its own tables: reading, writing, enveloping and stamping, and the
// first uses of the logger switch and of the stamp computation's dictionaries. Each suite runs
// alone in its own process (so its calls are the process's first), and the whole file is also
// built with ThreadSanitizer (tsan preset):
//   ConcurrentFirstUse  "ActivateKOVALogger" and "DONOTUSE_ENABLEKSSGEN" set
//   ConcurrentWork      "DONOTUSE_ENABLEKSSGEN" set, the logger off
#include <KOVAGenerator/Table.h>
#include <KOVAMappingServices/KOVALogCapture.h>
#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>
#include <KOVAMappingServices/KOVASynchroStampServices.h>
#include <KOVAMappingServices/ZANKnowledge.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <vector>

#include "tests/env/StampObjects.h"
#include "tests/support/RunTogether.h"
#include "tests/support/StdoutCapture.h"
#include "tests/support/TableContent.h"

namespace {

constexpr int kThreads = 8;

TEST(ConcurrentFirstUse, LoggerSwitchAndDictionariesOnFirstUse) {
  std::vector<int> active(kThreads, -1);
  std::vector<std::string> fromObject(kThreads);
  std::vector<std::string> fromMap(kThreads);
  std::vector<HRESULT> objectStatuses(kThreads, E_FAIL);
  std::vector<HRESULT> mapStatuses(kThreads, E_FAIL);
  kova::test::StdoutCapture capture;  // the stamp computation logs its entries
  kova::test::RunTogether(kThreads, [&](int i) {
    // Half the threads start with the switch, half with a stamp (which asks the switch itself).
    ZANUnicodeString objectStamp;
    ZANUnicodeString mapStamp;
    if (i % 2 == 0) active[i] = KOVALogger::IsActive() ? 1 : 0;
    objectStatuses[i] = KOVASynchroStampServices::ComputeKOVASynchroStamp(
        kova::test::WorkedExampleObject(), kova::test::WorkedExampleNames(), objectStamp);
    mapStatuses[i] = KOVASynchroStampServices::ComputeKOVASynchroStamp(kova::test::WorkedExampleAttributes(), mapStamp);
    if (i % 2 == 1) active[i] = KOVALogger::IsActive() ? 1 : 0;
    fromObject[i] = objectStamp.ConvertToChar();
    fromMap[i] = mapStamp.ConvertToChar();
  });
  const std::string log = capture.Stop();
  EXPECT_FALSE(log.empty());
  for (int i = 0; i < kThreads; ++i) {
    EXPECT_EQ(active[i], 1) << i;
    EXPECT_EQ(objectStatuses[i], S_OK) << i;
    EXPECT_EQ(mapStatuses[i], S_OK) << i;
    EXPECT_EQ(fromObject[i], kova::test::kWorkedExampleStamp) << i;
    EXPECT_EQ(fromMap[i], kova::test::kWorkedExampleStamp) << i;
  }
}

// One thread's share of work: its own generated tables written, enveloped, read back and stamped.
// Returns the number of checks that failed (gtest assertions are made on the main thread).
int Work(int thread, int rounds) {
  int failures = 0;
  const ZANBaseUnknown owner(std::make_shared<ZANComponent>());
  for (int round = 0; round < rounds; ++round) {
    const kova::generator::Options options =
        kova::generator::HostileTable(static_cast<std::uint32_t>(1000 * thread + round), 6, 4);
    kova::generator::GeneratedTable generated = kova::generator::BuildTable(options);
    const std::string content = kova::test::DescribeContent(generated.table);

    const ZANUnicodeString written = KOVAMappingParser::TranslateToString(generated.table);
    KOVAMappingTable plain;
    if (KOVAMappingParser::TranslateToMappingTable(written, owner, plain) != S_OK) ++failures;
    if (kova::test::DescribeContent(plain) != content) ++failures;

    ZANUnicodeString envelope;
    if (KOVAMappingParser::CompressMTWithPrefix(written, envelope) != S_OK) ++failures;
    KOVAMappingTable enveloped;
    if (KOVAMappingParser::TranslateToMappingTable(envelope, owner, enveloped) != S_OK) ++failures;
    if (kova::test::DescribeContent(enveloped) != content) ++failures;

    // Stamp the table's objects with the stamp of their own ids, and read the stamps back.
    for (KOVAMappingObject object : enveloped.GetContent()) {
      ZANUnicodeString stamp;
      const std::map<ZANUnicodeString, ZANIKnwParm_var> attributes = {
          {"kOVAId", ZANKnwBuilder::MakeStringParm(object.GetKOVAID())},
          {"Round", ZANKnwBuilder::MakeIntegerParm(round)},
          {"Mass", ZANKnwBuilder::MakeRealParm(2.5, true, kova::test::StandardType("Mass"))}};
      if (KOVASynchroStampServices::ComputeKOVASynchroStamp(attributes, stamp) != S_OK) ++failures;
      if (stamp.GetLengthInByte() != 44) ++failures;
      object.SetKSStamp(stamp);
      if (!object.CompareKSS(stamp)) ++failures;
    }
  }
  return failures;
}

TEST(ConcurrentWork, ThreadsReadWriteAndStampTheirOwnTables) {
  constexpr int kRounds = 12;
  std::vector<int> failures(kThreads, -1);
  std::vector<int> active(kThreads, -1);
  kova::test::RunTogether(kThreads, [&](int i) {
    active[i] = KOVALogger::IsActive() ? 1 : 0;
    failures[i] = Work(i, kRounds);
  });
  for (int i = 0; i < kThreads; ++i) {
    EXPECT_EQ(active[i], 0) << i;
    EXPECT_EQ(failures[i], 0) << i;
  }
}

TEST(ConcurrentWork, CapturesOfThreadsReadingDocumentsNeverMix) {
  // Each thread reads its own refused document: a missing key that names the thread, or text that
  // is not a document, and keeps the reasons of its own calls only.
  std::vector<std::vector<std::string>> reasons(kThreads);
  kova::test::RunTogether(kThreads, [&](int i) {
    KOVALogCapture capture;
    const std::string key = i % 2 == 0 ? "IsLocal" : "PlexoId";
    const std::string document = std::string(R"({"version": 12, "References": [{"kOVAId": "R", )") +
                                 (i % 2 == 0 ? R"("PlexoId": "P", )" : R"("IsLocal": true, )") +
                                 R"("KOVASynchroStamp": "S"}]})";
    for (int round = 0; round < 40; ++round) {
      KOVAMappingTable table;
      KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString(round % 4 == 3 ? std::string("[") : document),
                                                 ZANBaseUnknown(), table);
    }
    reasons[i] = capture.Reasons();
  });
  for (int i = 0; i < kThreads; ++i) {
    const std::string expected =
        i % 2 == 0 ? "UNVALUATED MANDATORY FIELD IsLocal" : "UNVALUATED MANDATORY FIELD PlexoId";
    ASSERT_EQ(reasons[i].size(), 30u) << i;
    for (const std::string& reason : reasons[i]) EXPECT_EQ(reason, expected) << i;
  }
  EXPECT_FALSE(KOVALogger::IsActive());
}

TEST(ConcurrentWork, StampsOfTheSameValuesAgreeAcrossThreads) {
  std::vector<std::string> stamps(kThreads);
  kova::test::RunTogether(kThreads, [&](int i) {
    for (int round = 0; round < 50; ++round) {
      ZANUnicodeString stamp;
      if (KOVASynchroStampServices::ComputeKOVASynchroStamp(kova::test::EveryKindAttributes(), stamp) != S_OK) return;
      if (round > 0 && stamps[i] != stamp.ConvertToChar()) return;
      stamps[i] = stamp.ConvertToChar();
    }
  });
  for (int i = 0; i < kThreads; ++i) EXPECT_EQ(stamps[i], kova::test::kEveryKindStamp) << i;
}

bool SameObject(const KOVAMappingInstance& a, const KOVAMappingInstance& b) {
  return KOVAPrivateAccess::GetPrivate(a) == KOVAPrivateAccess::GetPrivate(b);
}

// The first instance of the table with that Plexo id, by walking.
const KOVAMappingInstance* WalkPlexo(const KOVAMappingTable& table, const std::string& id) {
  for (const KOVAMappingReference& reference : table.GetReferences()) {
    for (const KOVAMappingInstance& instance : reference.GetInstances()) {
      if (instance.GetPlexoID().ConvertToChar() == id) return &instance;
    }
  }
  return nullptr;
}

// The synchronisation loop of a host on its own table: find an instance, give it a new Plexo id and
// stamp, find it again by the new id; now and then list the table and change a handed-out vector
// in place. Returns the number of answers that differ from the walk.
int SyncOwnTable(int thread) {
  const std::string tag = "t" + std::to_string(thread) + "-";
  KOVAMappingTable table;
  for (int r = 0; r < 30; ++r) {
    KOVAMappingReference reference(ZANUnicodeString(tag + "r" + std::to_string(r)),
                                   ZANUnicodeString(tag + "pr" + std::to_string(r)), "V2:s", "null", r != 0);
    if (table.AddReference(reference) != S_OK) return 1000;
    for (int i = 0; i < 20; ++i) {
      const std::string id = tag + std::to_string(r) + "." + std::to_string(i);
      KOVAMappingInstance instance(ZANUnicodeString(id), ZANUnicodeString("p" + id), "V2:s", "R", "null", false);
      if (table.AddInstance(instance, reference) != S_OK) return 1000;
    }
  }
  int wrong = 0;
  for (int step = 0; step < 600; ++step) {
    const int r = step % 30;
    const std::string id = tag + std::to_string(r) + "." + std::to_string(step % 20);
    KOVAMappingInstance found;
    if (table.GetInstanceFromKOVAId(ZANUnicodeString(id), found) != S_OK) {
      ++wrong;
      continue;
    }
    const std::string plexo = "q" + std::to_string(step) + id;
    found.SetPlexoID(ZANUnicodeString(plexo));
    found.SetKSStamp("V3:new");
    KOVAMappingInstance again;
    if (table.GetInstanceFromPlexoId(ZANUnicodeString(plexo), again) != S_OK || !SameObject(again, found)) ++wrong;
    if (step % 50 == 0) {
      // Listed and changed in place: the reference's instances reversed.
      std::vector<KOVAMappingInstance>& instances = table.GetReferences()[static_cast<std::size_t>(r)].GetInstances();
      std::reverse(instances.begin(), instances.end());
      const KOVAMappingInstance* walked = WalkPlexo(table, plexo);
      KOVAMappingInstance after;
      if (walked == nullptr || table.GetInstanceFromPlexoId(ZANUnicodeString(plexo), after) != S_OK ||
          !SameObject(after, *walked)) {
        ++wrong;
      }
    }
  }
  return wrong;
}

TEST(ConcurrentWork, TwoThreadsEditAndLookUpTablesThatShareNoObject) {
  std::vector<int> wrong(2, -1);
  kova::test::RunTogether(2, [&](int i) { wrong[static_cast<std::size_t>(i)] = SyncOwnTable(i); });
  EXPECT_EQ(wrong[0], 0);
  EXPECT_EQ(wrong[1], 0);
}

TEST(ConcurrentWork, SharedHandlesCountedAcrossThreads) {
  // One reference handed to every thread: copies made and dropped at once on all threads keep the
  // object alive and whole (only the reference counts are shared).
  KOVAMappingReference shared("R", "P", "V1:s", "null", false);
  std::atomic<int> wrong{0};
  kova::test::RunTogether(kThreads, [&](int) {
    for (int round = 0; round < 2000; ++round) {
      // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the copy is what is tested
      const KOVAMappingReference copy = shared;
      if (copy.GetKOVAID().ConvertToChar() != "R") ++wrong;
    }
  });
  EXPECT_EQ(wrong.load(), 0);
  EXPECT_EQ(shared.GetPlexoID().ConvertToChar(), "P");
}

}  // namespace
