// Component handles of the platform.
//
// A ZANComponent is a reference-counted platform object; a ZANBaseUnknown is a copyable handle
// to one (copies share the component). A default-constructed handle is empty.
//
// Ownership: the handles of a component own it jointly; it is destroyed with its last handle.
// Thread safety: the reference count is atomic, so handles of one component may be copied and
// destroyed on different threads at once; what may be done with the component itself is stated by
// its interfaces.
#ifndef KOVAMAPPINGSERVICES_ZANBASEUNKNOWN_H_
#define KOVAMAPPINGSERVICES_ZANBASEUNKNOWN_H_

#include <KOVAMappingServices/KOVAExport.h>

#include <memory>
#include <utility>

class KOVA_EXPORT ZANComponent {
 public:
  ZANComponent() = default;
  ZANComponent(const ZANComponent&) = delete;
  ZANComponent& operator=(const ZANComponent&) = delete;
  virtual ~ZANComponent();
};

class KOVA_EXPORT ZANBaseUnknown {
 public:
  ZANBaseUnknown() = default;
  explicit ZANBaseUnknown(std::shared_ptr<ZANComponent> component) : component_(std::move(component)) {}

  bool IsNull() const noexcept { return component_ == nullptr; }
  explicit operator bool() const noexcept { return component_ != nullptr; }
  const std::shared_ptr<ZANComponent>& GetComponent() const noexcept { return component_; }

  // Two handles are equal when they designate the same component (or are both empty).
  friend bool operator==(const ZANBaseUnknown& a, const ZANBaseUnknown& b) noexcept {
    return a.component_ == b.component_;
  }

 private:
  std::shared_ptr<ZANComponent> component_;
};

#endif  // KOVAMAPPINGSERVICES_ZANBASEUNKNOWN_H_
