// Generated objects put into a KOVAMappingTable with the table's own AddReference and
// AddInstance, so that the table's identity rules decide what it keeps.
#ifndef KOVA_GENERATOR_TABLE_H_
#define KOVA_GENERATOR_TABLE_H_

#include <KOVAGenerator/Generator.h>
#include <KOVAMappingServices/KOVAMappingTable.h>

namespace kova::generator {

struct GeneratedTable {
  KOVAMappingTable table;
  int refusedReferences = 0;  // refused by the either-id rule or the root rule
  int refusedInstances = 0;   // refused by the either-id rule within their reference
};

// The objects of options in a table, made with the constructors of KOVAMappingReference and
// KOVAMappingInstance from their kOVA id, Plexo id, stamp, custom data, IsLocal and, for
// instances, RefId; a CE stamp and IsSetKSS have no place in a table and are left out. The instances of a
// refused reference are not offered (they are not counted as refused). Throws BadOptions.
GeneratedTable BuildTable(const Options& options);

}  // namespace kova::generator

#endif  // KOVA_GENERATOR_TABLE_H_
