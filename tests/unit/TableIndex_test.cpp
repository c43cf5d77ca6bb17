// The model's indexes against the plain walks.
//
// Random sequences of operations go through every way the content of a table can change: the
// table's and the references' own members, id and is-local setters on shared handles (kept by the
// caller, found in the table, or taken from GetContent()), assignments of private objects, handles
// and tables, in-place edits of the vectors handed out by GetReferences() and GetInstances() (right
// away, or many steps later through a vector the caller kept), instances shared by two references
// and references shared by two tables, removals and re-additions, copies of private tables, and
// room reserved ahead in the containers.
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

#include <algorithm>
#include <deque>
#include <memory>
#include <random>
#include <string>
#include <utility>
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
  int lateEdits = 0;

 private:
  std::uint32_t Pick(std::uint32_t n) { return static_cast<std::uint32_t>(random_() % n); }
  bool Chance(std::uint32_t percent) { return Pick(100) < percent; }
  ZANUnicodeString Id(const char* prefix) { return ZANUnicodeString(prefix + std::to_string(Pick(idRange_))); }

  KOVAMappingTable& AnyTable() { return tables_[Pick(static_cast<std::uint32_t>(tables_.size()))]; }

  KOVAMappingReference NewReference() { return KOVAMappingReference(Id("k"), Id("p"), "V2:s", "null", !Chance(3)); }
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
    switch (Pick(37)) {
      case 0:
      case 1:
      case 2:
      case 3:
      case 4:
      case 5: {  // AddReference
        KOVAMappingReference reference = Chance(80) ? NewReference() : AnyReference();
        const bool refused = FirstSame(refs, reference) >= 0 || (FirstNotLocal(refs) >= 0 && !reference.GetIsLocal());
        Snapshot expected = before;
        if (!refused) expected.emplace_back(IndexAccess::Pointer(reference), std::vector<const void*>());
        if (!refused) {
          for (const KOVAMappingInstance& i : Insts(reference))
            expected.back().second.push_back(IndexAccess::Pointer(i));
        }
        ASSERT_EQ(table.AddReference(reference), refused ? E_FAIL : S_OK) << "step " << step_;
        CheckSame(expected, table);
        if (!refused && Chance(30)) references_.push_back(reference);
        break;
      }
      case 6:
      case 7:
      case 8:
      case 9:
      case 10:
      case 11: {  // AddInstance through the table
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
      case 14:
      case 15:
      case 16:
      case 17:
      case 18:
      case 19:  // look-ups
        CheckLookUps(table);
        break;
      case 20:
      case 21: {  // id setters through a shared handle
        if (Chance(50)) {
          KOVAMappingReference reference = AnyReference();
          if (Chance(50))
            reference.SetKOVAID(Id("k"));
          else
            reference.SetPlexoID(Id("p"));
        } else {
          KOVAMappingInstance instance = AnyInstance();
          if (Chance(50))
            instance.SetKOVAID(Id("k"));
          else
            instance.SetPlexoID(Id("p"));
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
          const std::size_t count = Insts(reference).size();
          KOVAMappingInstance instance = Chance(80) ? NewInstance() : AnyInstance();
          const bool refused = FirstSame(Insts(reference), instance) >= 0;
          ASSERT_EQ(reference.AddInstance(instance), refused ? E_FAIL : S_OK) << "step " << step_;
          ASSERT_EQ(Insts(reference).size(), count + (refused ? 0 : 1));
          if (!refused) {
            ASSERT_EQ(IndexAccess::Pointer(Insts(reference).back()), IndexAccess::Pointer(instance));
          }
        } else {
          KOVAMappingInstance instance = AnyInstance();
          const int at = FirstSame(Insts(reference), instance);
          std::vector<const void*> expected;
          for (const KOVAMappingInstance& i : Insts(reference)) expected.push_back(IndexAccess::Pointer(i));
          if (at >= 0) expected.erase(expected.begin() + at);
          ASSERT_EQ(reference.RemoveInstance(instance), at >= 0 ? S_OK : E_FAIL) << "step " << step_;
          std::vector<const void*> now;
          for (const KOVAMappingInstance& i : Insts(reference)) now.push_back(IndexAccess::Pointer(i));
          ASSERT_EQ(now, expected) << "step " << step_;
        }
        break;
      }
      case 25: {  // in-place edits of a handed-out instance vector, which the caller may keep
        ++handOuts;
        KOVAMappingReference holder = AnyReference();
        std::vector<KOVAMappingInstance>& instances = holder.GetInstances();
        if (Chance(60)) EditInPlace(instances, [this] { return Chance(70) ? NewInstance() : AnyInstance(); });
        if (Chance(40)) keptInstances_.emplace_back(holder, &instances);
        break;
      }
      case 26: {  // in-place edits of a handed-out reference vector, which the caller may keep
        ++handOuts;
        std::vector<KOVAMappingReference>& references = table.GetReferences();
        if (Chance(50)) EditInPlace(references, [this] { return Chance(70) ? NewReference() : AnyReference(); });
        if (Chance(30)) keptReferences_.emplace_back(table, &references);
        break;
      }
      case 31:
      case 32: {  // a vector handed out long ago, changed now
        if (!keptInstances_.empty() && Chance(60)) {
          auto& kept = keptInstances_[Pick(static_cast<std::uint32_t>(keptInstances_.size()))];
          EditInPlace(*kept.second, [this] { return Chance(70) ? NewInstance() : AnyInstance(); });
          ++lateEdits;
        } else if (!keptReferences_.empty()) {
          auto& kept = keptReferences_[Pick(static_cast<std::uint32_t>(keptReferences_.size()))];
          EditInPlace(*kept.second, [this] { return Chance(70) ? NewReference() : AnyReference(); });
          ++lateEdits;
        }
        break;
      }
      case 33: {  // ids changed through the handles of a GetContent() view
        std::vector<KOVAMappingObject> content = table.GetContent();
        if (content.empty()) break;
        for (int n = 0; n < 3; ++n) {
          KOVAMappingObject& object = content[Pick(static_cast<std::uint32_t>(content.size()))];
          if (Chance(50))
            object.SetKOVAID(Id("k"));
          else
            object.SetPlexoID(Id("p"));
        }
        CheckSame(before, table);
        break;
      }
      case 34: {  // a reference removed and added back (it goes to the end when it is accepted)
        if (refs.empty()) break;
        KOVAMappingReference reference = refs[Pick(static_cast<std::uint32_t>(refs.size()))];
        ASSERT_EQ(table.RemoveReference(reference), S_OK) << "step " << step_;
        const auto& now = Refs(table);
        const bool refused = FirstSame(now, reference) >= 0 || (FirstNotLocal(now) >= 0 && !reference.GetIsLocal());
        ASSERT_EQ(table.AddReference(reference), refused ? E_FAIL : S_OK) << "step " << step_;
        break;
      }
      case 36: {  // a burst of new instances under one reference, so that long vectors are indexed
        if (refs.empty()) break;
        KOVAMappingReference reference = refs[Pick(static_cast<std::uint32_t>(refs.size()))];
        for (int n = 0; n < 24; ++n) {
          KOVAMappingInstance instance = NewInstance();
          const int r = FirstSame(Refs(table), reference);
          const bool accepted = FirstSame(Insts(Refs(table)[r]), instance) < 0;
          ASSERT_EQ(table.AddInstance(instance, reference), accepted ? S_OK : E_FAIL) << "step " << step_;
        }
        break;
      }
      case 35: {  // is-local of an instance, through its private object (no index keys on it)
        KOVAPrivateAccess::GetPrivate(AnyInstance())->SetIsLocal(Chance(50));
        CheckSame(before, table);
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
      case 30: {  // a reference of this table added to another table, then changed through it
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
    // Now and then every id held in every table is looked up.
    if (step_ % 100 == 99) {
      for (KOVAMappingTable& each : tables_) CheckEveryId(each);
    }
  }

  // Looks up every kOVA id and Plexo id of the table's instances and references and compares with
  // the walks.
  void CheckEveryId(KOVAMappingTable& table) {
    const auto& refs = Refs(table);
    const auto firstInstance = [&](bool byKova, const ZANUnicodeString& id) -> const void* {
      for (const KOVAMappingReference& r : refs) {
        for (const KOVAMappingInstance& i : Insts(r)) {
          if ((byKova ? IndexAccess::KovaId(i) : IndexAccess::PlexoId(i)) == id) return IndexAccess::Pointer(i);
        }
      }
      return nullptr;
    };
    const auto firstReference = [&](bool byKova, const ZANUnicodeString& id) -> const void* {
      for (const KOVAMappingReference& r : refs) {
        if ((byKova ? IndexAccess::KovaId(r) : IndexAccess::PlexoId(r)) == id) return IndexAccess::Pointer(r);
      }
      return nullptr;
    };
    for (const KOVAMappingReference& held : refs) {
      for (int byKova = 0; byKova < 2; ++byKova) {
        const ZANUnicodeString id = byKova ? IndexAccess::KovaId(held) : IndexAccess::PlexoId(held);
        KOVAMappingReference out;
        ASSERT_EQ(byKova ? table.GetReferenceFromKOVAId(id, out) : table.GetReferenceFromPlexoId(id, out), S_OK);
        ASSERT_EQ(IndexAccess::Pointer(out), firstReference(byKova, id)) << "step " << step_;
      }
      for (const KOVAMappingInstance& instance : Insts(held)) {
        for (int byKova = 0; byKova < 2; ++byKova) {
          const ZANUnicodeString id = byKova ? IndexAccess::KovaId(instance) : IndexAccess::PlexoId(instance);
          KOVAMappingInstance out;
          ASSERT_EQ(byKova ? table.GetInstanceFromKOVAId(id, out) : table.GetInstanceFromPlexoId(id, out), S_OK);
          ASSERT_EQ(IndexAccess::Pointer(out), firstInstance(byKova, id)) << "step " << step_;
        }
      }
    }
  }

  template <class Handle, class Make>
  void EditInPlace(std::vector<Handle>& handles, Make make) {
    const auto any = [&] { return Pick(static_cast<std::uint32_t>(handles.size())); };
    switch (Pick(11)) {
      case 0: handles.push_back(make()); break;
      case 1:
        if (!handles.empty()) handles.erase(handles.begin() + any());
        break;
      case 2:
        if (!handles.empty()) handles[any()] = make();
        break;
      case 3:
        if (handles.size() > 1) std::swap(handles[any()], handles[any()]);
        break;
      case 4:
        if (Chance(20)) handles.clear();
        break;
      case 5:  // sorted by kOVA id, then Plexo id
        std::sort(handles.begin(), handles.end(), [](const Handle& a, const Handle& b) {
          return std::make_pair(IndexAccess::KovaId(a).View(), IndexAccess::PlexoId(a).View()) <
                 std::make_pair(IndexAccess::KovaId(b).View(), IndexAccess::PlexoId(b).View());
        });
        break;
      case 6:  // the last element replaced at the same size, in the same buffer
        if (!handles.empty()) {
          handles.pop_back();
          handles.push_back(make());
        }
        break;
      case 7: handles.insert(handles.begin() + (handles.empty() ? 0 : any()), make()); break;
      case 8: std::reverse(handles.begin(), handles.end()); break;
      case 9:  // an element's handle copied onto another position: the same object twice
        if (!handles.empty()) handles[any()] = Handle(handles[any()]);
        break;
      default:  // KOVAMappingObject::operator= on a stored handle: a fresh private object in place
        if (!handles.empty()) {
          KOVAMappingObject& stored = handles[any()];
          stored = make();
        }
        break;
    }
  }

  // An id to look up: one held by an object of the table, or a random one (mostly absent).
  ZANUnicodeString LookUpId(KOVAMappingTable& table, bool kova) {
    const auto& refs = Refs(table);
    if (!refs.empty() && Chance(60)) {
      const KOVAMappingReference& reference = refs[Pick(static_cast<std::uint32_t>(refs.size()))];
      const auto& instances = Insts(reference);
      if (!instances.empty() && Chance(70)) {
        const KOVAMappingInstance& instance = instances[Pick(static_cast<std::uint32_t>(instances.size()))];
        return kova ? IndexAccess::KovaId(instance) : IndexAccess::PlexoId(instance);
      }
      return kova ? IndexAccess::KovaId(reference) : IndexAccess::PlexoId(reference);
    }
    return Id(kova ? "k" : "p");
  }

  void CheckLookUps(KOVAMappingTable& table) {
    const auto& refs = Refs(table);
    for (int round = 0; round < 2; ++round) {
      const ZANUnicodeString kova = LookUpId(table, true);
      const ZANUnicodeString plexo = LookUpId(table, false);
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
        const HRESULT status =
            byKova ? table.GetReferenceFromKOVAId(kova, out) : table.GetReferenceFromPlexoId(plexo, out);
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
        const HRESULT status =
            byKova ? table.GetInstanceFromKOVAId(kova, out) : table.GetInstanceFromPlexoId(plexo, out);
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
  // Vectors handed out earlier and kept, with what keeps their owners alive.
  std::vector<std::pair<KOVAMappingReference, std::vector<KOVAMappingInstance>*>> keptInstances_;
  std::vector<std::pair<KOVAMappingTable, std::vector<KOVAMappingReference>*>> keptReferences_;
};

TEST(TableIndex, RandomSequencesAnswerAsThePlainWalks) {
  std::size_t largest = 0;
  std::size_t longest = 0;
  int handOuts = 0;
  int lateEdits = 0;
  for (std::uint32_t seed = 1; seed <= 300 && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Sequence sequence(seed);
    // Every tenth sequence is long, so that tables and instance vectors grow well past the length
    // from which they are indexed.
    sequence.Run(seed % 10 == 0 ? 1200 : 200);
    largest = std::max(largest, sequence.largestTable);
    longest = std::max(longest, sequence.longestInstances);
    handOuts += sequence.handOuts;
    lateEdits += sequence.lateEdits;
  }
  // The sequences reach tables large enough to be indexed, and also go through handed-out vectors,
  // changed at once and long after.
  EXPECT_GE(largest, 3 * kova::model::kWalkBelow);
  EXPECT_GE(longest, 2 * kova::model::kWalkBelow);
  EXPECT_GT(handOuts, 1000);
  EXPECT_GT(lateEdits, 500);
}

// A table large enough to be indexed: 40 local references r<n>/pr<n>, the first holding 40
// instances i<n>/pi<n>.
KOVAMappingTable LargeTable() {
  KOVAMappingTable table;
  for (int r = 0; r < 40; ++r) {
    KOVAMappingReference reference(ZANUnicodeString("r" + std::to_string(r)),
                                   ZANUnicodeString("pr" + std::to_string(r)), "V2:s", "null", true);
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

namespace {

TEST(TableIndex, ConstViewsHandNothingOut) {
  KOVAMappingTable table = LargeTable();
  std::size_t instances = 0;
  for (const KOVAMappingReference& reference : std::as_const(table).GetReferences()) {
    instances += reference.GetInstances().size();
  }
  EXPECT_EQ(instances, 40u);
  EXPECT_FALSE(IndexAccess::ReferencesHandedOut(*KOVAPrivateAccess::GetPrivate(table)));
  for (const KOVAMappingReference& reference : Refs(table)) EXPECT_FALSE(IndexAccess::InstancesHandedOut(reference));
  EXPECT_EQ(&std::as_const(table).GetReferences(), &table.GetReferences());
}

TEST(TableIndex, AppendToAnEmptyHandedOutVectorWithinItsCapacityIsSeen) {
  KOVAMappingTable table = LargeTable();
  KOVAMappingInstance instance;
  ASSERT_EQ(table.GetInstanceFromKOVAId("i0", instance), S_OK);  // the instance index is in use
  KOVAMappingReference last = Refs(table).back();
  std::vector<KOVAMappingInstance>& empty = last.GetInstances();
  ASSERT_TRUE(empty.empty());
  empty.reserve(8);  // no element exists to report the change: only the size tells
  empty.push_back(KOVAMappingInstance("late", "plate", "V2:s", "r39", "null", false));
  ASSERT_EQ(table.GetInstanceFromPlexoId("plate", instance), S_OK);
  EXPECT_EQ(instance.GetKOVAID(), "late");
  empty.push_back(KOVAMappingInstance("later", "plater", "V2:s", "r39", "null", false));
  ASSERT_EQ(table.GetInstanceFromKOVAId("later", instance), S_OK);
  EXPECT_EQ(instance.GetPlexoID(), "plater");
}

TEST(TableIndex, ObjectsOutliveTheirTableAndJoinAnother) {
  KOVAMappingReference kept;
  KOVAMappingInstance keptInstance;
  {
    KOVAMappingTable table = LargeTable();
    ASSERT_EQ(table.GetInstanceFromKOVAId("i5", keptInstance), S_OK);
    ASSERT_EQ(table.GetReferenceFromKOVAId("r0", kept), S_OK);
  }
  // The table is gone: its objects live on, and changing them touches no index of it.
  keptInstance.SetKOVAID("moved");
  kept.SetPlexoID("pmoved");
  KOVAMappingTable other;
  ASSERT_EQ(other.AddReference(kept), S_OK);
  KOVAMappingInstance found;
  ASSERT_EQ(other.GetInstanceFromKOVAId("moved", found), S_OK);
  EXPECT_EQ(IndexAccess::Pointer(found), IndexAccess::Pointer(keptInstance));
  KOVAMappingReference reference;
  ASSERT_EQ(other.GetReferenceFromPlexoId("pmoved", reference), S_OK);
  EXPECT_EQ(other.GetInstances().size(), 40u);
}

TEST(TableIndex, AReferenceInTwoTablesIsFoundInBothAfterAChange) {
  KOVAMappingTable first = LargeTable();
  KOVAMappingTable second;
  KOVAMappingReference shared = Refs(first).front();
  ASSERT_EQ(second.AddReference(shared), S_OK);
  KOVAMappingInstance instance;
  ASSERT_EQ(first.GetInstanceFromKOVAId("i7", instance), S_OK);
  ASSERT_EQ(second.GetInstanceFromKOVAId("i7", instance), S_OK);
  instance.SetKOVAID("seven");
  KOVAMappingInstance again;
  EXPECT_EQ(first.GetInstanceFromKOVAId("i7", again), E_FAIL);
  EXPECT_EQ(second.GetInstanceFromKOVAId("i7", again), E_FAIL);
  ASSERT_EQ(first.GetInstanceFromKOVAId("seven", again), S_OK);
  ASSERT_EQ(second.GetInstanceFromKOVAId("seven", again), S_OK);
  EXPECT_EQ(IndexAccess::Pointer(again), IndexAccess::Pointer(instance));
  // Removed from one table only: the other still finds it.
  ASSERT_EQ(first.RemoveReference(shared), S_OK);
  EXPECT_EQ(first.GetInstanceFromKOVAId("seven", again), E_FAIL);
  EXPECT_EQ(second.GetInstanceFromKOVAId("seven", again), S_OK);
}

}  // namespace

namespace {

// A reference holding most of the table's instances leaves and comes back: the table's instance
// index is made again at the next look-up, and answers as before.
TEST(TableIndex, AReferenceHoldingMostInstancesRemovedAndAddedBack) {
  KOVAMappingTable table = LargeTable();
  KOVAMappingInstance instance;
  ASSERT_EQ(table.GetInstanceFromKOVAId("i12", instance), S_OK);  // the instance index is in use
  KOVAMappingReference holder = Refs(table).front();
  ASSERT_EQ(table.RemoveReference(holder), S_OK);
  EXPECT_EQ(table.GetInstanceFromKOVAId("i12", instance), E_FAIL);
  ASSERT_EQ(table.AddReference(holder), S_OK);
  ASSERT_EQ(table.GetInstanceFromKOVAId("i12", instance), S_OK);
  EXPECT_EQ(IndexAccess::Pointer(instance), IndexAccess::Pointer(Insts(holder)[12]));
  instance.SetPlexoID("moved");
  KOVAMappingInstance found;
  ASSERT_EQ(table.GetInstanceFromPlexoId("moved", found), S_OK);
  EXPECT_EQ(IndexAccess::Pointer(found), IndexAccess::Pointer(instance));
  // Removed again without a look-up in between, then an instance added to it while it is out.
  ASSERT_EQ(table.RemoveReference(holder), S_OK);
  KOVAMappingInstance late("late", "plate", "V2:s", "r0", "null", false);
  ASSERT_EQ(holder.AddInstance(late), S_OK);
  EXPECT_EQ(holder.AddInstance(KOVAMappingInstance("other", "plate", "V2:s", "r0", "null", false)), E_FAIL);
  ASSERT_EQ(table.AddReference(holder), S_OK);
  ASSERT_EQ(table.GetInstanceFromPlexoId("plate", found), S_OK);
  EXPECT_EQ(IndexAccess::Pointer(found), IndexAccess::Pointer(late));
}

}  // namespace
