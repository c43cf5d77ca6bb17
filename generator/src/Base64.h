// Base64 text of bytes, by the platform's converter.
#ifndef KOVA_GENERATOR_SRC_BASE64_H_
#define KOVA_GENERATOR_SRC_BASE64_H_

#include <cstddef>
#include <string>

namespace kova::generator {

// RFC 4648 base64 with "=" padding. Throws std::bad_alloc when the converter cannot make its text.
std::string Base64(const unsigned char* bytes, std::size_t count);

}  // namespace kova::generator

#endif  // KOVA_GENERATOR_SRC_BASE64_H_
