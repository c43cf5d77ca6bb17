// Mapping tables: identity and root rules, look-ups, flat views, copies and private access.
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAMappingTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

KOVAMappingReference Ref(const char* kovaId, const char* plexoId, bool isLocal) {
  return KOVAMappingReference(kovaId, plexoId, "V1:s", "null", isLocal);
}

KOVAMappingInstance Inst(const char* kovaId, const char* plexoId, const char* refId = "R") {
  return KOVAMappingInstance(kovaId, plexoId, "V1:s", refId, "null", false);
}

std::vector<std::string> Ids(const std::vector<KOVAMappingObject>& objects) {
  std::vector<std::string> ids;
  ids.reserve(objects.size());
  for (const KOVAMappingObject& o : objects) ids.push_back(o.GetKOVAID().ConvertToChar());
  return ids;
}

std::vector<std::string> Ids(const std::vector<KOVAMappingInstance>& objects) {
  std::vector<std::string> ids;
  ids.reserve(objects.size());
  for (const KOVAMappingInstance& o : objects) ids.push_back(o.GetKOVAID().ConvertToChar());
  return ids;
}

TEST(MappingTable, EmptyTableAnswersNothing) {
  KOVAMappingTable table;
  EXPECT_FALSE(table.HasRootReference());
  KOVAMappingReference out = Ref("untouched", "u", true);
  EXPECT_EQ(table.GetRootReference(out), E_FAIL);
  EXPECT_EQ(table.GetReferenceFromKOVAId("x", out), E_FAIL);
  EXPECT_EQ(table.GetReferenceFromPlexoId("x", out), E_FAIL);
  EXPECT_EQ(out.GetKOVAID(), "untouched");
  KOVAMappingInstance instanceOut = Inst("untouched", "u");
  EXPECT_EQ(table.GetInstanceFromKOVAId("x", instanceOut), E_FAIL);
  EXPECT_EQ(table.GetInstanceFromPlexoId("x", instanceOut), E_FAIL);
  EXPECT_EQ(instanceOut.GetKOVAID(), "untouched");
  EXPECT_TRUE(table.GetContent().empty());
  EXPECT_TRUE(table.GetInstances().empty());
  EXPECT_TRUE(table.GetReferences().empty());
  KOVAMappingReference any = Ref("R", "P", false);
  EXPECT_EQ(table.RemoveReference(any), E_FAIL);
  KOVAMappingInstance instance = Inst("I", "PI");
  EXPECT_EQ(table.RemoveInstance(instance, any), E_FAIL);
}

TEST(MappingTable, SecondNonLocalReferenceIsRefused) {
  KOVAMappingTable table;
  KOVAMappingReference root = Ref("R1", "P1", false);
  KOVAMappingReference second = Ref("R2", "P2", false);
  ASSERT_EQ(table.AddReference(root), S_OK);
  EXPECT_EQ(table.AddReference(second), E_FAIL);
  EXPECT_EQ(table.GetReferences().size(), 1u);
}

TEST(MappingTable, LocalReferencesAreAlwaysAccepted) {
  KOVAMappingTable table;
  KOVAMappingReference root = Ref("R1", "P1", false);
  KOVAMappingReference local1 = Ref("L1", "PL1", true);
  KOVAMappingReference local2 = Ref("L2", "PL2", true);
  ASSERT_EQ(table.AddReference(root), S_OK);
  EXPECT_EQ(table.AddReference(local1), S_OK);
  EXPECT_EQ(table.AddReference(local2), S_OK);
  EXPECT_EQ(table.GetReferences().size(), 3u);
}

TEST(MappingTable, NonLocalReferenceAfterLocalOnesBecomesTheRoot) {
  KOVAMappingTable table;
  KOVAMappingReference local = Ref("L1", "PL1", true);
  ASSERT_EQ(table.AddReference(local), S_OK);
  EXPECT_FALSE(table.HasRootReference());
  KOVAMappingReference out;
  EXPECT_EQ(table.GetRootReference(out), E_FAIL);
  KOVAMappingReference root = Ref("R1", "P1", false);
  ASSERT_EQ(table.AddReference(root), S_OK);
  EXPECT_TRUE(table.HasRootReference());
  ASSERT_EQ(table.GetRootReference(out), S_OK);
  EXPECT_EQ(out.GetKOVAID(), "R1");
  // The root handle shares the stored reference.
  out.SetCustomData("via root");
  EXPECT_EQ(table.GetReferences()[1].GetCustomData(), "via root");
}

TEST(MappingTable, ReferenceWithAStoredPlexoIdIsRefusedWhateverItsKOVAId) {
  KOVAMappingTable table;
  KOVAMappingReference first = Ref("R1", "P", true);
  KOVAMappingReference samePlexo = Ref("R2", "P", true);
  KOVAMappingReference sameKova = Ref("R1", "Q", true);
  ASSERT_EQ(table.AddReference(first), S_OK);
  EXPECT_EQ(table.AddReference(samePlexo), E_FAIL);
  EXPECT_EQ(table.AddReference(sameKova), E_FAIL);
  EXPECT_EQ(table.GetReferences().size(), 1u);
}

TEST(MappingTable, AddInstanceToAReferenceNotInTheTableFails) {
  KOVAMappingTable table;
  KOVAMappingReference stored = Ref("R1", "P1", false);
  ASSERT_EQ(table.AddReference(stored), S_OK);
  KOVAMappingReference absent = Ref("X", "PX", true);
  KOVAMappingInstance instance = Inst("I", "PI");
  EXPECT_EQ(table.AddInstance(instance, absent), E_FAIL);
  EXPECT_TRUE(table.GetInstances().empty());
  EXPECT_TRUE(absent.GetInstances().empty());
}

TEST(MappingTable, AddInstanceNamingAReferenceEqualByPlexoIdAddsToTheStoredOne) {
  KOVAMappingTable table;
  KOVAMappingReference stored = Ref("R1", "P1", false);
  ASSERT_EQ(table.AddReference(stored), S_OK);
  KOVAMappingReference lookalike = Ref("other", "P1", false);
  KOVAMappingInstance instance = Inst("I", "PI");
  ASSERT_EQ(table.AddInstance(instance, lookalike), S_OK);
  EXPECT_EQ(stored.GetInstances().size(), 1u);
  EXPECT_TRUE(lookalike.GetInstances().empty());
  // A duplicate instance is refused by the stored reference.
  KOVAMappingInstance duplicate = Inst("I", "other");
  EXPECT_EQ(table.AddInstance(duplicate, stored), E_FAIL);
}

TEST(MappingTable, ContentInterleavesReferencesAndTheirInstances) {
  KOVAMappingTable table;
  KOVAMappingReference a = Ref("A", "PA", false);
  KOVAMappingReference b = Ref("B", "PB", true);
  ASSERT_EQ(table.AddReference(a), S_OK);
  ASSERT_EQ(table.AddReference(b), S_OK);
  KOVAMappingInstance a1 = Inst("a1", "Pa1"), a2 = Inst("a2", "Pa2"), b1 = Inst("b1", "Pb1");
  ASSERT_EQ(table.AddInstance(a1, a), S_OK);
  ASSERT_EQ(table.AddInstance(a2, a), S_OK);
  ASSERT_EQ(table.AddInstance(b1, b), S_OK);
  EXPECT_EQ(Ids(table.GetContent()), (std::vector<std::string>{"A", "a1", "a2", "B", "b1"}));
  EXPECT_EQ(Ids(table.GetInstances()), (std::vector<std::string>{"a1", "a2", "b1"}));
  // The flat views share the stored objects.
  table.GetContent()[2].SetCustomData("via content");
  EXPECT_EQ(a2.GetCustomData(), "via content");
  table.GetInstances()[2].SetCustomData("via instances");
  EXPECT_EQ(b1.GetCustomData(), "via instances");
}

TEST(MappingTable, LookUpsTakeTheFirstMatchInTableOrder) {
  KOVAMappingTable table;
  KOVAMappingReference a = Ref("A", "PA", false);
  KOVAMappingReference b = Ref("B", "PB", true);
  ASSERT_EQ(table.AddReference(a), S_OK);
  ASSERT_EQ(table.AddReference(b), S_OK);
  // The same instance ids under two references: the earlier reference wins.
  ASSERT_EQ(a.AddInstance(KOVAMappingInstance("I", "PI", "s", "A", "under A", false)), S_OK);
  ASSERT_EQ(b.AddInstance(KOVAMappingInstance("I", "PI", "s", "B", "under B", false)), S_OK);
  KOVAMappingInstance found;
  ASSERT_EQ(table.GetInstanceFromKOVAId("I", found), S_OK);
  EXPECT_EQ(found.GetCustomData(), "under A");
  ASSERT_EQ(table.GetInstanceFromPlexoId("PI", found), S_OK);
  EXPECT_EQ(found.GetRefID(), "A");
  // References are not candidates of instance look-ups, instances not of reference look-ups.
  EXPECT_EQ(table.GetInstanceFromKOVAId("A", found), E_FAIL);
  KOVAMappingReference reference;
  EXPECT_EQ(table.GetReferenceFromKOVAId("I", reference), E_FAIL);
  ASSERT_EQ(table.GetReferenceFromPlexoId("PB", reference), S_OK);
  EXPECT_EQ(reference.GetKOVAID(), "B");
  // A look-up by one id does not match the other id.
  EXPECT_EQ(table.GetReferenceFromKOVAId("PB", reference), E_FAIL);
}

TEST(MappingTable, ChangingAnInstanceFoundByKOVAIdChangesTheTable) {
  KOVAMappingTable table;
  KOVAMappingReference a = Ref("A", "PA", false);
  ASSERT_EQ(table.AddReference(a), S_OK);
  KOVAMappingInstance i = Inst("I", "PI");
  ASSERT_EQ(table.AddInstance(i, a), S_OK);
  KOVAMappingInstance found;
  ASSERT_EQ(table.GetInstanceFromKOVAId("I", found), S_OK);
  found.SetKSStamp("V2:new");
  const auto stored = KOVAPrivateAccess::GetPrivate(table.GetReferences()[0].GetInstances()[0]);
  EXPECT_EQ(stored->GetKSStamp(), "new");
  EXPECT_EQ(stored->GetKSSVersion(), 2);
}

TEST(MappingTable, RemoveReferenceTakesItsInstancesAlong) {
  KOVAMappingTable table;
  KOVAMappingReference a = Ref("A", "PA", false), b = Ref("B", "PB", true), c = Ref("C", "PC", true);
  ASSERT_EQ(table.AddReference(a), S_OK);
  ASSERT_EQ(table.AddReference(b), S_OK);
  ASSERT_EQ(table.AddReference(c), S_OK);
  KOVAMappingInstance bi = Inst("bi", "Pbi");
  ASSERT_EQ(table.AddInstance(bi, b), S_OK);
  KOVAMappingReference byPlexo = Ref("zzz", "PB", true);
  ASSERT_EQ(table.RemoveReference(byPlexo), S_OK);
  EXPECT_EQ(Ids(table.GetContent()), (std::vector<std::string>{"A", "C"}));
  KOVAMappingInstance out;
  EXPECT_EQ(table.GetInstanceFromKOVAId("bi", out), E_FAIL);
  EXPECT_EQ(table.RemoveReference(byPlexo), E_FAIL);
}

TEST(MappingTable, RemoveInstanceGoesThroughTheStoredReference) {
  KOVAMappingTable table;
  KOVAMappingReference a = Ref("A", "PA", false);
  ASSERT_EQ(table.AddReference(a), S_OK);
  KOVAMappingInstance i1 = Inst("i1", "P1"), i2 = Inst("i2", "P2");
  ASSERT_EQ(table.AddInstance(i1, a), S_OK);
  ASSERT_EQ(table.AddInstance(i2, a), S_OK);
  KOVAMappingReference lookalike = Ref("A", "other", false);
  ASSERT_EQ(table.RemoveInstance(i1, lookalike), S_OK);
  EXPECT_EQ(Ids(table.GetInstances()), (std::vector<std::string>{"i2"}));
  EXPECT_EQ(table.RemoveInstance(i1, a), E_FAIL);
  KOVAMappingReference absent = Ref("X", "PX", true);
  EXPECT_EQ(table.RemoveInstance(i2, absent), E_FAIL);
}

TEST(MappingTable, CopiesShareOneContent) {
  KOVAMappingTable table;
  ZANBaseUnknown owner(std::make_shared<ZANComponent>());
  table.SetOwner(owner);
  KOVAMappingTable copy(table);
  KOVAMappingReference a = Ref("A", "PA", false);
  ASSERT_EQ(copy.AddReference(a), S_OK);
  EXPECT_EQ(table.GetReferences().size(), 1u);
  EXPECT_EQ(copy.GetOwner(), owner);
  KOVAMappingTable assigned;
  assigned = table;
  KOVAMappingReference b = Ref("B", "PB", true);
  ASSERT_EQ(assigned.AddReference(b), S_OK);
  EXPECT_EQ(copy.GetReferences().size(), 2u);
  EXPECT_EQ(KOVAPrivateAccess::GetPrivate(assigned), KOVAPrivateAccess::GetPrivate(table));
}

TEST(MappingTable, CopyOutlivesTheOriginal) {
  KOVAMappingTable* original = new KOVAMappingTable;
  KOVAMappingReference a = Ref("A", "PA", false);
  ASSERT_EQ(original->AddReference(a), S_OK);
  KOVAMappingTable copy(*original);
  delete original;
  ASSERT_EQ(copy.GetReferences().size(), 1u);
  EXPECT_EQ(copy.GetReferences()[0].GetKOVAID(), "A");
}

TEST(MappingTable, OwnerDefaultsToAnEmptyHandle) {
  KOVAMappingTable table;
  EXPECT_TRUE(table.GetOwner().IsNull());
  ZANBaseUnknown owner(std::make_shared<ZANComponent>());
  EXPECT_EQ(&table.SetOwner(owner), &table);
  EXPECT_EQ(table.GetOwner(), owner);
}

TEST(MappingTable, NewTableHasTheCurrentVersion) {
  KOVAMappingTable table;
  EXPECT_EQ(KOVAPrivateAccess::GetPrivate(table)->GetVersion(), KOVAMappingPrivateTable::GetCurrentVersion());
  KOVAPrivateAccess::GetPrivate(table)->SetVersion(-7);
  EXPECT_EQ(KOVAPrivateAccess::GetPrivate(table)->GetVersion(), -7);
}

TEST(MappingTable, PrivateTableCopySharesTheReferences) {
  KOVAMappingPrivateTable source;
  source.SetVersion(8);
  ASSERT_EQ(source.AddReference(Ref("A", "PA", false)), S_OK);
  KOVAMappingPrivateTable copy(source);
  EXPECT_EQ(copy.GetVersion(), 8);
  copy.GetReferences()[0].SetCustomData("shared");
  EXPECT_EQ(source.GetReferences()[0].GetCustomData(), "shared");
  ASSERT_EQ(copy.AddReference(Ref("B", "PB", true)), S_OK);
  EXPECT_EQ(source.GetReferences().size(), 1u);
  KOVAMappingPrivateTable assigned;
  assigned = source;
  EXPECT_EQ(assigned.GetVersion(), 8);
  EXPECT_EQ(assigned.GetReferences().size(), 1u);
  KOVAMappingPrivateTable& self = assigned;
  assigned = self;
  EXPECT_EQ(assigned.GetReferences().size(), 1u);
}

TEST(PrivateAccess, GetPrivateSharesAndGetPublicCopies) {
  KOVAMappingInstance instance = Inst("I", "P");
  auto shared = KOVAPrivateAccess::GetPrivate(instance);
  shared->SetRefID("through private");
  EXPECT_EQ(instance.GetRefID(), "through private");
  KOVAMappingInstance fresh = KOVAPrivateAccess::GetPublic(*shared);
  fresh.SetRefID("fresh");
  EXPECT_EQ(instance.GetRefID(), "through private");

  KOVAMappingReference reference = Ref("R", "PR", false);
  KOVAMappingInstance child = Inst("C", "PC");
  ASSERT_EQ(reference.AddInstance(child), S_OK);
  KOVAMappingReference copy = KOVAPrivateAccess::GetPublic(*KOVAPrivateAccess::GetPrivate(reference));
  copy.SetKOVAID("R2");
  EXPECT_EQ(reference.GetKOVAID(), "R");
  copy.GetInstances()[0].SetCustomData("shared child");
  EXPECT_EQ(child.GetCustomData(), "shared child");
}

TEST(PrivateAccess, GetPublicOfAFreePrivateTableTakesItOver) {
  auto* privateTable = new KOVAMappingPrivateTable;
  privateTable->SetVersion(9);
  {
    KOVAMappingTable table = KOVAPrivateAccess::GetPublic(*privateTable);
    EXPECT_EQ(KOVAPrivateAccess::GetPrivate(table), privateTable);
    KOVAMappingTable copy(table);
    EXPECT_EQ(KOVAPrivateAccess::GetPrivate(copy)->GetVersion(), 9);
  }  // deleted here, once (the sanitizer build checks it)
}

TEST(PrivateAccess, GetPublicOfAnOwnedPrivateTableNeverDeletesItTwice) {
  KOVAMappingTable owner;
  KOVAMappingReference a = Ref("A", "PA", false);
  ASSERT_EQ(owner.AddReference(a), S_OK);
  {
    KOVAMappingTable other = KOVAPrivateAccess::GetPublic(*KOVAPrivateAccess::GetPrivate(owner));
    EXPECT_EQ(other.GetReferences().size(), 1u);
  }
  EXPECT_EQ(owner.GetReferences().size(), 1u);
  EXPECT_EQ(owner.GetReferences()[0].GetKOVAID(), "A");
}

}  // namespace
