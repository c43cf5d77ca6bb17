#include <KOVAMappingServices/ZANEnvironment.h>

#include <cstdlib>

std::optional<ZANUnicodeString> ZANGetEnv(const char* name) {
  if (name == nullptr) return std::nullopt;
  const char* value = std::getenv(name);
  if (value == nullptr) return std::nullopt;
  return ZANUnicodeString(value);
}
