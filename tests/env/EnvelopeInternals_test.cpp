// The prefix search against std::regex, and the load-time compression switch. Both are internal to
// the library: this executable compiles their sources itself.
#include "serialisation/CompressionSwitch.h"
#include "serialisation/EnvelopePrefix.h"

#include <KOVAMappingServices/ZANEnvironment.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <regex>
#include <string>
#include <vector>

namespace {

// "position:length" of the leftmost match, or "none".
std::string RegexAnswer(const std::string& text) {
  static const std::regex pattern("V\\d+:\\d+:", std::regex::ECMAScript);
  std::smatch match;
  if (!std::regex_search(text, match, pattern)) return "none";
  return std::to_string(match.position(0)) + ":" + std::to_string(match.length(0));
}

std::string SearchAnswer(const std::string& text) {
  const auto match = kova::FindEnvelopePrefix(text);
  if (!match) return "none";
  return std::to_string(match->position) + ":" + std::to_string(match->length);
}

// Counts the texts on which both answers agree, and collects a few that do not.
struct Tally {
  std::size_t matches = 0;
  std::size_t misses = 0;
  std::vector<std::string> differences;

  void Check(const std::string& text) {
    const std::string expected = RegexAnswer(text);
    const std::string actual = SearchAnswer(text);
    if (expected != actual) {
      if (differences.size() < 10) differences.push_back("\"" + text + "\": regex " + expected + ", search " + actual);
      return;
    }
    (expected == "none" ? misses : matches) += 1;
  }

  std::string Report() const {
    std::string out;
    for (const std::string& d : differences) out += d + "\n";
    return out;
  }
};

void CheckAllSequences(Tally& tally, const std::vector<std::string>& tokens, std::size_t maxLength) {
  std::vector<std::string> layer{""};
  tally.Check("");
  for (std::size_t length = 1; length <= maxLength; ++length) {
    std::vector<std::string> next;
    next.reserve(layer.size() * tokens.size());
    for (const std::string& s : layer)
      for (const std::string& t : tokens) {
        next.push_back(s + t);
        tally.Check(next.back());
      }
    layer = std::move(next);
  }
}

TEST(EnvelopePrefixMatch, AgreesWithTheRegexOnEveryShortSequence) {
  Tally tally;
  CheckAllSequences(tally, {"V", "1", "0", ":", "a", std::string(1, '\0'), "\xC3\xA9"}, 6);
  EXPECT_TRUE(tally.differences.empty()) << tally.Report();
  // Both outcomes occur: the comparison is not vacuous.
  EXPECT_GT(tally.matches, 50u);
  EXPECT_GT(tally.misses, 1000u);
  EXPECT_EQ(tally.matches + tally.misses, 137257u);
}

TEST(EnvelopePrefixMatch, AgreesWithTheRegexOnLongerRandomTexts) {
  const std::vector<std::string> tokens = {"V", "V",  "V",    "1",   "2", "9", "0",        "00",
                                           ":", ":",  ":",    "a",   "v", "x", "\xC3\xA9", "\xE2\x82\xAC",
                                           " ", "12", "V12:", "V1:", "::"};
  std::mt19937 rng(7);
  std::uniform_int_distribution<std::size_t> pickToken(0, tokens.size() - 1);
  std::uniform_int_distribution<int> pickLength(0, 60);
  Tally tally;
  for (int i = 0; i < 50000; ++i) {
    std::string s;
    const int length = pickLength(rng);
    for (int j = 0; j < length; ++j) s += tokens[pickToken(rng)];
    tally.Check(s);
  }
  EXPECT_TRUE(tally.differences.empty()) << tally.Report();
  EXPECT_GT(tally.matches, 1000u);
  EXPECT_GT(tally.misses, 1000u);
}

TEST(EnvelopePrefixMatch, OnlyAsciiDigitsAndColonsCount) {
  // Every byte value in every place of a prefix and just around it.
  Tally tally;
  const std::string base = "xV12:34:y";
  for (std::size_t at = 0; at < base.size(); ++at) {
    for (int byte = 0; byte < 256; ++byte) {
      std::string s = base;
      s[at] = static_cast<char>(byte);
      tally.Check(s);
      s.insert(at, 1, static_cast<char>(byte));
      tally.Check(s);
    }
  }
  EXPECT_TRUE(tally.differences.empty()) << tally.Report();
  EXPECT_GT(tally.misses, 100u);
}

TEST(EnvelopePrefixMatch, ChosenTexts) {
  Tally tally;
  for (const char* s : {"V1:2:", "V12:1234:", "V9:1234:", "VV1:2:", "V1:2V3:4:", "V:1:2:", "V1::2:", "V1:2",
                        "V1:2:3:", "V1:V2:3:", "V12:3V4:5:", "aV12:0:", "V0:0:", "\xC3\xA9\xC3\xA9V12:5:abc",
                        "V1234:5:", "V123:45:", "V12::", "{\"a\":\"V1:23:xyz\"}", "V1:2:V3:4:"}) {
    tally.Check(s);
  }
  EXPECT_TRUE(tally.differences.empty()) << tally.Report();
}

TEST(EnvelopePrefixMatch, PositionAndLengthOfKnownTexts) {
  const auto match = kova::FindEnvelopePrefix("abc V12:345:payload");
  ASSERT_TRUE(match.has_value());
  EXPECT_EQ(match->position, 4u);
  EXPECT_EQ(match->length, 8u);
  const auto later = kova::FindEnvelopePrefix("V12:V1:2 V7:8:");
  ASSERT_TRUE(later.has_value());
  EXPECT_EQ(later->position, 9u);
  EXPECT_EQ(later->length, 5u);
  EXPECT_FALSE(kova::FindEnvelopePrefix("V12::V:1:").has_value());
}

TEST(EnvelopePrefixMatch, HandlesInputsTooLongForARecursiveMatcher) {
  const std::string digits(8000000, '5');
  const std::string text = "x" + std::string("V") + digits + ":" + digits + ":";
  const auto match = kova::FindEnvelopePrefix(text);
  ASSERT_TRUE(match.has_value());
  EXPECT_EQ(match->position, 1u);
  EXPECT_EQ(match->length, text.size() - 1);
  EXPECT_FALSE(kova::FindEnvelopePrefix("V" + digits + ":" + digits).has_value());
}

// Registered twice: in a process with "IPLX_ACTIVATE_MAPPING_COMPRESSION" set, and in one without.
TEST(CompressionSwitchOn, IsOnWhenTheVariableWasSetAtLoad) {
  ASSERT_TRUE(ZANGetEnv("IPLX_ACTIVATE_MAPPING_COMPRESSION").has_value());
  EXPECT_TRUE(kova::CompressionSwitchOn());
  // Read once: a later change of the environment does not matter.
  ::unsetenv("IPLX_ACTIVATE_MAPPING_COMPRESSION");
  EXPECT_TRUE(kova::CompressionSwitchOn());
}

TEST(CompressionSwitchOff, IsOffWhenTheVariableWasNotSetAtLoad) {
  ASSERT_FALSE(ZANGetEnv("IPLX_ACTIVATE_MAPPING_COMPRESSION").has_value());
  EXPECT_FALSE(kova::CompressionSwitchOn());
  ::setenv("IPLX_ACTIVATE_MAPPING_COMPRESSION", "1", 1);
  EXPECT_FALSE(kova::CompressionSwitchOn());
}

TEST(CompressionSwitchEmpty, AnEmptyValueCountsAsSet) {
  const char* value = std::getenv("IPLX_ACTIVATE_MAPPING_COMPRESSION");
  ASSERT_NE(value, nullptr);
  ASSERT_STREQ(value, "");
  EXPECT_TRUE(kova::CompressionSwitchOn());
}

}  // namespace
