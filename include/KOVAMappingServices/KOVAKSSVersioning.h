// KOVAKSSVersioning: the text forms of synchro stamps.
//
//   bare stamp        the stamp characters alone (base64 text)
//   versioned stamp   "V" + version ("%d") + ":" + bare stamp
//   CE-derived stamp  "V0KSS:" + base64 digest of "cestamp" + CE stamp (stands for version 0)
//
// Prefixes are recognised at the very start of the text only, and only one digit of a version
// is read (V12:abc carries version 1); GetKSSFromKSSWithVersion drops a fixed three characters to
// match, so V12:abc gives :abc.
//
// Every function is static, keeps no state and returns new texts: any thread may call them at
// once. GetStampParser and GetStampV11 only read the document object (ZANOmxJson.h says when one
// document may be read from several threads).
#ifndef KOVAMAPPINGSERVICES_KOVAKSSVERSIONING_H_
#define KOVAMAPPINGSERVICES_KOVAKSSVERSIONING_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/ZANOmxJson.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <cstdint>

class KOVA_EXPORT KOVAKSSVersioning {
 public:
  // "V" + version + ":" + stamp, unchecked (version -1 gives V-1:...).
  static ZANUnicodeString ComputeKSSWithVersion(ZANUnicodeString stamp, std::int32_t version);
  // "V0KSS:" + stamp.
  static ZANUnicodeString AddFromCESPrefix(ZANUnicodeString stamp);
  // True when the text starts with "V0KSS:".
  static bool HasFromCESPrefix(ZANUnicodeString stamp);
  // The first digit of a "V<digits>:" prefix, 0 for a "V0KSS:" prefix, -1 for none.
  static std::int32_t GetKSSVersion(ZANUnicodeString stamp);
  // The text without its first three characters when it has a "V<digits>:" prefix, without
  // "V0KSS:" when it has that prefix, else unchanged.
  static ZANUnicodeString GetKSSFromKSSWithVersion(ZANUnicodeString stamp);
  // Reads the stamp of one document object from "KOVASynchroStamp", "CEStamp" and "IsSetKSS":
  // returns its version (-1 when the object has none, stamp then untouched) and writes the bare
  // stamp into stamp.
  static std::int32_t GetStampParser(const ZANOmxJsonObject& object, ZANUnicodeString& stamp);
  // ComputeKSSWithVersion of what GetStampParser gives for the object (V-1: for no stamp).
  static ZANUnicodeString GetStampV11(const ZANOmxJsonObject& object);
};

#endif  // KOVAMAPPINGSERVICES_KOVAKSSVERSIONING_H_
