// Attribute sets and the synchro stamp computed from them.
//
// The values are knowledge parameters made by ZANKnwBuilder with the standard type of their kind,
// as the kova-mapping tool makes them from an attribute file, so a set gives the stamp that the
// tool gives for the same values.
#include <KOVAMappingServices/KOVASynchroStampServices.h>
#include <KOVAMappingServices/ZANKnwBuilder.h>
#include <KOVAMappingServices/ZANTime.h>
#include <KOVAMappingServices/kova_mapping.h>

#include <string>
#include <utility>
#include <vector>

#include "Boundary.h"
#include "Handles.h"
#include "Text.h"

using kova::capi::CallReasons;
using kova::capi::Failure;
using kova::capi::RefusedArgument;
using kova::capi::Required;
using kova::capi::Run;
using kova::capi::TextIn;
using kova::capi::TextOut;

namespace {

// The standard type of a KOVA_VALUE_ kind, or nullptr for another number.
const char* TypeName(int kind) {
  switch (kind) {
    case KOVA_VALUE_STRING: return "String";
    case KOVA_VALUE_INTEGER: return "Integer";
    case KOVA_VALUE_REAL: return "Real";
    case KOVA_VALUE_BOOLEAN: return "Boolean";
    case KOVA_VALUE_TIME: return "Time";
    default: return nullptr;
  }
}

ZANIKnwParm_var BooleanParm(int value) { return ZANKnwBuilder::MakeBooleanParm(value != 0 ? 1 : 0); }
ZANIKnwParm_var TimeParm(int64_t seconds) { return ZANKnwBuilder::MakeTimeParm(ZANTime(seconds)); }

// Sets the named attribute to the parameter make() gives. The parameter is made before the set is
// touched, so a failure leaves the set as it was.
template <class Make>
int32_t Set(const char* function, kova_attributes* attributes, const char* name, size_t name_length, Make make) {
  return Run(function, [&](Failure&) -> int32_t {
    kova_attributes& target = Required(attributes, "attributes");
    ZANUnicodeString key = TextIn(name, name_length, "name");
    ZANIKnwParm_var parm = make();
    target.values.insert_or_assign(std::move(key), std::move(parm));
    return KOVA_S_OK;
  });
}

// A list parameter of count elements, element i made by element(i).
template <class Element>
ZANIKnwParm_var ListParm(const void* values, size_t count, Element element) {
  if (values == nullptr && count != 0) throw RefusedArgument("values is NULL with a count other than 0");
  std::vector<ZANBaseUnknown_var> elements;
  elements.reserve(count);
  for (size_t i = 0; i < count; ++i) elements.emplace_back(element(i));
  return ZANKnwBuilder::MakeListParm(ZANKnwBuilder::MakeList(elements));
}

}  // namespace

extern "C" {

kova_attributes* kova_attributes_new(void) { return kova::capi::NewOrNull<kova_attributes>(); }

void kova_attributes_free(kova_attributes* attributes) { delete attributes; }

size_t kova_attributes_count(const kova_attributes* attributes) {
  return attributes != nullptr ? attributes->values.size() : 0;
}

int32_t kova_attributes_set_string(kova_attributes* attributes, const char* name, size_t name_length, const char* value,
                                   size_t value_length) {
  return Set("kova_attributes_set_string", attributes, name, name_length,
             [&] { return ZANKnwBuilder::MakeStringParm(TextIn(value, value_length, "value")); });
}

int32_t kova_attributes_set_integer(kova_attributes* attributes, const char* name, size_t name_length, int32_t value) {
  return Set("kova_attributes_set_integer", attributes, name, name_length,
             [&] { return ZANKnwBuilder::MakeIntegerParm(value); });
}

int32_t kova_attributes_set_real(kova_attributes* attributes, const char* name, size_t name_length, double value) {
  return Set("kova_attributes_set_real", attributes, name, name_length,
             [&] { return ZANKnwBuilder::MakeRealParm(value); });
}

int32_t kova_attributes_set_boolean(kova_attributes* attributes, const char* name, size_t name_length, int value) {
  return Set("kova_attributes_set_boolean", attributes, name, name_length, [&] { return BooleanParm(value); });
}

int32_t kova_attributes_set_time(kova_attributes* attributes, const char* name, size_t name_length, int64_t seconds) {
  return Set("kova_attributes_set_time", attributes, name, name_length, [&] { return TimeParm(seconds); });
}

int32_t kova_attributes_set_unset(kova_attributes* attributes, const char* name, size_t name_length, int kind) {
  return Set("kova_attributes_set_unset", attributes, name, name_length, [&] {
    const char* type = TypeName(kind);
    if (type == nullptr) throw RefusedArgument("kind is " + std::to_string(kind) + ", not a KOVA_VALUE_ kind (1 to 5)");
    return ZANKnwBuilder::MakeUnsetParm(ZANKnwBuilder::FindType(type));
  });
}

int32_t kova_attributes_set_string_list(kova_attributes* attributes, const char* name, size_t name_length,
                                        const char* const* values, const size_t* lengths, size_t count) {
  return Set("kova_attributes_set_string_list", attributes, name, name_length, [&] {
    return ListParm(values, count, [&](size_t i) {
      const std::string argument = "values[" + std::to_string(i) + "]";
      return ZANKnwBuilder::MakeStringParm(
          TextIn(values[i], lengths != nullptr ? lengths[i] : KOVA_NUL_TERMINATED, argument.c_str()));
    });
  });
}

int32_t kova_attributes_set_integer_list(kova_attributes* attributes, const char* name, size_t name_length,
                                         const int32_t* values, size_t count) {
  return Set("kova_attributes_set_integer_list", attributes, name, name_length, [&] {
    return ListParm(values, count, [&](size_t i) { return ZANKnwBuilder::MakeIntegerParm(values[i]); });
  });
}

int32_t kova_attributes_set_real_list(kova_attributes* attributes, const char* name, size_t name_length,
                                      const double* values, size_t count) {
  return Set("kova_attributes_set_real_list", attributes, name, name_length,
             [&] { return ListParm(values, count, [&](size_t i) { return ZANKnwBuilder::MakeRealParm(values[i]); }); });
}

int32_t kova_attributes_set_boolean_list(kova_attributes* attributes, const char* name, size_t name_length,
                                         const int* values, size_t count) {
  return Set("kova_attributes_set_boolean_list", attributes, name, name_length,
             [&] { return ListParm(values, count, [&](size_t i) { return BooleanParm(values[i]); }); });
}

int32_t kova_attributes_set_time_list(kova_attributes* attributes, const char* name, size_t name_length,
                                      const int64_t* values, size_t count) {
  return Set("kova_attributes_set_time_list", attributes, name, name_length,
             [&] { return ListParm(values, count, [&](size_t i) { return TimeParm(values[i]); }); });
}

int32_t kova_stamp_compute(const kova_attributes* attributes, char** stamp, size_t* length) {
  return Run("kova_stamp_compute", [&](Failure& failure) -> int32_t {
    const kova_attributes& source = Required(attributes, "attributes");
    Required(stamp, "stamp");
    CallReasons reasons;
    ZANUnicodeString computed;
    const HRESULT status = KOVASynchroStampServices::ComputeKOVASynchroStamp(source.values, computed);
    if (ZANFailed(status)) {
      failure.Reasons(reasons.Reasons());
      failure.Explain(
          "no stamp computed; stamps are computed only when DONOTUSE_ENABLEKSSGEN was set when the library was "
          "loaded");
      return status;
    }
    TextOut(computed.View(), stamp, length);
    return status;
  });
}

}  // extern "C"
