// Access of the mapping model's own code to the private data of objects, references and tables,
// without copies and without handing anything out (internal).
//
// The indexes themselves: model/ContainerIndex.h (one vector of handles), model/TableInstanceIndex.h
// (a table's references and all its instances), model/ObjectLinks.h (how objects reach them).
#ifndef KOVAMAPPINGSERVICES_MODEL_MAPPINGINDEX_H_
#define KOVAMAPPINGSERVICES_MODEL_MAPPINGINDEX_H_

#include <KOVAMappingServices/KOVAMappingInstance.h>
#include <KOVAMappingServices/KOVAMappingObject.h>
#include <KOVAMappingServices/KOVAMappingPrivateInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateObject.h>
#include <KOVAMappingServices/KOVAMappingPrivateReference.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAMappingReference.h>

#include <memory>
#include <vector>

#include "model/ContainerIndex.h"
#include "model/ObjectLinks.h"
#include "model/TableInstanceIndex.h"

namespace kova::model {

struct IndexAccess {
  static const KOVAMappingPrivateObject& Data(const KOVAMappingObject& handle) noexcept { return *handle.private_; }
  static const KOVAMappingPrivateObject* Pointer(const KOVAMappingObject& handle) noexcept {
    return handle.private_.get();
  }
  static KOVAMappingPrivateObject* MutablePointer(const KOVAMappingObject& handle) noexcept {
    return handle.private_.get();
  }
  // The handle's private object, shared.
  static const std::shared_ptr<KOVAMappingPrivateObject>& Share(const KOVAMappingObject& handle) noexcept {
    return handle.private_;
  }
  // Makes out share privateObject, as assigning another instance handle to it does (out may be an
  // element of a handed-out vector: its container is told, as by the assignment).
  static void ShareInto(KOVAMappingInstance& out, const std::shared_ptr<KOVAMappingPrivateObject>& privateObject) {
    if (out.private_ == privateObject) return;
    ReleasingSlot(out.private_.get(), &out);
    out.private_ = privateObject;
  }
  // Exchanges the objects of two handles of the same kind, as the model's own edits of its vectors
  // do (no reference count changes).
  static void Exchange(KOVAMappingObject& a, KOVAMappingObject& b) noexcept { a.private_.swap(b.private_); }
  static KOVAMappingPrivateReference& Reference(const KOVAMappingReference& handle) noexcept {
    return static_cast<KOVAMappingPrivateReference&>(*handle.private_);
  }
  static const ZANUnicodeString& KovaId(const KOVAMappingPrivateObject& data) noexcept { return data.kovaId_; }
  static const ZANUnicodeString& PlexoId(const KOVAMappingPrivateObject& data) noexcept { return data.plexoId_; }
  static bool IsLocal(const KOVAMappingPrivateObject& data) noexcept { return data.isLocal_; }
  static const ZANUnicodeString& KovaId(const KOVAMappingObject& handle) noexcept { return handle.private_->kovaId_; }
  static const ZANUnicodeString& PlexoId(const KOVAMappingObject& handle) noexcept { return handle.private_->plexoId_; }
  // The containers themselves, read-only: reading does not hand them out.
  static const std::vector<KOVAMappingInstance>& Instances(const KOVAMappingPrivateReference& reference) noexcept {
    return reference.instances_;
  }
  static const std::vector<KOVAMappingInstance>& Instances(const KOVAMappingReference& reference) noexcept {
    return Reference(reference).instances_;
  }
  static const std::vector<KOVAMappingReference>& References(const KOVAMappingPrivateTable& table) noexcept {
    return table.references_;
  }
  static bool ReferencesHandedOut(const KOVAMappingPrivateTable& table) noexcept { return table.referencesHandedOut_; }
  static bool InstancesHandedOut(const KOVAMappingReference& reference) noexcept {
    return Reference(reference).instancesHandedOut_;
  }

  // The index of a reference's instances, made if need be, and synced.
  static InstanceVectorIndex& InstanceIndex(KOVAMappingPrivateReference& reference) { return reference.Index(); }
  static InstanceVectorIndex* InstanceIndexIfMade(const KOVAMappingPrivateReference& reference) noexcept {
    return reference.index_.get();
  }
  // The indexes of a table, made if need be (not synced: see TableIndexes).
  static TableIndexes& Indexes(KOVAMappingPrivateTable& table) { return table.Indexes(); }
  static std::vector<KOVAMappingReference>& ReferenceVector(KOVAMappingPrivateTable& table) noexcept {
    return table.references_;
  }
};

}  // namespace kova::model

#endif  // KOVAMAPPINGSERVICES_MODEL_MAPPINGINDEX_H_
