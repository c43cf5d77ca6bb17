#include "model/Reserve.h"

#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include "model/MappingIndex.h"

namespace kova::model {

void ReserveInstances(const KOVAMappingReference& reference, std::size_t count) {
  KOVAMappingPrivateReference& data = IndexAccess::Reference(reference);
  InstanceVectorIndex& index = IndexAccess::InstanceIndex(data);
  index.ReserveRoom(IndexAccess::Instances(data).size() + count);
}

void ReserveReferences(KOVAMappingTable& table, std::size_t count) {
  KOVAMappingPrivateTable& data = *KOVAPrivateAccess::GetPrivate(table);
  ReferenceVectorIndex& index = IndexAccess::Indexes(data).References();
  index.ReserveRoom(IndexAccess::References(data).size() + count);
}

}  // namespace kova::model
