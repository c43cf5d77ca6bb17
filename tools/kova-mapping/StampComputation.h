// Computing a synchro stamp from attribute values, as the stamp command and the Python package do.
#ifndef KOVA_TOOLS_KOVA_MAPPING_STAMPCOMPUTATION_H_
#define KOVA_TOOLS_KOVA_MAPPING_STAMPCOMPUTATION_H_

#include <KOVAMappingServices/ZANStatus.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <list>
#include <optional>
#include <string>

#include "Attributes.h"

namespace kova::tool {

// Whether the library computes stamps in this process: it reads "DONOTUSE_ENABLEKSSGEN" once, when
// it is loaded, so the process's environment says.
bool StampComputationEnabled();

// The message for a process where stamp computation is disabled.
inline constexpr const char* kStampComputationDisabled =
    "stamp computation is disabled: set DONOTUSE_ENABLEKSSGEN to enable it";

struct StampComputation {
  HRESULT status = S_OK;
  ZANUnicodeString stamp;           // the bare stamp, when status succeeded
  std::optional<std::string> text;  // the text the stamp service digested, when asked for

  // "error 0x80004005: refused by the stamp service" (the status's meaning for other statuses).
  std::string ErrorText() const;
};

// The stamp of the attributes with ComputeKOVASynchroStamp: of the map itself when names is null,
// otherwise of an object of a reference type carrying the attributes, for the named ones (each
// must be in the map). With wantText the stamp service's lines are taken on this thread, and the
// last one, the text it digests, is kept. Thread-safe for distinct arguments.
StampComputation ComputeStamp(const AttributeMap& attributes, const std::list<ZANUnicodeString>* names, bool wantText);

}  // namespace kova::tool

#endif  // KOVA_TOOLS_KOVA_MAPPING_STAMPCOMPUTATION_H_
