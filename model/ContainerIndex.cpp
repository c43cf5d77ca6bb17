#include "model/ContainerIndex.h"

#include <algorithm>
#include <cstdint>

#include "model/MappingIndex.h"
#include "model/ObjectLinks.h"
#include "model/TableInstanceIndex.h"

namespace kova::model {

namespace {

using Object = KOVAMappingPrivateObject;

struct Earlier {
  bool operator()(std::uint32_t a, std::uint32_t b) const noexcept { return a < b; }
};

// Reads back the kOVA id (kKova) or Plexo id of the synced element at a position.
template <bool kKova>
struct KeyAtPosition {
  const ContainerIndex& index;
  const ZANUnicodeString& operator()(std::uint32_t position) const {
    const Object& object = *index.SyncedAt(position);
    return kKova ? IndexAccess::KovaId(object) : IndexAccess::PlexoId(object);
  }
};

}  // namespace

ContainerIndex::ContainerIndex(KOVAMappingPrivateReference* reference)
    : kind_(Kind::kInstances), ownerReference_(reference) {}

ContainerIndex::ContainerIndex(TableIndexes* table) : kind_(Kind::kReferences), ownerTable_(table) {}

ContainerIndex::~ContainerIndex() = default;

void ContainerIndex::Unlink() {
  const std::size_t size = SyncedSize();
  for (std::size_t p = 0; p < size; ++p) {
    if (Object* object = SyncedAt(p)) ObjectLinks::Remove(*object, this);
  }
}

void ContainerIndex::Materialize() {
  if (materialized_) return;
  const std::size_t size = VectorSize();
  synced_.resize(size);
  for (std::size_t p = 0; p < size; ++p) synced_[p] = VectorAt(p);
  materialized_ = true;
}

void ContainerIndex::Dematerialize() {
  if (!materialized_ || handedOut_ || dirty_) return;
  materialized_ = false;
  std::vector<Object*>().swap(synced_);
}

// Every table holding this container's reference, once per table (instance containers only).
template <class F>
void ContainerIndex::ForEachTable(F&& f) const {
  if (kind_ != Kind::kInstances) return;
  ObjectLinks::ForEachContainer(*ownerReference_, [&f](ContainerIndex* references) {
    if (TableInstanceIndex* table = references->ownerTable_->InstancesIfMade()) f(*table);
  });
}

void ContainerIndex::SyncAll() {
  const std::size_t size = VectorSize();
  if (materialized_) synced_.assign(size, nullptr);
  for (std::size_t p = 0; p < size; ++p) PlaceAt(static_cast<std::uint32_t>(p), VectorAt(p));
  Resynced();
  dirty_ = false;
  KeysIfWanted();
}

void ContainerIndex::SyncNow() {
  // Without synced elements of its own, the container's vector has only been changed by the
  // container's own code, which kept the index in step.
  if (!materialized_) {
    dirty_ = false;
    return;
  }
  const std::size_t before = synced_.size();
  const std::size_t after = VectorSize();
  if (before == after) {
    // Same size: each position that holds another object than it did is replaced where it stands.
    for (std::size_t p = 0; p < after; ++p) {
      Object* now = VectorAt(p);
      if (now == synced_[p]) continue;
      RemoveAt(static_cast<std::uint32_t>(p));
      PlaceAt(static_cast<std::uint32_t>(p), now);
    }
  } else {
    // Another size: what lies between the unchanged beginning and the unchanged end is replaced,
    // and the end moves.
    const std::size_t shorter = std::min(before, after);
    std::size_t head = 0;
    while (head < shorter && VectorAt(head) == synced_[head]) ++head;
    std::size_t tail = 0;
    while (tail < shorter - head && VectorAt(after - 1 - tail) == synced_[before - 1 - tail]) ++tail;
    for (std::size_t p = head; p < before - tail; ++p) RemoveAt(static_cast<std::uint32_t>(p));
    ShiftFrom(static_cast<std::uint32_t>(before - tail),
              static_cast<std::int64_t>(after) - static_cast<std::int64_t>(before));
    synced_.erase(synced_.begin() + static_cast<std::ptrdiff_t>(head),
                  synced_.begin() + static_cast<std::ptrdiff_t>(before - tail));
    synced_.insert(synced_.begin() + static_cast<std::ptrdiff_t>(head), after - tail - head, nullptr);
    for (std::size_t p = head; p < after - tail; ++p) PlaceAt(static_cast<std::uint32_t>(p), VectorAt(p));
  }
  Resynced();
  dirty_ = false;
  KeysIfWanted();
}

void ContainerIndex::RemoveAt(std::uint32_t p) {
  Object* object = SyncedAt(p);
  if (object == nullptr) return;
  // The position is emptied first: from here on the object's table order is that of its next
  // occurrence in this container, if it has one.
  if (keys_) Unkey(p, kKovaField | kPlexoField);
  if (firstNotLocalKnown_ && firstNotLocal_ == p) firstNotLocalKnown_ = false;
  SetSynced(p, nullptr);
  ObjectLinks::Remove(*object, this);
  const bool stillHeld = ObjectLinks::Has(*object, this);
  if (kind_ == Kind::kReferences) {
    auto& reference = static_cast<KOVAMappingPrivateReference&>(*object);
    TableInstanceIndex* table = ownerTable_->InstancesIfMade();
    InstanceVectorIndex* instances = IndexAccess::InstanceIndexIfMade(reference);
    if (table == nullptr || instances == nullptr) return;
    if (ownerTable_->OutweighsInstances(*instances)) {
      ownerTable_->DropInstances();
      return;
    }
    // One set of entries per occurrence of the reference in the table.
    table->ContainerRemoved(*instances);
    if (stillHeld) {
      table->Reseat(*instances, nullptr);
    } else {
      table->Unwatch(*instances);
    }
    return;
  }
  // One entry per occurrence of the reference in each table. The entries keep the object alive
  // until the last one is gone; nothing reads it after that unless it is still held here.
  ObjectLinks::ForEach(*ownerReference_, [this, object](ContainerIndex* references, bool) {
    if (TableInstanceIndex* table = references->ownerTable_->InstancesIfMade()) table->Removed(*object, *this);
  });
  if (stillHeld) ForEachTable([this, object](TableInstanceIndex& t) { t.Reseat(*this, object); });
}

void ContainerIndex::PlaceAt(std::uint32_t p, Object* object, const Hashes* hashes) {
  SetSynced(p, object);
  InstanceVectorIndex* instances = nullptr;
  TableInstanceIndex* table = kind_ == Kind::kReferences ? ownerTable_->InstancesIfMade() : nullptr;
  if (table != nullptr) {
    // The reference's instances are brought up to date before it joins the table, so that what
    // they report from now on and what the table takes below are not counted twice.
    instances = &IndexAccess::InstanceIndex(static_cast<KOVAMappingPrivateReference&>(*object));
  }
  ObjectLinks::Add(*object, this, handedOut_);
  if (keys_) Key(p, kKovaField | kPlexoField, hashes, object);
  if (kind_ == Kind::kReferences) {
    if (firstNotLocalKnown_ && !IndexAccess::IsLocal(*object) && (firstNotLocal_ == kNone || p < firstNotLocal_)) {
      firstNotLocal_ = p;
    }
    if (table != nullptr) {
      if (ownerTable_->OutweighsInstances(*instances)) {
        ownerTable_->DropInstances();
      } else {
        table->ContainerPlaced(*instances);
      }
    }
    return;
  }
  ObjectLinks::ForEach(*ownerReference_, [this, p](ContainerIndex* references, bool) {
    if (TableInstanceIndex* holder = references->ownerTable_->InstancesIfMade()) holder->Placed(*this, p);
  });
}

void ContainerIndex::ShiftFrom(std::uint32_t from, std::int64_t delta) {
  if (from >= SyncedSize() || delta == 0) return;
  if (keys_) {
    keys_->byKova.Shift(from, delta);
    keys_->byPlexo.Shift(from, delta);
  }
  if (firstNotLocalKnown_ && firstNotLocal_ != kNone && firstNotLocal_ >= from) {
    firstNotLocal_ = static_cast<std::uint32_t>(static_cast<std::int64_t>(firstNotLocal_) + delta);
  }
}

void ContainerIndex::Key(std::uint32_t p, unsigned fields, const Hashes* hashes, const Object* at) {
  const Object& object = at != nullptr ? *at : *SyncedAt(p);
  const bool known = hashes != nullptr && hashes->known;
  if ((fields & kKovaField) != 0) {
    const ZANUnicodeString& id = IndexAccess::KovaId(object);
    keys_->byKova.Insert(id, known ? hashes->kova : HashId(id), p, KeyAtPosition<true>{*this}, Earlier{});
  }
  if ((fields & kPlexoField) != 0) {
    const ZANUnicodeString& id = IndexAccess::PlexoId(object);
    keys_->byPlexo.Insert(id, known ? hashes->plexo : HashId(id), p, KeyAtPosition<false>{*this}, Earlier{});
  }
}

void ContainerIndex::Unkey(std::uint32_t p, unsigned fields) {
  const Object& object = *SyncedAt(p);
  if ((fields & kKovaField) != 0) {
    const ZANUnicodeString& id = IndexAccess::KovaId(object);
    keys_->byKova.Erase(id, HashId(id), p, KeyAtPosition<true>{*this}, Earlier{});
  }
  if ((fields & kPlexoField) != 0) {
    const ZANUnicodeString& id = IndexAccess::PlexoId(object);
    keys_->byPlexo.Erase(id, HashId(id), p, KeyAtPosition<false>{*this}, Earlier{});
  }
}

void ContainerIndex::BuildKeys() {
  const std::size_t size = SyncedSize();
  if (size > PositionMap::kMaxValue) return;  // walked
  const std::size_t room = std::max(size, expected_);
  keys_ = std::make_unique<Keys>();
  keys_->byKova.Reserve(room);
  keys_->byPlexo.Reserve(room);
  for (std::uint32_t p = 0; p < size; ++p) {
    if (SyncedAt(p) != nullptr) Key(p, kKovaField | kPlexoField);
  }
}

TableInstanceIndex* ContainerIndex::IndexingTable() const {
  TableInstanceIndex* found = nullptr;
  if (kind_ == Kind::kInstances) {
    ObjectLinks::ForEachContainer(*ownerReference_, [&found](ContainerIndex* references) {
      if (found == nullptr) found = references->ownerTable_->InstancesIfMade();
    });
  }
  return found;
}

void ContainerIndex::KeysIfWanted() {
  if (!keys_ && SyncedSize() >= kWalkBelow && IndexingTable() == nullptr) BuildKeys();
}

void ContainerIndex::DropKeys() { keys_.reset(); }

void ContainerIndex::AfterOwnEdit() {
  if (keys_ && !handedOut_) return;  // the common case: nothing to build, no table to tell
  KeysIfWanted();
  if (kind_ == Kind::kInstances && CanGrowUnseen()) ForEachTable([this](TableInstanceIndex& t) { t.Watch(*this); });
}

void ContainerIndex::Expect(std::size_t count) {
  if (count <= expected_) return;
  expected_ = count;
  if (materialized_) synced_.reserve(count);
  if (keys_) {
    keys_->byKova.Reserve(count);
    keys_->byPlexo.Reserve(count);
  }
}

void ContainerIndex::HandOut() {
  if (handedOut_) return;
  // From now on the vector can change without the container: it keeps its own list of the
  // elements it describes, to compare with.
  Materialize();
  handedOut_ = true;
  for (Object* object : synced_) {
    if (object != nullptr) ObjectLinks::MarkHandedOut(*object, this);
  }
  if (kind_ == Kind::kInstances && CanGrowUnseen()) ForEachTable([this](TableInstanceIndex& t) { t.Watch(*this); });
}

void ContainerIndex::SlotReleased(const void* slot) {
  if (dirty_ || editing_ || !materialized_) return;
  const auto at = reinterpret_cast<std::uintptr_t>(slot);
  const auto begin = reinterpret_cast<std::uintptr_t>(syncedData_);
  if (at >= begin && at < begin + synced_.size() * ElementSize()) MarkDirty();
}

void ContainerIndex::MarkDirty() {
  if (dirty_) return;
  dirty_ = true;
  ForEachTable([this](TableInstanceIndex& t) { t.Watch(*this); });
}

void ContainerIndex::PositionsOf(const Object* object, std::vector<std::uint32_t>& out) const {
  out.clear();
  if (keys_) {
    const ZANUnicodeString& id = IndexAccess::KovaId(*object);
    keys_->byKova.ForEach(id, HashId(id), KeyAtPosition<true>{*this}, [&](std::uint32_t p) {
      if (SyncedAt(p) == object) out.push_back(p);
    });
    if (!out.empty()) return;
    // Not under its kOVA id: that id is being changed in another container's pass; the Plexo id,
    // or at worst a walk, finds it.
    const ZANUnicodeString& plexo = IndexAccess::PlexoId(*object);
    keys_->byPlexo.ForEach(plexo, HashId(plexo), KeyAtPosition<false>{*this}, [&](std::uint32_t p) {
      if (SyncedAt(p) == object) out.push_back(p);
    });
    if (!out.empty()) return;
  }
  const std::size_t size = SyncedSize();
  for (std::uint32_t p = 0; p < size; ++p) {
    if (SyncedAt(p) == object) out.push_back(p);
  }
}

std::uint32_t ContainerIndex::FirstPositionOf(const Object* object) const {
  std::vector<std::uint32_t> positions;
  PositionsOf(object, positions);
  return positions.empty() ? kNone : *std::min_element(positions.begin(), positions.end());
}

void ContainerIndex::ObjectDying(Object& object) {
  // An object dies in a container only when a caller took it out of a handed-out vector.
  if (!materialized_) return;
  PositionsOf(&object, changing_);
  for (std::uint32_t p : changing_) {
    if (keys_) Unkey(p, kKovaField | kPlexoField);
    if (firstNotLocalKnown_ && firstNotLocal_ == p) firstNotLocalKnown_ = false;
    synced_[p] = nullptr;
  }
  changing_.clear();
  MarkDirty();
}

void ContainerIndex::BeforeChange(Object& object, unsigned fields) {
  const unsigned keyFields = fields & (kKovaField | kPlexoField);
  if (kind_ == Kind::kInstances) {
    if (keyFields == 0) return;
    // The tables first, while this container can still find the object by its ids (they may ask
    // for its position to order entries that share an id).
    ForEachTable([&](TableInstanceIndex& t) { t.BeforeChange(object, *this, keyFields); });
    if (!keys_) return;
  }
  PositionsOf(&object, changing_);
  if (keys_ && keyFields != 0) {
    for (std::uint32_t p : changing_) Unkey(p, keyFields);
  }
  if ((fields & kLocalField) != 0 && firstNotLocalKnown_ &&
      std::find(changing_.begin(), changing_.end(), firstNotLocal_) != changing_.end()) {
    firstNotLocalKnown_ = false;
  }
}

void ContainerIndex::AfterChange(Object& object, unsigned fields) {
  const unsigned keyFields = fields & (kKovaField | kPlexoField);
  if (kind_ == Kind::kInstances && keyFields == 0) return;
  if (keys_ && keyFields != 0) {
    for (std::uint32_t p : changing_) Key(p, keyFields);
  }
  if (kind_ == Kind::kReferences && (fields & kLocalField) != 0 && firstNotLocalKnown_ &&
      !IndexAccess::IsLocal(object)) {
    for (std::uint32_t p : changing_) {
      if (firstNotLocal_ == kNone || p < firstNotLocal_) firstNotLocal_ = p;
    }
  }
  changing_.clear();
  if (kind_ == Kind::kInstances) ForEachTable([keyFields](TableInstanceIndex& t) { t.AfterChange(keyFields); });
}

template <bool kKova>
std::uint32_t ContainerIndex::FindId(const ZANUnicodeString& id) const {
  if (keys_) return (kKova ? keys_->byKova : keys_->byPlexo).Find(id, HashId(id), KeyAtPosition<kKova>{*this});
  const std::size_t size = SyncedSize();
  for (std::uint32_t p = 0; p < size; ++p) {
    if ((kKova ? IndexAccess::KovaId(*SyncedAt(p)) : IndexAccess::PlexoId(*SyncedAt(p))) == id) return p;
  }
  return kNone;
}

std::uint32_t ContainerIndex::FindKova(const ZANUnicodeString& id) const { return FindId<true>(id); }
std::uint32_t ContainerIndex::FindPlexo(const ZANUnicodeString& id) const { return FindId<false>(id); }

std::uint32_t ContainerIndex::FindEqual(const Object& data, Hashes* hashes) {
  if (!keys_) KeysIfWanted();
  const ZANUnicodeString& kova = IndexAccess::KovaId(data);
  const ZANUnicodeString& plexo = IndexAccess::PlexoId(data);
  if (!keys_) {
    // A long instance vector of a reference in an indexed table: the table's index names the
    // candidates.
    const std::size_t size = SyncedSize();
    if (size >= kWalkBelow) {
      if (TableInstanceIndex* table = IndexingTable()) return table->FirstEqualIn(*this, data);
    }
    return WalkEqual(kova, plexo);
  }
  // Both searches' first slots are fetched together, so that in a large index their two cache
  // misses overlap.
  const std::size_t kovaHash = HashId(kova);
  const std::size_t plexoHash = HashId(plexo);
  if (hashes != nullptr) *hashes = Hashes{kovaHash, plexoHash, true};
  keys_->byKova.Prefetch(kovaHash);
  keys_->byPlexo.Prefetch(plexoHash);
  const std::uint32_t byKova = keys_->byKova.Find(kova, kovaHash, KeyAtPosition<true>{*this});
  const std::uint32_t byPlexo = keys_->byPlexo.Find(plexo, plexoHash, KeyAtPosition<false>{*this});
  return std::min(byKova, byPlexo);
}

bool ContainerIndex::HasEqual(const Object& data, Hashes* hashes) {
  if (!keys_) {
    // A short vector, the common case while a document is read: one walk, nothing else.
    if (SyncedSize() < kWalkBelow) return WalkEqual(IndexAccess::KovaId(data), IndexAccess::PlexoId(data)) != kNone;
    KeysIfWanted();
    if (!keys_) {
      if (TableInstanceIndex* table = IndexingTable()) return table->HasEqualIn(*this, data);
    }
  }
  return FindEqual(data, hashes) != kNone;
}

std::uint32_t ContainerIndex::FirstNotLocal() {
  if (!firstNotLocalKnown_) {
    firstNotLocal_ = kNone;
    const std::size_t size = SyncedSize();
    for (std::uint32_t p = 0; p < size; ++p) {
      if (!IndexAccess::IsLocal(*SyncedAt(p))) {
        firstNotLocal_ = p;
        break;
      }
    }
    firstNotLocalKnown_ = true;
  }
  return firstNotLocal_;
}

template <class Handle>
void VectorIndex<Handle>::PushBack(const Handle& handle, const Hashes* hashes) {
  {
    Editing editing(*this);
    vector_.push_back(handle);
  }
  syncedData_ = vector_.data();
  if (materialized_) synced_.push_back(nullptr);
  PlaceAt(static_cast<std::uint32_t>(vector_.size() - 1), IndexAccess::MutablePointer(vector_.back()), hashes);
  AfterOwnEdit();
}

template <class Handle>
void VectorIndex<Handle>::EraseAt(std::uint32_t position) {
  // An object held at several positions moves in table order when one of them goes: that needs
  // the container's own list of its elements while the vector changes.
  const bool keepList = materialized_;
  if (!materialized_ && ObjectLinks::Count(*VectorAt(position), this) > 1) Materialize();
  RemoveAt(position);
  ShiftFrom(position + 1, -1);
  if (materialized_) synced_.erase(synced_.begin() + position);
  {
    // The same result as erasing, without copying handles: the removed handle's object moves to
    // the end by exchanges of the handles' pointers (no reference count or object is touched),
    // and the last handle goes.
    Editing editing(*this);
    for (std::size_t i = position; i + 1 < vector_.size(); ++i) IndexAccess::Exchange(vector_[i], vector_[i + 1]);
    vector_.pop_back();
  }
  Resynced();
  if (!keepList) Dematerialize();
  AfterOwnEdit();
}

template <class Handle>
std::uint32_t VectorIndex<Handle>::WalkEqual(const ZANUnicodeString& kova, const ZANUnicodeString& plexo) const {
  const auto equal = [&](const Object& at) {
    return IndexAccess::KovaId(at) == kova || IndexAccess::PlexoId(at) == plexo;
  };
  if (materialized_) {
    for (std::uint32_t p = 0; p < synced_.size(); ++p) {
      if (equal(*synced_[p])) return p;
    }
    return kNone;
  }
  for (std::uint32_t p = 0; p < vector_.size(); ++p) {
    if (equal(IndexAccess::Data(vector_[p]))) return p;
  }
  return kNone;
}

template <class Handle>
KOVAMappingPrivateObject* VectorIndex<Handle>::VectorAt(std::size_t position) const noexcept {
  return IndexAccess::MutablePointer(vector_[position]);
}

template <class Handle>
const std::shared_ptr<KOVAMappingPrivateObject>& VectorIndex<Handle>::ShareAt(std::size_t position) const {
  return IndexAccess::Share(vector_[position]);
}

template class VectorIndex<KOVAMappingInstance>;
template class VectorIndex<KOVAMappingReference>;

}  // namespace kova::model
