// KOVAPrivateAccess: the bridge from public handles to their private objects and back.
//
// What each call returns is stated on it: a share of the private object, a pointer the table keeps
// valid while any copy of it lives, or a new handle. Each call uses the objects it is given, under
// their thread rules (KOVAMappingTable.h).
#ifndef KOVAMAPPINGSERVICES_KOVAPRIVATEACCESS_H_
#define KOVAMAPPINGSERVICES_KOVAPRIVATEACCESS_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/KOVAMappingInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateReference.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAMappingReference.h>
#include <KOVAMappingServices/KOVAMappingTable.h>

#include <memory>

class KOVA_EXPORT KOVAPrivateAccess {
 public:
  // The private object itself, shared (no copy).
  static std::shared_ptr<KOVAMappingPrivateInstance> GetPrivate(const KOVAMappingInstance& instance);
  static std::shared_ptr<KOVAMappingPrivateReference> GetPrivate(const KOVAMappingReference& reference);
  // The table's private table; not owning.
  static KOVAMappingPrivateTable* GetPrivate(KOVAMappingTable& table);

  // A new handle on a fresh copy of the given private object.
  static KOVAMappingInstance GetPublic(KOVAMappingPrivateInstance privateInstance);
  static KOVAMappingReference GetPublic(KOVAMappingPrivateReference privateReference);
  // A table that takes over the given private table (allocated with new) and deletes it when its
  // last copy is destroyed. The private table must not be owned by another table already; if it
  // is, the returned table shares it with that owner instead of taking it over a second time.
  static KOVAMappingTable GetPublic(KOVAMappingPrivateTable& privateTable);
};

#endif  // KOVAMAPPINGSERVICES_KOVAPRIVATEACCESS_H_
