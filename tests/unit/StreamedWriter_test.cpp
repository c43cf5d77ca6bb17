// With the log off, documents are written straight to text instead of through a JSON tree. These
// tests compare what the writer gives, byte for byte, with the document text worked out here from
// the format alone (no JSON objects, none of the library's stamp functions): data documents,
// generated tables, and the cases that decide what is left out or escaped.
#include <KOVAGenerator/DocumentText.h>
#include <KOVAGenerator/Table.h>
#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/TestData.h"

namespace {

// --- The document as the format describes it -------------------------------------------------
// Compact JSON: {"version":N,"References":[...]}. A reference's members in the writer's order:
// CustomData (left out when it is "null"), IsLocal, PlexoId, kOVAId, KOVASynchroStamp
// ("V" + version + ":" + stamp, left out when the stamp is empty), Instances (left out when there
// are none); an instance's: kOVAId, PlexoId, IsLocal, RefId, CustomData, KOVASynchroStamp. Strings
// are escaped as the JSON writer escapes them (the generator's AppendJsonEscaped, which the tool's
// tests hold against the JSON writer).

using Members = std::vector<std::pair<std::string, std::string>>;

std::string Quoted(std::string_view text) {
  std::string out = "\"";
  kova::generator::AppendJsonEscaped(out, text);
  return out + "\"";
}

std::string Boolean(bool value) { return value ? "true" : "false"; }

std::string Array(const std::vector<std::string>& elements) {
  std::string out = "[";
  for (const std::string& element : elements) out += (out.size() > 1 ? "," : "") + element;
  return out + "]";
}

std::string Object(const Members& members) {
  std::string out = "{";
  for (const auto& [key, value] : members) out += (out.size() > 1 ? "," : "") + Quoted(key) + ":" + value;
  return out + "}";
}

void AddCustomData(Members& members, const KOVAMappingPrivateObject& data) {
  if (data.GetCustomData().View() != "null") members.emplace_back("CustomData", Quoted(data.GetCustomData().View()));
}

void AddStamp(Members& members, const KOVAMappingPrivateObject& data) {
  const std::string stamp = data.GetKSStamp().ConvertToChar();
  if (!stamp.empty()) {
    members.emplace_back("KOVASynchroStamp", Quoted("V" + std::to_string(data.GetKSSVersion()) + ":" + stamp));
  }
}

std::string InstanceText(const KOVAMappingInstance& instance) {
  const auto data = KOVAPrivateAccess::GetPrivate(instance);
  Members members = {{"kOVAId", Quoted(data->GetKOVAID().View())},
                     {"PlexoId", Quoted(data->GetPlexoID().View())},
                     {"IsLocal", Boolean(data->GetIsLocal())},
                     {"RefId", Quoted(data->GetRefID().View())}};
  AddCustomData(members, *data);
  AddStamp(members, *data);
  return Object(members);
}

std::string ReferenceText(KOVAMappingReference& reference) {
  const auto data = KOVAPrivateAccess::GetPrivate(reference);
  Members members;
  AddCustomData(members, *data);
  members.emplace_back("IsLocal", Boolean(data->GetIsLocal()));
  members.emplace_back("PlexoId", Quoted(data->GetPlexoID().View()));
  members.emplace_back("kOVAId", Quoted(data->GetKOVAID().View()));
  AddStamp(members, *data);
  std::vector<std::string> instances;
  for (const KOVAMappingInstance& instance : reference.GetInstances()) instances.push_back(InstanceText(instance));
  if (!instances.empty()) members.emplace_back("Instances", Array(instances));
  return Object(members);
}

std::string ExpectedText(KOVAMappingTable& table) {
  std::vector<std::string> references;
  for (KOVAMappingReference& reference : table.GetReferences()) references.push_back(ReferenceText(reference));
  return Object(
      {{"version", std::to_string(KOVAMappingPrivateTable::GetCurrentVersion())}, {"References", Array(references)}});
}

std::string Written(KOVAMappingTable& table) { return KOVAMappingParser::TranslateToString(table).ConvertToChar(); }

TEST(StreamedWriter, LogIsOffInTheseTests) { ASSERT_FALSE(KOVALogger::IsActive()); }

TEST(StreamedWriter, EveryDataDocumentIsWrittenAsTheFormatSays) {
  int written = 0;
  int filled = 0;
  for (const auto& entry : std::filesystem::directory_iterator(kova::test::DataPath("documents"))) {
    const std::string name = "documents/" + entry.path().filename().string();
    // Whatever the reading's status, the table holds what was read so far: it is written too.
    KOVAMappingTable table;
    const HRESULT status = KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString(kova::test::ReadDataFile(name)),
                                                                      ZANBaseUnknown(), table);
    EXPECT_EQ(Written(table), ExpectedText(table)) << name;
    ++written;
    if (status == S_OK && !table.GetReferences().empty()) ++filled;
  }
  EXPECT_GE(written, 40);
  EXPECT_GE(filled, 5);
}

TEST(StreamedWriter, GeneratedTablesAreWrittenAsTheFormatSays) {
  std::size_t objects = 0;
  for (std::uint32_t seed = 1; seed <= 3000; ++seed) {
    kova::generator::GeneratedTable generated =
        kova::generator::BuildTable(kova::generator::HostileTable(seed, 1 + seed % 8, seed % 7));
    const std::string expected = ExpectedText(generated.table);
    ASSERT_EQ(Written(generated.table), expected) << "seed " << seed;
    objects += expected.size();
  }
  EXPECT_GT(objects, 1000000u);  // the comparison covered full tables, not empty ones
}

TEST(StreamedWriter, LeftOutAndEscapedFieldsAreAsTheFormatSays) {
  KOVAMappingTable table;
  const std::string nul("a\0b", 3);
  KOVAMappingReference root("R\"1\\", ZANUnicodeString(std::string("P\x01\n\t/") + nul), "", "null", false);
  ASSERT_EQ(table.AddReference(root), S_OK);
  ASSERT_EQ(root.AddInstance(KOVAMappingInstance("I1", "P2", "", "R1", "", true)), S_OK);
  ASSERT_EQ(root.AddInstance(KOVAMappingInstance("Gr\xC3\xB6\xC3\x9F"
                                                 "e \xF0\x9F\x99\x82",
                                                 "P3", "V7:X", "R\x7F", ZANUnicodeString(nul), false)),
            S_OK);
  KOVAMappingReference local("R2", "P4", "V1:AB", "", true);
  ASSERT_EQ(table.AddReference(local), S_OK);
  KOVAMappingReference other("R3", "P5", "ST", "\xE2\x80\xA8 line separator", true);
  ASSERT_EQ(table.AddReference(other), S_OK);
  ASSERT_EQ(other.AddInstance(KOVAMappingInstance("I9", "P9", "V0:", "R3", "null", true)), S_OK);
  const std::string expected = ExpectedText(table);
  EXPECT_EQ(Written(table), expected);
  // The cases are in the text: escapes, a NUL, raw non-ASCII, an empty custom data.
  EXPECT_NE(expected.find("\\u0000"), std::string::npos);
  EXPECT_NE(expected.find("\\\"1\\\\"), std::string::npos);
  EXPECT_NE(expected.find("\xF0\x9F\x99\x82"), std::string::npos);
  EXPECT_NE(expected.find("\"CustomData\":\"\""), std::string::npos);
}

TEST(StreamedWriter, StampsOfAnyLengthAndVersionAreAsTheFormatSays) {
  KOVAMappingTable table;
  KOVAMappingReference root("R", "P", "", "null", false);
  ASSERT_EQ(table.AddReference(root), S_OK);
  int n = 0;
  // Stamps on both sides of the length the writer composes on the stack, with versions of every
  // width and sign.
  for (std::size_t length : {1, 44, 114, 115, 116, 500}) {
    for (std::int32_t version : {INT32_MIN, -1, 0, 3, 10, INT32_MAX}) {
      KOVAMappingInstance instance(ZANUnicodeString("I" + std::to_string(n)), ZANUnicodeString("P" + std::to_string(n)),
                                   ZANUnicodeString(std::string(length, 's')), "R", "null", false);
      KOVAPrivateAccess::GetPrivate(instance)->SetKSSVersion(version);
      ASSERT_EQ(root.AddInstance(instance), S_OK);
      ++n;
    }
  }
  const std::string expected = ExpectedText(table);
  EXPECT_EQ(Written(table), expected);
  EXPECT_NE(expected.find("\"V-2147483648:" + std::string(500, 's') + "\""), std::string::npos);
}

TEST(StreamedWriter, EmptyTable) {
  KOVAMappingTable table;
  EXPECT_EQ(Written(table), ExpectedText(table));
}

}  // namespace
