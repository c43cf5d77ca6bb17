// kHostile texts: what round trips must keep whatever the ids hold, and ids that collide.
#include <array>
#include <string>
#include <string_view>

#include "src/Base64.h"
#include "src/Random.h"
#include "src/Texts.h"

namespace kova::generator {

namespace {

using namespace std::string_view_literals;

// Short ids from a small set of pieces, so that either-id collisions happen often.
constexpr std::array<std::string_view, 19> kIdPieces = {"A",
                                                        "b",
                                                        "7",
                                                        "-",
                                                        ".",
                                                        " ",
                                                        "\"",
                                                        "\\",
                                                        "/",
                                                        "\n",
                                                        "\t",
                                                        "\0"sv,
                                                        "\x1F",
                                                        "\xC3\xA9",
                                                        "\xE2\x82\xAC",
                                                        "\xE6\x97\xA5",
                                                        "\xF0\x9F\x98\x80",
                                                        "V1:",
                                                        "null"};

class HostileTexts : public TextMaker {
 public:
  explicit HostileTexts(const Options& options) : random_(options.seed) {}

  void Reference(std::int64_t /*index*/, GeneratedObject& object) override {
    object = GeneratedObject();
    object.isLocal = random_.Below(4) != 0;
    object.kovaId = Id();
    object.plexoId = Id();
    object.stamp = Stamp();
    object.customData = CustomData();
  }

  void Instance(std::int64_t /*reference*/, std::int64_t /*index*/, GeneratedObject& object) override {
    object = GeneratedObject();
    object.kovaId = Id();
    object.plexoId = Id();
    object.stamp = Stamp();
    object.refId = Id();
    object.customData = CustomData();
    object.isLocal = random_.Below(2) == 0;
  }

 private:
  std::string Id() {
    std::string id;
    const std::uint32_t pieces = 1 + random_.Below(3);
    for (std::uint32_t i = 0; i < pieces; ++i) id += kIdPieces[random_.Below(kIdPieces.size())];
    return id;
  }

  // "V<digit>:" and 1 to 44 characters of the base64 of random bytes: never empty, any version.
  std::string Stamp() {
    std::string stamp = "V";
    stamp.push_back(static_cast<char>('0' + random_.Below(10)));
    stamp.push_back(':');
    unsigned char bytes[33];
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random_.Next());
    const std::uint32_t length = 1 + random_.Below(44);
    return stamp.append(Base64(bytes, sizeof bytes), 0, length);
  }

  std::string CustomData() {
    switch (random_.Below(3)) {
      case 0: return "null";
      case 1: return "";
      default: return "{\"note\":\"" + Id() + "\"}";
    }
  }

  Random random_;
};

}  // namespace

std::unique_ptr<TextMaker> MakeHostileTexts(const Options& options) { return std::make_unique<HostileTexts>(options); }

}  // namespace kova::generator
