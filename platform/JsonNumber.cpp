#include "platform/JsonNumber.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace kova::json {

namespace {

bool IsDigit(char c) noexcept { return c >= '0' && c <= '9'; }

// Number of digits from position i on.
std::size_t SkipDigits(std::string_view s, std::size_t i) noexcept {
  while (i < s.size() && IsDigit(s[i])) ++i;
  return i;
}

template <typename T>
std::optional<T> IntegerOf(std::string_view token) noexcept {
  if (!IsIntegerToken(token)) return std::nullopt;
  T value{};
  const char* end = token.data() + token.size();
  const auto [ptr, ec] = std::from_chars(token.data(), end, value);
  if (ec != std::errc() || ptr != end) return std::nullopt;
  return value;
}

// For a number token whose value is out of the double range: true when it is too large, false
// when it is too small. Compares the power of ten of its leading significant digit with zero.
bool IsOverflow(std::string_view token) noexcept {
  std::size_t i = token[0] == '-' ? 1 : 0;
  const std::size_t intBegin = i;
  i = SkipDigits(token, i);
  const std::size_t intEnd = i;
  std::size_t firstNonZero = intBegin;
  while (firstNonZero < intEnd && token[firstNonZero] == '0') ++firstNonZero;
  // Position of the leading significant digit relative to the units digit, as a power of ten.
  long long magnitude = 0;
  if (firstNonZero < intEnd) {
    magnitude = static_cast<long long>(intEnd - firstNonZero) - 1;
  } else {
    magnitude = -1;
    if (i < token.size() && token[i] == '.') {
      std::size_t j = i + 1;
      while (j < token.size() && token[j] == '0') {
        --magnitude;
        ++j;
      }
    }
  }
  const std::size_t e = token.find_first_of("eE");
  long long exponent = 0;
  if (e != std::string_view::npos) {
    std::size_t j = e + 1;
    bool negative = false;
    if (j < token.size() && (token[j] == '+' || token[j] == '-')) negative = token[j++] == '-';
    for (; j < token.size(); ++j) {
      if (exponent < 1'000'000'000) exponent = exponent * 10 + (token[j] - '0');
    }
    if (negative) exponent = -exponent;
  }
  return magnitude + exponent >= 0;
}

}  // namespace

bool IsNumberToken(std::string_view s) noexcept {
  std::size_t i = 0;
  if (i < s.size() && s[i] == '-') ++i;
  if (i >= s.size()) return false;
  if (s[i] == '0') {
    ++i;
  } else if (s[i] >= '1' && s[i] <= '9') {
    i = SkipDigits(s, i + 1);
  } else {
    return false;
  }
  if (i < s.size() && s[i] == '.') {
    const std::size_t digits = i + 1;
    i = SkipDigits(s, digits);
    if (i == digits) return false;
  }
  if (i < s.size() && (s[i] == 'e' || s[i] == 'E')) {
    ++i;
    if (i < s.size() && (s[i] == '+' || s[i] == '-')) ++i;
    const std::size_t digits = i;
    i = SkipDigits(s, digits);
    if (i == digits) return false;
  }
  return i == s.size();
}

bool IsIntegerToken(std::string_view token) noexcept {
  return IsNumberToken(token) && token.find_first_of(".eE") == std::string_view::npos;
}

std::optional<std::int64_t> Int64OfIntegerToken(std::string_view token) noexcept {
  return IntegerOf<std::int64_t>(token);
}

std::optional<int> Int32OfIntegerToken(std::string_view token) noexcept { return IntegerOf<int>(token); }

double RealOfNumberToken(std::string_view token) noexcept {
  double value = 0.0;
  const char* end = token.data() + token.size();
  const auto [ptr, ec] = std::from_chars(token.data(), end, value);
  if (ec == std::errc() && ptr == end) return value;
  if (ec == std::errc::result_out_of_range && IsNumberToken(token)) {
    const double magnitude = IsOverflow(token) ? std::numeric_limits<double>::infinity() : 0.0;
    return token[0] == '-' ? -magnitude : magnitude;
  }
  return std::numeric_limits<double>::quiet_NaN();
}

std::size_t FormatInteger(std::int64_t value, char* buffer) noexcept {
  const auto [ptr, ec] = std::to_chars(buffer, buffer + 21, value);
  (void)ec;  // 21 bytes hold every 64-bit integer
  return static_cast<std::size_t>(ptr - buffer);
}

std::size_t FormatReal(double value, char* buffer) noexcept {
  const auto [ptr, ec] = std::to_chars(buffer, buffer + 29, value);
  (void)ec;  // 29 bytes hold the shortest form of every finite double
  std::size_t n = static_cast<std::size_t>(ptr - buffer);
  bool real = false;
  for (std::size_t i = 0; i < n; ++i) {
    if (buffer[i] == '.' || buffer[i] == 'e') real = true;
  }
  if (!real) {
    buffer[n++] = '.';
    buffer[n++] = '0';
  }
  return n;
}

}  // namespace kova::json
