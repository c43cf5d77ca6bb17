#include "serialisation/ReaderCore.h"

#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVAMappingInstance.h>
#include <KOVAMappingServices/KOVAMappingReference.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <cstdint>
#include <string_view>
#include <utility>

#include "model/Reserve.h"
#include "platform/ParsedJson.h"
#include "serialisation/ReaderFields.h"
#include "stamps/StampParser.h"

namespace kova::reader {

namespace {

// Which key an object of a given document version must carry beyond the ids and "IsLocal".
enum class StampKey { None, IsSetKSS, KOVASynchroStamp };

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

  // Logs every key read with a failed status, in key order (all of them, not only the first);
  // true when there is none.
  bool GotAll() const {
    bool all = true;
    for (int key = 0; key < kMandatoryKeys; ++key) {
      if (read[key] && ZANFailed(status[key])) {
        if (KOVALogger::IsActive()) KOVALogger::log(kMandatoryNames[key], "UNVALUATED MANDATORY FIELD");
        all = false;
      }
    }
    return all;
  }
};

// The values every reference and instance of versions 7 to 12 carry.
struct ObjectValues {
  ZANUnicodeString kovaId;
  ZANUnicodeString plexoId;
  ZANUnicodeString refId;
  ZANUnicodeString kss;  // "KOVASynchroStamp" when the version demands it
  HRESULT kssStatus = ZAN_E_NOTFOUND;
  bool isLocal = false;
};

void ReadMandatory(const Fields& fields, bool isInstance, StampKey stampKey, ObjectValues& values,
                   MandatoryStatuses& statuses) {
  statuses.Set(kKovaId, ReadString(fields[kKovaIdField], values.kovaId));
  statuses.Set(kPlexoId, ReadString(fields[kPlexoIdField], values.plexoId));
  if (isInstance) statuses.Set(kRefId, ReadString(fields[kRefIdField], values.refId));
  statuses.Set(kIsLocal, ReadBoolean(fields[kIsLocalField], values.isLocal));
  if (stampKey == StampKey::IsSetKSS) {
    bool isSet = false;
    statuses.Set(kIsSetKSS, ReadBoolean(fields[kIsSetKSSField], isSet));
  } else if (stampKey == StampKey::KOVASynchroStamp) {
    values.kssStatus = ReadString(fields[kKOVASynchroStampField], values.kss);
    statuses.Set(kKOVASynchroStamp, values.kssStatus);
  }
}

// The stamp of an object, as KOVAKSSVersioning::GetStampParser gives it for the same object;
// "KOVASynchroStamp" is taken from values when it was already read.
std::int32_t ReadStamp(const Fields& fields, StampKey stampKey, ObjectValues& values, ZANUnicodeString& stamp) {
  return kova::stamps::ParseStamp(
      [&](const char* key, ZANUnicodeString& value) -> HRESULT {
        if (key[0] == 'K') {
          if (stampKey == StampKey::KOVASynchroStamp) {
            if (ZANSucceeded(values.kssStatus)) value = std::move(values.kss);
            return values.kssStatus;
          }
          return ReadString(fields[kKOVASynchroStampField], value);
        }
        return ReadString(fields[kCEStampField], value);
      },
      [&](const char*, bool& value) { return ReadBoolean(fields[kIsSetKSSField], value); }, stamp);
}

// "CustomData" when it reads as a string, else "null".
ZANUnicodeString ReadCustomData(const Fields& fields) {
  ZANUnicodeString value;
  if (ZANFailed(ReadString(fields[kCustomDataField], value))) return ZANUnicodeString::FromValidUTF8("null");
  return value;
}

// The mandatory keys and the stamp of one object; E_FAIL when a mandatory key does not read (each
// such key logged) or the object has no stamp.
HRESULT ReadObject(const Fields& fields, bool isInstance, StampKey stampKey, ObjectValues& values,
                   ZANUnicodeString& stamp, std::int32_t& stampVersion) {
  MandatoryStatuses statuses;
  ReadMandatory(fields, isInstance, stampKey, values, statuses);
  if (!statuses.GotAll()) return E_FAIL;
  stampVersion = ReadStamp(fields, stampKey, values, stamp);
  return stampVersion < 0 ? E_FAIL : S_OK;
}

// Runs read(fields) on each element of an array field in order and stops at the first failed
// status, which it returns. An absent field gives absentStatus, a field that is not an array
// ZAN_E_TYPEMISMATCH, an element that is not an object the status the cursor gives for it.
template <typename Read>
HRESULT ForEachObject(const Field& array, HRESULT absentStatus, Read&& read) {
  if (array.kind == FieldKind::Absent) return absentStatus;
  if (array.kind != FieldKind::Array) return ZAN_E_TYPEMISMATCH;
  ObjectCursor cursor(array.array);
  Fields fields;
  HRESULT status = S_OK;
  while (cursor.Next(status, fields)) {
    if (ZANFailed(status)) return status;
    status = read(fields);
    if (ZANFailed(status)) return status;
  }
  return S_OK;
}

// The instance reader of versions 7 to 12, on the "Instances" field of a reference object.
HRESULT ParseInstances(const Field& instances, KOVAMappingReference& reference, StampKey stampKey) {
  if (instances.kind == FieldKind::Array) kova::model::ReserveInstances(reference, instances.array.size());
  return ForEachObject(instances, ZAN_E_NOTFOUND, [&](const Fields& fields) {
    ObjectValues values;
    ZANUnicodeString stamp;
    std::int32_t stampVersion = 0;
    if (ZANFailed(ReadObject(fields, true, stampKey, values, stamp, stampVersion))) return E_FAIL;
    KOVAMappingInstance instance(std::move(values.kovaId), std::move(values.plexoId), std::move(stamp),
                                 std::move(values.refId), ReadCustomData(fields), values.isLocal);
    KOVAPrivateAccess::GetPrivate(instance)->SetKSSVersion(stampVersion);
    return ZANFailed(reference.AddInstance(instance)) ? E_FAIL : S_OK;
  });
}

// The stamp keys of a version from 7 to 12, and whether an instance failure is logged.
struct VersionKeys {
  StampKey references;
  StampKey instances;
  bool logInstanceFailure;
};

VersionKeys KeysOfVersion(int version) noexcept {
  switch (version) {
    case 7: return {StampKey::None, StampKey::None, true};
    case 8: return {StampKey::None, StampKey::None, false};
    // Version 9 demands "IsSetKSS" of references only: its instances are read as in version 8.
    case 9: return {StampKey::IsSetKSS, StampKey::None, false};
    case 10: return {StampKey::IsSetKSS, StampKey::IsSetKSS, false};
    default: return {StampKey::KOVASynchroStamp, StampKey::KOVASynchroStamp, false};  // 11 and 12 alike
  }
}

// The reference reader of versions 7 to 12, on the root's "References" field: an array of
// reference objects, each with its own "Instances" array.
HRESULT ParseReferences(const Field& references, KOVAMappingTable& table, int version) {
  const VersionKeys keys = KeysOfVersion(version);
  if (references.kind == FieldKind::Array) kova::model::ReserveReferences(table, references.array.size());
  return ForEachObject(references, E_FAIL, [&](const Fields& fields) {
    ObjectValues values;
    ZANUnicodeString stamp;
    std::int32_t stampVersion = 0;
    if (ZANFailed(ReadObject(fields, false, keys.references, values, stamp, stampVersion))) return E_FAIL;
    KOVAMappingReference reference(std::move(values.kovaId), std::move(values.plexoId), std::move(stamp),
                                   ReadCustomData(fields), values.isLocal);
    KOVAPrivateAccess::GetPrivate(reference)->SetKSSVersion(stampVersion);
    if (fields[kInstancesField].kind != FieldKind::Absent) {
      const HRESULT status = ParseInstances(fields[kInstancesField], reference, keys.instances);
      if (ZANFailed(status)) {
        if (keys.logInstanceFailure) LogFailure("PROBLEM PARSING INSTANCES");
        return status;
      }
    }
    return ZANFailed(table.AddReference(reference)) ? E_FAIL : S_OK;
  });
}

// One version 6 object, named by its kOVA id: its "PlexoId" (and "RefId" for an instance) and its
// stamp. E_FAIL when a mandatory key does not read, the name is empty, or there is no stamp.
HRESULT ReadVersion6Object(std::string_view name, simdjson::dom::element value, bool isInstance, ObjectValues& values,
                           ZANUnicodeString& stamp, std::int32_t& stampVersion) {
  const Field object = FieldOf(value);
  if (object.kind != FieldKind::Object) return E_FAIL;
  Fields fields;
  FieldsOf(object.object, fields);
  MandatoryStatuses statuses;
  statuses.Set(kPlexoId, ReadString(fields[kPlexoIdField], values.plexoId));
  if (isInstance) statuses.Set(kRefId, ReadString(fields[kRefIdField], values.refId));
  if (!statuses.GotAll() || name.empty()) return E_FAIL;
  values.kovaId = ZANUnicodeString::FromValidUTF8(name);
  stampVersion = ReadStamp(fields, StampKey::None, values, stamp);
  return stampVersion < 0 ? E_FAIL : S_OK;
}

// Version 6: "References" is an object with at most one member, named by the reference's kOVA id;
// its instances are the members of the root's "RefInstances" object, named by their kOVA ids.
// Objects of version 6 carry neither "IsLocal" nor "CustomData".
HRESULT ParseVersion6(const Field& references, const Field& refInstances, KOVAMappingTable& table) {
  if (references.kind != FieldKind::Object) return E_FAIL;
  std::string_view name;
  simdjson::dom::element value;
  int names = 0;
  kova::json::ForEachDistinctMember(references.object, [&](std::string_view key, simdjson::dom::element member) {
    if (++names == 1) {
      name = key;
      value = member;
    }
  });
  if (names > 1) return E_FAIL;
  if (names == 0) return S_OK;
  ObjectValues values;
  ZANUnicodeString stamp;
  std::int32_t stampVersion = 0;
  if (ZANFailed(ReadVersion6Object(name, value, false, values, stamp, stampVersion))) return E_FAIL;
  KOVAMappingReference reference(std::move(values.kovaId), std::move(values.plexoId), std::move(stamp),
                                 ZANUnicodeString(), false);
  KOVAPrivateAccess::GetPrivate(reference)->SetKSSVersion(stampVersion);
  if (refInstances.kind != FieldKind::Absent) {
    if (refInstances.kind != FieldKind::Object) return E_FAIL;
    HRESULT status = S_OK;
    kova::json::ForEachDistinctMember(refInstances.object, [&](std::string_view key, simdjson::dom::element member) {
      if (ZANFailed(status)) return;
      ObjectValues instanceValues;
      ZANUnicodeString instanceStamp;
      std::int32_t instanceStampVersion = 0;
      status = ReadVersion6Object(key, member, true, instanceValues, instanceStamp, instanceStampVersion);
      if (ZANFailed(status)) return;
      KOVAMappingInstance instance(std::move(instanceValues.kovaId), std::move(instanceValues.plexoId),
                                   std::move(instanceStamp), std::move(instanceValues.refId), ZANUnicodeString(),
                                   false);
      KOVAPrivateAccess::GetPrivate(instance)->SetKSSVersion(instanceStampVersion);
      if (ZANFailed(reference.AddInstance(instance))) status = E_FAIL;
    });
    if (ZANFailed(status)) return E_FAIL;
  }
  return ZANFailed(table.AddReference(reference)) ? E_FAIL : S_OK;
}

}  // namespace

void LogFailure(const char* message) {
  if (KOVALogger::IsActive()) KOVALogger::log(message, "");
}

HRESULT ReadReferences(simdjson::dom::object root, int version, KOVAMappingTable& table) {
  Field references;
  Field refInstances;
  for (const simdjson::dom::key_value_pair member : root) {
    if (member.key == "References") {
      references = FieldOf(member.value);
    } else if (member.key == "RefInstances") {
      refInstances = FieldOf(member.value);
    }
  }
  if (version == 6) return ParseVersion6(references, refInstances, table);
  return ParseReferences(references, table, version);
}

}  // namespace kova::reader
