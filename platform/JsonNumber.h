// JSON number tokens: grammar, conversions and formatting (internal).
#ifndef KOVA_PLATFORM_JSONNUMBER_H_
#define KOVA_PLATFORM_JSONNUMBER_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace kova::json {

// True when token is exactly one JSON number: -? (0 | [1-9][0-9]*) (. [0-9]+)? ([eE] [+-]? [0-9]+)?
bool IsNumberToken(std::string_view token) noexcept;
// True for a number token without fraction and exponent.
bool IsIntegerToken(std::string_view token) noexcept;

// The value of an integer token when it fits the type.
std::optional<std::int64_t> Int64OfIntegerToken(std::string_view token) noexcept;
std::optional<int> Int32OfIntegerToken(std::string_view token) noexcept;

// The nearest double of a number token; magnitudes beyond the double range give infinities,
// those below it give zeros (with the token's sign).
double RealOfNumberToken(std::string_view token) noexcept;

// Decimal text of an integer into buffer (at least 21 bytes); returns the length.
std::size_t FormatInteger(std::int64_t value, char* buffer) noexcept;
// Shortest text that reads back as value, always with a fraction or an exponent so that it
// stays a real number ("3.0", "1e+20"); buffer holds at least 32 bytes. value must be finite.
std::size_t FormatReal(double value, char* buffer) noexcept;

}  // namespace kova::json

#endif  // KOVA_PLATFORM_JSONNUMBER_H_
