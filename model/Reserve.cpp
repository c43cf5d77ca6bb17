#include "model/Reserve.h"

#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <memory>

#include "model/MappingIndex.h"

namespace kova::model {

void ReserveInstances(const KOVAMappingReference& reference, std::size_t count) {
  KOVAMappingPrivateReference& data = IndexAccess::Reference(reference);
  std::vector<KOVAMappingInstance>& instances = IndexAccess::InstancesToReserve(data);
  instances.reserve(instances.size() + count);
  std::unique_ptr<InstanceVectorIndex>& index = IndexAccess::IndexToReserve(data);
  if (!index) index = std::make_unique<InstanceVectorIndex>();
  index->Expect(instances.size() + count);
}

void ReserveReferences(KOVAMappingTable& table, std::size_t count) {
  KOVAMappingPrivateTable& data = *KOVAPrivateAccess::GetPrivate(table);
  std::vector<KOVAMappingReference>& references = IndexAccess::ReferencesToReserve(data);
  references.reserve(references.size() + count);
  IndexAccess::IndexesToReserve(data).references.Expect(references.size() + count);
}

}  // namespace kova::model
