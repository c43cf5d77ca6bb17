// Reach into the private stamp members of KOVASynchroStampServices (internal): the piece, the
// attribute text and the encoding, for the library's own tests.
#ifndef KOVA_STAMPS_STAMPCOMPUTEACCESS_H_
#define KOVA_STAMPS_STAMPCOMPUTEACCESS_H_

#include <KOVAMappingServices/KOVASynchroStampServices.h>

#include <list>

namespace kova::stamps {

struct StampComputeAccess {
  static ZANUnicodeString AddToStamp(const ZANUnicodeString& prefix, const ZANIKnwParm_var& parm, int n) {
    return KOVASynchroStampServices::AddToStamp(prefix, parm, n);
  }
  static bool BuildAttrStamp(const ZANBaseUnknown_var& object, std::list<ZANUnicodeString> names,
                             ZANUnicodeString& text) {
    return KOVASynchroStampServices::BuildAttrStamp(object, std::move(names), text);
  }
  static HRESULT EncodeKSS(ZANUnicodeString text, ZANUnicodeString& stamp) {
    return KOVASynchroStampServices::EncodeKSS(std::move(text), stamp);
  }
};

}  // namespace kova::stamps

#endif  // KOVA_STAMPS_STAMPCOMPUTEACCESS_H_
