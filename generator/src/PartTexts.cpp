// kParts texts: part names, platform ids and the stamps of each document version.
#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>
#include <vector>

#include "src/Base64.h"
#include "src/Random.h"
#include "src/Texts.h"

namespace kova::generator {

namespace {

constexpr std::array<std::string_view, 16> kPartNames = {"Housing", "Bracket", "Shaft",   "Flange", "Gear",   "Cover",
                                                         "Plate",   "Spacer",  "Bushing", "Lever",  "Pulley", "Clamp",
                                                         "Hinge",   "Frame",   "Panel",   "Rail"};
constexpr std::array<std::string_view, 7> kStandardParts = {
    "ISO4762-M6x20", "ISO4032-M6", "ISO7089-6", "DIN912-M8x25", "ISO4762-M8x30", "DIN6325-4x20", "ISO8734-6x30"};
constexpr std::array<std::string_view, 6> kMaterials = {"S235JR",      "AlMg3",     "C45",
                                                        "X5CrNi18-10", "PA66-GF30", "CuZn39Pb3"};
constexpr std::array<std::string_view, 5> kFinishes = {"zinc-plated", "anodized", "painted", "raw", "black-oxide"};

// A bijection of 64-bit numbers that spreads consecutive inputs: distinct inputs give distinct ids.
std::uint64_t Mix(std::uint64_t x) {
  x ^= x >> 30;
  x *= 0xBF58476D1CE4E5B9ULL;
  x ^= x >> 27;
  x *= 0x94D049BB133111EBULL;
  x ^= x >> 31;
  return x;
}

std::string Hex16(std::uint64_t value) {
  char text[17];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(value));
  return text;
}

class PartTexts : public TextMaker {
 public:
  PartTexts(const Options& options, std::int64_t references)
      : version_(options.version),
        references_(references),
        random_(options.seed),
        key_(static_cast<std::uint64_t>(options.seed) << 32),
        occurrences_(static_cast<std::size_t>(references) + kStandardParts.size(), 0) {}

  void Reference(std::int64_t index, GeneratedObject& object) override {
    object = GeneratedObject();
    object.kovaId = ReferenceId(index);
    object.plexoId = "prd-" + Hex16(Mix(key_ ^ static_cast<std::uint64_t>(index)));
    object.isLocal = index != 0;
    Fill(object);
  }

  // What an instance instantiates: a reference further down the list, or under the last
  // reference a standard part.
  void Instance(std::int64_t reference, std::int64_t /*index*/, GeneratedObject& object) override {
    object = GeneratedObject();
    std::size_t target = 0;
    const std::int64_t below = references_ - 1 - reference;
    if (below > 0) {
      const auto child = reference + 1 +
                         static_cast<std::int64_t>(
                             random_.Below(static_cast<std::uint32_t>(std::min<std::int64_t>(below, 0xFFFFFFFF))));
      target = static_cast<std::size_t>(child);
      object.refId = ReferenceId(child);
    } else {
      const std::uint32_t part = random_.Below(kStandardParts.size());
      target = static_cast<std::size_t>(references_) + part;
      object.refId = kStandardParts[part];
    }
    object.kovaId = object.refId + "." + std::to_string(++occurrences_[target]);
    object.plexoId = "ins-" + Hex16(Mix(key_ ^ 0x1234567ULL ^ static_cast<std::uint64_t>(instanceCount_++)));
    object.isLocal = random_.Below(8) == 0;
    Fill(object);
  }

 private:
  std::string ReferenceId(std::int64_t index) const {
    if (index == 0) return "Assembly-1";
    const std::uint64_t pick = Mix(key_ ^ 0xA5A5A5A5ULL ^ static_cast<std::uint64_t>(index));
    return std::string(kPartNames[pick % kPartNames.size()]) + "-" + std::to_string(index + 1);
  }

  // 32 random bytes (four from each number, lowest byte first), in base64.
  std::string Stamp() {
    unsigned char bytes[32];
    for (std::size_t i = 0; i < sizeof bytes; i += 4) {
      const std::uint32_t n = random_.Next();
      bytes[i] = static_cast<unsigned char>(n);
      bytes[i + 1] = static_cast<unsigned char>(n >> 8);
      bytes[i + 2] = static_cast<unsigned char>(n >> 16);
      bytes[i + 3] = static_cast<unsigned char>(n >> 24);
    }
    return Base64(bytes, sizeof bytes);
  }

  std::string CustomData() {
    char mass[32];
    const std::uint32_t grams = random_.Below(100000);
    std::snprintf(mass, sizeof mass, "%u.%03u", grams / 1000, grams % 1000);
    const std::string_view material = kMaterials[random_.Below(kMaterials.size())];
    if (random_.Below(2) == 0) {
      return std::string("{\"material\":\"").append(material).append("\",\"mass\":").append(mass).append("}");
    }
    const std::string_view finish = kFinishes[random_.Below(kFinishes.size())];
    const char revision = static_cast<char>('A' + random_.Below(6));
    return std::string("{\"finish\":\"").append(finish).append("\",\"revision\":\"").append(1, revision).append("\"}");
  }

  // Stamp and custom data, by version.
  void Fill(GeneratedObject& object) {
    if (version_ <= 8 && random_.Below(5) == 0) {
      // Five numbers written in the reverse of the order they are drawn in, as the documents
      // generated so far have them.
      std::uint32_t words[5];
      for (int i = 4; i >= 0; --i) words[i] = random_.Next();
      char hex[48];
      std::snprintf(hex, sizeof hex, "%08x%08x%08x%08x%08x", words[0], words[1], words[2], words[3], words[4]);
      object.ceStamp = std::string("CESv1(x'") + hex + "')";
    } else if (version_ == 9 || version_ == 10) {
      object.isSetKSS = random_.Below(4) != 0;
      object.stamp = Stamp();
    } else {
      // The stamp is drawn before its prefix.
      const std::string stamp = Stamp();
      object.stamp = (random_.Below(4) == 0 ? "V1:" : "V2:") + stamp;
    }
    if (version_ >= 7 && random_.Below(3) == 0) object.customData = CustomData();
  }

  int version_;
  std::int64_t references_;
  Random random_;
  std::uint64_t key_;
  std::vector<std::uint32_t> occurrences_;
  std::uint64_t instanceCount_ = 0;
};

}  // namespace

std::unique_ptr<TextMaker> MakePartTexts(const Options& options, std::int64_t references) {
  return std::make_unique<PartTexts>(options, references);
}

}  // namespace kova::generator
