#include "platform/JsonAccess.h"

#include <cmath>
#include <limits>
#include <string>

#include "platform/JsonNumber.h"

namespace kova::json {

namespace {

bool FitsInt32(std::int64_t i) noexcept {
  return i >= std::numeric_limits<int>::min() && i <= std::numeric_limits<int>::max();
}

ZANUnicodeString TextOf(const Value& v) { return ZANUnicodeString::FromValidUTF8(std::string_view(v.Text())); }

}  // namespace

HRESULT ReadType(const Value* v, ZANOmxJsonType& type) {
  if (v == nullptr) return ZAN_E_NOTFOUND;
  switch (v->kind) {
    case Kind::Null: type = ZANOmxJsonType::Null; break;
    case Kind::False:
    case Kind::True: type = ZANOmxJsonType::Boolean; break;
    case Kind::Integer: type = FitsInt32(v->integer) ? ZANOmxJsonType::Integer : ZANOmxJsonType::Real; break;
    case Kind::Number: type = Int32OfIntegerToken(v->Text()) ? ZANOmxJsonType::Integer : ZANOmxJsonType::Real; break;
    case Kind::String: type = ZANOmxJsonType::String; break;
    case Kind::Array: type = ZANOmxJsonType::Array; break;
    case Kind::Object: type = ZANOmxJsonType::Object; break;
  }
  return S_OK;
}

HRESULT ReadInteger(const Value* v, int& value) {
  if (v == nullptr) return ZAN_E_NOTFOUND;
  if (v->kind == Kind::Integer && FitsInt32(v->integer)) {
    value = static_cast<int>(v->integer);
    return S_OK;
  }
  if (v->kind == Kind::Number) {
    if (const auto i = Int32OfIntegerToken(v->Text())) {
      value = *i;
      return S_OK;
    }
  }
  return ZAN_E_TYPEMISMATCH;
}

HRESULT ReadReal(const Value* v, double& value) {
  if (v == nullptr) return ZAN_E_NOTFOUND;
  if (v->kind == Kind::Integer) {
    value = static_cast<double>(v->integer);
    return S_OK;
  }
  if (v->kind == Kind::Number) {
    value = RealOfNumberToken(v->Text());
    return S_OK;
  }
  return ZAN_E_TYPEMISMATCH;
}

HRESULT ReadNumberText(const Value* v, ZANUnicodeString& value) {
  if (v == nullptr) return ZAN_E_NOTFOUND;
  if (v->kind == Kind::Integer) {
    char buffer[24];
    value = ZANUnicodeString::FromValidUTF8(std::string_view(buffer, FormatInteger(v->integer, buffer)));
    return S_OK;
  }
  if (v->kind == Kind::Number) {
    value = TextOf(*v);
    return S_OK;
  }
  return ZAN_E_TYPEMISMATCH;
}

HRESULT ReadString(const Value* v, ZANUnicodeString& value) {
  if (v == nullptr) return ZAN_E_NOTFOUND;
  if (v->kind != Kind::String) return ZAN_E_TYPEMISMATCH;
  value = TextOf(*v);
  return S_OK;
}

HRESULT ReadBoolean(const Value* v, bool& value) {
  if (v == nullptr) return ZAN_E_NOTFOUND;
  if (v->kind != Kind::True && v->kind != Kind::False) return ZAN_E_TYPEMISMATCH;
  value = v->kind == Kind::True;
  return S_OK;
}

HRESULT ReadObject(const std::shared_ptr<Node>& owner, const Value* v, ZANOmxJsonObject& value) {
  if (v == nullptr) return ZAN_E_NOTFOUND;
  if (v->kind != Kind::Object) return ZAN_E_TYPEMISMATCH;
  value = Node::MakeObjectHandle(std::shared_ptr<Node>(owner, v->node));
  return S_OK;
}

HRESULT ReadArray(const std::shared_ptr<Node>& owner, const Value* v, ZANOmxJsonArray& value) {
  if (v == nullptr) return ZAN_E_NOTFOUND;
  if (v->kind != Kind::Array) return ZAN_E_TYPEMISMATCH;
  value = Node::MakeArrayHandle(std::shared_ptr<Node>(owner, v->node));
  return S_OK;
}

HRESULT MakeString(Document& target, const ZANUnicodeString& s, Value& out) {
  const std::string_view text = s.View();
  if (text.size() > kMaxLength) return ZAN_E_INVALIDARG;
  out = Value::MakeText(Kind::String, target.arena.CopyText(text), static_cast<std::uint32_t>(text.size()));
  return S_OK;
}

HRESULT MakeReal(Document& target, double d, Value& out) {
  if (!std::isfinite(d)) return ZAN_E_INVALIDARG;
  char buffer[32];
  const std::size_t n = FormatReal(d, buffer);
  out = Value::MakeText(Kind::Number, target.arena.CopyText({buffer, n}), static_cast<std::uint32_t>(n));
  return S_OK;
}

Value CopyHandle(const std::shared_ptr<Node>& from, NodeKind emptyKind, Document& target) {
  if (!from) {
    Node* empty = target.NewNode(emptyKind);
    return Value::MakeNode(empty, emptyKind == NodeKind::Object ? Kind::Object : Kind::Array);
  }
  return CopyInto(AsValue(*from), from->doc, target);
}

}  // namespace kova::json
