#include <KOVAMappingServices/ZANOmxJson.h>

#include <string>
#include <utility>

#include "platform/JsonAccess.h"
#include "platform/JsonLoad.h"
#include "platform/JsonNode.h"
#include "platform/JsonWrite.h"

using kova::json::Document;
using kova::json::Guarded;
using kova::json::Member;
using kova::json::Node;
using kova::json::NodeKind;
using kova::json::Value;

namespace {

// The value under key, or null when the key is absent (or the value is not an object).
const Value* Lookup(const std::shared_ptr<Node>& node, const ZANOmxKeyString& key) {
  if (!node) return nullptr;
  const Member* m = node->Find(key.View());
  return m != nullptr ? &m->value : nullptr;
}

// The name under which key is stored: its text, which must then be valid UTF-8.
std::string_view StoredName(const ZANOmxKeyString& key) {
  const std::string_view raw = key.View();
  for (const char c : raw) {
    if (static_cast<unsigned char>(c) >= 0x80) return key.GetString().View();
  }
  return raw;
}

// Sets key of the object behind node to the value that make builds in the object's document.
// A handle left empty by a move gets a new document.
template <typename Make>
HRESULT Store(std::shared_ptr<Node>& node, const ZANOmxKeyString& key, Make&& make) {
  return Guarded([&]() -> HRESULT {
    if (!node) node = kova::json::NewDocument(NodeKind::Object);
    if (!node->IsObject()) return ZAN_E_TYPEMISMATCH;
    const std::string_view name = StoredName(key);
    if (name.size() > kova::json::kMaxLength) return ZAN_E_INVALIDARG;
    // The value is made before the member: a copy of this very object must not see the new key.
    Value value;
    const HRESULT status = make(*node->doc, value);
    if (ZANFailed(status)) return status;
    *node->Upsert(name) = value;
    return S_OK;
  });
}

}  // namespace

ZANOmxJsonObject::ZANOmxJsonObject() : node_(kova::json::NewDocument(NodeKind::Object)) {}

ZANOmxJsonObject::ZANOmxJsonObject(std::shared_ptr<Node> node) : node_(std::move(node)) {}

ZANOmxJsonObject::~ZANOmxJsonObject() = default;

HRESULT ZANOmxJsonObject::LoadFromString(const char* utf8, std::size_t length) {
  if (utf8 == nullptr && length != 0) return ZAN_E_INVALIDARG;
  return kova::json::LoadDocument(std::string_view(utf8 == nullptr ? "" : utf8, length), node_);
}

HRESULT ZANOmxJsonObject::LoadFromString(const ZANUnicodeString& text) {
  return kova::json::LoadDocument(text.View(), node_);
}

bool ZANOmxJsonObject::IsEmpty() const { return !node_ || !node_->IsObject() || node_->size == 0; }

bool ZANOmxJsonObject::IsValidJsonObject() const { return !node_ || node_->IsObject(); }

bool ZANOmxJsonObject::Has(const ZANOmxKeyString& key) const { return Lookup(node_, key) != nullptr; }

HRESULT ZANOmxJsonObject::GetType(const ZANOmxKeyString& key, ZANOmxJsonType& type) const {
  return kova::json::ReadType(Lookup(node_, key), type);
}

HRESULT ZANOmxJsonObject::GetInteger(const ZANOmxKeyString& key, int& value) const {
  return kova::json::ReadInteger(Lookup(node_, key), value);
}

HRESULT ZANOmxJsonObject::GetReal(const ZANOmxKeyString& key, double& value) const {
  return kova::json::ReadReal(Lookup(node_, key), value);
}

HRESULT ZANOmxJsonObject::GetNumberText(const ZANOmxKeyString& key, ZANUnicodeString& value) const {
  return kova::json::ReadNumberText(Lookup(node_, key), value);
}

HRESULT ZANOmxJsonObject::GetString(const ZANOmxKeyString& key, ZANUnicodeString& value) const {
  return kova::json::ReadString(Lookup(node_, key), value);
}

HRESULT ZANOmxJsonObject::GetBoolean(const ZANOmxKeyString& key, bool& value) const {
  return kova::json::ReadBoolean(Lookup(node_, key), value);
}

HRESULT ZANOmxJsonObject::GetJsonObject(const ZANOmxKeyString& key, ZANOmxJsonObject& value) const {
  return kova::json::ReadObject(node_, Lookup(node_, key), value);
}

HRESULT ZANOmxJsonObject::GetJsonArray(const ZANOmxKeyString& key, ZANOmxJsonArray& value) const {
  return kova::json::ReadArray(node_, Lookup(node_, key), value);
}

ZANUnicodeString ZANOmxJsonObject::OptString(const ZANOmxKeyString& key, const ZANUnicodeString& defaultValue) const {
  ZANUnicodeString value;
  if (ZANFailed(kova::json::ReadString(Lookup(node_, key), value))) return defaultValue;
  return value;
}

HRESULT ZANOmxJsonObject::GetKeys(std::vector<ZANUnicodeString>& keys) const {
  if (node_ && !node_->IsObject()) return ZAN_E_TYPEMISMATCH;
  std::vector<ZANUnicodeString> names;
  if (node_) {
    names.reserve(node_->size);
    for (std::uint32_t i = 0; i < node_->size; ++i) {
      names.push_back(ZANUnicodeString::FromValidUTF8(std::string_view(node_->members[i].Key())));
    }
  }
  keys = std::move(names);
  return S_OK;
}

HRESULT ZANOmxJsonObject::PutInteger(const ZANOmxKeyString& key, int value) {
  return Store(node_, key, [&](Document&, Value& out) {
    out = Value::MakeInteger(value);
    return S_OK;
  });
}

HRESULT ZANOmxJsonObject::PutReal(const ZANOmxKeyString& key, double value) {
  return Store(node_, key, [&](Document& doc, Value& out) { return kova::json::MakeReal(doc, value, out); });
}

HRESULT ZANOmxJsonObject::PutString(const ZANOmxKeyString& key, const ZANUnicodeString& value) {
  return Store(node_, key, [&](Document& doc, Value& out) { return kova::json::MakeString(doc, value, out); });
}

HRESULT ZANOmxJsonObject::PutBoolean(const ZANOmxKeyString& key, bool value) {
  return Store(node_, key, [&](Document&, Value& out) {
    out = Value::MakeBoolean(value);
    return S_OK;
  });
}

HRESULT ZANOmxJsonObject::PutNull(const ZANOmxKeyString& key) {
  return Store(node_, key, [&](Document&, Value& out) {
    out = Value::MakeNull();
    return S_OK;
  });
}

HRESULT ZANOmxJsonObject::PutJsonObject(const ZANOmxKeyString& key, const ZANOmxJsonObject& value) {
  return Store(node_, key, [&](Document& doc, Value& out) {
    out = kova::json::CopyHandle(value.node_, NodeKind::Object, doc);
    return S_OK;
  });
}

HRESULT ZANOmxJsonObject::PutJsonArray(const ZANOmxKeyString& key, const ZANOmxJsonArray& value) {
  return Store(node_, key, [&](Document& doc, Value& out) {
    out = kova::json::CopyHandle(Node::Of(value), NodeKind::Array, doc);
    return S_OK;
  });
}

ZANUnicodeString ZANOmxJsonObject::ToString() const {
  if (!node_) return ZANUnicodeString("{}");
  const kova::json::Value value = kova::json::AsValue(*node_);
  return ZANUnicodeString::FromValidUTF8(
      kova::json::WriteValue(value, kova::json::Layout::kCompact, kova::json::ExpectedTextSize(*node_)));
}

ZANUnicodeString ZANOmxJsonObject::PrettyPrint() const {
  if (!node_) return ZANUnicodeString("{}");
  const kova::json::Value value = kova::json::AsValue(*node_);
  return ZANUnicodeString::FromValidUTF8(
      kova::json::WriteValue(value, kova::json::Layout::kIndented, kova::json::ExpectedTextSize(*node_)));
}
