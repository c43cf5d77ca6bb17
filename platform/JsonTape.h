// A JSON text parsed onto simdjson's tape and read where it lies, without building a value tree
// (internal). For readers that visit a document once, such as filling a mapping table.
//
// The tape is a sequence of 64-bit words: a type character in the top byte and a payload below.
// Strings are a 32-bit length and their bytes in a separate buffer; an object or array opens
// with a word whose low 32 bits give the index just after its closing word, so a value is
// skipped in constant time; an object holds a key (a string word) before each value, in
// document order, repeated keys included.
#ifndef KOVA_PLATFORM_JSONTAPE_H_
#define KOVA_PLATFORM_JSONTAPE_H_

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

namespace kova::json {

class WorkspaceLease;

class TapeDocument {
 public:
  TapeDocument();
  ~TapeDocument();
  TapeDocument(const TapeDocument&) = delete;
  TapeDocument& operator=(const TapeDocument&) = delete;

  // Parses text (one leading byte order mark skipped) onto the tape. False when the text is blank,
  // is not well-formed JSON, nests too deep, holds a number the parser cannot read, or memory runs
  // out: loading it as a tree then decides what it is. The padded copy of a large text made for
  // the parser is given back before this returns; the tape and its strings stay until
  // destruction, and hold the thread's parser until then (a load on the same thread meanwhile
  // uses a parser of its own).
  bool Parse(std::string_view text) noexcept;
  // As Parse, without copying the text: text must be followed by kPadding readable bytes, and stay
  // where it is, unchanged, until the tape is no longer read.
  bool ParseInPlace(std::string_view text) noexcept;
  static const std::size_t kPadding;

  // Index of the document's top value.
  static constexpr std::size_t kTop = 1;

  char Type(std::size_t i) const noexcept { return static_cast<char>(words_[i] >> 56); }

  // The index after the value at i.
  std::size_t After(std::size_t i) const noexcept {
    switch (Type(i)) {
      case '{':
      case '[':
        return static_cast<std::uint32_t>(words_[i]);
      case 'l':
      case 'u':
      case 'd':
        return i + 2;
      default:
        return i + 1;
    }
  }

  // The text of the string (or key) word at i.
  std::string_view String(std::size_t i) const noexcept {
    const std::uint8_t* at = strings_ + (words_[i] & kPayloadMask);
    std::uint32_t length;
    std::memcpy(&length, at, sizeof length);
    return {reinterpret_cast<const char*>(at + sizeof length), length};
  }

  // The number of elements of the array or members of the object opening at i, saturated at
  // 0xFFFFFF (a larger one reads as 0xFFFFFF).
  std::uint32_t Count(std::size_t i) const noexcept { return static_cast<std::uint32_t>(words_[i] >> 32) & 0xFFFFFFu; }

  // The value of the signed integer word at i (Type 'l').
  std::int64_t Integer(std::size_t i) const noexcept { return static_cast<std::int64_t>(words_[i + 1]); }

 private:
  static constexpr std::uint64_t kPayloadMask = 0x00FFFFFFFFFFFFFFull;

  bool ParseWith(std::string_view text, bool inPlace) noexcept;

  std::unique_ptr<WorkspaceLease> lease_;
  const std::uint64_t* words_ = nullptr;
  const std::uint8_t* strings_ = nullptr;
};

}  // namespace kova::json

#endif  // KOVA_PLATFORM_JSONTAPE_H_
