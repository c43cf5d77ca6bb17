// Platform objects seen by the knowledge engine.
//
// An object component may offer ZANIInstance (it is an instance of a type), ZANIKnwObject (it has
// named attributes, each held by a parameter), or both. ZANKnwBuilder::MakeObject
// (ZANKnwBuilder.h) makes all three variants.
#ifndef KOVAMAPPINGSERVICES_ZANKNWOBJECTS_H_
#define KOVAMAPPINGSERVICES_ZANKNWOBJECTS_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/ZANComponentHandles.h>
#include <KOVAMappingServices/ZANKnwLists.h>
#include <KOVAMappingServices/ZANKnwParms.h>
#include <KOVAMappingServices/ZANKnwTypes.h>
#include <KOVAMappingServices/ZANStatus.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

class ZANIInstance;
class ZANIKnwObject;
using ZANIInstance_var = ZANVar<ZANIInstance>;
using ZANIKnwObject_var = ZANVar<ZANIKnwObject>;

class KOVA_EXPORT ZANIInstance {
 public:
  static constexpr const char* kVarName = "ZANIInstance_var";
  virtual ~ZANIInstance();

  // The object's type, or a null handle when it has none.
  virtual ZANIType_var GetType() const = 0;
};

// Attributes are kept by name (one parameter per name, names in ascending order). A parameter
// handle stored for a name may be null. Reading from several threads is safe; changing an object
// while another thread reads it is not.
class KOVA_EXPORT ZANIKnwObject {
 public:
  static constexpr const char* kVarName = "ZANIKnwObject_var";
  virtual ~ZANIKnwObject();

  // S_OK and parm = the attribute's parameter; E_FAIL (parm untouched) when there is no such name.
  virtual HRESULT GetAttribute(const ZANUnicodeString& name, ZANIKnwParm_var& parm) const = 0;
  // The attribute names, ascending.
  virtual ZANListValZANUnicodeString GetAttributeNames() const = 0;
  // Adds the attribute, or replaces the parameter of an existing one.
  virtual void SetAttribute(const ZANUnicodeString& name, const ZANIKnwParm_var& parm) = 0;
  // Removes the attribute; E_FAIL when there is no such name.
  virtual HRESULT RemoveAttribute(const ZANUnicodeString& name) = 0;
};

class KOVA_EXPORT ZANKnwObjectAttrReadServices {
 public:
  // Reads the attributes requested, in the requested order: for each requested name that the
  // object has, the name is appended to names and its parameter to parms. Names the object does
  // not have are skipped (nothing is appended for them, so parms can be shorter than requested).
  // A name requested twice is returned twice. The out lists are appended to, not cleared.
  // A null object gives E_FAIL with both lists untouched; otherwise S_OK.
  static HRESULT GetListOfAttributes(const ZANIKnwObject_var& object, const ZANListValZANUnicodeString& requested,
                                     ZANListValZANUnicodeString& names, ZANListValZANIKnwParm_var& parms);
};

#endif  // KOVAMAPPINGSERVICES_ZANKNWOBJECTS_H_
