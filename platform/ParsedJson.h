// A JSON text parsed once with simdjson's DOM parser and read through simdjson's public DOM API
// (internal). For readers that visit a document once, such as the mapping document reader: no
// value tree of our own is built.
//
// Parsing gives the statuses ZANOmxJsonObject::LoadFromString gives for the same text, and the
// values read through it are those its getters read (see ReadInteger for the one number rule).
#ifndef KOVA_PLATFORM_PARSEDJSON_H_
#define KOVA_PLATFORM_PARSEDJSON_H_

#include <KOVAMappingServices/ZANStatus.h>

#include <simdjson.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kova::json {

class WorkspaceLease;

class ParsedJson {
 public:
  ParsedJson();
  ~ParsedJson();
  ParsedJson(const ParsedJson&) = delete;
  ParsedJson& operator=(const ParsedJson&) = delete;

  // Parses text, which gets room for the parser's padding at its end (its buffer moves once, to
  // one of just the size needed, when it has no room; the padding is taken off again before this
  // returns). One leading byte order mark is skipped.
  //  - S_OK: the text is blank (Blank() is then true) or Top() holds its top value;
  //  - ZAN_E_INVALIDDATA: the text is not well-formed JSON or nests deeper than the tree allows;
  //  - E_FAIL: memory ran out, or the text is beyond the parser's size.
  // The parse holds copies of every string: the text may be released once its numbers have been
  // read (see ReadInteger).
  HRESULT Parse(std::string& text);

  bool Blank() const noexcept { return blank_; }
  simdjson::dom::element Top() const noexcept { return top_; }

  // As ZANOmxJsonObject::GetInteger on the member key of the top object (the last one when the key
  // repeats): ZAN_E_NOTFOUND when absent, ZAN_E_TYPEMISMATCH unless it is an integer token within
  // 32 bits. text is the text given to Parse, still alive: the parse keeps "-0" only as a double,
  // so for that value the token itself decides.
  HRESULT ReadInteger(std::string_view text, std::string_view key, int& value) const;

 private:
  std::unique_ptr<WorkspaceLease> lease_;
  std::string substitute_;
  simdjson::dom::element top_;
  bool blank_ = false;
};

// The members of an object as ZANOmxJsonObject keeps them: each key once, at the place of its
// first appearance, with the value of its last. Calls visit(key, value) in that order.
template <typename Visit>
void ForEachDistinctMember(simdjson::dom::object object, Visit&& visit) {
  struct Member {
    std::string_view key;
    simdjson::dom::element value;
  };
  std::vector<Member> members;
  members.reserve(object.size());
  // Small objects are searched in place; larger ones through a map from key to position.
  constexpr std::size_t kSearchedInPlace = 16;
  std::unordered_map<std::string_view, std::size_t> positions;
  for (const simdjson::dom::key_value_pair member : object) {
    std::size_t at = members.size();
    if (members.size() < kSearchedInPlace) {
      for (std::size_t i = 0; i < members.size(); ++i) {
        if (members[i].key == member.key) {
          at = i;
          break;
        }
      }
    } else {
      if (positions.empty()) {
        for (std::size_t i = 0; i < members.size(); ++i) positions.emplace(members[i].key, i);
      }
      at = positions.emplace(member.key, members.size()).first->second;
    }
    if (at == members.size()) {
      members.push_back({member.key, member.value});
    } else {
      members[at].value = member.value;
    }
  }
  for (const Member& member : members) visit(member.key, member.value);
}

}  // namespace kova::json

#endif  // KOVA_PLATFORM_PARSEDJSON_H_
