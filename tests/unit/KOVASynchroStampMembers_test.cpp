// The private stamp members: the stamp-text piece, the attribute text and the encoding. They do not
// depend on the load-time switch.
#include "stamps/StampComputeAccess.h"

#include <KOVAMappingServices/ZANKnowledge.h>

#include <gtest/gtest.h>

#include <string>

#include "tests/env/StampObjects.h"

namespace {

using kova::stamps::StampComputeAccess;
using kova::test::StandardType;

std::string Text(const ZANUnicodeString& s) { return s.ConvertToChar(); }

std::string Encode(const char* text) {
  ZANUnicodeString stamp = "untouched";
  EXPECT_EQ(StampComputeAccess::EncodeKSS(ZANUnicodeString(text), stamp), S_OK);
  return Text(stamp);
}

// ---------------------------------------------------------------------------------------------
// AddToStamp

TEST(KOVASynchroStampAddToStamp, SetParameterGivesNameSetAndValue) {
  EXPECT_EQ(Text(StampComputeAccess::AddToStamp("Mass", ZANKnwBuilder::MakeRealParm(2.5), -1)), "Mass:SET:2.5");
  EXPECT_EQ(Text(StampComputeAccess::AddToStamp("b", ZANKnwBuilder::MakeIntegerParm(7), -1)), "b:SET:7");
}

TEST(KOVASynchroStampAddToStamp, UnsetParameterGivesNameUnsetAndNoValue) {
  EXPECT_EQ(Text(StampComputeAccess::AddToStamp("Rev", ZANKnwBuilder::MakeStringParm("B", false), -1)), "Rev:UNSET:");
}

TEST(KOVASynchroStampAddToStamp, PrefixIsKeptWhole) {
  EXPECT_EQ(Text(StampComputeAccess::AddToStamp("Mass:SET:2.5Name", ZANKnwBuilder::MakeStringParm("A1"), -1)),
            "Mass:SET:2.5Name:SET:A1");
  EXPECT_EQ(Text(StampComputeAccess::AddToStamp("", ZANKnwBuilder::MakeBooleanParm(0), -1)), ":SET:FALSE");
}

TEST(KOVASynchroStampAddToStamp, IntegerArgumentDoesNotChangeThePiece) {
  const ZANIKnwParm_var parm = ZANKnwBuilder::MakeRealParm(2.5);
  EXPECT_EQ(Text(StampComputeAccess::AddToStamp("Mass", parm, 0)), "Mass:SET:2.5");
  EXPECT_EQ(Text(StampComputeAccess::AddToStamp("Mass", parm, 12)), "Mass:SET:2.5");
}

TEST(KOVASynchroStampAddToStamp, NullParameterRaisesTheNullHandleError) {
  EXPECT_THROW((void)StampComputeAccess::AddToStamp("Gap", nullptr, -1), ZANNullVarError);
}

TEST(KOVASynchroStampAddToStamp, PiecesOfTheWorkedExampleEncodeToItsStamp) {
  ZANUnicodeString text;
  for (const auto& [name, parm] : kova::test::WorkedExampleAttributes()) {
    text = StampComputeAccess::AddToStamp(text + name, parm, -1);
  }
  EXPECT_EQ(Text(text), "Mass:SET:2.5Name:SET:A1Rev:UNSET:");
  ZANUnicodeString stamp;
  ASSERT_EQ(StampComputeAccess::EncodeKSS(text, stamp), S_OK);
  EXPECT_EQ(Text(stamp), kova::test::kWorkedExampleStamp);
}

// ---------------------------------------------------------------------------------------------
// EncodeKSS

TEST(KOVASynchroStampEncodeKSS, EmptyTextGivesTheDigestOfZeroCharacters) {
  EXPECT_EQ(Encode(""), kova::test::kEmptyTextStamp);
}

TEST(KOVASynchroStampEncodeKSS, WorkedExampleText) {
  EXPECT_EQ(Encode("Mass:SET:2.5Name:SET:A1Rev:UNSET:"), kova::test::kWorkedExampleStamp);
}

TEST(KOVASynchroStampEncodeKSS, DigestCoversAsManyBytesAsTheTextHasCharacters) {
  const std::string stamp = Encode(
      "Name:SET:Gr\xC3\xB6\xC3\x9F"
      "e");
  EXPECT_EQ(stamp, kova::test::kNonAsciiStamp);
  EXPECT_NE(stamp, kova::test::kNonAsciiWholeBytesStamp);
}

TEST(KOVASynchroStampEncodeKSS, StampIsBareBase64) {
  const std::string stamp = Encode("a:UNSET:b:SET:7");
  EXPECT_EQ(stamp, kova::test::kUnsetAThenSevenBStamp);
  EXPECT_EQ(stamp.size(), 44u);  // 32 digest bytes
  EXPECT_NE(stamp.rfind("V0KSS:", 0), 0u);
  EXPECT_EQ(stamp.find(':'), std::string::npos);
}

// ---------------------------------------------------------------------------------------------
// BuildAttrStamp

TEST(KOVASynchroStampBuildAttrStamp, AppendsTheSortedAttributesToTheText) {
  ZANUnicodeString text = "before|";
  EXPECT_TRUE(StampComputeAccess::BuildAttrStamp(kova::test::WorkedExampleObject(), {"Rev", "Name", "Mass"}, text));
  EXPECT_EQ(Text(text), "before|Mass:SET:2.5Name:SET:A1Rev:UNSET:");
}

TEST(KOVASynchroStampBuildAttrStamp, NotAKnowledgeObjectLeavesTheTextAndFails) {
  ZANUnicodeString text = "kept";
  const ZANBaseUnknown_var instanceOnly = ZANKnwBuilder::MakeObject(
      StandardType("GRDReference"), kova::test::WorkedExampleAttributes(), ZANKnwObjectFacets::InstanceOnly);
  EXPECT_FALSE(StampComputeAccess::BuildAttrStamp(instanceOnly, {"Mass"}, text));
  EXPECT_FALSE(StampComputeAccess::BuildAttrStamp(nullptr, {"Mass"}, text));
  EXPECT_EQ(Text(text), "kept");
}

TEST(KOVASynchroStampBuildAttrStamp, NoNamesAddNothing) {
  ZANUnicodeString text = "kept";
  EXPECT_TRUE(StampComputeAccess::BuildAttrStamp(kova::test::WorkedExampleObject(), {}, text));
  EXPECT_EQ(Text(text), "kept");
}

TEST(KOVASynchroStampBuildAttrStamp, KnowledgeObjectThatIsNotAnInstanceIsRead) {
  ZANUnicodeString text;
  const ZANBaseUnknown_var knowledgeOnly = ZANKnwBuilder::MakeObject(nullptr, kova::test::WorkedExampleAttributes(),
                                                                     ZANKnwObjectFacets::KnowledgeObjectOnly);
  EXPECT_TRUE(StampComputeAccess::BuildAttrStamp(knowledgeOnly, {"Name"}, text));
  EXPECT_EQ(Text(text), "Name:SET:A1");
}

}  // namespace
