#include "model/ObjectLinks.h"

#include <algorithm>

#include "model/ContainerIndex.h"

namespace kova::model {

void ObjectLinks::AddToMore(KOVAMappingPrivateObject& object, std::uintptr_t link) {
  std::uintptr_t& word = object.links_;
  if ((word & kArray) == 0) {
    auto* links = new std::vector<std::uintptr_t>{word, link};
    word = reinterpret_cast<std::uintptr_t>(links) | kArray;
    return;
  }
  Array(word)->push_back(link);
}

void ObjectLinks::Remove(KOVAMappingPrivateObject& object, ContainerIndex* container) {
  std::uintptr_t& word = object.links_;
  if (word == 0) return;
  if ((word & kArray) == 0) {
    if (Container(word) == container) word = 0;
    return;
  }
  std::vector<std::uintptr_t>* links = Array(word);
  // The last link to container goes, so that the others keep their order.
  for (std::size_t i = links->size(); i-- > 0;) {
    if (Container((*links)[i]) != container) continue;
    links->erase(links->begin() + static_cast<std::ptrdiff_t>(i));
    break;
  }
  if (links->size() == 1) {
    word = links->front();
    delete links;
  } else if (links->empty()) {
    word = 0;
    delete links;
  }
}

void ObjectLinks::MarkHandedOut(KOVAMappingPrivateObject& object, const ContainerIndex* container) {
  std::uintptr_t& word = object.links_;
  if (word == 0) return;
  if ((word & kArray) == 0) {
    if (Container(word) == container) word |= kHandedOut;
    return;
  }
  for (std::uintptr_t& link : *Array(word)) {
    if (Container(link) == container) link |= kHandedOut;
  }
}

bool ObjectLinks::Has(const KOVAMappingPrivateObject& object, const ContainerIndex* container) noexcept {
  const std::uintptr_t word = object.links_;
  if (word == 0) return false;
  if ((word & kArray) == 0) return Container(word) == container;
  const std::vector<std::uintptr_t>& links = *Array(word);
  return std::any_of(links.begin(), links.end(),
                     [container](std::uintptr_t link) { return Container(link) == container; });
}

std::size_t ObjectLinks::Count(const KOVAMappingPrivateObject& object, const ContainerIndex* container) noexcept {
  const std::uintptr_t word = object.links_;
  if (word == 0) return 0;
  if ((word & kArray) == 0) return Container(word) == container ? 1 : 0;
  const std::vector<std::uintptr_t>& links = *Array(word);
  return static_cast<std::size_t>(std::count_if(
      links.begin(), links.end(), [container](std::uintptr_t link) { return Container(link) == container; }));
}

void ObjectLinks::Release(KOVAMappingPrivateObject& object) noexcept {
  if ((object.links_ & kArray) != 0) delete Array(object.links_);
  object.links_ = 0;
}

void ReleasingLinkedSlot(const KOVAMappingPrivateObject& object, const void* slot) {
  ObjectLinks::ForEach(object, [slot](ContainerIndex* container, bool handedOut) {
    // Only a handed-out vector can be changed by code other than its container's own.
    if (handedOut) container->SlotReleased(slot);
  });
}

}  // namespace kova::model
