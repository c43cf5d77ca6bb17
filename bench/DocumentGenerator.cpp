#include "DocumentGenerator.h"

#include <random>

namespace kova::bench {

namespace {

const char kBase64[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
const char kHex[] = "0123456789ABCDEF";

struct Writer {
  std::mt19937_64 random;
  std::string& out;

  // A kOVA id: a counter (unique) and a few random characters.
  std::string KovaId(char kind, std::size_t n) {
    std::string id = "kova-";
    id.push_back(kind);
    id += std::to_string(n);
    id.push_back('-');
    const std::uint64_t r = random();
    for (int i = 0; i < 6; ++i) id.push_back(kBase64[(r >> (6 * i)) & 63]);
    return id;
  }
  // A Plexo id: 32 hexadecimal digits, unique through the counter in its last digits.
  std::string PlexoId(std::size_t n) {
    std::string id;
    const std::uint64_t r = random();
    for (int i = 0; i < 16; ++i) id.push_back(kHex[(r >> (4 * i)) & 15]);
    char counter[17];
    for (int i = 15; i >= 0; --i) {
      counter[i] = kHex[n & 15];
      n >>= 4;
    }
    id.append(counter, 16);
    return id;
  }
  std::string Stamp() {
    std::string stamp = "V";
    stamp.push_back(static_cast<char>('1' + random() % 3));
    stamp.push_back(':');
    for (int i = 0; i < 43; ++i) stamp.push_back(kBase64[random() % 64]);
    stamp.push_back('=');
    return stamp;
  }
  void Key(const char* key) {
    out.push_back('"');
    out += key;
    out += "\":";
  }
  void String(const std::string& value) {
    out.push_back('"');
    out += value;
    out.push_back('"');
  }
};

}  // namespace

const char* ShapeName(Shape shape) { return shape == Shape::OneReference ? "one_reference" : "ten_per_reference"; }

GeneratedDocument GenerateDocument(Shape shape, std::size_t objects, std::uint32_t seed) {
  GeneratedDocument doc;
  doc.text.reserve(objects * 200 + 64);
  Writer w{std::mt19937_64(seed), doc.text};
  std::size_t references = shape == Shape::OneReference ? 1 : (objects + 10) / 11;
  if (references == 0) references = 1;
  std::size_t instancesLeft = objects > references ? objects - references : 0;
  std::size_t counter = 0;
  doc.text += "{\"version\":12,\"References\":[";
  for (std::size_t r = 0; r < references; ++r) {
    if (r > 0) doc.text.push_back(',');
    const std::size_t instances =
        shape == Shape::OneReference ? instancesLeft : std::min<std::size_t>(10, instancesLeft);
    instancesLeft -= instances;
    const std::string refKova = w.KovaId('R', r);
    const std::string refPlexo = w.PlexoId(counter++);
    doc.referencePlexoIds.push_back(refPlexo);
    // Reference keys in the writer's order: CustomData, IsLocal, PlexoId, kOVAId, KOVASynchroStamp,
    // Instances.
    doc.text.push_back('{');
    if (r % 3 == 1) {
      w.Key("CustomData");
      w.String("part-" + std::to_string(r));
      doc.text.push_back(',');
    }
    w.Key("IsLocal");
    doc.text += r == 0 ? "false" : "true";
    doc.text.push_back(',');
    w.Key("PlexoId");
    w.String(refPlexo);
    doc.text.push_back(',');
    w.Key("kOVAId");
    w.String(refKova);
    doc.text.push_back(',');
    w.Key("KOVASynchroStamp");
    w.String(w.Stamp());
    if (instances > 0) {
      doc.text.push_back(',');
      w.Key("Instances");
      doc.text.push_back('[');
      for (std::size_t i = 0; i < instances; ++i) {
        if (i > 0) doc.text.push_back(',');
        const std::string kova = w.KovaId('I', counter);
        doc.instanceKovaIds.push_back(kova);
        // Instance keys in the writer's order: kOVAId, PlexoId, IsLocal, RefId, CustomData,
        // KOVASynchroStamp.
        doc.text.push_back('{');
        w.Key("kOVAId");
        w.String(kova);
        doc.text.push_back(',');
        w.Key("PlexoId");
        w.String(w.PlexoId(counter++));
        doc.text.push_back(',');
        w.Key("IsLocal");
        doc.text += (i % 2 == 0) ? "true" : "false";
        doc.text.push_back(',');
        w.Key("RefId");
        w.String(refKova);
        if (i % 4 == 3) {
          doc.text.push_back(',');
          w.Key("CustomData");
          w.String("occ-" + std::to_string(i));
        }
        doc.text.push_back(',');
        w.Key("KOVASynchroStamp");
        w.String(w.Stamp());
        doc.text.push_back('}');
      }
      doc.text.push_back(']');
    }
    doc.text.push_back('}');
  }
  doc.text += "]}";
  doc.objects = references + (doc.instanceKovaIds.size());
  return doc;
}

}  // namespace kova::bench
