// Status codes. Every operation that can fail returns a 32-bit signed status: zero or more is
// success, a negative value is a failure.
#ifndef KOVAMAPPINGSERVICES_ZANSTATUS_H_
#define KOVAMAPPINGSERVICES_ZANSTATUS_H_

#include <cstdint>

using HRESULT = std::int32_t;

inline constexpr HRESULT S_OK = 0;
// The library's one failure code.
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005u);

// Compression service.
inline constexpr HRESULT ZANZ_E_OUTOFMEMORY = static_cast<HRESULT>(0x8FFE0008u);
inline constexpr HRESULT ZANZ_E_INSUFFICIENTBUFFER = static_cast<HRESULT>(0x8FFE007Au);
inline constexpr HRESULT ZANZ_E_BADDATA = static_cast<HRESULT>(0x8FFE000Du);

// JSON object model: a key that is absent (also an array index out of range), a value of another
// type than the one asked for, and a text that is not well-formed JSON.
inline constexpr HRESULT ZAN_E_NOTFOUND = static_cast<HRESULT>(0x80070490u);
inline constexpr HRESULT ZAN_E_TYPEMISMATCH = static_cast<HRESULT>(0x8007065Du);
inline constexpr HRESULT ZAN_E_INVALIDDATA = static_cast<HRESULT>(0x8007000Du);

// Arguments a platform service cannot work with (unknown digest selector, bad number format).
inline constexpr HRESULT ZAN_E_INVALIDARG = static_cast<HRESULT>(0x80070057u);

inline constexpr bool ZANSucceeded(HRESULT status) noexcept { return status >= 0; }
inline constexpr bool ZANFailed(HRESULT status) noexcept { return status < 0; }

#endif  // KOVAMAPPINGSERVICES_ZANSTATUS_H_
