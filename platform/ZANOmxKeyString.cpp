#include <KOVAMappingServices/ZANOmxJson.h>

const ZANUnicodeString& ZANOmxKeyString::GetString() const {
  if (!key_) key_.emplace(text_, size_);
  return *key_;
}
