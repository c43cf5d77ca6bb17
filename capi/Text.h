// Texts across the C boundary.
//
// In: UTF-8 given as a pointer and a byte length, KOVA_NUL_TERMINATED meaning "up to the first
// NUL". A NULL pointer is the empty text with a length of 0 and is refused with any other length.
// Ill-formed UTF-8 becomes U+FFFD, as ZANUnicodeString makes it.
//
// Out: a NUL-terminated copy in malloc'd memory, which the host frees with kova_free.
#ifndef KOVA_CAPI_TEXT_H_
#define KOVA_CAPI_TEXT_H_

#include <KOVAMappingServices/ZANUnicodeString.h>

#include <cstddef>
#include <string_view>

namespace kova::capi {

// The text of an argument; RefusedArgument("<argument> is NULL with a length other than 0").
ZANUnicodeString TextIn(const char* text, std::size_t length, const char* argument);

// The text of a whole document, held with room to spare after its end: the reader parses
// documents in place and reads past their end in blocks, so a text that already has the room is
// not copied once more before parsing.
ZANUnicodeString DocumentIn(const char* text, std::size_t length, const char* argument);

// The same for functions that cannot fail: false for a NULL pointer with a length other than 0
// and when memory runs out, out then untouched.
bool TryTextIn(const char* text, std::size_t length, ZANUnicodeString& out) noexcept;

// *out = a malloc'd NUL-terminated copy of text, *length (when length is not NULL) = its size in
// bytes. Both are written only when the copy was made; std::bad_alloc otherwise.
void TextOut(std::string_view text, char** out, std::size_t* length);

}  // namespace kova::capi

#endif  // KOVA_CAPI_TEXT_H_
