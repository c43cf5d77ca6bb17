#include "Text.h"

#include <KOVAMappingServices/kova_mapping.h>

#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <utility>

#include "Boundary.h"
#include "platform/HugePages.h"

namespace kova::capi {

namespace {

// The bytes the text argument stands for; false for NULL with a length other than 0.
bool Bytes(const char* text, std::size_t length, std::string_view& bytes) noexcept {
  if (text == nullptr) {
    if (length != 0) return false;
    bytes = {};
    return true;
  }
  bytes = length == KOVA_NUL_TERMINATED ? std::string_view(text) : std::string_view(text, length);
  return true;
}

}  // namespace

ZANUnicodeString TextIn(const char* text, std::size_t length, const char* argument) {
  std::string_view bytes;
  if (!Bytes(text, length, bytes)) throw RefusedArgument(std::string(argument) + " is NULL with a length other than 0");
  return ZANUnicodeString(bytes);
}

ZANUnicodeString DocumentIn(const char* text, std::size_t length, const char* argument) {
  // Room for the parser's reads past the end (its blocks are at most this long).
  constexpr std::size_t kRoom = 64;
  std::string_view bytes;
  if (!Bytes(text, length, bytes)) throw RefusedArgument(std::string(argument) + " is NULL with a length other than 0");
  std::string document;
  document.reserve(bytes.size() + kRoom);
  document.append(bytes);
  // Valid UTF-8 keeps this buffer; other text is repaired into a new one.
  return ZANUnicodeString(std::move(document));
}

bool TryTextIn(const char* text, std::size_t length, ZANUnicodeString& out) noexcept {
  std::string_view bytes;
  if (!Bytes(text, length, bytes)) return false;
  try {
    out = ZANUnicodeString(bytes);
    return true;
  } catch (...) {
    return false;
  }
}

void TextOut(std::string_view text, char** out, std::size_t* length) {
  char* copy = static_cast<char*>(std::malloc(text.size() + 1));
  if (copy == nullptr) throw std::bad_alloc();
  // A large copy lands in fresh pages of its own (the allocator maps them for it): huge pages turn
  // thousands of page faults into a few.
  kova::json::AdviseHugePages(copy, text.size() + 1);
  if (!text.empty()) std::memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  *out = copy;
  if (length != nullptr) *length = text.size();
}

}  // namespace kova::capi
