// The content of a mapping table as one text, for comparing tables.
#ifndef KOVA_TESTS_SUPPORT_TABLECONTENT_H_
#define KOVA_TESTS_SUPPORT_TABLECONTENT_H_

#include <KOVAMappingServices/KOVAMappingTable.h>

#include <string>

namespace kova::test {

// Every field of every object, in table order, one line each: what a round trip must keep.
std::string DescribeContent(KOVAMappingTable& table);

}  // namespace kova::test

#endif  // KOVA_TESTS_SUPPORT_TABLECONTENT_H_
