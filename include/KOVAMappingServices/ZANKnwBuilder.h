// ZANKnwBuilder: how a host (or a test) describes its objects to the knowledge engine.
//
// Types
//   ZANIType_var mass = ZANKnwBuilder::FindType("Mass");                  // a standard type
//   ZANIType_var color = ZANKnwBuilder::CreateType("Color", ZANKnwBuilder::FindType("Enumeration"));
//   ZANGlobalFunctions::GetTypeDictionary()->RegisterType(color);           // optional: findable by name
// A created type inherits the literal tests of its parent and is a kind of every ancestor.
//
// Parameters (every Make...Parm takes the value, whether it is set, and optionally its type; the
// default type is the standard type of that kind). An unset parameter keeps the value it is given.
//   ZANIKnwParm_var a = ZANKnwBuilder::MakeStringParm("A1");
//   ZANIKnwParm_var b = ZANKnwBuilder::MakeRealParm(2.5, true, mass);
//   ZANIKnwParm_var c = ZANKnwBuilder::MakeEnumParm(2, true, color);
//   ZANIKnwParm_var d = ZANKnwBuilder::MakeTimeParm(ZANTime(1700000000));
//   ZANIKnwParm_var e = ZANKnwBuilder::MakeListParm(ZANKnwBuilder::MakeList({a, a}));
//   ZANIKnwParm_var f = ZANKnwBuilder::MakeUnsetParm(ZANKnwBuilder::FindType("String"));
//   ZANIKnwParm_var g = ZANKnwBuilder::MakeParm(type, value, isSet);  // any type and value, nulls included
//
// Objects
//   ZANBaseUnknown_var part = ZANKnwBuilder::MakeObject(ZANKnwBuilder::FindType("GRDReference"),
//                                                       {{"Mass", b}, {"Name", a}});
// The object offers ZANIInstance and ZANIKnwObject unless the facets say otherwise.
//
// Every Make... and CreateType returns a handle to a new component, which the caller's handles own;
// the builder keeps nothing. Any thread may call the builder; FindType reads the type dictionary,
// which is safe from several threads (ZANKnwTypes.h).
#ifndef KOVAMAPPINGSERVICES_ZANKNWBUILDER_H_
#define KOVAMAPPINGSERVICES_ZANKNWBUILDER_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/ZANComponentHandles.h>
#include <KOVAMappingServices/ZANKnwParms.h>
#include <KOVAMappingServices/ZANKnwTypes.h>
#include <KOVAMappingServices/ZANTime.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <cstdint>
#include <map>
#include <vector>

// Which interfaces a made object offers.
enum class ZANKnwObjectFacets {
  InstanceAndKnowledgeObject,  // ZANIInstance and ZANIKnwObject
  InstanceOnly,                // ZANIInstance only: no attributes can be read
  KnowledgeObjectOnly,         // ZANIKnwObject only: not an instance, has no type
};

class KOVA_EXPORT ZANKnwBuilder {
 public:
  // --- Types -----------------------------------------------------------------------------------
  // The type registered under name in the type dictionary, or a null handle.
  static ZANIType_var FindType(const ZANUnicodeString& name);
  // A new type (not registered) deriving from parent (a root type when parent is null).
  static ZANIType_var CreateType(const ZANUnicodeString& name, const ZANIType_var& parent);

  // --- Values ----------------------------------------------------------------------------------
  static ZANIKnwValue_var MakeStringValue(const ZANUnicodeString& value);
  static ZANIKnwValue_var MakeIntegerValue(std::int32_t value);
  static ZANIKnwValue_var MakeRealValue(double value);
  static ZANIKnwValue_var MakeBooleanValue(ZANKnw::Boolean value);
  static ZANIKnwValue_var MakeTimeValue(ZANTime value);
  // A value holding a component (a list, for list-typed parameters); the handle may be null.
  static ZANIKnwValue_var MakeObjectValue(const ZANBaseUnknown_var& object);

  // --- Lists -----------------------------------------------------------------------------------
  // A list of the given element handles (element 1 first). Elements may be null or be components
  // that are not parameters.
  static ZANIList_var MakeList(const std::vector<ZANBaseUnknown_var>& elements);

  // --- Parameters ------------------------------------------------------------------------------
  // When type is null the parameter gets the standard type of its kind: "String", "Integer",
  // "Real", "Boolean", "Time", "Enumeration", "List". A given type is used as it is, even if it is
  // not of that kind (the value is then read by the rules of ZANKnwParms.h).
  static ZANIKnwParm_var MakeStringParm(const ZANUnicodeString& value, bool isSet = true,
                                        const ZANIType_var& type = nullptr);
  static ZANIKnwParm_var MakeIntegerParm(std::int32_t value, bool isSet = true, const ZANIType_var& type = nullptr);
  static ZANIKnwParm_var MakeRealParm(double value, bool isSet = true, const ZANIType_var& type = nullptr);
  static ZANIKnwParm_var MakeBooleanParm(ZANKnw::Boolean value, bool isSet = true, const ZANIType_var& type = nullptr);
  static ZANIKnwParm_var MakeTimeParm(ZANTime value, bool isSet = true, const ZANIType_var& type = nullptr);
  static ZANIKnwParm_var MakeEnumParm(std::int32_t value, bool isSet = true, const ZANIType_var& type = nullptr);
  static ZANIKnwParm_var MakeListParm(const ZANIList_var& list, bool isSet = true, const ZANIType_var& type = nullptr);
  // An unset parameter of type holding its kind's default value: "" for string types, 0 for
  // integer and enumeration types, 0.0 for real types, false for boolean types, the epoch for
  // time types, an empty list for list types, and no value (null) for any other type or a null
  // type.
  static ZANIKnwParm_var MakeUnsetParm(const ZANIType_var& type);
  // A parameter of exactly this type, value and flag; either handle may be null.
  static ZANIKnwParm_var MakeParm(const ZANIType_var& type, const ZANIKnwValue_var& value, bool isSet);

  // --- Objects ---------------------------------------------------------------------------------
  // An object of type (may be null: an instance without a type) with the given attributes
  // (parameter handles may be null). With InstanceOnly the attributes are not kept.
  static ZANBaseUnknown_var MakeObject(const ZANIType_var& type,
                                       const std::map<ZANUnicodeString, ZANIKnwParm_var>& attributes = {},
                                       ZANKnwObjectFacets facets = ZANKnwObjectFacets::InstanceAndKnowledgeObject);
};

#endif  // KOVAMAPPINGSERVICES_ZANKNWBUILDER_H_
