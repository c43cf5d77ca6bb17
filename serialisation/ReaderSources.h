// The two ways the document reader sees a loaded document (internal to the reader): the value tree
// behind ZANOmxJsonObject, and simdjson's tape. Each gives the fields of one object as
// ZANOmxJsonObject's getters would read them, and walks arrays for serialisation/ReaderCore.h.
#ifndef KOVA_SERIALISATION_READERSOURCES_H_
#define KOVA_SERIALISATION_READERSOURCES_H_

#include <KOVAMappingServices/ZANStatus.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "platform/JsonNode.h"
#include "platform/JsonTape.h"
#include "serialisation/ReaderFields.h"

namespace kova::reader {

// The reader's view of a loaded value tree.
struct TreeSource {
  using ArrayRef = const json::Node*;

  static Field<ArrayRef> FieldOf(const json::Member* m) {
    Field<ArrayRef> field;
    if (m == nullptr) return field;
    switch (m->value.kind) {
      case json::Kind::String:
        field.kind = FieldKind::String;
        field.text = m->value.Text();
        break;
      case json::Kind::True: field.kind = FieldKind::True; break;
      case json::Kind::False: field.kind = FieldKind::False; break;
      case json::Kind::Array:
        field.kind = FieldKind::Array;
        field.array = m->value.node;
        break;
      default: field.kind = FieldKind::Other; break;
    }
    return field;
  }

  // How many elements the array holds (a hint for reserving room).
  static std::size_t CountOf(ArrayRef array) noexcept { return array->size; }

  static void FieldsOf(const json::Node& object, Fields<ArrayRef>& fields) {
    for (std::size_t k = 0; k < kFieldCount; ++k) {
      fields[k] = FieldOf(object.Find(kFieldKeys[k]));
    }
  }

  class Cursor {
   public:
    Cursor(const TreeSource&, ArrayRef array)
        : array_(array),
          // The count that ZANOmxJsonArray::Length gives.
          count_(std::min<std::uint32_t>(array->size, static_cast<std::uint32_t>(std::numeric_limits<int>::max()))) {}

    bool Next(HRESULT& status, Fields<ArrayRef>& fields) {
      if (next_ >= count_) return false;
      const json::Value& v = array_->elements[next_++];
      if (v.kind != json::Kind::Object) {
        status = ZAN_E_TYPEMISMATCH;
      } else {
        status = S_OK;
        FieldsOf(*v.node, fields);
      }
      return true;
    }

   private:
    const json::Node* array_;
    std::uint32_t count_;
    std::uint32_t next_ = 0;
  };
};

// The reader's view of a document on the parser's tape. An array is named by the index of its
// opening word.
struct TapeSource {
  using ArrayRef = std::size_t;

  const kova::json::TapeDocument& tape;

  Field<ArrayRef> FieldAt(std::size_t i) const {
    Field<ArrayRef> field;
    switch (tape.Type(i)) {
      case '"':
        field.kind = FieldKind::String;
        field.text = tape.String(i);
        break;
      case 't': field.kind = FieldKind::True; break;
      case 'f': field.kind = FieldKind::False; break;
      case '[':
        field.kind = FieldKind::Array;
        field.array = i;
        break;
      default: field.kind = FieldKind::Other; break;
    }
    return field;
  }

  // How many elements the array holds, at most 0xFFFFFF (a hint for reserving room).
  std::size_t CountOf(ArrayRef array) const noexcept { return tape.Count(array); }

  // One pass over the members of the object opening at index open; a repeated key leaves the
  // value of its last appearance, as the value tree keeps it.
  void FieldsOf(std::size_t open, Fields<ArrayRef>& fields) const {
    fields = {};
    for (std::size_t i = open + 1; tape.Type(i) != '}';) {
      const std::size_t value = i + 1;
      const FieldName name = FieldOfKey(tape.String(i));
      if (name != kFieldCount) fields[name] = FieldAt(value);
      i = tape.After(value);
    }
  }

  class Cursor {
   public:
    Cursor(const TapeSource& source, ArrayRef open) : source_(source), next_(open + 1) {}

    bool Next(HRESULT& status, Fields<ArrayRef>& fields) {
      const kova::json::TapeDocument& tape = source_.tape;
      // At most as many elements as ZANOmxJsonArray::Length counts.
      if (tape.Type(next_) == ']' || left_ == 0) return false;
      --left_;
      const std::size_t at = next_;
      next_ = tape.After(at);
      if (tape.Type(at) != '{') {
        status = ZAN_E_TYPEMISMATCH;
      } else {
        status = S_OK;
        source_.FieldsOf(at, fields);
      }
      return true;
    }

   private:
    const TapeSource& source_;
    std::size_t next_;
    std::uint32_t left_ = static_cast<std::uint32_t>(std::numeric_limits<int>::max());
  };
};

}  // namespace kova::reader

#endif  // KOVA_SERIALISATION_READERSOURCES_H_
