// Hash map from an id to the values (positions, or entries) that hold it, answering the earliest
// value first (internal).
//
// Keys are not stored: a probe reads the key back through keyAt(value), so a key costs one 8-byte
// slot and no copy of the id. Slots are at most seven tenths full and there may be any number of
// them. A key held by several values (ids that collide, which the identity rule keeps out of what
// the model adds itself but which callers can bring about) keeps its earliest value in the slot and
// the others in a side table keyed by the id's text: such keys cost a copy of the text and a
// search among their values, every other key costs neither.
//
// Values are below 2^31. "Earliest" is decided by an isEarlier(a, b) function given to the members
// that need it, so the same map serves container positions (plain order) and table entries (table
// order).
#ifndef KOVAMAPPINGSERVICES_MODEL_POSITIONMAP_H_
#define KOVAMAPPINGSERVICES_MODEL_POSITIONMAP_H_

#include <KOVAMappingServices/ZANUnicodeString.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kova::model {

inline std::size_t HashId(const ZANUnicodeString& id) noexcept { return std::hash<std::string_view>{}(id.View()); }

class PositionMap {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFFu;
  // The largest value the map holds.
  static constexpr std::uint32_t kMaxValue = 0x7FFFFFFEu;

  void Clear() noexcept {
    slots_.clear();
    more_.reset();
    count_ = 0;
  }

  // Room for count keys without growing.
  void Reserve(std::size_t count) {
    if (!Fits(count, slots_.size())) Rehash(SizeFor(count));
  }

  // Asks the processor to fetch the slot where a search for hash starts; no effect on answers.
  void Prefetch(std::size_t hash) const noexcept {
    if (!slots_.empty()) __builtin_prefetch(&slots_[Home(TagOf(hash), slots_.size())]);
  }

  // The earliest value holding key, or kNone.
  template <class KeyAt>
  std::uint32_t Find(const ZANUnicodeString& key, std::size_t hash, KeyAt&& keyAt) const {
    const std::size_t i = SlotOf(key, hash, keyAt);
    return i == kNoSlot ? kNone : slots_[i].value & kValueMask;
  }

  // f(value) for every value holding key, the earliest first.
  template <class KeyAt, class F>
  void ForEach(const ZANUnicodeString& key, std::size_t hash, KeyAt&& keyAt, F&& f) const {
    const std::size_t i = SlotOf(key, hash, keyAt);
    if (i == kNoSlot) return;
    f(slots_[i].value & kValueMask);
    if ((slots_[i].value & kMoreFlag) == 0 || !more_) return;
    const auto more = more_->find(key.View());
    if (more == more_->end()) return;
    for (std::uint32_t value : more->second) f(value);
  }

  // Records that value holds key.
  template <class KeyAt, class IsEarlier>
  void Insert(const ZANUnicodeString& key, std::size_t hash, std::uint32_t value, KeyAt&& keyAt,
              IsEarlier&& isEarlier) {
    // Room first, so that one probe either finds the key or ends on the slot the key takes.
    if (!Fits(count_ + 1, slots_.size())) Rehash(std::max(SizeFor(count_ + 1), slots_.size() * 2));
    const std::uint32_t tag = TagOf(hash);
    std::size_t i = Home(tag, slots_.size());
    for (;; i = Next(i)) {
      Slot& slot = slots_[i];
      if (slot.value == kEmpty) break;
      if (slot.tag != tag || !(keyAt(slot.value & kValueMask) == key)) continue;
      const std::uint32_t first = slot.value & kValueMask;
      std::vector<std::uint32_t>& more = More(key);
      if (isEarlier(value, first)) {
        more.push_back(first);
        slot.value = value | kMoreFlag;
      } else {
        more.push_back(value);
        slot.value |= kMoreFlag;
      }
      return;
    }
    slots_[i] = Slot{tag, value};
    ++count_;
  }

  // Forgets that value holds key (it must have been recorded).
  template <class KeyAt, class IsEarlier>
  void Erase(const ZANUnicodeString& key, std::size_t hash, std::uint32_t value, KeyAt&& keyAt, IsEarlier&& isEarlier) {
    // Mostly the value is the first (often the only) one of its key: its slot is the one with the
    // key's tag and that value, found without reading any key back.
    const std::uint32_t tag = TagOf(hash);
    if (!slots_.empty()) {
      for (std::size_t i = Home(tag, slots_.size());; i = Next(i)) {
        const Slot& slot = slots_[i];
        if (slot.value == kEmpty) break;
        if (slot.tag == tag && (slot.value & kValueMask) == value) {
          if ((slot.value & kMoreFlag) == 0) {
            RemoveSlot(i);
            return;
          }
          break;
        }
      }
    }
    const std::size_t i = SlotOf(key, hash, keyAt);
    if (i == kNoSlot) return;
    Slot& slot = slots_[i];
    const bool hasMore = (slot.value & kMoreFlag) != 0;
    if ((slot.value & kValueMask) != value) {
      if (!hasMore || !more_) return;
      const auto more = more_->find(key.View());
      if (more == more_->end()) return;
      std::vector<std::uint32_t>& values = more->second;
      const auto at = std::find(values.begin(), values.end(), value);
      if (at == values.end()) return;
      *at = values.back();
      values.pop_back();
      if (values.empty()) {
        more_->erase(more);
        slot.value &= kValueMask;
      }
      return;
    }
    if (!hasMore || !more_) {
      RemoveSlot(i);
      return;
    }
    // The earliest of the others takes the slot. The side table is found before the slot's value
    // changes: keyAt reads the key through the slot's value.
    const auto more = more_->find(key.View());
    if (more == more_->end()) {
      RemoveSlot(i);
      return;
    }
    std::vector<std::uint32_t>& values = more->second;
    std::size_t best = 0;
    for (std::size_t k = 1; k < values.size(); ++k) {
      if (isEarlier(values[k], values[best])) best = k;
    }
    const std::uint32_t next = values[best];
    values[best] = values.back();
    values.pop_back();
    if (values.empty()) {
      more_->erase(more);
      slot.value = next;
    } else {
      slot.value = next | kMoreFlag;
    }
  }

  // Every value at or after from moves by delta (positions after an insertion or removal). Values
  // in [from + delta, from) must have been erased first when delta is negative.
  void Shift(std::uint32_t from, std::int64_t delta) noexcept {
    // Branch-free, so that the pass over the slots runs at memory speed: the value part of a slot
    // stays within [0, 2^31) after the move, so adding delta (modulo 2^32) never reaches the flag
    // bit, and an empty slot (all bits set) is never moved.
    const auto step = static_cast<std::uint32_t>(delta);
    for (Slot& slot : slots_) {
      const std::uint32_t value = slot.value;
      const bool moves = value != kEmpty && (value & kValueMask) >= from;
      slot.value = value + (moves ? step : 0u);
    }
    if (!more_) return;
    for (auto& [key, values] : *more_) {
      for (std::uint32_t& value : values) value += value >= from ? step : 0u;
    }
  }

 private:
  static constexpr std::uint32_t kEmpty = 0xFFFFFFFFu;
  static constexpr std::uint32_t kMoreFlag = 0x80000000u;
  static constexpr std::uint32_t kValueMask = 0x7FFFFFFFu;
  static constexpr std::size_t kNoSlot = static_cast<std::size_t>(-1);

  // tag: the high half of the hash. It is both what a probe compares before reading a key back and,
  // scaled to the number of slots, the slot where the probe starts, so growing never reads keys.
  struct Slot {
    std::uint32_t tag = 0;
    std::uint32_t value = kEmpty;  // the earliest value, with kMoreFlag when the side table has others
  };

  struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>{}(text); }
  };
  struct TextEqual {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const noexcept { return a == b; }
  };

  static bool Fits(std::size_t count, std::size_t slots) noexcept { return count * 10 <= slots * 7; }
  static std::size_t SizeFor(std::size_t count) noexcept { return std::max<std::size_t>(16, count * 10 / 7 + 1); }

  static std::uint32_t TagOf(std::size_t hash) noexcept {
    if constexpr (sizeof(std::size_t) >= 8) {
      return static_cast<std::uint32_t>(static_cast<std::uint64_t>(hash) >> 32);
    } else {
      return static_cast<std::uint32_t>(hash);
    }
  }
  // The tag scaled to [0, slots): slots need not be a power of two.
  static std::size_t Home(std::uint32_t tag, std::size_t slots) noexcept {
    return static_cast<std::size_t>((static_cast<std::uint64_t>(tag) * slots) >> 32);
  }
  std::size_t Next(std::size_t i) const noexcept { return i + 1 == slots_.size() ? 0 : i + 1; }

  template <class KeyAt>
  std::size_t SlotOf(const ZANUnicodeString& key, std::size_t hash, KeyAt& keyAt) const {
    if (slots_.empty()) return kNoSlot;
    const std::uint32_t tag = TagOf(hash);
    for (std::size_t i = Home(tag, slots_.size());; i = Next(i)) {
      const Slot& slot = slots_[i];
      if (slot.value == kEmpty) return kNoSlot;
      if (slot.tag == tag && keyAt(slot.value & kValueMask) == key) return i;
    }
  }

  std::vector<std::uint32_t>& More(const ZANUnicodeString& key) {
    if (!more_) more_ = std::make_unique<MoreMap>();
    const auto found = more_->find(key.View());
    if (found != more_->end()) return found->second;
    return more_->emplace(std::string(key.View()), std::vector<std::uint32_t>()).first->second;
  }

  // Linear probing removal: later slots of the same run move back so that no search stops early.
  void RemoveSlot(std::size_t hole) noexcept {
    slots_[hole] = Slot{};
    --count_;
    for (std::size_t j = Next(hole); slots_[j].value != kEmpty; j = Next(j)) {
      const std::size_t home = Home(slots_[j].tag, slots_.size());
      // The slot at j stays when its home lies cyclically in (hole, j].
      const bool stays = hole <= j ? (hole < home && home <= j) : (hole < home || home <= j);
      if (stays) continue;
      slots_[hole] = slots_[j];
      slots_[j] = Slot{};
      hole = j;
    }
  }

  void Rehash(std::size_t size) {
    std::vector<Slot> old(size);
    old.swap(slots_);
    for (const Slot& slot : old) {
      if (slot.value == kEmpty) continue;
      std::size_t i = Home(slot.tag, size);
      while (slots_[i].value != kEmpty) i = Next(i);
      slots_[i] = slot;
    }
  }

  std::vector<Slot> slots_;
  std::size_t count_ = 0;
  using MoreMap = std::unordered_map<std::string, std::vector<std::uint32_t>, TextHash, TextEqual>;
  // Made when a key is first held by several values.
  std::unique_ptr<MoreMap> more_;
};

}  // namespace kova::model

#endif  // KOVAMAPPINGSERVICES_MODEL_POSITIONMAP_H_
