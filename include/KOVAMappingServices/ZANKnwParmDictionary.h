// The parameter dictionary: the types that parameter values of time, enumeration and list kinds
// are kinds of. They are the "Time", "Enumeration" and "List" types of the type dictionary
// (ZANKnwTypes.h), the same type objects.
#ifndef KOVAMAPPINGSERVICES_ZANKNWPARMDICTIONARY_H_
#define KOVAMAPPINGSERVICES_ZANKNWPARMDICTIONARY_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/ZANComponentHandles.h>
#include <KOVAMappingServices/ZANKnwTypes.h>

class ZANIParmDictionary;
using ZANIParmDictionary_var = ZANVar<ZANIParmDictionary>;

class KOVA_EXPORT ZANIParmDictionary {
 public:
  static constexpr const char* kVarName = "ZANIParmDictionary_var";
  virtual ~ZANIParmDictionary();

  // Values read as ZANTime.
  virtual ZANIType_var GetTimeType() const = 0;
  // Enumerations: values read as integers.
  virtual ZANIType_var GetEnumType() const = 0;
  // Values read as a ZANIList.
  virtual ZANIType_var GetListType() const = 0;
};

class KOVA_EXPORT ZANKnwGlobalFunctions {
 public:
  // The process's parameter dictionary, created at the first call (thread-safe). Every call returns
  // a handle to the same dictionary.
  static ZANIParmDictionary_var GetParmDictionary();
};

#endif  // KOVAMAPPINGSERVICES_ZANKNWPARMDICTIONARY_H_
