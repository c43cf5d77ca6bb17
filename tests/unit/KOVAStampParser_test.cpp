// The stamp of one document object, from "KOVASynchroStamp", "CEStamp" and "IsSetKSS".
#include <KOVAMappingServices/KOVAKSSVersioning.h>

#include <gtest/gtest.h>

namespace {

// printf %s "cestampCESv1(x'01')" | openssl dgst -sha256 -binary | base64
const char* const kDigestCE01 = "Q9Qo/l/ljUEVerC0NCbRlwd3gDfRfthn7/rGE6iarYQ=";
// printf %s "cestamp" | openssl dgst -sha256 -binary | base64
const char* const kDigestNoCE = "cHVVv64BBOMfat0AxK0UNt7mdnbhWMECuobH5+Jokws=";

ZANOmxJsonObject Object(const char* json) {
  ZANOmxJsonObject object;
  EXPECT_EQ(object.LoadFromString(ZANUnicodeString(json)), S_OK) << json;
  return object;
}

struct Parsed {
  std::int32_t version;
  ZANUnicodeString stamp;
};

Parsed Parse(const char* json) {
  Parsed parsed{0, ZANUnicodeString("untouched")};
  parsed.version = KOVAKSSVersioning::GetStampParser(Object(json), parsed.stamp);
  return parsed;
}

TEST(StampParser, CEStampAloneGivesVersionZeroAndTheBareDigest) {
  const Parsed p = Parse("{\"CEStamp\":\"CESv1(x'01')\"}");
  EXPECT_EQ(p.version, 0);
  EXPECT_EQ(p.stamp, kDigestCE01);
}

TEST(StampParser, VersionedStampWinsWhateverTheCEStamp) {
  for (const char* json :
       {"{\"KOVASynchroStamp\":\"V1:xyz\"}", "{\"KOVASynchroStamp\":\"V1:xyz\",\"CEStamp\":\"CESv1(x'01')\"}",
        "{\"KOVASynchroStamp\":\"V1:xyz\",\"IsSetKSS\":true}"}) {
    const Parsed p = Parse(json);
    EXPECT_EQ(p.version, 1) << json;
    EXPECT_EQ(p.stamp, "xyz") << json;
  }
  const Parsed ce = Parse("{\"KOVASynchroStamp\":\"V0KSS:abc\",\"CEStamp\":\"CESv1(x'01')\"}");
  EXPECT_EQ(ce.version, 0);
  EXPECT_EQ(ce.stamp, "abc");
}

TEST(StampParser, BareStampEqualToTheCEDigestGivesVersionZero) {
  const std::string json =
      std::string("{\"KOVASynchroStamp\":\"") + kDigestCE01 + "\",\"CEStamp\":\"CESv1(x'01')\",\"IsSetKSS\":true}";
  const Parsed p = Parse(json.c_str());
  EXPECT_EQ(p.version, 0);
  EXPECT_EQ(p.stamp, kDigestCE01);
}

TEST(StampParser, BareStampMatchingTheDigestOfAnAbsentCEStampGivesVersionZero) {
  // The CE digest is always derived, from the empty text when "CEStamp" is absent.
  const std::string json = std::string("{\"KOVASynchroStamp\":\"") + kDigestNoCE + "\"}";
  EXPECT_EQ(Parse(json.c_str()).version, 0);
}

TEST(StampParser, OtherBareStampGivesTwoWhenIsSetKSSIsTrueElseOne) {
  EXPECT_EQ(Parse("{\"KOVASynchroStamp\":\"s\",\"CEStamp\":\"CESv1(x'01')\",\"IsSetKSS\":true}").version, 2);
  EXPECT_EQ(Parse("{\"KOVASynchroStamp\":\"s\",\"CEStamp\":\"CESv1(x'01')\",\"IsSetKSS\":false}").version, 1);
  EXPECT_EQ(Parse("{\"KOVASynchroStamp\":\"s\"}").version, 1);
  EXPECT_EQ(Parse("{\"KOVASynchroStamp\":\"s\",\"IsSetKSS\":\"true\"}").version, 1);  // not a boolean
  EXPECT_EQ(Parse("{\"KOVASynchroStamp\":\"s\",\"IsSetKSS\":1}").version, 1);
  EXPECT_EQ(Parse("{\"KOVASynchroStamp\":\"s\",\"IsSetKSS\":true}").stamp, "s");
}

TEST(StampParser, NeitherFieldGivesMinusOneAndLeavesTheStamp) {
  for (const char* json : {"{}", "{\"KOVASynchroStamp\":\"\",\"CEStamp\":\"\"}", "{\"IsSetKSS\":true}",
                           "{\"KOVASynchroStamp\":5,\"CEStamp\":null}", "{\"KOVASynchroStamp\":[\"V1:x\"]}"}) {
    const Parsed p = Parse(json);
    EXPECT_EQ(p.version, -1) << json;
    EXPECT_EQ(p.stamp, "untouched") << json;
  }
}

TEST(StampParser, NonStringStampCountsAsAbsent) {
  const Parsed p = Parse("{\"KOVASynchroStamp\":true,\"CEStamp\":\"CESv1(x'01')\"}");
  EXPECT_EQ(p.version, 0);
  EXPECT_EQ(p.stamp, kDigestCE01);
}

TEST(StampParser, SingleDigitReadingApplies) {
  const Parsed p = Parse("{\"KOVASynchroStamp\":\"V12:abc\"}");
  EXPECT_EQ(p.version, 1);
  EXPECT_EQ(p.stamp, ":abc");
}

TEST(StampV11, VersionedTextOfTheParsedStamp) {
  EXPECT_EQ(KOVAKSSVersioning::GetStampV11(Object("{\"KOVASynchroStamp\":\"V7:abc\"}")), "V7:abc");
  EXPECT_EQ(KOVAKSSVersioning::GetStampV11(Object("{\"KOVASynchroStamp\":\"s\",\"IsSetKSS\":true}")), "V2:s");
  EXPECT_EQ(KOVAKSSVersioning::GetStampV11(Object("{\"CEStamp\":\"CESv1(x'01')\"}")),
            ZANUnicodeString("V0:") + kDigestCE01);
}

TEST(StampV11, NoStampGivesTheBareMinusOnePrefix) {
  EXPECT_EQ(KOVAKSSVersioning::GetStampV11(Object("{\"KOVASynchroStamp\":\"\",\"CEStamp\":\"\"}")), "V-1:");
  EXPECT_EQ(KOVAKSSVersioning::GetStampV11(Object("{}")), "V-1:");
}

}  // namespace
