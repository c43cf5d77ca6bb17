// In every version, an object whose "CEStamp" and "KOVASynchroStamp" are both absent or empty is
// refused, and one with either of them is read.
#include <KOVAMappingServices/KOVAMappingParser.h>

#include <gtest/gtest.h>

#include <string>

namespace {

// A document of the given version with one reference (stamp keys given) holding one instance
// (stamp keys given), with every other key its version demands.
std::string Document(int version, const std::string& referenceStamp, const std::string& instanceStamp) {
  const std::string v = std::to_string(version);
  if (version == 6) {
    return "{\"version\":6,\"References\":{\"R\":{\"PlexoId\":\"PR\"" + referenceStamp +
           "}},\"RefInstances\":{\"I\":{\"PlexoId\":\"PI\",\"RefId\":\"R\"" + instanceStamp + "}}}";
  }
  const std::string isSet = version == 9 || version == 10 ? ",\"IsSetKSS\":false" : "";
  const std::string instanceIsSet = version == 10 ? ",\"IsSetKSS\":false" : "";
  return "{\"version\":" + v + ",\"References\":[{\"kOVAId\":\"R\",\"PlexoId\":\"PR\",\"IsLocal\":false" + isSet +
         referenceStamp + ",\"Instances\":[{\"kOVAId\":\"I\",\"PlexoId\":\"PI\",\"RefId\":\"R\",\"IsLocal\":false" +
         instanceIsSet + instanceStamp + "}]}]}";
}

HRESULT Read(const std::string& document, std::size_t* objects = nullptr) {
  KOVAMappingTable table;
  const HRESULT status =
      KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString(document), ZANBaseUnknown(), table);
  if (objects != nullptr) *objects = table.GetContent().size();
  return status;
}

class StampRule : public ::testing::TestWithParam<int> {};

TEST_P(StampRule, ObjectsWithAStampAreRead) {
  const int version = GetParam();
  std::size_t objects = 0;
  EXPECT_EQ(Read(Document(version, ",\"KOVASynchroStamp\":\"V1:a\"", ",\"KOVASynchroStamp\":\"V1:b\""), &objects),
            S_OK);
  EXPECT_EQ(objects, 2u);
}

TEST_P(StampRule, ReferenceWithoutStampIsRefused) {
  const int version = GetParam();
  const std::string instance = ",\"KOVASynchroStamp\":\"V1:b\"";
  for (const std::string& none :
       {std::string(), std::string(",\"KOVASynchroStamp\":\"\",\"CEStamp\":\"\""), std::string(",\"CEStamp\":\"\"")}) {
    std::size_t objects = 9;
    EXPECT_EQ(Read(Document(version, none, instance), &objects), E_FAIL) << version << none;
    EXPECT_EQ(objects, 0u);
  }
}

TEST_P(StampRule, InstanceWithoutStampIsRefused) {
  const int version = GetParam();
  const std::string reference = ",\"KOVASynchroStamp\":\"V1:a\"";
  for (const std::string& none : {std::string(), std::string(",\"KOVASynchroStamp\":\"\",\"CEStamp\":\"\"")}) {
    std::size_t objects = 9;
    EXPECT_EQ(Read(Document(version, reference, none), &objects), E_FAIL) << version << none;
    EXPECT_EQ(objects, 0u);
  }
}

TEST_P(StampRule, CEStampAloneIsEnoughWhereTheStampKeyIsNotMandatory) {
  const int version = GetParam();
  const std::string ce = ",\"CEStamp\":\"CESv1(x'01')\"";
  const HRESULT expected = version >= 11 ? E_FAIL : S_OK;  // versions 11 and 12 demand "KOVASynchroStamp"
  EXPECT_EQ(Read(Document(version, ce, ce)), expected) << version;
}

INSTANTIATE_TEST_SUITE_P(EveryVersion, StampRule, ::testing::Range(6, 13));

}  // namespace
