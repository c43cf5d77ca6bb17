#include "src/Base64.h"

#include <KOVAMappingServices/QORSysServices.h>

#include <cstdlib>
#include <memory>
#include <new>

namespace kova::generator {

std::string Base64(const unsigned char* bytes, std::size_t count) {
  char* converted = nullptr;
  if (ZANFailed(QORSysConverter::ConvertToBase64(bytes, count, converted)) || converted == nullptr) {
    throw std::bad_alloc();
  }
  // The converter's buffer comes from malloc.
  const std::unique_ptr<char, decltype(&std::free)> owned(converted, &std::free);
  return std::string(owned.get());
}

}  // namespace kova::generator
