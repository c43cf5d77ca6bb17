#include "model/TableInstanceIndex.h"

#include <algorithm>

#include "model/MappingIndex.h"
#include "model/ObjectLinks.h"

namespace kova::model {

// --- TableIndexes ---------------------------------------------------------------------------------

TableIndexes::TableIndexes(KOVAMappingPrivateTable& table) : table_(table) {}

TableIndexes::~TableIndexes() {
  // The instance index goes first: it reads the reference index while it lets go of its entries.
  instances_.reset();
  references_.reset();
}

ReferenceVectorIndex& TableIndexes::References() {
  if (!references_) {
    references_ = std::make_unique<ReferenceVectorIndex>(this, IndexAccess::ReferenceVector(table_));
    if (IndexAccess::ReferencesHandedOut(table_)) references_->HandOut();
  } else {
    references_->Sync();
  }
  return *references_;
}

bool TableIndexes::OutweighsInstances(const ContainerIndex& instances) const noexcept {
  return instances_ && instances.SyncedSize() >= kWalkBelow && instances.SyncedSize() * 2 >= instances_->Entries();
}

TableInstanceIndex& TableIndexes::UpdatedInstances() {
  ReferenceVectorIndex& references = References();
  if (!instances_) {
    // Each reference's instances are brought up to date first, while this table has no instance
    // index to report to: the index then takes them as they are.
    for (std::size_t p = 0; p < references.SyncedSize(); ++p) {
      IndexAccess::InstanceIndex(static_cast<KOVAMappingPrivateReference&>(*references.SyncedAt(p)));
    }
    instances_ = std::make_unique<TableInstanceIndex>(*this);
    instances_->Build();
  }
  instances_->CheckWatched();
  return *instances_;
}

// --- TableInstanceIndex ---------------------------------------------------------------------------

template <bool kKova>
const ZANUnicodeString& TableInstanceIndex::KeyAt<kKova>::operator()(std::uint32_t entry) const {
  const KOVAMappingPrivateObject& object = *index->entries_[entry].object;
  return kKova ? IndexAccess::KovaId(object) : IndexAccess::PlexoId(object);
}

// Table order: the position of the entries' references in the table, then the position of the
// instances in their reference. Only ever asked for entries that share an id.
bool TableInstanceIndex::IsEarlier::operator()(std::uint32_t a, std::uint32_t b) const {
  const Entry& x = index->entries_[a];
  const Entry& y = index->entries_[b];
  if (x.container != y.container) {
    const ReferenceVectorIndex& references = *index->table_.ReferencesIfMade();
    const std::uint32_t rx = references.FirstPositionOf(x.container->OwnerReference());
    const std::uint32_t ry = references.FirstPositionOf(y.container->OwnerReference());
    if (rx != ry) return rx < ry;
  }
  return x.container->FirstPositionOf(x.object.get()) < y.container->FirstPositionOf(y.object.get());
}

void TableInstanceIndex::Build() {
  const ReferenceVectorIndex& references = *table_.ReferencesIfMade();
  const auto instancesOf = [&references](std::size_t p) {
    return IndexAccess::InstanceIndexIfMade(static_cast<KOVAMappingPrivateReference&>(*references.SyncedAt(p)));
  };
  std::size_t total = 0;
  for (std::size_t p = 0; p < references.SyncedSize(); ++p) total += instancesOf(p)->SyncedSize();
  entries_.reserve(total);
  byKova_.Reserve(total);
  byPlexo_.Reserve(total);
  for (std::size_t p = 0; p < references.SyncedSize(); ++p) ContainerPlaced(*instancesOf(p));
}

void TableInstanceIndex::Add(std::shared_ptr<KOVAMappingPrivateObject> object, ContainerIndex& container) {
  std::uint32_t entry;
  if (!free_.empty()) {
    entry = free_.back();
    free_.pop_back();
    entries_[entry] = Entry{std::move(object), &container};
  } else {
    entry = static_cast<std::uint32_t>(entries_.size());
    entries_.push_back(Entry{std::move(object), &container});
  }
  Key(entry, kKovaField | kPlexoField);
}

// op(map, id, keyAt) for the maps of the given fields, with the entry's id in that map.
template <class Op>
void TableInstanceIndex::ForKeys(std::uint32_t entry, unsigned fields, Op&& op) {
  const KOVAMappingPrivateObject& object = *entries_[entry].object;
  if ((fields & kKovaField) != 0) op(byKova_, IndexAccess::KovaId(object), KeyAt<true>{this});
  if ((fields & kPlexoField) != 0) op(byPlexo_, IndexAccess::PlexoId(object), KeyAt<false>{this});
}

void TableInstanceIndex::Key(std::uint32_t entry, unsigned fields) {
  ForKeys(entry, fields, [this, entry](PositionMap& map, const ZANUnicodeString& id, auto keyAt) {
    map.Insert(id, HashId(id), entry, keyAt, IsEarlier{this});
  });
}

void TableInstanceIndex::Unkey(std::uint32_t entry, unsigned fields) {
  ForKeys(entry, fields, [this, entry](PositionMap& map, const ZANUnicodeString& id, auto keyAt) {
    map.Erase(id, HashId(id), entry, keyAt, IsEarlier{this});
  });
}

template <class F>
void TableInstanceIndex::ForEachEntryOf(const KOVAMappingPrivateObject& object, const ContainerIndex& container,
                                        F&& f) const {
  const ZANUnicodeString& id = IndexAccess::KovaId(object);
  byKova_.ForEach(id, HashId(id), KeyAt<true>{this}, [&](std::uint32_t entry) {
    if (entries_[entry].object.get() == &object && entries_[entry].container == &container) f(entry);
  });
}

void TableInstanceIndex::Placed(ContainerIndex& container, std::uint32_t position) {
  Add(container.ShareAt(position), container);
}

void TableInstanceIndex::Removed(KOVAMappingPrivateObject& object, ContainerIndex& container) {
  std::uint32_t entry = PositionMap::kNone;
  ForEachEntryOf(object, container, [&entry](std::uint32_t one) {
    if (entry == PositionMap::kNone) entry = one;
  });
  if (entry == PositionMap::kNone) return;
  Unkey(entry, kKovaField | kPlexoField);
  // Let go of the object last: this may be its last owner.
  std::shared_ptr<KOVAMappingPrivateObject> released = std::move(entries_[entry].object);
  entries_[entry].container = nullptr;
  free_.push_back(entry);
}

bool TableInstanceIndex::HasEqualIn(const ContainerIndex& container, const KOVAMappingPrivateObject& data) const {
  bool found = false;
  const auto inContainer = [&](std::uint32_t entry) { found = found || entries_[entry].container == &container; };
  const ZANUnicodeString& kova = IndexAccess::KovaId(data);
  byKova_.ForEach(kova, HashId(kova), KeyAt<true>{this}, inContainer);
  if (found) return true;
  const ZANUnicodeString& plexo = IndexAccess::PlexoId(data);
  byPlexo_.ForEach(plexo, HashId(plexo), KeyAt<false>{this}, inContainer);
  return found;
}

std::uint32_t TableInstanceIndex::FirstEqualIn(const ContainerIndex& container,
                                               const KOVAMappingPrivateObject& data) const {
  std::uint32_t first = PositionMap::kNone;
  const auto inContainer = [&](std::uint32_t entry) {
    if (entries_[entry].container != &container) return;
    first = std::min(first, container.FirstPositionOf(entries_[entry].object.get()));
  };
  const ZANUnicodeString& kova = IndexAccess::KovaId(data);
  byKova_.ForEach(kova, HashId(kova), KeyAt<true>{this}, inContainer);
  const ZANUnicodeString& plexo = IndexAccess::PlexoId(data);
  byPlexo_.ForEach(plexo, HashId(plexo), KeyAt<false>{this}, inContainer);
  return first;
}

void TableInstanceIndex::ContainerPlaced(ContainerIndex& container) {
  container.DropKeys();
  for (std::uint32_t p = 0; p < container.SyncedSize(); ++p) {
    if (container.SyncedAt(p) != nullptr) Placed(container, p);
  }
  if (container.NeedsSync() || container.CanGrowUnseen()) Watch(container);
}

void TableInstanceIndex::ContainerRemoved(ContainerIndex& container) {
  for (std::size_t p = 0; p < container.SyncedSize(); ++p) {
    if (KOVAMappingPrivateObject* object = container.SyncedAt(p)) Removed(*object, container);
  }
}

void TableInstanceIndex::Reseat(ContainerIndex& container, const KOVAMappingPrivateObject* object) {
  std::vector<std::uint32_t> entries;
  // An object held at several positions is met several times: its entries are taken once.
  const auto gather = [&](const KOVAMappingPrivateObject& one) {
    ForEachEntryOf(one, container, [&entries](std::uint32_t entry) {
      if (std::find(entries.begin(), entries.end(), entry) == entries.end()) entries.push_back(entry);
    });
  };
  if (object != nullptr) {
    gather(*object);
  } else {
    for (std::size_t p = 0; p < container.SyncedSize(); ++p) {
      if (const KOVAMappingPrivateObject* one = container.SyncedAt(p)) gather(*one);
    }
  }
  for (std::uint32_t entry : entries) Unkey(entry, kKovaField | kPlexoField);
  for (std::uint32_t entry : entries) Key(entry, kKovaField | kPlexoField);
}

void TableInstanceIndex::BeforeChange(KOVAMappingPrivateObject& object, ContainerIndex& container, unsigned fields) {
  // The answer of the last look-up, when it is object's only entry: object is in one container
  // once, and that container's reference is in one table once.
  if (lastFound_ < entries_.size() && entries_[lastFound_].object.get() == &object &&
      entries_[lastFound_].container == &container && ObjectLinks::Single(object) &&
      ObjectLinks::Single(*container.OwnerReference())) {
    changing_.push_back(lastFound_);
    Unkey(lastFound_, fields);
    return;
  }
  // Every entry of object in container (one per occurrence of each), gathered before any is unkeyed.
  const std::size_t from = changing_.size();
  ForEachEntryOf(object, container, [this](std::uint32_t entry) { changing_.push_back(entry); });
  for (std::size_t i = from; i < changing_.size(); ++i) Unkey(changing_[i], fields);
}

void TableInstanceIndex::AfterChange(unsigned fields) {
  for (std::uint32_t entry : changing_) Key(entry, fields);
  changing_.clear();
}

void TableInstanceIndex::Watch(ContainerIndex& container) {
  if (std::find(watched_.begin(), watched_.end(), &container) == watched_.end()) watched_.push_back(&container);
}

void TableInstanceIndex::Unwatch(ContainerIndex& container) {
  const auto found = std::find(watched_.begin(), watched_.end(), &container);
  if (found != watched_.end()) watched_.erase(found);
}

void TableInstanceIndex::CheckWatched() {
  for (std::size_t i = 0; i < watched_.size();) {
    ContainerIndex* container = watched_[i];
    container->Sync();
    if (i < watched_.size() && watched_[i] == container && !container->CanGrowUnseen()) {
      watched_.erase(watched_.begin() + static_cast<std::ptrdiff_t>(i));
    } else {
      ++i;
    }
  }
}

const std::shared_ptr<KOVAMappingPrivateObject>* TableInstanceIndex::FindKova(const ZANUnicodeString& id) const {
  const std::uint32_t entry = byKova_.Find(id, HashId(id), KeyAt<true>{this});
  if (entry == PositionMap::kNone) return nullptr;
  lastFound_ = entry;
  return &entries_[entry].object;
}

const std::shared_ptr<KOVAMappingPrivateObject>* TableInstanceIndex::FindPlexo(const ZANUnicodeString& id) const {
  const std::uint32_t entry = byPlexo_.Find(id, HashId(id), KeyAt<false>{this});
  if (entry == PositionMap::kNone) return nullptr;
  lastFound_ = entry;
  return &entries_[entry].object;
}

}  // namespace kova::model
