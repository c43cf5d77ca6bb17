// Reading and making single values, shared by the object and array handles (internal).
//
// Readers take the value found (null when there is none: ZAN_E_NOTFOUND) and write their output
// only on success.
#ifndef KOVA_PLATFORM_JSONACCESS_H_
#define KOVA_PLATFORM_JSONACCESS_H_

#include <KOVAMappingServices/ZANOmxJson.h>

#include <memory>
#include <new>

#include "platform/JsonNode.h"

namespace kova::json {

HRESULT ReadType(const Value* v, ZANOmxJsonType& type);
HRESULT ReadInteger(const Value* v, int& value);
HRESULT ReadReal(const Value* v, double& value);
HRESULT ReadNumberText(const Value* v, ZANUnicodeString& value);
HRESULT ReadString(const Value* v, ZANUnicodeString& value);
HRESULT ReadBoolean(const Value* v, bool& value);
// Handles onto a container inside the document that owner keeps alive.
HRESULT ReadObject(const std::shared_ptr<Node>& owner, const Value* v, ZANOmxJsonObject& value);
HRESULT ReadArray(const std::shared_ptr<Node>& owner, const Value* v, ZANOmxJsonArray& value);

// Values to store into target's document. Texts longer than kMaxLength give ZAN_E_INVALIDARG,
// non-finite reals too (JSON has no form for them).
HRESULT MakeString(Document& target, const ZANUnicodeString& s, Value& out);
HRESULT MakeReal(Document& target, double d, Value& out);
// A copy of the whole value behind a handle (an empty container for an empty handle).
Value CopyHandle(const std::shared_ptr<Node>& from, NodeKind emptyKind, Document& target);

// Runs a modifying operation, turning memory exhaustion into E_FAIL.
template <typename F>
HRESULT Guarded(F&& operation) noexcept {
  try {
    return operation();
  } catch (const std::bad_alloc&) {
    return E_FAIL;
  }
}

}  // namespace kova::json

#endif  // KOVA_PLATFORM_JSONACCESS_H_
