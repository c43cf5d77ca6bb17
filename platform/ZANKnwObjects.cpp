// Objects of the knowledge engine and the attribute read service.
#include <KOVAMappingServices/ZANKnwObjects.h>

#include "platform/ZANKnwComponents.h"

ZANIInstance::~ZANIInstance() = default;
ZANIKnwObject::~ZANIKnwObject() = default;

namespace kova::knw {

HRESULT KnowledgeFacet::GetAttribute(const ZANUnicodeString& name, ZANIKnwParm_var& parm) const {
  const auto it = attributes_.find(name);
  if (it == attributes_.end()) return E_FAIL;
  parm = it->second;
  return S_OK;
}

ZANListValZANUnicodeString KnowledgeFacet::GetAttributeNames() const {
  ZANListValZANUnicodeString names;
  for (const auto& entry : attributes_) names.Append(entry.first);
  return names;
}

void KnowledgeFacet::SetAttribute(const ZANUnicodeString& name, const ZANIKnwParm_var& parm) {
  attributes_[name] = parm;
}

HRESULT KnowledgeFacet::RemoveAttribute(const ZANUnicodeString& name) {
  return attributes_.erase(name) > 0 ? S_OK : E_FAIL;
}

}  // namespace kova::knw

HRESULT ZANKnwObjectAttrReadServices::GetListOfAttributes(const ZANIKnwObject_var& object,
                                                          const ZANListValZANUnicodeString& requested,
                                                          ZANListValZANUnicodeString& names,
                                                          ZANListValZANIKnwParm_var& parms) {
  if (!object) return E_FAIL;
  for (const ZANUnicodeString& name : requested) {
    ZANIKnwParm_var parm;
    if (ZANSucceeded(object->GetAttribute(name, parm))) {
      names.Append(name);
      parms.Append(parm);
    }
  }
  return S_OK;
}
