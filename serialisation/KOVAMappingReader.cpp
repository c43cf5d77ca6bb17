// Reading mapping documents of versions 6 to 12 into mapping tables.
#include <KOVAMappingServices/KOVAKSSVersioning.h>
#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <algorithm>
#include <limits>
#include <map>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/JsonAccess.h"
#include "platform/JsonNode.h"
#include "stamps/StampParser.h"

namespace {

using kova::json::Kind;
using kova::json::Member;
using kova::json::Node;
using kova::json::Value;

using MandatoryMap = std::map<ZANUnicodeString, std::int32_t>;

void LogFailure(const char* message) {
  if (KOVALogger::IsActive()) KOVALogger::log(message, "");
}

// Which keys an object of a given document version must carry beyond the ids and "IsLocal".
enum class StampKey { None, IsSetKSS, KOVASynchroStamp };

// The keys every reference and instance of versions 7 to 12 carry, read into their outputs.
struct ObjectFields {
  ZANUnicodeString kovaId;
  ZANUnicodeString plexoId;
  ZANUnicodeString refId;
  ZANUnicodeString kss;  // "KOVASynchroStamp" when the version demands it
  HRESULT kssStatus = ZAN_E_NOTFOUND;
  bool isLocal = false;
};

// The statuses of the mandatory keys of one object, kept in the byte order of the key names: the
// order in which unvaluated keys are logged.
enum MandatoryKey { kIsLocal, kIsSetKSS, kKOVASynchroStamp, kPlexoId, kRefId, kKovaId, kMandatoryKeys };
constexpr const char* kMandatoryNames[kMandatoryKeys] = {"IsLocal", "IsSetKSS", "KOVASynchroStamp",
                                                         "PlexoId", "RefId",    "kOVAId"};

struct MandatoryStatuses {
  std::int32_t status[kMandatoryKeys] = {};
  bool read[kMandatoryKeys] = {};

  void Set(MandatoryKey key, std::int32_t value) {
    status[key] = value;
    read[key] = true;
  }

  // Logs every key read with a failed status, in key order; true when there is none.
  bool GotAll() const {
    bool all = true;
    for (int key = 0; key < kMandatoryKeys; ++key) {
      if (read[key] && status[key] < 0) {
        if (KOVALogger::IsActive()) KOVALogger::log(kMandatoryNames[key], "UNVALUATED MANDATORY FIELD");
        all = false;
      }
    }
    return all;
  }
};

// The value of key in an object node, or null: what ZANOmxJsonObject's getters look up.
const Value* Lookup(const Node& object, std::string_view key) {
  const Member* m = object.Find(key);
  return m != nullptr ? &m->value : nullptr;
}

void ReadMandatory(const Node& object, bool isInstance, StampKey stampKey, ObjectFields& fields,
                   MandatoryStatuses& statuses) {
  statuses.Set(kKovaId, kova::json::ReadString(Lookup(object, "kOVAId"), fields.kovaId));
  statuses.Set(kPlexoId, kova::json::ReadString(Lookup(object, "PlexoId"), fields.plexoId));
  if (isInstance) statuses.Set(kRefId, kova::json::ReadString(Lookup(object, "RefId"), fields.refId));
  statuses.Set(kIsLocal, kova::json::ReadBoolean(Lookup(object, "IsLocal"), fields.isLocal));
  if (stampKey == StampKey::IsSetKSS) {
    bool isSet = false;
    statuses.Set(kIsSetKSS, kova::json::ReadBoolean(Lookup(object, "IsSetKSS"), isSet));
  } else if (stampKey == StampKey::KOVASynchroStamp) {
    fields.kssStatus = kova::json::ReadString(Lookup(object, "KOVASynchroStamp"), fields.kss);
    statuses.Set(kKOVASynchroStamp, fields.kssStatus);
  }
}

// The stamp of an object node, as KOVAKSSVersioning::GetStampParser gives it for the same object;
// "KOVASynchroStamp" is taken from fields when it was already read.
std::int32_t ReadStamp(const Node& object, StampKey stampKey, ObjectFields& fields, ZANUnicodeString& stamp) {
  return kova::stamps::ParseStamp(
      [&](const char* key, ZANUnicodeString& value) -> HRESULT {
        if (stampKey == StampKey::KOVASynchroStamp && key[0] == 'K') {
          if (fields.kssStatus >= 0) value = std::move(fields.kss);
          return fields.kssStatus;
        }
        return kova::json::ReadString(Lookup(object, key), value);
      },
      [&](const char* key, bool& value) { return kova::json::ReadBoolean(Lookup(object, key), value); }, stamp);
}

// "CustomData" when it reads as a string, else "null".
ZANUnicodeString ReadCustomData(const Node& object) {
  ZANUnicodeString value;
  if (ZANFailed(kova::json::ReadString(Lookup(object, "CustomData"), value))) {
    return ZANUnicodeString::FromValidUTF8("null");
  }
  return value;
}

}  // namespace

HRESULT KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString text, const ZANBaseUnknown& owner,
                                                   KOVAMappingTable& table) {
  // An envelope is replaced by the text it holds; any other text is parsed as it is.
  TryDecompressMT(text);
  ZANOmxJsonObject root;
  const HRESULT loaded = root.LoadFromString(text);
  // The tree holds copies of every text: the document's own copy is no longer needed.
  text = ZANUnicodeString();
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

// The element at position i (from 0) of an array node as an object node, or the status
// ZANOmxJsonArray::GetJsonObject gives for it.
HRESULT ElementObject(const Node& array, std::uint32_t i, const Node*& element) {
  const Value& v = array.elements[i];
  if (v.kind != Kind::Object) return ZAN_E_TYPEMISMATCH;
  element = v.node;
  return S_OK;
}

// The number of elements that ZANOmxJsonArray::Length gives.
std::uint32_t Length(const Node& array) {
  return std::min<std::uint32_t>(array.size, static_cast<std::uint32_t>(std::numeric_limits<int>::max()));
}

// The instance reader of versions 7 to 12, on the object holding "Instances".
HRESULT ParseInstances(const Node& object, KOVAMappingReference& reference, StampKey stampKey) {
  const Value* value = Lookup(object, "Instances");
  if (value == nullptr) return ZAN_E_NOTFOUND;
  if (value->kind != Kind::Array) return ZAN_E_TYPEMISMATCH;
  const Node& instances = *value->node;
  const std::uint32_t count = Length(instances);
  for (std::uint32_t i = 0; i < count; ++i) {
    const Node* element = nullptr;
    const HRESULT status = ElementObject(instances, i, element);
    if (status < 0) return status;
    ObjectFields fields;
    MandatoryStatuses statuses;
    ReadMandatory(*element, true, stampKey, fields, statuses);
    if (!statuses.GotAll()) return E_FAIL;
    ZANUnicodeString stamp;
    const std::int32_t stampVersion = ReadStamp(*element, stampKey, fields, stamp);
    if (stampVersion < 0) return E_FAIL;
    KOVAMappingInstance instance(std::move(fields.kovaId), std::move(fields.plexoId), std::move(stamp),
                                 std::move(fields.refId), ReadCustomData(*element), fields.isLocal);
    KOVAPrivateAccess::GetPrivate(instance)->SetKSSVersion(stampVersion);
    if (reference.AddInstance(std::move(instance)) < 0) return E_FAIL;
  }
  return S_OK;
}

// The reference reader of versions 7 to 12: "References" is an array of reference objects, each
// with its own "Instances" array.
HRESULT ParseReferences(const ZANOmxJsonObject& root, KOVAMappingTable& table, StampKey stampKey,
                        StampKey instanceStampKey, bool logInstanceFailure) {
  const std::shared_ptr<Node>& rootNode = Node::Of(root);
  const Value* value = rootNode ? Lookup(*rootNode, "References") : nullptr;
  if (value == nullptr) return E_FAIL;
  if (value->kind != Kind::Array) return ZAN_E_TYPEMISMATCH;
  const Node& references = *value->node;
  const std::uint32_t count = Length(references);
  for (std::uint32_t i = 0; i < count; ++i) {
    const Node* element = nullptr;
    HRESULT status = ElementObject(references, i, element);
    if (status < 0) return status;
    ObjectFields fields;
    MandatoryStatuses statuses;
    ReadMandatory(*element, false, stampKey, fields, statuses);
    if (!statuses.GotAll()) return E_FAIL;
    ZANUnicodeString stamp;
    const std::int32_t stampVersion = ReadStamp(*element, stampKey, fields, stamp);
    if (stampVersion < 0) return E_FAIL;
    KOVAMappingReference reference(std::move(fields.kovaId), std::move(fields.plexoId), std::move(stamp),
                                   ReadCustomData(*element), fields.isLocal);
    KOVAPrivateAccess::GetPrivate(reference)->SetKSSVersion(stampVersion);
    if (Lookup(*element, "Instances") != nullptr) {
      status = ParseInstances(*element, reference, instanceStampKey);
      if (status < 0) {
        if (logInstanceFailure) LogFailure("PROBLEM PARSING INSTANCES");
        return status;
      }
    }
    if (table.AddReference(reference) < 0) return E_FAIL;
  }
  return S_OK;
}

// The instance reader on a handle, for the instance readers of each version.
HRESULT ParseInstancesOf(const ZANOmxJsonObject& object, KOVAMappingReference& reference, StampKey stampKey) {
  const std::shared_ptr<Node>& node = Node::Of(object);
  if (!node) return ZAN_E_NOTFOUND;
  return ParseInstances(*node, reference, stampKey);
}

}  // namespace

HRESULT KOVAMappingParser::ParseRefV7(const ZANOmxJsonObject& root, KOVAMappingTable& table) {
  return ParseReferences(root, table, StampKey::None, StampKey::None, true);
}

HRESULT KOVAMappingParser::ParseRefV8(const ZANOmxJsonObject& root, KOVAMappingTable& table) {
  return ParseReferences(root, table, StampKey::None, StampKey::None, false);
}

// Version 9 demands "IsSetKSS" of references only: its instances are read as in version 8.
HRESULT KOVAMappingParser::ParseRefV9(const ZANOmxJsonObject& root, KOVAMappingTable& table) {
  return ParseReferences(root, table, StampKey::IsSetKSS, StampKey::None, false);
}

HRESULT KOVAMappingParser::ParseRefV10(const ZANOmxJsonObject& root, KOVAMappingTable& table) {
  return ParseReferences(root, table, StampKey::IsSetKSS, StampKey::IsSetKSS, false);
}

HRESULT KOVAMappingParser::ParseRefV11(const ZANOmxJsonObject& root, KOVAMappingTable& table) {
  return ParseReferences(root, table, StampKey::KOVASynchroStamp, StampKey::KOVASynchroStamp, false);
}

HRESULT KOVAMappingParser::ParseInstV7(const ZANOmxJsonObject& object, KOVAMappingReference& reference) {
  return ParseInstancesOf(object, reference, StampKey::None);
}

HRESULT KOVAMappingParser::ParseInstV8(const ZANOmxJsonObject& object, KOVAMappingReference& reference) {
  return ParseInstancesOf(object, reference, StampKey::None);
}

HRESULT KOVAMappingParser::ParseInstV10(const ZANOmxJsonObject& object, KOVAMappingReference& reference) {
  return ParseInstancesOf(object, reference, StampKey::IsSetKSS);
}

HRESULT KOVAMappingParser::ParseInstV11(const ZANOmxJsonObject& object, KOVAMappingReference& reference) {
  return ParseInstancesOf(object, reference, StampKey::KOVASynchroStamp);
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
