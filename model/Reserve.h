// Room made ahead in a mapping model's containers by code that knows how many objects it is about
// to add, such as the document reader (internal). Only capacity changes: contents, order and every
// answer of the model stay as they are, and a count larger than what is then added only costs the
// unused room.
#ifndef KOVAMAPPINGSERVICES_MODEL_RESERVE_H_
#define KOVAMAPPINGSERVICES_MODEL_RESERVE_H_

#include <KOVAMappingServices/KOVAMappingReference.h>
#include <KOVAMappingServices/KOVAMappingTable.h>

#include <cstddef>

namespace kova::model {

// Room for count more instances in reference's vector and, once it indexes them, in its index.
void ReserveInstances(const KOVAMappingReference& reference, std::size_t count);

// Room for count more references in the table's vector and, once it indexes them, in its index.
void ReserveReferences(KOVAMappingTable& table, std::size_t count);

}  // namespace kova::model

#endif  // KOVAMAPPINGSERVICES_MODEL_RESERVE_H_
