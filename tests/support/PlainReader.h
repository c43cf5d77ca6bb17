// A document reader written only with the public JSON object getters and KOVAKSSVersioning, step
// by step as the reading of mapping documents is defined: the reference that the library's own
// reader (which reads straight from one parse of the text) is compared with, in
// tests and in the document fuzz target.
#ifndef KOVA_TESTS_SUPPORT_PLAINREADER_H_
#define KOVA_TESTS_SUPPORT_PLAINREADER_H_

#include <KOVAMappingServices/KOVAMappingTable.h>
#include <KOVAMappingServices/ZANBaseUnknown.h>
#include <KOVAMappingServices/ZANStatus.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

namespace kova::test::plain {

// As KOVAMappingParser::TranslateToMappingTable: the same status, table and log lines.
HRESULT Read(ZANUnicodeString text, const ZANBaseUnknown& owner, KOVAMappingTable& table);

}  // namespace kova::test::plain

#endif  // KOVA_TESTS_SUPPORT_PLAINREADER_H_
