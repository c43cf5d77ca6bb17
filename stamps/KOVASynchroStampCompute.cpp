// Synchro stamps computed from attribute values: the stamp text of a set of attributes and its
// base64 digest.
#include <KOVAMappingServices/KOVASynchroStampServices.h>

#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/QORSysServices.h>
#include <KOVAMappingServices/ZANEnvironment.h>
#include <KOVAMappingServices/ZANKnwLists.h>
#include <KOVAMappingServices/ZANKnwObjects.h>
#include <KOVAMappingServices/ZANKnwTypes.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>

#include <openssl/evp.h>

#include "platform/StampDigest.h"
#include "stamps/ParmValueToString.h"

using kova::stamps::AppendParmValueText;
using kova::stamps::ParmValueToString;

namespace {

// Whether stamps may be computed: fixed once, when the library is loaded.
const bool kStampComputationEnabled = ZANGetEnv("DONOTUSE_ENABLEKSSGEN").has_value();

const ZANUnicodeString kSet(":SET:");
const ZANUnicodeString kUnset(":UNSET:");
const ZANUnicodeString kLogContext("KOVASynchroStampServices");
const ZANUnicodeString kEnteringFromAttributes("Entering ComputeKOVASynchroStamp from attributes");
const ZANUnicodeString kEnteringFromMap("Entering ComputeKOVASynchroStamp from Map");
const ZANUnicodeString kLogSeparator(" - ");
const ZANUnicodeString kInstanceTypeName("GRDInstance");
const ZANUnicodeString kRepInstanceTypeName("GRDRepInstance");

void Log(const ZANUnicodeString& message) {
  if (KOVALogger::IsActive()) KOVALogger::log(message, kLogContext);
}

// One stamp-text piece: name, then ":SET:" and the value text, or ":UNSET:". A null parm raises
// ZANNullVarError.
ZANUnicodeString Piece(const ZANUnicodeString& name, const ZANIKnwParm_var& parm, int n) {
  ZANUnicodeString piece = name;
  if (parm->IsSet() != 0) {
    piece += kSet;
    piece += ParmValueToString(parm, n);
  } else {
    piece += kUnset;
  }
  return piece;
}

// Piece appended to text in place.
void AppendPiece(std::string& text, const ZANUnicodeString& name, const ZANIKnwParm_var& parm) {
  text.append(name.View());
  if (parm->IsSet() != 0) {
    text.append(kSet.View());
    AppendParmValueText(text, parm);
  } else {
    text.append(kUnset.View());
  }
}

// The type dictionary, obtained at the first call and kept for the life of the process.
const ZANITypeDictionary_var& TypeDictionary() {
  static const ZANITypeDictionary_var dictionary = ZANGlobalFunctions::GetTypeDictionary();
  return dictionary;
}

// Whether stamps are refused for objects of type: those of the platform's instance types (a kind
// of one of them), and any object when those types cannot be found.
bool IsRefusedType(const ZANIType_var& type, const ZANITypeDictionary_var& dictionary,
                   const ZANUnicodeString& refusedName) {
  ZANIType_var refused;
  if (ZANFailed(dictionary->FindType(refusedName, refused)) || !refused) return true;
  return type->IsaKindOf(refused);
}

}  // namespace

HRESULT KOVASynchroStampServices::ComputeKOVASynchroStamp(const ZANBaseUnknown_var& object,
                                                          std::list<ZANUnicodeString> names, ZANUnicodeString& stamp) {
  if (!kStampComputationEnabled) return E_FAIL;
  Log(kEnteringFromAttributes);

  // Only instances have stamps; anything else is a caller error that the handle reports.
  const ZANIInstance_var instance(object);
  const ZANIType_var type = instance->GetType();
  if (!type) return E_FAIL;

  const ZANITypeDictionary_var& dictionary = TypeDictionary();
  if (!dictionary) return E_FAIL;
  if (IsRefusedType(type, dictionary, kInstanceTypeName)) return E_FAIL;
  if (IsRefusedType(type, dictionary, kRepInstanceTypeName)) return E_FAIL;

  // An object whose attributes cannot be read gets the stamp of the empty text.
  ZANUnicodeString text;
  (void)BuildAttrStamp(object, std::move(names), text);
  Log(text);
  return EncodeKSS(text, stamp);
}

bool KOVASynchroStampServices::BuildAttrStamp(const ZANBaseUnknown_var& object, std::list<ZANUnicodeString> names,
                                              ZANUnicodeString& text) {
  names.sort();  // stable: equal names keep their order
  ZANListValZANUnicodeString requested;
  for (const ZANUnicodeString& name : names) requested.Append(name);

  const ZANIKnwObject_var knowledgeObject(object);
  if (!knowledgeObject) return false;
  ZANListValZANUnicodeString returnedNames;
  ZANListValZANIKnwParm_var parms;
  if (ZANFailed(ZANKnwObjectAttrReadServices::GetListOfAttributes(knowledgeObject, requested, returnedNames, parms))) {
    return false;
  }

  // Values pair with the requested names by position: the service returns them in the requested
  // order, so a name the object lacks shifts the later values onto earlier names.
  for (std::int32_t i = 1; i <= parms.Size(); ++i) {
    if (KOVALogger::IsActive()) {
      KOVALogger::log(requested[i] + kLogSeparator + ParmValueToString(parms[i], -1), kLogContext);
    }
    text += Piece(requested[i], parms[i], -1);
  }
  return true;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the exported signature takes it by value
HRESULT KOVASynchroStampServices::ComputeKOVASynchroStamp(std::map<ZANUnicodeString, ZANIKnwParm_var> attributes,
                                                          ZANUnicodeString& stamp) {
  if (!kStampComputationEnabled) return E_FAIL;
  Log(kEnteringFromMap);

  // The map keeps its names in ascending order already: the stamp text is built in one pass over it.
  if (KOVALogger::IsActive()) {
    for (const auto& [name, parm] : attributes) {
      KOVALogger::log(name + kLogSeparator + ParmValueToString(parm, -1), kLogContext);
    }
  }

  std::string text;
  for (const auto& [name, parm] : attributes) {
    if (!parm) return E_FAIL;  // the text built so far is dropped
    AppendPiece(text, name, parm);
  }
  ZANUnicodeString stampText = ZANUnicodeString::FromValidUTF8(std::move(text));  // valid pieces
  Log(stampText);
  return EncodeKSS(std::move(stampText), stamp);
}

ZANUnicodeString KOVASynchroStampServices::AddToStamp(const ZANUnicodeString& prefix, const ZANIKnwParm_var& parm,
                                                      int n) {
  return Piece(prefix, parm, n);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the exported signature takes it by value
HRESULT KOVASynchroStampServices::EncodeKSS(ZANUnicodeString text, ZANUnicodeString& stamp) {
  // The digest covers as many leading bytes of the UTF-8 text as it has characters (not its byte
  // count): stamps already stored were made that way and must keep matching.
  unsigned char digest[kova::kStampDigestCapacity];
  std::int32_t digestLength = 0;
  const HRESULT status = kova::StampDigest(text.CastToCharPtr(), text.GetLengthInChar(), digest, digestLength);
  if (ZANFailed(status)) return status;

  // Base64 of the digest, 4 characters for each 3 bytes begun, and a final NUL.
  char base64[(kova::kStampDigestCapacity + 2) / 3 * 4 + 1];
  const int written = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(base64), digest, digestLength);
  stamp = ZANUnicodeString::FromValidUTF8(std::string_view(base64, static_cast<std::size_t>(written)));  // ASCII
  return S_OK;
}
