#include "platform/ParsedJson.h"

#include <KOVAMappingServices/ZANOmxJson.h>

#include <cmath>
#include <limits>
#include <new>

#include "platform/JsonLoad.h"
#include "platform/JsonNumber.h"
#include "platform/JsonWorkspace.h"

namespace kova::json {

namespace {

bool StartsNumber(char c) noexcept { return c == '-' || (c >= '0' && c <= '9'); }

bool InNumber(char c) noexcept {
  return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.' || c == 'e' || c == 'E';
}

// A copy of a well-formed text in which every number token the DOM parser cannot hold is replaced
// by one it can, of the same length ("0.5" and blanks). Only tokens of at least three characters
// can be beyond it (integers beyond 64 bits, reals beyond the double range); tokens that are
// integers within 32 bits are kept, so that every value a mapping document's reader reads as a
// number ("version") reads the same.
std::string WithPlainNumbers(std::string_view text) {
  std::string copy(text);
  bool inString = false;
  for (std::size_t i = 0; i < copy.size(); ++i) {
    const char c = copy[i];
    if (inString) {
      if (c == '\\') {
        ++i;
      } else if (c == '"') {
        inString = false;
      }
    } else if (c == '"') {
      inString = true;
    } else if (StartsNumber(c)) {
      std::size_t end = i;
      while (end < copy.size() && InNumber(copy[end])) ++end;
      const std::string_view token(copy.data() + i, end - i);
      if (token.size() >= 3 && IsNumberToken(token) && !Int32OfIntegerToken(token)) {
        copy.replace(i, token.size(), "0.5" + std::string(token.size() - 3, ' '));
      }
      i = end - 1;
    }
  }
  return copy;
}

HRESULT StatusOf(simdjson::error_code error) noexcept {
  switch (error) {
    case simdjson::SUCCESS: return S_OK;
    case simdjson::MEMALLOC:
    case simdjson::CAPACITY: return E_FAIL;
    default: return ZAN_E_INVALIDDATA;
  }
}

bool IsNumberError(simdjson::error_code error) noexcept {
  return error == simdjson::NUMBER_ERROR || error == simdjson::NUMBER_OUT_OF_RANGE;
}

}  // namespace

ParsedJson::ParsedJson() = default;
ParsedJson::~ParsedJson() = default;

HRESULT ParsedJson::Parse(std::string& text) {
  const std::size_t size = text.size();
  const std::size_t offset = size - WithoutByteOrderMark(text).size();
  const std::string_view body = std::string_view(text).substr(offset);
  if (TrimBlanks(body).empty()) {
    blank_ = true;
    return S_OK;
  }
  if (body.size() > simdjson::SIMDJSON_MAXSIZE_BYTES) return E_FAIL;
  try {
    lease_ = std::make_unique<WorkspaceLease>(body.size());
    AppendPadding(text, simdjson::SIMDJSON_PADDING);
    const simdjson::error_code error = (*lease_)->ParseDom(std::string_view(text).substr(offset, size - offset), top_);
    text.resize(size);
    if (!IsNumberError(error)) return StatusOf(error);
    // Numbers beyond what the parser holds are kept by the value tree, which decides whether the
    // text is well-formed; a well-formed one is parsed again with those numbers replaced.
    std::shared_ptr<Node> tree;
    const HRESULT loaded = LoadDocument(std::string_view(text).substr(offset), tree);
    if (ZANFailed(loaded)) return loaded;
    tree.reset();
    substitute_ = WithPlainNumbers(std::string_view(text).substr(offset));
    const std::size_t substituteSize = substitute_.size();
    AppendPadding(substitute_, simdjson::SIMDJSON_PADDING);
    return StatusOf((*lease_)->ParseDom(std::string_view(substitute_).substr(0, substituteSize), top_));
  } catch (const std::bad_alloc&) {
    text.resize(size);
    return E_FAIL;
  }
}

HRESULT ParsedJson::ReadInteger(std::string_view text, std::string_view key, int& value) const {
  simdjson::dom::object object;
  if (blank_ || top_.get_object().get(object) != simdjson::SUCCESS) return ZAN_E_NOTFOUND;
  simdjson::dom::element found;
  bool any = false;
  for (const simdjson::dom::key_value_pair member : object) {
    if (member.key == key) {
      found = member.value;
      any = true;
    }
  }
  if (!any) return ZAN_E_NOTFOUND;
  std::int64_t integer = 0;
  if (found.get_int64().get(integer) == simdjson::SUCCESS) {
    if (integer < std::numeric_limits<int>::min() || integer > std::numeric_limits<int>::max()) {
      return ZAN_E_TYPEMISMATCH;
    }
    value = static_cast<int>(integer);
    return S_OK;
  }
  double real = 0;
  if (found.type() == simdjson::dom::element_type::DOUBLE && found.get_double().get(real) == simdjson::SUCCESS &&
      real == 0 && std::signbit(real)) {
    // "-0" is an integer token, "-0.0" is not: only the text tells them apart.
    ZANOmxJsonObject tree;
    if (ZANFailed(tree.LoadFromString(text.data(), text.size()))) return ZAN_E_TYPEMISMATCH;
    return tree.GetInteger(ZANUnicodeString::FromValidUTF8(key), value);
  }
  return ZAN_E_TYPEMISMATCH;
}

}  // namespace kova::json
