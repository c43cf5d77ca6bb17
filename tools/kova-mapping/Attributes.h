// Attribute files: one JSON object, attribute name to value, turned into knowledge parameters.
//
//   "text"                       a string parameter
//   42                           an integer parameter (the value must fit 32 bits)
//   2.5, 1e3                     a real parameter (any other number)
//   true, false                  a boolean parameter
//   null                         an unset string parameter
//   [ ... ]                      a list parameter of the elements, each converted alike
//   {"time": SECONDS}            a time parameter (whole seconds since 1970-01-01 UTC)
//   {"enum": N}                  a parameter of the enumeration type
//   {"unset": "string" | "integer" | "real" | "boolean" | "time"}   an unset parameter of that type
#ifndef KOVA_TOOLS_KOVA_MAPPING_ATTRIBUTES_H_
#define KOVA_TOOLS_KOVA_MAPPING_ATTRIBUTES_H_

#include <KOVAMappingServices/ZANKnwParms.h>
#include <KOVAMappingServices/ZANOmxJson.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <map>
#include <string>

namespace kova::tool {

using AttributeMap = std::map<ZANUnicodeString, ZANIKnwParm_var>;

// The attributes of a JSON object of attribute names and values; throws as ReadAttributes does.
AttributeMap AttributesOf(const ZANOmxJsonObject& object, const std::string& name);

// The attributes of the file's text. Throws ToolError "NAME: REASON" for text that is not one
// JSON object or a value that has no parameter form, naming the attribute (and the list element).
AttributeMap ReadAttributes(const std::string& text, const std::string& name);

}  // namespace kova::tool

#endif  // KOVA_TOOLS_KOVA_MAPPING_ATTRIBUTES_H_
