// Hash indexes of the mapping model's containers (a table's references, a reference's instances,
// all instances of a table) and the bookkeeping that tells when an index may be trusted.
//
// Every answer of the model is defined by a walk of the containers in order (first match wins).
// An index gives the same answer faster, and is used only while it provably describes the
// containers exactly:
//  - The identity epoch (process-wide) goes up whenever anything an index keys on may have
//    changed: a kOVA id, a Plexo id or the is-local flag of any private object (setters and copy
//    assignments of private objects). An index built at an older epoch is stale.
//  - A container's own mutating members keep its index current (append) or drop it (erase,
//    assignment).
//  - A container whose vector was handed out (GetReferences(), GetInstances()) can be changed by
//    callers at any later time without the library being told: it is never indexed again and
//    every operation on it walks it, exactly as the plain algorithm does.
//  - The instance-vectors epoch (process-wide) goes up whenever any reference's instance vector
//    changes or is handed out; the table-wide instance index depends on it.
//
// A stale index is not rebuilt at once: the operation walks the container as the plain algorithm
// does, and only the kRebuildAfter-th stale operation since the last rebuild rebuilds it. Rebuilding
// costs about as much as a few walks, so a caller that invalidates the index before every
// operation pays at most a small constant factor over the plain walks, and a caller that stops
// invalidating gets hash look-ups again after kRebuildAfter operations.
#ifndef KOVAMAPPINGSERVICES_MODEL_MAPPINGINDEX_H_
#define KOVAMAPPINGSERVICES_MODEL_MAPPINGINDEX_H_

#include <KOVAMappingServices/KOVAMappingInstance.h>
#include <KOVAMappingServices/KOVAMappingObject.h>
#include <KOVAMappingServices/KOVAMappingPrivateInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateObject.h>
#include <KOVAMappingServices/KOVAMappingPrivateReference.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAMappingReference.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

namespace kova::model {

struct InstanceVectorIndex;
class TableIndexes;

// --- Epochs ---------------------------------------------------------------------------------------

std::uint64_t IdentityEpoch() noexcept;
void BumpIdentityEpoch() noexcept;
std::uint64_t InstanceVectorsEpoch() noexcept;
void BumpInstanceVectorsEpoch() noexcept;

// Stale operations after which an index is rebuilt (see above).
inline constexpr std::uint32_t kRebuildAfter = 8;
// Vectors shorter than this are always walked and never indexed.
inline constexpr std::size_t kWalkBelow = 16;

// --- Access to the model's private data, without copies and without handing anything out ------

struct IndexAccess {
  static const KOVAMappingPrivateObject& Data(const KOVAMappingObject& handle) noexcept { return *handle.private_; }
  static const KOVAMappingPrivateObject* Pointer(const KOVAMappingObject& handle) noexcept {
    return handle.private_.get();
  }
  // The handle's private object, shared.
  static const std::shared_ptr<KOVAMappingPrivateObject>& Share(const KOVAMappingObject& handle) noexcept {
    return handle.private_;
  }
  // Makes out share privateObject, as assigning another instance handle to it does.
  static void ShareInto(KOVAMappingInstance& out, const std::shared_ptr<KOVAMappingPrivateObject>& privateObject) {
    out.private_ = privateObject;
  }
  static KOVAMappingPrivateReference& Reference(const KOVAMappingReference& handle) noexcept {
    return static_cast<KOVAMappingPrivateReference&>(*handle.private_);
  }
  static const ZANUnicodeString& KovaId(const KOVAMappingPrivateObject& data) noexcept { return data.kovaId_; }
  static const ZANUnicodeString& PlexoId(const KOVAMappingPrivateObject& data) noexcept { return data.plexoId_; }
  static bool IsLocal(const KOVAMappingPrivateObject& data) noexcept { return data.isLocal_; }
  static const ZANUnicodeString& KovaId(const KOVAMappingObject& handle) noexcept { return handle.private_->kovaId_; }
  static const ZANUnicodeString& PlexoId(const KOVAMappingObject& handle) noexcept {
    return handle.private_->plexoId_;
  }
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
  // For reserving room (model/Reserve.h): capacity only, never contents.
  static std::vector<KOVAMappingInstance>& InstancesToReserve(KOVAMappingPrivateReference& reference) noexcept {
    return reference.instances_;
  }
  static std::unique_ptr<InstanceVectorIndex>& IndexToReserve(KOVAMappingPrivateReference& reference) noexcept {
    return reference.index_;
  }
  static std::vector<KOVAMappingReference>& ReferencesToReserve(KOVAMappingPrivateTable& table) noexcept {
    return table.references_;
  }
  static TableIndexes& IndexesToReserve(KOVAMappingPrivateTable& table) { return table.Indexes(); }
  static bool InstancesHandedOut(const KOVAMappingReference& reference) noexcept {
    return Reference(reference).instancesHandedOut_;
  }
};

inline std::size_t HashId(const ZANUnicodeString& id) noexcept { return std::hash<std::string_view>{}(id.View()); }

// --- First-position map ---------------------------------------------------------------------------

// Open-addressing map from an id to an entry number (the first entry holding that id). Keys are not
// stored: they are read back from the container through keyAt(entry), so the map costs 8 bytes a
// slot and never holds a copy of an id. Slots are at most seven tenths full, and there may be any
// number of them: a map reserved for a known count takes no more than that count needs.
class FirstPositionMap {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFFu;

  void Clear() noexcept {
    slots_.clear();
    count_ = 0;
  }
  std::size_t Size() const noexcept { return count_; }

  // The entry recorded for key, or kNone.
  template <class KeyAt>
  std::uint32_t Find(const ZANUnicodeString& key, std::size_t hash, KeyAt&& keyAt) const {
    if (slots_.empty()) return kNone;
    const std::uint32_t tag = TagOf(hash);
    for (std::size_t i = Home(tag, slots_.size());; i = Next(i)) {
      const Slot& slot = slots_[i];
      if (slot.entry == kNone) return kNone;
      if (slot.tag == tag && keyAt(slot.entry) == key) return slot.entry;
    }
  }

  // Records entry for key. When key already has an entry, it is replaced only when
  // isEarlier(entry, recorded): the map keeps the first occurrence.
  template <class KeyAt, class IsEarlier>
  void Insert(const ZANUnicodeString& key, std::size_t hash, std::uint32_t entry, KeyAt&& keyAt,
              IsEarlier&& isEarlier) {
    if (!Fits(count_ + 1, slots_.size())) Rehash(std::max(SizeFor(count_ + 1), slots_.size() * 2));
    const std::uint32_t tag = TagOf(hash);
    for (std::size_t i = Home(tag, slots_.size());; i = Next(i)) {
      Slot& slot = slots_[i];
      if (slot.entry == kNone) {
        slot.tag = tag;
        slot.entry = entry;
        ++count_;
        return;
      }
      if (slot.tag == tag && keyAt(slot.entry) == key) {
        if (isEarlier(entry, slot.entry)) slot.entry = entry;
        return;
      }
    }
  }

  // Asks the processor to fetch the slot where a search for hash starts; no effect on answers.
  void Prefetch(std::size_t hash) const noexcept {
    if (!slots_.empty()) __builtin_prefetch(&slots_[Home(TagOf(hash), slots_.size())]);
  }

  // Room for count keys without growing.
  void Reserve(std::size_t count) {
    if (!Fits(count, slots_.size())) Rehash(SizeFor(count));
  }

 private:
  // tag: the high half of the hash. It is both what a probe compares before reading a key back
  // and, scaled to the number of slots, the slot where the probe starts, so growing never reads
  // the keys again.
  struct Slot {
    std::uint32_t tag = 0;
    std::uint32_t entry = kNone;
  };

  // At most 7 slots in 10 are used.
  static bool Fits(std::size_t count, std::size_t slots) noexcept { return count * 10 <= slots * 7; }
  static std::size_t SizeFor(std::size_t count) noexcept { return std::max<std::size_t>(16, count * 10 / 7 + 1); }

  static std::uint32_t TagOf(std::size_t hash) noexcept {
    if constexpr (sizeof(std::size_t) >= 8) {
      return static_cast<std::uint32_t>(static_cast<std::uint64_t>(hash) >> 32);
    } else {
      return static_cast<std::uint32_t>(hash);
    }
  }
  // The tag scaled to [0, slots): slots need not be a power of two. (A map of more than 2^32
  // slots would start its probes in part of them only: slower, still exact.)
  static std::size_t Home(std::uint32_t tag, std::size_t slots) noexcept {
    return static_cast<std::size_t>((static_cast<std::uint64_t>(tag) * slots) >> 32);
  }
  std::size_t Next(std::size_t i) const noexcept { return i + 1 == slots_.size() ? 0 : i + 1; }

  void Rehash(std::size_t size) {
    std::vector<Slot> old(size);
    old.swap(slots_);
    for (const Slot& slot : old) {
      if (slot.entry == kNone) continue;
      std::size_t i = Home(slot.tag, size);
      while (slots_[i].entry != kNone) i = Next(i);
      slots_[i] = slot;
    }
  }

  std::vector<Slot> slots_;
  std::size_t count_ = 0;
};

// --- Index of one vector of handles (a table's references, a reference's instances) -------------

// Maps each kOVA id and each Plexo id to the first position holding it, and records the first
// position whose object is not local (the root rule of tables).
template <class Handle>
class VectorIndex {
 public:
  static constexpr std::uint32_t kNone = FirstPositionMap::kNone;

  // True when the index describes elements exactly, rebuilding it when that is due. False means:
  // walk the vector.
  bool Usable(const std::vector<Handle>& elements) {
    // Short vectors are walked: a walk costs no more than hashing. Positions are 32-bit: a larger
    // vector is walked too.
    if (elements.size() < kWalkBelow || elements.size() >= kNone) {
      if (built_) Drop();
      return false;
    }
    if (built_ && epoch_ == IdentityEpoch()) return true;
    if (++staleUses_ < kRebuildAfter) return false;
    Rebuild(elements);
    return true;
  }

  // Reads back the kOVA id (kKova) or Plexo id of the element at a position.
  template <bool kKova>
  struct KeyAt {
    const std::vector<Handle>& elements;
    const ZANUnicodeString& operator()(std::uint32_t p) const {
      return kKova ? IndexAccess::KovaId(elements[p]) : IndexAccess::PlexoId(elements[p]);
    }
  };

  // The vector is expected to reach count elements: the index, when it is built, makes room for
  // them at once instead of growing step by step.
  void Expect(std::size_t count) noexcept {
    if (count > expected_) expected_ = count;
  }

  // The index no longer describes the vector (positions moved, elements replaced).
  void Drop() noexcept {
    built_ = false;
    byKova_.Clear();
    byPlexo_.Clear();
  }

  // The hashes of an object's two ids, as the index keys them.
  struct Hashes {
    std::size_t kova;
    std::size_t plexo;
  };
  static Hashes HashesOf(const KOVAMappingPrivateObject& data) noexcept {
    return {HashId(IndexAccess::KovaId(data)), HashId(IndexAccess::PlexoId(data))};
  }

  // Records the element just appended at position (the index was usable before the append).
  void Appended(const std::vector<Handle>& elements, std::uint32_t position) {
    Appended(elements, position, HashesOf(IndexAccess::Data(elements[position])));
  }
  // The same, with the hashes of the element's ids already at hand.
  void Appended(const std::vector<Handle>& elements, std::uint32_t position, const Hashes& hashes) {
    const KOVAMappingPrivateObject& data = IndexAccess::Data(elements[position]);
    const auto earlier = [](std::uint32_t a, std::uint32_t b) { return a < b; };
    byKova_.Insert(IndexAccess::KovaId(data), hashes.kova, position, KeyAt<true>{elements}, earlier);
    byPlexo_.Insert(IndexAccess::PlexoId(data), hashes.plexo, position, KeyAt<false>{elements}, earlier);
    if (firstNotLocal_ == kNone && !IndexAccess::IsLocal(data)) firstNotLocal_ = position;
  }

  std::uint32_t FindKova(const std::vector<Handle>& elements, const ZANUnicodeString& id) const {
    return byKova_.Find(id, HashId(id), KeyAt<true>{elements});
  }
  std::uint32_t FindPlexo(const std::vector<Handle>& elements, const ZANUnicodeString& id) const {
    return byPlexo_.Find(id, HashId(id), KeyAt<false>{elements});
  }
  // The first position equal to data by the either-id rule: the earlier of the first kOVA id match
  // and the first Plexo id match.
  std::uint32_t FindEqual(const std::vector<Handle>& elements, const KOVAMappingPrivateObject& data) const {
    return FindEqual(elements, data, HashesOf(data));
  }
  // The same, with the hashes of data's ids at hand. The slots where both searches start are
  // fetched together first, so that in a large index their two cache misses overlap.
  std::uint32_t FindEqual(const std::vector<Handle>& elements, const KOVAMappingPrivateObject& data,
                          const Hashes& hashes) const {
    byKova_.Prefetch(hashes.kova);
    byPlexo_.Prefetch(hashes.plexo);
    const std::uint32_t kova = byKova_.Find(IndexAccess::KovaId(data), hashes.kova, KeyAt<true>{elements});
    const std::uint32_t plexo = byPlexo_.Find(IndexAccess::PlexoId(data), hashes.plexo, KeyAt<false>{elements});
    return kova < plexo ? kova : plexo;
  }
  std::uint32_t FirstNotLocal() const noexcept { return firstNotLocal_; }

 private:
  void Rebuild(const std::vector<Handle>& elements) {
    Drop();
    firstNotLocal_ = kNone;
    const std::size_t room = std::max(elements.size(), expected_);
    byKova_.Reserve(room);
    byPlexo_.Reserve(room);
    for (std::uint32_t p = 0; p < elements.size(); ++p) Appended(elements, p);
    built_ = true;
    epoch_ = IdentityEpoch();
    staleUses_ = 0;
  }

  FirstPositionMap byKova_;
  FirstPositionMap byPlexo_;
  std::size_t expected_ = 0;
  std::uint32_t firstNotLocal_ = kNone;
  std::uint64_t epoch_ = 0;
  std::uint32_t staleUses_ = 0;
  bool built_ = false;
};

struct InstanceVectorIndex : VectorIndex<KOVAMappingInstance> {};

// --- Index of all instances of a table --------------------------------------------------------------

// Maps each kOVA id and Plexo id of any instance of the table to its first occurrence in table order
// (references in order, each reference's instances in order).
class TableInstanceIndex {
 public:
  static constexpr std::uint32_t kNone = FirstPositionMap::kNone;
  struct Location {
    std::uint32_t reference;
    std::uint32_t instance;
  };

  // The private object of every entry, shared with the instance handle it was read from: a look-up
  // reads the id it checks and shares its answer from here, without walking from the table down
  // to the handle. While the index is exact, each of these is still held by its handle in the
  // table; the index never hands one out that the table does not hold.
  using Shared = std::shared_ptr<KOVAMappingPrivateObject>;

  // Reads back the id of an entry.
  template <bool kKova>
  struct KeyAt {
    const TableInstanceIndex* index;
    const ZANUnicodeString& operator()(std::uint32_t entry) const {
      const KOVAMappingPrivateObject& data = *index->objects_[entry];
      return kKova ? IndexAccess::KovaId(data) : IndexAccess::PlexoId(data);
    }
  };

  // True when the index describes the table's instances exactly (rebuilding it when that is due);
  // false means: walk. referencesHandedOut: the table's reference vector was handed out.
  bool Usable(const std::vector<KOVAMappingReference>& references, bool referencesHandedOut) {
    if (referencesHandedOut) return false;
    if (built_ && epoch_ == IdentityEpoch() && instanceEpoch_ == InstanceVectorsEpoch()) return true;
    if (++staleUses_ < kRebuildAfter) return false;
    staleUses_ = 0;
    return Rebuild(references);
  }

  void Drop() noexcept {
    built_ = false;
    locations_.clear();
    objects_.clear();
    byKova_.Clear();
    byPlexo_.Clear();
  }

  // After the table appended a reference (the index was usable just before): its instances come
  // after every instance already indexed. False (and the index dropped) when its instance vector
  // was handed out.
  void AppendedReference(const std::vector<KOVAMappingReference>& references, std::uint32_t reference) {
    if (IndexAccess::InstancesHandedOut(references[reference])) {
      Drop();
      return;
    }
    const auto& instances = IndexAccess::Instances(references[reference]);
    for (std::uint32_t i = 0; i < instances.size(); ++i) Add(references, {reference, i});
  }

  // After the table's AddInstance appended an instance to references[reference] and that append
  // was the only change of any instance vector since the index was last known exact.
  void AppendedInstance(const std::vector<KOVAMappingReference>& references, std::uint32_t reference) {
    const auto& instances = IndexAccess::Instances(references[reference]);
    Add(references, {reference, static_cast<std::uint32_t>(instances.size() - 1)});
    instanceEpoch_ = InstanceVectorsEpoch();
  }

  // The private object of the first instance whose kOVA id (Plexo id) is id, or nullptr.
  const Shared* FindKova(const ZANUnicodeString& id) const {
    return At(byKova_.Find(id, HashId(id), KeyAt<true>{this}));
  }
  const Shared* FindPlexo(const ZANUnicodeString& id) const {
    return At(byPlexo_.Find(id, HashId(id), KeyAt<false>{this}));
  }

 private:
  const Shared* At(std::uint32_t entry) const { return entry == kNone ? nullptr : &objects_[entry]; }

  void Add(const std::vector<KOVAMappingReference>& references, Location location) {
    const auto entry = static_cast<std::uint32_t>(locations_.size());
    const KOVAMappingInstance& instance = IndexAccess::Instances(references[location.reference])[location.instance];
    objects_.push_back(IndexAccess::Share(instance));
    locations_.push_back(location);
    const KOVAMappingPrivateObject& data = *objects_.back();
    const auto earlier = [this](std::uint32_t a, std::uint32_t b) {
      const Location& x = locations_[a];
      const Location& y = locations_[b];
      return x.reference < y.reference || (x.reference == y.reference && x.instance < y.instance);
    };
    byKova_.Insert(IndexAccess::KovaId(data), HashId(IndexAccess::KovaId(data)), entry, KeyAt<true>{this}, earlier);
    byPlexo_.Insert(IndexAccess::PlexoId(data), HashId(IndexAccess::PlexoId(data)), entry, KeyAt<false>{this},
                    earlier);
  }

  bool Rebuild(const std::vector<KOVAMappingReference>& references) {
    Drop();
    // Read the epochs first: anything that changes the vectors after this point makes the index
    // stale again.
    const std::uint64_t epoch = IdentityEpoch();
    const std::uint64_t instanceEpoch = InstanceVectorsEpoch();
    std::size_t total = 0;
    for (const KOVAMappingReference& reference : references) {
      // A handed-out instance vector can change unseen: such a table is walked.
      if (IndexAccess::InstancesHandedOut(reference)) return false;
      total += IndexAccess::Instances(reference).size();
    }
    if (total > 0xFFFFFFF0u || references.size() > 0xFFFFFFF0u) return false;
    locations_.reserve(total);
    objects_.reserve(total);
    byKova_.Reserve(total);
    byPlexo_.Reserve(total);
    for (std::uint32_t r = 0; r < references.size(); ++r) {
      const auto& instances = IndexAccess::Instances(references[r]);
      for (std::uint32_t i = 0; i < instances.size(); ++i) Add(references, {r, i});
    }
    built_ = true;
    epoch_ = epoch;
    instanceEpoch_ = instanceEpoch;
    return true;
  }

  std::vector<Location> locations_;
  std::vector<Shared> objects_;
  FirstPositionMap byKova_;
  FirstPositionMap byPlexo_;
  std::uint64_t epoch_ = 0;
  std::uint64_t instanceEpoch_ = 0;
  std::uint32_t staleUses_ = 0;
  bool built_ = false;

 public:
  // Whether the index is exact right now (no rebuild); used by the table around its own appends.
  bool Exact() const noexcept {
    return built_ && epoch_ == IdentityEpoch() && instanceEpoch_ == InstanceVectorsEpoch();
  }
  std::uint64_t KnownInstanceEpoch() const noexcept { return instanceEpoch_; }
};

// The indexes of a table: its references, and all its instances.
class TableIndexes {
 public:
  VectorIndex<KOVAMappingReference> references;
  TableInstanceIndex instances;
};

}  // namespace kova::model

#endif  // KOVAMAPPINGSERVICES_MODEL_MAPPINGINDEX_H_
