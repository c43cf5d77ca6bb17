// The reference and instance readers of mapping documents of versions 6 to 12, on a parsed
// document (internal to the reader). They read each object as ZANOmxJsonObject's getters would,
// add each reference to the table once it is complete, and stop at the first failure, whose
// status they return; references added before it stay in the table.
#ifndef KOVA_SERIALISATION_READERCORE_H_
#define KOVA_SERIALISATION_READERCORE_H_

#include <KOVAMappingServices/KOVAMappingTable.h>
#include <KOVAMappingServices/ZANStatus.h>

#include <simdjson.h>

namespace kova::reader {

// Logs message with an empty context when the log is on.
void LogFailure(const char* message);

// The references of root, a document of version (6 to 12), into table.
HRESULT ReadReferences(simdjson::dom::object root, int version, KOVAMappingTable& table);

}  // namespace kova::reader

#endif  // KOVA_SERIALISATION_READERCORE_H_
