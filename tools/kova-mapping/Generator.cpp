#include "Generator.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <random>

#include "Status.h"
#include "Text.h"

namespace kova::tool {

namespace {

constexpr std::array<std::string_view, 16> kPartNames = {
    "Housing", "Bracket", "Shaft",   "Flange", "Gear",  "Cover", "Plate", "Spacer",
    "Bushing", "Lever",   "Pulley",  "Clamp",  "Hinge", "Frame", "Panel", "Rail"};
constexpr std::array<std::string_view, 7> kStandardParts = {
    "ISO4762-M6x20", "ISO4032-M6", "ISO7089-6", "DIN912-M8x25", "ISO4762-M8x30", "DIN6325-4x20", "ISO8734-6x30"};
constexpr std::array<std::string_view, 6> kMaterials = {"S235JR", "AlMg3", "C45", "X5CrNi18-10", "PA66-GF30", "CuZn39Pb3"};
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

void AppendBase64(std::string& out, const unsigned char* bytes, std::size_t count) {
  static constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::size_t i = 0;
  for (; i + 3 <= count; i += 3) {
    const std::uint32_t n = (bytes[i] << 16) | (bytes[i + 1] << 8) | bytes[i + 2];
    out.push_back(kAlphabet[(n >> 18) & 63]);
    out.push_back(kAlphabet[(n >> 12) & 63]);
    out.push_back(kAlphabet[(n >> 6) & 63]);
    out.push_back(kAlphabet[n & 63]);
  }
  if (count - i == 1) {
    const std::uint32_t n = bytes[i] << 16;
    out.push_back(kAlphabet[(n >> 18) & 63]);
    out.push_back(kAlphabet[(n >> 12) & 63]);
    out.append("==");
  } else if (count - i == 2) {
    const std::uint32_t n = (bytes[i] << 16) | (bytes[i + 1] << 8);
    out.push_back(kAlphabet[(n >> 18) & 63]);
    out.push_back(kAlphabet[(n >> 12) & 63]);
    out.push_back(kAlphabet[(n >> 6) & 63]);
    out.push_back('=');
  }
}

class Random {
 public:
  explicit Random(std::uint32_t seed) : engine_(seed) {}
  std::uint32_t Next() { return static_cast<std::uint32_t>(engine_()); }
  std::uint32_t Below(std::uint32_t bound) { return Next() % bound; }

 private:
  std::mt19937 engine_;
};

class Builder {
 public:
  explicit Builder(const GeneratorOptions& options)
      : options_(options),
        random_(options.seed),
        key_(static_cast<std::uint64_t>(options.seed) << 32),
        occurrences_(static_cast<std::size_t>(options.references) + kStandardParts.size(), 0) {}

  std::string ReferenceId(std::int64_t index) const {
    if (index == 0) return "Assembly-1";
    const std::uint64_t pick = Mix(key_ ^ 0xA5A5A5A5ULL ^ static_cast<std::uint64_t>(index));
    return std::string(kPartNames[pick % kPartNames.size()]) + "-" + std::to_string(index + 1);
  }

  void MakeReference(std::int64_t index, GeneratedObject& object) {
    object = GeneratedObject();
    object.kovaId = ReferenceId(index);
    object.plexoId = "prd-" + Hex16(Mix(key_ ^ static_cast<std::uint64_t>(index)));
    object.isLocal = index != 0;
    Fill(object);
  }

  void MakeInstance(std::int64_t reference, GeneratedObject& object) {
    object = GeneratedObject();
    std::size_t target = 0;
    const std::int64_t below = options_.references - 1 - reference;
    if (below > 0) {
      const auto child = reference + 1 + static_cast<std::int64_t>(random_.Below(static_cast<std::uint32_t>(
                                             std::min<std::int64_t>(below, 0xFFFFFFFF))));
      target = static_cast<std::size_t>(child);
      object.refId = ReferenceId(child);
    } else {
      const std::uint32_t part = random_.Below(kStandardParts.size());
      target = static_cast<std::size_t>(options_.references) + part;
      object.refId = kStandardParts[part];
    }
    object.kovaId = object.refId + "." + std::to_string(++occurrences_[target]);
    object.plexoId = "ins-" + Hex16(Mix(key_ ^ 0x1234567ULL ^ static_cast<std::uint64_t>(instanceCount_++)));
    object.isLocal = random_.Below(8) == 0;
    Fill(object);
  }

 private:
  std::string Stamp() {
    unsigned char bytes[32];
    for (std::size_t i = 0; i < sizeof bytes; i += 4) {
      const std::uint32_t n = random_.Next();
      bytes[i] = static_cast<unsigned char>(n);
      bytes[i + 1] = static_cast<unsigned char>(n >> 8);
      bytes[i + 2] = static_cast<unsigned char>(n >> 16);
      bytes[i + 3] = static_cast<unsigned char>(n >> 24);
    }
    std::string text;
    text.reserve(44);
    AppendBase64(text, bytes, sizeof bytes);
    return text;
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
    const int version = options_.version;
    if (version <= 8 && random_.Below(5) == 0) {
      char hex[48];
      std::snprintf(hex, sizeof hex, "%08x%08x%08x%08x%08x", random_.Next(), random_.Next(), random_.Next(),
                    random_.Next(), random_.Next());
      object.ceStamp = std::string("CESv1(x'") + hex + "')";
    } else if (version == 9 || version == 10) {
      object.isSetKSS = random_.Below(4) != 0;
      object.stamp = Stamp();
    } else {
      object.stamp = (random_.Below(4) == 0 ? "V1:" : "V2:") + Stamp();
    }
    if (version >= 7 && random_.Below(3) == 0) object.customData = CustomData();
  }

  const GeneratorOptions& options_;
  Random random_;
  std::uint64_t key_;
  std::vector<std::uint32_t> occurrences_;
  std::uint64_t instanceCount_ = 0;
};

// Compact JSON text, written out in pieces of about a megabyte.
class JsonText {
 public:
  explicit JsonText(const std::function<void(std::string_view)>& sink) : sink_(sink) { text_.reserve(kPiece + 4096); }

  JsonText& Raw(std::string_view raw) {
    text_.append(raw);
    return *this;
  }
  JsonText& String(std::string_view value) {
    text_.push_back('"');
    AppendJsonEscaped(text_, value);
    text_.push_back('"');
    if (text_.size() >= kPiece) Drain();
    return *this;
  }
  JsonText& Key(std::string_view key) {
    String(key);
    text_.push_back(':');
    return *this;
  }
  // The members of fields, separated by commas (no braces).
  JsonText& Members(const std::vector<Field>& fields) {
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (i > 0) text_.push_back(',');
      Key(fields[i].key);
      if (const auto* text = std::get_if<std::string_view>(&fields[i].value)) {
        String(*text);
      } else {
        Raw(std::get<bool>(fields[i].value) ? "true" : "false");
      }
    }
    return *this;
  }
  void Drain() {
    if (text_.empty()) return;
    sink_(text_);
    text_.clear();
  }

 private:
  static constexpr std::size_t kPiece = 1 << 20;
  const std::function<void(std::string_view)>& sink_;
  std::string text_;
};

}  // namespace

void FieldsOf(const GeneratedObject& object, int version, bool isInstance, std::vector<Field>& fields) {
  fields.clear();
  const bool hasCustomData = version >= 7 && object.customData != "null";
  const auto stamp = [&] {
    if (!object.stamp.empty()) fields.push_back({"KOVASynchroStamp", std::string_view(object.stamp)});
    if (!object.ceStamp.empty()) fields.push_back({"CEStamp", std::string_view(object.ceStamp)});
  };
  if (version >= 11) {
    // The order of the library's own writer.
    if (isInstance) {
      fields.push_back({"kOVAId", std::string_view(object.kovaId)});
      fields.push_back({"PlexoId", std::string_view(object.plexoId)});
      fields.push_back({"IsLocal", object.isLocal});
      fields.push_back({"RefId", std::string_view(object.refId)});
      if (hasCustomData) fields.push_back({"CustomData", std::string_view(object.customData)});
    } else {
      if (hasCustomData) fields.push_back({"CustomData", std::string_view(object.customData)});
      fields.push_back({"IsLocal", object.isLocal});
      fields.push_back({"PlexoId", std::string_view(object.plexoId)});
      fields.push_back({"kOVAId", std::string_view(object.kovaId)});
    }
    stamp();
    return;
  }
  if (version >= 7) fields.push_back({"kOVAId", std::string_view(object.kovaId)});
  fields.push_back({"PlexoId", std::string_view(object.plexoId)});
  if (isInstance) fields.push_back({"RefId", std::string_view(object.refId)});
  if (version >= 7) fields.push_back({"IsLocal", object.isLocal});
  if (hasCustomData) fields.push_back({"CustomData", std::string_view(object.customData)});
  if (version == 9 || version == 10) fields.push_back({"IsSetKSS", object.isSetKSS});
  stamp();
}

DocumentGenerator::DocumentGenerator(const GeneratorOptions& options) : options_(options) {
  if (options.version < 6 || options.version > 12) {
    throw ToolError("--version: documents have versions 6 to 12, not " + std::to_string(options.version));
  }
  if (options.references < 0) throw ToolError("--references: the count cannot be negative");
  if (options.instances < 0) throw ToolError("--instances: the count cannot be negative");
  if (options.version == 6 && options.references > 1) {
    throw ToolError("--references: a version 6 document holds at most one reference");
  }
}

void DocumentGenerator::Generate(const std::function<void(const GeneratedObject&)>& onReference,
                                 const std::function<void(const GeneratedObject&)>& onInstance) {
  Builder builder(options_);
  GeneratedObject object;
  for (std::int64_t r = 0; r < options_.references; ++r) {
    builder.MakeReference(r, object);
    onReference(object);
    for (std::int64_t i = 0; i < options_.instances; ++i) {
      builder.MakeInstance(r, object);
      onInstance(object);
    }
  }
}

void WriteGeneratedDocument(const GeneratorOptions& options, const std::function<void(std::string_view)>& sink) {
  DocumentGenerator generator(options);
  const int version = options.version;
  JsonText json(sink);
  std::vector<Field> fields;
  json.Raw("{").Key("version").Raw(std::to_string(version)).Raw(",").Key("References");
  bool firstReference = true;
  bool firstInstance = true;
  if (version == 6) {
    // "References": {ID: {...}}, "RefInstances": {ID: {...}, ...}
    json.Raw("{");
    generator.Generate(
        [&](const GeneratedObject& reference) {
          FieldsOf(reference, version, false, fields);
          json.Key(reference.kovaId).Raw("{").Members(fields).Raw("}},").Key("RefInstances").Raw("{");
          firstReference = false;
        },
        [&](const GeneratedObject& instance) {
          if (!firstInstance) json.Raw(",");
          firstInstance = false;
          FieldsOf(instance, version, true, fields);
          json.Key(instance.kovaId).Raw("{").Members(fields).Raw("}");
        });
    json.Raw("}}");
  } else {
    // "References": [{..., "Instances": [{...}, ...]}, ...]
    const bool hasInstances = options.instances > 0;
    json.Raw("[");
    generator.Generate(
        [&](const GeneratedObject& reference) {
          if (!firstReference) json.Raw(hasInstances ? "]}," : "},");
          firstReference = false;
          firstInstance = true;
          FieldsOf(reference, version, false, fields);
          json.Raw("{").Members(fields);
          if (hasInstances) json.Raw(",").Key("Instances").Raw("[");
        },
        [&](const GeneratedObject& instance) {
          if (!firstInstance) json.Raw(",");
          firstInstance = false;
          FieldsOf(instance, version, true, fields);
          json.Raw("{").Members(fields).Raw("}");
        });
    if (!firstReference) json.Raw(hasInstances ? "]}" : "}");
    json.Raw("]}");
  }
  json.Drain();
}

}  // namespace kova::tool
