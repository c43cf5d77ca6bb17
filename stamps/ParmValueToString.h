// The text of an attribute value, as it goes into a stamp text and into the stamp log lines
// (internal to the stamp computation; the unit tests compile it in to call it directly).
#ifndef KOVA_STAMPS_PARMVALUETOSTRING_H_
#define KOVA_STAMPS_PARMVALUETOSTRING_H_

#include <KOVAMappingServices/ZANKnwParms.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <string>

namespace kova::stamps {

// The value text of parm, chosen by its type, first test that holds:
//   string type -> the text; integer type -> decimal ("-42"); real type -> one decimal ("2.5",
//   "3.0"); boolean type -> "TRUE" / "FALSE"; kind of the time type -> milliseconds since the epoch
//   (seconds * 1000, wrapping around in 64 bits); kind of the enumeration type -> decimal; kind of
//   the list type -> the element texts joined by U+0007, every element written with the text
//   chosen from the type of element 1 (a list inside a list is not recognised).
// Anything else gives the empty text: no type, an unrecognised type, an empty or null list, a list
// element that is null or not a parameter, a first element without a type or of a list type.
// A null parm, a null value object (of parm or of a list element) or a null parameter dictionary
// raise ZANNullVarError. n has no effect on the text.
ZANUnicodeString ParmValueToString(const ZANIKnwParm_var& parm, int n);

// Appends to out the bytes ParmValueToString returns for parm, without a string of its own.
void AppendParmValueText(std::string& out, const ZANIKnwParm_var& parm);

}  // namespace kova::stamps

#endif  // KOVA_STAMPS_PARMVALUETOSTRING_H_
