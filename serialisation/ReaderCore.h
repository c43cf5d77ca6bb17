// The reference and instance readers of mapping documents of versions 7 to 12, written once for
// every way the loaded document is held (internal to the reader).
//
// A Source gives the reader the objects of an array one at a time:
//   typename Source::ArrayRef                    names an array of the document;
//   Source::Cursor(const Source&, ArrayRef)      walks its elements in order, and
//   bool Cursor::Next(HRESULT& status, Fields&)  gives the next one: false past the last; else
//       status is S_OK and the fields of the element are filled, or the status that
//       ZANOmxJsonArray::GetJsonObject gives for an element that is not an object.
// The readers behave as the getters of ZANOmxJsonObject would on the same objects.
#ifndef KOVA_SERIALISATION_READERCORE_H_
#define KOVA_SERIALISATION_READERCORE_H_

#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVAMappingInstance.h>
#include <KOVAMappingServices/KOVAMappingReference.h>
#include <KOVAMappingServices/KOVAMappingTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <cstdint>
#include <utility>

#include "model/Reserve.h"
#include "serialisation/ReaderFields.h"
#include "stamps/StampParser.h"

namespace kova::reader {

// Which key an object of a given document version must carry beyond the ids and "IsLocal".
enum class StampKey { None, IsSetKSS, KOVASynchroStamp };

inline void LogFailure(const char* message) {
  if (KOVALogger::IsActive()) KOVALogger::log(message, "");
}

// The statuses of the mandatory keys of one object, kept in the byte order of the key names: the
// order in which unvaluated keys are logged.
enum MandatoryKey { kIsLocal, kIsSetKSS, kKOVASynchroStamp, kPlexoId, kRefId, kKovaId, kMandatoryKeys };
inline constexpr const char* kMandatoryNames[kMandatoryKeys] = {"IsLocal", "IsSetKSS", "KOVASynchroStamp",
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

// The values every reference and instance of versions 7 to 12 carry.
struct ObjectValues {
  ZANUnicodeString kovaId;
  ZANUnicodeString plexoId;
  ZANUnicodeString refId;
  ZANUnicodeString kss;  // "KOVASynchroStamp" when the version demands it
  HRESULT kssStatus = ZAN_E_NOTFOUND;
  bool isLocal = false;
};

template <typename ArrayRef>
void ReadMandatory(const Fields<ArrayRef>& fields, bool isInstance, StampKey stampKey, ObjectValues& values,
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
template <typename ArrayRef>
std::int32_t ReadStamp(const Fields<ArrayRef>& fields, StampKey stampKey, ObjectValues& values,
                       ZANUnicodeString& stamp) {
  return kova::stamps::ParseStamp(
      [&](const char* key, ZANUnicodeString& value) -> HRESULT {
        if (key[0] == 'K') {
          if (stampKey == StampKey::KOVASynchroStamp) {
            if (values.kssStatus >= 0) value = std::move(values.kss);
            return values.kssStatus;
          }
          return ReadString(fields[kKOVASynchroStampField], value);
        }
        return ReadString(fields[kCEStampField], value);
      },
      [&](const char*, bool& value) { return ReadBoolean(fields[kIsSetKSSField], value); }, stamp);
}

// "CustomData" when it reads as a string, else "null".
template <typename ArrayRef>
ZANUnicodeString ReadCustomData(const Fields<ArrayRef>& fields) {
  ZANUnicodeString value;
  if (ZANFailed(ReadString(fields[kCustomDataField], value))) return ZANUnicodeString::FromValidUTF8("null");
  return value;
}

// The mandatory keys and the stamp of one object; E_FAIL when a mandatory key does not read (each
// such key logged) or the object has no stamp.
template <typename ArrayRef>
HRESULT ReadObject(const Fields<ArrayRef>& fields, bool isInstance, StampKey stampKey, ObjectValues& values,
                   ZANUnicodeString& stamp, std::int32_t& stampVersion) {
  MandatoryStatuses statuses;
  ReadMandatory(fields, isInstance, stampKey, values, statuses);
  if (!statuses.GotAll()) return E_FAIL;
  stampVersion = ReadStamp(fields, stampKey, values, stamp);
  return stampVersion < 0 ? E_FAIL : S_OK;
}

// Runs read(fields) on each element of an array field in order and stops at the first negative
// status, which it returns. An absent field gives absentStatus, a field that is not an array
// ZAN_E_TYPEMISMATCH, an element that is not an object the status the cursor gives for it.
template <typename Source, typename Read>
HRESULT ForEachObject(const Source& source, const Field<typename Source::ArrayRef>& array, HRESULT absentStatus,
                      Read&& read) {
  if (array.kind == FieldKind::Absent) return absentStatus;
  if (array.kind != FieldKind::Array) return ZAN_E_TYPEMISMATCH;
  typename Source::Cursor cursor(source, array.array);
  Fields<typename Source::ArrayRef> fields;
  HRESULT status = S_OK;
  while (cursor.Next(status, fields)) {
    if (status < 0) return status;
    status = read(fields);
    if (status < 0) return status;
  }
  return S_OK;
}

// The instance reader of versions 7 to 12, on the "Instances" field of a reference object.
template <typename Source>
HRESULT ParseInstances(const Source& source, const Field<typename Source::ArrayRef>& instances,
                       KOVAMappingReference& reference, StampKey stampKey) {
  if (instances.kind == FieldKind::Array) kova::model::ReserveInstances(reference, source.CountOf(instances.array));
  return ForEachObject(source, instances, ZAN_E_NOTFOUND, [&](const Fields<typename Source::ArrayRef>& fields) {
    ObjectValues values;
    ZANUnicodeString stamp;
    std::int32_t stampVersion = 0;
    if (ReadObject(fields, true, stampKey, values, stamp, stampVersion) < 0) return E_FAIL;
    KOVAMappingInstance instance(std::move(values.kovaId), std::move(values.plexoId), std::move(stamp),
                                 std::move(values.refId), ReadCustomData(fields), values.isLocal);
    KOVAPrivateAccess::GetPrivate(instance)->SetKSSVersion(stampVersion);
    return reference.AddInstance(std::move(instance)) < 0 ? E_FAIL : S_OK;
  });
}

// The reference reader of versions 7 to 12, on the root's "References" field: an array of
// reference objects, each with its own "Instances" array.
template <typename Source>
HRESULT ParseReferences(const Source& source, const Field<typename Source::ArrayRef>& references,
                        KOVAMappingTable& table, StampKey stampKey, StampKey instanceStampKey,
                        bool logInstanceFailure) {
  if (references.kind == FieldKind::Array) kova::model::ReserveReferences(table, source.CountOf(references.array));
  return ForEachObject(source, references, E_FAIL, [&](const Fields<typename Source::ArrayRef>& fields) {
    ObjectValues values;
    ZANUnicodeString stamp;
    std::int32_t stampVersion = 0;
    if (ReadObject(fields, false, stampKey, values, stamp, stampVersion) < 0) return E_FAIL;
    KOVAMappingReference reference(std::move(values.kovaId), std::move(values.plexoId), std::move(stamp),
                                   ReadCustomData(fields), values.isLocal);
    KOVAPrivateAccess::GetPrivate(reference)->SetKSSVersion(stampVersion);
    if (fields[kInstancesField].kind != FieldKind::Absent) {
      const HRESULT status = ParseInstances(source, fields[kInstancesField], reference, instanceStampKey);
      if (status < 0) {
        if (logInstanceFailure) LogFailure("PROBLEM PARSING INSTANCES");
        return status;
      }
    }
    return table.AddReference(reference) < 0 ? E_FAIL : S_OK;
  });
}

// The stamp keys of a version from 7 to 12, and whether an instance failure is logged.
struct VersionKeys {
  StampKey references;
  StampKey instances;
  bool logInstanceFailure;
};

inline VersionKeys KeysOfVersion(int version) noexcept {
  switch (version) {
    case 7: return {StampKey::None, StampKey::None, true};
    case 8: return {StampKey::None, StampKey::None, false};
    // Version 9 demands "IsSetKSS" of references only: its instances are read as in version 8.
    case 9: return {StampKey::IsSetKSS, StampKey::None, false};
    case 10: return {StampKey::IsSetKSS, StampKey::IsSetKSS, false};
    default: return {StampKey::KOVASynchroStamp, StampKey::KOVASynchroStamp, false};  // 11 and 12 alike
  }
}

}  // namespace kova::reader

#endif  // KOVA_SERIALISATION_READERCORE_H_
