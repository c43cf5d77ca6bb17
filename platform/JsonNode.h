// The value tree behind ZANOmxJsonObject and ZANOmxJsonArray (internal).
//
// A Document owns an arena and a root Node. Scalars are stored inline in 16-byte Values
// (strings and number texts point into the arena); objects and arrays are Nodes, allocated in
// the arena at a fixed address, so that a handle onto a sub-object stays valid while its
// container grows. Handles are std::shared_ptr<Node> that share ownership of the Document (the
// aliasing constructor), so a sub-object keeps its whole document alive.
//
// Objects keep their members in insertion order; objects of more than kIndexThreshold members
// also get a hash index so that looking keys up stays constant-time.
//
// Nothing here recurses over the tree: copying, writing and freeing work with explicit stacks
// or, for freeing, with the arena's chunk list.
//
// Library code that reads many values (such as filling a table from a loaded document) can read
// the tree directly, without the handles' allocations: Node::Of(handle) gives the node, Find the
// member of a key, and a Value its kind and text.
#ifndef KOVA_PLATFORM_JSONNODE_H_
#define KOVA_PLATFORM_JSONNODE_H_

#include <KOVAMappingServices/ZANOmxJson.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>

#include "platform/JsonArena.h"

namespace kova::json {

// Keys up to this length are interned while loading.
inline constexpr std::size_t kInternedKeyLength = 64;
// Objects with more members than this get a hash index.
inline constexpr std::uint32_t kIndexThreshold = 16;
// Longest string, key or member count one value can hold.
inline constexpr std::size_t kMaxLength = std::numeric_limits<std::uint32_t>::max();

enum class Kind : std::uint8_t {
  Null,
  False,
  True,
  Integer,  // a 64-bit integer held inline; its text is its decimal form
  Number,   // a number held as its token text (any size or precision)
  String,
  Array,
  Object,
};

struct Node;
struct Document;

struct Value {
  union {
    const char* text;      // String, Number: bytes in the arena, never null
    std::int64_t integer;  // Integer
    Node* node;            // Array, Object
  };
  std::uint32_t length;  // String, Number: byte count
  Kind kind;

  std::string_view Text() const noexcept { return {text, length}; }

  static Value MakeNull() noexcept {
    Value v;
    v.integer = 0;
    v.length = 0;
    v.kind = Kind::Null;
    return v;
  }
  static Value MakeBoolean(bool b) noexcept {
    Value v = MakeNull();
    v.kind = b ? Kind::True : Kind::False;
    return v;
  }
  static Value MakeInteger(std::int64_t i) noexcept {
    Value v = MakeNull();
    v.integer = i;
    v.kind = Kind::Integer;
    return v;
  }
  static Value MakeText(Kind kind, const char* text, std::uint32_t length) noexcept {
    Value v;
    v.text = text;
    v.length = length;
    v.kind = kind;
    return v;
  }
  static Value MakeNode(Node* node, Kind kind) noexcept {
    Value v;
    v.node = node;
    v.length = 0;
    v.kind = kind;
    return v;
  }
};
static_assert(sizeof(Value) == 16, "values stay two words");

struct Member {
  const char* key;  // never null
  std::uint32_t keyLength;
  std::uint32_t hash;  // set while the object has an index
  Value value;

  std::string_view Key() const noexcept { return {key, keyLength}; }
};
static_assert(sizeof(Member) == 32, "members stay four words");

// Open-addressing table from key to member position, for large objects.
struct Index {
  std::uint32_t mask;    // slot count - 1 (slot count is a power of two)
  std::uint32_t* slots;  // member position + 1, 0 when free
};

enum class NodeKind : std::uint8_t {
  Object,
  Array,
  Scalar,  // the root of a document loaded from a scalar text; elements[0] holds it
};

struct Node {
  union {
    Member* members;  // Object
    Value* elements;  // Array, Scalar
  };
  Index* index;  // Object with more than kIndexThreshold members, else null
  Document* doc;
  std::uint32_t size;
  std::uint32_t capacity;
  NodeKind kind;

  bool IsObject() const noexcept { return kind == NodeKind::Object; }
  bool IsArray() const noexcept { return kind == NodeKind::Array; }

  // The member under key, or null.
  const Member* Find(std::string_view key) const noexcept;
  Member* Find(std::string_view key) noexcept { return const_cast<Member*>(static_cast<const Node*>(this)->Find(key)); }

  // The value slot of key: the existing one (the key keeps its position) or a new member at the
  // end, whose value is null. A new member's key is a copy of key in the arena, or storedKey: the
  // same text already in the arena.
  Value* Upsert(std::string_view key) { return Upsert(key, nullptr); }
  Value* Upsert(std::string_view key, const char* storedKey);
  // Upsert for loading, where keys of up to kInternedKeyLength bytes are interned (see KeyTable):
  // such keys are equal exactly when their pointers are.
  Value* UpsertInterned(std::string_view key, const char* interned);
  // A new null element at the end of the array.
  Value* Append();
  // Room for at least count members or elements without reallocation.
  void Reserve(std::uint32_t count);

  // Builders of handles (Node is the friend of the handle classes).
  static ZANOmxJsonObject MakeObjectHandle(std::shared_ptr<Node> node) { return ZANOmxJsonObject(std::move(node)); }
  static ZANOmxJsonArray MakeArrayHandle(std::shared_ptr<Node> node) { return ZANOmxJsonArray(std::move(node)); }
  static const std::shared_ptr<Node>& Of(const ZANOmxJsonObject& o) noexcept { return o.node_; }
  static const std::shared_ptr<Node>& Of(const ZANOmxJsonArray& a) noexcept { return a.node_; }

 private:
  void Grow(std::uint32_t minimum);
  void BuildIndex(std::uint32_t forCapacity);
  Value* AppendMember(std::string_view key, const char* storedKey, std::uint32_t hash);
};

struct Document {
  explicit Document(NodeKind rootKind) noexcept;
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  Arena arena;
  Node root;

  // A new, empty container of this document.
  Node* NewNode(NodeKind kind);
};

// A new document whose root is an empty object or array, as a handle.
std::shared_ptr<Node> NewDocument(NodeKind rootKind);

// Equality of n bytes at a and b, inlined for the short keys and strings of documents.
inline bool SameBytes(const char* a, const char* b, std::size_t n) noexcept {
  if (a == b) return true;
  for (; n >= 8; a += 8, b += 8, n -= 8) {
    std::uint64_t x;
    std::uint64_t y;
    std::memcpy(&x, a, 8);
    std::memcpy(&y, b, 8);
    if (x != y) return false;
  }
  if (n >= 4) {
    std::uint32_t x[2];
    std::uint32_t y[2];
    std::memcpy(&x[0], a, 4);
    std::memcpy(&x[1], a + n - 4, 4);
    std::memcpy(&y[0], b, 4);
    std::memcpy(&y[1], b + n - 4, 4);
    return x[0] == y[0] && x[1] == y[1];
  }
  for (; n != 0; ++a, ++b, --n) {
    if (*a != *b) return false;
  }
  return true;
}

// A hash of all bytes of text, eight at a time.
inline std::uint64_t WordHash(std::string_view text) noexcept {
  const char* p = text.data();
  std::size_t n = text.size();
  std::uint64_t h = 0x9E3779B97F4A7C15ull ^ n;
  auto mix = [&h](std::uint64_t word) {
    h = (h ^ word) * 0xFF51AFD7ED558CCDull;
    h ^= h >> 29;
  };
  if (n >= 8) {
    for (; n > 8; p += 8, n -= 8) {
      std::uint64_t word;
      std::memcpy(&word, p, 8);
      mix(word);
    }
    std::uint64_t last;  // the last eight bytes, overlapping the previous word
    std::memcpy(&last, p + n - 8, 8);
    mix(last);
  } else if (n >= 4) {
    std::uint32_t x;
    std::uint32_t y;
    std::memcpy(&x, p, 4);
    std::memcpy(&y, p + n - 4, 4);
    mix((static_cast<std::uint64_t>(x) << 32) | y);
  } else if (n != 0) {
    mix(static_cast<unsigned char>(p[0]) | (static_cast<std::uint64_t>(static_cast<unsigned char>(p[n / 2])) << 8) |
        (static_cast<std::uint64_t>(static_cast<unsigned char>(p[n - 1])) << 16));
  }
  return h ^ (h >> 32);
}

// The hash of a key, as the index uses it.
std::uint32_t HashKey(std::string_view key) noexcept;

// A copy of value whose containers and texts belong to target (deep copy, no recursion).
// Texts are shared when value already belongs to target's arena.
Value CopyInto(const Value& value, const Document* source, Document& target);

// The content of a whole node as a value (an object or array value, or the scalar of a scalar
// root).
Value AsValue(Node& node) noexcept;

}  // namespace kova::json

#endif  // KOVA_PLATFORM_JSONNODE_H_
