// The containers that hold a private mapping object, kept in the object itself (internal).
//
// Every container index (model/ContainerIndex.h) links each object it describes: one link per
// position the object holds in the container's elements. Through its links an object tells
// exactly the indexes that describe it when its ids change, and a handle about to release the
// object from a slot of a container's vector tells that container it was changed in place.
//
// The links of an object are one machine word in the object: no link, one link stored in the word,
// or a pointer to an array of links. A link is the container's address with one flag: whether the
// container's vector has been handed out to callers (only those can change without the container's
// own code; see ReleasingSlot).
#ifndef KOVAMAPPINGSERVICES_MODEL_OBJECTLINKS_H_
#define KOVAMAPPINGSERVICES_MODEL_OBJECTLINKS_H_

#include <KOVAMappingServices/KOVAMappingPrivateObject.h>

#include <cstdint>
#include <vector>

namespace kova::model {

class ContainerIndex;

class ObjectLinks {
 public:
  // Adds one link of object to container.
  static void Add(KOVAMappingPrivateObject& object, ContainerIndex* container, bool handedOut) {
    const std::uintptr_t link = reinterpret_cast<std::uintptr_t>(container) | (handedOut ? kHandedOut : 0);
    if (object.links_ == 0) {
      object.links_ = link;  // the common case: the object's first container
      return;
    }
    AddToMore(object, link);
  }
  // Removes one link of object to container (there must be one).
  static void Remove(KOVAMappingPrivateObject& object, ContainerIndex* container);
  // Flags every link of object to container as handed out.
  static void MarkHandedOut(KOVAMappingPrivateObject& object, const ContainerIndex* container);
  // Frees the link storage of an object being destroyed, after its containers were told.
  static void Release(KOVAMappingPrivateObject& object) noexcept;

  static bool Empty(const KOVAMappingPrivateObject& object) noexcept { return object.links_ == 0; }
  // Whether object has exactly one link.
  static bool Single(const KOVAMappingPrivateObject& object) noexcept {
    return object.links_ != 0 && (object.links_ & kArray) == 0;
  }
  // Whether some link of object is to a handed-out container (an array of links is assumed to
  // have one: the caller then looks).
  static bool MayBeHandedOut(const KOVAMappingPrivateObject& object) noexcept {
    return (object.links_ & (kArray | kHandedOut)) != 0;
  }
  // Whether object has a link to container, and how many.
  static bool Has(const KOVAMappingPrivateObject& object, const ContainerIndex* container) noexcept;
  static std::size_t Count(const KOVAMappingPrivateObject& object, const ContainerIndex* container) noexcept;

  // f(container, handedOut) for every link, in the order they were added.
  template <class F>
  static void ForEach(const KOVAMappingPrivateObject& object, F&& f) {
    const std::uintptr_t word = object.links_;
    if (word == 0) return;
    if ((word & kArray) == 0) {
      f(Container(word), (word & kHandedOut) != 0);
      return;
    }
    // No f changes the links it is called over.
    const std::vector<std::uintptr_t>& links = *Array(word);
    for (std::uintptr_t link : links) f(Container(link), (link & kHandedOut) != 0);
  }

  // The same, once per distinct container.
  template <class F>
  static void ForEachContainer(const KOVAMappingPrivateObject& object, F&& f) {
    const std::uintptr_t word = object.links_;
    if (word == 0) return;
    if ((word & kArray) == 0) {
      f(Container(word));
      return;
    }
    const std::vector<std::uintptr_t>& links = *Array(word);
    for (std::size_t i = 0; i < links.size(); ++i) {
      bool seen = false;
      for (std::size_t j = 0; j < i && !seen; ++j) seen = Container(links[j]) == Container(links[i]);
      if (!seen) f(Container(links[i]));
    }
  }

 private:
  static void AddToMore(KOVAMappingPrivateObject& object, std::uintptr_t link);

  static constexpr std::uintptr_t kArray = 1;
  static constexpr std::uintptr_t kHandedOut = 2;
  static constexpr std::uintptr_t kFlags = kArray | kHandedOut;

  // NOLINTBEGIN(performance-no-int-to-ptr): links are addresses with flags in their low bits, in one word
  static ContainerIndex* Container(std::uintptr_t link) noexcept {
    return reinterpret_cast<ContainerIndex*>(link & ~kFlags);
  }
  static std::vector<std::uintptr_t>* Array(std::uintptr_t word) noexcept {
    return reinterpret_cast<std::vector<std::uintptr_t>*>(word & ~kFlags);
  }
  // NOLINTEND(performance-no-int-to-ptr)
};

// Called by a handle at slot just before it stops holding object (assignment or destruction). When
// the slot is an element of a handed-out vector that a container describes, that container notes
// that its vector was changed in place.
void ReleasingLinkedSlot(const KOVAMappingPrivateObject& object, const void* slot);
inline void ReleasingSlot(const KOVAMappingPrivateObject* object, const void* slot) {
  if (object != nullptr && ObjectLinks::MayBeHandedOut(*object)) ReleasingLinkedSlot(*object, slot);
}

}  // namespace kova::model

#endif  // KOVAMAPPINGSERVICES_MODEL_OBJECTLINKS_H_
