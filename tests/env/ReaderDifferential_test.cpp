// The document reader against a plain reader written only with the JSON object getters (the way
// the library read documents before it walked the loaded tree directly): for the same text both
// must give the same status, table (dump and every field), version and log lines.
//
// The test runs twice: with the log on, the library reads every document from its loaded tree;
// with the log off, documents of versions 7 to 12 are read straight from the parser's tape and
// the others from the tree, so both ways are compared with the plain reader.
//
// Texts: every file of tests/data/documents, documents written from generated tables in every
// version from 6 to 13, and thousands of mutations of them (keys deleted, values retyped or
// emptied, keys duplicated, versions changed, CE stamps added).
#include <KOVAMappingServices/KOVAKSSVersioning.h>
#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>
#include <KOVAMappingServices/ZANOmxJson.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "tests/support/StdoutCapture.h"
#include "tests/support/TableGenerator.h"
#include "tests/support/TestData.h"

namespace {

// --- The plain reader ---------------------------------------------------------------------------

namespace plain {

using Statuses = std::map<ZANUnicodeString, std::int32_t>;

void LogFailure(const char* message) {
  if (KOVALogger::IsActive()) KOVALogger::log(message, "");
}

bool GotAll(const Statuses& statuses) {
  bool all = true;
  for (const auto& [key, status] : statuses) {
    if (status < 0) {
      if (KOVALogger::IsActive()) KOVALogger::log(key, "UNVALUATED MANDATORY FIELD");
      all = false;
    }
  }
  return all;
}

enum class StampKey { None, IsSetKSS, KOVASynchroStamp };

struct Fields {
  ZANUnicodeString kovaId;
  ZANUnicodeString plexoId;
  ZANUnicodeString refId;
  bool isLocal = false;
};

void ReadMandatory(const ZANOmxJsonObject& object, bool isInstance, StampKey stampKey, Fields& fields,
                   Statuses& statuses) {
  statuses[ZANUnicodeString("kOVAId")] = object.GetString("kOVAId", fields.kovaId);
  statuses[ZANUnicodeString("PlexoId")] = object.GetString("PlexoId", fields.plexoId);
  if (isInstance) statuses[ZANUnicodeString("RefId")] = object.GetString("RefId", fields.refId);
  statuses[ZANUnicodeString("IsLocal")] = object.GetBoolean("IsLocal", fields.isLocal);
  if (stampKey == StampKey::IsSetKSS) {
    bool isSet = false;
    statuses[ZANUnicodeString("IsSetKSS")] = object.GetBoolean("IsSetKSS", isSet);
  } else if (stampKey == StampKey::KOVASynchroStamp) {
    ZANUnicodeString stamp;
    statuses[ZANUnicodeString("KOVASynchroStamp")] = object.GetString("KOVASynchroStamp", stamp);
  }
}

HRESULT ReadInstances(const ZANOmxJsonObject& object, KOVAMappingReference& reference, StampKey stampKey) {
  ZANOmxJsonArray instances;
  HRESULT status = object.GetJsonArray("Instances", instances);
  if (status < 0) return status;
  for (int i = 1; i <= instances.Length(); ++i) {
    ZANOmxJsonObject element;
    status = instances.GetJsonObject(i, element);
    if (status < 0) return status;
    Fields fields;
    Statuses statuses;
    ReadMandatory(element, true, stampKey, fields, statuses);
    if (!GotAll(statuses)) return E_FAIL;
    ZANUnicodeString stamp;
    const std::int32_t stampVersion = KOVAKSSVersioning::GetStampParser(element, stamp);
    if (stampVersion < 0) return E_FAIL;
    const ZANUnicodeString customData = element.OptString("CustomData", "null");
    KOVAMappingInstance instance(fields.kovaId, fields.plexoId, stamp, fields.refId, customData, fields.isLocal);
    KOVAPrivateAccess::GetPrivate(instance)->SetKSSVersion(stampVersion);
    if (reference.AddInstance(instance) < 0) return E_FAIL;
  }
  return S_OK;
}

HRESULT ReadReferences(const ZANOmxJsonObject& root, KOVAMappingTable& table, StampKey stampKey,
                       StampKey instanceStampKey, bool logInstanceFailure) {
  if (!root.Has("References")) return E_FAIL;
  ZANOmxJsonArray references;
  HRESULT status = root.GetJsonArray("References", references);
  if (status < 0) return status;
  for (int i = 1; i <= references.Length(); ++i) {
    ZANOmxJsonObject element;
    status = references.GetJsonObject(i, element);
    if (status < 0) return status;
    Fields fields;
    Statuses statuses;
    ReadMandatory(element, false, stampKey, fields, statuses);
    if (!GotAll(statuses)) return E_FAIL;
    ZANUnicodeString stamp;
    const std::int32_t stampVersion = KOVAKSSVersioning::GetStampParser(element, stamp);
    if (stampVersion < 0) return E_FAIL;
    const ZANUnicodeString customData = element.OptString("CustomData", "null");
    KOVAMappingReference reference(fields.kovaId, fields.plexoId, stamp, customData, fields.isLocal);
    KOVAPrivateAccess::GetPrivate(reference)->SetKSSVersion(stampVersion);
    if (element.Has("Instances")) {
      status = ReadInstances(element, reference, instanceStampKey);
      if (status < 0) {
        if (logInstanceFailure) LogFailure("PROBLEM PARSING INSTANCES");
        return status;
      }
    }
    if (table.AddReference(reference) < 0) return E_FAIL;
  }
  return S_OK;
}

HRESULT ReadV6(const ZANOmxJsonObject& root, KOVAMappingTable& table) {
  if (!root.Has("References")) return E_FAIL;
  ZANOmxJsonObject references;
  if (root.GetJsonObject("References", references) < 0) return E_FAIL;
  std::vector<ZANUnicodeString> names;
  references.GetKeys(names);
  if (names.size() > 1) return E_FAIL;
  if (names.empty()) return S_OK;
  const ZANUnicodeString& kovaId = names.front();
  ZANOmxJsonObject element;
  if (references.GetJsonObject(kovaId, element) < 0) return E_FAIL;
  ZANUnicodeString plexoId;
  Statuses statuses;
  statuses[ZANUnicodeString("PlexoId")] = element.GetString("PlexoId", plexoId);
  if (!GotAll(statuses)) return E_FAIL;
  if (kovaId.IsEmpty()) return E_FAIL;
  ZANUnicodeString stamp;
  const std::int32_t stampVersion = KOVAKSSVersioning::GetStampParser(element, stamp);
  if (stampVersion < 0) return E_FAIL;
  KOVAMappingReference reference(kovaId, plexoId, stamp, "", false);
  KOVAPrivateAccess::GetPrivate(reference)->SetKSSVersion(stampVersion);
  if (root.Has("RefInstances")) {
    ZANOmxJsonObject instances;
    if (root.GetJsonObject("RefInstances", instances) < 0) return E_FAIL;
    std::vector<ZANUnicodeString> instanceNames;
    instances.GetKeys(instanceNames);
    for (const ZANUnicodeString& instanceId : instanceNames) {
      ZANOmxJsonObject instanceElement;
      if (instances.GetJsonObject(instanceId, instanceElement) < 0) return E_FAIL;
      ZANUnicodeString instancePlexoId;
      ZANUnicodeString refId;
      Statuses instanceStatuses;
      instanceStatuses[ZANUnicodeString("PlexoId")] = instanceElement.GetString("PlexoId", instancePlexoId);
      instanceStatuses[ZANUnicodeString("RefId")] = instanceElement.GetString("RefId", refId);
      if (!GotAll(instanceStatuses)) return E_FAIL;
      if (instanceId.IsEmpty()) return E_FAIL;
      ZANUnicodeString instanceStamp;
      const std::int32_t instanceVersion = KOVAKSSVersioning::GetStampParser(instanceElement, instanceStamp);
      if (instanceVersion < 0) return E_FAIL;
      KOVAMappingInstance instance(instanceId, instancePlexoId, instanceStamp, refId, "", false);
      KOVAPrivateAccess::GetPrivate(instance)->SetKSSVersion(instanceVersion);
      if (reference.AddInstance(instance) < 0) return E_FAIL;
    }
  }
  if (table.AddReference(reference) < 0) return E_FAIL;
  return S_OK;
}

HRESULT Read(ZANUnicodeString text, const ZANBaseUnknown& owner, KOVAMappingTable& table) {
  KOVAMappingParser::TryDecompressMT(text);
  ZANOmxJsonObject root;
  const HRESULT loaded = root.LoadFromString(text);
  if (loaded < 0) return loaded;
  if (root.IsEmpty() || !root.IsValidJsonObject()) {
    LogFailure("KOVA JSON EMPTY OR INVALID");
    return E_FAIL;
  }
  table.SetOwner(owner);
  if (KOVALogger::IsActive()) KOVALogger::log(root.PrettyPrint(), "Input Mapping Table JSON String");
  int version = -1;
  const HRESULT read = root.GetInteger("version", version);
  if (read < 0) {
    LogFailure("CANNOT READ VERSION ON KOVA JSON");
    return read;
  }
  KOVAPrivateAccess::GetPrivate(table)->SetVersion(version);
  HRESULT status = E_FAIL;
  if (version <= 5) {
    LogFailure("UNSUPPORTED VERSION ( version < 6 )");
  } else if (version <= 12) {
    switch (version) {
      case 6: status = ReadV6(root, table); break;
      case 7: status = ReadReferences(root, table, StampKey::None, StampKey::None, true); break;
      case 8: status = ReadReferences(root, table, StampKey::None, StampKey::None, false); break;
      case 9: status = ReadReferences(root, table, StampKey::IsSetKSS, StampKey::None, false); break;
      case 10: status = ReadReferences(root, table, StampKey::IsSetKSS, StampKey::IsSetKSS, false); break;
      default:
        status = ReadReferences(root, table, StampKey::KOVASynchroStamp, StampKey::KOVASynchroStamp, false);
        break;
    }
  } else {
    LogFailure("UNSUPPORTED VERSION ( version > 11 )");
  }
  if (KOVALogger::IsActive()) KOVALogger::log(KOVALogger::ToString(table), "MappingTable at the end of parsing");
  return status;
}

}  // namespace plain

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

// Compares both readers on text; returns the status, for the callers' coverage counts.
HRESULT ExpectSameReading(const std::string& text, const std::string& what) {
  const ZANBaseUnknown owner;
  const Outcome fast = Run(text, [&](ZANUnicodeString t, KOVAMappingTable& table) {
    return KOVAMappingParser::TranslateToMappingTable(std::move(t), owner, table);
  });
  const Outcome reference =
      Run(text, [&](ZANUnicodeString t, KOVAMappingTable& table) { return plain::Read(std::move(t), owner, table); });
  EXPECT_EQ(fast.status, reference.status) << what << "\n" << text;
  EXPECT_EQ(fast.dump, reference.dump) << what << "\n" << text;
  EXPECT_EQ(fast.content, reference.content) << what << "\n" << text;
  EXPECT_EQ(fast.version, reference.version) << what << "\n" << text;
  EXPECT_EQ(fast.log, reference.log) << what << "\n" << text;
  return fast.status;
}

// A document written from a generated table, with "version" set to version.
std::string GeneratedDocument(std::uint32_t seed, int maxReferences, int maxInstances, int version) {
  kova::test::GeneratedTable generated = kova::test::GenerateTable(seed, maxReferences, maxInstances);
  std::string text = KOVAMappingParser::TranslateToString(generated.table).ConvertToChar();
  ZANOmxJsonObject root;
  if (root.LoadFromString(ZANUnicodeString::FromValidUTF8(text)) < 0) return text;
  root.PutInteger("version", version);
  return root.ToString().ConvertToChar();
}

const std::vector<std::string> kKeys = {"kOVAId", "PlexoId",    "RefId",     "IsLocal",    "IsSetKSS",
                                        "KOVASynchroStamp", "CEStamp", "CustomData", "Instances", "References"};
const std::vector<std::string> kValues = {"1",  "true", "false", "null", "\"\"", "\"V3:abc\"", "\"V0KSS:x\"",
                                          "{}", "[]",   "[{}]",  "-2",   "\"CESv1(x'01')\"", "\"V12:s\"", "1e3"};

// Values of "version" that are not plain integers, or that repeat the key.
const std::vector<std::string> kVersionForms = {"11.0", "1.2e1", "\"12\"", "-0", "99999999999999999999",
                                                "12,\"version\":8", "7,\"version\":\"x\"", "null", "-12",
                                                "12.5", "2147483659", "12 "};

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
      const std::string text = GeneratedDocument(seed, 1 + static_cast<int>(seed % 9), static_cast<int>(seed % 7), version);
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
    if (ExpectSameReading(text, "round " + std::to_string(round)) == S_OK) {
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
