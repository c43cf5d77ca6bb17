#include "Status.h"

#include <KOVAMappingServices/ZANComponentHandles.h>

#include <cstdint>
#include <cstdio>
#include <new>

namespace kova::tool {

std::string FormatStatus(HRESULT status) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(static_cast<std::uint32_t>(status)));
  return text;
}

std::string StatusMeaning(HRESULT status) {
  switch (status) {
    case S_OK: return "success";
    case E_FAIL: return "failed";
    case ZAN_E_INVALIDDATA: return "invalid data (malformed JSON or base64)";
    case ZAN_E_NOTFOUND: return "not found";
    case ZAN_E_TYPEMISMATCH: return "wrong type";
    case ZAN_E_INVALIDARG: return "invalid argument";
    case ZANZ_E_OUTOFMEMORY: return "out of memory";
    case ZANZ_E_INSUFFICIENTBUFFER: return "insufficient buffer";
    case ZANZ_E_BADDATA: return "bad compressed data";
    default: return ZANSucceeded(status) ? "success" : "unknown status";
  }
}

std::string DescribeLibraryException(const std::exception& error) {
  // The envelope reader converts the size field with std::stoi, which raises these two.
  if (dynamic_cast<const std::out_of_range*>(&error) != nullptr) {
    return "the envelope's size field is out of range (above 2147483647)";
  }
  if (dynamic_cast<const std::invalid_argument*>(&error) != nullptr) {
    return "the envelope's size field cannot be read";
  }
  if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) return "out of memory";
  if (const auto* nullHandle = dynamic_cast<const ZANNullVarError*>(&error)) return nullHandle->what();
  return error.what();
}

}  // namespace kova::tool
