// The look-ups of a private table, taking the id by reference so that the public table's members
// reach them without another copy of the id (internal).
#ifndef KOVAMAPPINGSERVICES_MODEL_TABLELOOKUPS_H_
#define KOVAMAPPINGSERVICES_MODEL_TABLELOOKUPS_H_

#include <KOVAMappingServices/KOVAMappingInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAMappingReference.h>
#include <KOVAMappingServices/ZANStatus.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

namespace kova::model {

// The first reference (instance) of the table, in table order, whose kOVA id (byKova) or Plexo id
// is id, shared into out; E_FAIL leaves out untouched.
HRESULT FindReference(KOVAMappingPrivateTable& table, const ZANUnicodeString& id, bool byKova,
                      KOVAMappingReference& out);
HRESULT FindInstance(KOVAMappingPrivateTable& table, const ZANUnicodeString& id, bool byKova, KOVAMappingInstance& out);

}  // namespace kova::model

#endif  // KOVAMAPPINGSERVICES_MODEL_TABLELOOKUPS_H_
