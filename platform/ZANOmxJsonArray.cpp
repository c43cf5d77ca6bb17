#include <KOVAMappingServices/ZANOmxJson.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "platform/JsonAccess.h"
#include "platform/JsonNode.h"
#include "platform/JsonWrite.h"

using kova::json::Document;
using kova::json::Guarded;
using kova::json::Node;
using kova::json::NodeKind;
using kova::json::Value;

namespace {

// The element at index (1-based), or null when index is out of range.
const Value* At(const std::shared_ptr<Node>& node, int index) {
  if (!node || !node->IsArray() || index < 1 || static_cast<std::uint32_t>(index) > node->size) return nullptr;
  return &node->elements[index - 1];
}

// Appends the value that make builds in the array's document. A handle left empty by a move
// gets a new document.
template <typename Make>
HRESULT Append(std::shared_ptr<Node>& node, Make&& make) {
  return Guarded([&]() -> HRESULT {
    if (!node) node = kova::json::NewDocument(NodeKind::Array);
    if (!node->IsArray()) return ZAN_E_TYPEMISMATCH;
    if (node->size >= static_cast<std::uint32_t>(std::numeric_limits<int>::max())) return ZAN_E_INVALIDARG;
    // The value is made before the element: a copy of this very array must not see it.
    Value value;
    const HRESULT status = make(*node->doc, value);
    if (ZANFailed(status)) return status;
    *node->Append() = value;
    return S_OK;
  });
}

}  // namespace

ZANOmxJsonArray::ZANOmxJsonArray() : node_(kova::json::NewDocument(NodeKind::Array)) {}

ZANOmxJsonArray::ZANOmxJsonArray(std::shared_ptr<Node> node) : node_(std::move(node)) {}

ZANOmxJsonArray::~ZANOmxJsonArray() = default;

int ZANOmxJsonArray::Length() const {
  if (!node_ || !node_->IsArray()) return 0;
  // Elements beyond the int range cannot be numbered; a loaded text can hold that many.
  return static_cast<int>(std::min<std::uint32_t>(node_->size, std::numeric_limits<int>::max()));
}

HRESULT ZANOmxJsonArray::GetType(int index, ZANOmxJsonType& type) const {
  return kova::json::ReadType(At(node_, index), type);
}

HRESULT ZANOmxJsonArray::GetJsonObject(int index, ZANOmxJsonObject& value) const {
  return kova::json::ReadObject(node_, At(node_, index), value);
}

HRESULT ZANOmxJsonArray::GetJsonArray(int index, ZANOmxJsonArray& value) const {
  return kova::json::ReadArray(node_, At(node_, index), value);
}

HRESULT ZANOmxJsonArray::GetString(int index, ZANUnicodeString& value) const {
  return kova::json::ReadString(At(node_, index), value);
}

HRESULT ZANOmxJsonArray::GetInteger(int index, int& value) const {
  return kova::json::ReadInteger(At(node_, index), value);
}

HRESULT ZANOmxJsonArray::GetReal(int index, double& value) const {
  return kova::json::ReadReal(At(node_, index), value);
}

HRESULT ZANOmxJsonArray::GetNumberText(int index, ZANUnicodeString& value) const {
  return kova::json::ReadNumberText(At(node_, index), value);
}

HRESULT ZANOmxJsonArray::GetBoolean(int index, bool& value) const {
  return kova::json::ReadBoolean(At(node_, index), value);
}

HRESULT ZANOmxJsonArray::PutJsonObject(const ZANOmxJsonObject& value) {
  return Append(node_, [&](Document& doc, Value& out) {
    out = kova::json::CopyHandle(Node::Of(value), NodeKind::Object, doc);
    return S_OK;
  });
}

HRESULT ZANOmxJsonArray::PutJsonArray(const ZANOmxJsonArray& value) {
  return Append(node_, [&](Document& doc, Value& out) {
    out = kova::json::CopyHandle(value.node_, NodeKind::Array, doc);
    return S_OK;
  });
}

HRESULT ZANOmxJsonArray::PutString(const ZANUnicodeString& value) {
  return Append(node_, [&](Document& doc, Value& out) { return kova::json::MakeString(doc, value, out); });
}

HRESULT ZANOmxJsonArray::PutInteger(int value) {
  return Append(node_, [&](Document&, Value& out) {
    out = Value::MakeInteger(value);
    return S_OK;
  });
}

HRESULT ZANOmxJsonArray::PutReal(double value) {
  return Append(node_, [&](Document& doc, Value& out) { return kova::json::MakeReal(doc, value, out); });
}

HRESULT ZANOmxJsonArray::PutBoolean(bool value) {
  return Append(node_, [&](Document&, Value& out) {
    out = Value::MakeBoolean(value);
    return S_OK;
  });
}

HRESULT ZANOmxJsonArray::PutNull() {
  return Append(node_, [&](Document&, Value& out) {
    out = Value::MakeNull();
    return S_OK;
  });
}

ZANUnicodeString ZANOmxJsonArray::ToString() const {
  if (!node_) return ZANUnicodeString("[]");
  const kova::json::Value value = kova::json::AsValue(*node_);
  return ZANUnicodeString::FromValidUTF8(
      kova::json::WriteValue(value, kova::json::Layout::kCompact, kova::json::ExpectedTextSize(*node_)));
}

ZANUnicodeString ZANOmxJsonArray::PrettyPrint() const {
  if (!node_) return ZANUnicodeString("[]");
  const kova::json::Value value = kova::json::AsValue(*node_);
  return ZANUnicodeString::FromValidUTF8(
      kova::json::WriteValue(value, kova::json::Layout::kIndented, kova::json::ExpectedTextSize(*node_)));
}
