#include "tests/support/TableGenerator.h"

#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <random>
#include <vector>

namespace kova::test {

namespace {

const std::vector<std::string> kIdPieces = {
    "A", "b", "7", "-", ".", " ", "\"", "\\", "/", "\n", "\t", std::string("\0", 1), "\x1F",
    "\xC3\xA9", "\xE2\x82\xAC", "\xE6\x97\xA5", "\xF0\x9F\x98\x80", "V1:", "null"};
const std::string kBase64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string RandomId(std::mt19937& random) {
  // Short ids from a small alphabet, so that either-id collisions happen often.
  std::string id;
  const int pieces = 1 + static_cast<int>(random() % 3);
  for (int i = 0; i < pieces; ++i) id += kIdPieces[random() % kIdPieces.size()];
  return id;
}

std::string RandomStamp(std::mt19937& random) {
  std::string stamp = "V" + std::to_string(random() % 10) + ":";
  const int length = 1 + static_cast<int>(random() % 44);
  for (int i = 0; i < length; ++i) stamp.push_back(kBase64[random() % kBase64.size()]);
  return stamp;
}

std::string RandomCustomData(std::mt19937& random) {
  switch (random() % 3) {
    case 0: return "null";
    case 1: return "";
    default: return "{\"note\":\"" + RandomId(random) + "\"}";
  }
}

}  // namespace

GeneratedTable GenerateTable(std::uint32_t seed, int maxReferences, int maxInstances) {
  std::mt19937 random(seed);
  GeneratedTable generated;
  const int references = static_cast<int>(random() % static_cast<unsigned>(maxReferences + 1));
  for (int r = 0; r < references; ++r) {
    // Mostly local references; now and then a non-local one, refused when a root is there.
    const bool isLocal = random() % 4 != 0;
    KOVAMappingReference reference(ZANUnicodeString(RandomId(random)), ZANUnicodeString(RandomId(random)),
                                   ZANUnicodeString(RandomStamp(random)), ZANUnicodeString(RandomCustomData(random)),
                                   isLocal);
    if (generated.table.AddReference(reference) != S_OK) {
      ++generated.refusedReferences;
      continue;
    }
    const int instances = static_cast<int>(random() % static_cast<unsigned>(maxInstances + 1));
    for (int i = 0; i < instances; ++i) {
      KOVAMappingInstance instance(ZANUnicodeString(RandomId(random)), ZANUnicodeString(RandomId(random)),
                                   ZANUnicodeString(RandomStamp(random)), ZANUnicodeString(RandomId(random)),
                                   ZANUnicodeString(RandomCustomData(random)), random() % 2 == 0);
      if (generated.table.AddInstance(instance, reference) != S_OK) ++generated.refusedInstances;
    }
  }
  return generated;
}

namespace {

void Describe(std::string& out, const char* kind, const KOVAMappingPrivateObject& object, const std::string& refId) {
  out += std::string(kind) + " kOVAId=[" + object.GetKOVAID().ConvertToChar() + "] PlexoId=[" +
         object.GetPlexoID().ConvertToChar() + "] stamp=[" + object.GetKSStamp().ConvertToChar() +
         "] version=" + std::to_string(object.GetKSSVersion()) + " custom=[" + object.GetCustomData().ConvertToChar() +
         "] local=" + (object.GetIsLocal() ? "1" : "0") + " RefId=[" + refId + "]\n";
}

}  // namespace

std::string DescribeContent(KOVAMappingTable& table) {
  std::string out;
  for (KOVAMappingReference& reference : table.GetReferences()) {
    Describe(out, "reference", *KOVAPrivateAccess::GetPrivate(reference), "");
    for (const KOVAMappingInstance& instance : reference.GetInstances()) {
      const auto data = KOVAPrivateAccess::GetPrivate(instance);
      Describe(out, "  instance", *data, data->GetRefID().ConvertToChar());
    }
  }
  return out;
}

}  // namespace kova::test
