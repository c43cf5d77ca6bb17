// Mapping objects: fields, stamps and their versions, identity, sharing and copying.
#include <KOVAMappingServices/KOVAMappingInstance.h>
#include <KOVAMappingServices/KOVAMappingObject.h>
#include <KOVAMappingServices/KOVAMappingPrivateInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateReference.h>
#include <KOVAMappingServices/KOVAMappingReference.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <gtest/gtest.h>

namespace {

TEST(MappingObject, FreshObjectHasTheDefaults) {
  const KOVAMappingPrivateObject object;
  EXPECT_EQ(object.GetKOVAID(), "");
  EXPECT_EQ(object.GetPlexoID(), "");
  EXPECT_EQ(object.GetKSStamp(), "");
  EXPECT_EQ(object.GetCustomData(), "");
  EXPECT_FALSE(object.GetIsLocal());
  EXPECT_EQ(object.GetKSSVersion(), 3);
  EXPECT_FALSE(object.isKSSComputedFromCEStamp());
  EXPECT_TRUE(object.isKSSComputedWithUnsetAttributes());

  const KOVAMappingInstance instance;
  EXPECT_EQ(instance.GetKOVAID(), "");
  EXPECT_EQ(instance.GetRefID(), "");
  EXPECT_EQ(KOVAPrivateAccess::GetPrivate(instance)->GetKSSVersion(), 3);
  KOVAMappingReference reference;
  EXPECT_TRUE(reference.GetInstances().empty());
  EXPECT_FALSE(reference.GetIsLocal());
}

TEST(MappingObject, StampVersionZeroMeansComputedFromCEStamp) {
  KOVAMappingPrivateObject object;
  object.SetKSStamp("V0:abc");
  EXPECT_EQ(object.GetKSSVersion(), 0);
  EXPECT_EQ(object.GetKSStamp(), "abc");
  EXPECT_TRUE(object.isKSSComputedFromCEStamp());
  EXPECT_FALSE(object.isKSSComputedWithUnsetAttributes());

  object.SetKSStamp("V0KSS:xyz");
  EXPECT_EQ(object.GetKSSVersion(), 0);
  EXPECT_EQ(object.GetKSStamp(), "xyz");
}

TEST(MappingObject, StampVersionOneSetsNeitherFlag) {
  KOVAMappingPrivateObject object;
  object.SetKSStamp("V1:abc");
  EXPECT_EQ(object.GetKSSVersion(), 1);
  EXPECT_FALSE(object.isKSSComputedFromCEStamp());
  EXPECT_FALSE(object.isKSSComputedWithUnsetAttributes());
}

TEST(MappingObject, StampVersionTwoMeansComputedWithUnsetAttributes) {
  KOVAMappingPrivateObject object;
  object.SetKSStamp("V2:abc");
  EXPECT_EQ(object.GetKSSVersion(), 2);
  EXPECT_TRUE(object.isKSSComputedWithUnsetAttributes());
  object.SetKSSVersion(-1);
  EXPECT_FALSE(object.isKSSComputedWithUnsetAttributes());
  EXPECT_FALSE(object.isKSSComputedFromCEStamp());
  object.SetKSSVersion(9);
  EXPECT_TRUE(object.isKSSComputedWithUnsetAttributes());
}

TEST(MappingObject, UnversionedStampKeepsThePreviousVersion) {
  KOVAMappingPrivateObject object;
  object.SetKSStamp("V1:first");
  object.SetKSStamp("second");
  EXPECT_EQ(object.GetKSStamp(), "second");
  EXPECT_EQ(object.GetKSSVersion(), 1);
}

TEST(MappingObject, ConstructorsStripTheStampPrefix) {
  const KOVAMappingPrivateObject three("K", "P", "V2:abc");
  EXPECT_EQ(three.GetKSStamp(), "abc");
  EXPECT_EQ(three.GetKSSVersion(), 2);
  EXPECT_EQ(three.GetCustomData(), "");
  EXPECT_FALSE(three.GetIsLocal());

  const KOVAMappingPrivateInstance instance("K", "P", "V5:abc", "R", "data", true);
  EXPECT_EQ(instance.GetKSStamp(), "abc");
  EXPECT_EQ(instance.GetKSSVersion(), 5);
  EXPECT_EQ(instance.GetRefID(), "R");
  EXPECT_EQ(instance.GetCustomData(), "data");
  EXPECT_TRUE(instance.GetIsLocal());

  // One prefix is stripped per stamp handling: the second one stays in the stored text.
  const KOVAMappingReference reference("K", "P", "V1:V2:abc", "null", false);
  EXPECT_EQ(KOVAPrivateAccess::GetPrivate(reference)->GetKSStamp(), "V2:abc");
  EXPECT_EQ(KOVAPrivateAccess::GetPrivate(reference)->GetKSSVersion(), 1);
}

TEST(MappingObject, PlatformIdGivesThePlexoIdText) {
  const KOVAMappingInstance instance("I1", ZANPLMID_Simple("4A2F"), "s", "R1", "", false);
  EXPECT_EQ(instance.GetPlexoID(), "4A2F");
  const KOVAMappingReference reference("R1", ZANPLMID_Simple("77"), "s", "", true);
  EXPECT_EQ(reference.GetPlexoID(), "77");
  EXPECT_TRUE(reference.GetIsLocal());
}

TEST(MappingObject, SameKOVAIdMeansEqualWhateverThePlexoIds) {
  EXPECT_EQ(KOVAMappingPrivateObject("K", "P1", ""), KOVAMappingPrivateObject("K", "P2", ""));
  EXPECT_EQ(KOVAMappingInstance("K", "P1", "", "", "", false), KOVAMappingInstance("K", "P2", "", "", "", false));
}

TEST(MappingObject, SamePlexoIdMeansEqualWhateverTheKOVAIds) {
  EXPECT_EQ(KOVAMappingPrivateObject("K1", "P", ""), KOVAMappingPrivateObject("K2", "P", ""));
  EXPECT_EQ(KOVAMappingReference("K1", "P", "", "", false), KOVAMappingReference("K2", "P", "", "", false));
}

TEST(MappingObject, BothIdsEmptyMeansEqual) {
  EXPECT_EQ(KOVAMappingPrivateObject(), KOVAMappingPrivateObject());
  EXPECT_EQ(KOVAMappingObject(), KOVAMappingObject());
}

TEST(MappingObject, DifferentIdsMeanDifferentWhateverTheOtherFields) {
  const KOVAMappingPrivateInstance a("K1", "P1", "same", "R", "d", true);
  const KOVAMappingPrivateInstance b("K2", "P2", "same", "R", "d", true);
  EXPECT_FALSE(a == b);
}

TEST(MappingObject, OrderConcatenatesKOVAIdAndPlexoId) {
  // "ab"+"c" equals "a"+"bc": neither is less than the other.
  const KOVAMappingPrivateObject abC("ab", "c", "");
  const KOVAMappingPrivateObject aBc("a", "bc", "");
  EXPECT_FALSE(abC < aBc);
  EXPECT_FALSE(aBc < abC);
  EXPECT_TRUE(KOVAMappingPrivateObject("a", "b", "") < KOVAMappingPrivateObject("a", "c", ""));
  EXPECT_TRUE(KOVAMappingPrivateObject("Z", "", "") < KOVAMappingPrivateObject("a", "", ""));
  EXPECT_TRUE(KOVAMappingPrivateObject("z", "", "") < KOVAMappingPrivateObject("\xC3\xA9", "", ""));
}

TEST(MappingObject, CompareKSSWithTheVersionedTextOfTheStoredStampIsFalse) {
  KOVAMappingInstance instance("K", "P", "V2:abc", "", "", false);
  EXPECT_FALSE(instance.CompareKSS(ZANUnicodeString("V2:abc")));
  EXPECT_TRUE(instance.CompareKSS(ZANUnicodeString("abc")));
}

TEST(MappingObject, CompareKSSOfTwoObjectsComparesStoredStampsOnly) {
  const KOVAMappingInstance a("A", "PA", "V1:abc", "", "", false);
  const KOVAMappingReference b("B", "PB", "V7:abc", "", true);
  const KOVAMappingInstance c("C", "PC", "abd", "", "", false);
  EXPECT_TRUE(a.CompareKSS(b));
  EXPECT_FALSE(a.CompareKSS(c));
  EXPECT_TRUE(KOVAPrivateAccess::GetPrivate(a)->CompareKSS(*KOVAPrivateAccess::GetPrivate(b)));
}

TEST(MappingObject, AddingAnInstanceSharingAnIdFails) {
  KOVAMappingReference reference("R", "PR", "s", "", false);
  KOVAMappingInstance first("I1", "P1", "s", "R", "", false);
  ASSERT_EQ(reference.AddInstance(first), S_OK);
  EXPECT_EQ(reference.AddInstance(KOVAMappingInstance("I1", "other", "s", "R", "", false)), E_FAIL);
  EXPECT_EQ(reference.AddInstance(KOVAMappingInstance("other", "P1", "s", "R", "", false)), E_FAIL);
  EXPECT_EQ(reference.GetInstances().size(), 1u);
  EXPECT_EQ(reference.AddInstance(KOVAMappingInstance("I2", "P2", "s", "R", "", false)), S_OK);
  ASSERT_EQ(reference.GetInstances().size(), 2u);
  EXPECT_EQ(reference.GetInstances()[1].GetKOVAID(), "I2");
}

TEST(MappingObject, AddedInstanceIsSharedWithTheCaller) {
  KOVAMappingReference reference("R", "PR", "s", "", false);
  KOVAMappingInstance instance("I1", "P1", "s", "R", "", false);
  ASSERT_EQ(reference.AddInstance(instance), S_OK);
  instance.SetCustomData("changed");
  EXPECT_EQ(reference.GetInstances()[0].GetCustomData(), "changed");
}

TEST(MappingObject, RemovingFromAnEmptyReferenceFails) {
  KOVAMappingReference reference;
  EXPECT_EQ(reference.RemoveInstance(KOVAMappingInstance()), E_FAIL);
}

TEST(MappingObject, RemoveTakesTheFirstMatchAndKeepsTheOrder) {
  KOVAMappingReference reference;
  for (const char* id : {"a", "b", "c"}) {
    ASSERT_EQ(reference.AddInstance(KOVAMappingInstance(id, ZANUnicodeString("P") + id, "", "", "", false)), S_OK);
  }
  EXPECT_EQ(reference.RemoveInstance(KOVAMappingInstance("x", "Pb", "", "", "", false)), S_OK);
  ASSERT_EQ(reference.GetInstances().size(), 2u);
  EXPECT_EQ(reference.GetInstances()[0].GetKOVAID(), "a");
  EXPECT_EQ(reference.GetInstances()[1].GetKOVAID(), "c");
  EXPECT_EQ(reference.RemoveInstance(KOVAMappingInstance("x", "y", "", "", "", false)), E_FAIL);
  EXPECT_EQ(reference.GetInstances().size(), 2u);
}

TEST(MappingObject, CopiedInstanceSharesItsPrivateObject) {
  KOVAMappingInstance original("I", "P", "s", "R", "", false);
  KOVAMappingInstance copy(original);
  copy.SetKOVAID("changed").SetPlexoID("P2");
  copy.SetRefID("R2");
  EXPECT_EQ(original.GetKOVAID(), "changed");
  EXPECT_EQ(original.GetPlexoID(), "P2");
  EXPECT_EQ(original.GetRefID(), "R2");
}

TEST(MappingObject, AssignedInstanceAndReferenceShareTheirPrivateObject) {
  KOVAMappingInstance source("I", "P", "s", "R", "", false);
  KOVAMappingInstance target;
  target = source;
  target.SetCustomData("seen");
  EXPECT_EQ(source.GetCustomData(), "seen");

  KOVAMappingReference reference("R", "P", "s", "", false);
  KOVAMappingReference other;
  other = reference;
  other.SetCustomData("seen");
  EXPECT_EQ(reference.GetCustomData(), "seen");
}

TEST(MappingObject, AssignedObjectIsDetachedFromItsSource) {
  KOVAMappingObject source;
  source.SetKOVAID("K");
  KOVAMappingObject target;
  target = source;
  EXPECT_EQ(target.GetKOVAID(), "K");
  target.SetKOVAID("changed");
  EXPECT_EQ(source.GetKOVAID(), "K");
  // Copy construction, unlike assignment, shares.
  KOVAMappingObject shared(source);
  shared.SetKOVAID("through the copy");
  EXPECT_EQ(source.GetKOVAID(), "through the copy");
}

TEST(MappingObject, AssigningAnInstanceToAnObjectCopiesTheBaseData) {
  KOVAMappingInstance instance("I", "P", "V2:s", "R", "d", true);
  KOVAMappingObject object;
  object = instance;
  EXPECT_EQ(object.GetKOVAID(), "I");
  EXPECT_EQ(object.GetCustomData(), "d");
  EXPECT_TRUE(object.GetIsLocal());
  object.SetCustomData("other");
  EXPECT_EQ(instance.GetCustomData(), "d");
}

TEST(MappingObject, AssignmentThroughTheBaseOfAnInstanceKeepsItAnInstance) {
  KOVAMappingInstance instance("I", "P", "s", "R", "", false);
  KOVAMappingObject& base = instance;
  base = KOVAMappingObject(KOVAMappingPrivateObject("K2", "P2", "t"));
  EXPECT_EQ(instance.GetKOVAID(), "K2");
  EXPECT_EQ(instance.GetRefID(), "");  // a fresh instance part, safely readable
}

TEST(MappingObject, ObjectFromAPrivateObjectIsAFreshCopy) {
  KOVAMappingPrivateObject data("K", "P", "V1:s");
  KOVAMappingObject object(data);
  data.SetKOVAID("changed");
  EXPECT_EQ(object.GetKOVAID(), "K");
}

TEST(MappingObject, PublicSetKSStampStripsAndSetsTheVersion) {
  KOVAMappingReference reference;
  reference.SetKSStamp("V4:zz");
  EXPECT_EQ(KOVAPrivateAccess::GetPrivate(reference)->GetKSStamp(), "zz");
  EXPECT_EQ(KOVAPrivateAccess::GetPrivate(reference)->GetKSSVersion(), 4);
  EXPECT_TRUE(reference.isKSSComputedWithUnsetAttributes());
  reference.SetKSStamp("V0KSS:ce");
  EXPECT_TRUE(reference.isKSSComputedFromCEStamp());
}

TEST(MappingObject, PrivateReferenceCopySharesTheInstances) {
  KOVAMappingPrivateReference source("R", "P", "s", "", false);
  KOVAMappingInstance instance("I", "PI", "s", "R", "", false);
  ASSERT_EQ(source.AddInstance(instance), S_OK);
  KOVAMappingPrivateReference copy(source);
  copy.SetKOVAID("R2");
  EXPECT_EQ(source.GetKOVAID(), "R");
  copy.GetInstances()[0].SetCustomData("shared");
  EXPECT_EQ(instance.GetCustomData(), "shared");
  ASSERT_EQ(copy.AddInstance(KOVAMappingInstance("J", "PJ", "s", "R", "", false)), S_OK);
  EXPECT_EQ(source.GetInstances().size(), 1u);
}

TEST(MappingObject, GetInstancesIsTheVectorItself) {
  KOVAMappingReference reference;
  reference.GetInstances().push_back(KOVAMappingInstance("I", "P", "", "", "", false));
  EXPECT_EQ(reference.GetInstances().size(), 1u);
  EXPECT_EQ(reference.AddInstance(KOVAMappingInstance("I", "Q", "", "", "", false)), E_FAIL);
}

}  // namespace
