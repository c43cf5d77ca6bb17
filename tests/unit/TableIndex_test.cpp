// The model's indexes against the plain walks.
//
// Random sequences of operations go through every way the content of a table can change: the
// table's and the references' own members, id and is-local setters on shared handles, assignments
// of private objects, handles and tables, in-place edits of the vectors handed out by
// GetReferences() and GetInstances(), references shared by two tables, copies of private tables,
// and room reserved ahead in the containers.
// Before each operation the expected answer is worked out here by walking the current containers
// with the documented algorithms; the library's answer (status, out handle, resulting content) must
// be the same. The containers are read through the model's read-only access, which does not hand
// them out, so the tables keep using their indexes.
#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAMappingTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "model/MappingIndex.h"
#include "model/Reserve.h"

namespace {

using kova::model::IndexAccess;

using Snapshot = std::vector<std::pair<const void*, std::vector<const void*>>>;

const std::vector<KOVAMappingReference>& Refs(KOVAMappingTable& table) {
  return IndexAccess::References(*KOVAPrivateAccess::GetPrivate(table));
}

const std::vector<KOVAMappingInstance>& Insts(const KOVAMappingReference& reference) {
  return IndexAccess::Instances(reference);
}

Snapshot Take(KOVAMappingTable& table) {
  Snapshot snapshot;
  for (const KOVAMappingReference& reference : Refs(table)) {
    std::vector<const void*> instances;
    for (const KOVAMappingInstance& instance : Insts(reference)) instances.push_back(IndexAccess::Pointer(instance));
    snapshot.emplace_back(IndexAccess::Pointer(reference), std::move(instances));
  }
  return snapshot;
}

// The either-id rule, written out.
bool Same(const KOVAMappingObject& a, const KOVAMappingObject& b) {
  return IndexAccess::KovaId(a) == IndexAccess::KovaId(b) || IndexAccess::PlexoId(a) == IndexAccess::PlexoId(b);
}

template <class Handle>
int FirstSame(const std::vector<Handle>& handles, const KOVAMappingObject& object) {
  for (std::size_t i = 0; i < handles.size(); ++i) {
    if (Same(handles[i], object)) return static_cast<int>(i);
  }
  return -1;
}

int FirstNotLocal(const std::vector<KOVAMappingReference>& references) {
  for (std::size_t i = 0; i < references.size(); ++i) {
    if (!references[i].GetIsLocal()) return static_cast<int>(i);
  }
  return -1;
}

class Sequence {
 public:
  explicit Sequence(std::uint32_t seed) : random_(seed) {}

  void Run(int steps) {
    for (int step = 0; step < steps && !::testing::Test::HasFailure(); ++step) {
      step_ = step;
      Step();
    }
  }

  std::size_t largestTable = 0;
  std::size_t longestInstances = 0;
  int handOuts = 0;

 private:
  std::uint32_t Pick(std::uint32_t n) { return static_cast<std::uint32_t>(random_() % n); }
  bool Chance(std::uint32_t percent) { return Pick(100) < percent; }
  ZANUnicodeString Id(const char* prefix) { return ZANUnicodeString(prefix + std::to_string(Pick(idRange_))); }

  KOVAMappingTable& AnyTable() { return tables_[Pick(static_cast<std::uint32_t>(tables_.size()))]; }

  KOVAMappingReference NewReference() {
    return KOVAMappingReference(Id("k"), Id("p"), "V2:s", "null", !Chance(3));
  }
  KOVAMappingInstance NewInstance() { return KOVAMappingInstance(Id("k"), Id("p"), "V2:s", "R", "null", Chance(50)); }

  // A reference handle of the caller: one kept earlier, one stored in a table, or a new one.
  KOVAMappingReference AnyReference() {
    KOVAMappingTable& table = AnyTable();
    // Mostly one of the first references, so that some grow long instance vectors.
    if (Refs(table).size() > 2 && Chance(40)) return Refs(table)[Pick(2)];
    if (!Refs(table).empty() && Chance(60)) return Refs(table)[Pick(static_cast<std::uint32_t>(Refs(table).size()))];
    if (!references_.empty() && Chance(70)) return references_[Pick(static_cast<std::uint32_t>(references_.size()))];
    references_.push_back(NewReference());
    return references_.back();
  }
  KOVAMappingInstance AnyInstance() {
    KOVAMappingTable& table = AnyTable();
    if (!Refs(table).empty() && Chance(60)) {
      const auto& instances = Insts(Refs(table)[Pick(static_cast<std::uint32_t>(Refs(table).size()))]);
      if (!instances.empty()) return instances[Pick(static_cast<std::uint32_t>(instances.size()))];
    }
    if (!instances_.empty() && Chance(50)) return instances_[Pick(static_cast<std::uint32_t>(instances_.size()))];
    instances_.push_back(NewInstance());
    return instances_.back();
  }

  void CheckSame(const Snapshot& expected, KOVAMappingTable& table) {
    ASSERT_EQ(Take(table), expected) << "step " << step_;
  }

  void Step() {
    KOVAMappingTable& table = AnyTable();
    const Snapshot before = Take(table);
    largestTable = std::max(largestTable, before.size());
    for (const auto& entry : before) longestInstances = std::max(longestInstances, entry.second.size());
    const auto& refs = Refs(table);
    switch (Pick(31)) {
      case 0: case 1: case 2: case 3: case 4: case 5: {  // AddReference
        KOVAMappingReference reference = Chance(80) ? NewReference() : AnyReference();
        const bool refused = FirstSame(refs, reference) >= 0 || (FirstNotLocal(refs) >= 0 && !reference.GetIsLocal());
        Snapshot expected = before;
        if (!refused) expected.emplace_back(IndexAccess::Pointer(reference), std::vector<const void*>());
        if (!refused) {
          for (const KOVAMappingInstance& i : Insts(reference)) expected.back().second.push_back(IndexAccess::Pointer(i));
        }
        ASSERT_EQ(table.AddReference(reference), refused ? E_FAIL : S_OK) << "step " << step_;
        CheckSame(expected, table);
        if (!refused && Chance(30)) references_.push_back(reference);
        break;
      }
      case 6: case 7: case 8: case 9: case 10: case 11: {  // AddInstance through the table
        KOVAMappingInstance instance = Chance(85) ? NewInstance() : AnyInstance();
        KOVAMappingReference reference = AnyReference();
        const int r = FirstSame(refs, reference);
        Snapshot expected = before;
        HRESULT status = E_FAIL;
        if (r >= 0 && FirstSame(Insts(refs[r]), instance) < 0) {
          status = S_OK;
          // The same private reference may stand at several positions (put there through a
          // handed-out vector): all of them show the change.
          for (auto& entry : expected) {
            if (entry.first == before[r].first) entry.second.push_back(IndexAccess::Pointer(instance));
          }
        }
        ASSERT_EQ(table.AddInstance(instance, reference), status) << "step " << step_;
        CheckSame(expected, table);
        if (Chance(20)) instances_.push_back(instance);
        break;
      }
      case 12: {  // RemoveReference
        KOVAMappingReference reference = AnyReference();
        const int r = FirstSame(refs, reference);
        Snapshot expected = before;
        if (r >= 0) expected.erase(expected.begin() + r);
        ASSERT_EQ(table.RemoveReference(reference), r >= 0 ? S_OK : E_FAIL) << "step " << step_;
        CheckSame(expected, table);
        break;
      }
      case 13: {  // RemoveInstance
        KOVAMappingInstance instance = AnyInstance();
        KOVAMappingReference reference = AnyReference();
        const int r = FirstSame(refs, reference);
        Snapshot expected = before;
        HRESULT status = E_FAIL;
        if (r >= 0) {
          const int i = FirstSame(Insts(refs[r]), instance);
          if (i >= 0) {
            status = S_OK;
            for (auto& entry : expected) {
              if (entry.first == before[r].first) entry.second.erase(entry.second.begin() + i);
            }
          }
        }
        ASSERT_EQ(table.RemoveInstance(instance, reference), status) << "step " << step_;
        CheckSame(expected, table);
        break;
      }
      case 14: case 15: case 16: case 17: case 18: case 19:  // look-ups
        CheckLookUps(table);
        break;
      case 20: case 21: {  // id setters through a shared handle
        if (Chance(50)) {
          KOVAMappingReference reference = AnyReference();
          if (Chance(50)) reference.SetKOVAID(Id("k")); else reference.SetPlexoID(Id("p"));
        } else {
          KOVAMappingInstance instance = AnyInstance();
          if (Chance(50)) instance.SetKOVAID(Id("k")); else instance.SetPlexoID(Id("p"));
        }
        CheckSame(before, table);
        break;
      }
      case 22: {  // is-local through the private reference
        KOVAPrivateAccess::GetPrivate(AnyReference())->SetIsLocal(Chance(50));
        CheckSame(before, table);
        break;
      }
      case 23: {  // assignments of private objects (ids, is-local and instance vectors copied)
        if (Chance(50)) {
          *KOVAPrivateAccess::GetPrivate(AnyInstance()) = *KOVAPrivateAccess::GetPrivate(AnyInstance());
        } else if (Chance(50)) {
          KOVAMappingReference target = AnyReference();
          KOVAMappingReference source = AnyReference();
          *KOVAPrivateAccess::GetPrivate(target) = *KOVAPrivateAccess::GetPrivate(source);
        } else {
          // Base part only, through the base class.
          static_cast<KOVAMappingPrivateObject&>(*KOVAPrivateAccess::GetPrivate(AnyReference())) =
              static_cast<KOVAMappingPrivateObject&>(*KOVAPrivateAccess::GetPrivate(AnyInstance()));
        }
        break;
      }
      case 24: {  // the caller adds to or removes from a reference directly (maybe shared)
        KOVAMappingReference reference = AnyReference();
        if (Chance(70)) {
          reference.AddInstance(Chance(80) ? NewInstance() : AnyInstance());
        } else {
          reference.RemoveInstance(AnyInstance());
        }
        break;
      }
      case 25: {  // in-place edits of a handed-out instance vector (rare: it ends indexing there)
        if (!Chance(15)) break;
        ++handOuts;
        std::vector<KOVAMappingInstance>& instances = AnyReference().GetInstances();
        EditInPlace(instances, [this] { return Chance(70) ? NewInstance() : AnyInstance(); });
        break;
      }
      case 26: {  // in-place edits of a handed-out reference vector (rare)
        if (!Chance(8)) break;
        ++handOuts;
        std::vector<KOVAMappingReference>& references = table.GetReferences();
        EditInPlace(references, [this] { return Chance(70) ? NewReference() : AnyReference(); });
        break;
      }
      case 27: {  // handle assignments: sharing (reference, instance) and detaching (object)
        KOVAMappingReference a = AnyReference();
        a = AnyReference();
        KOVAMappingInstance b = AnyInstance();
        b = AnyInstance();
        KOVAMappingObject c(b);
        c = a;
        c.SetKOVAID(Id("k"));  // changes only the detached copy
        CheckSame(before, table);
        break;
      }
      case 28: {  // copies of tables: public copies share, private copies and assignments copy
        if (Chance(50)) {
          KOVAMappingTable copy = table;
          KOVAMappingReference reference = NewReference();
          const bool refused = FirstSame(refs, reference) >= 0 || (FirstNotLocal(refs) >= 0 && !reference.GetIsLocal());
          ASSERT_EQ(copy.AddReference(reference), refused ? E_FAIL : S_OK);
        } else if (Chance(50) && tables_.size() < 4) {
          auto* copy = new KOVAMappingPrivateTable(*KOVAPrivateAccess::GetPrivate(table));
          tables_.push_back(KOVAPrivateAccess::GetPublic(*copy));
          ASSERT_EQ(Take(tables_.back()), before);
        } else {
          KOVAMappingTable& other = AnyTable();
          *KOVAPrivateAccess::GetPrivate(table) = *KOVAPrivateAccess::GetPrivate(other);
          ASSERT_EQ(Take(table), Take(other));
        }
        break;
      }
      case 29: {  // room reserved ahead, as the reader does: fewer, as many or more than then come
        const std::size_t count = Pick(3) == 0 ? Pick(4) : Pick(3) == 0 ? 5000 : Pick(80);
        if (!refs.empty() && Chance(50)) {
          kova::model::ReserveInstances(refs[Pick(static_cast<std::uint32_t>(refs.size()))], count);
        } else {
          kova::model::ReserveReferences(table, count);
        }
        ASSERT_EQ(Take(table), before) << "step " << step_;
        break;
      }
      default: {  // a reference of this table added to another table, then changed through it
        if (tables_.size() < 3) tables_.emplace_back();
        KOVAMappingTable& other = AnyTable();
        if (!refs.empty()) {
          KOVAMappingReference shared = refs[Pick(static_cast<std::uint32_t>(refs.size()))];
          other.AddReference(shared);
          KOVAMappingInstance added = NewInstance();
          other.AddInstance(added, shared);
        }
        break;
      }
    }
    CheckLookUps(table);
    if (step_ % 4 == 0) CheckLookUps(AnyTable());
  }

  template <class Handle, class Make>
  void EditInPlace(std::vector<Handle>& handles, Make make) {
    switch (Pick(6)) {
      case 0: handles.push_back(make()); break;
      case 1: if (!handles.empty()) handles.erase(handles.begin() + Pick(static_cast<std::uint32_t>(handles.size()))); break;
      case 2: if (!handles.empty()) handles[Pick(static_cast<std::uint32_t>(handles.size()))] = make(); break;
      case 3: if (handles.size() > 1) std::swap(handles.front(), handles.back()); break;
      case 4: if (Chance(20)) handles.clear(); break;
      default:  // KOVAMappingObject::operator= on a stored handle: a fresh private object in place
        if (!handles.empty()) {
          KOVAMappingObject& stored = handles[Pick(static_cast<std::uint32_t>(handles.size()))];
          stored = make();
        }
        break;
    }
  }

  void CheckLookUps(KOVAMappingTable& table) {
    const auto& refs = Refs(table);
    for (int round = 0; round < 1; ++round) {
      const ZANUnicodeString kova = Id("k");
      const ZANUnicodeString plexo = Id("p");
      // References by id.
      for (int byKova = 0; byKova < 2; ++byKova) {
        const void* expected = nullptr;
        for (const KOVAMappingReference& r : refs) {
          if ((byKova ? IndexAccess::KovaId(r) == kova : IndexAccess::PlexoId(r) == plexo)) {
            expected = IndexAccess::Pointer(r);
            break;
          }
        }
        KOVAMappingReference out;
        const void* untouched = IndexAccess::Pointer(out);
        const HRESULT status = byKova ? table.GetReferenceFromKOVAId(kova, out) : table.GetReferenceFromPlexoId(plexo, out);
        ASSERT_EQ(status, expected ? S_OK : E_FAIL) << "step " << step_;
        ASSERT_EQ(IndexAccess::Pointer(out), expected ? expected : untouched) << "step " << step_;
      }
      // Instances by id, over all references.
      for (int byKova = 0; byKova < 2; ++byKova) {
        const void* expected = nullptr;
        for (const KOVAMappingReference& r : refs) {
          for (const KOVAMappingInstance& i : Insts(r)) {
            if ((byKova ? IndexAccess::KovaId(i) == kova : IndexAccess::PlexoId(i) == plexo)) {
              expected = IndexAccess::Pointer(i);
              break;
            }
          }
          if (expected) break;
        }
        KOVAMappingInstance out;
        const void* untouched = IndexAccess::Pointer(out);
        const HRESULT status = byKova ? table.GetInstanceFromKOVAId(kova, out) : table.GetInstanceFromPlexoId(plexo, out);
        ASSERT_EQ(status, expected ? S_OK : E_FAIL) << "step " << step_;
        ASSERT_EQ(IndexAccess::Pointer(out), expected ? expected : untouched) << "step " << step_;
      }
    }
    const int root = FirstNotLocal(refs);
    ASSERT_EQ(table.HasRootReference(), root >= 0) << "step " << step_;
    KOVAMappingReference out;
    const void* untouched = IndexAccess::Pointer(out);
    ASSERT_EQ(table.GetRootReference(out), root >= 0 ? S_OK : E_FAIL) << "step " << step_;
    ASSERT_EQ(IndexAccess::Pointer(out), root >= 0 ? IndexAccess::Pointer(refs[root]) : untouched);
  }

  std::mt19937 random_;
  // Some sequences draw ids from a small range (many collisions), others from a large one (large
  // tables, where the indexes are in use).
  std::uint32_t idRange_ = random_() % 2 == 0 ? 40 : 2000;
  int step_ = 0;
  // A deque: references to its tables stay valid while tables are added.
  std::deque<KOVAMappingTable> tables_ = std::deque<KOVAMappingTable>(1);
  std::vector<KOVAMappingReference> references_;
  std::vector<KOVAMappingInstance> instances_;
};

TEST(TableIndex, RandomSequencesAnswerAsThePlainWalks) {
  std::size_t largest = 0;
  std::size_t longest = 0;
  int handOuts = 0;
  for (std::uint32_t seed = 1; seed <= 300 && !HasFailure(); ++seed) {
    Sequence sequence(seed);
    // Every tenth sequence is long, so that tables and instance vectors grow well past the length
    // from which they are indexed.
    sequence.Run(seed % 10 == 0 ? 1200 : 200);
    largest = std::max(largest, sequence.largestTable);
    longest = std::max(longest, sequence.longestInstances);
    handOuts += sequence.handOuts;
  }
  // The sequences reach tables large enough to be indexed, and also go through handed-out vectors.
  EXPECT_GE(largest, 3 * kova::model::kWalkBelow);
  EXPECT_GE(longest, 2 * kova::model::kWalkBelow);
  EXPECT_GT(handOuts, 50);
}

// A table large enough to be indexed: 40 local references r<n>/pr<n>, the first holding 40
// instances i<n>/pi<n>.
KOVAMappingTable LargeTable() {
  KOVAMappingTable table;
  for (int r = 0; r < 40; ++r) {
    KOVAMappingReference reference(ZANUnicodeString("r" + std::to_string(r)), ZANUnicodeString("pr" + std::to_string(r)),
                                   "V2:s", "null", true);
    EXPECT_EQ(table.AddReference(reference), S_OK);
  }
  KOVAMappingReference first = Refs(table).front();
  for (int i = 0; i < 40; ++i) {
    KOVAMappingInstance instance(ZANUnicodeString("i" + std::to_string(i)), ZANUnicodeString("pi" + std::to_string(i)),
                                 "V2:s", "r0", "null", false);
    EXPECT_EQ(table.AddInstance(instance, first), S_OK);
  }
  return table;
}

TEST(TableIndex, IdChangedThroughTheCallersHandleIsSeenAtOnce) {
  KOVAMappingTable table = LargeTable();
  KOVAMappingReference found;
  ASSERT_EQ(table.GetReferenceFromKOVAId("r7", found), S_OK);  // the index is in use from here
  found.SetKOVAID("renamed");
  KOVAMappingReference out;
  EXPECT_EQ(table.GetReferenceFromKOVAId("r7", out), E_FAIL);
  ASSERT_EQ(table.GetReferenceFromKOVAId("renamed", out), S_OK);
  EXPECT_EQ(IndexAccess::Pointer(out), IndexAccess::Pointer(found));
  // The renamed reference now collides with a new one by kOVA id only.
  KOVAMappingReference clash("renamed", "fresh", "V2:s", "null", true);
  EXPECT_EQ(table.AddReference(clash), E_FAIL);

  KOVAMappingInstance instance;
  ASSERT_EQ(table.GetInstanceFromPlexoId("pi30", instance), S_OK);
  instance.SetPlexoID("pi2");  // now two instances carry pi2: the earlier one wins
  KOVAMappingInstance first;
  ASSERT_EQ(table.GetInstanceFromPlexoId("pi2", first), S_OK);
  EXPECT_EQ(first.GetKOVAID(), "i2");
  EXPECT_EQ(table.GetInstanceFromPlexoId("pi30", first), E_FAIL);
}

TEST(TableIndex, IsLocalChangedThroughThePrivateReferenceMovesTheRoot) {
  KOVAMappingTable table = LargeTable();
  EXPECT_FALSE(table.HasRootReference());
  KOVAMappingReference r20;
  ASSERT_EQ(table.GetReferenceFromKOVAId("r20", r20), S_OK);
  KOVAPrivateAccess::GetPrivate(r20)->SetIsLocal(false);
  KOVAMappingReference root;
  ASSERT_EQ(table.GetRootReference(root), S_OK);
  EXPECT_EQ(root.GetKOVAID(), "r20");
  KOVAMappingReference second("other", "other", "V2:s", "null", false);
  EXPECT_EQ(table.AddReference(second), E_FAIL);
}

TEST(TableIndex, HandedOutVectorsChangedInPlaceAreSeen) {
  KOVAMappingTable table = LargeTable();
  KOVAMappingReference out;
  ASSERT_EQ(table.GetReferenceFromPlexoId("pr39", out), S_OK);
  std::vector<KOVAMappingReference>& references = table.GetReferences();
  references.erase(references.begin() + 39);
  EXPECT_EQ(table.GetReferenceFromPlexoId("pr39", out), E_FAIL);
  references.front() = KOVAMappingReference("front", "pfront", "V2:s", "null", false);
  EXPECT_EQ(table.GetReferenceFromKOVAId("r0", out), E_FAIL);
  ASSERT_EQ(table.GetRootReference(out), S_OK);
  EXPECT_EQ(out.GetKOVAID(), "front");

  KOVAMappingTable other = LargeTable();
  KOVAMappingInstance instance;
  ASSERT_EQ(other.GetInstanceFromKOVAId("i39", instance), S_OK);
  KOVAMappingReference holder = Refs(other).front();
  std::vector<KOVAMappingInstance>& instances = holder.GetInstances();
  instances.pop_back();
  EXPECT_EQ(other.GetInstanceFromKOVAId("i39", instance), E_FAIL);
  std::swap(instances.front(), instances.back());
  ASSERT_EQ(other.GetInstanceFromPlexoId("pi0", instance), S_OK);
  // Duplicates that the identity rule keeps out can be put in by hand: the first still wins.
  instances.push_back(instances.front());
  KOVAMappingReference first = Refs(other).front();
  KOVAMappingInstance duplicate = instances.front();
  EXPECT_EQ(other.AddInstance(duplicate, first), E_FAIL);
  EXPECT_EQ(other.RemoveInstance(duplicate, first), S_OK);
  ASSERT_EQ(other.GetInstanceFromKOVAId(duplicate.GetKOVAID(), instance), S_OK);
  EXPECT_EQ(IndexAccess::Pointer(instance), IndexAccess::Pointer(duplicate));
}

TEST(TableIndex, ReadingWritingAndDumpingHandNothingOut) {
  KOVAMappingTable source = LargeTable();
  const ZANUnicodeString text = KOVAMappingParser::TranslateToString(source);
  KOVAMappingTable table;
  ASSERT_EQ(KOVAMappingParser::TranslateToMappingTable(text, ZANBaseUnknown(), table), S_OK);
  EXPECT_EQ(KOVAMappingParser::TranslateToString(table), text);
  EXPECT_FALSE(KOVALogger::ToString(table).IsEmpty());
  EXPECT_EQ(table.GetInstances().size(), 40u);
  EXPECT_EQ(table.GetContent().size(), 80u);
  EXPECT_FALSE(IndexAccess::ReferencesHandedOut(*KOVAPrivateAccess::GetPrivate(table)));
  EXPECT_FALSE(IndexAccess::ReferencesHandedOut(*KOVAPrivateAccess::GetPrivate(source)));
  for (const KOVAMappingReference& reference : Refs(table)) EXPECT_FALSE(IndexAccess::InstancesHandedOut(reference));
  for (const KOVAMappingReference& reference : Refs(source)) EXPECT_FALSE(IndexAccess::InstancesHandedOut(reference));
  table.GetReferences();
  EXPECT_TRUE(IndexAccess::ReferencesHandedOut(*KOVAPrivateAccess::GetPrivate(table)));
}

}  // namespace
