// The index of one vector of mapping handles: a table's references or a reference's instances
// (internal).
//
// Every answer of the model is defined by a walk of its vectors in order (first match wins). A
// container index gives the same answers from what it keeps in step with the vector:
//  - the synced elements: the private object at each position, as of the last sync;
//  - from 16 elements on, two position maps (kOVA id, Plexo id -> positions, earliest first),
//    except for the instances of a reference held by a table with an instance index: that index
//    already holds every id of them, and answers for the container;
//  - for references, the first position whose object is not local (the root rule).
//
// How it stays in step, without any state shared between containers:
//  - Changes of ids and of the is-local flag reach it through the objects' links
//    (model/ObjectLinks.h): the object's setters unkey it before the change and key it again after,
//    in every container that holds it.
//  - The container's own members (append, removal) update the index as they change the vector.
//  - A vector handed out to callers (GetReferences(), GetInstances()) can be changed in place at any
//    later time. Every element change that replaces or destroys a handle that was in the vector
//    (assignment through any handle type, swap, sort, erase, clear, pop_back, shrinking, moving to
//    a new buffer) runs the handle's assignment or destructor, which tells the container through
//    the released object's link: the container is then dirty. A change that only constructs new
//    handles past the synced end (push_back or insert within the capacity, which includes every
//    append to an empty vector) runs no code of the library on an element the container knows; it
//    is seen by comparing the vector's size and buffer with the synced ones, which every operation
//    on the container does, in constant time, while the vector is handed out.
//  - Sync() brings a changed container up to date: one pass comparing the element pointers with the
//    synced ones (no hashing, no text read), then work in proportion to the positions that changed
//    (and, when the size changed, one pass renumbering the positions in the maps).
//
// Thread safety: none; a container is used by the thread that uses its owner.
#ifndef KOVAMAPPINGSERVICES_MODEL_CONTAINERINDEX_H_
#define KOVAMAPPINGSERVICES_MODEL_CONTAINERINDEX_H_

#include <KOVAMappingServices/KOVAMappingInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateObject.h>
#include <KOVAMappingServices/KOVAMappingReference.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "model/PositionMap.h"

class KOVAMappingPrivateReference;

namespace kova::model {

class TableIndexes;
class TableInstanceIndex;

// Vectors shorter than this are walked, not hashed.
inline constexpr std::size_t kWalkBelow = 16;

// Which of an object's fields a change touches.
enum Field : unsigned { kKovaField = 1, kPlexoField = 2, kLocalField = 4 };

class ContainerIndex {
 public:
  static constexpr std::uint32_t kNone = PositionMap::kNone;
  enum class Kind : std::uint8_t { kInstances, kReferences };

  ContainerIndex(const ContainerIndex&) = delete;
  ContainerIndex& operator=(const ContainerIndex&) = delete;
  virtual ~ContainerIndex();

  // For instances: the private reference whose vector this is. For references: the table's indexes.
  KOVAMappingPrivateReference* OwnerReference() const noexcept { return ownerReference_; }
  TableIndexes* OwnerTable() const noexcept { return ownerTable_; }

  // --- Keeping in step ------------------------------------------------------------------------

  // Whether the vector may differ from the synced elements (only a handed-out vector can).
  bool NeedsSync() const noexcept {
    return dirty_ || (handedOut_ && (VectorSize() != synced_.size() || VectorData() != syncedData_));
  }
  void Sync() {
    if (NeedsSync()) SyncNow();
  }
  // The vector is being handed out to a caller: from now on it may change without the owner.
  void HandOut();
  // A handed-out instance vector that can gain elements unseen (room left, or empty): tables
  // holding its reference check it before each instance look-up.
  bool CanGrowUnseen() const noexcept { return handedOut_ && (VectorSize() == 0 || VectorCapacity() > VectorSize()); }
  // Called through a link when a handle at slot releases one of the synced objects.
  void SlotReleased(const void* slot);
  // An object this container links is being destroyed: its positions are forgotten.
  void ObjectDying(KOVAMappingPrivateObject& object);
  // Around a change of fields of object, which this container links.
  void BeforeChange(KOVAMappingPrivateObject& object, unsigned fields);
  void AfterChange(KOVAMappingPrivateObject& object, unsigned fields);
  // The vector is expected to reach count elements: room is made at once.
  void Expect(std::size_t count);

  // --- Answers (the container must be synced) ----------------------------------------------------

  std::uint32_t FindKova(const ZANUnicodeString& id) const;
  std::uint32_t FindPlexo(const ZANUnicodeString& id) const;
  // The hashes of an object's two ids, as the maps key them: a duplicate check that computed them
  // hands them on to the append that follows it.
  struct Hashes {
    std::size_t kova = 0;
    std::size_t plexo = 0;
    bool known = false;
  };
  // The first position equal to data by the either-id rule.
  std::uint32_t FindEqual(const KOVAMappingPrivateObject& data, Hashes* hashes = nullptr);
  // Whether some position is equal to data by the either-id rule.
  bool HasEqual(const KOVAMappingPrivateObject& data, Hashes* hashes = nullptr);
  // An instance container whose reference is in a table with an instance index keeps no maps of
  // its own: that index answers for it (see TableInstanceIndex). Called when it joins one.
  void DropKeys();
  // The first position whose object is not local.
  std::uint32_t FirstNotLocal();
  // The first position holding object, or kNone.
  std::uint32_t FirstPositionOf(const KOVAMappingPrivateObject* object) const;
  // The synced elements: how many, and the object at a position (null for a position whose object
  // was destroyed since).
  std::size_t SyncedSize() const noexcept { return materialized_ ? synced_.size() : VectorSize(); }
  KOVAMappingPrivateObject* SyncedAt(std::size_t position) const noexcept {
    return materialized_ ? synced_[position] : VectorAt(position);
  }
  // The handle at a position of the vector, shared.
  virtual const std::shared_ptr<KOVAMappingPrivateObject>& ShareAt(std::size_t position) const = 0;

 protected:
  explicit ContainerIndex(KOVAMappingPrivateReference* reference);
  explicit ContainerIndex(TableIndexes* table);

  virtual std::size_t VectorSize() const noexcept = 0;
  virtual std::size_t VectorCapacity() const noexcept = 0;
  virtual const void* VectorData() const noexcept = 0;
  virtual KOVAMappingPrivateObject* VectorAt(std::size_t position) const noexcept = 0;
  virtual std::size_t ElementSize() const noexcept = 0;
  // The first synced position whose kOVA id is kova or whose Plexo id is plexo, by walking.
  virtual std::uint32_t WalkEqual(const ZANUnicodeString& kova, const ZANUnicodeString& plexo) const = 0;

  // Takes every element of the vector (the index describes nothing yet).
  void SyncAll();
  // Removes the links of every synced element (the derived class's destructor calls it, while
  // the vector can still be read).
  void Unlink();
  // The container keeps its own list of the synced elements from now on / no longer (only when
  // its vector cannot change without it).
  void Materialize();
  void Dematerialize();
  void SetSynced(std::size_t position, KOVAMappingPrivateObject* object) noexcept {
    if (materialized_) synced_[position] = object;
  }
  void SyncNow();
  // Position p of the synced elements stops holding its object / starts holding object.
  void RemoveAt(std::uint32_t p);
  void PlaceAt(std::uint32_t p, KOVAMappingPrivateObject* object, const Hashes* hashes = nullptr);
  // Positions at or after from move by delta in the maps and the root position.
  void ShiftFrom(std::uint32_t from, std::int64_t delta);
  void BuildKeys();
  // Builds the maps when the vector is long enough and no table's instance index answers for it.
  void KeysIfWanted();
  // A table holding this container's reference that has an instance index, or null.
  TableInstanceIndex* IndexingTable() const;
  // After the owner changed the vector or its capacity: keys built once the vector is long enough,
  // and the tables told when the vector can now grow unseen.
  void AfterOwnEdit();
  // The vector's buffer changed through the owner's own code.
  void Resynced() noexcept { syncedData_ = VectorData(); }

  // The owner changes the vector itself: handles released meanwhile are not changes to note.
  struct Editing {
    explicit Editing(ContainerIndex& index) : index_(index), before_(index.editing_) { index.editing_ = true; }
    ~Editing() { index_.editing_ = before_; }
    ContainerIndex& index_;
    bool before_;
  };

  // The synced elements, kept only while they may differ from the vector's: once the vector was
  // handed out (and for the span of some of the owner's own edits). Otherwise the vector itself
  // is the list, which saves a pointer per element.
  std::vector<KOVAMappingPrivateObject*> synced_;
  bool materialized_ = false;
  const void* syncedData_ = nullptr;  // the vector's buffer as of the last sync

 private:
  void MarkDirty();
  template <bool kKova>
  std::uint32_t FindId(const ZANUnicodeString& id) const;
  // Positions where the synced elements hold object, into out (the earliest first).
  void PositionsOf(const KOVAMappingPrivateObject* object, std::vector<std::uint32_t>& out) const;
  // Keys position p (whose object is at, when the caller has it at hand).
  void Key(std::uint32_t p, unsigned fields, const Hashes* hashes = nullptr,
           const KOVAMappingPrivateObject* at = nullptr);
  void Unkey(std::uint32_t p, unsigned fields);
  // Tables holding this container's reference, each once.
  template <class F>
  void ForEachTable(F&& f) const;

  Kind kind_;
  KOVAMappingPrivateReference* ownerReference_ = nullptr;
  TableIndexes* ownerTable_ = nullptr;
  // The position maps, from kWalkBelow elements on (see above).
  struct Keys {
    PositionMap byKova;
    PositionMap byPlexo;
  };
  std::unique_ptr<Keys> keys_;
  std::size_t expected_ = 0;
  std::uint32_t firstNotLocal_ = kNone;
  bool firstNotLocalKnown_ = true;
  bool dirty_ = false;
  bool handedOut_ = false;
  bool editing_ = false;
  // Positions of the object being changed, between BeforeChange and AfterChange.
  std::vector<std::uint32_t> changing_;
};

// The index of a std::vector<Handle>: the element access the core needs, and the owner's own edits.
template <class Handle>
class VectorIndex final : public ContainerIndex {
 public:
  VectorIndex(KOVAMappingPrivateReference* reference, std::vector<Handle>& vector)
      : ContainerIndex(reference), vector_(vector) {
    SyncAll();
  }
  VectorIndex(TableIndexes* table, std::vector<Handle>& vector) : ContainerIndex(table), vector_(vector) { SyncAll(); }
  ~VectorIndex() override { Unlink(); }

  // Appends handle (the container must be synced); hashes, when known, are those of its ids.
  void PushBack(const Handle& handle, const Hashes* hashes = nullptr);

  // Removes the element at position (the container must be synced).
  void EraseAt(std::uint32_t position);

  // Room for count elements in the vector and the index (only capacity changes).
  void ReserveRoom(std::size_t count) {
    {
      Editing editing(*this);
      vector_.reserve(count);
    }
    Resynced();
    Expect(count);
    AfterOwnEdit();
  }

  // Replaces the whole vector (assignment of the owner): the index syncs against the new content.
  void Assign(const std::vector<Handle>& other) {
    Materialize();
    {
      Editing editing(*this);
      vector_ = other;
    }
    SyncNow();
    Dematerialize();
    AfterOwnEdit();
  }

  const std::shared_ptr<KOVAMappingPrivateObject>& ShareAt(std::size_t position) const override;

 private:
  std::size_t VectorSize() const noexcept override { return vector_.size(); }
  std::size_t VectorCapacity() const noexcept override { return vector_.capacity(); }
  const void* VectorData() const noexcept override { return vector_.data(); }
  KOVAMappingPrivateObject* VectorAt(std::size_t position) const noexcept override;
  std::size_t ElementSize() const noexcept override { return sizeof(Handle); }
  std::uint32_t WalkEqual(const ZANUnicodeString& kova, const ZANUnicodeString& plexo) const override;

  std::vector<Handle>& vector_;
};

using InstanceVectorIndex = VectorIndex<KOVAMappingInstance>;
using ReferenceVectorIndex = VectorIndex<KOVAMappingReference>;

}  // namespace kova::model

#endif  // KOVAMAPPINGSERVICES_MODEL_CONTAINERINDEX_H_
