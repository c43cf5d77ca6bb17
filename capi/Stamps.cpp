// Stamp texts: version prefixes, the CE-derived form.
#include <KOVAMappingServices/KOVAKSSVersioning.h>
#include <KOVAMappingServices/KOVASynchroStampServices.h>
#include <KOVAMappingServices/kova_mapping.h>

#include <utility>

#include "Boundary.h"
#include "Text.h"

using kova::capi::CallReasons;
using kova::capi::Failure;
using kova::capi::Required;
using kova::capi::Run;
using kova::capi::TextIn;
using kova::capi::TextOut;

namespace {

// A stamp text made from the stamp argument by transform.
template <class Transform>
int32_t Rewrite(const char* function, const char* stamp, size_t length, char** out, size_t* out_length,
                Transform transform) {
  return Run(function, [&](Failure&) -> int32_t {
    Required(out, "out");
    const ZANUnicodeString result = transform(TextIn(stamp, length, "stamp"));
    TextOut(result.View(), out, out_length);
    return KOVA_S_OK;
  });
}

}  // namespace

extern "C" {

int32_t kova_stamp_with_version(const char* stamp, size_t length, int32_t version, char** out, size_t* out_length) {
  return Rewrite("kova_stamp_with_version", stamp, length, out, out_length, [version](ZANUnicodeString text) {
    return KOVAKSSVersioning::ComputeKSSWithVersion(std::move(text), version);
  });
}

int32_t kova_stamp_without_version(const char* stamp, size_t length, char** out, size_t* out_length) {
  return Rewrite("kova_stamp_without_version", stamp, length, out, out_length,
                 [](ZANUnicodeString text) { return KOVAKSSVersioning::GetKSSFromKSSWithVersion(std::move(text)); });
}

int32_t kova_stamp_add_ce_prefix(const char* stamp, size_t length, char** out, size_t* out_length) {
  return Rewrite("kova_stamp_add_ce_prefix", stamp, length, out, out_length,
                 [](ZANUnicodeString text) { return KOVAKSSVersioning::AddFromCESPrefix(std::move(text)); });
}

int32_t kova_stamp_version(const char* stamp, size_t length) {
  if (stamp == nullptr) return -1;
  ZANUnicodeString text;
  if (!kova::capi::TryTextIn(stamp, length, text)) return -1;
  try {
    return KOVAKSSVersioning::GetKSSVersion(std::move(text));
  } catch (...) {
    return -1;
  }
}

int kova_stamp_has_ce_prefix(const char* stamp, size_t length) {
  if (stamp == nullptr) return 0;
  ZANUnicodeString text;
  if (!kova::capi::TryTextIn(stamp, length, text)) return 0;
  try {
    return KOVAKSSVersioning::HasFromCESPrefix(std::move(text)) ? 1 : 0;
  } catch (...) {
    return 0;
  }
}

int32_t kova_stamp_from_ce(const char* ce_stamp, size_t length, char** out, size_t* out_length) {
  return Run("kova_stamp_from_ce", [&](Failure& failure) -> int32_t {
    Required(out, "out");
    ZANUnicodeString ce = TextIn(ce_stamp, length, "ce_stamp");
    CallReasons reasons;
    ZANUnicodeString stamp;
    const HRESULT status = KOVASynchroStampServices::GetKSSFromCES(std::move(ce), stamp);
    if (ZANFailed(status)) {
      failure.Reasons(reasons.Reasons());
      failure.Explain("the CE stamp could not be digested");
      return status;
    }
    TextOut(stamp.View(), out, out_length);
    return status;
  });
}

}  // extern "C"
