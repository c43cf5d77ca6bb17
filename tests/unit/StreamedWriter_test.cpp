// With the log off, documents are written straight to text instead of through a JSON tree. These
// tests build the tree as the writer always built it, with the public JSON objects, and compare its
// text byte for byte with what the writer gives: data documents, generated tables, and the cases
// that decide what is left out or escaped.
#include <KOVAMappingServices/KOVAKSSVersioning.h>
#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>
#include <KOVAMappingServices/ZANOmxJson.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <filesystem>
#include <string>

#include "tests/support/TableGenerator.h"
#include "tests/support/TestData.h"

namespace {

// --- The tree-based document, as the writer builds it when the log is on ---------------------

const ZANUnicodeString kNull("null");

void PutCustomData(ZANOmxJsonObject& object, const KOVAMappingPrivateObject& data) {
  ZANUnicodeString customData = data.GetCustomData();
  if (!(customData == kNull)) object.PutString("CustomData", customData);
}

void PutStamp(ZANOmxJsonObject& object, const KOVAMappingPrivateObject& data) {
  const ZANUnicodeString stamp = data.GetKSStamp();
  if (!stamp.IsEmpty()) {
    object.PutString("KOVASynchroStamp", KOVAKSSVersioning::ComputeKSSWithVersion(stamp, data.GetKSSVersion()));
  }
}

ZANOmxJsonObject InstanceObject(const KOVAMappingInstance& instance) {
  const auto data = KOVAPrivateAccess::GetPrivate(instance);
  ZANOmxJsonObject object;
  object.PutString("kOVAId", data->GetKOVAID());
  object.PutString("PlexoId", data->GetPlexoID());
  object.PutBoolean("IsLocal", data->GetIsLocal());
  object.PutString("RefId", data->GetRefID());
  PutCustomData(object, *data);
  PutStamp(object, *data);
  return object;
}

ZANOmxJsonObject ReferenceObject(KOVAMappingReference& reference) {
  const auto data = KOVAPrivateAccess::GetPrivate(reference);
  ZANOmxJsonObject object;
  PutCustomData(object, *data);
  object.PutBoolean("IsLocal", data->GetIsLocal());
  object.PutString("PlexoId", data->GetPlexoID());
  object.PutString("kOVAId", data->GetKOVAID());
  PutStamp(object, *data);
  ZANOmxJsonArray instances;
  for (const KOVAMappingInstance& instance : reference.GetInstances()) instances.PutJsonObject(InstanceObject(instance));
  if (instances.Length() > 0) object.PutJsonArray("Instances", instances);
  return object;
}

std::string TreeText(KOVAMappingTable& table) {
  ZANOmxJsonObject root;
  root.PutInteger("version", KOVAMappingPrivateTable::GetCurrentVersion());
  ZANOmxJsonArray references;
  for (KOVAMappingReference& reference : table.GetReferences()) references.PutJsonObject(ReferenceObject(reference));
  root.PutJsonArray("References", references);
  return root.ToString().ConvertToChar();
}

std::string Written(KOVAMappingTable& table) { return KOVAMappingParser::TranslateToString(table).ConvertToChar(); }

TEST(StreamedWriter, LogIsOffInTheseTests) { ASSERT_FALSE(KOVALogger::IsActive()); }

TEST(StreamedWriter, EveryDataDocumentIsWrittenAsTheTreeWritesIt) {
  int written = 0;
  int filled = 0;
  for (const auto& entry : std::filesystem::directory_iterator(kova::test::DataPath("documents"))) {
    const std::string name = "documents/" + entry.path().filename().string();
    // Whatever the reading's status, the table holds what was read so far: it is written too.
    KOVAMappingTable table;
    const HRESULT status = KOVAMappingParser::TranslateToMappingTable(
        ZANUnicodeString(kova::test::ReadDataFile(name)), ZANBaseUnknown(), table);
    EXPECT_EQ(Written(table), TreeText(table)) << name;
    ++written;
    if (status == S_OK && !table.GetReferences().empty()) ++filled;
  }
  EXPECT_GE(written, 40);
  EXPECT_GE(filled, 5);
}

TEST(StreamedWriter, GeneratedTablesAreWrittenAsTheTreeWritesThem) {
  std::size_t objects = 0;
  for (std::uint32_t seed = 1; seed <= 3000; ++seed) {
    kova::test::GeneratedTable generated = kova::test::GenerateTable(seed, 1 + static_cast<int>(seed % 8),
                                                                     static_cast<int>(seed % 7));
    const std::string tree = TreeText(generated.table);
    ASSERT_EQ(Written(generated.table), tree) << "seed " << seed;
    objects += tree.size();
  }
  EXPECT_GT(objects, 1000000u);  // the comparison covered full tables, not empty ones
}

TEST(StreamedWriter, LeftOutAndEscapedFieldsAreAsInTheTree) {
  KOVAMappingTable table;
  const std::string nul("a\0b", 3);
  KOVAMappingReference root("R\"1\\", ZANUnicodeString(std::string("P\x01\n\t/") + nul), "", "null", false);
  ASSERT_EQ(table.AddReference(root), S_OK);
  ASSERT_EQ(root.AddInstance(KOVAMappingInstance("I1", "P2", "", "R1", "", true)), S_OK);
  ASSERT_EQ(root.AddInstance(KOVAMappingInstance("Gr\xC3\xB6\xC3\x9F" "e \xF0\x9F\x99\x82", "P3", "V7:X", "R\x7F",
                                                 ZANUnicodeString(nul), false)),
            S_OK);
  KOVAMappingReference local("R2", "P4", "V1:AB", "", true);
  ASSERT_EQ(table.AddReference(local), S_OK);
  KOVAMappingReference other("R3", "P5", "ST", "\xE2\x80\xA8 line separator", true);
  ASSERT_EQ(table.AddReference(other), S_OK);
  ASSERT_EQ(other.AddInstance(KOVAMappingInstance("I9", "P9", "V0:", "R3", "null", true)), S_OK);
  const std::string tree = TreeText(table);
  EXPECT_EQ(Written(table), tree);
  // The cases are in the text: escapes, a NUL, raw non-ASCII, an empty custom data.
  EXPECT_NE(tree.find("\\u0000"), std::string::npos);
  EXPECT_NE(tree.find("\\\"1\\\\"), std::string::npos);
  EXPECT_NE(tree.find("\xF0\x9F\x99\x82"), std::string::npos);
  EXPECT_NE(tree.find("\"CustomData\":\"\""), std::string::npos);
}

TEST(StreamedWriter, StampsOfAnyLengthAndVersionAreAsInTheTree) {
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
  const std::string tree = TreeText(table);
  EXPECT_EQ(Written(table), tree);
  EXPECT_NE(tree.find("\"V-2147483648:" + std::string(500, 's') + "\""), std::string::npos);
}

TEST(StreamedWriter, EmptyTable) {
  KOVAMappingTable table;
  EXPECT_EQ(Written(table), TreeText(table));
}

}  // namespace
