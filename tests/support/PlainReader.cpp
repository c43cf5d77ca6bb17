// The plain reader: see PlainReader.h.
#include "tests/support/PlainReader.h"

#include <KOVAMappingServices/KOVAKSSVersioning.h>
#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>
#include <KOVAMappingServices/ZANOmxJson.h>

#include <cstdint>
#include <map>
#include <vector>

namespace kova::test::plain {

namespace {

using Statuses = std::map<ZANUnicodeString, HRESULT>;  // each mandatory key's getter status

void LogFailure(const char* message) {
  if (KOVALogger::IsActive()) KOVALogger::log(message, "");
}

bool GotAll(const Statuses& statuses) {
  bool all = true;
  for (const auto& [key, status] : statuses) {
    if (ZANFailed(status)) {
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
  if (ZANFailed(status)) return status;
  for (int i = 1; i <= instances.Length(); ++i) {
    ZANOmxJsonObject element;
    status = instances.GetJsonObject(i, element);
    if (ZANFailed(status)) return status;
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
    if (ZANFailed(reference.AddInstance(instance))) return E_FAIL;
  }
  return S_OK;
}

HRESULT ReadReferences(const ZANOmxJsonObject& root, KOVAMappingTable& table, StampKey stampKey,
                       StampKey instanceStampKey, bool logInstanceFailure) {
  if (!root.Has("References")) return E_FAIL;
  ZANOmxJsonArray references;
  HRESULT status = root.GetJsonArray("References", references);
  if (ZANFailed(status)) return status;
  for (int i = 1; i <= references.Length(); ++i) {
    ZANOmxJsonObject element;
    status = references.GetJsonObject(i, element);
    if (ZANFailed(status)) return status;
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
      if (ZANFailed(status)) {
        if (logInstanceFailure) LogFailure("PROBLEM PARSING INSTANCES");
        return status;
      }
    }
    if (ZANFailed(table.AddReference(reference))) return E_FAIL;
  }
  return S_OK;
}

HRESULT ReadV6(const ZANOmxJsonObject& root, KOVAMappingTable& table) {
  if (!root.Has("References")) return E_FAIL;
  ZANOmxJsonObject references;
  if (ZANFailed(root.GetJsonObject("References", references))) return E_FAIL;
  std::vector<ZANUnicodeString> names;
  references.GetKeys(names);
  if (names.size() > 1) return E_FAIL;
  if (names.empty()) return S_OK;
  const ZANUnicodeString& kovaId = names.front();
  ZANOmxJsonObject element;
  if (ZANFailed(references.GetJsonObject(kovaId, element))) return E_FAIL;
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
    if (ZANFailed(root.GetJsonObject("RefInstances", instances))) return E_FAIL;
    std::vector<ZANUnicodeString> instanceNames;
    instances.GetKeys(instanceNames);
    for (const ZANUnicodeString& instanceId : instanceNames) {
      ZANOmxJsonObject instanceElement;
      if (ZANFailed(instances.GetJsonObject(instanceId, instanceElement))) return E_FAIL;
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
      if (ZANFailed(reference.AddInstance(instance))) return E_FAIL;
    }
  }
  if (ZANFailed(table.AddReference(reference))) return E_FAIL;
  return S_OK;
}

}  // namespace

HRESULT Read(ZANUnicodeString text, const ZANBaseUnknown& owner, KOVAMappingTable& table) {
  KOVAMappingParser::TryDecompressMT(text);
  ZANOmxJsonObject root;
  const HRESULT loaded = root.LoadFromString(text);
  if (ZANFailed(loaded)) return loaded;
  if (root.IsEmpty() || !root.IsValidJsonObject()) {
    LogFailure("KOVA JSON EMPTY OR INVALID");
    return E_FAIL;
  }
  table.SetOwner(owner);
  if (KOVALogger::IsActive()) KOVALogger::log(root.PrettyPrint(), "Input Mapping Table JSON String");
  int version = -1;
  const HRESULT read = root.GetInteger("version", version);
  if (ZANFailed(read)) {
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

}  // namespace kova::test::plain
