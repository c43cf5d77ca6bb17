// Reading mapping documents of every version from tests/data/documents, with the diagnostic log on:
// status, the table afterwards (its dump, custom data and owner) and the logged lines, whole.
#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>
#include <KOVAMappingServices/ZANOmxJson.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/StdoutCapture.h"
#include "tests/support/TestData.h"

namespace {

using kova::test::ReadDataFile;
using kova::test::SplitLines;
using kova::test::StdoutCapture;

// Digests of "cestamp" + CE stamp, computed with: printf %s TEXT | openssl dgst -sha256 -binary | base64
const std::string kCE01 = "Q9Qo/l/ljUEVerC0NCbRlwd3gDfRfthn7/rGE6iarYQ=";  // CESv1(x'01')
const std::string kCE02 = "/WkxL0AIpVJWBclTs0LJIg/yJKz3yJUGQVTwNFAdjhM=";  // CESv1(x'02')

const std::string kTag = "[PrdKOVALog]";
const std::string kInput = "{INPUT}";  // the pretty-printed input document, checked by its first line
const std::string kDump = "{DUMP}";    // the table dump at the end of parsing, checked whole
const std::string kUntouched = "{UNTOUCHED}";

// Log records: a record starts at a line that starts with the tag; the lines after it that do not
// belong to it (pretty-printed documents, dumps) are joined to it.
std::vector<std::string> Records(const std::string& output) {
  std::vector<std::string> records;
  for (const std::string& line : SplitLines(output)) {
    if (line.rfind(kTag, 0) == 0 || records.empty()) {
      records.push_back(line);
    } else {
      records.back() += "\n" + line;
    }
  }
  return records;
}

std::string Ref(const std::string& kovaId, const std::string& plexoId, bool isLocal, const std::string& stamp) {
  return "{ kOVAId: " + kovaId + " PlexoId: " + plexoId + " IsLocal: " + (isLocal ? "true" : "false") +
         " KOVASynchroStamp: " + stamp + " }\n";
}

std::string Inst(const std::string& kovaId, const std::string& plexoId, bool isLocal, const std::string& refId,
                 const std::string& stamp) {
  return "{ kOVAId: " + kovaId + " PlexoId: " + plexoId + " IsLocal: " + (isLocal ? "true" : "false") +
         " RefId: " + refId + " KOVASynchroStamp: " + stamp + " }\n";
}

std::string Instances(const std::vector<std::string>& lines) {
  std::string text = "\t\tInstances:[\n";
  for (const std::string& line : lines) text += "\t\t" + line;
  return text + "\t\t]\n";
}

std::string Table(int version, const std::vector<std::string>& references) {
  std::string text = "{ version:" + std::to_string(version) + "\n\tReferences:[\n";
  for (const std::string& reference : references) text += "\t" + reference;
  return text + "\t]\n}\n";
}

struct Case {
  std::string file;
  HRESULT status;
  bool ownerSet;
  std::string dump;                  // the table's dump afterwards, or kUntouched
  std::vector<std::string> logs;     // the log records, kInput and kDump standing for those blocks
  std::vector<std::string> customs;  // custom data of GetContent(), in order (when not empty)
};

void PrintTo(const Case& c, std::ostream* out) { *out << c.file; }

class DocumentReader : public ::testing::TestWithParam<Case> {};

TEST_P(DocumentReader, StatusTableAndLog) {
  const Case& c = GetParam();
  ASSERT_TRUE(KOVALogger::IsActive());
  const std::string text = ReadDataFile("documents/" + c.file);
  KOVAMappingTable table;
  KOVAPrivateAccess::GetPrivate(table)->SetVersion(-42);  // shows whether the reader recorded a version
  const ZANBaseUnknown owner(std::make_shared<ZANComponent>());

  StdoutCapture capture;
  const HRESULT status = KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString(text), owner, table);
  const std::string output = capture.Stop();

  EXPECT_EQ(status, c.status);
  EXPECT_EQ(table.GetOwner() == owner, c.ownerSet);
  const std::string dump = KOVALogger::ToString(table).ConvertToChar();
  if (c.dump == kUntouched) {
    EXPECT_EQ(dump, Table(-42, {}));
  } else {
    EXPECT_EQ(dump, c.dump);
  }
  if (!c.customs.empty()) {
    std::vector<std::string> customs;
    for (const KOVAMappingObject& object : table.GetContent())
      customs.push_back(object.GetCustomData().ConvertToChar());
    EXPECT_EQ(customs, c.customs);
  }

  const std::vector<std::string> records = Records(output);
  ASSERT_EQ(records.size(), c.logs.size()) << output;
  const std::string dumpRecord = kTag + "[MappingTable at the end of parsing]" + dump;
  for (std::size_t i = 0; i < records.size(); ++i) {
    if (c.logs[i] == kInput) {
      EXPECT_EQ(records[i].substr(0, records[i].find('\n')), kTag + "[Input Mapping Table JSON String]{");
    } else if (c.logs[i] == kDump) {
      EXPECT_EQ(records[i], dumpRecord);
    } else {
      EXPECT_EQ(records[i], c.logs[i]);
    }
  }
}

const std::string kMandatory = kTag + "[UNVALUATED MANDATORY FIELD]";

// Valid documents of every version, exercising every key of the key tables.
INSTANTIATE_TEST_SUITE_P(
    ValidDocuments, DocumentReader,
    ::testing::Values(
        Case{"v6_valid.json",
             S_OK,
             true,
             Table(6, {Ref("R6", "P-R6", false, "V1:refstamp") +
                       Instances({Inst("I1", "P-I1", false, "R6", "V0:" + kCE01),
                                  Inst("I2", "P-I2", false, "R6", "V2:barestamp"),
                                  Inst("I3", "P-I3", false, "R6", "V0:" + kCE01),
                                  Inst("I4", "P-I4", false, "other", "V1:bare4")})}),
             {kInput, kDump},
             {"", "", "", "", ""}},
        Case{"v6_empty_references.json", S_OK, true, Table(6, {}), {kInput, kDump}, {}},
        Case{"v7_valid.json",
             S_OK,
             true,
             Table(7, {Ref("R1", "P1", false, "V0:" + kCE02) +
                           Instances({Inst("I1", "PI1", false, "R2", "V3:s1"), Inst("I2", "PI2", true, "R2", "V1:s2"),
                                      Inst("I3", "PI3", false, "R3", "V2:s3")}),
                       Ref("R2", "P2", true, "V0:x"), Ref("R3", "P3", true, "V0:" + kCE02)}),
             {kInput, kDump},
             {"null", "text one", "null", "null", "", "null"}},
        Case{"v8_valid.json",
             S_OK,
             true,
             Table(8, {Ref("A", "PA", true, "V2:sa") + Instances({Inst("a1", "Pa1", false, "B", "V0:" + kCE01)}),
                       Ref("B", "PB", false, "V2:sb")}),
             {kInput, kDump},
             {"null", "null", "cb"}},
        Case{"v8_stamp_not_a_string.json",
             S_OK,
             true,
             Table(8, {Ref("A", "PA", false, "V0:" + kCE01)}),
             {kInput, kDump},
             {}},
        Case{"v9_valid.json",
             S_OK,
             true,
             Table(9, {Ref("A", "PA", false, "V1:sa") + Instances({Inst("a1", "Pa1", false, "A", "V5:s1")})}),
             {kInput, kDump},
             {}},
        Case{"v10_valid.json",
             S_OK,
             true,
             Table(10, {Ref("A", "PA", false, "V2:sa") + Instances({Inst("a1", "Pa1", false, "A", "V0:" + kCE02)})}),
             {kInput, kDump},
             {}},
        Case{"v11_valid.json",
             S_OK,
             true,
             Table(11, {Ref("A", "PA", false, "V1:sa") + Instances({Inst("a1", "Pa1", true, "A", "V0:abc")}),
                        Ref("B", "PB", true, "V9:sb")}),
             {kInput, kDump},
             {"null", "c1", "null"}},
        Case{"v12_valid.json",
             S_OK,
             true,
             Table(12, {Ref("R\xC3\xA9"
                            "f-1",
                            "P\xE2\x82\xAC", false, "V2:s") +
                        Instances({Inst("i-\xC3\xBC", "Pi", false,
                                        "R\xC3\xA9"
                                        "f-1",
                                        "V1:t")})}),
             {kInput, kDump},
             {"\xE6\x97\xA5\xE6\x9C\xAC", "null"}},
        Case{"bom_v12.json",
             S_OK,
             true,
             Table(12, {Ref("R\xC3\xA9"
                            "f-1",
                            "P\xE2\x82\xAC", false, "V2:s") +
                        Instances({Inst("i-\xC3\xBC", "Pi", false,
                                        "R\xC3\xA9"
                                        "f-1",
                                        "V1:t")})}),
             {kInput, kDump},
             {}},
        Case{"v12_empty_references.json", S_OK, true, Table(12, {}), {kInput, kDump}, {}}));

// Documents refused before or at their version.
INSTANTIATE_TEST_SUITE_P(
    RefusedDocuments, DocumentReader,
    ::testing::Values(Case{"empty.json", E_FAIL, false, kUntouched, {kTag + "KOVA JSON EMPTY OR INVALID"}, {}},
                      Case{"blank.json", E_FAIL, false, kUntouched, {kTag + "KOVA JSON EMPTY OR INVALID"}, {}},
                      Case{"empty_object.json", E_FAIL, false, kUntouched, {kTag + "KOVA JSON EMPTY OR INVALID"}, {}},
                      Case{"array_root.json", E_FAIL, false, kUntouched, {kTag + "KOVA JSON EMPTY OR INVALID"}, {}},
                      Case{"malformed.json", ZAN_E_INVALIDDATA, false, kUntouched, {}, {}},
                      Case{"no_version.json",
                           ZAN_E_NOTFOUND,
                           true,
                           kUntouched,
                           {kInput, kTag + "CANNOT READ VERSION ON KOVA JSON"},
                           {}},
                      Case{"version_string.json",
                           ZAN_E_TYPEMISMATCH,
                           true,
                           kUntouched,
                           {kInput, kTag + "CANNOT READ VERSION ON KOVA JSON"},
                           {}},
                      Case{"version_real.json",
                           ZAN_E_TYPEMISMATCH,
                           true,
                           kUntouched,
                           {kInput, kTag + "CANNOT READ VERSION ON KOVA JSON"},
                           {}},
                      Case{"version_5.json",
                           E_FAIL,
                           true,
                           Table(5, {}),
                           {kInput, kTag + "UNSUPPORTED VERSION ( version < 6 )", kDump},
                           {}},
                      Case{"version_13.json",
                           E_FAIL,
                           true,
                           Table(13, {}),
                           {kInput, kTag + "UNSUPPORTED VERSION ( version > 11 )", kDump},
                           {}}));

// Documents refused part way: what was read before the failure stays in the table.
INSTANTIATE_TEST_SUITE_P(
    RefusedContent, DocumentReader,
    ::testing::Values(
        Case{"v12_no_references.json", E_FAIL, true, Table(12, {}), {kInput, kDump}, {}},
        Case{"v12_references_object.json", ZAN_E_TYPEMISMATCH, true, Table(12, {}), {kInput, kDump}, {}},
        Case{"v12_reference_not_object.json", ZAN_E_TYPEMISMATCH, true, Table(12, {}), {kInput, kDump}, {}},
        Case{"v12_instances_not_array.json", ZAN_E_TYPEMISMATCH, true, Table(12, {}), {kInput, kDump}, {}},
        Case{"v12_instance_not_object.json", ZAN_E_TYPEMISMATCH, true, Table(12, {}), {kInput, kDump}, {}},
        Case{"v8_second_reference_without_islocal.json",
             E_FAIL,
             true,
             Table(8, {Ref("A", "PA", false, "V1:sa")}),
             {kInput, kMandatory + "IsLocal", kDump},
             {}},
        Case{"v12_reference_missing_ids.json",
             E_FAIL,
             true,
             Table(12, {}),
             {kInput, kMandatory + "KOVASynchroStamp", kMandatory + "PlexoId", kMandatory + "kOVAId", kDump},
             {}},
        Case{"v12_instance_missing_refid.json",
             E_FAIL,
             true,
             Table(12, {}),
             {kInput, kMandatory + "IsLocal", kMandatory + "RefId", kDump},
             {}},
        Case{"v9_reference_without_issetkss.json",
             E_FAIL,
             true,
             Table(9, {}),
             {kInput, kMandatory + "IsSetKSS", kDump},
             {}},
        Case{"v10_instance_without_issetkss.json",
             E_FAIL,
             true,
             Table(10, {}),
             {kInput, kMandatory + "IsSetKSS", kDump},
             {}},
        Case{"v11_reference_without_kovasynchrostamp.json",
             E_FAIL,
             true,
             Table(11, {}),
             {kInput, kMandatory + "KOVASynchroStamp", kDump},
             {}},
        Case{"v12_instance_without_kovasynchrostamp.json",
             E_FAIL,
             true,
             Table(12, {}),
             {kInput, kMandatory + "KOVASynchroStamp", kDump},
             {}},
        Case{"v7_reference_without_stamp.json", E_FAIL, true, Table(7, {}), {kInput, kDump}, {}},
        Case{"v7_instance_without_stamp.json",
             E_FAIL,
             true,
             Table(7, {Ref("A", "PA", true, "V1:s")}),
             {kInput, kTag + "PROBLEM PARSING INSTANCES", kDump},
             {}},
        Case{"v7_instance_missing_plexoid.json",
             E_FAIL,
             true,
             Table(7, {}),
             {kInput, kMandatory + "PlexoId", kTag + "PROBLEM PARSING INSTANCES", kDump},
             {}},
        Case{"v7_instances_not_array.json",
             ZAN_E_TYPEMISMATCH,
             true,
             Table(7, {}),
             {kInput, kTag + "PROBLEM PARSING INSTANCES", kDump},
             {}},
        Case{"v8_instance_without_stamp.json", E_FAIL, true, Table(8, {}), {kInput, kDump}, {}},
        Case{"v12_duplicate_reference.json",
             E_FAIL,
             true,
             Table(12, {Ref("A", "P", false, "V1:s")}),
             {kInput, kDump},
             {}},
        Case{"v12_second_root.json",
             E_FAIL,
             true,
             Table(12, {Ref("A", "PA", false, "V1:s"), Ref("B", "PB", true, "V1:s")}),
             {kInput, kDump},
             {}},
        Case{"v12_duplicate_instance.json",
             E_FAIL,
             true,
             Table(12, {Ref("A", "PA", true, "V1:s")}),
             {kInput, kDump},
             {}},
        Case{"v6_two_references.json", E_FAIL, true, Table(6, {}), {kInput, kDump}, {}},
        Case{"v6_references_array.json", E_FAIL, true, Table(6, {}), {kInput, kDump}, {}},
        Case{"v6_empty_reference_name.json", E_FAIL, true, Table(6, {}), {kInput, kDump}, {}},
        Case{"v6_reference_without_plexoid.json",
             E_FAIL,
             true,
             Table(6, {}),
             {kInput, kMandatory + "PlexoId", kDump},
             {}},
        Case{"v6_instance_without_ids.json",
             E_FAIL,
             true,
             Table(6, {}),
             {kInput, kMandatory + "PlexoId", kMandatory + "RefId", kDump},
             {}},
        Case{"v6_empty_instance_name.json", E_FAIL, true, Table(6, {}), {kInput, kDump}, {}},
        Case{"v6_instance_without_stamp.json", E_FAIL, true, Table(6, {}), {kInput, kDump}, {}},
        Case{"v6_refinstances_not_object.json", E_FAIL, true, Table(6, {}), {kInput, kDump}, {}},
        Case{"v6_no_references.json", E_FAIL, true, Table(6, {}), {kInput, kDump}, {}}));

TEST(DocumentWriterLog, WriterLogsTheGeneratedDocument) {
  KOVAMappingTable table;
  KOVAMappingReference reference("R1", "P1", "V2:AB", "null", false);
  ASSERT_EQ(table.AddReference(reference), S_OK);
  StdoutCapture capture;
  const ZANUnicodeString document = KOVAMappingParser::TranslateToString(table);
  const std::vector<std::string> records = Records(capture.Stop());
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].substr(0, records[0].find('\n')), kTag + "[JSON generated from MappingTable]{");
  // The logged text is the same document, indented.
  ZANOmxJsonObject logged;
  ASSERT_EQ(logged.LoadFromString(ZANUnicodeString(records[0].substr(records[0].find('{')))), S_OK);
  EXPECT_EQ(logged.ToString(), document);
}

TEST(DocumentReaderLog, VersionStringKeepsTheEarlierVersion) {
  KOVAMappingTable table;
  KOVAPrivateAccess::GetPrivate(table)->SetVersion(8);
  StdoutCapture capture;
  EXPECT_EQ(KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString(ReadDataFile("documents/version_string.json")),
                                                       ZANBaseUnknown(), table),
            ZAN_E_TYPEMISMATCH);
  capture.Stop();
  EXPECT_EQ(KOVAPrivateAccess::GetPrivate(table)->GetVersion(), 8);
}

}  // namespace
