// The indexes of a table: its references, and every instance of every reference, in table order
// (internal).
//
// The instance index maps each kOVA id and Plexo id of an instance of the table to the first
// instance holding it in table order (references in order, each reference's instances in order).
// It has one entry per instance of each reference of the table, holding the instance's private
// object (shared: a look-up shares its answer from here) and the container it is in. It keeps no
// positions, so removals and insertions elsewhere never renumber it; when one id is held by several
// entries, their table order is worked out from the containers' own maps.
//
// It follows the model as the containers report to it:
//  - an instance's id changes: through the instance's links to its containers, then the
//    containers' references' links to the tables (model/ContainerIndex.cpp);
//  - a container syncs, appends or removes: the container reports each instance placed or removed;
//  - the table's reference vector changes: each reference placed or removed brings or takes all the
//    entries of its container.
// Handed-out instance vectors that can grow unseen, and ones a handle reported as changed in place,
// are kept in a short list that every instance look-up checks first.
//
// Thread safety: none; it is used by the thread that uses the table.
#ifndef KOVAMAPPINGSERVICES_MODEL_TABLEINSTANCEINDEX_H_
#define KOVAMAPPINGSERVICES_MODEL_TABLEINSTANCEINDEX_H_

#include <KOVAMappingServices/KOVAMappingPrivateObject.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "model/ContainerIndex.h"
#include "model/PositionMap.h"

class KOVAMappingPrivateReference;
class KOVAMappingPrivateTable;

namespace kova::model {

class TableInstanceIndex;

// The indexes of one private table. references is made when the table is first changed or asked,
// instances at the first instance look-up.
class TableIndexes {
 public:
  explicit TableIndexes(KOVAMappingPrivateTable& table);
  ~TableIndexes();
  TableIndexes(const TableIndexes&) = delete;
  TableIndexes& operator=(const TableIndexes&) = delete;

  // The reference index, made and synced.
  ReferenceVectorIndex& References();
  // The instance index, made and brought up to date (references synced first).
  TableInstanceIndex& Instances();
  // Null until made.
  ReferenceVectorIndex* ReferencesIfMade() noexcept { return references_.get(); }
  TableInstanceIndex* InstancesIfMade() noexcept { return instances_.get(); }
  // A reference whose instances are at least half of the instance index joins or leaves the
  // table: taking them in or out one by one would cost about as much as making the index again,
  // so the index goes, to be made again by the next instance look-up (a host that removes and
  // adds back such a reference pays nothing until it looks up).
  bool OutweighsInstances(const ContainerIndex& instances) const noexcept;
  void DropInstances() noexcept { instances_.reset(); }

 private:
  TableInstanceIndex& UpdatedInstances();

  KOVAMappingPrivateTable& table_;
  std::unique_ptr<ReferenceVectorIndex> references_;
  std::unique_ptr<TableInstanceIndex> instances_;
};

class TableInstanceIndex {
 public:
  explicit TableInstanceIndex(TableIndexes& table) : table_(table) {}
  TableInstanceIndex(const TableInstanceIndex&) = delete;
  TableInstanceIndex& operator=(const TableInstanceIndex&) = delete;

  // Every instance of every reference at its positions in the table's synced references.
  void Build();

  // One occurrence of the instance at position of container was placed / removed.
  void Placed(ContainerIndex& container, std::uint32_t position);
  void Removed(KOVAMappingPrivateObject& object, ContainerIndex& container);
  // One occurrence of a reference whose instances are container was placed in / removed from the
  // table's references.
  void ContainerPlaced(ContainerIndex& container);
  void ContainerRemoved(ContainerIndex& container);
  // The entries of container (of object only, when it is given) take their places again: the
  // table order of an object or reference that stays after one of its occurrences left has moved.
  void Reseat(ContainerIndex& container, const KOVAMappingPrivateObject* object);
  // Around a change of object's ids; object is in container.
  void BeforeChange(KOVAMappingPrivateObject& object, ContainerIndex& container, unsigned fields);
  void AfterChange(unsigned fields);
  // container is to be checked (synced) before the next look-up / no longer (its reference left).
  void Watch(ContainerIndex& container);
  void Unwatch(ContainerIndex& container);
  // Syncs the watched containers, and stops watching those that can no longer change unseen.
  void CheckWatched();
  bool NothingWatched() const noexcept { return watched_.empty(); }
  // The number of entries.
  std::size_t Entries() const noexcept { return entries_.size() - free_.size(); }

  // For the instances of container (a reference of this table): whether one is equal to data by the
  // either-id rule, and the first position of one.
  bool HasEqualIn(const ContainerIndex& container, const KOVAMappingPrivateObject& data) const;
  std::uint32_t FirstEqualIn(const ContainerIndex& container, const KOVAMappingPrivateObject& data) const;

  // The private object of the first instance whose kOVA id (Plexo id) is id, or nullptr.
  const std::shared_ptr<KOVAMappingPrivateObject>* FindKova(const ZANUnicodeString& id) const;
  const std::shared_ptr<KOVAMappingPrivateObject>* FindPlexo(const ZANUnicodeString& id) const;

 private:
  struct Entry {
    std::shared_ptr<KOVAMappingPrivateObject> object;
    ContainerIndex* container = nullptr;
  };

  template <bool kKova>
  struct KeyAt {
    const TableInstanceIndex* index;
    const ZANUnicodeString& operator()(std::uint32_t entry) const;
  };
  struct IsEarlier {
    TableInstanceIndex* index;
    bool operator()(std::uint32_t a, std::uint32_t b) const;
  };

  void Add(std::shared_ptr<KOVAMappingPrivateObject> object, ContainerIndex& container);
  // f(entry) for every entry of object in container (one per occurrence).
  template <class F>
  void ForEachEntryOf(const KOVAMappingPrivateObject& object, const ContainerIndex& container, F&& f) const;
  template <class Op>
  void ForKeys(std::uint32_t entry, unsigned fields, Op&& op);
  void Key(std::uint32_t entry, unsigned fields);
  void Unkey(std::uint32_t entry, unsigned fields);

  TableIndexes& table_;
  std::vector<Entry> entries_;
  std::vector<std::uint32_t> free_;
  PositionMap byKova_;
  PositionMap byPlexo_;
  std::vector<ContainerIndex*> watched_;
  // Entries of the object being changed, between BeforeChange and AfterChange.
  std::vector<std::uint32_t> changing_;
  // The entry of the last look-up's answer: a host mostly changes what it just found.
  mutable std::uint32_t lastFound_ = PositionMap::kNone;
};

// Nothing to bring up to date, the common case, is decided here without a call.
inline TableInstanceIndex& TableIndexes::Instances() {
  if (instances_ && references_ && !references_->NeedsSync() && instances_->NothingWatched()) return *instances_;
  return UpdatedInstances();
}

}  // namespace kova::model

#endif  // KOVAMAPPINGSERVICES_MODEL_TABLEINSTANCEINDEX_H_
