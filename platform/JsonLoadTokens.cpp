// Building the value tree with simdjson's On-Demand API, keeping the text of every number.
//
// On-Demand validates what is consumed, so the walk consumes every value: strings and keys are
// unescaped (which checks escapes and surrogate pairs), literals are read, and number tokens are
// checked against the JSON number grammar here. UTF-8 is checked for the whole text before the
// walk. Containers are walked with an explicit stack of iterators.
#include <vector>

#include "platform/JsonLoadTokens.h"
#include "platform/JsonNumber.h"

namespace kova::json {

namespace {

namespace od = simdjson::ondemand;

class TokenBuilder {
 public:
  explicit TokenBuilder(Document& doc) : doc_(doc), keys_(doc.arena) { frames_.reserve(64); }

  // Stores the number token raw (with the blanks that may follow it) into slot.
  bool StoreNumber(std::string_view raw, Value* slot) {
    const std::string_view token = TrimBlanks(raw);
    if (!IsNumberToken(token)) return false;
    if (token != "-0") {
      if (const auto i = Int64OfIntegerToken(token)) {
        *slot = Value::MakeInteger(*i);
        return true;
      }
    }
    *slot = Value::MakeText(Kind::Number, doc_.arena.CopyText(token), static_cast<std::uint32_t>(token.size()));
    return true;
  }

  // Stores the literal token (true, false or null) into slot. The token itself is compared: the
  // parser's own check of a literal standing alone as the document accepts trailing letters.
  static bool StoreLiteral(std::string_view token, Value* slot) {
    if (token == "true" || token == "false") {
      *slot = Value::MakeBoolean(token == "true");
      return true;
    }
    if (token != "null") return false;
    *slot = Value::MakeNull();
    return true;
  }

  bool StoreString(std::string_view s, Value* slot) {
    *slot = Value::MakeText(Kind::String, doc_.arena.CopyText(s), static_cast<std::uint32_t>(s.size()));
    return true;
  }

  // Stores v into slot; a container gets a new node and is pushed to be walked next.
  bool Store(od::value v, Value* slot) {
    od::json_type type;
    if (v.type().get(type) != simdjson::SUCCESS) return false;
    switch (type) {
      case od::json_type::object: {
        Node* node = doc_.NewNode(NodeKind::Object);
        *slot = Value::MakeNode(node, Kind::Object);
        return Open(v, node);
      }
      case od::json_type::array: {
        Node* node = doc_.NewNode(NodeKind::Array);
        *slot = Value::MakeNode(node, Kind::Array);
        return Open(v, node);
      }
      case od::json_type::number: return StoreNumber(v.raw_json_token(), slot);
      case od::json_type::string: {
        std::string_view s;
        if (v.get_string().get(s) != simdjson::SUCCESS) return false;
        return StoreString(s, slot);
      }
      case od::json_type::boolean:
      case od::json_type::null: return StoreLiteral(TrimBlanks(v.raw_json_token()), slot);
    }
    return false;
  }

  // Starts walking the container v into node; false beyond kMaxDepth levels (checked before the
  // parser descends, as builds with simdjson's development checks assert on its own limit).
  bool Open(od::value& v, Node* node) {
    if (frames_.size() >= kMaxDepth) return false;
    Frame frame;
    frame.node = node;
    if (node->kind == NodeKind::Object) {
      od::object object;
      if (v.get_object().get(object) != simdjson::SUCCESS) return false;
      if (object.begin().get(frame.fields) != simdjson::SUCCESS) return false;
      if (object.end().get(frame.fieldsEnd) != simdjson::SUCCESS) return false;
    } else {
      od::array array;
      if (v.get_array().get(array) != simdjson::SUCCESS) return false;
      if (array.begin().get(frame.elements) != simdjson::SUCCESS) return false;
      if (array.end().get(frame.elementsEnd) != simdjson::SUCCESS) return false;
    }
    frames_.push_back(frame);
    return true;
  }

  // Walks the pushed containers to their ends.
  bool Walk() {
    while (!frames_.empty()) {
      Frame& frame = frames_.back();
      // A child is consumed before its container's iterator moves on (it may be a container
      // that was walked in the meantime).
      if (frame.node->kind == NodeKind::Object) {
        if (frame.started) ++frame.fields;
        frame.started = true;
        if (frame.fields == frame.fieldsEnd) {
          frames_.pop_back();
          continue;
        }
        od::field field;
        if ((*frame.fields).get(field) != simdjson::SUCCESS) return false;
        std::string_view key;
        if (field.unescaped_key().get(key) != simdjson::SUCCESS) return false;
        // A repeated key gets the slot of its first appearance: the last value wins.
        Value* slot = frame.node->UpsertInterned(key, keys_.Intern(key));
        if (!Store(field.value(), slot)) return false;
      } else {
        if (frame.started) ++frame.elements;
        frame.started = true;
        if (frame.elements == frame.elementsEnd) {
          frames_.pop_back();
          continue;
        }
        od::value element;
        if ((*frame.elements).get(element) != simdjson::SUCCESS) return false;
        Value* slot = frame.node->Append();
        if (!Store(element, slot)) return false;
      }
    }
    return true;
  }

 private:
  struct Frame {
    Node* node = nullptr;
    bool started = false;
    // On-Demand's iterators compare as different while their container has more to read.
    od::object_iterator fields;
    od::object_iterator fieldsEnd;
    od::array_iterator elements;
    od::array_iterator elementsEnd;
  };

  Document& doc_;
  KeyTable keys_;
  std::vector<Frame> frames_;
};

// A root that is not a container: its token must make up the whole text.
bool BuildScalarRoot(od::document& document, od::json_type type, std::string_view text, Document& doc,
                     TokenBuilder& builder) {
  std::string_view raw;
  if (document.raw_json_token().get(raw) != simdjson::SUCCESS) return false;
  const std::string_view token = TrimBlanks(raw);
  const std::string_view whole = TrimBlanks(text);
  if (token.data() != whole.data() || token.size() != whole.size()) return false;

  doc.root.kind = NodeKind::Scalar;
  doc.root.elements = doc.arena.AllocateArray<Value>(1);
  doc.root.size = 1;
  doc.root.capacity = 1;
  Value* slot = &doc.root.elements[0];
  switch (type) {
    case od::json_type::number: return builder.StoreNumber(token, slot);
    case od::json_type::string: {
      std::string_view s;
      if (document.get_string().get(s) != simdjson::SUCCESS) return false;
      return builder.StoreString(s, slot);
    }
    case od::json_type::boolean:
    case od::json_type::null: return TokenBuilder::StoreLiteral(token, slot);
    case od::json_type::object:
    case od::json_type::array: break;
  }
  return false;
}

}  // namespace

bool BuildFromTokens(od::parser& parser, std::string_view padded, Document& doc) {
  doc.arena.SizeHint(padded.size());
  od::document document;
  if (parser.iterate(padded.data(), padded.size(), padded.size() + simdjson::SIMDJSON_PADDING).get(document) !=
      simdjson::SUCCESS) {
    return false;
  }
  od::json_type type;
  if (document.type().get(type) != simdjson::SUCCESS) return false;
  TokenBuilder builder(doc);
  if (type != od::json_type::object && type != od::json_type::array) {
    return BuildScalarRoot(document, type, padded, doc, builder);
  }
  od::value top;
  if (document.get_value().get(top) != simdjson::SUCCESS) return false;
  doc.root.kind = type == od::json_type::object ? NodeKind::Object : NodeKind::Array;
  if (!builder.Open(top, &doc.root) || !builder.Walk()) return false;
  // Anything after the root value is trailing content.
  return document.current_location().error() == simdjson::OUT_OF_BOUNDS;
}

}  // namespace kova::json
