// ZANUnicodeString holds short texts inside the object and longer ones in a heap string. These
// tests cross that line in every direction and compare every operation with std::string.
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t kInline = ZANUnicodeString::kInlineCapacity;

std::string Text(std::size_t length, char first = 'a') {
  std::string text(length, first);
  for (std::size_t i = 0; i < length; ++i) text[i] = static_cast<char>(first + i % 26);
  return text;
}

// Every observer agrees with the expected text.
void ExpectHolds(const ZANUnicodeString& s, const std::string& expected) {
  EXPECT_EQ(s.View(), expected);
  EXPECT_EQ(s.GetLengthInByte(), expected.size());
  EXPECT_EQ(s.IsEmpty(), expected.empty());
  EXPECT_EQ(s.ConvertToChar(), expected);
  // The pointer form is NUL-terminated right after the text, whichever way it is held.
  EXPECT_EQ(std::memcmp(s.CastToCharPtr(), expected.data(), expected.size()), 0);
  EXPECT_EQ(s.CastToCharPtr()[expected.size()], '\0');
}

TEST(ZANUnicodeStringStorage, LengthsAroundTheInlineCapacityKeepTheirText) {
  for (std::size_t length :
       {std::size_t{0}, std::size_t{1}, kInline - 1, kInline, kInline + 1, kInline + 2, std::size_t{200}}) {
    SCOPED_TRACE(length);
    const std::string text = Text(length);
    ExpectHolds(ZANUnicodeString(text), text);
    ExpectHolds(ZANUnicodeString(std::string_view(text)), text);
    ExpectHolds(ZANUnicodeString(text.c_str()), text);
    ExpectHolds(ZANUnicodeString::FromValidUTF8(text), text);
    ExpectHolds(ZANUnicodeString::FromValidUTF8(std::string_view(text)), text);
  }
}

TEST(ZANUnicodeStringStorage, ACopyIsIndependentOfItsSource) {
  for (std::size_t length : {std::size_t{3}, kInline, kInline + 1, std::size_t{90}}) {
    SCOPED_TRACE(length);
    ZANUnicodeString source(Text(length));
    ZANUnicodeString copy(source);
    source += "!";
    ExpectHolds(copy, Text(length));
    ExpectHolds(source, Text(length) + "!");
  }
}

TEST(ZANUnicodeStringStorage, MovingLeavesTheSourceEmpty) {
  for (std::size_t length : {std::size_t{5}, kInline + 1}) {
    SCOPED_TRACE(length);
    ZANUnicodeString source(Text(length));
    ZANUnicodeString target(std::move(source));
    ExpectHolds(target, Text(length));
    ExpectHolds(source, "");  // NOLINT(bugprone-use-after-move): the header documents the moved-from state
    ZANUnicodeString assigned(Text(kInline + 10, 'A'));
    assigned = std::move(target);
    ExpectHolds(assigned, Text(length));
    ExpectHolds(target, "");  // NOLINT(bugprone-use-after-move): the header documents the moved-from state
  }
}

TEST(ZANUnicodeStringStorage, AssignmentCrossesTheLineBothWays) {
  const std::vector<std::size_t> lengths = {0, 7, kInline, kInline + 1, 120};
  for (std::size_t from : lengths) {
    for (std::size_t to : lengths) {
      SCOPED_TRACE(std::to_string(from) + " <- " + std::to_string(to));
      ZANUnicodeString target(Text(from, 'A'));
      const ZANUnicodeString source(Text(to));
      target = source;
      ExpectHolds(target, Text(to));
      ExpectHolds(source, Text(to));
      ZANUnicodeString moved(Text(to));
      ZANUnicodeString other(Text(from, 'A'));
      other = std::move(moved);
      ExpectHolds(other, Text(to));
    }
  }
}

TEST(ZANUnicodeStringStorage, SelfAssignmentAndSelfAppendKeepTheText) {
  for (std::size_t length : {std::size_t{4}, kInline / 2, kInline / 2 + 1, kInline, std::size_t{80}}) {
    SCOPED_TRACE(length);
    ZANUnicodeString s(Text(length));
    const ZANUnicodeString& alias = s;
    s = alias;
    ExpectHolds(s, Text(length));
    s += alias;
    ExpectHolds(s, Text(length) + Text(length));
  }
}

TEST(ZANUnicodeStringStorage, AppendingGrowsPastTheInlineCapacity) {
  ZANUnicodeString s;
  std::string expected;
  for (int i = 0; i < 30; ++i) {
    s += "xyz";
    expected += "xyz";
    ExpectHolds(s, expected);
  }
}

TEST(ZANUnicodeStringStorage, NulBytesAreKeptInBothForms) {
  for (std::size_t length : {std::size_t{10}, kInline + 5}) {
    std::string text = Text(length);
    text[3] = '\0';
    const ZANUnicodeString s = ZANUnicodeString::FromValidUTF8(text);
    EXPECT_EQ(s.View(), text);
    EXPECT_EQ(s.GetLengthInChar(), static_cast<int>(length));
    EXPECT_STREQ(s.CastToCharPtr(), text.substr(0, 3).c_str());
  }
}

TEST(ZANUnicodeStringStorage, EqualityAndOrderDoNotDependOnTheForm) {
  const std::string longText = Text(kInline + 1);
  const std::string shortText = longText.substr(0, kInline);
  const ZANUnicodeString shortString(shortText);
  const ZANUnicodeString longString(longText);
  EXPECT_LT(shortString, longString);
  EXPECT_FALSE(longString < shortString);
  EXPECT_NE(shortString, longString);
  EXPECT_EQ(ZANUnicodeString(longText), longString);
  EXPECT_EQ(std::hash<ZANUnicodeString>{}(longString), std::hash<std::string>{}(longText));
}

TEST(ZANUnicodeStringStorage, TakingTheTextOutLeavesTheStringEmpty) {
  for (std::size_t length : {std::size_t{0}, kInline, kInline + 1, std::size_t{5000}}) {
    SCOPED_TRACE(length);
    ZANUnicodeString s(Text(length));
    const std::string taken = std::move(s).TakeUTF8();
    EXPECT_EQ(taken, Text(length));
    ExpectHolds(s, "");  // NOLINT(bugprone-use-after-move): the header documents the state after TakeUTF8
    s += "again";
    ExpectHolds(s, "again");
  }
}

TEST(ZANUnicodeStringStorage, ALongTextIsTakenOutWithoutACopy) {
  std::string text = Text(1000);
  const char* bytes = text.data();
  ZANUnicodeString s = ZANUnicodeString::FromValidUTF8(std::move(text));
  EXPECT_EQ(s.CastToCharPtr(), bytes);
  const std::string taken = std::move(s).TakeUTF8();
  EXPECT_EQ(taken.data(), bytes);
}

TEST(ZANUnicodeStringStorage, RandomOperationsMatchAStdStringModel) {
  std::mt19937 random(2026);
  std::vector<ZANUnicodeString> strings(6);
  std::vector<std::string> model(6);
  const auto pick = [&random] { return static_cast<std::size_t>(random() % 6); };
  for (int step = 0; step < 20000; ++step) {
    const std::size_t a = pick();
    const std::size_t b = pick();
    switch (random() % 7) {
      case 0: {
        const std::string text = Text(random() % (kInline * 2 + 4), static_cast<char>('a' + random() % 3));
        strings[a] = ZANUnicodeString::FromValidUTF8(text);
        model[a] = text;
        break;
      }
      case 1:
        strings[a] = strings[b];
        model[a] = model[b];
        break;
      case 2:
        if (a != b) {
          strings[a] = std::move(strings[b]);
          model[a] = std::move(model[b]);
          model[b].clear();
        }
        break;
      case 3:
        if (model[a].size() + model[b].size() < 400) {
          strings[a] += strings[b];
          model[a] += std::string(model[b]);
        }
        break;
      case 4: {
        const int start = static_cast<int>(random() % 50);
        const int count = static_cast<int>(random() % 60);
        strings[a] = strings[b].SubString(start, count);
        model[a] = static_cast<std::size_t>(start) < model[b].size() ? model[b].substr(start, count) : "";
        break;
      }
      case 5: {
        ZANUnicodeString copy(strings[b]);
        std::swap(strings[a], copy);
        model[a] = model[b];
        break;
      }
      default:
        EXPECT_EQ(strings[a] == strings[b], model[a] == model[b]);
        EXPECT_EQ(strings[a] < strings[b], model[a] < model[b]);
        break;
    }
    ASSERT_EQ(strings[a].View(), model[a]) << "step " << step;
    ASSERT_EQ(strings[b].View(), model[b]) << "step " << step;
    ASSERT_EQ(strings[a].CastToCharPtr()[model[a].size()], '\0') << "step " << step;
  }
}

}  // namespace
