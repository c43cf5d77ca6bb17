// Parameters of the knowledge engine: typed attribute values.
//
// A parameter (ZANIKnwParm) has a type (possibly null), a value object (ZANIKnwValue, possibly
// null) and an is-set flag. A value object holds one datum of one kind (text, 32-bit integer,
// real, boolean, time, or a component such as a list) and can be read as any kind:
//  - reading the kind it holds gives the datum;
//  - the numeric kinds convert among themselves: an integer or boolean read as a real is exact, a
//    real read as an integer is truncated toward zero and clamped to the 32-bit range (NaN reads
//    as 0), an integer or real read as a boolean is 1 when non-zero, a boolean read as an integer
//    is the boolean's value;
//  - any other reading gives that kind's default: the empty text, 0, 0.0, false, the epoch, or a
//    null handle.
//
// A list (ZANIList) is a component holding element handles, indexed from 1; a list-typed
// parameter holds a value object whose AsObject() is the list. Elements are usually parameters.
//
// Parameters, values and lists never change once made (see ZANKnwBuilder.h), so any thread may
// read them.
#ifndef KOVAMAPPINGSERVICES_ZANKNWPARMS_H_
#define KOVAMAPPINGSERVICES_ZANKNWPARMS_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/ZANComponentHandles.h>
#include <KOVAMappingServices/ZANKnwTypes.h>
#include <KOVAMappingServices/ZANTime.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <cstdint>

class ZANIKnwValue;
class ZANIKnwParm;
class ZANIList;
using ZANIKnwValue_var = ZANVar<ZANIKnwValue>;
using ZANIKnwParm_var = ZANVar<ZANIKnwParm>;
using ZANIList_var = ZANVar<ZANIList>;

class KOVA_EXPORT ZANIKnwValue {
 public:
  static constexpr const char* kVarName = "ZANIKnwValue_var";
  virtual ~ZANIKnwValue();

  virtual ZANUnicodeString AsString() const = 0;
  virtual std::int32_t AsInteger() const = 0;
  virtual double AsReal() const = 0;
  virtual ZANKnw::Boolean AsBoolean() const = 0;
  virtual ZANTime AsTime() const = 0;
  // The component held (a list, for a list value), or a null handle.
  virtual ZANBaseUnknown_var AsObject() const = 0;
};

class KOVA_EXPORT ZANIKnwParm {
 public:
  static constexpr const char* kVarName = "ZANIKnwParm_var";
  virtual ~ZANIKnwParm();

  // The parameter's type, or a null handle when it has none.
  virtual ZANIType_var GetType() const = 0;
  // The value object, or a null handle when it has none.
  virtual ZANIKnwValue_var GetValue() const = 0;
  // Non-zero when the parameter is set.
  virtual ZANKnw::Boolean IsSet() const = 0;
};

class KOVA_EXPORT ZANIList {
 public:
  static constexpr const char* kVarName = "ZANIList_var";
  virtual ~ZANIList();

  virtual std::int32_t Size() const = 0;
  // The element at index 1 to Size(); a null handle for any other index (or a null element).
  virtual ZANBaseUnknown_var GetElement(std::int32_t index) const = 0;
};

#endif  // KOVAMAPPINGSERVICES_ZANKNWPARMS_H_
