// Value lists of the platform: ZANListVal<T>, indexed from 1.
//
// ZANListValZANUnicodeString and ZANListValZANIKnwParm_var are the two the attribute services
// use. Indexing outside 1..Size() raises std::out_of_range.
//
// A list is a value: it owns its elements (for handles, a share of each component), copies are
// independent, and one list is changed by one thread at a time or read from several.
#ifndef KOVAMAPPINGSERVICES_ZANKNWLISTS_H_
#define KOVAMAPPINGSERVICES_ZANKNWLISTS_H_

#include <KOVAMappingServices/ZANComponentHandles.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <stdexcept>
#include <utility>
#include <vector>

template <class T>
class ZANListVal {
 public:
  ZANListVal() = default;
  ZANListVal(std::initializer_list<T> items) : items_(items) {}

  std::int32_t Size() const noexcept { return static_cast<std::int32_t>(items_.size()); }

  // The element at index (1 to Size()).
  const T& operator[](std::int32_t index) const { return items_.at(Offset(index)); }
  T& operator[](std::int32_t index) { return items_.at(Offset(index)); }

  void Append(const T& item) { items_.push_back(item); }
  void Append(T&& item) { items_.push_back(std::move(item)); }
  void RemoveAll() noexcept { items_.clear(); }

  typename std::vector<T>::const_iterator begin() const noexcept { return items_.begin(); }
  typename std::vector<T>::const_iterator end() const noexcept { return items_.end(); }

 private:
  static std::size_t Offset(std::int32_t index) {
    if (index < 1) throw std::out_of_range("ZANListVal index below 1");
    return static_cast<std::size_t>(index) - 1;
  }

  std::vector<T> items_;
};

class ZANIKnwParm;
using ZANListValZANUnicodeString = ZANListVal<ZANUnicodeString>;
using ZANListValZANIKnwParm_var = ZANListVal<ZANVar<ZANIKnwParm>>;

#endif  // KOVAMAPPINGSERVICES_ZANKNWLISTS_H_
