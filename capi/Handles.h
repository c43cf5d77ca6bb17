// What the opaque handles of kova_mapping.h are.
#ifndef KOVA_CAPI_HANDLES_H_
#define KOVA_CAPI_HANDLES_H_

#include <KOVAMappingServices/KOVAMappingInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateObject.h>
#include <KOVAMappingServices/KOVAMappingPrivateReference.h>
#include <KOVAMappingServices/KOVAMappingReference.h>
#include <KOVAMappingServices/KOVAMappingTable.h>
#include <KOVAMappingServices/ZANKnwParms.h>
#include <KOVAMappingServices/ZANUnicodeString.h>
#include <KOVAMappingServices/kova_mapping.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <variant>
#include <vector>

namespace kova::capi {
// A public handle of either kind, as the iterators keep them.
using Handle = std::variant<KOVAMappingReference, KOVAMappingInstance>;
}  // namespace kova::capi

struct kova_table {
  KOVAMappingTable table;
};

// A counted handle on a reference or an instance.
//
// The public handle shares the object with the tables and references that hold it. It is never
// reassigned (an assignment would make it share another object; the table calls that take handles
// by reference are given copies), so the private object stays the same for the handle's whole
// life: its address is taken once, at construction, and the getters and setters reach the fields
// through it without touching the shared pointer.
struct kova_object {
  // The texts the const char* getters hand out: each getter keeps its last answer in its own slot.
  enum Field { kKovaId, kPlexoId, kCustomData, kStamp, kRefId, kFieldCount };

  explicit kova_object(const KOVAMappingReference& handle);
  explicit kova_object(const KOVAMappingInstance& handle);
  kova_object(const kova_object&) = delete;
  kova_object& operator=(const kova_object&) = delete;

  int kind() const noexcept { return reference != nullptr ? KOVA_REFERENCE : KOVA_INSTANCE; }
  KOVAMappingReference& Reference() { return std::get<KOVAMappingReference>(handle); }
  KOVAMappingInstance& Instance() { return std::get<KOVAMappingInstance>(handle); }

  kova::capi::Handle handle;  // never reassigned
  // The private object the handle shares, and the same object by its kind (the other is null).
  KOVAMappingPrivateObject* object = nullptr;
  KOVAMappingPrivateReference* reference = nullptr;
  KOVAMappingPrivateInstance* instance = nullptr;
  // Holders of this kova_object (kova_object_retain, kova_object_release).
  std::atomic<std::uint32_t> count{1};
  mutable ZANUnicodeString texts[kFieldCount];
};

namespace kova::capi {
// A new kova_object (count 1) sharing the object of the given handle; std::bad_alloc when memory
// runs out.
kova_object* NewKovaObject(const Handle& handle);
// The argument named name, when it is an object of the given kind (KOVA_REFERENCE or
// KOVA_INSTANCE); RefusedArgument otherwise, NULL included.
kova_object& RequiredKind(kova_object* object, const char* name, int kind);
}  // namespace kova::capi

struct kova_iterator {
  // The snapshot; handles share the objects.
  std::vector<kova::capi::Handle> items;
  std::size_t next = 0;
};

struct kova_attributes {
  std::map<ZANUnicodeString, ZANIKnwParm_var> values;
};

#endif  // KOVA_CAPI_HANDLES_H_
