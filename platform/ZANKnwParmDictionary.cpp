// The parameter dictionary of the knowledge engine.
#include <KOVAMappingServices/ZANKnwParmDictionary.h>

#include "platform/ZANKnwComponents.h"

ZANIParmDictionary::~ZANIParmDictionary() = default;

namespace {

ZANIParmDictionary_var CreateParmDictionary() {
  // The dictionary hands out the type dictionary's own type objects, so kind-of tests against
  // them hold for parameters made with the standard types.
  const ZANITypeDictionary_var types = ZANGlobalFunctions::GetTypeDictionary();
  ZANIType_var time;
  ZANIType_var enumeration;
  ZANIType_var list;
  types->FindType("Time", time);
  types->FindType("Enumeration", enumeration);
  types->FindType("List", list);
  return kova::knw::Make<ZANIParmDictionary, kova::knw::ParmDictionaryComponent>(time, enumeration, list);
}

}  // namespace

ZANIParmDictionary_var ZANKnwGlobalFunctions::GetParmDictionary() {
  // Created once, at the first call, under the thread-safe initialisation of a local static.
  static const ZANIParmDictionary_var dictionary = CreateParmDictionary();
  return dictionary;
}
