// KOVASynchroStampServices: synchro stamps derived from CE stamps (and, with the knowledge
// engine, computed from attribute values).
//
// Thread safety: the services keep no state between calls (the digest context is per thread):
// they may be called from several threads at once. They only read the objects and parameters they
// are given (ZANKnwParms.h, ZANKnwObjects.h).
//
// Ownership: texts, maps and name lists are taken by value; the stamp is written into the caller's
// string. Failure: a failing status leaves the output untouched; the exceptions raised are stated
// on each call.
#ifndef KOVAMAPPINGSERVICES_KOVASYNCHROSTAMPSERVICES_H_
#define KOVAMAPPINGSERVICES_KOVASYNCHROSTAMPSERVICES_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/ZANComponentHandles.h>
#include <KOVAMappingServices/ZANKnwParms.h>
#include <KOVAMappingServices/ZANStatus.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <list>
#include <map>

namespace kova::stamps {
struct StampComputeAccess;
}  // namespace kova::stamps

class KOVA_EXPORT KOVASynchroStampServices {
 public:
  KOVASynchroStampServices() = default;
  ~KOVASynchroStampServices() = default;
  KOVASynchroStampServices(const KOVASynchroStampServices&) = default;
  KOVASynchroStampServices& operator=(const KOVASynchroStampServices&) = default;

  // out = "V0KSS:" + base64 of the SHA-256 digest of "cestamp" + ceStamp. The digest covers as
  // many leading UTF-8 bytes as the text has characters. A failing digest or base64 status is
  // returned as it is, out untouched.
  static HRESULT GetKSSFromCES(ZANUnicodeString ceStamp, ZANUnicodeString& out);

 private:
  static HRESULT GetKSSFromCESParseOnly(ZANUnicodeString ceStamp, ZANUnicodeString& out);

  // --- Stamps computed from attribute values --------------------------------------------------
  // Computation is allowed only when "DONOTUSE_ENABLEKSSGEN" was in the environment when the
  // library was loaded (any value); otherwise both forms return E_FAIL at once, log nothing and
  // leave stamp untouched.
  //
  // The stamp text is, for each attribute in ascending name order, the name followed by ":SET:"
  // and the value text when its parameter is set, or by ":UNSET:" when it is not; the pieces run
  // together. The stamp is the base64 SHA-256 digest of the stamp text, with no prefix.
 public:
  // The stamp of the named attributes of a platform object. The object must be an instance: a
  // null handle or a component that is not an instance raises ZANNullVarError. E_FAIL for an
  // instance without a type and for instances of "GRDInstance" or "GRDRepInstance" (or kinds of
  // them). Names are sorted (duplicates kept); names the object does not have are skipped by the
  // attribute service and the remaining values then pair with the names by position. An object
  // that has no attributes to read gives the stamp of the empty text.
  static HRESULT ComputeKOVASynchroStamp(const ZANBaseUnknown_var& object, std::list<ZANUnicodeString> names,
                                         ZANUnicodeString& stamp);
  // The stamp of a map of attribute values. E_FAIL, stamp untouched, when a parameter handle is
  // null (with the logger active, the log line of that entry raises ZANNullVarError first).
  static HRESULT ComputeKOVASynchroStamp(std::map<ZANUnicodeString, ZANIKnwParm_var> attributes,
                                         ZANUnicodeString& stamp);

 private:
  friend struct kova::stamps::StampComputeAccess;

  // Appends the stamp text of the named attributes of object to text. False, text unchanged, when
  // the object is not a knowledge object or its attributes cannot be read.
  static bool BuildAttrStamp(const ZANBaseUnknown_var& object, std::list<ZANUnicodeString> names,
                             ZANUnicodeString& text);
  // prefix followed by one stamp-text piece for parm (":SET:" and its value text, or ":UNSET:");
  // n is passed on to the value text. A null parm raises ZANNullVarError.
  static ZANUnicodeString AddToStamp(const ZANUnicodeString& prefix, const ZANIKnwParm_var& parm, int n);
  // stamp = base64 of the digest of text. The digest covers as many leading UTF-8 bytes as the
  // text has characters. A failing digest or base64 status is returned as it is, stamp untouched.
  static HRESULT EncodeKSS(ZANUnicodeString text, ZANUnicodeString& stamp);
};

#endif  // KOVAMAPPINGSERVICES_KOVASYNCHROSTAMPSERVICES_H_
