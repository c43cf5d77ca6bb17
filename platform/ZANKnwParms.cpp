// Parameters, value objects and lists of the knowledge engine.
#include <KOVAMappingServices/ZANKnwParms.h>

#include <cmath>
#include <limits>

#include "platform/ZANKnwComponents.h"

ZANIKnwValue::~ZANIKnwValue() = default;
ZANIKnwParm::~ZANIKnwParm() = default;
ZANIList::~ZANIList() = default;

namespace kova::knw {

namespace {

// Truncation toward zero, clamped to the 32-bit range; NaN gives 0 (a plain cast would be
// undefined for all three).
std::int32_t RealToInteger(double value) {
  if (std::isnan(value)) return 0;
  constexpr double kLowest = static_cast<double>(std::numeric_limits<std::int32_t>::min());
  constexpr double kHighest = static_cast<double>(std::numeric_limits<std::int32_t>::max());
  if (value <= kLowest) return std::numeric_limits<std::int32_t>::min();
  if (value >= kHighest) return std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(value);
}

}  // namespace

ZANUnicodeString ValueComponent::AsString() const {
  if (const auto* s = std::get_if<ZANUnicodeString>(&datum_)) return *s;
  return {};
}

std::int32_t ValueComponent::AsInteger() const {
  if (const auto* i = std::get_if<std::int32_t>(&datum_)) return *i;
  if (const auto* r = std::get_if<double>(&datum_)) return RealToInteger(*r);
  if (const auto* b = std::get_if<ZANKnw::Boolean>(&datum_)) return *b;
  return 0;
}

double ValueComponent::AsReal() const {
  if (const auto* r = std::get_if<double>(&datum_)) return *r;
  if (const auto* i = std::get_if<std::int32_t>(&datum_)) return *i;
  if (const auto* b = std::get_if<ZANKnw::Boolean>(&datum_)) return *b;
  return 0.0;
}

ZANKnw::Boolean ValueComponent::AsBoolean() const {
  if (const auto* b = std::get_if<ZANKnw::Boolean>(&datum_)) return *b;
  if (const auto* i = std::get_if<std::int32_t>(&datum_)) return *i != 0 ? 1 : 0;
  if (const auto* r = std::get_if<double>(&datum_)) return *r != 0.0 ? 1 : 0;
  return 0;
}

ZANTime ValueComponent::AsTime() const {
  if (const auto* t = std::get_if<ZANTime>(&datum_)) return *t;
  return ZANTime();
}

ZANBaseUnknown_var ValueComponent::AsObject() const {
  if (const auto* o = std::get_if<ZANBaseUnknown_var>(&datum_)) return *o;
  return {};
}

ZANBaseUnknown_var ListComponent::GetElement(std::int32_t index) const {
  if (index < 1 || index > Size()) return {};
  return elements_[static_cast<std::size_t>(index) - 1];
}

}  // namespace kova::knw
