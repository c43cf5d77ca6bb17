#include "platform/JsonNode.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <functional>
#include <vector>

namespace kova::json {

namespace {

bool SameKey(const Member& m, std::string_view key) noexcept {
  return m.keyLength == key.size() && SameBytes(m.key, key.data(), key.size());
}

// Slot count of an index for count members: a power of two at least twice count.
std::uint32_t IndexSlotsFor(std::uint32_t count) noexcept {
  return std::bit_ceil(std::max<std::uint32_t>(count, kIndexThreshold) * 2);
}

void IndexInsert(Index& index, std::uint32_t hash, std::uint32_t position) noexcept {
  std::uint32_t slot = hash & index.mask;
  while (index.slots[slot] != 0) slot = (slot + 1) & index.mask;
  index.slots[slot] = position + 1;
}

}  // namespace

std::uint32_t HashKey(std::string_view key) noexcept {
  const std::size_t h = std::hash<std::string_view>{}(key);
  return static_cast<std::uint32_t>(h ^ (h >> 32));
}

const Member* Node::Find(std::string_view key) const noexcept {
  if (kind != NodeKind::Object) return nullptr;
  if (index != nullptr) {
    const std::uint32_t hash = HashKey(key);
    for (std::uint32_t slot = hash & index->mask;; slot = (slot + 1) & index->mask) {
      const std::uint32_t at = index->slots[slot];
      if (at == 0) return nullptr;
      const Member& m = members[at - 1];
      if (m.hash == hash && SameKey(m, key)) return &m;
    }
  }
  for (std::uint32_t i = 0; i < size; ++i) {
    if (SameKey(members[i], key)) return &members[i];
  }
  return nullptr;
}

void Node::BuildIndex(std::uint32_t forCount) {
  const std::uint32_t slots = IndexSlotsFor(forCount);
  Index* built = doc->arena.AllocateArray<Index>(1);
  built->mask = slots - 1;
  built->slots = doc->arena.AllocateArray<std::uint32_t>(slots);
  std::memset(built->slots, 0, sizeof(std::uint32_t) * slots);
  for (std::uint32_t i = 0; i < size; ++i) {
    members[i].hash = HashKey(members[i].Key());
    IndexInsert(*built, members[i].hash, i);
  }
  index = built;
}

void Node::Grow(std::uint32_t minimum) {
  const std::uint32_t grown = capacity > kMaxLength / 2 ? static_cast<std::uint32_t>(kMaxLength) : capacity * 2;
  const std::uint32_t next = std::max({minimum, grown, std::uint32_t{4}});
  if (kind == NodeKind::Object) {
    Member* moved = doc->arena.AllocateArray<Member>(next);
    if (size != 0) std::memcpy(static_cast<void*>(moved), members, sizeof(Member) * size);
    members = moved;
  } else {
    Value* moved = doc->arena.AllocateArray<Value>(next);
    if (size != 0) std::memcpy(static_cast<void*>(moved), elements, sizeof(Value) * size);
    elements = moved;
  }
  capacity = next;
}

void Node::Reserve(std::uint32_t count) {
  if (count > capacity) Grow(count);
  if (kind == NodeKind::Object && count > kIndexThreshold &&
      (index == nullptr || IndexSlotsFor(count) > index->mask + 1)) {
    BuildIndex(count);
  }
}

Value* Node::Upsert(std::string_view key, const char* storedKey) {
  std::uint32_t hash = 0;
  if (index != nullptr) {
    hash = HashKey(key);
    for (std::uint32_t slot = hash & index->mask;; slot = (slot + 1) & index->mask) {
      const std::uint32_t at = index->slots[slot];
      if (at == 0) break;
      Member& m = members[at - 1];
      if (m.hash == hash && SameKey(m, key)) return &m.value;
    }
  } else {
    for (std::uint32_t i = 0; i < size; ++i) {
      if (SameKey(members[i], key)) return &members[i].value;
    }
  }
  return AppendMember(key, storedKey, hash);
}

Value* Node::UpsertInterned(std::string_view key, const char* interned) {
  if (index != nullptr || key.size() > kInternedKeyLength) return Upsert(key, interned);
  for (std::uint32_t i = 0; i < size; ++i) {
    if (members[i].key == interned) return &members[i].value;
  }
  return AppendMember(key, interned, 0);
}

Value* Node::AppendMember(std::string_view key, const char* storedKey, std::uint32_t hash) {
  if (size == capacity) Grow(size + 1);
  const std::uint32_t position = size;
  Member& m = members[position];
  m.key = storedKey != nullptr ? storedKey : doc->arena.CopyText(key);
  m.keyLength = static_cast<std::uint32_t>(key.size());
  m.hash = hash;
  m.value = Value::MakeNull();
  ++size;
  if (index != nullptr) {
    if (IndexSlotsFor(size) > index->mask + 1) {
      BuildIndex(size);
    } else {
      IndexInsert(*index, hash, position);
    }
  } else if (size > kIndexThreshold) {
    BuildIndex(size);
  }
  return &members[position].value;
}

Value* Node::Append() {
  if (size == capacity) Grow(size + 1);
  Value* slot = &elements[size++];
  *slot = Value::MakeNull();
  return slot;
}

Document::Document(NodeKind rootKind) noexcept {
  root.members = nullptr;
  root.index = nullptr;
  root.doc = this;
  root.size = 0;
  root.capacity = 0;
  root.kind = rootKind;
}

Node* Document::NewNode(NodeKind kind) {
  Node* node = arena.AllocateArray<Node>(1);
  node->members = nullptr;
  node->index = nullptr;
  node->doc = this;
  node->size = 0;
  node->capacity = 0;
  node->kind = kind;
  return node;
}

std::shared_ptr<Node> NewDocument(NodeKind rootKind) {
  auto doc = std::make_shared<Document>(rootKind);
  return std::shared_ptr<Node>(doc, &doc->root);
}

Value AsValue(Node& node) noexcept {
  switch (node.kind) {
    case NodeKind::Object: return Value::MakeNode(&node, Kind::Object);
    case NodeKind::Array: return Value::MakeNode(&node, Kind::Array);
    case NodeKind::Scalar: break;
  }
  return node.elements[0];
}

Value CopyInto(const Value& value, const Document* source, Document& target) {
  const bool shareText = source == &target;
  auto copyScalar = [&](const Value& from) {
    if ((from.kind == Kind::String || from.kind == Kind::Number) && !shareText) {
      return Value::MakeText(from.kind, target.arena.CopyText(from.Text()), from.length);
    }
    return from;
  };
  if (value.kind != Kind::Object && value.kind != Kind::Array) return copyScalar(value);

  // Pending containers: each source node with the empty target node to fill.
  struct Pending {
    const Node* from;
    Node* to;
  };
  std::vector<Pending> pending;
  auto newContainer = [&](const Value& from) {
    Node* to = target.NewNode(from.kind == Kind::Object ? NodeKind::Object : NodeKind::Array);
    pending.push_back({from.node, to});
    return Value::MakeNode(to, from.kind);
  };
  const Value top = newContainer(value);
  while (!pending.empty()) {
    const Pending job = pending.back();
    pending.pop_back();
    const Node& from = *job.from;
    Node& to = *job.to;
    const std::uint32_t n = from.size;
    if (n == 0) continue;
    if (from.kind == NodeKind::Object) {
      to.members = target.arena.AllocateArray<Member>(n);
      for (std::uint32_t i = 0; i < n; ++i) {
        const Member& m = from.members[i];
        Member& copy = to.members[i];
        copy.key = shareText ? m.key : target.arena.CopyText(m.Key());
        copy.keyLength = m.keyLength;
        copy.hash = m.hash;
        const bool container = m.value.kind == Kind::Object || m.value.kind == Kind::Array;
        copy.value = container ? newContainer(m.value) : copyScalar(m.value);
      }
      if (from.index != nullptr) {
        const std::uint32_t slots = from.index->mask + 1;
        Index* index = target.arena.AllocateArray<Index>(1);
        index->mask = from.index->mask;
        index->slots = target.arena.AllocateArray<std::uint32_t>(slots);
        std::memcpy(index->slots, from.index->slots, sizeof(std::uint32_t) * slots);
        to.index = index;
      }
    } else {
      to.elements = target.arena.AllocateArray<Value>(n);
      for (std::uint32_t i = 0; i < n; ++i) {
        const Value& e = from.elements[i];
        const bool container = e.kind == Kind::Object || e.kind == Kind::Array;
        to.elements[i] = container ? newContainer(e) : copyScalar(e);
      }
    }
    to.size = n;
    to.capacity = n;
  }
  return top;
}

}  // namespace kova::json
