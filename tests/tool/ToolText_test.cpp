// The tool's text helpers, its output files and its table comparison.
#include <KOVAMappingServices/KOVAMappingServices.h>

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "Diff.h"
#include "Io.h"
#include "Status.h"
#include "Text.h"

namespace kova::tool {
namespace {

TEST(ToolUtf8, AcceptsWellFormedText) {
  EXPECT_FALSE(FindInvalidUtf8(""));
  EXPECT_FALSE(FindInvalidUtf8("plain ASCII"));
  EXPECT_FALSE(FindInvalidUtf8("\xEF\xBB\xBF{}"));  // byte order mark
  EXPECT_FALSE(
      FindInvalidUtf8("Gr\xC3\xBC\xC3\x9F"
                      "e \xE2\x82\xAC"));                              // "Grüße €"
  EXPECT_FALSE(FindInvalidUtf8("\xF0\x9F\x94\xA9 \xF4\x8F\xBF\xBF"));  // U+1F529, U+10FFFF
  EXPECT_FALSE(FindInvalidUtf8(std::string("a\0b", 3)));
}

TEST(ToolUtf8, GivesTheOffsetOfTheFirstBadByte) {
  EXPECT_EQ(FindInvalidUtf8("caf\xE9"), 3u);           // Latin-1
  EXPECT_EQ(FindInvalidUtf8("ab\xC0\x80"), 2u);        // overlong NUL
  EXPECT_EQ(FindInvalidUtf8("\xE0\x80\xAF"), 0u);      // overlong "/"
  EXPECT_EQ(FindInvalidUtf8("x\xED\xA0\x80"), 1u);     // surrogate U+D800
  EXPECT_EQ(FindInvalidUtf8("\xF4\x90\x80\x80"), 0u);  // above U+10FFFF
  EXPECT_EQ(FindInvalidUtf8("\xF5\x80\x80\x80"), 0u);
  EXPECT_EQ(FindInvalidUtf8("ok\xE2\x82"), 2u);     // cut short
  EXPECT_EQ(FindInvalidUtf8("\x80"), 0u);           // lone continuation byte
  EXPECT_EQ(FindInvalidUtf8("\xC3\xBC\xC3("), 2u);  // bad continuation
}

TEST(ToolText, EscapesLikeTheLibrarysJsonWriter) {
  std::string every;
  for (int c = 0; c < 128; ++c) every.push_back(static_cast<char>(c));
  every += "\xC3\xA9\xE2\x82\xAC";
  ZANOmxJsonObject object;
  object.PutString("k", ZANUnicodeString(every.data(), every.size()));
  EXPECT_EQ(object.ToString().ConvertToChar(), "{\"k\":" + JsonQuoted(every) + "}");
}

TEST(ToolText, ShowsPlainValuesAsTheyAreAndOthersQuoted) {
  EXPECT_EQ(ShowValue("prd-4bdb6e725c26c314"), "prd-4bdb6e725c26c314");
  EXPECT_EQ(ShowValue("Motortr\xC3\xA4ger-1030"), "Motortr\xC3\xA4ger-1030");
  EXPECT_EQ(ShowValue(""), "\"\"");
  EXPECT_EQ(ShowValue("two words"), "\"two words\"");
  EXPECT_EQ(ShowValue("{\"a\":1}"), "\"{\\\"a\\\":1}\"");
  EXPECT_EQ(ShowValue("C:\\parts"), "\"C:\\\\parts\"");
  EXPECT_EQ(ShowValue("tab\there"), "\"tab\\there\"");
}

TEST(ToolText, KeepsTextOnOneLine) {
  EXPECT_EQ(OneLine("a\nb\tc\x7F"), "a\\u000Ab\\u0009c\\u007F");
  EXPECT_EQ(OneLine("{\"quoted\": \"\\\\\"}"), "{\"quoted\": \"\\\\\"}");
}

TEST(ToolText, SplitsAtEverySeparator) {
  EXPECT_EQ(Split("a,b,,c", ','), (std::vector<std::string>{"a", "b", "", "c"}));
  EXPECT_EQ(Split("", ','), (std::vector<std::string>{""}));
}

TEST(ToolStatus, FormatsAndExplainsStatuses) {
  EXPECT_EQ(FormatStatus(E_FAIL), "0x80004005");
  EXPECT_EQ(FormatStatus(ZAN_E_INVALIDDATA), "0x8007000D");
  EXPECT_EQ(FormatStatus(S_OK), "0x00000000");
  EXPECT_EQ(StatusMeaning(ZANZ_E_BADDATA), "bad compressed data");
  EXPECT_EQ(StatusMeaning(ZAN_E_INVALIDDATA), "invalid data (malformed JSON or base64)");
  EXPECT_EQ(StatusMeaning(static_cast<HRESULT>(0x80001234u)), "unknown status");
}

// A temporary folder, removed with what it holds.
class ToolOutput : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/kova-tool-output-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    folder_ = pattern;
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  static std::string Read(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
  }
  std::size_t Entries() const {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder_), {}));
  }

  std::filesystem::path folder_;
};

TEST_F(ToolOutput, PutsTheFileInPlaceOnCommit) {
  const std::filesystem::path path = folder_ / "out.json";
  {
    Output out(path.string());
    out.Write("first ");
    out.Write("second");
    out.Commit();
  }
  EXPECT_EQ(Read(path), "first second");
  EXPECT_EQ(Entries(), 1u);
}

TEST_F(ToolOutput, LeavesAnExistingFileAsItWasWithoutCommit) {
  const std::filesystem::path path = folder_ / "out.json";
  std::ofstream(path) << "before";
  {
    Output out(path.string());
    out.Write("half a document");
  }
  EXPECT_EQ(Read(path), "before");
  EXPECT_EQ(Entries(), 1u);  // no temporary file left
}

TEST_F(ToolOutput, WritesThroughASymbolicLinkAndKeepsIt) {
  const std::filesystem::path target = folder_ / "target.json";
  const std::filesystem::path link = folder_ / "link.json";
  std::ofstream(target) << "old";
  std::filesystem::create_symlink(target, link);
  {
    Output out(link.string());
    out.Write("new");
    out.Commit();
  }
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(Read(target), "new");
}

TEST_F(ToolOutput, NamesTheFileItCannotWrite) {
  const std::string path = (folder_ / "missing" / "out.json").string();
  try {
    Output out(path);
    FAIL() << "no error";
  } catch (const ToolError& error) {
    EXPECT_EQ(std::string(error.what()), path + ": cannot write (No such file or directory)");
  }
}

// Tables for the comparison: each reference is {kOVA id, [instance kOVA ids]}, every object with
// Plexo id "P" + kOVA id; the references are all local, so that their order does not decide a root.
KOVAMappingTable Table(const std::vector<std::pair<std::string, std::vector<std::string>>>& content) {
  KOVAMappingTable table;
  for (const auto& [id, instances] : content) {
    KOVAMappingReference reference(ZANUnicodeString(id), ZANUnicodeString("P" + id), "V2:AA", "null", true);
    EXPECT_EQ(table.AddReference(reference), S_OK);
    for (const std::string& instance : instances) {
      KOVAMappingInstance occurrence(ZANUnicodeString(instance), ZANUnicodeString("P" + instance), "V2:BB", "X", "null",
                                     false);
      EXPECT_EQ(table.AddInstance(occurrence, reference), S_OK);
    }
  }
  return table;
}

TEST(ToolDiff, MatchesARepeatedInstanceUnderItsOwnReferenceFirst) {
  KOVAMappingTable before = Table({{"R1", {"I1"}}, {"R2", {"I1"}}});
  KOVAMappingTable after = Table({{"R2", {"I1"}}, {"R1", {"I1"}}});
  const TableDiff diff = DiffTables(before, after);
  EXPECT_TRUE(diff.Equal());
  EXPECT_EQ(diff.Summary(), "summary: 0 added, 0 removed, 0 moved, 0 changed");
}

TEST(ToolDiff, MovesARepeatedInstanceWhoseReferenceIsGone) {
  KOVAMappingTable before = Table({{"R1", {"I1"}}, {"R2", {"I1"}}});
  KOVAMappingTable after = Table({{"R1", {"I1"}}, {"R3", {"I1"}}});
  const TableDiff diff = DiffTables(before, after);
  EXPECT_EQ(diff.Lines(), (std::vector<std::string>{"- reference R2", "+ reference R3", "> instance I1: R2 -> R3"}));
  EXPECT_EQ(diff.Summary(), "summary: 1 added, 1 removed, 1 moved, 0 changed");
}

TEST(ToolDiff, CountsAnInstanceThatMovedAndChangedInBothGroups) {
  KOVAMappingTable before = Table({{"R1", {"I1"}}, {"R2", {}}});
  KOVAMappingTable after = Table({{"R1", {}}, {"R2", {"I1"}}});
  KOVAMappingInstance moved;
  ASSERT_EQ(after.GetInstanceFromKOVAId("I1", moved), S_OK);
  moved.SetPlexoID("Pother");
  const TableDiff diff = DiffTables(before, after);
  EXPECT_EQ(diff.Lines(),
            (std::vector<std::string>{"> instance I1: R1 -> R2", "~ instance I1: PlexoId PI1 -> Pother"}));
  EXPECT_EQ(diff.moved, 1);
  EXPECT_EQ(diff.changed, 1);
}

}  // namespace
}  // namespace kova::tool
