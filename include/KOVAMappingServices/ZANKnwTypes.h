// Types of the knowledge engine and the type dictionary.
//
// A type has a name and at most one parent; "a kind of" follows the parent chain (a type is a
// kind of itself and of every ancestor). Identity, not the name, decides: a type that merely has
// the name of another is not a kind of it. The literal tests (IsString, IsInteger, IsReal,
// IsBoolean) are true for the standard literal type and every type derived from it.
//
// The type dictionary (ZANGlobalFunctions::GetTypeDictionary) is created once per process, at the
// first call (thread-safe), and holds these standard types:
//
//   "String", "Integer", "Real", "Boolean"     the literal types (no parent)
//   "Length", "Mass"                           magnitudes, kinds of "Real"
//   "Time"                                     time values (ZANTime); no literal test holds
//   "Enumeration"                              enumerations, whose values are integers; no literal
//                                              test holds (a host derives its own enumerations
//                                              from it)
//   "List"                                     list values (ZANIList)
//   "GRDEntity"                                root of the platform's object types
//   "GRDReference", "GRDRepReference"          references (kinds of "GRDEntity")
//   "GRDInstance", "GRDRepInstance"            instances and representation instances (each a
//                                              direct kind of "GRDEntity", unrelated to each other)
//
// A host adds its own types with ZANKnwBuilder::CreateType (ZANKnwBuilder.h) and
// ZANITypeDictionary::RegisterType.
#ifndef KOVAMAPPINGSERVICES_ZANKNWTYPES_H_
#define KOVAMAPPINGSERVICES_ZANKNWTYPES_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/ZANComponentHandles.h>
#include <KOVAMappingServices/ZANStatus.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <cstdint>

namespace ZANKnw {
// The engine's boolean: zero is false, any other value is true.
using Boolean = std::int16_t;
}  // namespace ZANKnw

class ZANIType;
class ZANITypeDictionary;
using ZANIType_var = ZANVar<ZANIType>;
using ZANITypeDictionary_var = ZANVar<ZANITypeDictionary>;

class KOVA_EXPORT ZANIType {
 public:
  static constexpr const char* kVarName = "ZANIType_var";
  virtual ~ZANIType();

  virtual ZANUnicodeString GetName() const = 0;
  // The parent type, or a null handle for a root type.
  virtual ZANIType_var GetParent() const = 0;
  // True when other is this type or one of its ancestors; false for a null handle.
  virtual bool IsaKindOf(const ZANIType_var& other) const = 0;

  virtual ZANKnw::Boolean IsString() const = 0;
  virtual ZANKnw::Boolean IsInteger() const = 0;
  virtual ZANKnw::Boolean IsReal() const = 0;
  virtual ZANKnw::Boolean IsBoolean() const = 0;
};

class KOVA_EXPORT ZANITypeDictionary {
 public:
  static constexpr const char* kVarName = "ZANITypeDictionary_var";
  virtual ~ZANITypeDictionary();

  // S_OK and type = the registered type of that name; E_FAIL (type untouched) when there is none.
  virtual HRESULT FindType(const ZANUnicodeString& name, ZANIType_var& type) const = 0;
  // Registers type under its name. E_FAIL, and nothing registered, for a null handle, an empty
  // name, or a name already registered. Safe to call from several threads.
  virtual HRESULT RegisterType(const ZANIType_var& type) = 0;
};

class KOVA_EXPORT ZANGlobalFunctions {
 public:
  // The process's type dictionary, created with the standard types at the first call. Every call
  // returns a handle to the same dictionary.
  static ZANITypeDictionary_var GetTypeDictionary();
};

#endif  // KOVAMAPPINGSERVICES_ZANKNWTYPES_H_
