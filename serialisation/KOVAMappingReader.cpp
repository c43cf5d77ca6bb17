// Reading mapping documents of versions 6 to 12 into mapping tables.
#include <KOVAMappingServices/KOVAKSSVersioning.h>
#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <map>
#include <vector>

namespace {

using MandatoryMap = std::map<ZANUnicodeString, std::int32_t>;

void LogFailure(const char* message) {
  if (KOVALogger::IsActive()) KOVALogger::log(message, "");
}

// Which keys an object of a given document version must carry beyond the ids and "IsLocal".
enum class StampKey { None, IsSetKSS, KOVASynchroStamp };

// The keys every reference and instance of versions 7 to 12 carry, read into their outputs with
// their statuses recorded under their names.
struct ObjectFields {
  ZANUnicodeString kovaId;
  ZANUnicodeString plexoId;
  ZANUnicodeString refId;
  bool isLocal = false;
};

void ReadMandatory(const ZANOmxJsonObject& object, bool isInstance, StampKey stampKey, ObjectFields& fields,
                   MandatoryMap& statuses) {
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

}  // namespace

HRESULT KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString text, const ZANBaseUnknown& owner,
                                                   KOVAMappingTable& table) {
  // An envelope is replaced by the text it holds; any other text is parsed as it is.
  TryDecompressMT(text);
  ZANOmxJsonObject root;
  const HRESULT loaded = root.LoadFromString(text);
  if (loaded < 0) return loaded;
  if (root.IsEmpty() || !root.IsValidJsonObject()) {
    LogFailure("KOVA JSON EMPTY OR INVALID");
    return E_FAIL;
  }
  table.SetOwner(owner);
  if (KOVALogger::IsActive()) KOVALogger::log(root.PrettyPrint(), "Input Mapping Table JSON String");
  return ParseMappingTable(root, table);
}

HRESULT KOVAMappingParser::ParseMappingTable(const ZANOmxJsonObject& root, KOVAMappingTable& table) {
  int version = -1;
  const HRESULT read = root.GetInteger("version", version);
  if (read < 0) {
    LogFailure("CANNOT READ VERSION ON KOVA JSON");
    return read;
  }
  // Recorded before any check, so a refused version is still seen on the table.
  KOVAPrivateAccess::GetPrivate(table)->SetVersion(version);
  HRESULT status = E_FAIL;
  if (version <= 5) {
    LogFailure("UNSUPPORTED VERSION ( version < 6 )");
  } else if (version <= 12) {
    switch (version) {
      case 6: status = ParseRefV6(root, table); break;
      case 7: status = ParseRefV7(root, table); break;
      case 8: status = ParseRefV8(root, table); break;
      case 9: status = ParseRefV9(root, table); break;
      case 10: status = ParseRefV10(root, table); break;
      default: status = ParseRefV11(root, table); break;  // 11 and 12 are read alike
    }
  } else {
    // The words say 11 although 12 is read: documents and logs in the field carry this text.
    LogFailure("UNSUPPORTED VERSION ( version > 11 )");
  }
  if (KOVALogger::IsActive()) KOVALogger::log(KOVALogger::ToString(table), "MappingTable at the end of parsing");
  return status;
}

bool KOVAMappingParser::GotAllMandatoryAttrs(const std::map<ZANUnicodeString, std::int32_t>& statuses) {
  bool all = true;
  for (const auto& [key, status] : statuses) {
    if (status < 0) {
      if (KOVALogger::IsActive()) KOVALogger::log(key, "UNVALUATED MANDATORY FIELD");
      all = false;
    }
  }
  return all;
}

std::int32_t KOVAMappingParser::GetStamp(const ZANOmxJsonObject& object, ZANUnicodeString& stamp) {
  return KOVAKSSVersioning::GetStampParser(object, stamp);
}

namespace {

using InstanceReader = HRESULT (*)(const ZANOmxJsonObject&, KOVAMappingReference&);
using MandatoryCheck = bool (*)(const MandatoryMap&);
using StampReader = std::int32_t (*)(const ZANOmxJsonObject&, ZANUnicodeString&);

// The reference reader of versions 7 to 12: "References" is an array of reference objects, each
// with its own "Instances" array.
HRESULT ParseReferences(const ZANOmxJsonObject& root, KOVAMappingTable& table, StampKey stampKey,
                        InstanceReader readInstances, bool logInstanceFailure, MandatoryCheck gotAll,
                        StampReader getStamp) {
  if (!root.Has("References")) return E_FAIL;
  ZANOmxJsonArray references;
  HRESULT status = root.GetJsonArray("References", references);
  if (status < 0) return status;
  for (int i = 1; i <= references.Length(); ++i) {
    ZANOmxJsonObject element;
    status = references.GetJsonObject(i, element);
    if (status < 0) return status;
    ObjectFields fields;
    MandatoryMap statuses;
    ReadMandatory(element, false, stampKey, fields, statuses);
    if (!gotAll(statuses)) return E_FAIL;
    ZANUnicodeString stamp;
    const std::int32_t stampVersion = getStamp(element, stamp);
    if (stampVersion < 0) return E_FAIL;
    const ZANUnicodeString customData = element.OptString("CustomData", "null");
    KOVAMappingReference reference(fields.kovaId, fields.plexoId, stamp, customData, fields.isLocal);
    KOVAPrivateAccess::GetPrivate(reference)->SetKSSVersion(stampVersion);
    if (element.Has("Instances")) {
      status = readInstances(element, reference);
      if (status < 0) {
        if (logInstanceFailure) LogFailure("PROBLEM PARSING INSTANCES");
        return status;
      }
    }
    if (table.AddReference(reference) < 0) return E_FAIL;
  }
  return S_OK;
}

// The instance reader of versions 7 to 12.
HRESULT ParseInstances(const ZANOmxJsonObject& object, KOVAMappingReference& reference, StampKey stampKey,
                       MandatoryCheck gotAll, StampReader getStamp) {
  ZANOmxJsonArray instances;
  HRESULT status = object.GetJsonArray("Instances", instances);
  if (status < 0) return status;
  for (int i = 1; i <= instances.Length(); ++i) {
    ZANOmxJsonObject element;
    status = instances.GetJsonObject(i, element);
    if (status < 0) return status;
    ObjectFields fields;
    MandatoryMap statuses;
    ReadMandatory(element, true, stampKey, fields, statuses);
    if (!gotAll(statuses)) return E_FAIL;
    ZANUnicodeString stamp;
    const std::int32_t stampVersion = getStamp(element, stamp);
    if (stampVersion < 0) return E_FAIL;
    const ZANUnicodeString customData = element.OptString("CustomData", "null");
    KOVAMappingInstance instance(fields.kovaId, fields.plexoId, stamp, fields.refId, customData, fields.isLocal);
    KOVAPrivateAccess::GetPrivate(instance)->SetKSSVersion(stampVersion);
    if (reference.AddInstance(instance) < 0) return E_FAIL;
  }
  return S_OK;
}

}  // namespace

HRESULT KOVAMappingParser::ParseRefV7(const ZANOmxJsonObject& root, KOVAMappingTable& table) {
  return ParseReferences(root, table, StampKey::None, &ParseInstV7, true, &GotAllMandatoryAttrs, &GetStamp);
}

HRESULT KOVAMappingParser::ParseRefV8(const ZANOmxJsonObject& root, KOVAMappingTable& table) {
  return ParseReferences(root, table, StampKey::None, &ParseInstV8, false, &GotAllMandatoryAttrs, &GetStamp);
}

// Version 9 demands "IsSetKSS" of references only: its instances are read as in version 8.
HRESULT KOVAMappingParser::ParseRefV9(const ZANOmxJsonObject& root, KOVAMappingTable& table) {
  return ParseReferences(root, table, StampKey::IsSetKSS, &ParseInstV8, false, &GotAllMandatoryAttrs, &GetStamp);
}

HRESULT KOVAMappingParser::ParseRefV10(const ZANOmxJsonObject& root, KOVAMappingTable& table) {
  return ParseReferences(root, table, StampKey::IsSetKSS, &ParseInstV10, false, &GotAllMandatoryAttrs, &GetStamp);
}

HRESULT KOVAMappingParser::ParseRefV11(const ZANOmxJsonObject& root, KOVAMappingTable& table) {
  return ParseReferences(root, table, StampKey::KOVASynchroStamp, &ParseInstV11, false, &GotAllMandatoryAttrs,
                         &GetStamp);
}

HRESULT KOVAMappingParser::ParseInstV7(const ZANOmxJsonObject& object, KOVAMappingReference& reference) {
  return ParseInstances(object, reference, StampKey::None, &GotAllMandatoryAttrs, &GetStamp);
}

HRESULT KOVAMappingParser::ParseInstV8(const ZANOmxJsonObject& object, KOVAMappingReference& reference) {
  return ParseInstances(object, reference, StampKey::None, &GotAllMandatoryAttrs, &GetStamp);
}

HRESULT KOVAMappingParser::ParseInstV10(const ZANOmxJsonObject& object, KOVAMappingReference& reference) {
  return ParseInstances(object, reference, StampKey::IsSetKSS, &GotAllMandatoryAttrs, &GetStamp);
}

HRESULT KOVAMappingParser::ParseInstV11(const ZANOmxJsonObject& object, KOVAMappingReference& reference) {
  return ParseInstances(object, reference, StampKey::KOVASynchroStamp, &GotAllMandatoryAttrs, &GetStamp);
}

// Version 6: "References" is an object with at most one member, named by the reference's kOVA id;
// its instances are the members of the root's "RefInstances" object, named by their kOVA ids.
// Objects of version 6 carry neither "IsLocal" nor "CustomData".
HRESULT KOVAMappingParser::ParseRefV6(const ZANOmxJsonObject& root, KOVAMappingTable& table) {
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
  MandatoryMap statuses;
  statuses[ZANUnicodeString("PlexoId")] = element.GetString("PlexoId", plexoId);
  if (!GotAllMandatoryAttrs(statuses)) return E_FAIL;
  if (kovaId.IsEmpty()) return E_FAIL;
  ZANUnicodeString stamp;
  const std::int32_t stampVersion = GetStamp(element, stamp);
  if (stampVersion < 0) return E_FAIL;
  KOVAMappingReference reference(kovaId, plexoId, stamp, "", false);
  KOVAPrivateAccess::GetPrivate(reference)->SetKSSVersion(stampVersion);
  if (root.Has("RefInstances") && ParseRefInstV6(root, reference) < 0) return E_FAIL;
  if (table.AddReference(reference) < 0) return E_FAIL;
  return S_OK;
}

HRESULT KOVAMappingParser::ParseRefInstV6(const ZANOmxJsonObject& root, KOVAMappingReference& reference) {
  ZANOmxJsonObject instances;
  if (root.GetJsonObject("RefInstances", instances) < 0) return E_FAIL;
  std::vector<ZANUnicodeString> names;
  instances.GetKeys(names);
  for (const ZANUnicodeString& kovaId : names) {
    ZANOmxJsonObject element;
    if (instances.GetJsonObject(kovaId, element) < 0) return E_FAIL;
    ZANUnicodeString plexoId;
    ZANUnicodeString refId;
    MandatoryMap statuses;
    statuses[ZANUnicodeString("PlexoId")] = element.GetString("PlexoId", plexoId);
    statuses[ZANUnicodeString("RefId")] = element.GetString("RefId", refId);
    if (!GotAllMandatoryAttrs(statuses)) return E_FAIL;
    if (kovaId.IsEmpty()) return E_FAIL;
    ZANUnicodeString stamp;
    const std::int32_t stampVersion = GetStamp(element, stamp);
    if (stampVersion < 0) return E_FAIL;
    KOVAMappingInstance instance(kovaId, plexoId, stamp, refId, "", false);
    KOVAPrivateAccess::GetPrivate(instance)->SetKSSVersion(stampVersion);
    if (reference.AddInstance(instance) < 0) return E_FAIL;
  }
  return S_OK;
}
