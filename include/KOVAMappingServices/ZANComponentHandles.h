// Interface handles of the platform's component model.
//
// A component (ZANComponent) is a reference-counted object that offers one or more interfaces:
// abstract classes such as ZANIType or ZANIKnwParm that the component's class derives from.
//
//  - ZANBaseUnknown_var is a ZANBaseUnknown (a shared handle to a component, possibly empty) that
//    can be passed wherever a ZANBaseUnknown is expected (a mapping table's owner, for instance),
//    and built from any ZANBaseUnknown.
//  - ZANVar<I> (spelled through the aliases ZANIType_var, ZANIKnwParm_var, ...) is a handle to the
//    interface I of a component. Building it from any other handle is a cast: when the component
//    does not offer I, or the other handle is empty, the result is a null handle (it then holds no
//    component at all, so IsNull() is true). Copies share the component.
//  - Using a null typed handle (operator->, operator*) raises ZANNullVarError, the one exception
//    of the component model, whose message names the handle type, e.g.
//    "null handle used: ZANIKnwParm_var". ZANBaseUnknown_var::ThrowErrorNullVar raises it directly.
//  - Ownership and thread safety of every handle are those of ZANBaseUnknown (ZANBaseUnknown.h):
//    joint ownership of the component, an atomic reference count.
#ifndef KOVAMAPPINGSERVICES_ZANCOMPONENTHANDLES_H_
#define KOVAMAPPINGSERVICES_ZANCOMPONENTHANDLES_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/ZANBaseUnknown.h>

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

// Raised when a null interface handle is used.
class KOVA_EXPORT ZANNullVarError : public std::runtime_error {
 public:
  explicit ZANNullVarError(const char* handleName);
  ZANNullVarError(const ZANNullVarError&) = default;
  ZANNullVarError& operator=(const ZANNullVarError&) = default;
  ~ZANNullVarError() override;

  // The type name of the handle that was null ("ZANIInstance_var", ...).
  const std::string& HandleName() const noexcept { return handleName_; }

 private:
  std::string handleName_;
};

class KOVA_EXPORT ZANBaseUnknown_var : public ZANBaseUnknown {
 public:
  ZANBaseUnknown_var() = default;
  ZANBaseUnknown_var(std::nullptr_t) {}  // implicit: nullptr is a null handle
  // Shares the component of any handle (implicit).
  ZANBaseUnknown_var(const ZANBaseUnknown& other) : ZANBaseUnknown(other) {}
  explicit ZANBaseUnknown_var(std::shared_ptr<ZANComponent> component) : ZANBaseUnknown(std::move(component)) {}

  bool operator!() const noexcept { return IsNull(); }

  // Raises ZANNullVarError for a null handle of the named handle type. Never returns.
  [[noreturn]] static void ThrowErrorNullVar(const char* handleName = "ZANBaseUnknown_var");
};

template <class I>
class ZANVar : public ZANBaseUnknown_var {
 public:
  ZANVar() = default;
  ZANVar(std::nullptr_t) {}  // implicit: nullptr is a null handle
  // Cast from any handle (implicit): null when the other handle is empty or its component does not
  // offer I.
  ZANVar(const ZANBaseUnknown& other) : ZANVar(other.GetComponent()) {}
  explicit ZANVar(const std::shared_ptr<ZANComponent>& component)
      : ZANVar(component, component ? dynamic_cast<I*>(component.get()) : nullptr) {}

  ZANVar(const ZANVar&) = default;
  ZANVar& operator=(const ZANVar&) = default;
  ZANVar(ZANVar&& other) noexcept
      : ZANBaseUnknown_var(std::move(static_cast<ZANBaseUnknown_var&>(other))),
        iface_(std::exchange(other.iface_, nullptr)) {}
  ZANVar& operator=(ZANVar&& other) noexcept {
    if (this != &other) {
      static_cast<ZANBaseUnknown_var&>(*this) = std::move(static_cast<ZANBaseUnknown_var&>(other));
      iface_ = std::exchange(other.iface_, nullptr);
    }
    return *this;
  }
  ~ZANVar() = default;

  // The interface; raises ZANNullVarError on a null handle.
  I* operator->() const {
    if (iface_ == nullptr) ThrowErrorNullVar(I::kVarName);
    return iface_;
  }
  I& operator*() const { return *operator->(); }
  // The interface, or nullptr on a null handle (never raises).
  I* Get() const noexcept { return iface_; }

 private:
  ZANVar(const std::shared_ptr<ZANComponent>& component, I* iface)
      : ZANBaseUnknown_var(iface != nullptr ? component : nullptr), iface_(iface) {}

  I* iface_ = nullptr;
};

#endif  // KOVAMAPPINGSERVICES_ZANCOMPONENTHANDLES_H_
