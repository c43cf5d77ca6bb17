// Stamp text forms: version prefixes, CE-derived stamps.
#include <KOVAMappingServices/KOVAKSSVersioning.h>
#include <KOVAMappingServices/KOVASynchroStampServices.h>

#include <gtest/gtest.h>

#include <random>
#include <regex>
#include <string>

#include "stamps/StampPrefix.h"

namespace {

// Digests below were computed with: printf %s TEXT | openssl dgst -sha256 -binary | base64
constexpr const char* kDigestOfCestampAlone = "cHVVv64BBOMfat0AxK0UNt7mdnbhWMECuobH5+Jokws=";

TEST(StampVersion, SingleDigitVersion) {
  EXPECT_EQ(KOVAKSSVersioning::GetKSSVersion("V3:abc"), 3);
  EXPECT_EQ(KOVAKSSVersioning::GetKSSFromKSSWithVersion("V3:abc"), "abc");
}

TEST(StampVersion, OnlyTheFirstDigitIsReadAndThreeCharactersAreDropped) {
  EXPECT_EQ(KOVAKSSVersioning::GetKSSVersion("V12:abc"), 1);
  EXPECT_EQ(KOVAKSSVersioning::GetKSSFromKSSWithVersion("V12:abc"), ":abc");
  EXPECT_EQ(KOVAKSSVersioning::GetKSSVersion("V987:x"), 9);
  EXPECT_EQ(KOVAKSSVersioning::GetKSSFromKSSWithVersion("V987:x"), "7:x");
}

TEST(StampVersion, CEDerivedPrefix) {
  EXPECT_EQ(KOVAKSSVersioning::GetKSSVersion("V0KSS:abc"), 0);
  EXPECT_EQ(KOVAKSSVersioning::GetKSSFromKSSWithVersion("V0KSS:abc"), "abc");
  EXPECT_TRUE(KOVAKSSVersioning::HasFromCESPrefix("V0KSS:abc"));
  EXPECT_TRUE(KOVAKSSVersioning::HasFromCESPrefix("V0KSS:"));
  EXPECT_FALSE(KOVAKSSVersioning::HasFromCESPrefix("V0KSS"));
  EXPECT_FALSE(KOVAKSSVersioning::HasFromCESPrefix(" V0KSS:abc"));
  EXPECT_FALSE(KOVAKSSVersioning::HasFromCESPrefix("v0kss:abc"));
}

TEST(StampVersion, BareStampHasNoVersion) {
  EXPECT_EQ(KOVAKSSVersioning::GetKSSVersion("abc"), -1);
  EXPECT_EQ(KOVAKSSVersioning::GetKSSFromKSSWithVersion("abc"), "abc");
  EXPECT_EQ(KOVAKSSVersioning::GetKSSVersion(""), -1);
  EXPECT_EQ(KOVAKSSVersioning::GetKSSFromKSSWithVersion(""), "");
}

TEST(StampVersion, PrefixMustBeAtTheVeryStart) {
  EXPECT_EQ(KOVAKSSVersioning::GetKSSVersion(" V3:abc"), -1);
  EXPECT_EQ(KOVAKSSVersioning::GetKSSFromKSSWithVersion(" V3:abc"), " V3:abc");
  EXPECT_EQ(KOVAKSSVersioning::GetKSSVersion("xV3:abc"), -1);
  EXPECT_EQ(KOVAKSSVersioning::GetKSSFromKSSWithVersion("xV3:abc"), "xV3:abc");
  EXPECT_EQ(KOVAKSSVersioning::GetKSSVersion("v3:abc"), -1);
}

TEST(StampVersion, AtLeastOneDigitIsNeeded) {
  EXPECT_EQ(KOVAKSSVersioning::GetKSSVersion("V:abc"), -1);
  EXPECT_EQ(KOVAKSSVersioning::GetKSSFromKSSWithVersion("V:abc"), "V:abc");
  EXPECT_EQ(KOVAKSSVersioning::GetKSSVersion("V3"), -1);
  EXPECT_EQ(KOVAKSSVersioning::GetKSSVersion("V-1:abc"), -1);
  EXPECT_EQ(KOVAKSSVersioning::GetKSSVersion("V\xD9\xA3:abc"), -1);  // an Arabic-Indic digit is no \d
}

TEST(StampVersion, VersionPrefixAloneLeavesTheEmptyStamp) {
  EXPECT_EQ(KOVAKSSVersioning::GetKSSVersion("V5:"), 5);
  EXPECT_EQ(KOVAKSSVersioning::GetKSSFromKSSWithVersion("V5:"), "");
}

TEST(StampVersion, NonAsciiStampAfterThePrefixIsKept) {
  EXPECT_EQ(KOVAKSSVersioning::GetKSSFromKSSWithVersion("V2:\xC3\xA9t\xC3\xA9"), "\xC3\xA9t\xC3\xA9");
}

TEST(StampVersion, ComputeKSSWithVersion) {
  EXPECT_EQ(KOVAKSSVersioning::ComputeKSSWithVersion("abc", 12), "V12:abc");
  EXPECT_EQ(KOVAKSSVersioning::ComputeKSSWithVersion("abc", -1), "V-1:abc");
  EXPECT_EQ(KOVAKSSVersioning::ComputeKSSWithVersion("", 3), "V3:");
  EXPECT_EQ(KOVAKSSVersioning::ComputeKSSWithVersion("x", 2147483647), "V2147483647:x");
  EXPECT_EQ(KOVAKSSVersioning::AddFromCESPrefix("abc"), "V0KSS:abc");
}

// The hand-written prefix matchers answer what std::regex_search answers with the ECMAScript
// expressions "^V\d+:" and "^V0KSS:", on edge cases and on many random texts over a small
// alphabet that makes prefixes likely.
TEST(StampVersion, PrefixMatchersAgreeWithTheRegularExpressions) {
  const std::regex version("^V\\d+:");
  const std::regex ceDerived("^V0KSS:");
  std::vector<std::string> texts = {"",
                                    "V",
                                    "V:",
                                    "V0",
                                    "V0:",
                                    "V00:",
                                    "V0KSS:",
                                    "V0KSS",
                                    "V0KS:",
                                    "VV1:",
                                    "V1:V2:",
                                    " V1:",
                                    "\nV1:",
                                    "V1\n:",
                                    "V12345678901234567890:x",
                                    "V1::",
                                    "V0KSS:V1:",
                                    "V1:0KSS:",
                                    std::string("V1\0:", 4),
                                    std::string("V\0"
                                                "1:",
                                                4)};
  std::mt19937 random(20261122);
  const std::string alphabet = "V0123:KS\n x";
  for (int i = 0; i < 20000; ++i) {
    std::string text;
    const int length = static_cast<int>(random() % 9);
    for (int k = 0; k < length; ++k) text.push_back(alphabet[random() % alphabet.size()]);
    texts.push_back(text);
  }
  for (const std::string& text : texts) {
    EXPECT_EQ(kova::stamps::HasVersionPrefix(text), std::regex_search(text, version)) << text;
    EXPECT_EQ(kova::stamps::HasCEDerivedPrefix(text), std::regex_search(text, ceDerived)) << text;
  }
}

TEST(CEStamp, DerivedStampIsTheDigestOfCestampFollowedByTheCEStamp) {
  ZANUnicodeString out;
  ASSERT_EQ(KOVASynchroStampServices::GetKSSFromCES("CESv1(x'0A1B')", out), S_OK);
  EXPECT_EQ(out, "V0KSS:+pNDmSEeUQTNuYdmyjzM8quKNrDbX7i3OAgPbwCDiys=");
  ASSERT_EQ(KOVASynchroStampServices::GetKSSFromCES("", out), S_OK);
  EXPECT_EQ(out, ZANUnicodeString("V0KSS:") + kDigestOfCestampAlone);
}

TEST(CEStamp, DigestCoversAsManyBytesAsTheTextHasCharacters) {
  // "cestampcafé" has 11 characters and 12 bytes: the digest covers the first 11 bytes
  // (printf 'cestampcafé' | head -c 11 | openssl dgst -sha256 -binary | base64).
  ZANUnicodeString out;
  ASSERT_EQ(KOVASynchroStampServices::GetKSSFromCES("caf\xC3\xA9", out), S_OK);
  EXPECT_EQ(out, "V0KSS:UwTEgXF6kYgJdiCtYYuyYMzkj9yosbJQPPI38fiyP4U=");
}

}  // namespace
