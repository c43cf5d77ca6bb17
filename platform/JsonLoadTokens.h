// Building a value tree from a text with simdjson's On-Demand API, which hands out the raw text of
// each number token, so that the tree keeps numbers as they were written (internal to the loader).
#ifndef KOVA_PLATFORM_JSONLOADTOKENS_H_
#define KOVA_PLATFORM_JSONLOADTOKENS_H_

#include <simdjson.h>

#include <string_view>
#include <vector>

#include "platform/JsonNode.h"
#include "platform/JsonWorkspace.h"

namespace kova::json {

// Fills doc (whose root is still an empty object) by walking padded (text followed by at least
// SIMDJSON_PADDING readable bytes) with the On-Demand parser. Returns false when the text is
// not well-formed JSON or nests deeper than kMaxDepth. Does not recurse.
bool BuildFromTokens(simdjson::ondemand::parser& parser, std::string_view padded, Document& doc);

// The keys of one load. Keys repeat across the objects of a document: each distinct key of up
// to kInternedKeyLength bytes is stored once in the arena and shared by the members that use it,
// so that within the load such keys are equal exactly when their pointers are (see
// Node::UpsertInterned). Longer keys are copied each time.
class KeyTable {
 public:
  explicit KeyTable(Arena& arena) : arena_(arena), entries_(kInitialSlots) {}

  const char* Intern(std::string_view key) {
    if (key.size() > kInternedKeyLength) return arena_.CopyText(key);
    const std::uint64_t hash = WordHash(key);
    const auto check = static_cast<std::uint32_t>(hash >> 32);
    const std::size_t mask = entries_.size() - 1;
    for (std::size_t slot = hash & mask;; slot = (slot + 1) & mask) {
      Entry& e = entries_[slot];
      if (e.text == nullptr) {
        e.text = arena_.CopyText(key);
        e.length = static_cast<std::uint32_t>(key.size());
        e.check = check;
        const char* stored = e.text;
        if (++used_ * 2 > entries_.size()) Rehash();
        return stored;
      }
      if (e.check == check && e.length == key.size() && SameBytes(e.text, key.data(), key.size())) return e.text;
    }
  }

 private:
  static constexpr std::size_t kInitialSlots = 256;
  struct Entry {
    const char* text = nullptr;
    std::uint32_t length = 0;
    std::uint32_t check = 0;
  };

  void Rehash() {
    std::vector<Entry> old(entries_.size() * 2);
    old.swap(entries_);
    const std::size_t mask = entries_.size() - 1;
    for (const Entry& e : old) {
      if (e.text == nullptr) continue;
      std::size_t slot = WordHash({e.text, e.length}) & mask;
      while (entries_[slot].text != nullptr) slot = (slot + 1) & mask;
      entries_[slot] = e;
    }
  }

  Arena& arena_;
  std::vector<Entry> entries_;
  std::size_t used_ = 0;
};

}  // namespace kova::json

#endif  // KOVA_PLATFORM_JSONLOADTOKENS_H_
