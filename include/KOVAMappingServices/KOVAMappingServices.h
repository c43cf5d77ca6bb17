// KOVAMappingServices: the umbrella header. Including it gives every public class of the library.
// Each header states its own rules of threads, ownership and failure; those of tables and their
// objects are in KOVAMappingTable.h.
#ifndef KOVAMAPPINGSERVICES_KOVAMAPPINGSERVICES_H_
#define KOVAMAPPINGSERVICES_KOVAMAPPINGSERVICES_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/ZANStatus.h>

// Platform layer.
#include <KOVAMappingServices/QORSysServices.h>
#include <KOVAMappingServices/ZANBaseUnknown.h>
#include <KOVAMappingServices/ZANEnvironment.h>
#include <KOVAMappingServices/ZANOmxJson.h>
#include <KOVAMappingServices/ZANPLMID.h>
#include <KOVAMappingServices/ZANSysCompression.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

// Mapping model.
#include <KOVAMappingServices/KOVAMappingInstance.h>
#include <KOVAMappingServices/KOVAMappingObject.h>
#include <KOVAMappingServices/KOVAMappingPrivateInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateObject.h>
#include <KOVAMappingServices/KOVAMappingPrivateReference.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAMappingReference.h>
#include <KOVAMappingServices/KOVAMappingTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

// Diagnostics, stamps and documents.
#include <KOVAMappingServices/KOVAKSSVersioning.h>
#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVASynchroStampServices.h>

#endif  // KOVAMAPPINGSERVICES_KOVAMAPPINGSERVICES_H_
