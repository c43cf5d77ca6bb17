// Helpers shared by the fuzz targets.
#ifndef KOVA_FUZZ_FUZZSUPPORT_H_
#define KOVA_FUZZ_FUZZSUPPORT_H_

#include <KOVAMappingServices/KOVAKSSVersioning.h>
#include <KOVAMappingServices/KOVAMappingTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace kova::fuzz {

// Stops the run with a message: libFuzzer records the input that got here as a finding.
[[noreturn]] inline void Fail(const char* what) {
  std::fprintf(stderr, "fuzz check failed: %s\n", what);
  std::abort();
}

inline void Check(bool condition, const char* what) {
  if (!condition) Fail(what);
}

// Reads the fuzz input from the front, one piece at a time; past its end every read gives zeros
// or empty texts.
class Reader {
 public:
  Reader(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
  bool Empty() const { return pos_ >= size_; }
  std::uint8_t Byte() { return pos_ < size_ ? data_[pos_++] : 0; }
  std::int32_t Int32() {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value = (value << 8) | Byte();
    return static_cast<std::int32_t>(value);
  }
  double Double() {
    std::uint64_t bits = 0;
    for (int i = 0; i < 8; ++i) bits = (bits << 8) | Byte();
    double value = 0;
    static_assert(sizeof value == sizeof bits);
    __builtin_memcpy(&value, &bits, sizeof value);
    return value;
  }
  // A text of at most maxLength bytes, its length given by the next byte.
  std::string Text(std::size_t maxLength = 255) {
    std::size_t length = Byte();
    if (length > maxLength) length = maxLength;
    if (length > size_ - (pos_ < size_ ? pos_ : size_)) length = pos_ < size_ ? size_ - pos_ : 0;
    std::string text(reinterpret_cast<const char*>(data_) + (pos_ < size_ ? pos_ : size_), length);
    pos_ += length;
    return text;
  }
  std::string Rest() {
    if (pos_ >= size_) return {};
    std::string text(reinterpret_cast<const char*>(data_) + pos_, size_ - pos_);
    pos_ = size_;
    return text;
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t pos_ = 0;
};

// Every field of every object of a table, in table order: what writing and reading back keeps.
inline std::string DescribeContent(KOVAMappingTable& table) {
  std::string out;
  const auto describe = [&out](const KOVAMappingPrivateObject& object, const std::string& refId) {
    out += object.GetKOVAID().ConvertToChar() + '|' + object.GetPlexoID().ConvertToChar() + '|' +
           object.GetKSStamp().ConvertToChar() + '|' + std::to_string(object.GetKSSVersion()) + '|' +
           object.GetCustomData().ConvertToChar() + '|' + (object.GetIsLocal() ? "1" : "0") + '|' + refId + '\n';
  };
  for (KOVAMappingReference& reference : table.GetReferences()) {
    describe(*KOVAPrivateAccess::GetPrivate(reference), "");
    for (const KOVAMappingInstance& instance : reference.GetInstances()) {
      const auto data = KOVAPrivateAccess::GetPrivate(instance);
      describe(*data, data->GetRefID().ConvertToChar());
    }
  }
  return out;
}

// Whether a written table reads back to the same content. It does not when an object has no
// stamp (written without the key that readers of the current version demand), nor when a stored
// stamp itself starts with a version or CE-derived prefix: reading strips a prefix once when the
// stamp is picked from the object and once more when the object stores it, so such a stamp loses
// one more prefix at every write and read.
inline bool ReadsBackUnchanged(KOVAMappingTable& table) {
  const auto fits = [](const KOVAMappingPrivateObject& object) {
    const ZANUnicodeString stamp = object.GetKSStamp();
    return !stamp.IsEmpty() && KOVAKSSVersioning::GetKSSVersion(stamp) < 0;
  };
  for (KOVAMappingReference& reference : table.GetReferences()) {
    if (!fits(*KOVAPrivateAccess::GetPrivate(reference))) return false;
    for (const KOVAMappingInstance& instance : reference.GetInstances()) {
      if (!fits(*KOVAPrivateAccess::GetPrivate(instance))) return false;
    }
  }
  return true;
}

}  // namespace kova::fuzz

#endif  // KOVA_FUZZ_FUZZSUPPORT_H_
