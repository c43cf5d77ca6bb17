// kNumbered texts: ids numbered in document order, as in the benchmarks' published documents.
#include <random>
#include <string>

#include "src/Texts.h"

namespace kova::generator {

namespace {

// Characters are drawn from the base64 alphabet one by one; the texts are not the encoding of
// bytes (a stamp's last character before "=" may carry bits an encoder leaves at zero).
constexpr char kBase64Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kHexDigits[] = "0123456789ABCDEF";

class NumberedTexts : public TextMaker {
 public:
  explicit NumberedTexts(const Options& options) : random_(options.seed) {}

  void Reference(std::int64_t index, GeneratedObject& object) override {
    object = GeneratedObject();
    object.kovaId = KovaId('R', static_cast<std::uint64_t>(index));
    object.plexoId = PlexoId(objectNumber_++);
    object.stamp = Stamp();
    object.isLocal = index != 0;
    if (index % 3 == 1) object.customData = "part-" + std::to_string(index);
    referenceKovaId_ = object.kovaId;
  }

  void Instance(std::int64_t /*reference*/, std::int64_t index, GeneratedObject& object) override {
    object = GeneratedObject();
    object.kovaId = KovaId('I', objectNumber_);
    object.plexoId = PlexoId(objectNumber_++);
    object.stamp = Stamp();
    object.refId = referenceKovaId_;
    object.isLocal = index % 2 == 0;
    if (index % 4 == 3) object.customData = "occ-" + std::to_string(index);
  }

 private:
  // "kova-" kind number "-" and six characters: unique through the number.
  std::string KovaId(char kind, std::uint64_t number) {
    std::string id = "kova-";
    id.push_back(kind);
    id += std::to_string(number);
    id.push_back('-');
    const std::uint64_t r = random_();
    for (int i = 0; i < 6; ++i) id.push_back(kBase64Alphabet[(r >> (6 * i)) & 63]);
    return id;
  }

  // 16 random hexadecimal digits and the number in 16 more: unique through the number.
  std::string PlexoId(std::uint64_t number) {
    std::string id;
    const std::uint64_t r = random_();
    for (int i = 0; i < 16; ++i) id.push_back(kHexDigits[(r >> (4 * i)) & 15]);
    for (int shift = 60; shift >= 0; shift -= 4) id.push_back(kHexDigits[(number >> shift) & 15]);
    return id;
  }

  std::string Stamp() {
    std::string stamp = "V";
    stamp.push_back(static_cast<char>('1' + random_() % 3));
    stamp.push_back(':');
    for (int i = 0; i < 43; ++i) stamp.push_back(kBase64Alphabet[random_() % 64]);
    stamp.push_back('=');
    return stamp;
  }

  std::mt19937_64 random_;
  std::uint64_t objectNumber_ = 0;  // references and instances, in document order
  std::string referenceKovaId_;
};

}  // namespace

std::unique_ptr<TextMaker> MakeNumberedTexts(const Options& options) {
  return std::make_unique<NumberedTexts>(options);
}

}  // namespace kova::generator
