// The document reader against a plain reader written only with the JSON object getters (an
// independent reading of the same rules, through ZANOmxJsonObject): for the same text both
// must give the same status, table (dump and every field), version and log lines.
//
// The test runs twice, with the log off and on: the library reads every document from one parse
// either way, and with the log on it also prints the input and the table.
//
// Texts: every file of tests/data/documents, documents written from generated tables in every
// version from 6 to 13, and thousands of mutations of them (keys deleted, values retyped or
// emptied, keys duplicated, versions changed, CE stamps added).
#include <KOVAGenerator/Table.h>
#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>
#include <KOVAMappingServices/ZANOmxJson.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "tests/support/PlainReader.h"
#include "tests/support/StdoutCapture.h"
#include "tests/support/TableContent.h"
#include "tests/support/TestData.h"

namespace {

// --- Comparison ---------------------------------------------------------------------------------

struct Outcome {
  HRESULT status = S_OK;
  std::string dump;
  std::string content;
  std::int32_t version = 0;
  std::string log;
};

template <typename Reader>
Outcome Run(const std::string& text, Reader&& read) {
  Outcome outcome;
  KOVAMappingTable table;
  kova::test::StdoutCapture capture;
  outcome.status = read(ZANUnicodeString::FromValidUTF8(text), table);
  outcome.log = capture.Stop();
  outcome.dump = KOVALogger::ToString(table).ConvertToChar();
  outcome.content = kova::test::DescribeContent(table);
  outcome.version = KOVAPrivateAccess::GetPrivate(table)->GetVersion();
  return outcome;
}

// The log with the printed input replaced by what the JSON object model makes of it. The library
// prints the input as it was written, repeated keys included; the plain reader prints the model's
// tree of it, where a repeated key keeps its first place and its last value. Loaded back into the
// model, both must give the same tree.
std::string WithInputAsTree(const std::string& log) {
  const std::string head = "[PrdKOVALog][Input Mapping Table JSON String]";
  const std::size_t begin = log.find(head);
  if (begin == std::string::npos) return log;
  const std::size_t from = begin + head.size();
  std::size_t end = log.find("\n[PrdKOVALog]", from);
  if (end == std::string::npos) end = log.size();
  ZANOmxJsonObject printed;
  if (ZANFailed(printed.LoadFromString(ZANUnicodeString::FromValidUTF8(log.substr(from, end - from))))) return log;
  return log.substr(0, from) + printed.PrettyPrint().ConvertToChar() + log.substr(end);
}

// Compares both readers on text; returns the status, for the callers' coverage counts. The printed
// input is compared byte for byte when the text repeats no key (printedAsTree false), else as the
// tree it loads to.
HRESULT ExpectSameReading(const std::string& text, const std::string& what, bool printedAsTree = false) {
  const ZANBaseUnknown owner;
  const Outcome fast = Run(text, [&](ZANUnicodeString t, KOVAMappingTable& table) {
    return KOVAMappingParser::TranslateToMappingTable(std::move(t), owner, table);
  });
  const Outcome reference = Run(text, [&](ZANUnicodeString t, KOVAMappingTable& table) {
    return kova::test::plain::Read(std::move(t), owner, table);
  });
  EXPECT_EQ(fast.status, reference.status) << what << "\n" << text;
  EXPECT_EQ(fast.dump, reference.dump) << what << "\n" << text;
  EXPECT_EQ(fast.content, reference.content) << what << "\n" << text;
  EXPECT_EQ(fast.version, reference.version) << what << "\n" << text;
  if (printedAsTree) {
    EXPECT_EQ(WithInputAsTree(fast.log), WithInputAsTree(reference.log)) << what << "\n" << text;
  } else {
    EXPECT_EQ(fast.log, reference.log) << what << "\n" << text;
  }
  return fast.status;
}

// A document written from a generated table, with "version" set to version.
std::string GeneratedDocument(std::uint32_t seed, int maxReferences, int maxInstances, int version) {
  kova::generator::GeneratedTable generated =
      kova::generator::BuildTable(kova::generator::HostileTable(seed, maxReferences, maxInstances));
  std::string text = KOVAMappingParser::TranslateToString(generated.table).ConvertToChar();
  ZANOmxJsonObject root;
  if (ZANFailed(root.LoadFromString(ZANUnicodeString::FromValidUTF8(text)))) return text;
  root.PutInteger("version", version);
  return root.ToString().ConvertToChar();
}

const std::vector<std::string> kKeys = {"kOVAId",           "PlexoId", "RefId",      "IsLocal",   "IsSetKSS",
                                        "KOVASynchroStamp", "CEStamp", "CustomData", "Instances", "References"};
const std::vector<std::string> kValues = {"1",           "true", "false", "null", "\"\"", "\"V3:abc\"",
                                          "\"V0KSS:x\"", "{}",   "[]",    "[{}]", "-2",   "\"CESv1(x'01')\"",
                                          "\"V12:s\"",   "1e3"};

// Values of "version" that are not plain integers, or that repeat the key.
const std::vector<std::string> kVersionForms = {
    "11.0", "1.2e1", "\"12\"",     "-0", "99999999999999999999", "12,\"version\":8", "7,\"version\":\"x\"", "null",
    "-12",  "12.5",  "2147483659", "12 "};

// The end of the JSON value that starts at text[at] (a string, literal or number, or a bracketed
// value), or npos when it cannot be told.
std::size_t ValueEnd(const std::string& text, std::size_t at) {
  if (at >= text.size()) return std::string::npos;
  if (text[at] == '"') {
    for (std::size_t i = at + 1; i < text.size(); ++i) {
      if (text[i] == '\\') {
        ++i;
      } else if (text[i] == '"') {
        return i + 1;
      }
    }
    return std::string::npos;
  }
  if (text[at] == '{' || text[at] == '[') {
    int depth = 0;
    bool inString = false;
    for (std::size_t i = at; i < text.size(); ++i) {
      const char c = text[i];
      if (inString) {
        if (c == '\\') {
          ++i;
        } else if (c == '"') {
          inString = false;
        }
      } else if (c == '"') {
        inString = true;
      } else if (c == '{' || c == '[') {
        ++depth;
      } else if (c == '}' || c == ']') {
        if (--depth == 0) return i + 1;
      }
    }
    return std::string::npos;
  }
  std::size_t i = at;
  while (i < text.size() && text[i] != ',' && text[i] != '}' && text[i] != ']') ++i;
  return i;
}

// The positions of "key": in text.
std::vector<std::size_t> KeyPositions(const std::string& text, const std::string& key) {
  std::vector<std::size_t> at;
  const std::string needle = "\"" + key + "\":";
  for (std::size_t p = text.find(needle); p != std::string::npos; p = text.find(needle, p + 1)) at.push_back(p);
  return at;
}

// One random change of text.
std::string Mutate(std::string text, std::mt19937& random) {
  const std::string& key = kKeys[random() % kKeys.size()];
  const std::vector<std::size_t> at = KeyPositions(text, key);
  const int kind = static_cast<int>(random() % 7);
  if (kind == 5) {  // another version, or the same in another form
    const std::vector<std::size_t> versions = KeyPositions(text, "version");
    if (versions.empty()) return text;
    const std::size_t from = versions.front() + 10;
    const std::size_t end = ValueEnd(text, from);
    if (end == std::string::npos) return text;
    if (random() % 3 != 0) return text.replace(from, end - from, std::to_string(5 + static_cast<int>(random() % 9)));
    return text.replace(from, end - from, kVersionForms[random() % kVersionForms.size()]);
  }
  if (kind == 6) {  // the whole text wrapped, padded or marked
    switch (random() % 5) {
      case 0: return "\xEF\xBB\xBF" + text;
      case 1: return " \n\t" + text + "\r\n ";
      case 2: return "[" + text + "]";
      case 3: return text.insert(1, "\"References\":{},");
      default: return text.substr(0, random() % (text.size() + 1));
    }
  }
  if (at.empty()) return text;
  const std::size_t p = at[random() % at.size()];
  const std::size_t valueAt = p + key.size() + 3;
  const std::size_t end = ValueEnd(text, valueAt);
  if (end == std::string::npos) return text;
  switch (kind) {
    case 0:  // the key deleted (renamed away)
      return text.insert(p + 1, "x");
    case 1:  // the value retyped
      return text.replace(valueAt, end - valueAt, kValues[random() % kValues.size()]);
    case 2:  // the value made an empty string
      return text.replace(valueAt, end - valueAt, "\"\"");
    case 3:  // the member duplicated with another value, before or after itself
      if (random() % 2 == 0) return text.insert(end, ",\"" + key + "\":" + kValues[random() % kValues.size()]);
      return text.insert(p, "\"" + key + "\":" + kValues[random() % kValues.size()] + ",");
    default:  // a CE stamp added next to the key
      return text.insert(p, std::string("\"CEStamp\":") + (random() % 2 == 0 ? "\"CESv1(x'01')\"," : "\"\","));
  }
}

// --- Tests --------------------------------------------------------------------------------------

TEST(ReaderDifferential, EveryDataDocument) {
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(kova::test::DataPath("documents"))) {
    const std::string name = "documents/" + entry.path().filename().string();
    ExpectSameReading(kova::test::ReadDataFile(name), name);
    ++files;
  }
  EXPECT_GE(files, 40);
}

TEST(ReaderDifferential, GeneratedDocumentsOfEveryVersion) {
  int read = 0;
  for (std::uint32_t seed = 1; seed <= 60; ++seed) {
    for (int version = 6; version <= 13; ++version) {
      const std::string text =
          GeneratedDocument(seed, 1 + static_cast<int>(seed % 9), static_cast<int>(seed % 7), version);
      if (ExpectSameReading(text, "seed " + std::to_string(seed)) == S_OK) ++read;
    }
  }
  // The generated tables are readable in versions 7 to 12 at least: the comparison covers full tables.
  EXPECT_GT(read, 200);
}

TEST(ReaderDifferential, EnvelopedDocument) {
  const std::string text = GeneratedDocument(7, 6, 5, 12);
  ZANUnicodeString envelope;
  ASSERT_EQ(KOVAMappingParser::CompressMTWithPrefix(ZANUnicodeString::FromValidUTF8(text), envelope), S_OK);
  EXPECT_EQ(ExpectSameReading(envelope.ConvertToChar(), "envelope"), S_OK);
}

TEST(ReaderDifferential, MutatedDocuments) {
  std::mt19937 random(20240611);
  int succeeded = 0;
  int failed = 0;
  for (int round = 0; round < 3000; ++round) {
    const int version = 6 + static_cast<int>(random() % 7);
    std::string text = GeneratedDocument(static_cast<std::uint32_t>(round), 1 + round % 5, round % 4, version);
    const int changes = 1 + static_cast<int>(random() % 3);
    for (int i = 0; i < changes; ++i) text = Mutate(std::move(text), random);
    if (ExpectSameReading(text, "round " + std::to_string(round), true) == S_OK) {
      ++succeeded;
    } else {
      ++failed;
    }
    if (HasFailure()) break;
  }
  // Both outcomes are well represented among the mutations.
  EXPECT_GT(succeeded, 300);
  EXPECT_GT(failed, 300);
}

}  // namespace
