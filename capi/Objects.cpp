// References and instances: creation, counting, fields, identity, a reference's instances.
#include <KOVAMappingServices/KOVAPrivateAccess.h>
#include <KOVAMappingServices/kova_mapping.h>

#include <string>
#include <utility>
#include <variant>

#include "Boundary.h"
#include "Handles.h"
#include "Text.h"

using kova::capi::Failure;
using kova::capi::Required;
using kova::capi::RequiredKind;
using kova::capi::Run;
using kova::capi::TextIn;

kova_object::kova_object(const KOVAMappingReference& shared)
    : handle(std::in_place_type<KOVAMappingReference>, shared) {
  reference = KOVAPrivateAccess::GetPrivate(std::get<KOVAMappingReference>(handle)).get();
  object = reference;
}

kova_object::kova_object(const KOVAMappingInstance& shared) : handle(std::in_place_type<KOVAMappingInstance>, shared) {
  instance = KOVAPrivateAccess::GetPrivate(std::get<KOVAMappingInstance>(handle)).get();
  object = instance;
}

kova_object* kova::capi::NewKovaObject(const Handle& handle) {
  return std::visit([](const auto& shared) { return new kova_object(shared); }, handle);
}

kova_object& kova::capi::RequiredKind(kova_object* object, const char* name, int kind) {
  kova_object& checked = Required(object, name);
  if (checked.kind() != kind) {
    throw RefusedArgument(std::string(name) + (kind == KOVA_REFERENCE ? " is an instance, not a reference"
                                                                      : " is a reference, not an instance"));
  }
  return checked;
}

namespace {

// The getters' answers: the text kept in the handle's slot for that getter.
const char* Expose(ZANUnicodeString& slot, ZANUnicodeString&& value, size_t* length) noexcept {
  slot = std::move(value);
  if (length != nullptr) *length = slot.GetLengthInByte();
  return slot.CastToCharPtr();
}

const char* NoText(size_t* length) noexcept {
  if (length != nullptr) *length = 0;
  return nullptr;
}

// What a text getter gives when copying a long text runs out of memory.
const char* EmptyText(size_t* length) noexcept {
  if (length != nullptr) *length = 0;
  return "";
}

}  // namespace

extern "C" {

kova_object* kova_reference_new(void) { return kova::capi::NewOrNull<kova_object>(KOVAMappingReference()); }

kova_object* kova_instance_new(void) { return kova::capi::NewOrNull<kova_object>(KOVAMappingInstance()); }

kova_object* kova_object_retain(kova_object* object) {
  if (object != nullptr) object->count.fetch_add(1, std::memory_order_relaxed);
  return object;
}

void kova_object_release(kova_object* object) {
  if (object != nullptr && object->count.fetch_sub(1, std::memory_order_acq_rel) == 1) delete object;
}

int kova_object_kind(const kova_object* object) { return object != nullptr ? object->kind() : 0; }

// ---- Text fields ----------------------------------------------------------------------------

const char* kova_object_kova_id(const kova_object* object, size_t* length) {
  if (object == nullptr) return NoText(length);
  try {
    return Expose(object->texts[kova_object::kKovaId], object->object->GetKOVAID(), length);
  } catch (...) {
    return EmptyText(length);
  }
}

const char* kova_object_plexo_id(const kova_object* object, size_t* length) {
  if (object == nullptr) return NoText(length);
  try {
    return Expose(object->texts[kova_object::kPlexoId], object->object->GetPlexoID(), length);
  } catch (...) {
    return EmptyText(length);
  }
}

const char* kova_object_custom_data(const kova_object* object, size_t* length) {
  if (object == nullptr) return NoText(length);
  try {
    return Expose(object->texts[kova_object::kCustomData], object->object->GetCustomData(), length);
  } catch (...) {
    return EmptyText(length);
  }
}

const char* kova_object_stamp(const kova_object* object, size_t* length) {
  if (object == nullptr) return NoText(length);
  try {
    return Expose(object->texts[kova_object::kStamp], object->object->GetKSStamp(), length);
  } catch (...) {
    return EmptyText(length);
  }
}

const char* kova_instance_ref_id(const kova_object* object, size_t* length) {
  if (object == nullptr || object->instance == nullptr) return NoText(length);
  try {
    return Expose(object->texts[kova_object::kRefId], object->instance->GetRefID(), length);
  } catch (...) {
    return EmptyText(length);
  }
}

// ---- Other fields ---------------------------------------------------------------------------

int kova_object_is_local(const kova_object* object) {
  return object != nullptr && object->object->GetIsLocal() ? 1 : 0;
}

int32_t kova_object_kss_version(const kova_object* object) {
  return object != nullptr ? object->object->GetKSSVersion() : KOVA_E_INVALIDARG;
}

int kova_object_stamp_is_from_ce(const kova_object* object) {
  return object != nullptr && object->object->isKSSComputedFromCEStamp() ? 1 : 0;
}

int kova_object_stamp_has_unset(const kova_object* object) {
  return object != nullptr && object->object->isKSSComputedWithUnsetAttributes() ? 1 : 0;
}

// ---- Setters --------------------------------------------------------------------------------
// Through the private object: the containers holding it update their indexes at once.

int32_t kova_object_set_kova_id(kova_object* object, const char* text, size_t length) {
  return Run("kova_object_set_kova_id", [&](Failure&) -> int32_t {
    kova_object& target = Required(object, "object");
    target.object->SetKOVAID(TextIn(text, length, "text"));
    return KOVA_S_OK;
  });
}

int32_t kova_object_set_plexo_id(kova_object* object, const char* text, size_t length) {
  return Run("kova_object_set_plexo_id", [&](Failure&) -> int32_t {
    kova_object& target = Required(object, "object");
    target.object->SetPlexoID(TextIn(text, length, "text"));
    return KOVA_S_OK;
  });
}

int32_t kova_object_set_custom_data(kova_object* object, const char* text, size_t length) {
  return Run("kova_object_set_custom_data", [&](Failure&) -> int32_t {
    kova_object& target = Required(object, "object");
    target.object->SetCustomData(TextIn(text, length, "text"));
    return KOVA_S_OK;
  });
}

int32_t kova_object_set_stamp(kova_object* object, const char* text, size_t length) {
  return Run("kova_object_set_stamp", [&](Failure&) -> int32_t {
    kova_object& target = Required(object, "object");
    target.object->SetKSStamp(TextIn(text, length, "text"));
    return KOVA_S_OK;
  });
}

int32_t kova_object_set_kss_version(kova_object* object, int32_t version) {
  return Run("kova_object_set_kss_version", [&](Failure&) -> int32_t {
    Required(object, "object").object->SetKSSVersion(version);
    return KOVA_S_OK;
  });
}

int32_t kova_object_set_is_local(kova_object* object, int is_local) {
  return Run("kova_object_set_is_local", [&](Failure&) -> int32_t {
    Required(object, "object").object->SetIsLocal(is_local != 0);
    return KOVA_S_OK;
  });
}

int32_t kova_instance_set_ref_id(kova_object* object, const char* text, size_t length) {
  return Run("kova_instance_set_ref_id", [&](Failure&) -> int32_t {
    kova_object& target = RequiredKind(object, "object", KOVA_INSTANCE);
    target.instance->SetRefID(TextIn(text, length, "text"));
    return KOVA_S_OK;
  });
}

// ---- Identity and stamps --------------------------------------------------------------------

int kova_object_same(const kova_object* a, const kova_object* b) {
  return a != nullptr && b != nullptr && *a->object == *b->object ? 1 : 0;
}

int kova_object_shares(const kova_object* a, const kova_object* b) {
  return a != nullptr && b != nullptr && a->object == b->object ? 1 : 0;
}

int kova_object_stamp_equals(const kova_object* a, const kova_object* b) {
  return a != nullptr && b != nullptr && a->object->CompareKSS(*b->object) ? 1 : 0;
}

int kova_object_stamp_equals_text(const kova_object* object, const char* text, size_t length) {
  if (object == nullptr) return 0;
  ZANUnicodeString stamp;
  if (!kova::capi::TryTextIn(text, length, stamp)) return 0;
  return object->object->CompareKSS(std::move(stamp)) ? 1 : 0;
}

// ---- A reference's instances ----------------------------------------------------------------

int32_t kova_reference_add_instance(kova_object* reference, kova_object* instance) {
  return Run("kova_reference_add_instance", [&](Failure& failure) -> int32_t {
    kova_object& holder = RequiredKind(reference, "reference", KOVA_REFERENCE);
    kova_object& added = RequiredKind(instance, "instance", KOVA_INSTANCE);
    const HRESULT status = holder.Reference().AddInstance(added.Instance());
    if (ZANFailed(status)) failure.Explain("the reference already holds the same instance");
    return status;
  });
}

int32_t kova_reference_remove_instance(kova_object* reference, kova_object* instance) {
  return Run("kova_reference_remove_instance", [&](Failure& failure) -> int32_t {
    kova_object& holder = RequiredKind(reference, "reference", KOVA_REFERENCE);
    kova_object& removed = RequiredKind(instance, "instance", KOVA_INSTANCE);
    const HRESULT status = holder.Reference().RemoveInstance(removed.Instance());
    if (ZANFailed(status)) failure.Explain("the reference holds no instance that is the same as this one");
    return status;
  });
}

size_t kova_reference_instance_count(const kova_object* reference) {
  if (reference == nullptr || reference->reference == nullptr) return 0;
  return std::as_const(*reference->reference).GetInstances().size();
}

}  // extern "C"
